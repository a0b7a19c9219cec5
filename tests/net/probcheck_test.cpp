#include <gtest/gtest.h>

#include "net/model.h"
#include "net/probcheck.h"

namespace ravelo {
namespace {

std::string reason_of(std::initializer_list<float> v, int expected = -1) {
    std::vector<float> p(v);
    return prob_problem_reason(check_prob_vector(p.data(), static_cast<int>(p.size()), expected));
}

TEST(ProbCheck, ToleranceIsTwoMillionthsEitherSide) {
    // Accumulated in double over float entries: 0.999998 as float sums just inside.
    EXPECT_EQ(reason_of({0.5f, 0.499998f}), "okay");
    EXPECT_EQ(reason_of({0.5f, 0.4999979f}), "sum of probabilities isn't 1 (100%)");
    EXPECT_EQ(reason_of({0.5f, 0.5000015f}), "okay");
    // 0.500002f is a little above 0.500002, so this sum is out.
    EXPECT_EQ(reason_of({0.5f, 0.500002f}), "sum of probabilities isn't 1 (100%)");
    EXPECT_EQ(reason_of({0.5f, 0.5000025f}), "sum of probabilities isn't 1 (100%)");
}

TEST(ProbCheck, AllZeroIsNotABadSum) {
    unsigned flags = check_prob_vector(std::vector<float>{0, 0, 0}.data(), 3);
    EXPECT_EQ(flags, kProbAllZero);
    EXPECT_EQ(prob_problem_reason(flags), "all probabilities are 0 (and none are empty)");
    EXPECT_FALSE(flags & kProbRowRefused);
}

TEST(ProbCheck, ImpossibleMarkers) {
    EXPECT_EQ(reason_of({kImpossibleProb, kImpossibleProb}), "indicates an impossible condition");
    EXPECT_EQ(reason_of({kImpossibleProb, 0.0f}), "indicates an impossible condition");
    EXPECT_EQ(reason_of({kImpossibleProb, 0.5f}),
              "some probabilities indicate an impossible condition and some don't");
}

TEST(ProbCheck, MissingEntries) {
    // Any sum passes when an entry is missing; "some" only from the second one.
    EXPECT_EQ(reason_of({kMissingProb, 0.2f}), "has a missing probability");
    EXPECT_EQ(reason_of({kMissingProb, kMissingProb, 0.2f}), "has some missing probabilities");
    // A sum of exactly 1 withdraws "some missing" but keeps the plain flag.
    EXPECT_EQ(reason_of({kMissingProb, kMissingProb, 1.0f}), "has a missing probability");
}

TEST(ProbCheck, FragmentsJoinInTheirOrder) {
    EXPECT_EQ(reason_of({-0.5f, 1.5f}, 3),
              "has too few probabilities, has a negative probability, has a probability greater than 1, "
              "sum of probabilities isn't 1 (100%)");
    // Nothing non-negative adds up: all zero, which a negative entry hides.
    EXPECT_EQ(reason_of({-0.5f, 0.0f}), "has a negative probability");
    EXPECT_EQ(reason_of({0.5f, 0.5f, 0.0f}, 2), "has too many probabilities");
    unsigned flags = check_prob_vector(std::vector<float>{2.0f, -0.5f}.data(), 2, 3);
    EXPECT_EQ(prob_problem_reason(flags, true), "has too few probabilities");
}

TEST(ProbCheck, NotANumberCountsAsNegative) {
    float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(check_prob_vector(std::vector<float>{nan, 1.0f}.data(), 2) & kProbNegative);
}

}  // namespace
}  // namespace ravelo
