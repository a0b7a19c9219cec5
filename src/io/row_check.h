// The check every probability row read from a file goes through.
#pragma once
#include <string>

namespace ravelo {

// Why a probability vector is unacceptable, or "" when it is acceptable
// (missing entries and all-zero rows are accepted: they mark rows to fill).
std::string row_problem(const float* row, int length);

}  // namespace ravelo
