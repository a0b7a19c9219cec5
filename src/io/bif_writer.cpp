#include "io/bif.h"

#include <string_view>

#include "base/failure.h"
#include "base/numbers.h"
#include "base/text.h"
#include "base/tokenizer.h"

namespace ravelo {
namespace {

// Names that would not read back as one word are written quoted: any
// punctuation, space or control byte, and (to stay clear of what a reader
// counts as space) every byte outside printable ASCII.
std::string bif_word(const std::string& name) {
    if (name.empty()) return quoted(name);
    for (char c : name) {
        auto byte = static_cast<unsigned char>(c);
        if (byte <= ' ' || byte >= 0x7f || std::string_view("{}()[];,|=\"/").find(c) != std::string_view::npos)
            return quoted(name);
    }
    return name;
}

// A property runs to the next ';': one inside its name or value would end it early.
void require_plain_properties(const std::vector<std::pair<std::string, std::string>>& fields, const std::string& owner) {
    for (const auto& [key, value] : fields)
        if (key.find(';') != std::string::npos || value.find(';') != std::string::npos)
            fail(3413, "can't write property '%s' of %s in BIF format, because it holds a ';', which that format "
                       "can't express",
                 key.c_str(), owner.c_str());
}

void write_row(std::string& out, const float* row, size_t m) {
    for (size_t s = 0; s < m; ++s) {
        if (s) out += ", ";
        out += prob_text(row[s]);
    }
    out += ";\n";
}

}  // namespace

std::string write_bif(const ForeignNet& net) {
    require_plain_properties(net.fields, ">-net '" + net.name + "'");
    for (const ForeignNode& node : net.nodes) require_plain_properties(node.fields, ">-node '" + node.name + "'");
    std::string out = "network " + bif_word(net.name) + " {\n";
    for (const auto& [key, value] : net.fields) out += "  property " + key + " " + value + ";\n";
    out += "}\n";
    for (const ForeignNode& node : net.nodes) {
        out += "variable " + bif_word(node.name) + " {\n";
        out += format("  type discrete [ %zu ] { ", node.states.size());
        for (size_t s = 0; s < node.states.size(); ++s)
            out += (s ? ", " : "") + bif_word(node.states[s]);
        out += " };\n";
        if (node.has_position)
            out += "  property position = (" + real_text(node.x) + ", " + real_text(node.y) + ");\n";
        for (const auto& [key, value] : node.fields) out += "  property " + key + " " + value + ";\n";
        out += "}\n";
    }
    for (const ForeignNode& node : net.nodes) {
        if (node.cpt.empty() && node.parents.empty()) continue;
        out += "probability ( " + bif_word(node.name);
        for (size_t p = 0; p < node.parents.size(); ++p)
            out += (p ? ", " : " | ") + bif_word(node.parents[p]);
        out += " ) {\n";
        size_t m = node.states.size();
        // Every row is given: what the format cannot say was refused before.
        if (node.parents.empty() && !node.cpt.empty()) {
            out += "  table ";
            write_row(out, node.cpt.data(), m);
        } else if (!node.cpt.empty()) {
            std::vector<const ForeignNode*> parents;
            for (const std::string& p : node.parents)
                parents.push_back(&net.nodes[static_cast<size_t>(find_node(net, p))]);
            std::vector<size_t> condition(parents.size(), 0);
            for (size_t start = 0; start + m <= node.cpt.size(); start += m) {
                out += "  (";
                for (size_t p = 0; p < parents.size(); ++p)
                    out += (p ? ", " : "") + bif_word(parents[p]->states[condition[p]]);
                out += ") ";
                write_row(out, &node.cpt[start], m);
                for (size_t p = parents.size(); p-- > 0;) {
                    if (++condition[p] < parents[p]->states.size()) break;
                    condition[p] = 0;
                }
            }
        }
        out += "}\n";
    }
    return out;
}

}  // namespace ravelo
