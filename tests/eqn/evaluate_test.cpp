// Evaluation: operators, built-in functions, UNDEF propagation, short
// circuits and the reports of failing functions; and how much of a text the
// number reader shared with the net files takes.
#include <cmath>

#include "base/numbers.h"
#include "eqn_fixture.h"

namespace ravelo {
namespace {

using EvaluateTest = EquationTest;

bool undef(double x) { return x != x; }

TEST_F(EvaluateTest, DivisionAndRemainderByZero) {
    EXPECT_TRUE(undef(value_of("1 / 0")));
    EXPECT_EQ(last_report(), "error evaluating function:  div (1, 0)");
    EXPECT_TRUE(undef(value_of("5 % 0")));
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

// Operators (their precedence and grouping) and built-in functions against
// values worked out by hand (UNDEF where the arguments are out of range).
TEST_F(EvaluateTest, ExpressionsAgainstHandValues) {
    const double kUndef = undef_value();
    const struct {
        const char* expression;
        double value;
        double tolerance = 0;
    } cases[] = {
        {"2 ^ 3 ^ 2", 512}, {"10 - 3 - 2", 5}, {"2 + 3 * 4", 14}, {"(2 + 3) * 4", 20}, {"100 / 10 / 5", 2},
        {"-2 ^ 2", 4},  // a negative literal
        {"1 < 2 && 3 < 2 || true", 1}, {"7 % 4 * 2", 6}, {"!(1 == 2)", 1}, {"((((1))))", 1},
        {"false ? 1 : false ? 2 : 3", 3}, {"true ? 1 : false ? 2 : 3", 1},  // nests to the right
        {"plus (1, 2, 3) + pow (2, 3)", 14}, {"0 / 0", 0}, {"-7 % 3", -1},  // sign of the dividend
        {"clip (0, 10, 12)", 10}, {"clip (0, 10, -3)", 0}, {"rect (12, 0, 10)", 0}, {"rect (10, 0, 10)", 1},
        {"clip (10, 0, 5)", kUndef}, {"rect (1, 10, 0)", kUndef}, {"select0 (2, 10, 20, 30)", 30},
        {"select1 (2, 10, 20, 30)", 20}, {"select0 (3, 10, 20, 30)", kUndef}, {"select1 (0, 10, 20)", kUndef},
        {"member (1, 0.999999999, 5)", 1}, {"member (1, 0.9999, 5)", 0}, {"member (0, 0)", 1},
        {"member (3)", 0}, {"increasing (1, 1.00001, 2)", 0}, {"nondecreasing (1, 1.00001, 2)", 1},
        {"increasing (3, 2)", 0}, {"increasing (1)", 1}, {"eqnear (0.1, 1, 1.05)", 1},
        {"eqnear (0.01, 1, 1.05)", 0}, {"eqnear (0.1, -1, 1)", 0}, {"1 ~= 1.00001", 1}, {"1 ~= 1.001", 0},
        {"round (2.5)", 3}, {"round (-2.5)", -2}, {"integer (-2.7)", -2}, {"floor (-2.5)", -3},
        {"ceiling (2.1)", 3}, {"frac (-2.25)", -0.25},
        {"roundto (0.5, 2.3)", 2.5},  // step first, then the value
        {"roundto (10, 14)", 10}, {"roundto (0, 3)", kUndef}, {"sign (-0.1)", -1}, {"sign (0)", 0},
        {"min (4, 2, 9)", 2}, {"max (4, 2, 9)", 9},
        {"argmax0 (3, 7, 7, 1)", 1},  // the first of equal ones wins
        {"argmin1 (3, 1, 1, 5)", 2}, {"nearest0 (5, 1, 6, 9)", 1}, {"nearest1 (5, 1, 6, 9)", 2},
        {"discretize (5, 1, 6, 9)", 1}, {"discretize (10, 1, 6, 9)", 3}, {"discretize (0, 1, 6, 9)", 0},
        {"discretize (5)", 0}, {"xor (true, true, true)", 1}, {"NumberTrue (true, false, true)", 2},
        {"ExactlyOneTrue (true, false, true)", 0}, {"AllUnique (1, 2, 3)", 1}, {"AllUnique (1, 2, 1)", 0},
        {"factorial (5)", 120}, {"logfactorial (10)", std::log(3628800.0)},
        {"gamma (4.5)", 11.631728396567448, 1e-12}, {"beta (2, 3)", 1.0 / 12, 1e-14}, {"binomial (10, 3)", 120},
        {"multinomial (2, 1, 1)", 12}, {"erf (1)", 0.8427007929497149, 1e-15},
        {"atan2 (1, 1)", 0.7853981633974483, 1e-15}, {"sin (90 * deg)", 1, 1e-15},
        {"log2 (8) + log10 (1000)", 6, 1e-14}, {"sqrt (-1)", kUndef}, {"log (0)", kUndef},
        {"Infinity > 1e300", 1},
    };
    for (const auto& c : cases) {
        double v = value_of(c.expression);
        if (undef(c.value)) EXPECT_TRUE(undef(v)) << c.expression;
        else if (c.tolerance > 0) EXPECT_NEAR(v, c.value, c.tolerance) << c.expression;
        else EXPECT_DOUBLE_EQ(v, c.value) << c.expression;
    }
}

TEST_F(EvaluateTest, AsStateOutsideItsPlaceIsReported) {
    EXPECT_TRUE(undef(value_of("AsState (1) + 1")));
    EXPECT_EQ(last_report(),
              "attempt to evaluate 'AsState' function.  It should only be used as the first part "
              "of a deterministic function equation for a discrete node with levels");
}

struct Taken {
    size_t length;
    double value;
    std::string units;
};

Taken read(std::string_view text) {
    Taken t{0, -777, "untouched"};
    t.length = read_number_prefix(text, t.value, t.units);
    return t;
}

TEST(NumberPrefix, TakesTheNumberAndItsUnitsWordOnly) {
    Taken t = read("12.5e-1 kg + 3");
    EXPECT_EQ(t.length, 10u);
    EXPECT_DOUBLE_EQ(t.value, 1.25);
    EXPECT_EQ(t.units, "kg");
    t = read("-.5)");
    EXPECT_EQ(t.length, 3u);
    EXPECT_DOUBLE_EQ(t.value, -0.5);
    EXPECT_EQ(t.units, "");
    // An exponent without digits is not part of the number: "e" is then its units.
    t = read("2e+");
    EXPECT_EQ(t.length, 2u);
    EXPECT_DOUBLE_EQ(t.value, 2);
    EXPECT_EQ(t.units, "e");
    // Too large for a double reads as infinite, as in net files.
    t = read("1e999");
    EXPECT_EQ(t.length, 5u);
    EXPECT_TRUE(std::isinf(t.value) && t.value > 0);
}

TEST(NumberPrefix, SpecialFormsMustEndAtAWordBoundary) {
    Taken t = read("@inf*2");
    EXPECT_EQ(t.length, 4u);
    EXPECT_TRUE(std::isinf(t.value) && t.value > 0);
    t = read("@neginfinity");
    EXPECT_TRUE(std::isinf(t.value) && t.value < 0);
    EXPECT_TRUE(is_undef(read("@undef").value));
    for (const char* bad : {"@infinite", "@", "@nope", "-", ".", "-.", "", "x1"}) {
        t = read(bad);
        EXPECT_EQ(t.length, 0u) << bad;
        EXPECT_EQ(t.value, -777) << bad;  // nothing is touched when nothing is read
        EXPECT_EQ(t.units, "untouched") << bad;
    }
}

class NumberLexingTest : public EquationTest {};

}  // namespace
}  // namespace ravelo
