// Net testing against scores computed independently from brute-force beliefs.
#include "learn/learn_fixture.h"
#include "learn/tester.h"

namespace ravelo {
namespace {

class TesterTest : public LearnTest {
protected:
    // a -> b, a -> d, (a, b) -> c; b is never 2 when a is 0, d never 1 when a is 0.
    void SetUp() override {
        LearnTest::SetUp();
        a = node("a", 2);
        b = node("b", 3, {a});
        c = node("c", 2, {a, b});
        d = node("d", 2, {a});
        a->cpt = {0.4f, 0.6f};
        b->cpt = {0.6f, 0.4f, 0.0f, 0.2f, 0.3f, 0.5f};
        c->cpt = {0.9f, 0.1f, 0.5f, 0.5f, 0.2f, 0.8f, 0.7f, 0.3f, 0.4f, 0.6f, 0.05f, 0.95f};
        d->cpt = {1.0f, 0.0f, 0.3f, 0.7f};
        net->auto_update = 0;
    }

    Tester make_tester() {
        Tester tester(env, net);
        tester.test_nodes = {b, c};
        for (Node* n : tester.test_nodes) tester.tallies.emplace_back(n->num_states());
        return tester;
    }

    // The tallies computed case by case from the enumerated joint, with only
    // a and d entered as findings.
    std::vector<NodeTally> brute_tallies(const CaseTable& cases) {
        std::vector<NodeTally> want = {NodeTally(3), NodeTally(2)};
        for (std::size_t k = 0; k < cases.num_cases(); ++k) {
            for (Node* n : {a, d}) n->finding.state = cases.states[cases.cell(k, static_cast<std::size_t>(n->index))];
            const Node* tested[] = {b, c};
            for (int t = 0; t < 2; ++t) {
                double evidence = 0;
                std::vector<double> beliefs = brute_beliefs(tested[t], &evidence);
                const int actual = cases.states[cases.cell(k, static_cast<std::size_t>(tested[t]->index))];
                if (evidence == 0 || actual < 0) continue;
                NodeTally& w = want[static_cast<std::size_t>(t)];
                const double weight = cases.weights[k];
                std::size_t predicted = 0;
                double squares = 0;
                for (std::size_t s = 0; s < beliefs.size(); ++s) {
                    if (beliefs[s] > beliefs[predicted] + 1e-9) predicted = s;
                    squares += beliefs[s] * beliefs[s];
                }
                const double pa = beliefs[static_cast<std::size_t>(actual)];
                w.confusion[static_cast<std::size_t>(actual) * beliefs.size() + predicted] += weight;
                w.total += weight;
                w.errors += predicted == static_cast<std::size_t>(actual) ? 0 : weight;
                w.log_loss = pa == 0 ? INFINITY : w.log_loss - weight * std::log(pa);
                w.quadratic_loss += weight * (1 - 2 * pa + squares);
                w.spherical_payoff += weight * pa / std::sqrt(squares);
            }
        }
        for (Node* n : {a, d}) n->finding.state = kUndefState;
        return want;
    }

    void expect_same(const NodeTally& got, const NodeTally& want, const char* what) {
        for (std::size_t i = 0; i < want.confusion.size(); ++i) EXPECT_NEAR(got.confusion[i], want.confusion[i], 1e-9) << what;
        EXPECT_NEAR(got.total, want.total, 1e-9) << what;
        EXPECT_NEAR(got.errors, want.errors, 1e-9) << what;
        if (std::isinf(want.log_loss)) EXPECT_TRUE(std::isinf(got.log_loss)) << what;
        else EXPECT_NEAR(got.log_loss, want.log_loss, 1e-5 * want.total) << what;
        EXPECT_NEAR(got.quadratic_loss, want.quadratic_loss, 1e-5 * want.total) << what;
        EXPECT_NEAR(got.spherical_payoff, want.spherical_payoff, 1e-5 * want.total) << what;
    }

