// Long actions report their titles and fractions to the environment's
// progress listener, and a listener can halt them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/environment.h"
#include "base/frame.h"
#include "base/progress.h"
#include "ravelo/ravelo.h"

namespace ravelo {
namespace {

class ProgressTest : public ::testing::Test {
protected:
    void SetUp() override {
        char mesg[MESG_LEN_ns];
        env = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
        ASSERT_EQ(InitRavelo2_bn(env, mesg), 0);
        set_progress_listener(*core_of<Environment>(env), [this](const std::string& title, double f) {
            seen.push_back({title, f});
            return halt_at >= 0 && f >= halt_at;
        });
        net = NewNet_bn("P", env);
    }
    void TearDown() override {
        char mesg[MESG_LEN_ns];
        CloseRavelo_bn(env, mesg);
    }
    int last_number() {
        const report_ns *r = nullptr, *last = nullptr;
        while ((r = GetError_ns(env, NULL_ERR, r))) last = r;
        return last ? ErrorNumber_ns(last) : 0;
    }
    bool has_report(int number) {
        for (const report_ns* r = nullptr; (r = GetError_ns(env, NULL_ERR, r));)
            if (ErrorNumber_ns(r) == number) return true;
        return false;
    }
    struct Seen {
        std::string title;
        double fraction;
    };
    environ_ns* env = nullptr;
    net_bn* net = nullptr;
    std::vector<Seen> seen;
    double halt_at = -1;
};

TEST_F(ProgressTest, EquationConversionShowsItsTitleAndCanBeHalted) {
    node_bn *a = NewNode_bn("A", 3, net), *b = NewNode_bn("B", 3, net);
    AddLink_bn(a, b);
    SetNodeEquation_bn(b, "B (A) = A");
    EquationToTable_bn(b, 1, 0, 0);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.front().title, "generating CPT table for node 'B'");
    EXPECT_EQ(seen.back().fraction, 1.0);

    // A halted conversion leaves the table it found.
    state_bn zero = 0;
    float before = GetNodeProbs_bn(b, &zero)[0];
    SetNodeEquation_bn(b, "B (A) = 2 - A");
    halt_at = 0.5;
    EquationToTable_bn(b, 1, 0, 0);
    EXPECT_EQ(last_number(), 2559);
    EXPECT_EQ(GetNodeProbs_bn(b, &zero)[0], before);
}

TEST_F(ProgressTest, ElimOrderSearchReportsAndAHaltLeavesAPoorOrder) {
    std::vector<node_bn*> nodes;
    for (int i = 0; i < 6; ++i) nodes.push_back(NewNode_bn(("N" + std::to_string(i)).c_str(), 2, net));
    for (int i = 1; i < 6; ++i) AddLink_bn(nodes[static_cast<size_t>(i - 1)], nodes[static_cast<size_t>(i)]);
    halt_at = 0.4;
    CompileNet_bn(net);
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.front().title, "Finding Elimination Order");
    EXPECT_TRUE(has_report(2295));  // the search halted, yet the net compiled
    const nodelist_bn* order = GetNetElimOrder_bn(net);
    ASSERT_NE(order, nullptr);
    EXPECT_EQ(LengthNodeList_bn(order), 6);
}

}  // namespace
}  // namespace ravelo
