// Random cases through the interface: argument reports, the automatic choice
// on a compiled net, and the net's own generator.
#include <vector>

#include "net/net_fixture.h"

namespace {

class RandomCasesApiTest : public NetTest {
protected:
    void SetUp() override {
        NetTest::SetUp();
        a = node("a", 2);
        b = node("b", 3);
        AddLink_bn(a, b);
        const prob_bn pa[] = {0.4f, 0.6f};
        SetNodeProbs_bn(a, nullptr, pa);
        const prob_bn pb[] = {0.2f, 0.3f, 0.5f};
        const state_bn any[] = {EVERY_STATE};
        SetNodeProbs_bn(b, any, pb);
        both = NewNodeList2_bn(0, net);
        AddNodeToList_bn(a, both, LAST_ENTRY);
        AddNodeToList_bn(b, both, LAST_ENTRY);
    }
    void TearDown() override {
        DeleteNodeList_bn(both);
        NetTest::TearDown();
    }
    // States drawn for a and b in n cases.
    std::vector<int> cases(int n, int method) {
        std::vector<int> out;
        for (int k = 0; k < n; ++k) {
            EXPECT_EQ(GenerateRandomCase_bn(both, method, 10), 0);
            out.push_back(GetNodeFinding_bn(a));
            out.push_back(GetNodeFinding_bn(b));
            RetractNetFindings_bn(net);
        }
        return out;
    }
    node_bn *a = nullptr, *b = nullptr;
    nodelist_bn* both = nullptr;
};

TEST_F(RandomCasesApiTest, ArgumentsAreCheckedBeforeAnythingIsDrawn) {
    EXPECT_EQ(GenerateRandomCase_bn(both, 3, 10), -3);
    EXPECT_EQ(take_message(), "argument 'method' should be 0, 1 or 2 with this version of Ravelo (it is 3)");
    EXPECT_EQ(GenerateRandomCase_bn(both, FORWARD_SAMPLING, 0), -3);
    EXPECT_EQ(take_message(),
              "argument 'maxtries' should be between 1 and INT_MAX inclusive (it is 0) when 'method' is FORWARD_SAMPLING");
    EXPECT_EQ(GenerateRandomCase_bn(both, FORWARD_SAMPLING, 3e9), -3);
    EXPECT_EQ(take_number(), 5525);
    EXPECT_EQ(GenerateRandomCase_bn(nullptr, 0, 10), -3);
    EXPECT_EQ(take_message(), "NULL passed for the nodelist_bn");
    EXPECT_EQ(GetNodeFinding_bn(a), UNDEF_STATE);
    nodelist_bn* empty = NewNodeList2_bn(0, net);
    EXPECT_EQ(GenerateRandomCase_bn(empty, FORWARD_SAMPLING, 1), 0);
    DeleteNodeList_bn(empty);
    EXPECT_TRUE(no_reports()) << last_message();
}

TEST_F(RandomCasesApiTest, TreeSamplingNeedsACompiledNetAndReportsInconsistentFindings) {
    EXPECT_EQ(GenerateRandomCase_bn(both, 1, 1), -3);
    EXPECT_EQ(take_message(), "can't simulate case because junction tree sampling needs net 'Test' to be compiled");
    CompileNet_bn(net);
    SetNetAutoUpdate_bn(net, 0);
    const prob_bn never[] = {1, 0, 0};
    const state_bn cond[] = {1};
    SetNodeProbs_bn(b, cond, never);
    EnterFinding_bn(a, 1);
    EnterFinding_bn(b, 2);
    EXPECT_EQ(GenerateRandomCase_bn(both, 0, 1), -3);
    EXPECT_EQ(take_number(), 2078);
    EXPECT_EQ(GetNodeFinding_bn(b), 2);
}

TEST_F(RandomCasesApiTest, TheNetsGeneratorRepeatsItsCasesAndADeletedOneIsReported) {
    randgen_ns* gen = NewRandomGenerator_ns("12", env, nullptr);
    SetNetRandomGen_bn(net, gen);
    std::vector<int> first = cases(40, FORWARD_SAMPLING);
    DeleteRandomGen_ns(gen);
    gen = NewRandomGenerator_ns("12", env, nullptr);
    SetNetRandomGen_bn(net, gen);
    CompileNet_bn(net);
    EXPECT_EQ(cases(40, 0), first);  // without findings the compiled net draws forward too
    DeleteRandomGen_ns(gen);
    EXPECT_EQ(GenerateRandomCase_bn(both, FORWARD_SAMPLING, 1), -3);
    EXPECT_EQ(take_message(), "the random generator given to net 'Test' has been deleted");
    SetNetRandomGen_bn(net, nullptr);
    EXPECT_EQ(GenerateRandomCase_bn(both, FORWARD_SAMPLING, 1), 0);
    EXPECT_TRUE(no_reports()) << last_message();
}

}  // namespace
