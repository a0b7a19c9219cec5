// The check every probability vector passes before the engine accepts it
// (CPT rows set through the interface, read from net files, or learned).
#pragma once
#include <string>

namespace ravelo {

enum ProbProblem : unsigned {
    kProbTooFew = 1u << 0,
    kProbTooMany = 1u << 1,
    kProbNegative = 1u << 2,
    kProbMixedImpossible = 1u << 3,
    kProbAllZero = 1u << 4,
    kProbGreaterThanOne = 1u << 5,
    kProbSumNotOne = 1u << 6,
    kProbSomeMissing = 1u << 7,
    kProbMissing = 1u << 8,
    kProbImpossible = 1u << 9,
};

// Classifies probs[0..length) in one pass.  When expected_length >= 0 the
// length is compared with it as well (only the first min(length, expected)
// entries are read).
unsigned check_prob_vector(const float* probs, int length, int expected_length = -1);

// The flags joined into a reason ("okay" when there are none); the short
// form stops after the first fragment.
std::string prob_problem_reason(unsigned flags, bool short_form = false);

// The flags that keep a row from being set as a CPT row.
constexpr unsigned kProbRowRefused =
    kProbNegative | kProbMixedImpossible | kProbGreaterThanOne | kProbSumNotOne | kProbImpossible;

}  // namespace ravelo
