#include "io/row_check.h"

#include "net/model.h"

namespace ravelo {

std::string row_problem(const float* row, int length) {
    bool impossible = false, missing = false, negative = false, above_one = false;
    bool positive = false;
    double sum = 0;
    for (int i = 0; i < length; ++i) {
        float p = row[i];
        if (p < 0 || p != p) {
            if (p == kImpossibleProb) impossible = true;
            else if (p == kMissingProb) missing = true;
            else negative = true;
        } else {
            sum += p;
            positive = positive || p > 0;
            above_one = above_one || p > 1;
        }
    }
    std::string reason;
    auto add = [&](const char* fragment) {
        if (!reason.empty()) reason += ", ";
        reason += fragment;
    };
    if (negative) add("has a negative probability");
    if (impossible && positive) add("some probabilities indicate an impossible condition and some don't");
    if (above_one) add("has a probability greater than 1");
    if (!impossible && !missing && sum != 0 && (sum > 1.000002 || sum < 0.999998))
        add("sum of probabilities isn't 1 (100%)");
    if (!impossible && missing && sum > 1.000002) add("sum of probabilities isn't 1 (100%)");
    return reason;
}

}  // namespace ravelo
