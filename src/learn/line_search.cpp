#include "learn/line_search.h"

#include <cmath>
#include <utility>

#include "base/failure.h"

namespace ravelo {
namespace {

constexpr double kGolden = 0.3819660112501051;  // 2 - golden ratio
constexpr double kGrowth = 1.618034;
constexpr int kMaxBracketSteps = 50;
constexpr int kMaxBrentSteps = 60;
// The line need not be searched finely: the next gradient corrects the rest.
constexpr double kBrentTolerance = 1e-3;

struct Bracket {
    double a, b, c, fb;
};

Bracket bracket(const std::function<double(double)>& f, double f0, double step) {
    double a = 0.0, fa = f0, b = step, fb = f(b);
    int steps = 0;
    while (fb > fa) {  // overshot: shrink towards the start
        const double c = b;
        b *= kGolden;
        fb = f(b);
        if (++steps > kMaxBracketSteps) fail(5651, "too many iterations in bracket");
        if (fb <= fa) return {a, b, c, fb};
    }
    double c = b + kGrowth * (b - a), fc = f(c);
    while (fc < fb) {
        a = b;
        b = c;
        fb = fc;
        c = b + kGrowth * (b - a);
        fc = f(c);
        if (++steps > kMaxBracketSteps) fail(5651, "too many iterations in bracket");
    }
    return {a, b, c, fb};
}

}  // namespace

LineMinimum line_minimum(const std::function<double(double)>& f, double f0, double step) {
    Bracket br = bracket(f, f0, step);
    double lo = br.a, hi = br.c;
    double x = br.b, w = x, v = x, fx = br.fb, fw = fx, fv = fx;
    double d = 0.0, e = 0.0;
    for (int i = 0; i < kMaxBrentSteps; ++i) {
        const double mid = 0.5 * (lo + hi);
        const double tol = kBrentTolerance * std::fabs(x) + 1e-10, tol2 = 2.0 * tol;
        if (std::fabs(x - mid) <= tol2 - 0.5 * (hi - lo)) return {x, fx};
        bool golden = true;
        if (std::fabs(e) > tol) {
            // A parabola through x, w and v, accepted when it falls inside
            // the bracket and moves less than half the step before last.
            double r = (x - w) * (fx - fv), q = (x - v) * (fx - fw), p = (x - v) * q - (x - w) * r;
            q = 2.0 * (q - r);
            if (q > 0.0) p = -p;
            q = std::fabs(q);
            if (std::fabs(p) < std::fabs(0.5 * q * e) && p > q * (lo - x) && p < q * (hi - x)) {
                e = d;
                d = p / q;
                const double u = x + d;
                if (u - lo < tol2 || hi - u < tol2) d = mid >= x ? tol : -tol;
                golden = false;
            }
        }
        if (golden) {
            e = (x >= mid ? lo : hi) - x;
            d = kGolden * e;
        }
        const double u = std::fabs(d) >= tol ? x + d : x + (d >= 0 ? tol : -tol);
        const double fu = f(u);
        if (fu <= fx) {
            (u >= x ? lo : hi) = x;
            v = w, fv = fw;
            w = x, fw = fx;
            x = u, fx = fu;
        } else {
            (u < x ? lo : hi) = u;
            if (fu <= fw || w == x) {
                v = w, fv = fw;
                w = u, fw = fu;
            } else if (fu <= fv || v == x || v == w) {
                v = u, fv = fu;
            }
        }
    }
    fail(5652, "too many iterations in Brent's method");
}

}  // namespace ravelo
