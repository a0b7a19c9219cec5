// Parse-time checks of the "Noisy" probability functions: which arguments
// must be variables, and the literal counts and probabilities they take.
#include <cmath>
#include <cstring>

#include "eqn/expr_parser.h"
#include "eqn/library.h"
#include "net/model.h"

namespace ravelo {
namespace {

const Expr* variable_under(const Expr& e) {
    const Expr* x = &e;
    while (x->kind == ExprKind::Call && x->func->name[0] == '_' && !x->args.empty()) x = x->args[0].get();
    return x->kind == ExprKind::Variable ? x : nullptr;
}

}  // namespace

void ExprParser::check_noisy(const FuncDesc& f, const std::vector<ExprPtr>& args) {
    const char* name = f.name.c_str();
    if (std::strncmp(name, "Noisy", 5) != 0 || args.empty()) return;
    auto ordinal = [](size_t i) { return ordinal_word(static_cast<int>(i)); };
    const Expr* output = variable_under(*args[0]);
    if (!output)
        parse_fault(2060, args[0]->position, "%s argument of function %s should be a variable (>-node), but it isn't",
                    ordinal(0), name);
    const Node& out_node = *vars_[static_cast<size_t>(output->var)].node;
    auto cause = [&](size_t i) {
        const Expr* v = variable_under(*args[i]);
        if (!v) return;
        const EqnVariable& var = vars_[static_cast<size_t>(v->var)];
        // "#" before a cause asks for a continuous value's interval; a discrete cause is a state already.
        if (var.node->is_discrete() && v->state_indicated)
            parse_fault(2067, args[i]->position, "%s is not a continuous variable (>-node), however only continuous (but discretized) ones are allowed (in %s argument of %s)",
                        var.name.c_str(), ordinal(i), name);
        if (!var.node->is_discrete() && v == args[i].get())
            parse_fault(2061, args[i]->position, "%s is a continuous variable (>-node), but only discrete or discretized ones are allowed (in %s argument of %s)",
                        vars_[static_cast<size_t>(v->var)].name.c_str(), ordinal(i), name);
    };
    auto probability = [&](size_t i) {
        const Expr& p = *args[i];
        if (p.kind == ExprKind::Number && !(p.value >= 0 && p.value <= 1))
            parse_fault(2062, p.position, "%s argument of function %s should be a probability (between 0 and 1), but it is %g",
                        ordinal(i), name, p.value);
    };
    bool multi = std::strcmp(name, "NoisyOrMultiDist") == 0, table = std::strcmp(name, "NoisyMaxTableDist") == 0;
    bool sum = f.special == Special::NoisySum;
    if (!multi && !table && !sum) {  // (X, leak, cause, prob, ...)
        for (size_t i = 1; i < args.size(); ++i) {
            if (i % 2 == 0) cause(i);
            else probability(i);
        }
        return;
    }
    if (args.size() < 2) {
        if (sum) parse_fault(2059, args[0]->position, "function '%s' is missing its last arguments", name);
        return;  // the evaluator reports the count
    }
    const Expr& count = *args[1];
    if (count.kind == ExprKind::Variable || count.kind == ExprKind::State || variable_under(count))
        parse_fault(2063, count.position, "%s argument of function %s should be a number, but it isn't", ordinal(1), name);
    if (count.kind != ExprKind::Number) return;  // computed: the evaluator checks it
    if (count.value != std::floor(count.value))
        parse_fault(2064, count.position, "%s argument of function %s should be an integer, but it isn't", ordinal(1), name);
    if (count.value != out_node.num_states())
        parse_fault(2065, count.position, "%s argument of function %s is %g, but it should be the number of states of the output variable (=%d)",
                    ordinal(1), name, count.value, out_node.num_states());
    size_t states = static_cast<size_t>(count.value);
    // A run of literal probabilities that together make one distribution.
    auto vector_sums_to_one = [&](size_t from) {
        double sum = 0;
        for (size_t i = from; i < from + states && i < args.size(); ++i) {
            probability(i);
            if (args[i]->kind != ExprKind::Number) return;
            sum += args[i]->value;
        }
        if (from + states <= args.size() && std::fabs(sum - 1) > 1e-5)
            parse_fault(2066, args[from]->position, "sum of probabilities for a condition of function %s should be 1, but it is %g",
                        name, sum);
    };
    if (sum) {
        if (states == 0) return;
        for (size_t i = 2 + states; i < args.size(); i += states) cause(i);
        check_noisy_sum(name, args, states);
        return;
    }
    vector_sums_to_one(2);
    size_t stride = multi ? 3 : states + 1;
    for (size_t i = 2 + states; i < args.size(); i += stride) {
        cause(i);
        if (multi && i + 2 < args.size()) probability(i + 2);
        if (table) vector_sums_to_one(i + 1);
    }
}

// NoisySumTableDist (X, num_states, offset, leak[1..n-1], then clauses
// (cause, p[1..n-1])): each vector gives the probabilities of adding the
// amounts 1 .. n-1, amount 0 taking what is left.
void ExprParser::check_noisy_sum(const char* name, const std::vector<ExprPtr>& args, size_t states) {
    auto ordinal = [](size_t i) { return ordinal_word(static_cast<int>(i)); };
    if (args.size() < 2 + states)
        parse_fault(2059, args.back()->position, "function '%s' is missing its last arguments", name);
    const Expr& offset = *args[2];
    if (offset.kind == ExprKind::Number && offset.value != 0)
        parse_fault(2069, offset.position, "%s argument of function %s must be zero with this version of >-Ravelo, but it is %g",
                    ordinal(2), name, offset.value);
    // One source's amount probabilities: literal ones are checked here, the rest when evaluated.
    auto amounts = [&](size_t from) {
        double total = 0;
        for (size_t i = from; i < from + states - 1 && i < args.size(); ++i) {
            const Expr& p = *args[i];
            if (variable_under(p) && p.type == ValueType::State)
                parse_fault(2046, p.position, "%s argument of function '%s' should be of type %s, but it is type %s (perhaps wrong number of prob/amount pairs specified)",
                            ordinal(i), name, type_word(ValueType::Real), type_word(p.type));
            if (p.kind != ExprKind::Number) continue;
            if (!(p.value >= 0 && p.value <= 1))
                parse_fault(2062, p.position, "%s argument of function %s should be a probability (between 0 and 1), but it is %g",
                            ordinal(i), name, p.value);
            total += p.value;
        }
        if (total > 1 + 1e-5)
            parse_fault(2068, args[from - 1]->position, "sum of probabilities for a condition of function %s should not be more than 1, but it is %g",
                        name, total);
    };
    amounts(3);
    for (size_t i = 2 + states; i < args.size(); i += states) {
        const Expr* v = variable_under(*args[i]);
        if (!v)
            parse_fault(2046, args[i]->position, "%s argument of function '%s' should be of type %s, but it is type %s (perhaps wrong number of prob/amount pairs specified)",
                        ordinal(i), name, type_word(ValueType::State), type_word(args[i]->type));
        if (i + states > args.size())
            parse_fault(2059, args.back()->position, "function '%s' is missing its last arguments", name);
        amounts(i + 1);
    }
}

}  // namespace ravelo
