// Equations turned into tables: function tables, CPTs from deterministic and
// probabilistic equations, discretized parents and outputs, and the reports
// of conversions that cannot be made.
#include <cmath>

#include "base/random.h"
#include "eqn/equation.h"
#include "eqn/to_table.h"
#include "eqn_fixture.h"

namespace ravelo {
namespace {

class ToTableTest : public EquationTest {
protected:
    void SetUp() override {
        EquationTest::SetUp();
        rng = std::make_unique<RandomGenerator>(env, 7);
        a = discrete("A", {"a0", "a1"});
        b = discrete("B", {"b0", "b1", "b2"});
        t = continuous("T", {0, 10, 20, 30});
    }
    // Converts, turning a failure into its message.
    std::string convert(Node* node, int samples = 1, bool samp_unc = false, bool add_exist = false) {
        try {
            equation_to_table(*node, samples, samp_unc, add_exist, rng.get());
        } catch (const Failure& f) {
            return f.report->message;
        }
        return "";
    }
    std::vector<float> row(Node* node, size_t r) {
        size_t m = static_cast<size_t>(node->num_states());
        return std::vector<float>(node->cpt.begin() + static_cast<long>(r * m),
                                  node->cpt.begin() + static_cast<long>((r + 1) * m));
    }
    std::unique_ptr<RandomGenerator> rng;
    Node *a, *b, *t;
};

TEST_F(ToTableTest, DiscreteOutputWithLevelsMapsValuesToStates) {
    Node* level = discrete("Level", {"l0", "l5", "l10"}, {0, 5, 10});
    connect(*b, *level);
    level->equation = "Level (B) = B * 5";
    ASSERT_EQ(convert(level), "");
    EXPECT_EQ(level->func_states, (std::vector<int>{0, 1, 2}));
    level->equation = "Level (B) = AsState (2 - B)";
    ASSERT_EQ(convert(level), "");
    EXPECT_EQ(level->func_states, (std::vector<int>{2, 1, 0}));
}

TEST_F(ToTableTest, ProbabilisticEquationOfDiscreteParents) {
    Node* count = discrete("Count", {"c0", "c1", "c2", "c3"});
    connect(*a, *count);
    count->equation = "P (Count | A) = BinomialDist (Count, 3, A == a0 ? 0.5 : 0.2)";
    ASSERT_EQ(convert(count, 10), "");
    for (int i = 0; i < 2; ++i) {
        double p = i == 0 ? 0.5 : 0.2;
        for (int k = 0; k <= 3; ++k) {
            double expected = std::tgamma(4.0) / (std::tgamma(k + 1.0) * std::tgamma(4.0 - k)) *
                              std::pow(p, k) * std::pow(1 - p, 3 - k);
            EXPECT_NEAR(row(count, static_cast<size_t>(i))[static_cast<size_t>(k)], expected, 1e-6);
        }
    }
    EXPECT_TRUE(count->func_states.empty());
    EXPECT_EQ(count->chance, Chance::Chance);
}

TEST_F(ToTableTest, RowsAreNormalisedAndEmptyRowsMadeUniform) {
    Node* weight = discrete("W", {"w0", "w1"});
    connect(*a, *weight);
    weight->equation = "P (W | A) = A == a0 ? (W == w0 ? 3 : 1) : 0";
    ASSERT_EQ(convert(weight), "");
    EXPECT_EQ(row(weight, 0), (std::vector<float>{0.75f, 0.25f}));
    EXPECT_EQ(row(weight, 1), (std::vector<float>{0.5f, 0.5f}));
    EXPECT_EQ(last_report(), "in equation of node W, for 1 out of 2 parent settings (i.e. conditions), no nonzero "
                             "probability was discovered by sampling, so they were given uniform distributions");
    int before = count_reports();
    ASSERT_EQ(convert(weight, 1, true), "");  // keeping the sampling uncertainty: no warning
    EXPECT_EQ(count_reports(), before);
    EXPECT_EQ(weight->experience, (std::vector<double>{1, 1}));
}

TEST_F(ToTableTest, ContinuousOutputIsBinnedIntoItsIntervals) {
    Node* reading = continuous("Reading", {0, 10, 20, 30});
    connect(*b, *reading);
    reading->equation = "Reading (B) = B * 10 + 5";
    ASSERT_EQ(convert(reading), "");
    for (size_t r = 0; r < 3; ++r)
        for (size_t s = 0; s < 3; ++s) EXPECT_EQ(row(reading, r)[s], r == s ? 1.0f : 0.0f);
    EXPECT_TRUE(reading->func_states.empty());
    EXPECT_EQ(reading->chance, Chance::Determin);  // nothing sampled: still a function of B
}

TEST_F(ToTableTest, ContinuousOutputDensitiesTimesWidths) {
    Node* y = continuous("Y", {0, 5, 10, 20});
    connect(*a, *y);
    y->equation = "P (Y | A) = A == a0 ? UniformDist (Y, 0, 10) : UniformDist (Y, 0, 20)";
    ASSERT_EQ(convert(y), "");
    EXPECT_EQ(row(y, 0), (std::vector<float>{0.5f, 0.5f, 0.0f}));
    EXPECT_EQ(row(y, 1), (std::vector<float>{0.25f, 0.25f, 0.5f}));
}

TEST_F(ToTableTest, ContinuousParentsAreSampledInTheirIntervals) {
    Node* hot = discrete("Hot", {"false", "true"});
    connect(*t, *hot);
    hot->equation = "Hot (T) = T >= 15";
    ASSERT_EQ(convert(hot, 2000), "");
    EXPECT_TRUE(hot->func_states.empty());  // sampled: a CPT, not a function table
    EXPECT_EQ(row(hot, 0), (std::vector<float>{1, 0}));
    EXPECT_NEAR(row(hot, 1)[1], 0.5, 0.05);
    EXPECT_EQ(row(hot, 2), (std::vector<float>{0, 1}));
}

TEST_F(ToTableTest, NormalOutputMatchesIntervalProbabilities) {
    Node* y = continuous("Y", {-3, -1, 0, 1, 3});
    connect(*t, *y);
    y->equation = "P (Y | T) = NormalDist (Y, 0, 1)";
    ASSERT_EQ(convert(y, 3000), "");
    auto phi = [](double v) { return 0.5 * std::erfc(-v / std::sqrt(2.0)); };
    double total = phi(3) - phi(-3);
    double expected[4] = {phi(-1) - phi(-3), phi(0) - phi(-1), phi(1) - phi(0), phi(3) - phi(1)};
    for (size_t s = 0; s < 4; ++s) EXPECT_NEAR(row(y, 2)[s], expected[s] / total, 0.02);
}

TEST_F(ToTableTest, CumulativeEquationsGiveExactIntervalProbabilities) {
    Node* y = continuous("Y", {-INFINITY, -1, 0, 2, INFINITY});
    connect(*a, *y);
    y->equation = "P (<Y | A) = NormalDist (Y, A, 1)";
    ASSERT_EQ(convert(y), "");
    auto phi = [](double v) { return 0.5 * std::erfc(-v / std::sqrt(2.0)); };
    for (int mean = 0; mean < 2; ++mean) {
        double expected[4] = {phi(-1 - mean), phi(-mean) - phi(-1 - mean), phi(2 - mean) - phi(-mean),
                              1 - phi(2 - mean)};
        for (size_t s = 0; s < 4; ++s) EXPECT_NEAR(row(y, static_cast<size_t>(mean))[s], expected[s], 1e-7);
    }
    Node* k = discrete("K", {"k0", "k1", "k2"});
    k->equation = "P (<K) = BinomialDist (K, 4, 0.5)";
    ASSERT_EQ(convert(k), "");  // 1/16, 4/16 and 6/16, normalised over their 11/16
    EXPECT_NEAR(row(k, 0)[0], 1.0 / 11, 1e-7);
    EXPECT_NEAR(row(k, 0)[2], 6.0 / 11, 1e-7);
    Node* leveled = discrete("Lv", {"l1", "l2", "l3"}, {1, 2, 3});
    leveled->equation = "P (<Lv) = PoissonDist (Lv, 2)";  // the cumulative reads the level values
    ASSERT_EQ(convert(leveled), "");
    double p1 = 2 * std::exp(-2.0), p2 = 2 * std::exp(-2.0), p3 = 4.0 / 3 * std::exp(-2.0);
    EXPECT_NEAR(row(leveled, 0)[0], (std::exp(-2.0) + p1) / (std::exp(-2.0) + p1 + p2 + p3), 1e-6);
    EXPECT_NEAR(row(leveled, 0)[2], p3 / (std::exp(-2.0) + p1 + p2 + p3), 1e-6);
}

TEST_F(ToTableTest, FaultsOfTheEquationOrNode) {
    Node* out = discrete("Out", {"o0", "o1", "o2"});
    connect(*a, *out);
    out->equation = "Out (A) = A * 3";
    EXPECT_EQ(convert(out), "since Out is discrete, its equation should return a state number between 0 and 2, "
                            "but it is returning 3 with input A = a1");
    // A value beyond any int is reported as it is.
    out->equation = "Out (A) = A * 5555555555";
    EXPECT_EQ(convert(out), "since Out is discrete, its equation should return a state number between 0 and 2, "
                            "but it is returning 5555555555 with input A = a1");
    out->equation = "Out (A) = 1 / (1 - A) - 1";
    EXPECT_EQ(convert(out), "equation for node Out is returning an undefined value; could one of its parents "
                            "have an undefined value (-3)?  \nInput is A = a1");
    out->equation = "Out (Nope) = 1";
    EXPECT_EQ(convert(out), "equation for node 'Out' contains argument 'Nope', which does not match any of its "
                            "input names or parent names");
    out->equation = "Out (A) = 1 + zork";
    EXPECT_EQ(convert(out), "problem with equation of node 'Out':  unknown name 'zork'");
    Report* r = next_report(*env, kNullError, nullptr);
    while (next_report(*env, kNullError, r)) r = next_report(*env, kNullError, r);
    EXPECT_EQ(r->context, "parsing expression");
    EXPECT_EQ(r->position, 14);
    out->equation = "P (Out | A) = A == a1 ? -0.5 : 1";
    EXPECT_EQ(convert(out), "error evaluating equation of node 'Out':  probability equation generated negative "
                            "value (-0.5).  Input is A = a1");

    Node* reading = continuous("Reading", {0, 10});
    connect(*a, *reading);
    reading->equation = "Reading (A) = A * 35";
    EXPECT_EQ(convert(reading), "equation for Reading is returning 35, which is not between the lowest (0) and "
                                "highest (10) discretization thresholds.  Its input is A = a1");
    Node* loose = continuous("Loose");
    connect(*loose, *out);
    out->equation = "Out (A) = 1";
    EXPECT_EQ(convert(out), "can't convert equation to table for node 'Out' because it has a parent node (Loose) "
                            "with no discretization intervals set (it needs them because it is continuous)");
    Node* free_node = continuous("Free");
    free_node->equation = "P (Free) = NormalDist (Free, 0, 1)";
    EXPECT_EQ(convert(free_node), "can't convert equation to table for node 'Free' because it has no "
                                  "discretization intervals set (it needs them because it is continuous and "
                                  "nondeterministic)");
}

TEST_F(ToTableTest, AFailedConversionLeavesTheTables) {
    Node* out = discrete("Out", {"o0", "o1"});
    connect(*b, *out);
    out->equation = "Out (B) = B";
    EXPECT_EQ(convert(out), "since Out is discrete, its equation should return a state number between 0 and 1, "
                            "but it is returning 2 with input B = b2");
    EXPECT_TRUE(out->cpt.empty());
    out->equation = "Out (B) = B == b2";
    out->states[0].name = "false";
    out->states[1].name = "true";
    ASSERT_EQ(convert(out), "");
    std::vector<float> kept = out->cpt;
    out->equation = "Out (B) = B";
    EXPECT_NE(convert(out), "");
    EXPECT_EQ(out->cpt, kept);
}

TEST_F(ToTableTest, AddingToTheExistingTable) {
    Node* w = discrete("W", {"w0", "w1"});
    w->equation = "P (W) = W == w0 ? 1 : 0";
    ASSERT_EQ(convert(w, 1, true), "");
    w->equation = "P (W) = W == w0 ? 0 : 1";
    ASSERT_EQ(convert(w, 1, true, true), "");
    EXPECT_EQ(row(w, 0), (std::vector<float>{0.5f, 0.5f}));
    EXPECT_EQ(w->experience, (std::vector<double>{2}));
}

TEST_F(ToTableTest, ParsedEquationIsKeptUntilItsGroundChanges) {
    Node* out = discrete("Out", {"o0", "o1"});
    connect(*a, *out);
    out->equation = "Out (A) = A == a1 ? o0 : o1";
    ParseProblem problem_seen;
    const ParsedEquation* first = node_equation(*out, problem_seen);
    ASSERT_TRUE(first);
    EXPECT_EQ(node_equation(*out, problem_seen), first);
    std::uint64_t stamp = equation_stamp(*out);
    a->states[1].name = "renamed";
    EXPECT_NE(equation_stamp(*out), stamp);
    EXPECT_FALSE(node_equation(*out, problem_seen));
    EXPECT_EQ(problem_seen.message, "unknown name 'a1'");
    a->states[1].name = "a1";
    a->levels = {1, 2};
    EXPECT_NE(equation_stamp(*out), stamp);
    stamp = equation_stamp(*out);
    out->input_names[0] = "link";
    EXPECT_NE(equation_stamp(*out), stamp);
    out->equation = "Out (link) = link == a1 ? o0 : o1";
    EXPECT_TRUE(node_equation(*out, problem_seen));
}

}  // namespace
}  // namespace ravelo
