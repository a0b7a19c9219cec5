// Operators and built-in functions of the equation language.
#include <algorithm>
#include <cfloat>
#include <cmath>

#include "base/text.h"
#include "eqn/library.h"

namespace ravelo {
namespace {

constexpr ValueType B = ValueType::Boolean, S = ValueType::State, I = ValueType::Integer,
                    R = ValueType::Real, N = ValueType::Numeric, A = ValueType::Any,
                    O = ValueType::None;

double undef() { return undef_value(); }

FuncDesc fn(const char* name, int arity, Routine eval, ValueType result, ValueType first,
            ValueType rest = O) {
    FuncDesc f;
    f.name = name;
    f.arity = arity;
    f.eval = eval;
    f.result = result;
    f.first = first;
    f.rest = rest == O && arity != 1 ? first : rest;
    return f;
}

FuncDesc op(const char* name, const char* symbol, int arity, Routine eval, ValueType result,
            ValueType operands, int precedence) {
    FuncDesc f = fn(name, arity, eval, result, operands, operands);
    f.symbol = symbol;
    f.precedence = precedence;
    return f;
}

FuncDesc chained(FuncDesc f) {
    f.associative = f.symmetric = true;
    return f;
}

// Operators.
double neg(const double* a, int) { return -a[0]; }
double logical_not(const double* a, int) { return a[0] == 0 ? 1 : 0; }
double equal(const double* a, int) { return a[0] == a[1]; }
double not_equal(const double* a, int) { return a[0] != a[1]; }
double less(const double* a, int) { return a[0] < a[1]; }
double greater(const double* a, int) { return a[0] > a[1]; }
double less_eq(const double* a, int) { return a[0] <= a[1]; }
double greater_eq(const double* a, int) { return a[0] >= a[1]; }
double approx_eq(const double* a, int) { return nearly_equal(a[0], a[1], 1 - 2e-5); }
double plus(const double* a, int n) {
    double s = 0;
    for (int i = 0; i < n; ++i) s += a[i];
    return s;
}
double minus(const double* a, int) { return a[0] - a[1]; }
double mult(const double* a, int n) {
    double p = 1;
    for (int i = 0; i < n; ++i) p *= a[i];
    return p;
}
double divide(const double* a, int) {
    if (a[1] == 0) return a[0] == 0 ? 0 : undef();  // 0/0 is 0 on purpose
    return a[0] / a[1];
}
double mod(const double* a, int) { return a[1] == 0 ? undef() : std::fmod(a[0], a[1]); }
double power(const double* a, int) { return std::pow(a[0], a[1]); }
double logical_and(const double* a, int n) {
    for (int i = 0; i < n; ++i)
        if (a[i] == 0) return 0;
    return 1;
}
double logical_or(const double* a, int n) {
    for (int i = 0; i < n; ++i)
        if (a[i] != 0) return 1;
    return 0;
}
double logical_xor(const double* a, int n) {
    int count = 0;
    for (int i = 0; i < n; ++i) count += a[i] != 0;
    return count % 2;
}
double if_then_else(const double* a, int) { return a[0] != 0 ? a[1] : a[2]; }

// Mathematical functions.
#define MATH1(NAME, EXPR) \
    double NAME(const double* a, int) { return EXPR; }
MATH1(f_sqrt, a[0] < 0 ? undef() : std::sqrt(a[0]))
MATH1(f_exp, std::exp(a[0]))
MATH1(f_log, a[0] <= 0 ? undef() : std::log(a[0]))
MATH1(f_log2, a[0] <= 0 ? undef() : std::log2(a[0]))
MATH1(f_log10, a[0] <= 0 ? undef() : std::log10(a[0]))
MATH1(f_sin, std::sin(a[0]))
MATH1(f_cos, std::cos(a[0]))
MATH1(f_tan, std::tan(a[0]))
MATH1(f_asin, std::fabs(a[0]) > 1 ? undef() : std::asin(a[0]))
MATH1(f_acos, std::fabs(a[0]) > 1 ? undef() : std::acos(a[0]))
MATH1(f_atan, std::atan(a[0]))
MATH1(f_sinh, std::sinh(a[0]))
MATH1(f_cosh, std::cosh(a[0]))
MATH1(f_tanh, std::tanh(a[0]))
MATH1(f_ceil, std::ceil(a[0]))
MATH1(f_floor, std::floor(a[0]))
MATH1(f_frac, a[0] - std::trunc(a[0]))
MATH1(f_integer, std::trunc(a[0]))
MATH1(f_round, std::floor(a[0] + 0.5))
MATH1(f_sign, a[0] > 0 ? 1.0 : (a[0] < 0 ? -1.0 : 0.0))
MATH1(f_abs, std::fabs(a[0]))
MATH1(f_erf, std::erf(a[0]))
MATH1(f_erfc, std::erfc(a[0]))
MATH1(f_loggamma, a[0] <= 0 && a[0] == std::floor(a[0]) ? undef() : std::lgamma(a[0]))
MATH1(f_gamma, a[0] <= 0 && a[0] == std::floor(a[0]) ? undef() : std::tgamma(a[0]))
#undef MATH1

double f_atan2(const double* a, int) { return std::atan2(a[0], a[1]); }
double f_roundto(const double* a, int) {
    if (!(a[0] > 0)) return undef();
    return std::floor((a[1] + a[0] / 2) / a[0]) * a[0];
}
double f_min(const double* a, int n) {
    if (n == 0) return undef();
    return *std::min_element(a, a + n);
}
double f_max(const double* a, int n) {
    if (n == 0) return undef();
    return *std::max_element(a, a + n);
}
// Position of the extreme argument; only a strictly better value replaces the current one.
double arg_extreme(const double* a, int n, bool largest, int base) {
    if (n == 0) return undef();
    int best = 0;
    for (int i = 1; i < n; ++i)
        if (largest ? a[i] > a[best] : a[i] < a[best]) best = i;
    return best + base;
}
double f_argmin0(const double* a, int n) { return arg_extreme(a, n, false, 0); }
double f_argmax0(const double* a, int n) { return arg_extreme(a, n, true, 0); }
double f_argmin1(const double* a, int n) { return arg_extreme(a, n, false, 1); }
double f_argmax1(const double* a, int n) { return arg_extreme(a, n, true, 1); }
double nearest(const double* a, int n, int base) {
    if (n < 2) return undef();
    int best = 1;
    for (int i = 2; i < n; ++i)
        if (std::fabs(a[i] - a[0]) < std::fabs(a[best] - a[0])) best = i;
    return best - 1 + base;
}
double f_nearest0(const double* a, int n) { return nearest(a, n, 0); }
double f_nearest1(const double* a, int n) { return nearest(a, n, 1); }
double f_member(const double* a, int n) {
    if (n == 0) return undef();
    for (int i = 1; i < n; ++i)
        if (nearly_equal(a[0], a[i])) return 1;
    return 0;
}
double f_discretize(const double* a, int n) {
    if (n == 0) return undef();
    for (int i = 1; i < n; ++i)
        if (a[i] > a[0]) return i - 1;
    return n - 1;
}
double select(const double* a, int n, int base) {
    if (n < 2) return undef();
    double k = std::trunc(a[0]) - base;
    if (k < 0 || k >= n - 1) return undef();
    return a[1 + static_cast<int>(k)];
}
double f_select0(const double* a, int n) { return select(a, n, 0); }
double f_select1(const double* a, int n) { return select(a, n, 1); }
double f_clip(const double* a, int) {
    if (a[0] > a[1]) return undef();
    return a[2] < a[0] ? a[0] : (a[2] > a[1] ? a[1] : a[2]);
}
double f_rect(const double* a, int) {
    if (a[1] > a[2]) return undef();
    return a[1] <= a[0] && a[0] <= a[2] ? 1 : 0;
}
double f_eqnear(const double* a, int) { return nearly_equal(a[1], a[2], 1 - a[0]); }
double increasing(const double* a, int n, bool allow_equal) {
    for (int i = 1; i < n; ++i) {
        bool same = nearly_equal(a[i - 1], a[i], 0.99998);
        if (same ? !allow_equal : a[i] < a[i - 1]) return 0;
    }
    return 1;
}
double f_increasing(const double* a, int n) { return increasing(a, n, false); }
double f_nondecreasing(const double* a, int n) { return increasing(a, n, true); }
double f_factorial(const double* a, int) {
    if (a[0] < 0 || a[0] != std::floor(a[0])) return undef();
    return std::round(std::tgamma(a[0] + 1));
}
double f_logfactorial(const double* a, int) {
    if (a[0] < 0 || a[0] != std::floor(a[0])) return undef();
    return std::lgamma(a[0] + 1);
}
double f_beta(const double* a, int) {
    if (!(a[0] > 0 && a[1] > 0)) return undef();
    return std::exp(std::lgamma(a[0]) + std::lgamma(a[1]) - std::lgamma(a[0] + a[1]));
}
double f_binomial(const double* a, int) {
    double n = a[0], k = a[1];
    if (n != std::floor(n) || k != std::floor(k) || n < 0) return undef();
    if (k < 0 || k > n) return 0;
    return std::round(std::exp(std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1)));
}
double f_multinomial(const double* a, int n) {
    double total = 0, log_denominator = 0;
    for (int i = 0; i < n; ++i) {
        if (a[i] < 0 || a[i] != std::floor(a[i])) return undef();
        total += a[i];
        log_denominator += std::lgamma(a[i] + 1);
    }
    return std::round(std::exp(std::lgamma(total + 1) - log_denominator));
}
double f_exactly_one(const double* a, int n) {
    int count = 0;
    for (int i = 0; i < n; ++i) count += a[i] != 0;
    return count == 1;
}
double f_number_true(const double* a, int n) {
    int count = 0;
    for (int i = 0; i < n; ++i) count += a[i] != 0;
    return count;
}
double f_all_unique(const double* a, int n) {
    for (int i = 0; i < n; ++i)
        for (int j = i + 1; j < n; ++j)
            if (a[i] == a[j]) return 0;
    return 1;
}
double f_identity(const double* a, int) { return a[0]; }
// Index of the first argument equal to the first one, from 0 among the rest.
double f_find0(const double* a, int n) {
    for (int i = 1; i < n; ++i)
        if (nearly_equal(a[0], a[i])) return i - 1;
    return undef();
}

}  // namespace

