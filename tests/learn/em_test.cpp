// EM and gradient learning of tables from simulated cases.
#include <cstdio>

#include "base/random.h"
#include "learn/counting.h"
#include "learn/family_counts.h"
#include "learn/learn_fixture.h"
#include "learn/learner.h"

namespace ravelo {
namespace {

class EmTest : public LearnTest {
protected:
    // a -> b -> c, a -> c, with known tables to simulate from.
    void chain() {
        a = node("a", 2);
        b = node("b", 3, {a});
        c = node("c", 2, {a, b});
        net->auto_update = 0;
        true_tables();
    }

    void true_tables() {
        a->cpt = {0.3f, 0.7f};
        b->cpt = {0.6f, 0.3f, 0.1f, 0.1f, 0.2f, 0.7f};
        c->cpt = {0.9f, 0.1f, 0.5f, 0.5f, 0.2f, 0.8f, 0.7f, 0.3f, 0.4f, 0.6f, 0.05f, 0.95f};
        for (Node* n : {a, b, c}) n->experience.clear(), n->counts.clear();
    }

    // The log likelihoods of the printed rows, in order.
    LearnOutcome learn(int method, const CaseTable& cases, int max_iters, std::vector<double>* scores = nullptr,
                       double tol = 1e-5) {
        Learner learner(env, method);
        learner.max_iters = max_iters;
        learner.tolerance = tol;
        learner.listener = [&](const std::string& text) {
            int i;
            double score;
            if (scores && std::sscanf(text.c_str(), " %d %lf", &i, &score) == 2) scores->push_back(score);
            return false;
        };
        return learn_tables(learner, *net, net->nodes.nodes, cases, 1.0);
    }

    std::vector<float> all_tables() const {
        std::vector<float> t;
        for (const Node* n : net->nodes.nodes) t.insert(t.end(), n->cpt.begin(), n->cpt.end());
        return t;
    }

