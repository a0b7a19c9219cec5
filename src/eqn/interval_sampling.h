// Values drawn inside the intervals of a discretized variable, with the
// weight that turns a density there into the interval's probability.
#pragma once
#include <vector>

namespace ravelo {

class RandomGenerator;

// A value inside interval st of levels (thresholds, increasing, the ends may
// be infinite), and weight = 1 / (density of the draw at that value), so
// that density(x) * weight estimates the probability of the interval.
double sample_in_interval(const std::vector<double>& levels, int st, RandomGenerator& rng,
                          double& weight);

// The interval of levels holding x (the top threshold belongs to the last
// interval), or -1 when x lies outside them.
int interval_of(const std::vector<double>& levels, double x);

}  // namespace ravelo
