// Probability functions: densities, masses and cumulative functions against
// values worked out by hand, and their argument checks.
#include <cmath>

#include "eqn_fixture.h"

namespace ravelo {
namespace {

class DistributionTest : public EquationTest {
protected:
    void SetUp() override {
        EquationTest::SetUp();
        x = continuous("X");
    }
    // The density (or mass) at v of "P (X) = <rhs>", or with "<X" its cumulative.
    double prob(const std::string& rhs, double v, bool cumulative = false, Node* node = nullptr) {
        if (!node) node = x;
        std::string head = std::string(cumulative ? "P (<" : "P (") + node->name + ") = ";
        auto eq = parse(node, head + rhs);
        if (!eq) {
            ADD_FAILURE() << rhs << ": " << problem.message;
            return -1;
        }
        double values[1] = {v};
        std::string reason;
        return evaluate_probability(*eq, values, reason);
    }
    double cdf(const std::string& rhs, double v) { return prob(rhs, v, true); }
    Node* x = nullptr;
};

const double kE = std::exp(1.0);

TEST_F(DistributionTest, Continuous) {
    EXPECT_NEAR(cdf("NormalDist (X, 0, 1)", 1), 0.8413447460685429, 1e-15);
    EXPECT_NEAR(prob("NormalDist (X, 0, 1)", 0), 0.3989422804014327, 1e-15);
    EXPECT_NEAR(prob("NormalDist (X, 5, 2)", 7), 0.3989422804014327 / 2 * std::exp(-0.5), 1e-15);
    EXPECT_EQ(prob("NormalDist (X, 0, 1)", INFINITY), 0);
    EXPECT_NEAR(prob("LognormalDist (X, 0, 1)", 1), 0.3989422804014327, 1e-15);
    EXPECT_NEAR(cdf("LognormalDist (X, 0, 1)", 1), 0.5, 1e-15);
    EXPECT_NEAR(prob("ExponentialDist (X, 2)", 1), 2 / (kE * kE), 1e-15);
    EXPECT_NEAR(cdf("ExponentialDist (X, 2)", 1), 1 - 1 / (kE * kE), 1e-15);
    EXPECT_EQ(prob("ExponentialDist (X, 2)", -1), 0);
    EXPECT_NEAR(prob("GammaDist (X, 2, 1)", 1), 1 / kE, 1e-15);
    EXPECT_NEAR(cdf("GammaDist (X, 2, 1)", 1), 1 - 2 / kE, 1e-14);
    EXPECT_NEAR(cdf("GammaDist (X, 3, 2)", 4), 1 - 5 / (kE * kE), 1e-14);
    EXPECT_NEAR(cdf("GammaDist (X, 3, 2)", 40), 1 - std::exp(-20) * (1 + 20 + 200), 1e-14);
    EXPECT_NEAR(prob("WeibullDist (X, 2, 1)", 1), 2 / kE, 1e-15);
    EXPECT_NEAR(cdf("WeibullDist (X, 2, 1)", 1), 1 - 1 / kE, 1e-15);
    EXPECT_NEAR(prob("UniformDist (X, 2, 6)", 3), 0.25, 1e-15);
    EXPECT_EQ(prob("UniformDist (X, 2, 6)", 7), 0);
    EXPECT_NEAR(cdf("UniformDist (X, 2, 6)", 3), 0.25, 1e-15);
    EXPECT_NEAR(prob("TriangularDist (X, 1, 2)", 2), 0.25, 1e-15);
    EXPECT_NEAR(cdf("TriangularDist (X, 1, 2)", 1), 0.5, 1e-15);
    EXPECT_NEAR(prob("Triangular3Dist (X, 0, 1, 4)", 1), 0.5, 1e-15);
    EXPECT_NEAR(cdf("Triangular3Dist (X, 0, 1, 4)", 1), 0.25, 1e-15);
    EXPECT_NEAR(cdf("TriangularEnd3Dist (X, 0, 4, 1)", 1), 0.25, 1e-15);
    EXPECT_NEAR(prob("BetaDist (X, 2, 3)", 0.5), 1.5, 1e-14);
    EXPECT_NEAR(cdf("BetaDist (X, 2, 3)", 0.5), 0.6875, 1e-14);
    EXPECT_NEAR(cdf("BetaDist (X, 2, 3)", 0.9), 6 * 0.81 - 8 * 0.729 + 3 * 0.6561, 1e-14);
    EXPECT_NEAR(prob("Beta4Dist (X, 2, 3, 10, 12)", 11), 0.75, 1e-14);
    EXPECT_NEAR(cdf("CauchyDist (X, 0, 1)", 1), 0.75, 1e-15);
    EXPECT_NEAR(prob("LaplaceDist (X, 0, 2)", 0), 0.25, 1e-15);
    EXPECT_NEAR(cdf("LaplaceDist (X, 0, 2)", 0), 0.5, 1e-15);
    EXPECT_NEAR(cdf("ExtremeValueDist (X, 0, 1)", 0), 1 / kE, 1e-15);
    EXPECT_NEAR(prob("ExtremeValueDist (X, 0, 1)", 0), 1 / kE, 1e-15);
    EXPECT_NEAR(prob("ParetoDist (X, 1, 2)", 2), 0.25, 1e-15);
    EXPECT_NEAR(cdf("ParetoDist (X, 1, 2)", 2), 0.75, 1e-15);
    EXPECT_NEAR(cdf("ChiSquareDist (X, 2)", 2), 1 - 1 / kE, 1e-15);
    EXPECT_NEAR(cdf("StudentTDist (X, 1)", 1), 0.75, 1e-14);
    EXPECT_NEAR(cdf("StudentTDist (X, 5)", 0), 0.5, 1e-15);
    EXPECT_NEAR(prob("StudentTDist (X, 1)", 0), 1 / 3.141592653589793, 1e-15);
    EXPECT_NEAR(prob("FDist (X, 2, 2)", 1), 0.25, 1e-14);
    EXPECT_NEAR(cdf("FDist (X, 2, 2)", 1), 0.5, 1e-14);
}

TEST_F(DistributionTest, Discrete) {
    EXPECT_NEAR(prob("BinomialDist (X, 10, 0.5)", 3), 120.0 / 1024, 1e-15);
    EXPECT_NEAR(cdf("BinomialDist (X, 10, 0.5)", 3), 176.0 / 1024, 1e-15);
    EXPECT_EQ(prob("BinomialDist (X, 10, 0.5)", 11), 0);
    EXPECT_NEAR(prob("PoissonDist (X, 3)", 2), 4.5 * std::exp(-3), 1e-15);
    EXPECT_NEAR(cdf("PoissonDist (X, 3)", 2), 8.5 * std::exp(-3), 1e-14);
    EXPECT_NEAR(prob("NegBinomialDist (X, 3, 0.5)", 2), 0.1875, 1e-15);
    EXPECT_NEAR(cdf("NegBinomialDist (X, 3, 0.5)", 2), 0.125 + 0.1875 + 0.1875, 1e-14);
    EXPECT_NEAR(prob("GeometricDist (X, 0.5)", 2), 0.125, 1e-15);
    EXPECT_NEAR(cdf("GeometricDist (X, 0.5)", 2), 0.875, 1e-15);
    EXPECT_NEAR(prob("HypergeometricDist (X, 2, 3, 5)", 1), 0.6, 1e-14);
    EXPECT_NEAR(prob("LogarithmicDist (X, 0.5)", 1), 0.5 / std::log(2.0), 1e-15);
    EXPECT_NEAR(prob("DiscUniformDist (X, 1, 4)", 2), 0.25, 1e-15);
    EXPECT_NEAR(cdf("DiscUniformDist (X, 1, 4)", 2), 0.5, 1e-15);
    EXPECT_EQ(prob("SingleDist (X, 4)", 4), 1);
    EXPECT_EQ(prob("SingleDist (X, 4)", 3), 0);
    EXPECT_NEAR(prob("MultinomialDist (3, X, 1, 1, 1, 1)", 1), 6.0 / 27, 1e-15);
}

TEST_F(DistributionTest, ParametersOutOfRangeAreReported) {
    EXPECT_TRUE(std::isnan(prob("NormalDist (X, 0, 0)", 1)));
    EXPECT_EQ(last_report(), "error evaluating function:  NormalDist (1, 0, 0)");
    EXPECT_TRUE(std::isnan(prob("UniformDist (X, 3, 3)", 3)));
    EXPECT_TRUE(std::isnan(prob("GammaDist (X, -1, 1)", 3)));
    EXPECT_TRUE(std::isnan(prob("BinomialDist (X, 10, 1.5)", 3)));
}

TEST_F(DistributionTest, NoisyFamily) {
    Node *effect = discrete("Effect", {"false", "true"}), *c1 = discrete("C1", {"false", "true"});
    Node* c2 = discrete("C2", {"false", "true"});
    connect(*c1, *effect);
    connect(*c2, *effect);
    auto eq = parse(effect, "P (Effect | C1, C2) = NoisyOrDist (Effect, 0.1, C1, 0.5, C2, 0.7)");
    ASSERT_TRUE(eq) << problem.message;
    std::string reason;
    double v[3] = {1, 1, 0};  // effect true, only C1 true
    EXPECT_NEAR(evaluate_probability(*eq, v, reason), 1 - 0.9 * 0.5, 1e-15);
    v[2] = 1;
    EXPECT_NEAR(evaluate_probability(*eq, v, reason), 1 - 0.9 * 0.5 * 0.3, 1e-15);
    v[0] = 0;
    EXPECT_NEAR(evaluate_probability(*eq, v, reason), 0.9 * 0.5 * 0.3, 1e-15);
    auto noisy_and = parse(effect, "P (Effect | C1, C2) = NoisyAndDist (Effect, 0, C1, 0.4, C2, 0.5)");
    ASSERT_TRUE(noisy_and);
    double w[3] = {1, 0, 1};  // C1 false stops the effect with 0.4
    EXPECT_NEAR(evaluate_probability(*noisy_and, w, reason), 0.6, 1e-15);

    Node* level = discrete("Level", {"none", "mild", "severe"});
    connect(*c1, *level);
    connect(*c2, *level);
    auto multi = parse(level, "P (Level | C1, C2) = NoisyOrMultiDist (Level, 3, 1, 0, 0, C1, 1, 0.5, C2, 2, 0.2)");
    ASSERT_TRUE(multi) << problem.message;
    double m[3] = {2, 1, 1};
    EXPECT_NEAR(evaluate_probability(*multi, m, reason), 0.2, 1e-15);
    m[0] = 1;
    EXPECT_NEAR(evaluate_probability(*multi, m, reason), 0.8 * 0.5, 1e-15);
    m[0] = 0;
    EXPECT_NEAR(evaluate_probability(*multi, m, reason), 0.8 * 0.5, 1e-15);
    auto table = parse(level, "P (Level | C1) = NoisyMaxTableDist (Level, 3, 1, 0, 0, C1, 0.5, 0.25, 0.25)");
    ASSERT_TRUE(table) << problem.message;
    double t[2] = {2, 1};
    EXPECT_NEAR(evaluate_probability(*table, t, reason), 0.25, 1e-15);
}

TEST_F(DistributionTest, ArgumentChecksOfManyArgumentFunctions) {
    const struct {
        const char* rhs;
        const char* message;
    } cases[] = {
        {"MultinomialDist (X, 1, 1)", "less than 4 arguments to MultinomialDist"},
        {"MultinomialDist (X, 1, 1, 1, 1)", "odd number of arguments to MultinomialDist"},
        {"MultinomialDist (2.5, X, 1, 1)", "n of MultinomialDist must be an integer, but it is 2.5"},
        {"MultinomialDist (3, 1.5, X, 1)", "k[1] of MultinomialDist must be an integer, but it is 1.5"},
        {"MultinomialDist (3, X, 0, 0)", "sum of probability arguments passed to MultinomialDist is 0"},
        {"NoisyOrDist (E)", "less than 2 arguments to NoisyOrDist"},
        {"NoisyOrDist (E, 0.1, 1)", "odd number of arguments to NoisyOrDist"},
        {"NoisyAndDist (E, 0.1, 1)", "odd number of arguments to NoisyAndDist"},
        {"NoisyOrMultiDist (E, max (3, 3))", "less than 3 arguments to NoisyOrMultiDist"},
        {"NoisyOrMultiDist (E, max (0, 0), 1)", "second argument (num_states) to NoisyOrMultiDist must be at least 1, but it is 0"},
        {"NoisyOrMultiDist (E, max (3, 3), 1, 0)", "there should be 3 leak probabilities (including the normal state \"leak\") since there are 3 states in NoisyOrMultiDist"},
        {"NoisyOrMultiDist (E, 2, 1, 0, 1)", "missing final two arguments of last clause in NoisyOrMultiDist"},
        {"NoisyOrMultiDist (E, 2, 1, 0, 1, 1)", "missing final argument of last clause in NoisyOrMultiDist"},
        {"NoisyOrMultiDist (E, 2, 1, 0, 1, 0, 0.5)", "sixth argument (=0) indicates the state that gets triggered, but it should not be state 0, since state 0 is the \"normal\" state for NoisyOrMultiDist"},
        {"NoisyOrMultiDist (E, 2, 1, 0, 1, 1, max (1.5, 0))", "seventh argument is 1.5, but it should be in [0,1] range since it is a probability for NoisyOrMultiDist"},
        {"NoisyMaxTableDist (E, 2, 1, 0, 1, 0.5)", "wrong number of arguments to NoisyMaxTableDist"},
        {"NoisyMaxTableDist (E, 2, max (0.5, 0), 0.4)", "a probability vector in NoisyMaxDist doesn't sum to 1"},
        // Counts far beyond any int are refused, not converted.
        {"NoisyOrMultiDist (E, max (8e16, 0), 1, 0)", "there should be 80000000000000000 leak probabilities (including the normal state \"leak\") since there are 80000000000000000 states in NoisyOrMultiDist"},
        {"NoisyMaxTableDist (E, max (8e16, 0), 1, 0)", "wrong number of arguments to NoisyMaxTableDist"},
        {"NoisyMaxTableDist (E, max (-8e16, 0) - 1e20, 1)", "number of states for output node in NoisyMaxTableDist is declared -100000000000000000000, but it must be 1 or more"},
    };
    Node* e = discrete("E", {"false", "true"});
    for (const auto& c : cases) {
        bool on_e = std::string(c.rhs).find("(E") != std::string::npos;
        EXPECT_TRUE(std::isnan(prob(c.rhs, 1, false, on_e ? e : nullptr))) << c.rhs;
        EXPECT_EQ(last_report(), c.message) << c.rhs;
    }
}

TEST_F(DistributionTest, ParseChecksOfTheNoisyFamily) {
    Node *e = discrete("E", {"false", "true"}), *c = discrete("C", {"false", "true"});
    for (Node* p : {c, x}) connect(*p, *e);
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"P (E | C) = NoisyOrDist (false, 0.1, C, 0.5)",
         "first argument of function NoisyOrDist should be a variable (>-node), but it isn't"},
        {"P (E | X) = NoisyOrDist (E, 0.1, X, 0.5)",
         "X is a continuous variable (>-node), but only discrete or discretized ones are allowed (in third argument of NoisyOrDist)"},
        {"P (E | C) = NoisyAndDist (E, 0.1, C, 1.5)",
         "fourth argument of function NoisyAndDist should be a probability (between 0 and 1), but it is 1.5"},
        {"P (E | C) = NoisyOrMultiDist (E, C, 1, 0)",
         "second argument of function NoisyOrMultiDist should be a number, but it isn't"},
        {"P (E | C) = NoisyOrMultiDist (E, 2.5, 1, 0)",
         "second argument of function NoisyOrMultiDist should be an integer, but it isn't"},
        {"P (E | C) = NoisyOrMultiDist (E, 3, 1, 0, 0)",
         "second argument of function NoisyOrMultiDist is 3, but it should be the number of states of the output variable (=2)"},
        {"P (E | C) = NoisyOrMultiDist (E, 2, 1, 0, C, 1, 1.5)",
         "seventh argument of function NoisyOrMultiDist should be a probability (between 0 and 1), but it is 1.5"},
        {"P (E | C) = NoisyMaxTableDist (E, 2, 0.5, 0.4)",
         "sum of probabilities for a condition of function NoisyMaxTableDist should be 1, but it is 0.9"},
        {"P (E | C) = NoisyMaxTableDist (E, 2, 1, 0, C, 0.3, 0.3)",
         "sum of probabilities for a condition of function NoisyMaxTableDist should be 1, but it is 0.6"},
    };
    for (const auto& k : cases) EXPECT_EQ(parse_error(e, k.text), k.message) << k.text;
}

}  // namespace
}  // namespace ravelo
