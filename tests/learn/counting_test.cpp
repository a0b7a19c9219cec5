// Counting learning from findings and fading, through the interface: learned
// tables against counts kept independently here, unlearning, and the reports.
#include <cmath>
#include <map>
#include <random>
#include <vector>

#include "net/net_fixture.h"

namespace {

class CountingTest : public NetTest {
protected:
    // a (2 states) -> c (3 states) <- b (2 states); uniform tables, no experience.
    void SetUp() override {
        NetTest::SetUp();
        a = node("a", 2);
        b = node("b", 2);
        c = node("c", 3);
        AddLink_bn(a, c);
        AddLink_bn(b, c);
        const prob_bn half[] = {0.5f, 0.5f}, third[] = {0.2f, 0.3f, 0.5f};
        SetNodeProbs_bn(a, nullptr, half);
        SetNodeProbs_bn(b, nullptr, half);
        const state_bn any[] = {EVERY_STATE, EVERY_STATE};
        SetNodeProbs_bn(c, any, third);
        all = NewNodeList2_bn(0, net);
        for (node_bn* n : {a, b, c}) AddNodeToList_bn(n, all, LAST_ENTRY);
        ASSERT_TRUE(no_reports()) << last_message();
    }
    void TearDown() override {
        DeleteNodeList_bn(all);
        NetTest::TearDown();
    }
    void enter(int sa, int sb, int sc) {
        RetractNetFindings_bn(net);
        if (sa >= 0) EnterFinding_bn(a, sa);
        if (sb >= 0) EnterFinding_bn(b, sb);
        if (sc >= 0) EnterFinding_bn(c, sc);
    }
    std::vector<float> row(node_bn* n, std::vector<state_bn> parents) {
        const prob_bn* p = GetNodeProbs_bn(n, parents.empty() ? nullptr : parents.data());
        return std::vector<float>(p, p + GetNodeNumberStates_bn(n));
    }
    node_bn *a = nullptr, *b = nullptr, *c = nullptr;
    nodelist_bn* all = nullptr;
};

// Cases drawn at random, some entries missing, learned one by one: every row
// of every table must equal the prior counts plus the weights counted here.
TEST_F(CountingTest, WholeNetMatchesCountsMadeIndependently) {
    std::mt19937 rng(7);
    std::map<std::vector<int>, double> seen;  // (node, parent states..., state) -> weight
    for (int k = 0; k < 300; ++k) {
        int s[3] = {static_cast<int>(rng() % 2), static_cast<int>(rng() % 2), static_cast<int>(rng() % 3)};
        for (int& x : s)
            if (rng() % 6 == 0) x = -1;
        double w = (rng() % 3 + 1) * 0.5;
        enter(s[0], s[1], s[2]);
        ReviseCPTsByFindings_bn(all, 0, w);
        if (s[0] >= 0) seen[{0, s[0]}] += w;
        if (s[1] >= 0) seen[{1, s[1]}] += w;
        if (s[0] >= 0 && s[1] >= 0 && s[2] >= 0) seen[{2, s[0], s[1], s[2]}] += w;
    }
    ASSERT_TRUE(no_reports()) << last_message();
    // Roots: prior experience 2 (prior count 1 per cell) spread as 0.5 each.
    for (int n = 0; n < 2; ++n) {
        node_bn* root = n == 0 ? a : b;
        double c0 = 1 + seen[{n, 0}], c1 = 1 + seen[{n, 1}];
        EXPECT_NEAR(GetNodeExperience_bn(root, nullptr), c0 + c1, 1e-9);
        EXPECT_NEAR(row(root, {})[0], c0 / (c0 + c1), 1e-6);
    }
    const double prior[] = {0.2 * 3, 0.3 * 3, 0.5 * 3};
    for (int sa = 0; sa < 2; ++sa)
        for (int sb = 0; sb < 2; ++sb) {
            double counts[3], total = 0;
            for (int s = 0; s < 3; ++s) total += counts[s] = prior[s] + seen[{2, sa, sb, s}];
            std::vector<state_bn> parents{sa, sb};
            EXPECT_NEAR(GetNodeExperience_bn(c, parents.data()), total, 1e-6);  // float probabilities
            std::vector<float> got = row(c, parents);
            for (int s = 0; s < 3; ++s) EXPECT_NEAR(got[s], counts[s] / total, 1e-6) << sa << sb << s;
        }
}

TEST_F(CountingTest, UnlearningReturnsTheRowAndRefusesToGoBelowWhatWasLearned) {
    enter(1, 0, 2);
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    // One case into a fresh row of k = 3 states with prior count 1: experience k + 1.
    const state_bn cond[] = {1, 0};
    EXPECT_NEAR(GetNodeExperience_bn(c, cond), 4.0, 1e-6);
    EXPECT_FLOAT_EQ(row(c, {1, 0})[2], (0.5f * 3 + 1) / 4);
    EXPECT_FLOAT_EQ(row(a, {})[1], 2.0f / 3);

    ReviseCPTsByFindings_bn(all, 0, -1.0);
    EXPECT_TRUE(no_reports()) << last_message();
    EXPECT_EQ(row(c, {1, 0}), (std::vector<float>{0.2f, 0.3f, 0.5f}));
    EXPECT_EQ(row(a, {}), (std::vector<float>{0.5f, 0.5f}));
    EXPECT_NEAR(GetNodeExperience_bn(c, cond), 3.0, 1e-6);

    // Unlearning more than a holds is refused at a, and learning stops there: b and c stay as they were.
    std::vector<float> before_b = row(b, {}), before_c = row(c, {1, 0});
    ReviseCPTsByFindings_bn(all, 0, -2.5);
    EXPECT_EQ(take_number(), 2190);
    EXPECT_EQ(row(a, {}), (std::vector<float>{0.5f, 0.5f}));
    EXPECT_EQ(row(b, {}), before_b);
    EXPECT_EQ(row(c, {1, 0}), before_c);
}

TEST_F(CountingTest, RoundingOfUnlearningIsForgivenWithinTwoMillionths) {
    const state_bn cond[] = {0, 1};
    SetNodeExperience_bn(c, cond, 0.0);  // a row resting on nothing
    enter(0, 1, 1);
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    EXPECT_EQ(row(c, {0, 1}), (std::vector<float>{0, 1, 0}));
    nodelist_bn* only_c = NewNodeList2_bn(0, net);
    AddNodeToList_bn(c, only_c, LAST_ENTRY);
    ReviseCPTsByFindings_bn(only_c, 0, -1.00001);  // 1e-05 below zero: refused
    EXPECT_EQ(take_number(), 2190);
    EXPECT_DOUBLE_EQ(GetNodeExperience_bn(c, cond), 1.0);
    ReviseCPTsByFindings_bn(only_c, 0, -1.000001);  // 1e-06 below: rounding, taken as 0
    EXPECT_TRUE(no_reports()) << last_message();
    EXPECT_DOUBLE_EQ(GetNodeExperience_bn(c, cond), 0.0);
    DeleteNodeList_bn(only_c);
}

TEST_F(CountingTest, NodeLearnsOnlyWhenItAndEveryParentAreKnown) {
    std::vector<float> before = row(c, {0, 0});
    enter(0, -1, 2);  // parent b missing
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    EXPECT_EQ(row(c, {0, 0}), before);
    EXPECT_FLOAT_EQ(row(a, {})[0], 2.0f / 3);
    enter(0, 0, -1);  // c itself missing
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    EXPECT_EQ(row(c, {0, 0}), before);
    // A likelihood finding does not make a state known.
    RetractNetFindings_bn(net);
    const prob_bn likely[] = {1, 0.5f, 0};
    EnterFinding_bn(a, 0);
    EnterFinding_bn(b, 0);
    EnterNodeLikelihood_bn(c, likely);
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    EXPECT_EQ(row(c, {0, 0}), before);
}

TEST_F(CountingTest, TablesChangedBetweenLearningCallsAreCountedAfresh) {
    enter(0, 0, 0);
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    const prob_bn fresh[] = {0.6f, 0.4f};
    SetNodeProbs_bn(a, nullptr, fresh);  // experience 3 stays
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    EXPECT_FLOAT_EQ(row(a, {})[0], (0.6f * 3 + 1) / 4);
}

TEST_F(CountingTest, FadingMovesRowsTowardThePrior) {
    for (int k = 0; k < 5; ++k) {
        enter(1, 1, 0);
        ReviseCPTsByFindings_bn(all, 0, 1.0);
    }
    // Row (1,1) of c: counts 0.6+5, 0.9, 1.5; experience 8.
    FadeCPTable_bn(c, 0.25);
    const double counts[] = {5.6 * 0.75 + 0.25, 0.9 * 0.75 + 0.25, 1.5 * 0.75 + 0.25};
    const double total = counts[0] + counts[1] + counts[2];
    const state_bn cond[] = {1, 1};
    EXPECT_NEAR(GetNodeExperience_bn(c, cond), total, 1e-6);
    for (int s = 0; s < 3; ++s) EXPECT_NEAR(row(c, {1, 1})[s], counts[s] / total, 1e-6);
    FadeCPTable_bn(c, 0.0);
    EXPECT_NEAR(GetNodeExperience_bn(c, cond), total, 1e-6);
    FadeCPTable_bn(c, 1.0);
    for (state_bn sa : {0, 1})
        for (state_bn sb : {0, 1}) {
            const state_bn rowc[] = {sa, sb};
            EXPECT_DOUBLE_EQ(GetNodeExperience_bn(c, rowc), 3.0);
            for (float p : row(c, {sa, sb})) EXPECT_FLOAT_EQ(p, 1.0f / 3);
        }
    EXPECT_TRUE(no_reports()) << last_message();
}

TEST_F(CountingTest, FadingLeavesImpossibleConditionsAlone) {
    const prob_bn imposs[] = {-1, -1, -1};
    const state_bn cond[] = {0, 1};
    ArgumentChecking_ns(NoCheck, env);  // checking refuses an impossible row
    SetNodeProbs_bn(c, cond, imposs);
    ArgumentChecking_ns(RegularCheck, env);
    std::vector<float> marked = row(c, {0, 1});
    FadeCPTable_bn(c, 1.0);
    EXPECT_EQ(row(c, {0, 1}), marked);
    EXPECT_FLOAT_EQ(row(c, {1, 1})[0], 1.0f / 3);
}

TEST_F(CountingTest, BadArgumentsAreReportedAndChangeNothing) {
    enter(0, 0, 0);
    std::vector<float> before = row(a, {});
    ReviseCPTsByFindings_bn(all, 1, 1.0);
    EXPECT_EQ(take_message(), "argument 'updating' should be 0 with this version of Ravelo (it is 1)");
    ReviseCPTsByFindings_bn(nullptr, 0, 1.0);
    EXPECT_EQ(take_message(), "NULL passed for the nodelist_bn");
    EXPECT_EQ(row(a, {}), before);

    FadeCPTable_bn(a, 1.5);
    EXPECT_EQ(take_message(), "argument 'degree' is 1.5, but it should be within 0 to 1 inclusive");
    FadeCPTable_bn(a, -0.1);
    EXPECT_EQ(take_number(), 5516);
    FadeCPTable_bn(nullptr, 0.5);
    EXPECT_EQ(take_message(), "NULL passed for node_bn");
    node_bn* bare = node("bare", 2);
    FadeCPTable_bn(bare, 0.5);
    EXPECT_EQ(take_message(), "node_bn 'bare' doesnt have any CPT table");
    DeleteNode_bn(bare);
    FadeCPTable_bn(bare, 0.5);
    EXPECT_EQ(take_message(), "deleted node_bn passed");
    EXPECT_EQ(row(a, {}), before);
}

}  // namespace