bool nearly_equal(double a, double b, double ratio) {
    if (a == 0 || b == 0) return a == 0 && b == 0;
    if ((a < 0) != (b < 0)) return false;
    double x = std::fabs(a), y = std::fabs(b);
    return std::min(x, y) / std::max(x, y) >= ratio;
}

void add_operators(SymbolTable& t) {
    FuncDesc cond = op("if", "?", 3, if_then_else, A, A, 700);
    cond.first = B;
    cond.left_grouping = false;
    cond.special = Special::If;
    t.add_function(cond);
    FuncDesc f_or = chained(op("or", "||", -1, logical_or, B, B, 800));
    f_or.special = Special::Or;
    t.add_function(f_or);
    FuncDesc f_and = chained(op("and", "&&", -1, logical_and, B, B, 900));
    f_and.special = Special::And;
    t.add_function(f_and);
    t.add_function(op("equal", "==", 2, equal, B, A, 1200));
    t.add_function(op("not_equal", "!=", 2, not_equal, B, A, 1200));
    t.add_function(op("less", "<", 2, less, B, N, 1300));
    t.add_function(op("greater", ">", 2, greater, B, N, 1300));
    t.add_function(op("less_eq", "<=", 2, less_eq, B, N, 1300));
    t.add_function(op("greater_eq", ">=", 2, greater_eq, B, N, 1300));
    t.add_function(op("approx_eq", "~=", 2, approx_eq, B, R, 1300));
    t.add_function(chained(op("plus", "+", -1, plus, N, N, 1500)));
    t.add_function(op("minus", "-", 2, minus, N, N, 1500));
    t.add_function(chained(op("mult", "*", -1, mult, N, N, 1600)));
    t.add_function(op("div", "/", 2, divide, R, R, 1600));
    t.add_function(op("mod", "%", 2, mod, I, I, 1600));
    FuncDesc pow_op = op("power", "^", 2, power, N, N, 1700);
    pow_op.left_grouping = false;
    t.add_function(pow_op);
    t.add_function(op("neg", "-", 1, neg, N, N, 2000));
    t.add_function(op("not", "!", 1, logical_not, B, B, 2000));
    t.add_function(chained(fn("xor", -1, logical_xor, B, B)));
}

