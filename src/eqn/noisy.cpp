// Probability functions over many arguments: the multinomial and the
// "Noisy" family of cause/effect relations.
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "base/text.h"
#include "eqn/library.h"

namespace ravelo {
namespace {

double undef() { return undef_value(); }
bool whole(double x) { return x == std::floor(x); }

// MultinomialDist (n, k1, ..., k[m-1], p1, ..., pm): the last count is n less the others.
double multinomial_pmf(const double* a, int n) {
    if (n < 4) return routine_problem("less than 4 arguments to MultinomialDist"), undef();
    if (n % 2) return routine_problem("odd number of arguments to MultinomialDist"), undef();
    if (!whole(a[0]))
        return routine_problem("n of MultinomialDist must be an integer, but it is %g", a[0]), undef();
    int m = n / 2;
    const double* k = a + 1;
    const double* p = a + m;
    double p_sum = 0, k_sum = 0;
    for (int i = 0; i < m; ++i) p_sum += p[i];
    for (int i = 0; i < m - 1; ++i) {
        if (!whole(k[i]))
            return routine_problem("k[%d] of MultinomialDist must be an integer, but it is %g",
                                   i + 1, k[i]), undef();
        k_sum += k[i];
    }
    if (p_sum == 0) return routine_problem("sum of probability arguments passed to MultinomialDist is 0"), undef();
    double last = a[0] - k_sum;
    if (last < 0) return 0;
    double log_p = std::lgamma(a[0] + 1);
    for (int i = 0; i < m; ++i) {
        double ki = i < m - 1 ? k[i] : last, pi = p[i] / p_sum;
        if (ki < 0) return 0;
        if (pi == 0) {
            if (ki > 0) return 0;
            continue;
        }
        log_p += ki * std::log(pi) - std::lgamma(ki + 1);
    }
    return std::exp(log_p);
}

// (X, leak, cause1, prob1, ...): each true cause makes X true with its
// probability, independently, and the leak does without any cause.
double noisy_or(const double* a, int n) {
    if (n < 2) return routine_problem("less than 2 arguments to NoisyOrDist"), undef();
    if (n % 2) return routine_problem("odd number of arguments to NoisyOrDist"), undef();
    double all_fail = 1 - a[1];
    for (int i = 2; i < n; i += 2)
        if (a[i] != 0) all_fail *= 1 - a[i + 1];
    return a[0] != 0 ? 1 - all_fail : all_fail;
}

// (X, leak, cause1, prob1, ...): X is true only when no false cause stops
// it (each false cause stops it with its probability) and the leak doesn't.
double noisy_and(const double* a, int n) {
    if (n < 2) return routine_problem("less than 2 arguments to NoisyAndDist"), undef();
    if (n % 2) return routine_problem("odd number of arguments to NoisyAndDist"), undef();
    double none_stop = 1 - a[1];
    for (int i = 2; i < n; i += 2)
        if (a[i] == 0) none_stop *= 1 - a[i + 1];
    return a[0] != 0 ? none_stop : 1 - none_stop;
}

// P(X = x) from the cumulative function F of a maximum over independent sources.
template <class Cumulative>
double mass_from_cumulative(double x, Cumulative F) {
    // Beyond every state the cumulative function is flat.
    if (x < 0 || !whole(x) || x > std::numeric_limits<int>::max()) return 0;
    return F(static_cast<int>(x)) - (x > 0 ? F(static_cast<int>(x) - 1) : 0);
}

// (X, num_states, leak[0..num_states-1], then clauses (cause, state, prob)):
// a true cause raises X to its state with its probability; X is the highest
// state raised, or what the leak gives.
double noisy_or_multi(const double* a, int n) {
    if (n < 3) return routine_problem("less than 3 arguments to NoisyOrMultiDist"), undef();
    double ns = a[1];
    if (!(ns >= 1))
        return routine_problem("second argument (num_states) to NoisyOrMultiDist must be at least 1, but it is %g", ns), undef();
    // Checked as a real: a count beyond the arguments given has no int.
    if (!(ns < n - 1))
        return routine_problem("there should be %.0f leak probabilities (including the normal state \"leak\") since there are %.0f states in NoisyOrMultiDist", std::floor(ns), std::floor(ns)), undef();
    int states = static_cast<int>(ns);
    int clause_args = n - 2 - states;
    if (clause_args % 3)
        return routine_problem("missing final %s of last clause in NoisyOrMultiDist",
                               clause_args % 3 == 2 ? "argument" : "two arguments"), undef();
    for (int i = 2 + states; i < n; i += 3) {
        double st = a[i + 1], p = a[i + 2];
        if (st == 0)
            return routine_problem("%s argument (=0) indicates the state that gets triggered, but it should not be state 0, since state 0 is the \"normal\" state for NoisyOrMultiDist", ordinal_word(i + 1)), undef();
        if (!(st >= 1 && st <= ns) || !whole(st))
            return routine_problem("%s argument is %g, but it should be in [1,num_states] range since it indicates the state triggered by this clause for NoisyOrMultiDist", ordinal_word(i + 1), st), undef();
        if (!(p >= 0 && p <= 1))
            return routine_problem("%s argument is %g, but it should be in [0,1] range since it is a probability for NoisyOrMultiDist", ordinal_word(i + 2), p), undef();
    }
    double leak_sum = 0;
    for (int s = 0; s < states; ++s) leak_sum += a[2 + s];
    if (!(leak_sum > 0)) return undef();
    auto F = [&](int x) {
        double leak = 0;
        for (int s = 0; s <= x && s < states; ++s) leak += a[2 + s];
        double f = leak / leak_sum;
        for (int i = 2 + states; i < n; i += 3)
            if (a[i] != 0 && a[i + 1] > x) f *= 1 - a[i + 2];
        return f;
    };
    return mass_from_cumulative(a[0], F);
}

// (X, num_states, leak vector, then clauses (cause, vector)): each true
// cause draws a state from its vector; X is the highest state drawn.
double noisy_max_table(const double* a, int n) {
    if (n < 2) return routine_problem("wrong number of arguments to NoisyMaxTableDist"), undef();
    if (!(a[1] >= 1) || !whole(a[1]))
        return routine_problem("number of states for output >-node in NoisyMaxTableDist is declared %.0f, but it must be 1 or more", std::trunc(a[1])), undef();
    if (a[1] > n - 2) return routine_problem("wrong number of arguments to NoisyMaxTableDist"), undef();
    int states = static_cast<int>(a[1]);
    if ((n - 2 - states) % (states + 1))
        return routine_problem("wrong number of arguments to NoisyMaxTableDist"), undef();
    std::vector<const double*> vectors{a + 2};
    for (int i = 2 + states; i < n; i += states + 1)
        if (a[i] != 0) vectors.push_back(a + i + 1);
    for (const double* v : vectors) {
        double sum = 0;
        for (int s = 0; s < states; ++s) sum += v[s];
        if (std::fabs(sum - 1) > 1e-5)
            return routine_problem("a probability vector in NoisyMaxDist doesn't sum to 1"), undef();
    }
    auto F = [&](int x) {
        double f = 1;
        for (const double* v : vectors) {
            double c = 0;
            for (int s = 0; s <= x && s < states; ++s) c += v[s];
            f *= c;
        }
        return f;
    };
    return mass_from_cumulative(a[0], F);
}

// (X, num_states, offset, leak[1..num_states-1], then clauses (cause,
// p[1..num_states-1])): the leak and each true cause add an amount a with
// probability p[a] (amount 0 with what is left), independently; X is the
// total, held at num_states - 1.  The offset is reserved and must be 0.
double noisy_sum_table(const double* a, int n) {
    if (n < 3 || !(a[1] >= 1) || !whole(a[1]))
        return routine_problem("function '%s' is missing its last arguments", "NoisySumTableDist"), undef();
    if (a[1] > n - 2) return routine_problem("function '%s' is missing its last arguments", "NoisySumTableDist"), undef();
    int states = static_cast<int>(a[1]);
    if ((n - 2 - states) % states)
        return routine_problem("function '%s' is missing its last arguments", "NoisySumTableDist"), undef();
    if (a[2] != 0)
        return routine_problem("%s argument of function %s must be zero with this version of >-Ravelo, but it is %g",
                               ordinal_word(2), "NoisySumTableDist", a[2]), undef();
    std::vector<double> total(static_cast<size_t>(states), 0.0), next(total.size());
    total[0] = 1;
    // Adds one source of amounts whose probabilities for 1, 2, ... start at p.
    auto add_source = [&](const double* p) {
        double rest = 1;
        for (int k = 1; k < states; ++k) rest -= p[k - 1];
        if (rest < -1e-5)
            return routine_problem("sum of probabilities for a condition of function %s should not be more than 1, but it is %g",
                                   "NoisySumTableDist", 1 - rest), false;
        std::fill(next.begin(), next.end(), 0.0);
        for (int t = 0; t < states; ++t)
            for (int k = 0; k < states; ++k) {
                double pk = k == 0 ? std::max(rest, 0.0) : p[k - 1];
                next[static_cast<size_t>(std::min(t + k, states - 1))] += total[static_cast<size_t>(t)] * pk;
            }
        total.swap(next);
        return true;
    };
    if (!add_source(a + 3)) return undef();
    for (int i = 2 + states; i < n; i += states)
        if (a[i] != 0 && !add_source(a + i + 1)) return undef();
    double x = a[0];
    if (x < 0 || x >= states || !whole(x)) return 0;
    return total[static_cast<size_t>(x)];
}

}  // namespace

void add_noisy_functions(SymbolTable& t) {
    struct Entry {
        const char* name;
        Routine eval;
        ValueType first;
    };
    static const Entry entries[] = {
        {"MultinomialDist", multinomial_pmf, ValueType::Numeric},
        {"NoisyOrMultiDist", noisy_or_multi, ValueType::Any},
        {"NoisyOrDist", noisy_or, ValueType::Boolean},
        {"NoisyAndDist", noisy_and, ValueType::Boolean},
        {"NoisyMaxTableDist", noisy_max_table, ValueType::Any},
        {"NoisySumTableDist", noisy_sum_table, ValueType::Any},
    };
    for (const Entry& e : entries) {
        FuncDesc f;
        f.name = e.name;
        f.arity = -1;
        f.eval = e.eval;
        f.probability = true;
        f.result = ValueType::Real;
        f.first = e.first;
        f.rest = ValueType::Numeric;
        if (e.eval == noisy_sum_table) f.special = Special::NoisySum;
        t.add_function(f);
    }
}

}  // namespace ravelo
