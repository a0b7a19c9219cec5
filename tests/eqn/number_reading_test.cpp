// Numbers in equations go through the net files' number reader: how much of
// a text it takes, the "@" forms, units words, and what the lexer makes of it.
#include <cmath>

#include "base/numbers.h"
#include "eqn_fixture.h"

namespace ravelo {
namespace {

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

TEST_F(NumberLexingTest, EquationsReadNumbersThroughTheSharedReader) {
    EXPECT_DOUBLE_EQ(value_of("1.5e2 + .25"), 150.25);
    EXPECT_DOUBLE_EQ(value_of("2 m * 3"), 6);  // units are kept, not applied
    EXPECT_TRUE(std::isinf(value_of("@infinity")));
    EXPECT_DOUBLE_EQ(value_of("-3 - -2"), -1);
    Node* x = scratch();
    EXPECT_EQ(parse_error(x, "f () = #1 m"), "state indicator # is followed by a number that has units (#1 m)");
    EXPECT_EQ(parse_error(x, "f () = #2.5"), "state indicator # is followed by a number (2.5) that is not an integer");
    auto eq = parse(x, "f () = 7 cm");
    ASSERT_TRUE(eq);
    EXPECT_EQ(eq->expr->units, "cm");
}

}  // namespace
}  // namespace ravelo
