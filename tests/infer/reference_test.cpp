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

}  // namespace
