// Probability functions: densities (or masses) and cumulative functions.
// Parameters outside their range give UNDEF.
#include <cfloat>
#include <cmath>

#include "base/text.h"
#include "eqn/library.h"
#include "eqn/special_math.h"

namespace ravelo {
namespace {

constexpr ValueType B = ValueType::Boolean, I = ValueType::Integer, R = ValueType::Real,
                    N = ValueType::Numeric, A = ValueType::Any;
constexpr double kPi = 3.141592653589793;

double undef() { return undef_value(); }
bool whole(double x) { return x == std::floor(x); }
bool probability(double p) { return p >= 0 && p <= 1; }

// Continuous distributions.
double normal_pdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    if (std::isinf(a[0])) return 0;
    double z = (a[0] - a[1]) / a[2];
    return std::exp(-0.5 * z * z) / (a[2] * std::sqrt(2 * kPi));
}
double normal_cdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    return 0.5 * std::erfc(-(a[0] - a[1]) / (a[2] * std::sqrt(2.0)));
}
// Parameters are the mean and standard deviation of ln x.
double lognormal_pdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    if (a[0] <= 0 || std::isinf(a[0])) return 0;
    double z = (std::log(a[0]) - a[1]) / a[2];
    return std::exp(-0.5 * z * z) / (a[0] * a[2] * std::sqrt(2 * kPi));
}
double lognormal_cdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    if (a[0] <= 0) return 0;
    return 0.5 * std::erfc(-(std::log(a[0]) - a[1]) / (a[2] * std::sqrt(2.0)));
}
double exponential_pdf(const double* a, int) {
    if (!(a[1] > 0)) return undef();
    return a[0] < 0 ? 0 : a[1] * std::exp(-a[1] * a[0]);
}
double exponential_cdf(const double* a, int) {
    if (!(a[1] > 0)) return undef();
    return a[0] < 0 ? 0 : 1 - std::exp(-a[1] * a[0]);
}
double gamma_pdf(const double* a, int) {
    double x = a[0], shape = a[1], scale = a[2];
    if (!(shape > 0 && scale > 0)) return undef();
    if (x <= 0 || std::isinf(x)) return 0;
    return std::exp((shape - 1) * std::log(x) - x / scale - std::lgamma(shape) -
                    shape * std::log(scale));
}
double gamma_cdf(const double* a, int) {
    if (!(a[1] > 0 && a[2] > 0)) return undef();
    return lower_gamma_ratio(a[1], a[0] / a[2]);
}
double weibull_pdf(const double* a, int) {
    double x = a[0], k = a[1], lambda = a[2];
    if (!(k > 0 && lambda > 0)) return undef();
    if (x < 0 || std::isinf(x)) return 0;
    double z = x / lambda;
    return k / lambda * std::pow(z, k - 1) * std::exp(-std::pow(z, k));
}
double weibull_cdf(const double* a, int) {
    if (!(a[1] > 0 && a[2] > 0)) return undef();
    return a[0] <= 0 ? 0 : 1 - std::exp(-std::pow(a[0] / a[2], a[1]));
}
double uniform_pdf(const double* a, int) {
    if (!(a[1] < a[2])) return undef();
    return a[0] >= a[1] && a[0] <= a[2] ? 1 / (a[2] - a[1]) : 0;
}
double uniform_cdf(const double* a, int) {
    if (!(a[1] < a[2])) return undef();
    return a[0] <= a[1] ? 0 : (a[0] >= a[2] ? 1 : (a[0] - a[1]) / (a[2] - a[1]));
}
double triangular_pdf(const double* a, int) {
    double h = a[2];
    if (!(h > 0)) return undef();
    return std::fmax(0, h - std::fabs(a[0] - a[1])) / (h * h);
}
double triangular_cdf(const double* a, int) {
    double h = a[2], z = (a[0] - a[1]) / h;
    if (!(h > 0)) return undef();
    if (z <= -1) return 0;
    if (z >= 1) return 1;
    return z <= 0 ? 0.5 * (1 + z) * (1 + z) : 1 - 0.5 * (1 - z) * (1 - z);
}
// Triangle on [low, high] peaking at mode.
double triangle3_pdf(double x, double low, double mode, double high) {
    if (!(low <= mode && mode <= high && low < high)) return undef();
    if (x < low || x > high) return 0;
    if (x < mode) return 2 * (x - low) / ((high - low) * (mode - low));
    if (x > mode) return 2 * (high - x) / ((high - low) * (high - mode));
    return 2 / (high - low);
}
double triangle3_cdf(double x, double low, double mode, double high) {
    if (!(low <= mode && mode <= high && low < high)) return undef();
    if (x <= low) return 0;
    if (x >= high) return 1;
    if (x <= mode) return (x - low) * (x - low) / ((high - low) * (mode - low));
    return 1 - (high - x) * (high - x) / ((high - low) * (high - mode));
}
double triangular3_pdf(const double* a, int) { return triangle3_pdf(a[0], a[1], a[2], a[3]); }
double triangular3_cdf(const double* a, int) { return triangle3_cdf(a[0], a[1], a[2], a[3]); }
// The same triangle with its parameters given as low, high, then the mode.
double triangular_end3_pdf(const double* a, int) { return triangle3_pdf(a[0], a[1], a[3], a[2]); }
double triangular_end3_cdf(const double* a, int) { return triangle3_cdf(a[0], a[1], a[3], a[2]); }
double beta_density(double x, double p, double q) {
    if (!(p > 0 && q > 0)) return undef();
    if (x < 0 || x > 1) return 0;
    if ((x == 0 && p < 1) || (x == 1 && q < 1)) return undef();
    if ((x == 0 && p > 1) || (x == 1 && q > 1)) return 0;
    double log_b = std::lgamma(p) + std::lgamma(q) - std::lgamma(p + q);
    double lx = x == 0 ? 0 : (p - 1) * std::log(x), l1x = x == 1 ? 0 : (q - 1) * std::log1p(-x);
    return std::exp(lx + l1x - log_b);
}
double beta_pdf(const double* a, int) { return beta_density(a[0], a[1], a[2]); }
double beta_cdf(const double* a, int) {
    if (!(a[1] > 0 && a[2] > 0)) return undef();
    return beta_ratio(a[1], a[2], a[0]);
}
double beta4_pdf(const double* a, int) {
    double width = a[4] - a[3];
    if (!(width > 0)) return undef();
    double d = beta_density((a[0] - a[3]) / width, a[1], a[2]);
    return d / width;
}
double beta4_cdf(const double* a, int) {
    double width = a[4] - a[3];
    if (!(width > 0 && a[1] > 0 && a[2] > 0)) return undef();
    return beta_ratio(a[1], a[2], (a[0] - a[3]) / width);
}
double cauchy_pdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    double z = (a[0] - a[1]) / a[2];
    return 1 / (kPi * a[2] * (1 + z * z));
}
double cauchy_cdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    return 0.5 + std::atan((a[0] - a[1]) / a[2]) / kPi;
}
double laplace_pdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    return std::exp(-std::fabs(a[0] - a[1]) / a[2]) / (2 * a[2]);
}
double laplace_cdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    double z = (a[0] - a[1]) / a[2];
    return z < 0 ? 0.5 * std::exp(z) : 1 - 0.5 * std::exp(-z);
}
double extreme_pdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    double z = (a[0] - a[1]) / a[2];
    return std::exp(-std::exp(-z) - z) / a[2];
}
double extreme_cdf(const double* a, int) {
    if (!(a[2] > 0)) return undef();
    return std::exp(-std::exp(-(a[0] - a[1]) / a[2]));
}
// Parameters: the least value x_m, then the shape alpha.
double pareto_pdf(const double* a, int) {
    double xm = a[1], alpha = a[2];
    if (!(xm > 0 && alpha > 0)) return undef();
    return a[0] < xm ? 0 : alpha * std::pow(xm, alpha) / std::pow(a[0], alpha + 1);
}
double pareto_cdf(const double* a, int) {
    if (!(a[1] > 0 && a[2] > 0)) return undef();
    return a[0] < a[1] ? 0 : 1 - std::pow(a[1] / a[0], a[2]);
}
double chi_square_pdf(const double* a, int) {
    double k = a[1];
    if (!(k > 0)) return undef();
    double args[3] = {a[0], k / 2, 2};
    return gamma_pdf(args, 3);
}
double chi_square_cdf(const double* a, int) {
    if (!(a[1] > 0)) return undef();
    return lower_gamma_ratio(a[1] / 2, a[0] / 2);
}
double student_t_pdf(const double* a, int) {
    double nu = a[1], x = a[0];
    if (!(nu > 0)) return undef();
    return std::exp(std::lgamma((nu + 1) / 2) - std::lgamma(nu / 2) -
                    0.5 * std::log(nu * kPi) - (nu + 1) / 2 * std::log1p(x * x / nu));
}
double student_t_cdf(const double* a, int) {
    double nu = a[1], x = a[0];
    if (!(nu > 0)) return undef();
    double tail = 0.5 * beta_ratio(nu / 2, 0.5, nu / (nu + x * x));
    return x >= 0 ? 1 - tail : tail;
}
double f_pdf(const double* a, int) {
    double x = a[0], d1 = a[1], d2 = a[2];
    if (!(d1 > 0 && d2 > 0)) return undef();
    if (x <= 0 || std::isinf(x)) return x == 0 && d1 == 2 ? 1 : 0;
    double log_b = std::lgamma(d1 / 2) + std::lgamma(d2 / 2) - std::lgamma((d1 + d2) / 2);
    return std::exp(0.5 * (d1 * std::log(d1 * x) + d2 * std::log(d2) -
                           (d1 + d2) * std::log(d1 * x + d2)) - std::log(x) - log_b);
}
double f_cdf(const double* a, int) {
    double x = a[0], d1 = a[1], d2 = a[2];
    if (!(d1 > 0 && d2 > 0)) return undef();
    return x <= 0 ? 0 : beta_ratio(d1 / 2, d2 / 2, d1 * x / (d1 * x + d2));
}

