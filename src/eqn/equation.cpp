#include "eqn/equation.h"

#include "net/model.h"

namespace ravelo {
namespace {

class Fingerprint {
public:
    void add(const void* data, size_t size) {
        auto* bytes = static_cast<const unsigned char*>(data);
        for (size_t i = 0; i < size; ++i) {
            hash_ ^= bytes[i];
            hash_ *= 1099511628211ull;
        }
    }
    void add(const std::string& s) {
        add(s.data(), s.size());
        add_value(s.size());
    }
    template <class T>
    void add_value(const T& v) { add(&v, sizeof v); }
    std::uint64_t value() const { return hash_; }

private:
    std::uint64_t hash_ = 14695981039346656037ull;
};

void add_node_shape(Fingerprint& f, const Node& node) {
    f.add(node.name);
    f.add_value(node.type);
    f.add_value(node.states.size());
    for (const StateInfo& s : node.states) f.add(s.name);
    f.add_value(node.levels.size());
    for (double l : node.levels) f.add_value(l);
}

}  // namespace

std::uint64_t equation_stamp(const Node& node) {
    Fingerprint f;
    f.add(node.equation);
    f.add_value(&node);  // a copied node never inherits its original's parse
    add_node_shape(f, node);
    f.add_value(node.parents.nodes.size());
    for (size_t i = 0; i < node.parents.nodes.size(); ++i) {
        f.add_value(node.parents.nodes[i]);
        add_node_shape(f, *node.parents.nodes[i]);
        f.add(i < node.input_names.size() ? node.input_names[i] : std::string());
    }
    return f.value();
}

const ParsedEquation* node_equation(Node& node, ParseProblem& problem) {
    std::uint64_t stamp = equation_stamp(node);
    if (node.parsed_equation && node.parsed_equation->stamp == stamp) return node.parsed_equation.get();
    node.parsed_equation.reset();
    if (node.equation.empty()) return nullptr;
    std::unique_ptr<ParsedEquation> parsed = parse_equation(node.equation, node, problem);
    if (!parsed) return nullptr;
    parsed->stamp = stamp;
    node.parsed_equation = std::move(parsed);
    return node.parsed_equation.get();
}

}  // namespace ravelo
