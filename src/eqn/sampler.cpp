// Drawing one value of a node from its equation, for simulation.
#include <cmath>
#include <vector>

#include "base/failure.h"
#include "base/progress.h"
#include "base/random.h"
#include "base/text.h"
#include "eqn/evaluate.h"
#include "eqn/interval_sampling.h"
#include "eqn/to_table.h"
#include "net/model.h"

namespace ravelo {

const ParsedEquation& checked_equation(Node& node, bool for_table);

namespace {

constexpr int kMaxRejections = 1000;
constexpr int kBoundProbes = 64;

std::string input_text(const ParsedEquation& eq, const std::vector<double>& values) {
    std::string text;
    for (size_t v = 0; v < eq.vars.size(); ++v) {
        if (eq.vars[v].parent < 0) continue;
        if (!text.empty()) text += ", ";
        text += eq.vars[v].name + " = " + format("%g", values[v]);
    }
    return text.empty() ? std::string("(none)") : text;
}

// The parent condition the values fall in (continuous parents by interval).
size_t condition_of(const Node& node, const double* parent_values) {
    std::vector<int> states(node.parents.nodes.size());
    for (size_t i = 0; i < states.size(); ++i) {
        const Node& p = *node.parents.nodes[i];
        int st = p.is_discrete() ? static_cast<int>(parent_values[i]) : interval_of(p.levels, parent_values[i]);
        states[i] = st < 0 ? 0 : st;
    }
    return states.empty() ? 0 : row_of(node, states.data());
}

double density(const ParsedEquation& eq, std::vector<double>& values, double x, const Node& node) {
    values[static_cast<size_t>(eq.output_var)] = x;
    std::string reason;
    double p = evaluate_probability(eq, values.data(), reason);
    if (is_undef(p))
        fail(2583, "error evaluating equation of >-node '%s':  %s.%s%s", node.name.c_str(),
             reason.empty() ? "it gave an undefined value" : reason.c_str(), "  Input is ",
             input_text(eq, values).c_str());
    return p;
}

double sample_discrete(const ParsedEquation& eq, std::vector<double>& values, Node& node,
                       RandomGenerator& rng) {
    std::vector<double> running(static_cast<size_t>(node.num_states()));
    double sum = 0;
    for (int s = 0; s < node.num_states(); ++s) {
        sum += density(eq, values, s, node);
        running[static_cast<size_t>(s)] = sum;
    }
    if (!(sum > 0))
        fail(2584, "equation of >-node '%s' gives no state a positive probability with input %s",
             node.name.c_str(), input_text(eq, values).c_str());
    double u = rng.uniform() * sum;
    for (int s = 0; s < node.num_states(); ++s)
        if (u < running[static_cast<size_t>(s)]) return s;
    return node.num_states() - 1;
}

// Rejection sampling under the highest density seen for this parent condition.
double sample_continuous(ParsedEquation& eq, std::vector<double>& values, Node& node,
                         size_t condition, RandomGenerator& rng) {
    const auto& levels = node.levels;
    double lo = levels.front(), width = levels.back() - lo;
    if (eq.density_bounds.size() <= condition) eq.density_bounds.resize(condition + 1, -1);
    double& bound = eq.density_bounds[condition];
    if (bound < 0) {
        Progress progress(node.net->env, "to make probability sampling structure");
        bound = 0;
        for (int k = 0; k < kBoundProbes; ++k)
            bound = std::fmax(bound, density(eq, values, lo + width * (k + 0.5) / kBoundProbes, node));
        progress.update(1.0);
    }
    for (int rejections = 0;; ++rejections) {
        if (rejections > kMaxRejections)
            fail(2585, "adjust discretization intervals or equation, because it is requiring an excessive number of samples to find value of '%s' with input %s",
                 node.name.c_str(), input_text(eq, values).c_str());
        double x = lo + width * rng.uniform();
        double p = density(eq, values, x, node);
        if (p > bound) bound = p;
        if (rng.uniform() * bound <= p && p > 0) return x;
    }
}

}  // namespace

double sample_from_equation(Node& node, const double* parent_values, RandomGenerator& rng) {
    const char* name = node.name.c_str();
    ParsedEquation* eq = nullptr;
    try {
        eq = const_cast<ParsedEquation*>(&checked_equation(node, false));
    } catch (const Failure&) {
        fail(2580, "don't have valid equation for >-node '%s'", name);
    }
    bool continuous = !node.is_discrete();
    if (continuous && eq->probabilistic) {
        if (node.levels.size() < 2) fail(2581, ">-node '%s' must have discretization intervals for this operation", name);
        if (!std::isfinite(node.levels.front()) || !std::isfinite(node.levels.back()))
            fail(2582, "can't simulate an equation with a range that goes to infinity (>-node '%s')", name);
    }
    std::vector<double> values(eq->vars.size(), 0.0);
    for (size_t v = 0; v < eq->vars.size(); ++v)
        if (eq->vars[v].parent >= 0) values[v] = parent_values[eq->vars[v].parent];
    if (!eq->probabilistic) {
        double v = evaluate(*eq->expr, values.data(), eq);
        if (is_undef(v))
            fail(2550, "equation for node %s is returning an undefined value; could one of its parents have an undefined value (-3)?  \nInput is %s",
                 name, input_text(*eq, values).c_str());
        if (!node.is_discrete()) return v;
        bool in_range = eq->boolean_output || (v == std::floor(v) && v >= 0 && v < node.num_states());
        if (!in_range)
            fail(2551, "since %s is discrete, its equation should return a state number, which is an integer, but it is returning %g with input %s",
                 name, v, input_text(*eq, values).c_str());
        int st = eq->boolean_output ? (v != 0 ? eq->true_state : 1 - eq->true_state) : static_cast<int>(v);
        return node.levels.empty() ? st : node.levels[static_cast<size_t>(st)];
    }
    if (!continuous) {
        int st = static_cast<int>(sample_discrete(*eq, values, node, rng));
        return node.levels.empty() ? st : node.levels[static_cast<size_t>(st)];
    }
    return sample_continuous(*eq, values, node, condition_of(node, parent_values), rng);
}

}  // namespace ravelo