// Discrete distributions.
double single_pmf(const double* a, int) { return a[0] == a[1] ? 1 : 0; }
double single_cdf(const double* a, int) { return a[0] >= a[1] ? 1 : 0; }
double bernoulli_pmf(const double* a, int) {
    if (!probability(a[1])) return undef();
    return a[0] != 0 ? a[1] : 1 - a[1];
}
double bernoulli_cdf(const double* a, int) {
    if (!probability(a[1])) return undef();
    return a[0] < 0 ? 0 : (a[0] < 1 ? 1 - a[1] : 1);
}
double disc_uniform_pmf(const double* a, int) {
    double lo = a[1], hi = a[2];
    if (!(whole(lo) && whole(hi) && lo <= hi)) return undef();
    return whole(a[0]) && a[0] >= lo && a[0] <= hi ? 1 / (hi - lo + 1) : 0;
}
double disc_uniform_cdf(const double* a, int) {
    double lo = a[1], hi = a[2];
    if (!(whole(lo) && whole(hi) && lo <= hi)) return undef();
    double k = std::floor(a[0]);
    return k < lo ? 0 : (k >= hi ? 1 : (k - lo + 1) / (hi - lo + 1));
}
double binomial_term(double k, double n, double p) {
    if (k < 0 || k > n || !whole(k)) return 0;
    if (p == 0) return k == 0;
    if (p == 1) return k == n;
    return std::exp(log_choose(n, k) + k * std::log(p) + (n - k) * std::log1p(-p));
}
double binomial_pmf(const double* a, int) {
    if (!(whole(a[1]) && a[1] >= 0 && probability(a[2]))) return undef();
    return binomial_term(a[0], a[1], a[2]);
}
double binomial_cdf(const double* a, int) {
    if (!(whole(a[1]) && a[1] >= 0 && probability(a[2]))) return undef();
    double sum = 0;
    for (double k = 0; k <= std::fmin(std::floor(a[0]), a[1]); ++k) sum += binomial_term(k, a[1], a[2]);
    return std::fmin(sum, 1);
}
double poisson_term(double k, double mean) {
    if (k < 0 || !whole(k)) return 0;
    if (mean == 0) return k == 0;
    return std::exp(k * std::log(mean) - mean - std::lgamma(k + 1));
}
double poisson_pmf(const double* a, int) {
    if (!(a[1] >= 0)) return undef();
    return poisson_term(a[0], a[1]);
}
double poisson_cdf(const double* a, int) {
    if (!(a[1] >= 0)) return undef();
    if (a[0] < 0) return 0;
    return 1 - lower_gamma_ratio(std::floor(a[0]) + 1, a[1]);
}
// Parameters: draws n, successes K in the population, population size N.
double hypergeometric_pmf(const double* a, int) {
    double k = a[0], n = a[1], K = a[2], pop = a[3];
    if (!(whole(n) && whole(K) && whole(pop) && n >= 0 && K >= 0 && pop >= n && pop >= K))
        return undef();
    if (!whole(k) || k < 0 || k > n || k > K || n - k > pop - K) return 0;
    return std::exp(log_choose(K, k) + log_choose(pop - K, n - k) - log_choose(pop, n));
}
// Failures x before the n-th success.
double neg_binomial_term(double x, double n, double p) {
    if (x < 0 || !whole(x)) return 0;
    if (p == 1) return x == 0;
    return std::exp(log_choose(x + n - 1, x) + n * std::log(p) + x * std::log1p(-p));
}
double neg_binomial_pmf(const double* a, int) {
    if (!(whole(a[1]) && a[1] > 0 && a[2] > 0 && a[2] <= 1)) return undef();
    return neg_binomial_term(a[0], a[1], a[2]);
}
double neg_binomial_cdf(const double* a, int) {
    if (!(whole(a[1]) && a[1] > 0 && a[2] > 0 && a[2] <= 1)) return undef();
    if (a[0] < 0) return 0;
    return beta_ratio(a[1], std::floor(a[0]) + 1, a[2]);
}
// Failures x before the first success.
double geometric_pmf(const double* a, int) {
    if (!(a[1] > 0 && a[1] <= 1)) return undef();
    return a[0] < 0 || !whole(a[0]) ? 0 : a[1] * std::pow(1 - a[1], a[0]);
}
double geometric_cdf(const double* a, int) {
    if (!(a[1] > 0 && a[1] <= 1)) return undef();
    return a[0] < 0 ? 0 : 1 - std::pow(1 - a[1], std::floor(a[0]) + 1);
}
double logarithmic_pmf(const double* a, int) {
    double p = a[1];
    if (!(p > 0 && p < 1)) return undef();
    return a[0] < 1 || !whole(a[0]) ? 0 : -std::pow(p, a[0]) / (a[0] * std::log1p(-p));
}
double logarithmic_cdf(const double* a, int) {
    double p = a[1], sum = 0;
    if (!(p > 0 && p < 1)) return undef();
    for (double k = 1; k <= a[0]; ++k) {
        double term = -std::pow(p, k) / (k * std::log1p(-p));
        sum += term;
        if (term < 1e-17) break;
    }
    return std::fmin(sum, 1);
}

