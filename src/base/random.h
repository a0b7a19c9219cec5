// Reproducible random number generators: a shuffled three-generator uniform
// stream and a shuffled congruential integer stream, seeded from text.  The
// same seed gives the same sequence on every run and every machine.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>

#include "base/tags.h"

namespace ravelo {

class Environment;

constexpr std::int32_t kIntegerStreamModulus = 714025;

class RandomGenerator : public Tagged {
public:
    // Seeds both streams with the seed word -|seed|-1 (|seed| taken modulo
    // 2^31, so the word fits and stays negative) and draws one value from
    // each, which initialises them.
    RandomGenerator(Environment* owner, long long seed);

    double uniform();                        // next uniform deviate in [0, 1), float resolution
    std::int32_t integer();                  // next integer in [0, 714025)
    double normal(double mean, double stddev);
    // A value inside interval st of a discretized variable (levels: its
    // num_levels thresholds, increasing; the ends may be infinite).  beliefs,
    // when given (one per interval), shapes the exponential tails.
    double sample_in_interval(const double* levels, int num_levels, int st,
                              const float* beliefs = nullptr);

    // A text that recreates an equal generator (both streams, the spare normal).
    std::string state_text() const;
    // Takes the state a state text describes; false (nothing changed) when it
    // is not one or describes an impossible state.
    bool read_state(std::string_view text);
    static bool is_state_text(std::string_view text);
    // A decimal seed text: optional blanks, an optional sign, digits, optional
    // blanks.  The magnitude is reduced modulo 2^31.
    static bool parse_seed(std::string_view text, long long& seed);

    Environment* env;
    bool takes_env_lock = false;             // the environment's default generator
    std::string state_buffer;                // the last state text handed out

    // Uniform stream.
    std::int32_t idum, ix1 = 0, ix2 = 0, ix3 = 0;
    float r[98] = {};                        // r[1..97] used
    // Integer stream.
    std::int32_t idum2, iy = 0;
    std::int32_t ir[97] = {};
    bool has_spare = false;
    float spare = 0;

private:
    double uniform_unlocked();
    std::int32_t integer_unlocked();
    double exponential_tail(double end, double scale, double p);
};

// The environment's default generator (seed "3"), made on first use when
// initialisation has not made it yet.  Draws from it take the environment's lock.
RandomGenerator& default_generator(Environment& env);

}  // namespace ravelo
