// The water net's largest clique holds most of its clique entries, so its
// prior is rebuilt at each reload rather than kept.  These cases compare the
// ways of reaching the same findings: hard findings (slices) against the same
// states entered as likelihoods (multiplications), findings added one update
// at a time against all at once, and a reload after a table is set again.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "ravelo/ravelo.h"

namespace {

class LargeClique : public ::testing::Test {
protected:
    void SetUp() override {
        char mesg[MESG_LEN_ns];
        env = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
        ASSERT_GE(InitRavelo2_bn(env, mesg), 0);
        const char* dir = std::getenv("RAVELO_TEST_DATA");
        std::string path = std::string(dir ? dir : RAVELO_TEST_DATA) + "/nets/water.bif";
        stream_ns* file = NewFileStream_ns(path.c_str(), env, nullptr);
        net = ReadNet_bn(file, NO_VISUAL_INFO);
        DeleteStream_ns(file);
        ASSERT_NE(net, nullptr);
        SetNetAutoUpdate_bn(net, 0);
        CompileNet_bn(net);
        nodes = GetNetNodes2_bn(net, nullptr);
        ASSERT_EQ(error(), "");
    }
    void TearDown() override {
        char mesg[MESG_LEN_ns];
        CloseRavelo_bn(env, mesg);
    }
    std::string error() {
        const report_ns* r = GetError_ns(env, ERROR_ERR, nullptr);
        return r ? ErrorMessage_ns(r) : std::string();
    }
    node_bn* nth(int i) { return NthNode_bn(nodes, i); }
    std::vector<std::vector<float>> all_beliefs() {
        std::vector<std::vector<float>> out;
        for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
            const prob_bn* b = GetNodeBeliefs_bn(nth(i));
            EXPECT_NE(b, nullptr);
            if (!b) return out;
            out.emplace_back(b, b + GetNodeNumberStates_bn(nth(i)));
        }
        return out;
    }
    void expect_same(const std::vector<std::vector<float>>& a, const std::vector<std::vector<float>>& b,
                     const char* what) {
        ASSERT_EQ(a.size(), b.size()) << what;
        for (size_t i = 0; i < a.size(); ++i)
            for (size_t s = 0; s < a[i].size(); ++s) EXPECT_NEAR(a[i][s], b[i][s], 1e-5) << what << " node " << i;
    }
    // Enters, one at a time, the most probable state of each node given the
    // ones before, so that the findings stay possible; returns the states.
    std::vector<int> enter_likely(const std::vector<int>& picks) {
        std::vector<int> states;
        for (int i : picks) {
            const prob_bn* b = GetNodeBeliefs_bn(nth(i));
            int best = 0;
            for (int s = 1; b && s < GetNodeNumberStates_bn(nth(i)); ++s)
                if (b[s] > b[best]) best = s;
            EnterFinding_bn(nth(i), best);
            states.push_back(best);
        }
        return states;
    }
    void enter_as_likelihood(node_bn* node, int state) {
        std::vector<prob_bn> l(static_cast<size_t>(GetNodeNumberStates_bn(node)), 0.0f);
        l[static_cast<size_t>(state)] = 1.0f;
        EnterNodeLikelihood_bn(node, l.data());
    }
    environ_ns* env = nullptr;
    net_bn* net = nullptr;
    const nodelist_bn* nodes = nullptr;
};

TEST_F(LargeClique, HardFindingsAgreeWithTheSameLikelihoods) {
    const std::vector<int> picks{0, 5, 17, 30};
    const std::vector<int> states = enter_likely(picks);
    auto hard = all_beliefs();
    double hard_probability = FindingsProbability_bn(net);
    RetractNetFindings_bn(net);
    for (size_t k = 0; k < picks.size(); ++k) enter_as_likelihood(nth(picks[k]), states[k]);
    auto soft = all_beliefs();
    ASSERT_EQ(error(), "");
    expect_same(hard, soft, "likelihoods");
    EXPECT_NEAR(FindingsProbability_bn(net), hard_probability, 1e-5 * hard_probability);
    // Mixed: half of each.
    RetractNetFindings_bn(net);
    for (size_t k = 0; k < picks.size(); ++k)
        if (k % 2) EnterFinding_bn(nth(picks[k]), states[k]);
        else enter_as_likelihood(nth(picks[k]), states[k]);
    expect_same(hard, all_beliefs(), "mixed");
}

TEST_F(LargeClique, FindingsAddedOneUpdateAtATime) {
    auto prior = all_beliefs();
    const std::vector<int> picks{3, 12, 25, 8};
    const std::vector<int> states = enter_likely(picks);  // updates between findings
    auto one_at_a_time = all_beliefs();
    RetractNetFindings_bn(net);
    for (size_t k = 0; k < picks.size(); ++k) EnterFinding_bn(nth(picks[k]), states[k]);
    auto at_once = all_beliefs();
    ASSERT_EQ(error(), "");
    expect_same(at_once, one_at_a_time, "incremental");
    RetractNetFindings_bn(net);
    expect_same(prior, all_beliefs(), "retracted");
}

TEST_F(LargeClique, TableSetAgainIsReloaded) {
    enter_likely({20, 2});
    auto before = all_beliefs();
    node_bn* n = nth(7);
    const nodelist_bn* parents = GetNodeParents_bn(n);
    std::vector<state_bn> row(static_cast<size_t>(LengthNodeList_bn(parents)), 0);
    const prob_bn* probs = GetNodeProbs_bn(n, row.data());
    ASSERT_NE(probs, nullptr);
    std::vector<prob_bn> same(probs, probs + GetNodeNumberStates_bn(n));
    SetNodeProbs_bn(n, row.data(), same.data());
    CompileNet_bn(net);
    ASSERT_EQ(error(), "");
    expect_same(before, all_beliefs(), "after reload");
}

}  // namespace
