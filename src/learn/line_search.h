// Line search for gradient ascent: the minimum of a function of one variable
// is bracketed by growing steps, then found by Brent's method (parabolic
// steps where they behave, golden sections where they do not).
#pragma once
#include <functional>

namespace ravelo {

struct LineMinimum {
    double at;
    double value;
};

// Minimises f along t >= 0 from f(0) = f0, first trying t = step.  Fails with
// "too many iterations in bracket" or "too many iterations in Brent's method"
// when either search runs over its limit.
LineMinimum line_minimum(const std::function<double(double)>& f, double f0, double step);

}  // namespace ravelo
