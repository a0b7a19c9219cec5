#include "eqn/interval_sampling.h"

#include <cmath>

#include "base/random.h"

namespace ravelo {
namespace {

// The exponential tail's scale beside a finite end, as the generator uses it:
// the width of the neighbouring interval, or 1 when that is unbounded or empty.
double tail_scale(const std::vector<double>& levels, int st, bool upper_open) {
    size_t n = levels.size();
    double width = -1;
    if (upper_open && st >= 1) width = levels[static_cast<size_t>(st)] - levels[static_cast<size_t>(st) - 1];
    if (!upper_open && static_cast<size_t>(st) + 2 < n)
        width = levels[static_cast<size_t>(st) + 2] - levels[static_cast<size_t>(st) + 1];
    return std::isfinite(width) && width > 0 ? width : 1;
}

}  // namespace

double sample_in_interval(const std::vector<double>& levels, int st, RandomGenerator& rng,
                          double& weight) {
    double lo = levels[static_cast<size_t>(st)], hi = levels[static_cast<size_t>(st) + 1];
    double x = rng.sample_in_interval(levels.data(), static_cast<int>(levels.size()), st);
    if (std::isfinite(lo) && std::isfinite(hi)) {
        weight = hi - lo;
    } else if (std::isfinite(lo) || std::isfinite(hi)) {
        bool upper_open = std::isfinite(lo);
        double d = tail_scale(levels, st, upper_open);
        double distance = std::fabs(x - (upper_open ? lo : hi));
        weight = d * std::exp(distance / d);
    } else {
        weight = 2 * std::exp(std::fabs(x));
    }
    return x;
}

int interval_of(const std::vector<double>& levels, double x) {
    size_t n = levels.size();
    if (n < 2 || !(x >= levels[0] && x <= levels[n - 1])) return -1;
    for (size_t i = 1; i + 1 < n; ++i)
        if (x < levels[i]) return static_cast<int>(i) - 1;
    return static_cast<int>(n) - 2;
}

}  // namespace ravelo
