// Parsing: both forms of an equation, name resolution, state indicators and
// the messages of faulty equations.
#include <cmath>

#include "eqn_fixture.h"

namespace ravelo {
namespace {

class ParseNetTest : public EquationTest {
protected:
    void SetUp() override {
        EquationTest::SetUp();
        color = discrete("Color", {"red", "green", "blue"});
        size = discrete("Size", {"small", "large"}, {1.5, 4});
        temp = continuous("Temp", {0, 10, 20, 30});
        flag = discrete("Flag", {"no", "yes"});
        out = discrete("Out", {"a", "b", "c"});
        real_out = continuous("Reading");
        for (Node* p : {color, size, temp, flag}) {
            connect(*p, *out);
            connect(*p, *real_out);
        }
    }
    double eval_out(const std::string& text, std::vector<double> values) {
        auto eq = parse(out, text);
        if (!eq) {
            ADD_FAILURE() << text << ": " << problem.message;
            return -12345;
        }
        values.resize(eq->vars.size(), 0);
        return evaluate(*eq->expr, values.data(), eq.get());
    }
    Node *color, *size, *temp, *flag, *out, *real_out;
};

TEST_F(ParseNetTest, NegativeLiteralAgainstSubtraction) {
    Node* x = continuous("X");
    connect(*temp, *x);
    auto literal = parse(x, "X (Temp) = -3");
    ASSERT_TRUE(literal);
    EXPECT_EQ(literal->expr->kind, ExprKind::Number);
    auto minus = parse(x, "X (Temp) = Temp -3");
    ASSERT_TRUE(minus);
    ASSERT_EQ(minus->expr->kind, ExprKind::Call);
    EXPECT_EQ(minus->expr->func->name, "minus");
    double values[2] = {10, 0};
    EXPECT_EQ(evaluate(*minus->expr, values), 7);
}

TEST_F(ParseNetTest, NamesResolveVariablesThenStatesThenConstants) {
    EXPECT_EQ(eval_out("Out (Color) = Color == green ? a : c", {1}), 0);
    EXPECT_EQ(eval_out("Out (Color) = Color == green ? a : c", {2}), 2);
    EXPECT_EQ(eval_out("Out (Color) = green--Color == Color ? b : c", {1}), 1);
    // A variable named like a state hides the state.
    Node* red = discrete("red", {"s0", "s1", "s2"});
    connect(*red, *out);
    EXPECT_EQ(eval_out("Out (Color, red) = Color == red ? a : b", {0, 2}), 1);
    EXPECT_EQ(eval_out("Out (Color, red) = Color == red ? a : b", {2, 2}), 0);
    // A state hides a constant; a constant is found when nothing else matches.
    Node* shape = discrete("Shape", {"pi", "e"});
    connect(*shape, *out);
    EXPECT_EQ(eval_out("Out (Shape) = Shape == pi ? a : b", {0}), 0);
    EXPECT_NEAR(eval_out("Out (Temp) = Temp == pi ? a : b", {3.141592653589793}), 0, 0);
}

TEST_F(ParseNetTest, VariablesAreTypedByKindAndLevels) {
    auto eq = parse(real_out, "Reading (Size, Temp, Flag) = Size * 2 + Temp");
    ASSERT_TRUE(eq) << problem.message;
    double values[4] = {1, 12.5, 0, 0};  // Size in its second state: level 4
    EXPECT_EQ(evaluate(*eq->expr, values), 20.5);
    auto indicated = parse(real_out, "Reading (Size, Temp) = #Size * 10 + #Temp");
    ASSERT_TRUE(indicated) << problem.message;
    double values2[3] = {1, 25, 0};  // Temp 25 lies in the third interval
    EXPECT_EQ(evaluate(*indicated->expr, values2), 12);
    EXPECT_EQ(parse_error(real_out, "Reading (Flag) = Flag && true ? 1 : 0"), "");
    Node* loose = continuous("Loose");
    connect(*loose, *real_out);
    EXPECT_EQ(parse_error(real_out, "Reading (Loose) = #Loose"),
              "continuous variable 'Loose' is preceeded with a state indicator #, but it hasn't been discretized");
}

TEST_F(ParseNetTest, BooleanVariablesFollowTheirStateNames) {
    Node* reversed = discrete("Rev", {"true", "false"});
    connect(*reversed, *out);
    EXPECT_EQ(eval_out("Out (Flag, Rev) = Flag && Rev ? a : b", {1, 0}), 0);
    EXPECT_EQ(eval_out("Out (Flag, Rev) = Flag && Rev ? a : b", {1, 1}), 1);
    EXPECT_EQ(parse_error(out, "Out (Color) = Color && true ? a : b"),
              "attempt to use variable 'Color' as a boolean in function 'and', but it doesn't have 2 states (it has 3)");
    Node* plain = discrete("Plain", {"up", "down"});
    connect(*plain, *out);
    EXPECT_EQ(parse_error(out, "Out (Plain) = !Plain ? a : b"),
              "variable 'Plain' is used as a boolean in function 'not', but it doesn't have recognized boolean state names (e.g. true, false)");
}

struct Faulty {
    const char* text;
    const char* message;
};

TEST_F(ParseNetTest, FaultyFunctionDefinitions) {
    const Faulty cases[] = {
        {"Wrong (Color) = 1", "'Wrong' is not the correct name for the output variable"},
        {"Out Color = 1", "missing open parenthesis in function declaration"},
        {"Out (Color Temp) = 1", "missing comma"},
        {"Out (, Color) = 1", "unexpected punctuation ','"},
        {"Out (Color, Color) = 1", "repeated variable name"},
        {"Out (Nope) = 1",
         "unknown variable 'Nope' to the left of = in function definition >-cr-(if links are named, remember to use link names instead of parent names)"},
        {"Out (Color) 1", "missing '=' in function definition"},
        {"Out (Color) = ", "missing equation after '=' symbol in function definition"},
        {"Out (Color) = Out", "'Out' appears as a variable on the right hand side of the = symbol, but it is the output value >-cr-(which is not allowed unless the equation is probabilistic, that is, starts with P)"},
        {"Out (Color) = #2.5", "state indicator # is followed by a number (2.5) that is not an integer"},
        {"Out (Color) = #2 kg", "state indicator # is followed by a number that has units (#2 kg)"},
        {"Out (Color) = # sqrt (2)", "the name after a state indicator # is followed by an open parenthesis:  # sqrt ("},
        {"Out (Color) = mauve--Color", "'mauve--Color' refers to mauve, which is not a state of Color"},
        {"Out (Color) = red--Hue", "'red--Hue' refers to unknown variable 'Hue'"},
        {"Out (Color) = zork", "unknown name 'zork'"},
        {"Out (Color) = #zork", "unknown name 'zork' (was trying to interpret it as a state name, since it is preceeded by #)"},
        {"Out (Color) = zork (1)", "unknown function 'zork'"},
        {"Out (Color) = sqrt (1, 2)", "too many arguments for function 'sqrt' (requires 1)"},
        {"Out (Color) = clip (1, 2)", "too few arguments for function 'clip' (requires 3, but 2 supplied)"},
        {"Out (Color) = max (1, , 2)", "missing second argument of function max"},
        {"Out (Color) = max (1 2)", "missing comma or close parenthesis, or malformed expression in function 'max'"},
        {"Out (Color) = NormalDist (1, 2)", "function 'NormalDist' is missing its last arguments"},
        {"Out (Color) = factorial (2.5)", "first argument of function 'factorial' should be of type integer, but it is type real"},
        {"Out (Color) = if (true, Color, 2.5)", "third argument of function 'if' is of type real, which is not compatible with the other argument(s) of type state"},
        {"Out (Color) = (1 + 2", "missing close parenthesis"},
        {"Out (Color) = ()", "unexpected close parenthesis"},
        {"Out (Color) = 1 +", "missing second argument of operator +"},
        {"Out (Color) = -", "argument of operator '-' is missing"},
        {"Out (Color) = !2.5", "argument of operator '!' should be of type 'boolean', but it is type real"},
        {"Out (Color) = 2.5 % 2", "the first argument of operator '%' should be of type 'integer', but it is type 'real'"},
        {"Out (Color) = 2 % 2.5", "the second argument of operator '%' should be type 'integer', but it is type 'real'"},
        {"Out (Color) = true ? 1", "missing ':' for '?' operator"},
        {"Out (Color) = 1 ) ", "character ')' unexpected"},
        {"Out (Color) = 1 2", "it is a complete equation, followed by '2'"},
        {"Out (Color) = true ? 2.5 : Color", "the third argument of operator '?' is of type 'state', which is not compatible with the other argument(s) (of type 'real')"},
    };
    for (const Faulty& c : cases) EXPECT_EQ(parse_error(out, c.text), c.message) << c.text;
}

TEST_F(ParseNetTest, FaultyProbabilityEquations) {
    const Faulty cases[] = {
        {"P Reading | Temp) = 1", "missing open parenthesis in probability expression"},
        {"P (Reading | Temp | Flag) = 1", "more than one conditioning bar '|'"},
        {"P (| Temp) = 1", "must have at least one variable before the conditioning bar '|'"},
        {"P (Reading | <Temp) = 1", "all cdf variables (those preceeded with '<') must come before the conditioning bar '|'"},
        {"P (Reading, <Temp) = 1", "all cdf variables (those preceeded with '<') must come first"},
        {"P (Reading Temp) = 1", "missing comma"},
        {"P (Reading | Temp, Temp) = 1", "repeated variable name"},
        {"P (Reading | Zap) = 1", "unknown input variable 'Zap' (use link names if present)"},
        {"P (Reading | Temp) 1", "missing '=' in probability equation"},
        {"P (Temp | Reading) = 1", "'Temp' is not the correct name for the output variable"},
        {"P (Reading | Temp) =", "missing equation after '=' symbol"},
        {"P (Reading | Temp) = NormalDist (Reading, Temp, 1) +", "missing second argument of operator +"},
    };
    for (const Faulty& c : cases) EXPECT_EQ(parse_error(real_out, c.text), c.message) << c.text;
}

TEST_F(ParseNetTest, LinkNamesStandForParents) {
    Node* child = discrete("Child", {"lo", "hi"});
    connect(*color, *child, "hue");
    EXPECT_EQ(parse_error(child, "Child (hue) = hue == red ? lo : hi"), "");
    EXPECT_EQ(parse_error(child, "Child (Color) = Color == red ? lo : hi"), "");
}

TEST_F(ParseNetTest, BooleanEquationsNeedTwoStates) {
    EXPECT_EQ(parse_error(out, "Out (Temp) = Temp > 3"),
              "attempt to assign a boolean expression to variable 'Out', which doesn't have 2 states (it has 3)");
    Node* two = discrete("Two", {"low", "high"});
    connect(*temp, *two);
    auto eq = parse(two, "Two (Temp) = Temp > 3");
    ASSERT_TRUE(eq);
    EXPECT_EQ(last_report(), "assigning boolean expression to variable 'Two' but it doesn't have recognized boolean state names (e.g. true, false)");
}

TEST_F(ParseNetTest, ProbabilityOfABooleanOutput) {
    Node* alarm = discrete("Alarm", {"yes", "no"});
    connect(*temp, *alarm);
    auto eq = parse(alarm, "P (Alarm | Temp) = Temp > 15 ? 0.9 : 0.2");
    ASSERT_TRUE(eq) << problem.message;
    EXPECT_EQ(count_reports(), 0);
    double values[2] = {0, 20};  // state 0 is "yes"
    std::string reason;
    EXPECT_NEAR(evaluate_probability(*eq, values, reason), 0.9, 1e-15);
    values[0] = 1;
    EXPECT_NEAR(evaluate_probability(*eq, values, reason), 0.1, 1e-15);
    auto unused = parse(out, "P (Out | Temp) = 0.5");
    ASSERT_TRUE(unused);
    EXPECT_EQ(last_report(),
              "node Out doesn't appear on the right hand side of its equation (and it isn't a boolean variable), \n"
              "so its value won't influence the probability calculation, and after normalization its distributions will be uniform");
}

TEST_F(ParseNetTest, HostileTextIsRefusedWithoutHarm) {
    EXPECT_EQ(parse_error(out, "Out (Color) = " + std::string(100000, '(') + "1"),
              "expression is nested too deeply (more than 400 levels)");
    EXPECT_EQ(parse_error(out, "Out (Color) = " + std::string(100000, '-') + "1"),
              "expression is nested too deeply (more than 400 levels)");
    std::string power_tower = "Out (Color) = 1";
    for (int i = 0; i < 5000; ++i) power_tower += " ^ 1";
    EXPECT_EQ(parse_error(out, power_tower), "expression is nested too deeply (more than 400 levels)");
    std::string long_sum = "Out (Color) = 0";
    for (int i = 0; i < 5000; ++i) long_sum += " + 1";  // flattened: no nesting
    EXPECT_EQ(parse_error(out, long_sum), "");
    const char* garbage[] = {"", "(", "P", "P (", "P (|", "Out (Color) = #", "Out (Color) = @", 
                             "Out (Color) = \x01\xff", "Out (Color) = a--", "Out (Color) = max (", "f",
                             "P (Out | Color) = NoisyOrMultiDist (Out", "Out (Color) = ?:", "Out ((Color)) = 1"};
    for (const char* text : garbage) EXPECT_NE(parse_error(out, text), "") << text;
}

TEST_F(ParseNetTest, AllowedNewNamesAreUndefinedConstants) {
    ParseOptions options;
    options.allow_new_names = true;
    auto eq = parse_equation("f (Temp) = Temp + newname", *real_out, problem, options);
    ASSERT_TRUE(eq);
    double values[2] = {1, 0};
    EXPECT_TRUE(std::isnan(evaluate(*eq->expr, values)));
    EXPECT_EQ(last_report(), "undefined value 'newname'");
}

}  // namespace
}  // namespace ravelo
