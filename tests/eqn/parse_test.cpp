// Parsing: both forms of an equation, precedence and grouping, name
// resolution, state indicators and the messages of faulty equations.
#include "eqn_fixture.h"

namespace ravelo {
namespace {

using ParseTest = EquationTest;

TEST_F(ParseTest, PrecedenceAndGrouping) {
    EXPECT_EQ(value_of("2 ^ 3 ^ 2"), 512);
    EXPECT_EQ(value_of("10 - 3 - 2"), 5);
    EXPECT_EQ(value_of("2 + 3 * 4"), 14);
    EXPECT_EQ(value_of("(2 + 3) * 4"), 20);
    EXPECT_EQ(value_of("-2 ^ 2"), 4);             // a negative literal
    EXPECT_EQ(value_of("1 < 2 && 3 < 2 || true"), 1);
    EXPECT_EQ(value_of("false ? 1 : false ? 2 : 3"), 3);  // nests to the right
    EXPECT_EQ(value_of("true ? 1 : false ? 2 : 3"), 1);
    EXPECT_EQ(value_of("100 / 10 / 5"), 2);
    EXPECT_EQ(value_of("7 % 4 * 2"), 6);
    EXPECT_EQ(value_of("!(1 == 2)"), 1);
    EXPECT_EQ(value_of("((((1))))"), 1);
    EXPECT_EQ(value_of("plus (1, 2, 3) + pow (2, 3)"), 14);
}

}  // namespace
}  // namespace ravelo
