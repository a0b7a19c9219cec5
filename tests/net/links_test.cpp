// Links and node deletion: refusals, cycles, switching parents, and the
// disconnected stand-ins that keep a child's relation.
#include "net_fixture.h"

namespace {

class LinksTest : public NetTest {};

TEST_F(LinksTest, RefusedLinksLeaveTheNetAsItWas) {
    node_bn* a = node("a", 2);
    node_bn* b = node("b", 2);
    node_bn* c = node("c", 2);
    EXPECT_EQ(AddLink_bn(a, b), 0);
    EXPECT_EQ(AddLink_bn(b, c), 0);
    EXPECT_EQ(AddLink_bn(a, c), 1);
    EXPECT_EQ(AddLink_bn(a, b), -1);
    EXPECT_EQ(last_number(), 3222);
    EXPECT_EQ(take_message(), "can't connect node 'a' to node 'b', because they are already connected");
    EXPECT_EQ(AddLink_bn(c, a), -1);
    EXPECT_EQ(take_message(),
              "can't connect node 'c' to node 'a', because that would result in a directed cycle (with no "
              "time delays)");
    EXPECT_EQ(AddLink_bn(a, a), -1);
    EXPECT_EQ(last_number(), 3223);
    ClearErrors_ns(env, INTERNAL_ERR);
    net_bn* other = NewNet_bn("Other", env);
    node_bn* d = NewNode_bn("d", 2, other);
    EXPECT_EQ(AddLink_bn(d, a), -1);
    EXPECT_EQ(take_message(),
              "can't connect node 'd' to node 'a', because they are in different nets (Other and Test "
              "respectively)");
    EXPECT_EQ(LengthNodeList_bn(GetNodeParents_bn(a)), 0);
    EXPECT_EQ(LengthNodeList_bn(GetNodeChildren_bn(a)), 2);
    EXPECT_EQ(LengthNodeList_bn(GetNodeChildren_bn(d)), 0);
}

TEST_F(LinksTest, NewParentRepeatsEachRowAndRemovedParentKeepsItsFirstState) {
    node_bn* a = node("a", 3);
    node_bn* c = node("c", 2);
    prob_bn probs[2] = {0.2f, 0.8f};
    SetNodeProbs_bn(c, nullptr, probs);
    AddLink_bn(a, c);
    for (state_bn s = 0; s < 3; ++s) {
        state_bn ps[1] = {s};
        EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, ps)[1], 0.8f);
    }
    state_bn s1[1] = {1};
    prob_bn other[2] = {0.6f, 0.4f};
    SetNodeProbs_bn(c, s1, other);
    DeleteLink_bn(0, c);
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, nullptr)[1], 0.8f);
    EXPECT_EQ(LengthNodeList_bn(GetNodeChildren_bn(a)), 0);
    DeleteLink_bn(0, c);
    EXPECT_EQ(last_number(), 5223);
}

TEST_F(LinksTest, DisconnectedNodesOnlyServeAsParents) {
    node_bn* a = node("a", 2);
    node_bn* c = node("c", 2);
    node_bn* d = node("d", 2);
    AddLink_bn(a, c);
    SwitchNodeParent_bn(0, c, nullptr);
    ASSERT_TRUE(no_reports()) << last_message();
    node_bn* stand_in = NthNode_bn(GetNodeParents_bn(c), 0);
    ASSERT_NE(stand_in, a);
    EXPECT_EQ(GetNodeKind_bn(stand_in), DISCONNECTED_NODE);
    EXPECT_EQ(GetNodeNumberStates_bn(stand_in), 2);
    EXPECT_EQ(LengthNodeList_bn(GetNodeChildren_bn(a)), 0);
    EXPECT_EQ(AddLink_bn(d, stand_in), -1);
    EXPECT_EQ(take_message(),
              "passed node_bn '" + std::string(GetNodeName_bn(stand_in)) +
                  "' for argument 'succ' is a DISCONNECTED_NODE, so a link cannot be made to it from another node");
    EXPECT_EQ(AddLink_bn(stand_in, d), -1);
    EXPECT_NE(take_message().find("for argument 'pred' is a DISCONNECTED_NODE, so a link cannot be made from "
                                  "it to another node (use SwitchNodeParent_bn instead?)"),
              std::string::npos);
    SwitchNodeParent_bn(0, d, stand_in);  // d has no links at all
    EXPECT_EQ(last_number(), 5223);
    ClearErrors_ns(env, INTERNAL_ERR);
    SetNodeKind_bn(a, DISCONNECTED_NODE);
    EXPECT_EQ(take_message(),
              "argument 'kind' passed for node_bn 'a' is DISCONNECTED_NODE, but link disconnection should be "
              "done with SwitchNodeParent_bn or CopyNodes_bn");
    SetNodeKind_bn(a, ADVERSARY_NODE);
    EXPECT_EQ(take_message(), "argument 'kind' passed for node_bn 'a' is ADVERSARY_NODE, but that is not supported yet");
    EXPECT_EQ(GetNodeKind_bn(a), NATURE_NODE);
}

