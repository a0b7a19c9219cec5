// Node lists: the caller's own lists, and the constant ones a net hands out.
#include "net_fixture.h"

namespace {

class ListsTest : public NetTest {};

TEST_F(ListsTest, ConstantListsAreNeverModified) {
    node_bn *a = node("a", 2), *b = node("b", 2);
    nodelist_bn* nodes = const_cast<nodelist_bn*>(GetNetNodes2_bn(net, nullptr));
    const char* refusal =
        "you cannot pass a constant nodelist_bn to this function, since this function may modify or delete it "
        "(duplicate it first?)";
    AddNodeToList_bn(a, nodes, LAST_ENTRY);
    EXPECT_EQ(take_message(), refusal);
    RemoveNthNode_bn(nodes, 0);
    EXPECT_EQ(take_message(), refusal);
    DeleteNodeList_bn(nodes);
    EXPECT_EQ(take_message(), refusal);
    ClearNodeList_bn(const_cast<nodelist_bn*>(GetNodeParents_bn(b)));
    EXPECT_EQ(take_message(), refusal);
    EXPECT_EQ(LengthNodeList_bn(nodes), 2);
    // A duplicate is the caller's to change.
    nodelist_bn* dup = DupNodeList_bn(nodes);
    EXPECT_EQ(RemoveNthNode_bn(dup, LAST_ENTRY), b);
    EXPECT_EQ(LengthNodeList_bn(nodes), 2);
    DeleteNodeList_bn(dup);
    EXPECT_EQ(LengthNodeList_bn(dup), -1);
    EXPECT_EQ(take_message(), "deleted or damaged nodelist_bn passed");
}

TEST_F(ListsTest, IndexesAreChecked) {
    node_bn *a = node("a", 2), *b = node("b", 2);
    nodelist_bn* list = NewNodeList2_bn(0, net);
    RemoveNthNode_bn(list, LAST_ENTRY);
    EXPECT_EQ(take_message(), "the passed node list is empty");
    AddNodeToList_bn(a, list, LAST_ENTRY);
    AddNodeToList_bn(b, list, FIRST_ENTRY);
    AddNodeToList_bn(a, list, 5);
    EXPECT_EQ(take_message(), "argument 'index' is 5, but it must be between 0 and 2, or LAST_ENTRY");
    EXPECT_EQ(NthNode_bn(list, 0), b);
    EXPECT_EQ(NthNode_bn(list, 2), nullptr);
    EXPECT_EQ(take_number(), 5305);
    AddNodeToList_bn(a, list, LAST_ENTRY);  // duplicates are allowed
    EXPECT_EQ(IndexOfNodeInList_bn(a, list, 0), 1);
    EXPECT_EQ(IndexOfNodeInList_bn(a, list, 2), 2);
    EXPECT_EQ(IndexOfNodeInList_bn(b, list, 1), -1);
    SetNthNode_bn(list, 0, a);
    EXPECT_EQ(IndexOfNodeInList_bn(b, list, 0), -1);
    nodelist_bn* blanks = NewNodeList2_bn(3, net);
    EXPECT_EQ(LengthNodeList_bn(blanks), 3);
    EXPECT_EQ(NthNode_bn(blanks, 1), nullptr);
    EXPECT_TRUE(no_reports());
}

TEST_F(ListsTest, ListsHoldNodesOfOneNet) {
    node_bn* a = node("a", 2);
    net_bn* other = NewNet_bn("Other", env);
    node_bn* x = NewNode_bn("x", 2, other);
    nodelist_bn* list = NewNodeList2_bn(0, net);
    AddNodeToList_bn(a, list, LAST_ENTRY);
    AddNodeToList_bn(x, list, LAST_ENTRY);
    EXPECT_EQ(take_message(), "can't put node 'x' of net Other into a nodelist_bn for net Test");
    EXPECT_EQ(LengthNodeList_bn(list), 1);
}

TEST_F(ListsTest, MapStateList) {
    node_bn *a = node("a", 2), *b = node("b", 3), *c = node("c", 2);
    nodelist_bn* src = NewNodeList2_bn(0, net);
    AddNodeToList_bn(a, src, LAST_ENTRY);
    AddNodeToList_bn(b, src, LAST_ENTRY);
    nodelist_bn* dest = NewNodeList2_bn(0, net);
    AddNodeToList_bn(c, dest, LAST_ENTRY);
    AddNodeToList_bn(b, dest, LAST_ENTRY);
    AddNodeToList_bn(a, dest, LAST_ENTRY);
    state_bn from[2] = {1, 2};
    state_bn to[3] = {9, 9, 9};
    EXPECT_EQ(MapStateList_bn(from, src, to, dest), to);
    EXPECT_EQ(to[0], UNDEF_STATE);
    EXPECT_EQ(to[1], 2);
    EXPECT_EQ(to[2], 1);
    // The same vector as source and destination.
    state_bn both[3] = {0, 1, 2};
    MapStateList_bn(both, dest, both, dest);
    EXPECT_EQ(both[2], 2);
}

}  // namespace
