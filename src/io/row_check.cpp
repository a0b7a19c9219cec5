#include "io/row_check.h"

#include "net/probcheck.h"

namespace ravelo {

std::string row_problem(const float* row, int length, int expected_length) {
    unsigned flags = check_prob_vector(row, length, expected_length);
    // Rows wholly impossible mark impossible conditions, and missing or
    // all-zero rows mark rows still to be filled: files may hold them.
    unsigned refused = (kProbRowRefused & ~kProbImpossible) | kProbTooFew | kProbTooMany;
    if (!(flags & refused)) return {};
    return prob_problem_reason(flags);
}

}  // namespace ravelo
