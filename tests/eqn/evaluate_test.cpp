// Evaluation: operators, built-in functions, UNDEF propagation, short
// circuits and the reports of failing functions.
#include <cmath>

#include "eqn_fixture.h"

namespace ravelo {
namespace {

using EvaluateTest = EquationTest;

bool undef(double x) { return x != x; }

TEST_F(EvaluateTest, DivisionAndRemainderByZero) {
    EXPECT_EQ(value_of("0 / 0"), 0);
    EXPECT_TRUE(undef(value_of("1 / 0")));
    EXPECT_EQ(last_report(), "error evaluating function:  div (1, 0)");
    EXPECT_TRUE(undef(value_of("5 % 0")));
    EXPECT_EQ(value_of("-7 % 3"), -1);  // sign of the dividend
}

TEST_F(EvaluateTest, UndefPropagatesWithoutFurtherReports) {
    EXPECT_TRUE(undef(value_of("sqrt (1 / 0) + 1")));
    EXPECT_EQ(count_reports(), 1);  // only div fails; sqrt and plus see UNDEF silently
    EXPECT_TRUE(undef(value_of("@undef + 1")));
    EXPECT_EQ(count_reports(), 1);
}

TEST_F(EvaluateTest, OverflowIsAnError) {
    EXPECT_TRUE(undef(value_of("exp (1000)")));
    EXPECT_EQ(last_report(), "error evaluating function:  exp (1000)");
    EXPECT_TRUE(undef(value_of("10 ^ 400")));
}

TEST_F(EvaluateTest, ShortCircuitsSkipUnselectedArguments) {
    EXPECT_EQ(value_of("false ? 1 / 0 : 7"), 7);
    EXPECT_EQ(value_of("if (true, 8, 1 / 0)"), 8);
    EXPECT_EQ(value_of("false && 1 / 0 > 1"), 0);
    EXPECT_EQ(value_of("true || 1 / 0 > 1"), 1);
    EXPECT_EQ(value_of("select0 (0, 5, 1 / 0)"), 5);
    EXPECT_EQ(value_of("member (1, 1, 1 / 0)"), 1);
    EXPECT_EQ(count_reports(), 0);
}

TEST_F(EvaluateTest, ClipRectAndSelect) {
    EXPECT_EQ(value_of("clip (0, 10, 12)"), 10);
    EXPECT_EQ(value_of("clip (0, 10, -3)"), 0);
    EXPECT_EQ(value_of("rect (12, 0, 10)"), 0);
    EXPECT_EQ(value_of("rect (10, 0, 10)"), 1);
    EXPECT_TRUE(undef(value_of("clip (10, 0, 5)")));
    EXPECT_TRUE(undef(value_of("rect (1, 10, 0)")));
    EXPECT_EQ(value_of("select0 (2, 10, 20, 30)"), 30);
    EXPECT_EQ(value_of("select1 (2, 10, 20, 30)"), 20);
    EXPECT_TRUE(undef(value_of("select0 (3, 10, 20, 30)")));
    EXPECT_TRUE(undef(value_of("select1 (0, 10, 20)")));
}

TEST_F(EvaluateTest, NearEqualityTests) {
    EXPECT_EQ(value_of("member (1, 0.999999999, 5)"), 1);
    EXPECT_EQ(value_of("member (1, 0.9999, 5)"), 0);
    EXPECT_EQ(value_of("member (0, 0)"), 1);
    EXPECT_EQ(value_of("member (3)"), 0);
    EXPECT_EQ(value_of("increasing (1, 1.00001, 2)"), 0);
    EXPECT_EQ(value_of("nondecreasing (1, 1.00001, 2)"), 1);
    EXPECT_EQ(value_of("increasing (3, 2)"), 0);
    EXPECT_EQ(value_of("increasing (1)"), 1);
    EXPECT_EQ(value_of("eqnear (0.1, 1, 1.05)"), 1);
    EXPECT_EQ(value_of("eqnear (0.01, 1, 1.05)"), 0);
    EXPECT_EQ(value_of("eqnear (0.1, -1, 1)"), 0);
    EXPECT_EQ(value_of("1 ~= 1.00001"), 1);
    EXPECT_EQ(value_of("1 ~= 1.001"), 0);
}

TEST_F(EvaluateTest, RoundingFamily) {
    EXPECT_EQ(value_of("round (2.5)"), 3);
    EXPECT_EQ(value_of("round (-2.5)"), -2);
    EXPECT_EQ(value_of("integer (-2.7)"), -2);
    EXPECT_EQ(value_of("floor (-2.5)"), -3);
    EXPECT_EQ(value_of("ceiling (2.1)"), 3);
    EXPECT_DOUBLE_EQ(value_of("frac (-2.25)"), -0.25);
    EXPECT_DOUBLE_EQ(value_of("roundto (0.5, 2.3)"), 2.5);  // step first, then the value
    EXPECT_DOUBLE_EQ(value_of("roundto (10, 14)"), 10);
    EXPECT_TRUE(undef(value_of("roundto (0, 3)")));
    EXPECT_EQ(value_of("sign (-0.1)"), -1);
    EXPECT_EQ(value_of("sign (0)"), 0);
}

TEST_F(EvaluateTest, ListFunctions) {
    EXPECT_EQ(value_of("min (4, 2, 9)"), 2);
    EXPECT_EQ(value_of("max (4, 2, 9)"), 9);
    EXPECT_EQ(value_of("argmax0 (3, 7, 7, 1)"), 1);  // the first of equal ones wins
    EXPECT_EQ(value_of("argmin1 (3, 1, 1, 5)"), 2);
    EXPECT_EQ(value_of("nearest0 (5, 1, 6, 9)"), 1);
    EXPECT_EQ(value_of("nearest1 (5, 1, 6, 9)"), 2);
    EXPECT_EQ(value_of("discretize (5, 1, 6, 9)"), 1);
    EXPECT_EQ(value_of("discretize (10, 1, 6, 9)"), 3);
    EXPECT_EQ(value_of("discretize (0, 1, 6, 9)"), 0);
    EXPECT_EQ(value_of("discretize (5)"), 0);
    EXPECT_EQ(value_of("xor (true, true, true)"), 1);
    EXPECT_EQ(value_of("NumberTrue (true, false, true)"), 2);
    EXPECT_EQ(value_of("ExactlyOneTrue (true, false, true)"), 0);
    EXPECT_EQ(value_of("AllUnique (1, 2, 3)"), 1);
    EXPECT_EQ(value_of("AllUnique (1, 2, 1)"), 0);
}

TEST_F(EvaluateTest, MathematicalFunctions) {
    EXPECT_EQ(value_of("factorial (5)"), 120);
    EXPECT_DOUBLE_EQ(value_of("logfactorial (10)"), std::log(3628800.0));
    EXPECT_NEAR(value_of("gamma (4.5)"), 11.631728396567448, 1e-12);
    EXPECT_NEAR(value_of("beta (2, 3)"), 1.0 / 12, 1e-14);
    EXPECT_EQ(value_of("binomial (10, 3)"), 120);
    EXPECT_EQ(value_of("multinomial (2, 1, 1)"), 12);
    EXPECT_NEAR(value_of("erf (1)"), 0.8427007929497149, 1e-15);
    EXPECT_NEAR(value_of("atan2 (1, 1)"), 0.7853981633974483, 1e-15);
    EXPECT_NEAR(value_of("sin (90 * deg)"), 1, 1e-15);
    EXPECT_NEAR(value_of("log2 (8) + log10 (1000)"), 6, 1e-14);
    EXPECT_TRUE(undef(value_of("sqrt (-1)")));
    EXPECT_TRUE(undef(value_of("log (0)")));
    EXPECT_EQ(value_of("Infinity > 1e300"), 1);
}

TEST_F(EvaluateTest, AsStateOutsideItsPlaceIsReported) {
    EXPECT_TRUE(undef(value_of("AsState (1) + 1")));
    EXPECT_EQ(last_report(),
              "attempt to evaluate 'AsState' function.  It should only be used as the first part "
              "of a deterministic function equation for a discrete node with levels");
}

}  // namespace
}  // namespace ravelo
