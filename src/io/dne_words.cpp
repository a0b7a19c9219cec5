#include "io/dne_words.h"

namespace ravelo {

// The reserved slots hold words no statement can have.
const std::string_view kNetFieldWords[15] = {
    "name", "nodes", "numdimensions", "eqncontext", "AutoCompile", "autoupdate", "NodeSet",
    "ElimOrder", "title", "comment", "author", "whochanged", "whenchanged", " reserved",
    "definenodes"};

const std::string_view kNodeFieldWords[40] = {
    "name", "kind", "discrete", "measure", "chance", "numstates", "states", "statetitles",
    "StateComments", "levels", "units", "parents", "inputs", "functable", "probs", "numcases",
    "ExperBase", "equation", "EqnDirty", "delays", "persist", "position", "title", "comment",
    "author", "whochanged", "whenchanged", "evidence", "value", "likelihood", "Finding", "belief",
    " reserved", "children", "????", "net", "visual", "definenodes", "isdefine", "fields"};

const std::string_view kKindWords[7] = {"UNKNOWN_KIND", "NATURE",       "CONSTANT", "DECISION",
                                        "UTILITY",      "DISCONNECTED", "ADVERSARY"};
const std::string_view kMeasureWords[6] = {"UNKNOWN_MEASURE", "NOMINAL",  "PROXIMAL",
                                           "ORDINAL",         "INTERVAL", "RATIO"};
const std::string_view kChanceWords[4] = {"UNKNOWN_CHANCE", "DETERMIN", "CHANCE", "INVERTABLE"};

int keyword_index(std::span<const std::string_view> table, std::string_view word) {
    for (size_t i = 0; i < table.size(); ++i)
        if (table[i] == word) return static_cast<int>(i);
    return -1;
}

}  // namespace ravelo
