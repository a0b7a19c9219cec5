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
    if (std::strncmp(name, "Noisy", 5) != 0 || f.special == Special::NoisySum || args.empty()) return;
    auto ordinal = [](size_t i) { return ordinal_word(static_cast<int>(i)); };
    const Expr* output = variable_under(*args[0]);
    if (!output)
        parse_fault(2060, args[0]->position, "%s argument of function %s should be a variable (>-node), but it isn't",
                    ordinal(0), name);
    const Node& out_node = *vars_[static_cast<size_t>(output->var)].node;
    auto cause = [&](size_t i) {
        const Expr* v = variable_under(*args[i]);
        if (v && !vars_[static_cast<size_t>(v->var)].node->is_discrete() && v == args[i].get())
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
    if (!multi && !table) {  // (X, leak, cause, prob, ...)
        for (size_t i = 1; i < args.size(); ++i) {
            if (i % 2 == 0) cause(i);
            else probability(i);
        }
        return;
    }
    if (args.size() < 2) return;  // the evaluator reports the count
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
    vector_sums_to_one(2);
    size_t stride = multi ? 3 : states + 1;
    for (size_t i = 2 + states; i < args.size(); i += stride) {
        cause(i);
        if (multi && i + 2 < args.size()) probability(i + 2);
        if (table) vector_sums_to_one(i + 1);
    }
}

}  // namespace ravelo
