#include "eqn/special_math.h"

#include <cmath>
#include <limits>

namespace ravelo {
namespace {

constexpr double kEpsilon = 1e-15;
constexpr double kTiny = 1e-300;
constexpr int kMaxTerms = 1000;

// P(a, x) by its power series; converges quickly for x < a + 1.
double gamma_series(double a, double x) {
    double term = 1 / a, sum = term;
    for (int n = 1; n < kMaxTerms; ++n) {
        term *= x / (a + n);
        sum += term;
        if (std::fabs(term) < std::fabs(sum) * kEpsilon) break;
    }
    return sum * std::exp(-x + a * std::log(x) - std::lgamma(a));
}

// Q(a, x) = 1 - P(a, x) by its continued fraction (modified Lentz), for x >= a + 1.
double gamma_fraction(double a, double x) {
    double b = x + 1 - a, c = 1 / kTiny, d = 1 / b, h = d;
    for (int i = 1; i < kMaxTerms; ++i) {
        double an = -i * (i - a);
        b += 2;
        d = an * d + b;
        if (std::fabs(d) < kTiny) d = kTiny;
        c = b + an / c;
        if (std::fabs(c) < kTiny) c = kTiny;
        d = 1 / d;
        double delta = d * c;
        h *= delta;
        if (std::fabs(delta - 1) < kEpsilon) break;
    }
    return std::exp(-x + a * std::log(x) - std::lgamma(a)) * h;
}

// The continued fraction of I_x(a, b), valid for x < (a + 1) / (a + b + 2).
double beta_fraction(double a, double b, double x) {
    double c = 1, d = 1 - (a + b) * x / (a + 1);
    if (std::fabs(d) < kTiny) d = kTiny;
    d = 1 / d;
    double h = d;
    for (int m = 1; m < kMaxTerms; ++m) {
        double even = m * (b - m) * x / ((a + 2 * m - 1) * (a + 2 * m));
        d = 1 + even * d;
        if (std::fabs(d) < kTiny) d = kTiny;
        c = 1 + even / c;
        if (std::fabs(c) < kTiny) c = kTiny;
        d = 1 / d;
        h *= d * c;
        double odd = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 2 * m + 1));
        d = 1 + odd * d;
        if (std::fabs(d) < kTiny) d = kTiny;
        c = 1 + odd / c;
        if (std::fabs(c) < kTiny) c = kTiny;
        d = 1 / d;
        double delta = d * c;
        h *= delta;
        if (std::fabs(delta - 1) < kEpsilon) break;
    }
    return h;
}

}  // namespace

double lower_gamma_ratio(double a, double x) {
    if (x <= 0) return 0;
    if (std::isinf(x)) return 1;
    return x < a + 1 ? gamma_series(a, x) : 1 - gamma_fraction(a, x);
}

double beta_ratio(double a, double b, double x) {
    if (x <= 0) return 0;
    if (x >= 1) return 1;
    double front = std::exp(std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b) +
                            a * std::log(x) + b * std::log1p(-x));
    if (x < (a + 1) / (a + b + 2)) return front * beta_fraction(a, b, x) / a;
    return 1 - front * beta_fraction(b, a, 1 - x) / b;
}

double log_choose(double n, double k) {
    return std::lgamma(n + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1);
}

}  // namespace ravelo
