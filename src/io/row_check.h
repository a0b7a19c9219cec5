// The check every probability row read from a file goes through.
#pragma once
#include <string>

namespace ravelo {

// Why a probability vector is unacceptable, or "" when it is acceptable
// (missing entries, all-zero and impossible rows are accepted).
std::string row_problem(const float* row, int length, int expected_length = -1);

}  // namespace ravelo
