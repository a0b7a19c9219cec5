#include "eqn/evaluate.h"

#include <cfloat>
#include <cmath>
#include <cstdarg>
#include <vector>

#include "base/failure.h"
#include "base/text.h"
#include "eqn/library.h"

namespace ravelo {
namespace {

thread_local std::string t_problem;
thread_local bool t_has_problem = false;
thread_local bool t_building_table = false;

constexpr int kEvalErrorNumber = 2510;

// Argument values are printed "%g, " each, the last separator dropped.
std::string argument_text(const double* args, int n) {
    std::string text;
    for (int i = 0; i < n; ++i) {
        if (is_undef(args[i])) text += "UNDEF, ";
        else if (std::isinf(args[i])) text += args[i] > 0 ? "INFINITY, " : "-INFINITY, ";
        else text += format("%g, ", args[i]);
    }
    if (!text.empty()) text.resize(text.size() - 2);
    return text;
}

class Evaluator {
public:
    Evaluator(const double* values, const ParsedEquation* eq) : values_(values), eq_(eq) {}

    double value(const Expr& e) {
        switch (e.kind) {
            case ExprKind::Number:
            case ExprKind::State:
                return e.value;
            case ExprKind::Variable:
                return values_[e.var];
            case ExprKind::Constant:
                if (is_undef(e.constant->value)) {
                    error_report(2511, "undefined value '%s'", e.constant->name.c_str());
                    return undef_value();
                }
                return e.constant->value;
            case ExprKind::Call:
                return call(e);
        }
        return undef_value();
    }

private:
    // Short-circuit forms; true when the result is settled in 'result'.
    bool short_circuit(const Expr& e, double& result) {
        const auto& args = e.args;
        switch (e.func->special) {
            case Special::And:
            case Special::Or: {
                bool is_and = e.func->special == Special::And;
                for (const auto& a : args) {
                    double v = value(*a);
                    if (is_undef(v)) return result = v, true;
                    if (is_and ? v == 0 : v != 0) return result = is_and ? 0 : 1, true;
                }
                return result = is_and ? 1 : 0, true;
            }
            case Special::If: {
                double c = value(*args[0]);
                if (is_undef(c)) return result = c, true;
                return result = value(*args[c != 0 ? 1 : 2]), true;
            }
            case Special::Select0:
            case Special::Select1: {
                if (args.size() < 2) return false;
                double k = value(*args[0]);
                if (is_undef(k)) return result = k, true;
                double i = std::trunc(k) - (e.func->special == Special::Select1 ? 1 : 0);
                if (i < 0 || i >= static_cast<double>(args.size() - 1)) return false;
                return result = value(*args[1 + static_cast<size_t>(i)]), true;
            }
            case Special::Member: {
                if (args.empty()) return false;
                double x = value(*args[0]);
                if (is_undef(x)) return result = x, true;
                for (size_t i = 1; i < args.size(); ++i) {
                    double v = value(*args[i]);
                    if (is_undef(v)) return result = v, true;
                    if (nearly_equal(x, v)) return result = 1, true;
                }
                return result = 0, true;
            }
            case Special::AsState:
                error_report(2512, "attempt to evaluate 'AsState' function.  It should only be used as the first part of a deterministic function equation for a discrete >-node with levels");
                return result = undef_value(), true;
            case Special::NoisySum:
                if (t_building_table) return false;
                error_report(2513, "convert this equation to >-CPTable before using, since it contains the NoisySumTableDist function");
                return result = undef_value(), true;
            default:
                return false;
        }
    }

    bool wants_cumulative(const Expr& e) const {
        if (!eq_ || !e.func->probability || e.args.empty()) return false;
        const Expr* first = e.args[0].get();
        // Look through the wrappers the parser puts around variables (_not, _levels, _discretize).
        while (first->kind == ExprKind::Call && first->func->name[0] == '_' && !first->func->probability &&
               !first->args.empty())
            first = first->args[0].get();
        return first->kind == ExprKind::Variable && eq_->vars[static_cast<size_t>(first->var)].cumulative;
    }

    double call(const Expr& e) {
        double result;
        if (short_circuit(e, result)) return result;
        int n = static_cast<int>(e.args.size());
        double small[10];
        std::vector<double> big;
        double* args = small;
        if (n > 10) {
            big.resize(static_cast<size_t>(n));
            args = big.data();
        }
        for (int i = 0; i < n; ++i) {
            args[i] = value(*e.args[static_cast<size_t>(i)]);
            if (is_undef(args[i])) return args[i];  // UNDEF passes silently
        }
        t_has_problem = false;
        if (e.func->body) {
            result = user_function(*e.func, args);
        } else {
            Routine routine = wants_cumulative(e) ? e.func->cdf : e.func->eval;
            result = routine ? routine(args, n) : undef_value();
        }
        bool passes_through = e.func->special == Special::Select0;
        if (!passes_through && std::fabs(result) > DBL_MAX) result = undef_value();  // overflow is an error
        if (is_undef(result)) {
            if (t_has_problem) {
                t_has_problem = false;
                error_report(2514, "%s", t_problem.c_str());
            } else {
                error_report(kEvalErrorNumber, "error evaluating function:  %s (%s)",
                             e.func->name.c_str(), argument_text(args, n).c_str());
            }
        }
        return result;
    }

    // The body sees the argument values as its variables.  Its calls were
    // resolved when it was parsed, before its own name existed, so bodies
    // cannot call themselves and nesting stays as deep as the definitions.
    static double user_function(const FuncDesc& f, const double* args) {
        Evaluator inner(args, nullptr);
        return inner.value(*f.body);
    }

    const double* values_;
    const ParsedEquation* eq_;
};

}  // namespace

TableBuildingScope::TableBuildingScope() : was_(t_building_table) { t_building_table = true; }
TableBuildingScope::~TableBuildingScope() { t_building_table = was_; }

void routine_problem(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    t_problem = vformat(fmt, args);
    va_end(args);
    t_has_problem = true;
}

double evaluate(const Expr& expr, const double* values, const ParsedEquation* equation) {
    Evaluator evaluator(values, equation);
    return evaluator.value(expr);
}

double evaluate_probability(const ParsedEquation& equation, const double* values,
                            std::string& reason) {
    if (!equation.expr || !equation.probabilistic) {
        reason = "couldn't obtain compiled equation";
        return undef_value();
    }
    double p = evaluate(*equation.expr, values, &equation);
    if (p < 0) {
        reason = format("probability equation generated negative value (%g)", p);
        return undef_value();
    }
    return p;
}

}  // namespace ravelo
