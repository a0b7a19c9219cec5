// The writer of text net files.
#include <algorithm>
#include <cmath>
#include <functional>

#include "base/numbers.h"
#include "base/text.h"
#include "base/tokenizer.h"
#include "io/dne.h"
#include "io/dne_definitions.h"
#include "io/dne_words.h"
#include "net/names.h"

namespace ravelo {
namespace {

constexpr int kFileVersion = 1;

std::string state_word(const Node& node, int state) {
    if (state == kUndefState) return "@undef";
    if (state == kImpossState) return "@imposs";
    if (state == kEveryState) return "@any";
    if (state < 0 || state >= node.num_states()) return "@error";
    const std::string& name = node.states[static_cast<size_t>(state)].name;
    return name.empty() ? format("%d", state) : name;
}

std::string entry_word(float p) {
    if (p == kImpossibleProb) return "@imposs";
    if (p == kMissingProb) return "@undef";
    if (p < 0) return "@error";
    return prob_text(p);
}

// A delay as a bare word when it reads back as the same word, else quoted.
std::string delay_word(const std::string& delay) {
    bool bare = !delay.empty() && (read_real(delay) || is_legal_name(delay.c_str()));
    return bare ? delay : quoted(delay);
}

// The node's position, with one coordinate per dimension of its net.
std::string position_text(const Node& n) {
    std::vector<double> xy{n.vis_x, n.vis_y};
    xy.insert(xy.end(), n.position_rest.begin(), n.position_rest.end());
    xy.resize(static_cast<size_t>(std::max(n.net->dimensions, 1)), 0.0);
    std::string out = "(";
    for (size_t i = 0; i < xy.size(); ++i) out += (i ? ", " : "") + real_text(xy[i]);
    return out + ")";
}

class Writer {
public:
    explicit Writer(const Net& net) : net_(net) {}
    std::string run();

private:
    // The keyword is a view, not a C string: quoted user-field keys may hold NUL bytes.
    void field(const std::string& indent, std::string_view keyword, const std::string& value) {
        out_ += indent;
        out_ += keyword;
        out_ += " = " + value + ";\n";
    }
    void node(const Node& node);
    void states(const Node& node);
    // Rows are vectors of width entries in probability tables (even of one
    // state), single entries in the others.
    void table(const Node& node, const char* keyword, size_t width, bool vectors,
               const std::function<std::string(size_t entry)>& entry);
    void findings(const Node& node);
    void time_fields(const Node& node);  // link delays and persistence
    // The kept statements with these keywords, in their table order.
    void kept(const std::vector<std::pair<std::string, std::string>>& statements, const std::string& indent,
              std::initializer_list<const char*> keywords) {
        for (const char* k : keywords)
            for (const auto& [keyword, value] : statements)
                if (keyword == k) field(indent, k, value);
    }

