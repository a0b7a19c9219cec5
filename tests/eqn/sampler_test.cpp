// Drawing single values of a node from its equation.
#include <cmath>

#include "base/random.h"
#include "eqn/to_table.h"
#include "eqn_fixture.h"

namespace ravelo {
namespace {

class SamplerTest : public EquationTest {
protected:
    void SetUp() override {
        EquationTest::SetUp();
        rng = std::make_unique<RandomGenerator>(env, 11);
        a = discrete("A", {"a0", "a1"});
    }
    std::string failure_of(Node* node, const double* parents) {
        try {
            sample_from_equation(*node, parents, *rng);
        } catch (const Failure& f) {
            return f.report->message;
        }
        return "";
    }
    std::unique_ptr<RandomGenerator> rng;
    Node* a;
};

TEST_F(SamplerTest, DeterministicValuesAndLevels) {
    Node* y = continuous("Y");
    connect(*a, *y);
    y->equation = "Y (A) = A * 2.5 + 1";
    double parent = 1;
    EXPECT_EQ(sample_from_equation(*y, &parent, *rng), 3.5);
    Node* leveled = discrete("L", {"low", "high"}, {10, 20});
    connect(*a, *leveled);
    leveled->equation = "L (A) = A == a1 ? high : low";
    EXPECT_EQ(sample_from_equation(*leveled, &parent, *rng), 20);  // the state's level
}

TEST_F(SamplerTest, DiscreteDrawsFollowTheProbabilities) {
    Node* w = discrete("W", {"w0", "w1", "w2"});
    connect(*a, *w);
    w->equation = "P (W | A) = W == w0 ? 0.2 : (W == w1 ? 0.3 : 0.5)";
    int counts[3] = {0, 0, 0};
    double parent = 0;
    for (int i = 0; i < 4000; ++i) ++counts[static_cast<int>(sample_from_equation(*w, &parent, *rng))];
    EXPECT_NEAR(counts[0] / 4000.0, 0.2, 0.03);
    EXPECT_NEAR(counts[1] / 4000.0, 0.3, 0.03);
    EXPECT_NEAR(counts[2] / 4000.0, 0.5, 0.03);
}

TEST_F(SamplerTest, ContinuousDrawsByRejection) {
    Node* y = continuous("Y", {0, 1, 2, 4});
    connect(*a, *y);
    y->equation = "P (Y | A) = A == a0 ? UniformDist (Y, 0, 1) : TriangularDist (Y, 2, 2)";
    double parent = 0;
    for (int i = 0; i < 200; ++i) {
        double v = sample_from_equation(*y, &parent, *rng);
        EXPECT_GE(v, 0);
        EXPECT_LE(v, 1);
    }
    parent = 1;
    double mean = 0;
    for (int i = 0; i < 2000; ++i) mean += sample_from_equation(*y, &parent, *rng) / 2000;
    EXPECT_NEAR(mean, 2, 0.1);
}

TEST_F(SamplerTest, RefusedEquations) {
    Node* y = continuous("Y", {0, 1e9});
    connect(*a, *y);
    double parent = 0;
    EXPECT_EQ(failure_of(y, &parent), "don't have valid equation for node 'Y'");
    y->equation = "P (Y | A) = NormalDist (Y, 0, 1e-7)";
    EXPECT_EQ(failure_of(y, &parent), "adjust discretization intervals or equation, because it is requiring an "
                                      "excessive number of samples to find value of 'Y' with input A = 0");
    y->levels = {0, INFINITY};
    EXPECT_EQ(failure_of(y, &parent), "can't simulate an equation with a range that goes to infinity (node 'Y')");
    Node* bare = continuous("Bare");
    bare->equation = "P (Bare) = NormalDist (Bare, 0, 1)";
    EXPECT_EQ(failure_of(bare, nullptr), "node 'Bare' must have discretization intervals for this operation");
}

}  // namespace
}  // namespace ravelo