    Node *a = nullptr, *b = nullptr, *c = nullptr, *d = nullptr;
};

TEST_F(TesterTest, TalliesMatchBruteForceWithWeightsMissingValuesAndZeroProbabilities) {
    std::mt19937 rng(21);
    CaseTable cases = simulate(rng, 60, 0.25);
    for (std::size_t k = 0; k < cases.num_cases(); k += 7) cases.weights[k] = 2.5;
    // Case 3: b = 2 with a = 0 has probability zero; case 4: a = 0 with d = 1 is impossible.
    const int b2[] = {0, 2, 1, 0}, impossible[] = {0, 1, 1, 1};
    for (std::size_t k = 0; k < 4; ++k) {
        cases.states[cases.cell(3, k)] = b2[k];
        cases.states[cases.cell(4, k)] = impossible[k];
    }
    cases.weights[4] = 3;
    Tester tester = make_tester();
    test_with_cases(tester, cases);
    std::vector<NodeTally> want = brute_tallies(cases);
    expect_same(tester.tallies[0], want[0], "b");
    expect_same(tester.tallies[1], want[1], "c");
    EXPECT_TRUE(std::isinf(tester.tallies[0].log_loss));
    EXPECT_FALSE(std::isinf(tester.tallies[1].log_loss));
    EXPECT_EQ(tester.skipped, 3.0);
    EXPECT_EQ(last_message(), "the findings of 3 cases are impossible in net 'testnet', so the net tester left them out");

    // A second case set adds to the same tallies.
    CaseTable more = simulate(rng, 30, 0.1);
    test_with_cases(tester, more);
    std::vector<NodeTally> also = brute_tallies(more);
    want[1].merge(also[1]);
    expect_same(tester.tallies[1], want[1], "c after a second case set");
}

TEST_F(TesterTest, UniformBeliefsScoreAsTheirClosedForms) {
    // b's beliefs are uniform whatever its actual state.
    b->cpt = {1 / 3.f, 1 / 3.f, 1 / 3.f, 1 / 3.f, 1 / 3.f, 1 / 3.f};
    std::mt19937 rng(1);
    CaseTable cases = simulate(rng, 20, 0.0);
    Tester tester = make_tester();
    test_with_cases(tester, cases);
    const NodeTally& t = tester.tallies[0];
    EXPECT_NEAR(t.log_loss / t.total, std::log(3.0), 1e-6);
    EXPECT_NEAR(t.quadratic_loss / t.total, 2.0 / 3.0, 1e-6);
    EXPECT_NEAR(t.spherical_payoff / t.total, 1 / std::sqrt(3.0), 1e-6);
}

TEST_F(TesterTest, ReportIsIdenticalOnOneThreadAndMany) {
    std::mt19937 rng(9);
    CaseTable cases = simulate(rng, 2 * CaseBatch::kBlockSize + 40, 0.2);
    use_threads(1);
    Tester one = make_tester();
    test_with_cases(one, cases);
    use_threads(4);
    Tester many = make_tester();
    test_with_cases(many, cases);
    EXPECT_EQ(test_report(one), test_report(many));
    EXPECT_EQ(one.tallies[1].log_loss, many.tallies[1].log_loss);
}

TEST_F(TesterTest, ReportSectionsFollowTheTallies) {
    CaseTable cases;
    cases.columns = {0, 1, 2, 3};
    // Two cases: a = 1, b = 1, c = 1, d = 0 (weight 2), and one with c missing.
    cases.states = {1, 1, 1, 0, 1, 0, kUndefState, 0};
    cases.weights = {2, 1};
    cases.ids = {-1, -1};
    cases.lines = {2, 3};
    b->title = "the_b\tnode";
    Tester tester = make_tester();
    test_with_cases(tester, cases);
    const std::string report = test_report(tester);
    EXPECT_NE(report.find("\nFor b:       the b node\n\nConfusion:\n"), std::string::npos) << report;
    EXPECT_NE(report.find("      #0      #1      #2    Actual\n  ------  ------  ------    ------\n"
                          "       0       0       1    #0\n       0       0       2    #1\n"
                          "       0       0       0    #2\n"),
              std::string::npos)
        << report;
    // With a = 1, b's beliefs are 0.2, 0.3, 0.5: state 2 is predicted and both cases are errors.
    EXPECT_NE(report.find("\nError rate = 100%\n"), std::string::npos);
    EXPECT_NE(report.find("\nScoring Rule Results:\n  Logarithmic loss = "), std::string::npos);
    EXPECT_NE(report.find("\nCalibration:\n"), std::string::npos);
    EXPECT_NE(report.find("\nTimes Surprised (percentage):\n"), std::string::npos);
    // c is two-state: its quality table follows; b's does not.
    EXPECT_EQ(report.find("Quality of Test"), report.rfind("Quality of Test"));
    EXPECT_GT(report.find("Quality of Test"), report.find("\nFor c:"));
    EXPECT_NE(report.find("\nFor c:"), std::string::npos);

    Tester empty = make_tester();
    EXPECT_EQ(test_report(empty), "\nFor b:       the b node\n\nNo applicable cases\n\nFor c:\nNo applicable cases\n");
}

TEST(ProbabilityBins, GreatestLowerBoundFirstOfEqualOnes) {
    const std::vector<double> bounds = {0.1, 0.2, 0.2, 0.5};
    EXPECT_EQ(probability_bin(bounds, 0.05), -1);
    EXPECT_EQ(probability_bin(bounds, 0.1), 0);
    EXPECT_EQ(probability_bin(bounds, 0.2), 1);
    EXPECT_EQ(probability_bin(bounds, 0.3), 1);
    EXPECT_EQ(probability_bin(bounds, 1.0), 3);
}

}  // namespace
}  // namespace ravelo