struct Entry {
    const char* name;
    int arity;
    Routine pdf, cdf;
    ValueType first, rest;
};

}  // namespace

void add_probability_functions(SymbolTable& t) {
    static const Entry entries[] = {
        {"NormalDist", 3, normal_pdf, normal_cdf, R, R},
        {"LognormalDist", 3, lognormal_pdf, lognormal_cdf, R, R},
        {"ExponentialDist", 2, exponential_pdf, exponential_cdf, R, R},
        {"GammaDist", 3, gamma_pdf, gamma_cdf, R, R},
        {"WeibullDist", 3, weibull_pdf, weibull_cdf, R, R},
        {"UniformDist", 3, uniform_pdf, uniform_cdf, R, R},
        {"TriangularDist", 3, triangular_pdf, triangular_cdf, R, R},
        {"Triangular3Dist", 4, triangular3_pdf, triangular3_cdf, R, R},
        {"TriangularEnd3Dist", 4, triangular_end3_pdf, triangular_end3_cdf, R, R},
        {"BetaDist", 3, beta_pdf, beta_cdf, R, R},
        {"Beta4Dist", 5, beta4_pdf, beta4_cdf, R, R},
        {"CauchyDist", 3, cauchy_pdf, cauchy_cdf, R, R},
        {"LaplaceDist", 3, laplace_pdf, laplace_cdf, R, R},
        {"ExtremeValueDist", 3, extreme_pdf, extreme_cdf, R, R},
        {"ParetoDist", 3, pareto_pdf, pareto_cdf, R, R},
        {"ChiSquareDist", 2, chi_square_pdf, chi_square_cdf, R, R},
        {"StudentTDist", 2, student_t_pdf, student_t_cdf, R, R},
        {"FDist", 3, f_pdf, f_cdf, R, R},
        {"SingleDist", 2, single_pmf, single_cdf, N, N},
        {"BernoulliDist", 2, bernoulli_pmf, bernoulli_cdf, B, R},
        {"DiscUniformDist", 3, disc_uniform_pmf, disc_uniform_cdf, N, N},
        {"BinomialDist", 3, binomial_pmf, binomial_cdf, N, R},
        {"PoissonDist", 2, poisson_pmf, poisson_cdf, N, R},
        {"HypergeometricDist", 4, hypergeometric_pmf, nullptr, N, N},
        {"NegBinomialDist", 3, neg_binomial_pmf, neg_binomial_cdf, N, R},
        {"GeometricDist", 2, geometric_pmf, geometric_cdf, N, R},
        {"LogarithmicDist", 2, logarithmic_pmf, logarithmic_cdf, N, R},
    };
    for (const Entry& e : entries) {
        FuncDesc f;
        f.name = e.name;
        f.arity = e.arity;
        f.eval = e.pdf;
        f.cdf = e.cdf;
        f.probability = true;
        f.result = R;
        f.first = e.first;
        f.rest = e.rest;
        t.add_function(f);
    }
    add_noisy_functions(t);
    (void)A;
}

void add_bernoulli_internal(SymbolTable& t) {
    FuncDesc f;
    f.name = "_BernoulliDist";
    f.arity = 2;
    f.eval = bernoulli_pmf;
    f.cdf = bernoulli_cdf;
    f.probability = true;
    f.result = R;
    f.first = B;
    f.rest = R;
    f.special = Special::Bernoulli;
    t.add_function(f);
}

}  // namespace ravelo