void add_builtin_functions(SymbolTable& t) {
    struct Entry {
        const char* name;
        int arity;
        Routine eval;
        ValueType result, first, rest;
    };
    static const Entry entries[] = {
        {"sqrt", 1, f_sqrt, R, R, O}, {"exp", 1, f_exp, R, R, O}, {"log", 1, f_log, R, R, O},
        {"log2", 1, f_log2, R, R, O}, {"log10", 1, f_log10, R, R, O},
        {"sin", 1, f_sin, R, R, O}, {"cos", 1, f_cos, R, R, O}, {"tan", 1, f_tan, R, R, O},
        {"asin", 1, f_asin, R, R, O}, {"acos", 1, f_acos, R, R, O},
        {"atan", 1, f_atan, R, R, O}, {"atan2", 2, f_atan2, R, R, R},
        {"sinh", 1, f_sinh, R, R, O}, {"cosh", 1, f_cosh, R, R, O},
        {"tanh", 1, f_tanh, R, R, O}, {"ceil", 1, f_ceil, I, R, O},
        {"ceiling", 1, f_ceil, I, R, O}, {"floor", 1, f_floor, I, R, O},
        {"frac", 1, f_frac, R, R, O}, {"integer", 1, f_integer, I, R, O},
        {"round", 1, f_round, I, R, O}, {"roundto", 2, f_roundto, R, R, R},
        {"sign", 1, f_sign, I, R, O}, {"abs", 1, f_abs, N, N, O},
        {"argmin0", -1, f_argmin0, I, R, R}, {"argmax0", -1, f_argmax0, I, R, R},
        {"argmin1", -1, f_argmin1, I, R, R}, {"argmax1", -1, f_argmax1, I, R, R},
        {"nearest0", -1, f_nearest0, I, N, N}, {"nearest1", -1, f_nearest1, I, N, N},
        {"discretize", -1, f_discretize, I, N, N}, {"clip", 3, f_clip, N, N, N},
        {"rect", 3, f_rect, N, N, N}, {"eqnear", 3, f_eqnear, B, R, R},
        {"increasing", -1, f_increasing, B, R, R},
        {"increasing_eq", -1, f_nondecreasing, B, R, R},
        {"nondecreasing", -1, f_nondecreasing, B, R, R},
        {"factorial", 1, f_factorial, I, I, O}, {"logfactorial", 1, f_logfactorial, R, I, O},
        {"gamma", 1, f_gamma, R, R, O}, {"loggamma", 1, f_loggamma, R, R, O},
        {"beta", 2, f_beta, R, R, R}, {"erf", 1, f_erf, R, R, O}, {"erfc", 1, f_erfc, R, R, O},
        {"binomial", 2, f_binomial, I, I, I}, {"multinomial", -1, f_multinomial, I, I, I},
        {"NumberTrue", -1, f_number_true, I, B, B}, {"pow", 2, power, N, N, N},
    };
    for (const Entry& e : entries) t.add_function(fn(e.name, e.arity, e.eval, e.result, e.first, e.rest));
    // Operators are called by name through their own descriptors.
    t.add_function(chained(fn("min", -1, f_min, N, N, N)));
    t.add_function(chained(fn("max", -1, f_max, N, N, N)));
    FuncDesc exactly = fn("ExactlyOneTrue", -1, f_exactly_one, B, B, B);
    exactly.symmetric = true;
    t.add_function(exactly);
    FuncDesc unique = fn("AllUnique", -1, f_all_unique, B, A, A);
    unique.symmetric = true;
    t.add_function(unique);
    FuncDesc member = fn("member", -1, f_member, B, A, A);
    member.special = Special::Member;
    t.add_function(member);
    FuncDesc sel0 = fn("select0", -1, f_select0, A, I, A);
    sel0.special = Special::Select0;
    t.add_function(sel0);
    FuncDesc sel1 = fn("select1", -1, f_select1, A, I, A);
    sel1.special = Special::Select1;
    t.add_function(sel1);
    FuncDesc as_state = fn("AsState", 1, f_identity, S, N);
    as_state.special = Special::AsState;
    t.add_function(as_state);
}

void add_internal_functions(SymbolTable& t) {
    t.add_function(fn("_not", 1, logical_not, B, A));
    t.add_function(fn("_find0", -1, f_find0, S, N, N));
    t.add_function(fn("_discretize", -1, f_discretize, S, N, N));
    FuncDesc sel = fn("_select0", -1, f_select0, N, I, N);
    sel.special = Special::Select0;
    t.add_function(sel);
    FuncDesc levels = sel;
    levels.name = "_levels";
    t.add_function(levels);
    add_bernoulli_internal(t);
}

const char* ordinal_word(int index) {
    static const char* const words[] = {"first", "second", "third", "fourth", "fifth",
                                        "sixth", "seventh", "eighth", "ninth", "tenth",
                                        "eleventh", "twelfth", "thirteenth", "fourteenth", "fifteenth",
                                        "sixteenth", "seventeenth", "eighteenth", "nineteenth", "twentieth"};
    return index >= 0 && index < 20 ? words[index] : "later";
}

}  // namespace ravelo