TEST_F(LinksTest, SwitchParentKeepsInputNameAndChecksCycles) {
    node_bn* a = node("a", 2);
    node_bn* b = node("b", 2);
    node_bn* c = node("c", 2);
    AddLink_bn(a, c);
    SetNodeInputName_bn(c, 0, "cause");
    SwitchNodeParent_bn(0, c, b);
    EXPECT_EQ(NthNode_bn(GetNodeParents_bn(c), 0), b);
    EXPECT_STREQ(GetNodeInputName_bn(c, 0), "cause");
    EXPECT_EQ(GetInputNamed_bn("cause", c), 0);
    AddLink_bn(c, a);
    SwitchNodeParent_bn(0, c, a);
    EXPECT_EQ(last_number(), 3223);
    ClearErrors_ns(env, INTERNAL_ERR);
    EXPECT_EQ(NthNode_bn(GetNodeParents_bn(c), 0), b);
    SetNodeInputName_bn(c, 0, "two words");
    EXPECT_EQ(take_message(),
              "can't change the name of link 0 of node c to 'two words', because that 'two words' contains a space");
}

TEST_F(LinksTest, DeletingAParentLeavesADisconnectedNodeInItsPlace) {
    node_bn* a = node("a", 3);
    node_bn* c = node("c", 2);
    node_bn* d = node("d", 2);
    AddLink_bn(a, c);
    AddLink_bn(a, d);
    state_bn ps[1] = {2};
    prob_bn probs[2] = {0.1f, 0.9f};
    SetNodeProbs_bn(c, ps, probs);
    DeleteNode_bn(a);
    ASSERT_TRUE(no_reports()) << last_message();
    node_bn* stand_in = GetNodeNamed_bn("a", net);
    ASSERT_NE(stand_in, nullptr);
    EXPECT_EQ(GetNodeKind_bn(stand_in), DISCONNECTED_NODE);
    EXPECT_EQ(NthNode_bn(GetNetNodes2_bn(net, nullptr), 0), stand_in);  // in a's place
    EXPECT_EQ(NthNode_bn(GetNodeParents_bn(c), 0), stand_in);
    EXPECT_EQ(NthNode_bn(GetNodeParents_bn(d), 0), stand_in);
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, ps)[1], 0.9f);
    // The deleted handle is caught by its tag.
    EXPECT_EQ(GetNodeName_bn(a), nullptr);
    EXPECT_EQ(take_message(), "deleted node_bn passed");
    EXPECT_EQ(LengthNodeList_bn(GetNetNodes2_bn(net, nullptr)), 3);
}

TEST_F(LinksTest, NewNodeNamesAreLegalAndUnique) {
    EXPECT_NE(node("x", 2), nullptr);
    EXPECT_EQ(node("x", 2), nullptr);
    EXPECT_EQ(take_message(), "can't add node x to net Test because it already has a node with that name");
    EXPECT_EQ(node("1x", 2), nullptr);
    EXPECT_EQ(take_message(), "'1x' is not a legal name for a node");
    node_bn* y = node("y", 2);
    SetNodeName_bn(y, "x");
    EXPECT_EQ(last_number(), 3211);
    ClearErrors_ns(env, INTERNAL_ERR);
    SetNodeName_bn(y, "z");
    EXPECT_EQ(GetNodeNamed_bn("z", net), y);
    EXPECT_EQ(GetNodeNamed_bn("y", net), nullptr);
}

}  // namespace
