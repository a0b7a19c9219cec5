// Links and node deletion: refusals, cycles, switching parents, and the
// disconnected stand-ins that keep a child's relation.
#include "net_fixture.h"

namespace {

class LinksTest : public NetTest {};

TEST_F(LinksTest, RefusedLinksLeaveTheNetAsItWas) {
    node_bn *a = node("a", 2), *b = node("b", 2), *c = node("c", 2);
    EXPECT_EQ(AddLink_bn(a, b), 0);
    EXPECT_EQ(AddLink_bn(b, c), 0);
    EXPECT_EQ(AddLink_bn(a, c), 1);
    EXPECT_EQ(AddLink_bn(a, b), -1);
    EXPECT_EQ(AddLink_bn(c, a), -1);  // a cycle through b
    EXPECT_EQ(take_number(), 3223);
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
    node_bn *a = node("a", 3), *c = node("c", 2);
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

TEST_F(LinksTest, SwitchParentKeepsInputNameAndChecksCycles) {
    node_bn *a = node("a", 2), *b = node("b", 2), *c = node("c", 2);
    AddLink_bn(a, c);
    SetNodeInputName_bn(c, 0, "cause");
    SwitchNodeParent_bn(0, c, b);
    EXPECT_EQ(NthNode_bn(GetNodeParents_bn(c), 0), b);
    EXPECT_STREQ(GetNodeInputName_bn(c, 0), "cause");
    EXPECT_EQ(GetInputNamed_bn("cause", c), 0);
    AddLink_bn(c, a);
    SwitchNodeParent_bn(0, c, a);
    EXPECT_EQ(take_number(), 3223);
    EXPECT_EQ(NthNode_bn(GetNodeParents_bn(c), 0), b);
    SetNodeInputName_bn(c, 0, "two words");
    EXPECT_EQ(take_message(),
              "can't change the name of link 0 of node c to 'two words', because that 'two words' contains a space");
}

TEST_F(LinksTest, RenamingKeepsNamesUnique) {
    EXPECT_NE(node("x", 2), nullptr);
    node_bn* y = node("y", 2);
    SetNodeName_bn(y, "x");
    EXPECT_EQ(take_number(), 3211);
    SetNodeName_bn(y, "z");
    EXPECT_EQ(GetNodeNamed_bn("z", net), y);
    EXPECT_EQ(GetNodeNamed_bn("y", net), nullptr);
}

}  // namespace