namespace ravelo {
namespace {

// A continuous test node known by real values: its error tallies against the
// mean and deviation of its beliefs, worked out here from the joint.
TEST_F(TesterTest, RealValueErrorsOfContinuousNode) {
    Node* x = node("x", 3, {a});
    x->type = NodeType::Continuous;
    x->levels = {0.0, 1.0, 2.0, 4.0};
    x->cpt = {0.7f, 0.2f, 0.1f, 0.1f, 0.3f, 0.6f};
    CaseTable cases;
    cases.columns = {a->index, x->index};
    const int a_states[] = {0, 1, 1, 0, kUndefState};
    const double values[] = {0.5, 3.9, 0.0, 7.0, 1.5};
    for (std::size_t k = 0; k < 5; ++k) {
        cases.states.insert(cases.states.end(), {a_states[k], kUndefState});
        cases.values.insert(cases.values.end(), {undef_value(), values[k]});
        cases.weights.push_back(k == 1 ? 2.0 : 1.0);
        cases.ids.push_back(-1);
        cases.lines.push_back(static_cast<long>(k) + 2);
    }
    Tester tester(env, net);
    tester.test_nodes = {x};
    tester.tallies.emplace_back(3);
    test_with_cases(tester, cases);
    const NodeTally& t = tester.tallies[0];

    const double mids[] = {0.5, 1.5, 3.0};
    double count = 0, abs_sum = 0, squares = 0, abs_max = 0, rel_max = 0, z_sum = 0, beyond[3] = {0, 0, 0};
    for (std::size_t k = 0; k < 5; ++k) {
        a->finding.state = a_states[k];
        std::vector<double> p = brute_beliefs(x);
        double mean = 0, square = 0;
        for (std::size_t s = 0; s < 3; ++s) mean += p[s] * mids[s], square += p[s] * mids[s] * mids[s];
        const double sd = std::sqrt(square - mean * mean), d = std::fabs(values[k] - mean), w = cases.weights[k];
        count += w, abs_sum += w * d, squares += w * d * d, abs_max = std::max(abs_max, d), z_sum += w * d / sd;
        if (values[k] != 0) rel_max = std::max(rel_max, d / std::fabs(values[k]));
        for (int b = 0; b < 3; ++b) beyond[b] += d / sd > b + 1 && d / sd <= b + 2 + (b == 2 ? 1e300 : 0) ? w : 0;
    }
    a->finding.state = kUndefState;
    EXPECT_EQ(t.real_count, count);
    EXPECT_NEAR(t.abs_sum, abs_sum, 1e-5);
    EXPECT_NEAR(t.abs_squares, squares, 1e-5);
    EXPECT_NEAR(t.abs_max, abs_max, 1e-6);
    EXPECT_NEAR(t.z_sum, z_sum, 1e-5);
    // The value 0 makes the relative error infinite.
    EXPECT_TRUE(std::isinf(t.rel_sum) && std::isinf(t.rel_max));
    EXPECT_NEAR(t.beyond1 + t.beyond2 + t.beyond3, beyond[0] + beyond[1] + beyond[2], 1e-12);
    // 7.0 lies beyond the last level: it has no state, so only its real value counts.
    EXPECT_EQ(t.total, count - 1);
    const std::string report = test_report(tester);
    EXPECT_NE(report.find("\nTesting Real Value  (6 cases):\n  Absolute error: mean = "), std::string::npos) << report;
    EXPECT_NE(report.find("  Relative error: mean = inf % max = inf %\n"), std::string::npos) << report;
}

}  // namespace
}  // namespace ravelo
