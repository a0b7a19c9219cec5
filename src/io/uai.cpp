#include "io/uai.h"

#include "base/numbers.h"
#include "base/text.h"
#include "base/tokenizer.h"

namespace ravelo {
namespace {

const TokenRules kUaiRules{"", false, 0};

class UaiReader {
public:
    UaiReader(std::string_view text, const ReadPlace& place) : tokens_(text, kUaiRules, place.file), place_(place) {}

    ForeignNet read() {
        Token kind = tokens_.next();
        if (!kind.is_word("BAYES"))
            read_failure(place_, kind.line, format("the file's network type is '%s', but only BAYES networks can be read",
                                                   kind.text.c_str()));
        ForeignNet net;
        size_t count = count_of("the number of variables");
        for (size_t v = 0; v < count; ++v) {
            ForeignNode node;
            node.line = tokens_.line();
            node.name = format("v%zu", v);
            size_t states = count_of("a number of states");
            if (states < 1 || states > 100000)
                read_failure(place_, node.line, format("variable %zu has %zu states", v, states));
            for (size_t s = 0; s < states; ++s) node.states.push_back(format("s%zu", s));
            net.nodes.push_back(std::move(node));
        }
        size_t factors = count_of("the number of factors");
        if (factors != count)
            read_failure(place_, tokens_.line(), format("there are %zu factors, but a Bayesian network of %zu "
                                                        "variables needs one per variable", factors, count));
        std::vector<size_t> child_of_factor;
        for (size_t f = 0; f < factors; ++f) {
            int line = tokens_.line();
            size_t scope = count_of("a factor's number of variables");
            if (scope < 1 || scope > count) read_failure(place_, line, format("factor %zu has %zu variables", f, scope));
            std::vector<size_t> vars;
            for (size_t i = 0; i < scope; ++i) {
                size_t v = count_of("a variable index");
                if (v >= count) read_failure(place_, line, format("variable index %zu is out of range", v));
                vars.push_back(v);
            }
            // The factor's last variable is the one it gives probabilities of.
            ForeignNode& node = net.nodes[vars.back()];
            if (node.table_line) read_failure(place_, line, format("variable %zu has more than one factor", vars.back()));
            node.table_line = line;
            for (size_t i = 0; i + 1 < scope; ++i) node.parents.push_back(net.nodes[vars[i]].name);
            table_size(net, node, place_);
            child_of_factor.push_back(vars.back());
        }
        for (size_t f = 0; f < factors; ++f) {
            ForeignNode& node = net.nodes[child_of_factor[f]];
            size_t size = table_size(net, node, place_);
            size_t entries = count_of("a factor's number of entries");
            if (entries != size)
                read_failure(place_, tokens_.line(), format("factor %zu has %zu entries, but there should be %zu",
                                                            f, entries, size));
            node.cpt.reserve(size);
            for (size_t i = 0; i < size; ++i) {
                Token t = tokens_.next();
                auto x = read_real(t.text);
                if (!x) read_failure(place_, t.line, format("'%s' is not a probability", t.text.c_str()));
                node.cpt.push_back(static_cast<float>(*x));
            }
        }
        return net;
    }

private:
    size_t count_of(const char* what) {
        Token t = tokens_.next();
        if (t.kind == Token::End) read_failure(place_, t.line, format("file ends where %s should be", what));
        auto n = read_integer(t.text);
        if (!n || *n < 0) read_failure(place_, t.line, format("'%s' is not %s", t.text.c_str(), what));
        return static_cast<size_t>(*n);
    }

    Tokenizer tokens_;
    const ReadPlace& place_;
};

}  // namespace

ForeignNet read_uai(std::string_view text, const ReadPlace& place) { return UaiReader(text, place).read(); }

std::string write_uai(const ForeignNet& net) {
    std::string out = format("BAYES\n%zu\n", net.nodes.size());
    for (size_t i = 0; i < net.nodes.size(); ++i) out += format(i ? " %zu" : "%zu", net.nodes[i].states.size());
    out += format("\n%zu\n", net.nodes.size());
    for (const ForeignNode& node : net.nodes) {
        out += format("%zu", node.parents.size() + 1);
        for (const std::string& p : node.parents) out += format(" %d", find_node(net, p));
        out += format(" %d\n", find_node(net, node.name));
    }
    for (const ForeignNode& node : net.nodes) {
        // Every node has its table: one without was refused before.
        size_t size = node.states.size();
        for (const std::string& p : node.parents) size *= net.nodes[static_cast<size_t>(find_node(net, p))].states.size();
        out += format("\n%zu\n", size);
        for (size_t i = 0; i < size; ++i) {
            out += ' ';
            out += prob_text(i < node.cpt.size() ? node.cpt[i] : 0.0f);
        }
        out += "\n";
    }
    return out;
}

}  // namespace ravelo