    const Net& net_;
    std::string out_;
};

template <class Items, class Text>
std::string list_of(const Items& items, Text&& text) {
    std::string out = "(";
    bool first = true;
    for (const auto& item : items) {
        if (!first) out += ", ";
        first = false;
        out += text(item);
    }
    return out + ")";
}

std::string Writer::run() {
    out_ = format("// ~->[DNET-%d]->~\n\n", kFileVersion);
    out_ += "// stamp = written by Ravelo\n";
    out_ += "bnet " + net_.name + " {\n";
    if (net_.dimensions != 2) field("", "numdimensions", format("%d", net_.dimensions));
    kept(net_.kept_statements, "", {"eqncontext", "AutoCompile"});
    field("", "autoupdate", net_.auto_update ? "TRUE" : "FALSE");
    if (!net_.title.empty()) field("", "title", quoted(net_.title));
    if (!net_.comment.empty()) field("", "comment", quoted(net_.comment));
    for (const char* k : {"author", "whochanged", "whenchanged"})
        if (const std::string* v = net_.user_fields.find(k)) field("", k, quoted(*v));
    if (net_.elim_order && !net_.elim_order->nodes.empty())
        field("", "ElimOrder", list_of(net_.elim_order->nodes, [](const Node* n) { return n->name; }));
    kept(net_.kept_statements, "", {"definenodes"});
    bool has_user = false;
    for (const auto& [key, value] : net_.user_fields.fields) {
        if (key == "author" || key == "whochanged" || key == "whenchanged") continue;
        if (!has_user) out_ += "\nuser U1 {\n";
        has_user = true;
        field("\t", quoted(key), quoted(value));
    }
    if (has_user) out_ += "\t};\n";
    if (!net_.visual.empty()) {
        out_ += "\nvisual V1 {\n";
        field("\t", "text", quoted(net_.visual));
        out_ += "\t};\n";
    }
    for (const NodeDefinition& d : net_.definitions) out_ += definition_declaration(d);
    for (const Node* n : net_.nodes.nodes) node(*n);
    if (!net_.node_sets.empty()) out_ += "\n";
    for (const NodeSet& set : net_.node_sets) {
        out_ += "NodeSet " + set.name + " {Nodes = " +
                list_of(set.members, [](const Node* n) { return n->name; }) + ";";
        if (!set.color.empty()) out_ += " Color = " + quoted(set.color) + ";";
        out_ += "};\n";
    }
    out_ += "};\n";
    return std::move(out_);
}

void Writer::states(const Node& n) {
    field("\t", "numstates", format("%d", n.num_states()));
    auto has = [&](auto member) {
        for (const StateInfo& s : n.states)
            if (!(s.*member).empty()) return true;
        return false;
    };
    if (has(&StateInfo::name))
        field("\t", "states", list_of(n.states, [](const StateInfo& s) { return s.name; }));
    if (has(&StateInfo::title))
        field("\t", "statetitles", list_of(n.states, [](const StateInfo& s) { return quoted(s.title); }));
    if (has(&StateInfo::comment))
        field("\t", "StateComments", list_of(n.states, [](const StateInfo& s) { return quoted(s.comment); }));
    if (!n.levels.empty()) field("\t", "levels", list_of(n.levels, [](double x) { return real_text(x); }));
}

void Writer::node(const Node& n) {
    const size_t start = out_.size();
    out_ += "\nnode " + n.name + " {\n";
    field("\t", "kind", std::string(kKindWords[static_cast<int>(n.kind)]));
    field("\t", "discrete", n.type == NodeType::Discrete ? "TRUE" : n.type == NodeType::Continuous ? "FALSE" : "UNKNOWN_DISCRETE");
    if (n.measure != Measure::Unknown) field("\t", "measure", std::string(kMeasureWords[static_cast<int>(n.measure)]));
    field("\t", "chance", std::string(kChanceWords[static_cast<int>(n.chance)]));
    states(n);
    if (const std::string* units = n.user_fields.find("units")) field("\t", "units", quoted(*units));
    field("\t", "parents", list_of(n.parents.nodes, [](const Node* p) { return p->name; }));
    bool has_inputs = false;
    for (const std::string& input : n.input_names) has_inputs = has_inputs || !input.empty();
    if (has_inputs) field("\t", "inputs", list_of(n.input_names, [](const std::string& s) { return s; }));
    time_fields(n);
    if (!n.func_states.empty())
        table(n, "functable", 1, false, [&](size_t i) { return state_word(n, n.func_states[i]); });
    if (!n.func_reals.empty())
        table(n, "functable", 1, false, [&](size_t i) { return real_text(n.func_reals[i]); });
    if (!n.cpt.empty())
        table(n, "probs", static_cast<size_t>(n.num_states()), true, [&](size_t i) { return entry_word(n.cpt[i]); });
    if (!n.experience.empty())
        table(n, "numcases", 1, false, [&](size_t i) { return real_text(n.experience[i]); });
    if (!is_undef(n.prior_count)) field("\t", "ExperBase", real_text(n.prior_count));
    if (!n.equation.empty()) field("\t", "equation", quoted(n.equation));
    if (n.equation_dirty) field("\t", "EqnDirty", "TRUE");
    if (n.has_position) field("\t", "position", position_text(n));
    if (!n.title.empty()) field("\t", "title", quoted(n.title));
    if (!n.comment.empty()) field("\t", "comment", quoted(n.comment));
    for (const char* k : {"author", "whochanged", "whenchanged"})
        if (const std::string* v = n.user_fields.find(k)) field("\t", k, quoted(*v));
    findings(n);
    kept(n.kept_statements, "\t", {"definenodes"});
    std::vector<std::pair<std::string, std::string>> others;
    for (const auto& kv : n.user_fields.fields)
        if (kv.first != "author" && kv.first != "whochanged" && kv.first != "whenchanged" && kv.first != "units")
            others.push_back(kv);
    if (!others.empty())
        field("\t", "fields", list_of(others, [](const auto& kv) {
                  std::string pair = "(";
                  pair += quoted(kv.first);
                  pair += ", ";
                  pair += quoted(kv.second);
                  return pair + ")";
              }));
    if (!n.vis_style.empty()) {
        out_ += "\tvisual V1 {\n";
        field("\t\t", "style", quoted(n.vis_style));
        out_ += "\t\t};\n";
    }
    out_ += "\t};\n";
    if (!n.inherits.empty()) out_.replace(start, std::string::npos, inheriting_declaration(net_, n, out_.substr(start)));
}

// Nested lists, one level per parent, one line per condition with the
// condition's parent states beside it.
void Writer::table(const Node& n, const char* keyword, size_t width, bool vectors,
                   const std::function<std::string(size_t entry)>& entry) {
    const auto& parents = n.parents.nodes;
    size_t k = parents.size();
    size_t rows = static_cast<size_t>(table_rows(n));
    out_ += std::string("\t") + keyword + " = \n";
    if (width > 1 && n.has_states()) {
        out_ += "\t\t// ";
        for (int s = 0; s < n.num_states(); ++s) out_ += state_word(n, s) + "  ";
        if (k) {
            out_ += " //";
            for (const Node* p : parents) out_ += " " + p->name;
        }
        out_ += "\n";
    }
    std::vector<int> condition(k, 0);
    for (size_t r = 0; r < rows; ++r) {
        size_t opens = 0, closes = 0;
        while (opens < k && condition[k - 1 - opens] == 0) ++opens;
        while (closes < k && condition[k - 1 - closes] == parents[k - 1 - closes]->num_states() - 1) ++closes;
        std::string line = "\t\t" + std::string(k - opens, ' ') + std::string(opens, '(');
        if (vectors) line += "(";
        for (size_t i = 0; i < width; ++i) {
            if (i) line += ", ";
            line += entry(r * width + i);
        }
        if (vectors) line += ")";
        line += std::string(closes, ')');
        line += r + 1 < rows ? "," : ";";
        if (k) {
            line += "\t\t//";
            for (size_t p = 0; p < k; ++p) {
                line += ' ';
                line += state_word(*parents[p], condition[p]);
            }
        }
        out_ += line + "\n";
        for (size_t p = k; p-- > 0;) {
            if (++condition[p] < parents[p]->num_states()) break;
            condition[p] = 0;
        }
    }
}

void Writer::time_fields(const Node& n) {
    bool has_delays = false;
    for (const std::string& d : n.delays) has_delays = has_delays || !d.empty();
    if (has_delays) {
        std::vector<std::string> words;
        for (size_t k = 0; k < n.parents.nodes.size(); ++k) words.push_back(delay_word(link_delay(n, k)));
        field("\t", "delays", list_of(words, [](const std::string& w) { return w; }));
    }
    if (!n.persistence.empty()) field("\t", "persist", list_of(n.persistence, [](double x) { return real_text(x); }));
}

void Writer::findings(const Node& n) {
    const FindingRecord& f = n.finding;
    if (f.state >= 0) {
        if (n.states[static_cast<size_t>(f.state)].name.empty()) field("\t", "Finding", format("%d", f.state));
        else field("\t", "evidence", n.states[static_cast<size_t>(f.state)].name);
    }
    if (f.has_value) field("\t", "value", real_text(f.value));
    if (!f.likelihood.empty())
        field("\t", "likelihood", list_of(f.likelihood, [](float p) { return prob_text(p); }));
}

}  // namespace

std::string write_dne(const Net& net) { return Writer(net).run(); }

}  // namespace ravelo
