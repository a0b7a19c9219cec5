// States and levels: names, titles, adding, removing and reordering states,
// with the node's tables and its children's following along.
#include <cmath>

#include "net_fixture.h"

namespace {

class StatesTest : public NetTest {};

TEST_F(StatesTest, NamesAreCheckedAndUnique) {
    node_bn* a = node("a", 3);
    SetNodeStateNames_bn(a, "low, mid high");
    EXPECT_STREQ(GetNodeStateName_bn(a, 1), "mid");
    EXPECT_EQ(GetStateNamed_bn("high", a), 2);
    SetNodeStateNames_bn(a, "x y");
    EXPECT_EQ(take_message(),
              "couldn't change the state names of node 'a', because new list has 2 names, but the node has 3 states");
    SetNodeStateNames_bn(a, "x y 3z");
    EXPECT_EQ(take_message(),
              "couldn't change the state names of node 'a', because new '3z' starts with non-alphabetic character '3'");
    EXPECT_STREQ(GetNodeStateName_bn(a, 0), "low");
    SetNodeStateName_bn(a, 0, "mid");
    EXPECT_EQ(take_message(), "can't set the name of the 1st state of node 'a', because state 1 already has that name");
    SetNodeStateTitle_bn(a, 2, "High Value");
    EXPECT_EQ(GetStateNamed_bn("High Value", a), 2);
    EXPECT_STREQ(GetNodeStateLabel_bn(a, 2), "High Value");
    EXPECT_STREQ(GetNodeStateLabel_bn(a, 1), "mid");
    EXPECT_EQ(GetStateNamed_bn("none", a), UNDEF_STATE);
}

TEST_F(StatesTest, ContinuousNodesHaveStatesOnlyThroughThresholds) {
    node_bn* x = node("x", 0);
    level_bn levels[4] = {0, 1, 2, 3};
    SetNodeLevels_bn(x, 3, levels);
    EXPECT_EQ(GetNodeNumberStates_bn(x), 3);
    EXPECT_EQ(GetNodeLevels_bn(x)[3], 3.0);
    level_bn unordered[3] = {0, 2, 1};
    SetNodeLevels_bn(x, 2, unordered);
    EXPECT_EQ(take_number(), 3268);
    EXPECT_EQ(GetNodeNumberStates_bn(x), 3);
    // Merging two intervals drops the threshold between them.
    RemoveNodeState_bn(x, 0);
    EXPECT_EQ(GetNodeNumberStates_bn(x), 2);
    EXPECT_EQ(GetNodeLevels_bn(x)[0], 0.0);
    EXPECT_EQ(GetNodeLevels_bn(x)[1], 2.0);
}

TEST_F(StatesTest, DiscreteNodesKeepAtLeastOneState) {
    node_bn* a = node("a", 1);
    RemoveNodeState_bn(a, 0);
    EXPECT_EQ(take_message(),
              "can't change the number of states of node 'a' to 0, because it is a discrete node, and "
              "discrete nodes must have at least one state");
    AddNodeStates_bn(a, 0, nullptr, -2, 0.0);
    EXPECT_EQ(take_message(), "can't change the number of states of node 'a' to -1, because that is negative");
    EXPECT_EQ(GetNodeNumberStates_bn(a), 1);
    EXPECT_EQ(node("neg", -1), nullptr);
    EXPECT_EQ(last_number(), 3250);
    EXPECT_EQ(node("huge", 2000000000), nullptr);
    EXPECT_EQ(last_number(), 3276);
    AddNodeStates_bn(a, LAST_ENTRY, nullptr, 2147483647, 0.0);  // no overflow on the way
    EXPECT_EQ(take_message(),
              "can't change the number of states of node 'a' to 2147483648, because that is more than the maximum of 1048576");
}

TEST_F(StatesTest, AddedStatesWidenTablesOfTheNodeAndItsChildren) {
    node_bn *a = node("a", 2), *c = node("c", 2);
    SetNodeStateNames_bn(a, "p q");
    AddLink_bn(a, c);
    prob_bn pa[2] = {0.4f, 0.6f};
    SetNodeProbs_bn(a, nullptr, pa);
    state_bn s1[1] = {1};
    prob_bn pc[2] = {0.3f, 0.7f};
    SetNodeProbs_bn(c, s1, pc);
    AddNodeStates_bn(a, 1, "r", 1, 0.0);  // p r q
    ASSERT_TRUE(no_reports()) << last_message();
    EXPECT_STREQ(GetNodeStateName_bn(a, 1), "r");
    const prob_bn* row = GetNodeProbs_bn(a, nullptr);
    EXPECT_FLOAT_EQ(row[0], 0.4f);
    EXPECT_FLOAT_EQ(row[1], 0.0f);
    EXPECT_FLOAT_EQ(row[2], 0.6f);
    state_bn s2[1] = {2};
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, s2)[1], 0.7f);  // q's row moved along
    const prob_bn* fresh = GetNodeProbs_bn(c, s1);
    EXPECT_LT(fresh[0], 0.0f);  // the new state's row is yet to be filled
    AddNodeStates_bn(a, LAST_ENTRY, "p", 1, 0.0);
    EXPECT_EQ(take_message(), "'p' cannot be a state name, because it 'p' is already the name of a state");
    EXPECT_EQ(GetNodeNumberStates_bn(a), 3);
}

