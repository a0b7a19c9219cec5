// Special functions behind the probability distributions.
#pragma once

namespace ravelo {

// Regularized lower incomplete gamma function P(a, x); a > 0, x >= 0.
double lower_gamma_ratio(double a, double x);
// Regularized incomplete beta function I_x(a, b); a, b > 0, 0 <= x <= 1.
double beta_ratio(double a, double b, double x);
// ln of the binomial coefficient (n choose k) for whole n >= k >= 0.
double log_choose(double n, double k);

}  // namespace ravelo
