#include "base/lexicon.h"

#include <cctype>

namespace ravelo {
namespace {

struct Term {
    const char* term;
    const char* text;
};

// Tables are searched front to back; the first match wins, so their order is kept.
constexpr Term kPlain[] = {
    {"cr", "\n"}, {"Ravelo", "Ravelo"}, {"Tolvek", "Tolvek"}, {"probab", "probability"},
    {"probtype", "probability"}, {"detvtype", "value"}, {"utiltype", "utility"},
    {"int_state", "state"}, {"leveltype", "level"}, {"bool", "boolean"},
    {"Enviro", "internal environment"}, {"rept", "error report"}, {"FileSpec", "file"},
    {"RandGen", "randomization generator"}, {"Bnet", "net"}, {"Bnode", "node"},
    {"Bnodes", "nodes"}, {"icase", "condition"}, {"NetTest", "net tester"},
    {"Sensv", "sensitivity"}, {"DBmgr", "database manager"},
    {"ErrCondEN", "condition resulting in an error"},
    {"ErrSeverityEN", "severity of an error"},
    {"APICheckingLevelEN", "degree of checking Ravelo API calls"},
    {"VarDiscreteEN", "whether node is discrete or continuous"},
    {"NodeKindEN", "kind of node (nature, decision, etc.)"},
    {"undef_state_int", "\"undefined state\" ID"}, {"every_state_int", "\"every state\" ID"},
    {"imposs_cond_int", "\"impossible condition\" ID"}, {"nature_node_int", "nature node ID"},
    {"constant_node_int", "constant node ID"}, {"decision_node_int", "decision node ID"},
    {"utility_node_int", "utility node ID"}, {"disconnected_node_int", "disconnected node ID"},
    {"net", "net"}, {"node", "node"}, {"nature_node", "nature node"},
    {"constant_node", "constant node"}, {"decision_node", "decision node"},
    {"utility_node", "utility node"},
    {"undef_state_indicator", "\"undefined state\" indicator"},
    {"every_state_indicator", "\"every state\" indicator"},
    {"imposs_cond_indicator", "\"impossible condition\" indicator"},
    {"CPTable", "CPT table"}, {"functable", "function table"}, {"expertable", "experience table"},
    {"Bayes_net", "Bayes net"}, {"Nodeset", "node-set"}, {"finding", "finding"},
    {"var", "variable"}, {"setter_menu", "selector"},
};

constexpr Term kProcedural[] = {
    {"cr", ""}, {"probtype", "prob_bn"}, {"detvtype", "value_bn"}, {"utiltype", "util_bn"},
    {"int_state", "state_bn"}, {"leveltype", "level_bn"}, {"bool", "bool_ns"},
    {"Enviro", "environ_ns"}, {"rept", "report_ns"}, {"FileSpec", "stream_ns"},
    {"RandGen", "randgen_ns"}, {"Bnet", "net_bn"}, {"Bnode", "node_bn"},
    {"Bnodes", "nodelist_bn"}, {"icase", "setting_bn"}, {"NetTest", "tester_bn"},
    {"Sensv", "sensv_bn"}, {"DBmgr", "dbmgr_bn"}, {"ErrCondEN", "errcond_ns"},
    {"ErrSeverityEN", "errseverity_ns"}, {"APICheckingLevelEN", "checking_ns"},
    {"VarDiscreteEN", "nodetype_bn"}, {"NodeKindEN", "nodekind_bn"},
    {"undef_state_int", "UNDEF_STATE"}, {"every_state_int", "EVERY_STATE"},
    {"imposs_cond_int", "IMPOSS_STATE"}, {"nature_node_int", "NATURE_NODE"},
    {"constant_node_int", "CONSTANT_NODE"}, {"decision_node_int", "DECISION_NODE"},
    {"utility_node_int", "UTILITY_NODE"}, {"disconnected_node_int", "DISCONNECTED_NODE"},
    {"Nodeset", "Nodeset"},
};

constexpr Term kClassLibrary[] = {
    {"cr", ""}, {"bool", "bool"}, {"probtype", "prob_bn"},
    {"ErrCondEN", "ErrCondEN"}, {"ErrSeverityEN", "ErrSeverityEN"},
    {"APICheckingLevelEN", "APICheckingLevelEN"}, {"VarDiscreteEN", "VarDiscreteEN"},
    {"NodeKindEN", "NodeKindEN"},
    {"undef_state_int", "UNDEF_STATE"}, {"every_state_int", "EVERY_STATE"},
    {"imposs_cond_int", "IMPOSS_STATE"}, {"nature_node_int", "NATURE_NODE"},
    {"constant_node_int", "CONSTANT_NODE"}, {"decision_node_int", "DECISION_NODE"},
    {"utility_node_int", "UTILITY_NODE"}, {"disconnected_node_int", "DISCONNECTED_NODE"},
    {"AddNodesFromDB_bn", "addNodesToNet"},
};

// The object interface: type terms become class names, enumerations
// qualified constants, interface functions the methods standing for them.
constexpr Term kObject[] = {
    {"cr", ""}, {"Enviro", "Environ"}, {"rept", "RaveloError"}, {"FileSpec", "Streamer"},
    {"RandGen", "RandomGenerator"}, {"Bnet", "Net"}, {"Bnode", "Node"},
    {"BndList", "NodeList"}, {"icase", "Case"}, {"NetTest", "NetTester"},
    {"Sensv", "Sensitivity"}, {"DBmgr", "DatabaseManager"}, {"probtype", "float"},
    {"detvtype", "double"}, {"utiltype", "double"}, {"leveltype", "double"},
    {"int_state", "int"}, {"ErrCondEN", "RaveloError.[various]_CND"},
    {"ErrSeverityEN", "RaveloError.[various]_ERR"},
    {"APICheckingLevelEN", "Environ.[various]_CHECK"},
    {"undef_state_int", "State.UNDEF_STATE"}, {"nature_node_int", "Node.NATURE_NODE"},
    {"NewNet_bn", "Net(Environ env) constructor"}, {"GetNodeProbs_bn", "Node.getCPTable"},
    {"SetNodeProbs_bn", "Node.setCPTable"}, {"GetNodeExperience_bn", "Node.getExperTable"},
    {"ErrorNumber_ns", "RaveloError.getIdNumber"},
    {"ErrorCategory_ns", "RaveloError.isInCategory"},
    {"ClearErrors_ns", "[that clears all errors]"},
};

// The automation interface; its enumerators have empty texts so that they
// are never substituted.
constexpr Term kAutomation[] = {
    {"cr", ""}, {"Enviro", "Application"}, {"rept", "error"}, {"Bnet", "BNet"},
    {"Bnode", "BNode"}, {"Bnodes", "BNodes"}, {"icase", "Condition"},
    {"LearnControl", "Learner"}, {"CloseRavelo_bn", "Application.Quit"},
    {"CopyNet_bn", "BNet.Clone"},
    {"NoCheck", ""}, {"QuickCheck", ""}, {"RegularCheck", ""}, {"CompleteCheck", ""},
    {"ContinuousType", ""}, {"DiscreteType", ""}, {"FirstCase", ""}, {"NextCase", ""},
    {"NoMoreCases", ""}, {"NoValue", ""}, {"LikelihoodValue", ""}, {"NegativeValue", ""},
    {"IntervalValue", ""}, {"GaussianValue", ""}, {"StateValue", ""}, {"RealValue", ""},
    {"EntropyMeasure", ""}, {"VarianceMeasure", ""}, {"RealMeasure", ""},
};

template <size_t N>
const char* find_in(const Term (&table)[N], std::string_view term) {
    for (const Term& t : table)
        if (term == t.term) return t.text;
    return nullptr;
}

const char* find(int language, std::string_view term) {
    switch (language) {
        case 0: return find_in(kPlain, term);
        case 1: return find_in(kProcedural, term);
        case 2: return find_in(kClassLibrary, term);
        case 3: return find_in(kObject, term);
        case 4: return find_in(kAutomation, term);
        default: return nullptr;
    }
}

bool is_term_char(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

}  // namespace

std::string lookup_term(std::string_view term, int language) {
    if (term.size() > static_cast<size_t>(kMaxTermLength)) term = term.substr(0, kMaxTermLength);
    if (term == "Ravelo" || term == "Tolvek") return std::string(term);
    const char* text = find(language, term);
    if (language == 2 && !(text && *text)) text = find(3, term);
    if (text && *text) return text;
    const char* plain = find(0, term);
    if (plain && *plain) return plain;
    return std::string(term);
}

std::string substitute_terms(std::string_view text, int language) {
    std::string out;
    out.reserve(text.size() + 16);
    size_t i = 0;
    while (i < text.size()) {
        if (text[i] == '>' && i + 1 < text.size() && text[i + 1] == '-') {
            size_t start = i + 2, end = start;
            while (end < text.size() && is_term_char(text[end])) ++end;
            if (end > start) {
                out += lookup_term(text.substr(start, end - start), language);
                i = end;
                if (i < text.size() && text[i] == '-') ++i;
                continue;
            }
        }
        out += text[i++];
    }
    return out;
}

}  // namespace ravelo
