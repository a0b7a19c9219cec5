// Functions defined by an equation of their own and then called by name
// from other equations through a table of user functions.
#include "eqn_fixture.h"

namespace ravelo {
namespace {

class UserFunctionTest : public EquationTest {
protected:
    void SetUp() override {
        EquationTest::SetUp();
        u = continuous("U");
        v = continuous("V");
        body_node = continuous("Body");
        connect(*u, *body_node);
        connect(*v, *body_node);
        t = continuous("T");
        out = continuous("Out");
        connect(*t, *out);
    }
    const FuncDesc* define(const char* name, const std::string& definition) {
        problem = ParseProblem();
        ParseOptions options;
        options.functions = &functions;  // a definition may call earlier ones
        auto eq = parse_equation(definition, *body_node, problem, options);
        if (!eq) {
            ADD_FAILURE() << definition << ": " << problem.message;
            return nullptr;
        }
        return &define_function(functions, name, std::move(eq));
    }
    std::unique_ptr<ParsedEquation> parse_with_functions(const std::string& text) {
        problem = ParseProblem();
        ParseOptions options;
        options.functions = &functions;
        return parse_equation(text, *out, problem, options);
    }
    double value_at(const std::string& text, double t_value) {
        auto eq = parse_with_functions(text);
        if (!eq) {
            ADD_FAILURE() << text << ": " << problem.message;
            return -12345;
        }
        double values[2] = {t_value, 0};
        return evaluate(*eq->expr, values, eq.get());
    }
    SymbolTable functions{&builtin_symbols()};
    Node *u, *v, *body_node, *t, *out;
};

TEST_F(UserFunctionTest, ArgumentsTakeThePlacesOfTheDefinitionsNames) {
    const FuncDesc* f = define("scaled_gap", "f (U, V) = (U - V) * 10");
    ASSERT_TRUE(f);
    EXPECT_EQ(f->arity, 2);
    // Order matters: the first argument stands for U, the second for V.
    EXPECT_DOUBLE_EQ(value_at("Out (T) = scaled_gap (T, 1)", 3), 20);
    EXPECT_DOUBLE_EQ(value_at("Out (T) = scaled_gap (1, T)", 3), -20);
    // A later function may call an earlier one; built-ins stay reachable.
    define("twice_gap", "f (U, V) = scaled_gap (U, V) * 2 + sqrt (0)");
    EXPECT_DOUBLE_EQ(value_at("Out (T) = twice_gap (T, T / 2)", 4), 40);
}

TEST_F(UserFunctionTest, FailuresInsideTheBodyGiveUndefAndAReport) {
    define("ratio", "f (U, V) = U / V");
    EXPECT_TRUE(is_undef(value_at("Out (T) = ratio (T, 0) + 1", 2)));
    EXPECT_TRUE(was_reported("error evaluating function:  div (2, 0)"));
    // An undefined argument passes through without running the body.
    drop_all_reports(*env);
    EXPECT_TRUE(is_undef(value_at("Out (T) = ratio (T, 1)", undef_value())));
    EXPECT_EQ(count_reports(), 0);
}

TEST_F(UserFunctionTest, DefinitionsOutliveTheirNodes) {
    define("shifted", "f (U, V) = U + V + 100");
    delete_node(*body_node);  // the body holds no reference to the node it was read for
    EXPECT_DOUBLE_EQ(value_at("Out (T) = shifted (T, 1)", 2), 103);
}

}  // namespace
}  // namespace ravelo