TEST_F(StatesTest, RemovingAStateReportsRowsLeftAllZero) {
    node_bn *a = node("a", 2), *c = node("c", 3);
    AddLink_bn(a, c);
    state_bn s0[1] = {0}, s1[1] = {1};
    prob_bn sure[3] = {0, 1, 0};
    prob_bn spread[3] = {0.5f, 0.25f, 0.25f};
    SetNodeProbs_bn(c, s0, sure);
    SetNodeProbs_bn(c, s1, spread);
    RemoveNodeState_bn(c, 1);
    EXPECT_EQ(last_number(), 3088);
    EXPECT_EQ(ErrorSeverity_ns(last_report()), WARNING_ERR);
    ClearErrors_ns(env, INTERNAL_ERR);
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, s1)[1], 0.25f);
    // Removing a parent's state drops the child's rows for it.
    RemoveNodeState_bn(a, 0);
    EXPECT_EQ(GetNodeNumberStates_bn(a), 1);
    state_bn only[1] = {0};
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, only)[0], 0.5f);
}

TEST_F(StatesTest, ReorderingPermutesStatesAndTables) {
    node_bn *a = node("a", 3), *f = node("f", 3);
    SetNodeStateNames_bn(a, "x y z");
    AddLink_bn(a, f);
    state_bn sx[1] = {0};
    SetNodeFuncState_bn(f, sx, 2);
    prob_bn pa[3] = {0.1f, 0.2f, 0.7f};
    SetNodeProbs_bn(a, nullptr, pa);
    state_bn order[3] = {2, 0, 1};  // z x y
    ReorderNodeStates_bn(a, order);
    EXPECT_STREQ(GetNodeStateName_bn(a, 0), "z");
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(a, nullptr)[0], 0.7f);
    state_bn now_x[1] = {1};
    EXPECT_EQ(GetNodeFuncState_bn(f, now_x), 2);
    state_bn f_order[3] = {2, 1, 0};
    ReorderNodeStates_bn(f, f_order);
    EXPECT_EQ(GetNodeFuncState_bn(f, now_x), 0);  // function values follow their states
    state_bn repeated[3] = {0, 0, 1};
    ReorderNodeStates_bn(a, repeated);
    EXPECT_EQ(take_number(), 3266);
    EXPECT_STREQ(GetNodeStateName_bn(a, 0), "z");
}

TEST_F(StatesTest, DiscreteStateValues) {
    node_bn* a = node("a", 2);
    EXPECT_EQ(GetNodeLevels_bn(a), nullptr);
    level_bn values[2] = {1.5, -3};
    SetNodeLevels_bn(a, 2, values);
    EXPECT_EQ(GetNodeLevels_bn(a)[1], -3.0);
    SetNodeLevels_bn(a, 3, values);
    EXPECT_EQ(take_number(), 3271);
    AddNodeStates_bn(a, LAST_ENTRY, nullptr, 1, 0.0);
    EXPECT_TRUE(std::isnan(GetNodeLevels_bn(a)[2]));
    SetNodeLevels_bn(a, -1, nullptr);
    EXPECT_EQ(GetNodeLevels_bn(a), nullptr);
}

}  // namespace
