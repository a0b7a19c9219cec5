#include "net/probcheck.h"

#include <algorithm>

#include "net/model.h"

namespace ravelo {

unsigned check_prob_vector(const float* probs, int length, int expected_length) {
    unsigned flags = 0;
    int count = expected_length >= 0 ? std::min(length, expected_length) : length;
    double sum = 0.0;
    bool positive = false;
    for (int i = 0; i < count; ++i) {
        float p = probs[i];
        if (p < 0 || p != p) {
            if (p == kImpossibleProb)
                flags |= kProbImpossible;
            else if (p == kMissingProb)
                flags |= (flags & kProbMissing) ? kProbSomeMissing : kProbMissing;
            else
                flags |= kProbNegative;
            continue;
        }
        sum += p;
        if (p > 0) positive = true;
        if (p > 1) flags |= kProbGreaterThanOne;
    }
    if (!(flags & kProbImpossible)) {
        bool missing = flags & (kProbMissing | kProbSomeMissing);
        if (sum > 1.000002) {
            flags |= kProbSumNotOne;
        } else if (sum >= 0.999998 || missing) {
            if (sum == 1.0) flags &= ~kProbSomeMissing;
        } else if (sum == 0.0) {
            flags |= kProbAllZero;
        } else {
            flags |= kProbSumNotOne;
        }
    } else if (positive) {
        flags |= kProbMixedImpossible;
    }
    if (expected_length >= 0) {
        if (length < expected_length) flags |= kProbTooFew;
        if (length > expected_length) flags |= kProbTooMany;
    }
    return flags;
}

std::string prob_problem_reason(unsigned flags, bool short_form) {
    const bool all_zero = (flags & kProbAllZero) && !(flags & kProbNegative);
    const struct {
        bool present;
        const char* text;
    } fragments[] = {
        {(flags & kProbTooFew) != 0, "has too few probabilities"},
        {(flags & kProbTooMany) != 0, "has too many probabilities"},
        {(flags & kProbNegative) != 0, "has a negative probability"},
        {(flags & kProbMixedImpossible) != 0,
         "some probabilities indicate an impossible condition and some don't"},
        {all_zero, "all probabilities are 0 (and none are empty)"},
        {(flags & kProbGreaterThanOne) != 0, "has a probability greater than 1"},
        {(flags & kProbSumNotOne) && !all_zero, "sum of probabilities isn't 1 (100%)"},
        {(flags & kProbSomeMissing) != 0, "has some missing probabilities"},
        {(flags & kProbMissing) && !(flags & kProbSomeMissing), "has a missing probability"},
        {(flags & kProbImpossible) && !(flags & kProbMixedImpossible),
         "indicates an impossible condition"},
    };
    std::string reason;
    for (const auto& f : fragments) {
        if (!f.present) continue;
        reason += f.text;
        if (short_form) return reason;
        reason += ", ";
    }
    if (reason.empty()) return "okay";
    reason.resize(reason.size() - 2);
    return reason;
}

}  // namespace ravelo
