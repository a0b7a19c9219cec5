// Beliefs of the networks in tests/data/nets against the reference answers
// beside them: five evidence scenarios each, matched to 1e-5.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "ravelo/ravelo.h"

namespace {

std::string data_dir() {
    const char* env = std::getenv("RAVELO_TEST_DATA");
    return std::string(env ? env : RAVELO_TEST_DATA) + "/nets/";
}

class ReferenceNets : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        char mesg[MESG_LEN_ns];
        env = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
        ASSERT_NE(env, nullptr);
        ASSERT_GE(InitRavelo2_bn(env, mesg), 0);
    }
    void TearDown() override {
        char mesg[MESG_LEN_ns];
        CloseRavelo_bn(env, mesg);
    }
    std::string first_error() {
        const report_ns* r = GetError_ns(env, ERROR_ERR, nullptr);
        return r ? ErrorMessage_ns(r) : std::string();
    }
    environ_ns* env = nullptr;
};

TEST_P(ReferenceNets, BeliefsMatchTheReferenceScenarios) {
    std::string base = data_dir() + GetParam();
    stream_ns* file = NewFileStream_ns((base + ".bif").c_str(), env, nullptr);
    net_bn* net = ReadNet_bn(file, NO_VISUAL_INFO);
    DeleteStream_ns(file);
    ASSERT_NE(net, nullptr) << first_error();
    SetNetAutoUpdate_bn(net, 0);
    CompileNet_bn(net);
    ASSERT_EQ(first_error(), "");

    std::ifstream ref(base + ".ref");
    ASSERT_TRUE(ref.good());
    std::string line;
    int scenarios = 0, checked = 0;
    while (std::getline(ref, line)) {
        std::istringstream in(line);
        std::string name;
        in >> name;
        if (name == "EVIDENCE") {
            RetractNetFindings_bn(net);
            ++scenarios;
            std::string item;
            while (in >> item) {
                size_t eq = item.find("=#");
                node_bn* node = GetNodeNamed_bn(item.substr(0, eq).c_str(), net);
                ASSERT_NE(node, nullptr) << item;
                EnterFinding_bn(node, std::atoi(item.c_str() + eq + 2));
            }
            ASSERT_EQ(first_error(), "");
            continue;
        }
        node_bn* node = GetNodeNamed_bn(name.c_str(), net);
        ASSERT_NE(node, nullptr) << name;
        const prob_bn* beliefs = GetNodeBeliefs_bn(node);
        ASSERT_NE(beliefs, nullptr);
        double want;
        for (int i = 0; in >> want; ++i) {
            ASSERT_LT(i, GetNodeNumberStates_bn(node));
            EXPECT_NEAR(beliefs[i], want, 1e-5) << GetParam() << " scenario " << scenarios << " " << name << " state " << i;
        }
        ++checked;
    }
    EXPECT_EQ(scenarios, 5);
    EXPECT_GT(checked, 0);
    EXPECT_EQ(first_error(), "");
}

INSTANTIATE_TEST_SUITE_P(Nets, ReferenceNets,
                         ::testing::Values("asia", "cancer", "earthquake", "sachs", "survey", "alarm", "child",
                                           "insurance", "water", "hepar2", "win95pts", "andes", "pathfinder"));

// The water net's largest clique holds most of its clique entries, so its
// prior is rebuilt at each reload rather than kept: a table set again (to the
// same values) must give the same beliefs after the reload.
TEST(LargeClique, TableSetAgainIsReloaded) {
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
    ASSERT_GE(InitRavelo2_bn(env, mesg), 0);
    stream_ns* file = NewFileStream_ns((data_dir() + "water.bif").c_str(), env, nullptr);
    net_bn* net = ReadNet_bn(file, NO_VISUAL_INFO);
    DeleteStream_ns(file);
    ASSERT_NE(net, nullptr);
    SetNetAutoUpdate_bn(net, 0);
    CompileNet_bn(net);
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    auto all_beliefs = [&] {
        std::vector<float> out;
        for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
            const prob_bn* b = GetNodeBeliefs_bn(NthNode_bn(nodes, i));
            if (b) out.insert(out.end(), b, b + GetNodeNumberStates_bn(NthNode_bn(nodes, i)));
        }
        return out;
    };
    // Findings of each node's most probable state stay possible.
    for (int i : {20, 2}) {
        const prob_bn* b = GetNodeBeliefs_bn(NthNode_bn(nodes, i));
        ASSERT_NE(b, nullptr);
        int best = 0;
        for (int s = 1; s < GetNodeNumberStates_bn(NthNode_bn(nodes, i)); ++s) best = b[s] > b[best] ? s : best;
        EnterFinding_bn(NthNode_bn(nodes, i), best);
    }
    std::vector<float> before = all_beliefs();
    node_bn* n = NthNode_bn(nodes, 7);
    std::vector<state_bn> row(static_cast<size_t>(LengthNodeList_bn(GetNodeParents_bn(n))), 0);
    const prob_bn* probs = GetNodeProbs_bn(n, row.data());
    ASSERT_NE(probs, nullptr);
    std::vector<prob_bn> same(probs, probs + GetNodeNumberStates_bn(n));
    SetNodeProbs_bn(n, row.data(), same.data());
    CompileNet_bn(net);
    std::vector<float> after = all_beliefs();
    EXPECT_EQ(GetError_ns(env, ERROR_ERR, nullptr), nullptr);
    ASSERT_EQ(after.size(), before.size());
    for (size_t i = 0; i < before.size(); ++i) EXPECT_NEAR(after[i], before[i], 1e-5) << i;
    CloseRavelo_bn(env, mesg);
}

}  // namespace
