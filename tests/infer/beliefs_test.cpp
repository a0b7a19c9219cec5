#include "infer/compile.h"
#include "infer/findings.h"
#include "infer/queries.h"
#include "infer/update.h"
#include "net_fixture.h"

namespace ravelo {
namespace {

using BeliefsTest = NetTest;

TEST_F(BeliefsTest, MatchBruteForceWithFindingsEnteredAndRetracted) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        fresh_random_net(seed, 9, 3);
        expect_exact("prior");
        std::mt19937 rng(seed * 31);
        auto& ns = net->nodes.nodes;
        // Entered one at a time after an update: the incremental path.
        for (int k = 0; k < 3; ++k) {
            Node* n = ns[rng() % ns.size()];
            if (n->finding.state >= 0) continue;
            enter_finding(*n, static_cast<int>(rng() % static_cast<unsigned>(n->num_states())));
            expect_exact("incremental");
        }
        Node* l = ns[rng() % ns.size()];
        if (l->finding.state < 0) {
            std::vector<float> lik(static_cast<size_t>(l->num_states()), 0.5f);
            lik[0] = 0.1f;
            enter_likelihood(*l, lik.data());
            expect_exact("likelihood");
        }
        // Retracting one reloads from the prior tables.
        for (Node* n : ns)
            if (!n->finding.empty()) {
                retract_findings(*n);
                break;
            }
        expect_exact("retract one");
        retract_net_findings(*net);
        expect_exact("retract all");
    }
}

TEST_F(BeliefsTest, TablesChangedAfterUpdateAreReloaded) {
    fresh_random_net(5, 7, 2);
    expect_exact("before");
    Node* n = net->nodes.nodes[3];
    std::mt19937 rng(99);
    random_tables(rng);
    node_tables_changed(*n);
    expect_exact("after");
}

TEST_F(BeliefsTest, ImpossibleFindingsFailWith2078AndRecoverOnRetraction) {
    Node *a = node("a", 2), *b = node("b", 2, {a});
    a->cpt = {0.4f, 0.6f};
    b->cpt = {1.0f, 0.0f, 0.3f, 0.7f};  // a=0 forces b=0
    net->auto_update = 0;
    compile_net(*net, {});
    enter_finding(*a, 0);
    enter_finding(*b, 1);
    EXPECT_THROW(update_beliefs(*net), Failure);
    EXPECT_EQ(last_number(), 2078);
    EXPECT_EQ(last_message(), "according to this model, the finding(s) entered are inconsistent");
    EXPECT_EQ(net->findings_probability, 0.0);
    retract_findings(*b);
    expect_exact("after retraction");
    EXPECT_NEAR(a->beliefs[0], 1.0f, 1e-7);
}

// Reaching a condition declared impossible is the other way findings get probability zero.
TEST_F(BeliefsTest, ZeroThroughAnImpossibleConditionSaysSo) {
    Node *a = node("a", 2), *b = node("b", 2, {a});
    a->cpt = {0.4f, 0.6f};
    b->cpt = {0.5f, 0.5f, kImpossibleProb, kImpossibleProb};
    net->auto_update = 0;
    compile_net(*net, {});
    enter_finding(*a, 1);
    EXPECT_THROW(update_beliefs(*net), Failure);
    EXPECT_EQ(last_number(), 2078);
    EXPECT_EQ(last_message(), "according to this model, the finding(s) entered are inconsistent (or a "
                              "condition declared impossible is actually possible)");
}

TEST_F(BeliefsTest, UncompiledNetCannotUpdate) {
    node("a", 2)->cpt = {0.5f, 0.5f};
    EXPECT_THROW(update_beliefs(*net), Failure);
    EXPECT_EQ(last_number(), 2077);
    EXPECT_EQ(last_message(), "can't update beliefs because net 'testnet' needs to be compiled");
}

TEST_F(BeliefsTest, JointProbabilityAndMostProbableConfigAreExact) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        fresh_random_net(seed + 100, 8, 3);
        auto& ns = net->nodes.nodes;
        enter_finding(*ns[seed % ns.size()], 0);
        update_beliefs(*net);
        std::vector<std::vector<int>> configs;
        std::vector<double> joint = brute_joint(&configs);
        double total = 0;
        size_t best = 0;
        for (size_t c = 0; c < joint.size(); ++c) {
            total += joint[c];
            if (joint[c] > joint[best]) best = c;
        }
        // P(n1 = 1, n5 = 0 | findings) against the enumeration.
        std::vector<Node*> pick{ns[1], ns[5]};
        int states[] = {1, 0};
        double want = 0;
        for (size_t c = 0; c < joint.size(); ++c)
            if (configs[c][1] == 1 && configs[c][5] == 0) want += joint[c];
        EXPECT_NEAR(joint_probability(*net, pick, states), want / total, 1e-6) << "seed " << seed;
        std::vector<int> mpe = most_probable_config(*net);
        for (Node* n : ns)
            EXPECT_EQ(mpe[static_cast<size_t>(n->index)], configs[best][static_cast<size_t>(n->index)]) << "seed " << seed;
        // The queries leave the propagated tables as they were.
        expect_exact("after queries");
    }
}

TEST_F(BeliefsTest, ExpectedUtilitiesOfADecision) {
    Node *weather = node("weather", 2), *forecast = node("forecast", 2, {weather});
    Node* umbrella = node("umbrella", 2, {forecast});
    umbrella->kind = NodeKind::Decision;
    Node* worth = node("worth", 0, {weather, umbrella});
    worth->kind = NodeKind::Utility;
    weather->cpt = {0.3f, 0.7f};                // rain, dry
    forecast->cpt = {0.8f, 0.2f, 0.1f, 0.9f};  // says rain, says dry
    worth->func_reals = {70, 0, 20, 100};     // (rain,take) (rain,leave) (dry,take) (dry,leave)
    compile_net(*net, {});
    EXPECT_TRUE(net->jtree->graph.local_of[static_cast<size_t>(worth->index)] < 0);
    net->auto_update = 0;
    enter_finding(*forecast, 0);
    std::vector<double> eu = expected_utils(*umbrella);
    double rain = 0.3 * 0.8 / (0.3 * 0.8 + 0.7 * 0.1);
    ASSERT_EQ(eu.size(), 2u);
    EXPECT_NEAR(eu[0], rain * 70 + (1 - rain) * 20, 1e-4);
    EXPECT_NEAR(eu[1], rain * 0 + (1 - rain) * 100, 1e-4);
    EXPECT_EQ(umbrella->finding.state, kUndefState);  // the trial decisions are gone
    update_beliefs(*net);
    // Without a policy the decision is taken as uniform.
    EXPECT_NEAR(expected_utility(*net), 0.5 * (eu[0] + eu[1]), 1e-4);
}

}  // namespace
}  // namespace ravelo
