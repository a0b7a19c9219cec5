// The line search of gradient ascent: minima found, and both searches' limits.
#include <cmath>

#include "base/env_fixture.h"
#include "base/failure.h"
#include "learn/line_search.h"

namespace ravelo {
namespace {

class LineSearchTest : public EnvTest {};

TEST_F(LineSearchTest, FindsMinimaBeyondAndShortOfTheFirstStep) {
    for (double at : {0.003, 0.7, 40.0}) {
        auto f = [at](double t) { return (t - at) * (t - at) + 2.0; };
        LineMinimum m = line_minimum(f, f(0), 1.0);
        EXPECT_NEAR(m.at, at, 2e-3 * at + 1e-8) << at;
        EXPECT_NEAR(m.value, 2.0, 1e-5 * at * at + 1e-12) << at;
    }
    // A kink (no parabola fits well) still narrows to the minimum.
    LineMinimum m = line_minimum([](double t) { return std::fabs(t - 3.0); }, 3.0, 0.5);
    EXPECT_NEAR(m.at, 3.0, 1e-2);
}

TEST_F(LineSearchTest, SearchesThatNeverCloseFail) {
    EXPECT_THROW(line_minimum([](double t) { return -t; }, 0.0, 1.0), Failure);
    EXPECT_EQ(next_report(*env, 0, nullptr)->message, "too many iterations in bracket");
    // Rising from the start at every scale: no step ever improves.
    EXPECT_THROW(line_minimum([](double t) { return t; }, 0.0, 1.0), Failure);
}

}  // namespace
}  // namespace ravelo
