// Reproducible random number generators: a shuffled three-generator uniform
// stream and a shuffled congruential integer stream, seeded from text.
#pragma once
#include <cstdint>
#include <string>

#include "base/tags.h"

namespace ravelo {

class Environment;

class RandomGenerator : public Tagged {
public:
    // Seeds both streams from a decimal seed text (or a state text).
    RandomGenerator(Environment* owner, long long seed);

    double uniform();                        // next uniform deviate in (0, 1)
    std::int32_t integer();                  // next integer in [0, 714025)
    double normal(double mean, double stddev);
    // A value inside interval st of a discretized variable (levels: its
    // thresholds, increasing; the ends may be infinite).  beliefs, when
    // given, shapes the exponential tails.
    double sample_in_interval(const double* levels, int num_levels, int st,
                              const float* beliefs = nullptr);

    std::string state_text() const;          // recreates an equal generator
    static bool parse_state(const std::string& text, RandomGenerator& into);

    Environment* env;
    bool takes_env_lock = false;             // the environment's default generator

    // Uniform stream.
    std::int32_t idum, ix1 = 0, ix2 = 0, ix3 = 0;
    float r[98] = {};
    // Integer stream.
    std::int32_t idum2, iy = 0;
    std::int32_t ir[97] = {};
    bool has_spare = false;
    float spare = 0;
};

}  // namespace ravelo