    Node *a = nullptr, *b = nullptr, *c = nullptr;
};

TEST_F(EmTest, LogLikelihoodNeverFallsAndTablesAreRecoveredWithMissingValues) {
    chain();
    const std::vector<float> truth = all_tables();
    std::mt19937 rng(11);
    CaseTable cases = simulate(rng, 20000, 0.2);
    forget_tables();
    std::vector<double> scores;
    // A negative tolerance never stops early, even on a change lost in rounding.
    LearnOutcome outcome = learn(kEmLearning, cases, 20, &scores, -1.0);
    EXPECT_EQ(outcome.iterations, 20);
    ASSERT_EQ(scores.size(), 21u);
    for (std::size_t i = 1; i < scores.size(); ++i) EXPECT_GE(scores[i], scores[i - 1] - 1e-6 * std::fabs(scores[i]));
    EXPECT_NEAR(outcome.log_likelihood, scores.back(), 1e-5 * std::fabs(scores.back()));
    // The rarest parent condition of c is seen about 20000 * 0.7 * 0.1 * 0.64 times.
    const std::vector<float> learned = all_tables();
    for (std::size_t i = 0; i < truth.size(); ++i) EXPECT_NEAR(learned[i], truth[i], 0.03) << "cell " << i;
    // The score printed last is that of the tables left in the net.
    EXPECT_NEAR(cases_log_likelihood(*net, cases, 1.0), outcome.log_likelihood, 1e-9 * std::fabs(scores.back()));
}

TEST_F(EmTest, OneIterationOnCompleteCasesEqualsCounting) {
    chain();
    std::mt19937 rng(5);
    CaseTable cases = simulate(rng, 500, 0.0);
    cases.weights[3] = 2.5;  // multiplicities count as repeated cases
    b->experience.assign(2, 4.0);  // experience already gathered weighs as prior counts
    learn_cases_by_counting(net->nodes.nodes, cases, 1.0);
    std::vector<float> counted = all_tables();
    std::vector<std::vector<double>> experience;
    for (const Node* n : net->nodes.nodes) experience.push_back(n->experience);
    true_tables();
    b->experience.assign(2, 4.0);
    learn(kEmLearning, cases, 1);
    const std::vector<float> learned = all_tables();
    for (std::size_t i = 0; i < counted.size(); ++i) EXPECT_NEAR(learned[i], counted[i], 1e-6) << "cell " << i;
    for (std::size_t k = 0; k < experience.size(); ++k)
        for (std::size_t r = 0; r < experience[k].size(); ++r)
            EXPECT_NEAR(net->nodes.nodes[k]->experience[r], experience[k][r], 1e-6 * experience[k][r]);
}

TEST_F(EmTest, GradientAscentReachesEmScoreWithHiddenNode) {
    // h is never observed: its three children learn through it.
    Node* h = node("h", 2);
    Node* x = node("x", 3, {h});
    Node* y = node("y", 2, {h});
    Node* z = node("z", 3, {h, y});
    net->auto_update = 0;
    std::mt19937 rng(3);
    random_tables(rng);
    CaseTable cases = simulate(rng, 1500, 0.1, {h->index});
    (void)x, (void)z;
    RandomGenerator start_em(env, 7), start_gradient(env, 7);
    Learner em(env, kEmLearning), gradient(env, kGradientLearning);
    em.max_iters = gradient.max_iters = 200;
    em.tolerance = gradient.tolerance = 1e-7;
    forget_tables();
    em.random = &start_em;
    const double em_score = learn_tables(em, *net, net->nodes.nodes, cases, 1.0).log_likelihood;
    forget_tables();
    gradient.random = &start_gradient;
    LearnOutcome climbed = learn_tables(gradient, *net, net->nodes.nodes, cases, 1.0);
    EXPECT_GT(climbed.iterations, 1);
    EXPECT_GE(climbed.log_likelihood, em_score - 1e-4 * std::fabs(em_score));
}

TEST_F(EmTest, OneThreadAndManyGiveIdenticalTablesAndScores) {
    chain();
    std::mt19937 rng(8);
    CaseTable cases = simulate(rng, 3 * CaseBatch::kBlockSize + 17, 0.3);
    forget_tables();
    use_threads(1);
    std::vector<double> one_scores, many_scores;
    learn(kEmLearning, cases, 4, &one_scores);
    const std::vector<float> one = all_tables();
    forget_tables();
    use_threads(3);
    learn(kEmLearning, cases, 4, &many_scores);
    EXPECT_EQ(one, all_tables());
    EXPECT_EQ(one_scores, many_scores);
}

TEST_F(EmTest, NoIterationsPrintsStartingScoreOnly) {
    chain();
    std::mt19937 rng(2);
    CaseTable cases = simulate(rng, 100, 0.2);
    const std::vector<float> before = all_tables();
    std::vector<std::string> printed;
    Learner learner(env, kEmLearning);
    learner.max_iters = 0;
    learner.listener = [&](const std::string& text) { printed.push_back(text); return false; };
    learn_tables(learner, *net, net->nodes.nodes, cases, 1.0);
    ASSERT_EQ(printed.size(), 3u);
    EXPECT_EQ(printed[0], "\nDoing EM Learning, hold down <ctrl> + <mouse button> to stop ...\n");
    EXPECT_EQ(printed[1], "  Iteration   Log Likelihood   Change %\n");
    EXPECT_EQ(printed[2], format("  %9d   %-14g\n", 0, cases_log_likelihood(*net, cases, 1.0)));
    EXPECT_EQ(before, all_tables());
}

TEST_F(EmTest, StopRequestKeepsTablesOfLastFinishedIteration) {
    chain();
    std::mt19937 rng(4);
    CaseTable cases = simulate(rng, 300, 0.2);
    forget_tables();
    learn(kEmLearning, cases, 2);
    const std::vector<float> after_two = all_tables();
    forget_tables();
    Learner learner(env, kEmLearning);
    int rows = 0;
    learner.listener = [&](const std::string& text) {
        int i;
        double score;
        return std::sscanf(text.c_str(), " %d %lf", &i, &score) == 2 && ++rows == 3;
    };
    LearnOutcome outcome = learn_tables(learner, *net, net->nodes.nodes, cases, 1.0);
    EXPECT_EQ(outcome.iterations, 2);
    EXPECT_EQ(after_two, all_tables());
}

TEST_F(EmTest, ImpossibleCaseIsReportedAndTablesKept) {
    chain();
    c->cpt[0] = 1.0f, c->cpt[1] = 0.0f;  // c is never 1 when a = 0 and b = 0
    std::mt19937 rng(4);
    CaseTable cases = simulate(rng, 50, 0.0);
    for (std::size_t k = 0; k < 3; ++k) cases.states[cases.cell(7, k)] = k == 2 ? 1 : 0;
    const std::vector<float> before = all_tables();
    Learner learner(env, kEmLearning);
    EXPECT_THROW(learn_tables(learner, *net, net->nodes.nodes, cases, 1.0), Failure);
    EXPECT_EQ(last_message(),
              "couldn't calculate log likelihood, because couldn't calculate joint probability of findings for "
              "net testnet, in case 8 (file line number 9) (while calcuating log-likelihood)");
    EXPECT_EQ(before, all_tables());
}

TEST_F(EmTest, DecisionNodesAreNotLearned) {
    chain();
    b->kind = NodeKind::Decision;
    Learner learner(env, kEmLearning);
    EXPECT_THROW(learn_tables(learner, *net, {a, b}, CaseTable{}, 1.0), Failure);
    EXPECT_EQ(last_message(), "can't learn the CPT table of node 'b', because it is a decision node");
}

}  // namespace
}  // namespace ravelo
