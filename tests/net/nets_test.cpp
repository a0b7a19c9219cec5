// Nets: naming, copying with its options, user fields, listeners and stale handles.
#include <thread>
#include <vector>

#include "api/handles.h"
#include "net_fixture.h"

namespace {

class NetsTest : public NetTest {};

TEST_F(NetsTest, NamesAndLookup) {
    EXPECT_EQ(NewNet_bn("bad name", env), nullptr);
    EXPECT_EQ(take_message(), "'bad name' is not a legal name for a net");
    EXPECT_EQ(NewNet_bn(nullptr, env), nullptr);
    EXPECT_EQ(take_message(), "NULL passed for name");
    SetNetName_bn(net, "Renamed");
    SetNetTitle_bn(net, "A title, with spaces");
    EXPECT_STREQ(GetNetName_bn(net), "Renamed");
    EXPECT_STREQ(GetNetTitle_bn(net), "A title, with spaces");
    EXPECT_EQ(GetNthNet_bn(0, env), net);
    EXPECT_EQ(GetNthNet_bn(1, env), nullptr);
    EXPECT_TRUE(no_reports());
}

TEST_F(NetsTest, CopyCarriesNodesLinksAndTablesUnlessAsked) {
    node_bn *a = node("a", 2), *c = node("c", 2);
    SetNodeStateNames_bn(a, "no yes");
    AddLink_bn(a, c);
    SetNodeInputName_bn(c, 0, "cause");
    state_bn s1[1] = {1};
    prob_bn probs[2] = {0.9f, 0.1f};
    SetNodeProbs_bn(c, s1, probs);
    SetNetUserField_bn(net, "author", "me", -1, 0);

    net_bn* full = CopyNet_bn(net, "Full", nullptr, "");
    ASSERT_NE(full, nullptr) << last_message();
    node_bn* fc = GetNodeNamed_bn("c", full);
    ASSERT_NE(fc, nullptr);
    EXPECT_EQ(NthNode_bn(GetNodeParents_bn(fc), 0), GetNodeNamed_bn("a", full));
    EXPECT_STREQ(GetNodeInputName_bn(fc, 0), "cause");
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(fc, s1)[1], 0.1f);
    EXPECT_STREQ(GetNodeStateName_bn(GetNodeNamed_bn("a", full), 1), "yes");
    int length = 0;
    EXPECT_STREQ(GetNetUserField_bn(full, "author", &length, 0), "me");
    // The copy is independent of the original.
    prob_bn other[2] = {0.5f, 0.5f};
    SetNodeProbs_bn(fc, s1, other);
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, s1)[1], 0.1f);

    net_bn* bare = CopyNet_bn(net, "Bare", nullptr, "no_links, no_tables");
    EXPECT_EQ(LengthNodeList_bn(GetNodeParents_bn(GetNodeNamed_bn("c", bare))), 0);
    EXPECT_FALSE(HasNodeTable_bn(GetNodeNamed_bn("c", bare), nullptr));
    net_bn* empty = CopyNet_bn(net, "Empty", nullptr, "no_nodes");
    EXPECT_EQ(LengthNodeList_bn(GetNetNodes2_bn(empty, nullptr)), 0);

    EXPECT_EQ(CopyNet_bn(net, "Odd", nullptr, "no_such_thing"), nullptr);
    EXPECT_EQ(last_number(), 5211);
}

TEST_F(NetsTest, CopyNodesIntoAnotherNet) {
    node_bn *a = node("a", 2), *b = node("b", 3), *c = node("c", 2);
    AddLink_bn(a, c);
    AddLink_bn(b, c);
    net_bn* dest = NewNet_bn("Dest", env);
    NewNode_bn("b", 3, dest);  // matches c's parent b
    nodelist_bn* which = NewNodeList2_bn(0, net);
    AddNodeToList_bn(c, which, LAST_ENTRY);
    const nodelist_bn* copies = CopyNodes_bn(which, dest, nullptr);
    ASSERT_NE(copies, nullptr) << last_message();
    node_bn* cc = NthNode_bn(copies, 0);
    const nodelist_bn* parents = GetNodeParents_bn(cc);
    EXPECT_EQ(GetNodeKind_bn(NthNode_bn(parents, 0)), DISCONNECTED_NODE);
    EXPECT_EQ(NthNode_bn(parents, 1), GetNodeNamed_bn("b", dest));
    // Copying within the net gives a new name and keeps the original parents.
    const nodelist_bn* again = CopyNodes_bn(which, net, nullptr);
    node_bn* c2 = NthNode_bn(again, 0);
    EXPECT_STREQ(GetNodeName_bn(c2), "c_1");
    EXPECT_EQ(NthNode_bn(GetNodeParents_bn(c2), 0), a);
    nodelist_bn* none = NewNodeList2_bn(0, net);
    EXPECT_EQ(CopyNodes_bn(none, dest, nullptr), nullptr);
    EXPECT_EQ(take_message(), "the passed node list is empty");
}

TEST_F(NetsTest, UserFieldsAndData) {
    node_bn* a = node("a", 2);
    SetNodeUserField_bn(a, "weight", "\0\1\2", 3, 0);
    int length = 0;
    const char* value = GetNodeUserField_bn(a, "weight", &length, 0);
    ASSERT_NE(value, nullptr);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(value[2], '\2');
    const char *name = nullptr, *nth = nullptr;
    GetNodeNthUserField_bn(a, 0, &name, &nth, &length, 0);
    EXPECT_STREQ(name, "weight");
    GetNodeNthUserField_bn(a, 1, &name, &nth, &length, 0);
    EXPECT_EQ(name, nullptr);
    SetNodeUserField_bn(a, "weight", nullptr, -1, 0);
    EXPECT_EQ(GetNodeUserField_bn(a, "weight", &length, 0), nullptr);
    EXPECT_EQ(length, -1);
    SetNodeUserField_bn(a, "not legal", "x", 1, 0);
    EXPECT_EQ(take_message(), "'not legal' is not a legal name for a user field");
    int token = 0;
    SetNetUserData_bn(net, 0, &token);
    EXPECT_EQ(GetNetUserData_bn(net, 0), &token);
    EXPECT_EQ(GetNetUserData_bn(net, 1), nullptr);
}

struct Heard {
    std::vector<int> events;
    std::string names;
};

int heard_node(const node_bn* node, eventtype_ns what, void* obj, void*) {
    auto* h = static_cast<Heard*>(obj);
    h->events.push_back(what);
    h->names += GetNodeName_bn(node);  // calling back into the interface is allowed
    return 0;
}

int failing_net_listener(const net_bn*, eventtype_ns, void*, void*) { return -7; }

int adds_global_listener(const net_bn*, eventtype_ns, void*, void*) {
    AddNetListener_bn(nullptr, failing_net_listener, nullptr, -1);
    return 0;
}

TEST_F(NetsTest, ListenersHearCreateDuplicateAndRemove) {
    Heard heard;
    AddNodeListener_bn(nullptr, heard_node, &heard, -1);
    node_bn* a = node("a", 2);
    nodelist_bn* list = NewNodeList2_bn(0, net);
    AddNodeToList_bn(a, list, LAST_ENTRY);
    CopyNodes_bn(list, net, nullptr);
    DeleteNode_bn(a);
    AddNodeListener_bn(nullptr, heard_node, &heard, 0);  // removed again
    node("b", 2);
    EXPECT_EQ(heard.events, (std::vector<int>{CREATE_EVENT, DUPLICATE_EVENT, REMOVE_EVENT}));
    EXPECT_EQ(heard.names, "aaa");
    EXPECT_TRUE(no_reports()) << last_message();

    AddNetListener_bn(net, failing_net_listener, nullptr, REMOVE_EVENT);
    net_bn* other = NewNet_bn("Other", env);
    AddNetListener_bn(nullptr, adds_global_listener, nullptr, REMOVE_EVENT);
    DeleteNet_bn(other);
    EXPECT_EQ(take_message(), "Adding or removing global listeners while executing them");
    EXPECT_TRUE(no_reports());
    AddNetListener_bn(nullptr, adds_global_listener, nullptr, 0);
    DeleteNet_bn(net);
    EXPECT_EQ(last_number(), 5173);
    EXPECT_EQ(take_message(), "callback function for net_bn 'Test' REMOVE_EVENT, returned negative (-7)");
    net = nullptr;
}

TEST_F(NetsTest, StaleHandlesAreReportedNotUsed) {
    node_bn* a = node("a", 2);
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    DeleteNet_bn(net);
    EXPECT_EQ(LengthNodeList_bn(nodes), -1);
    EXPECT_EQ(take_message(), "deleted or damaged nodelist_bn passed");
    SetNodeProbs_bn(a, nullptr, nullptr);
    EXPECT_EQ(last_number(), 5184);
    EXPECT_EQ(GetNodeName_bn(nullptr), nullptr);
    EXPECT_EQ(take_message(), "NULL passed for node_bn");
    net = nullptr;
}

// Whether another thread could take the net's own lock right now.
bool free_to_other_threads(const net_bn* net) {
    ravelo::Net* n = ravelo::core_of<ravelo::Net>(net);
    bool taken = false;
    std::thread other([&] {
        taken = n->lock.try_lock();
        if (taken) n->lock.unlock();
    });
    other.join();
    return taken;
}

struct LockSeen {
    const net_bn* net;
    std::vector<bool> free;
};

int sees_net_lock(const node_bn*, eventtype_ns, void* obj, void*) {
    auto* seen = static_cast<LockSeen*>(obj);
    seen->free.push_back(free_to_other_threads(seen->net));
    return 0;
}

TEST_F(NetsTest, EachCallHoldsItsNetsLockForItsWholeRun) {
    // Listeners run in the middle of a call: the net must be held there, by
    // node calls, net calls and calls through a node list alike.
    LockSeen seen{net, {}};
    AddNodeListener_bn(nullptr, sees_net_lock, &seen, -1);
    node_bn* a = node("a", 2);
    nodelist_bn* list = NewNodeList2_bn(0, net);
    AddNodeToList_bn(a, list, LAST_ENTRY);
    CopyNodes_bn(list, net, nullptr);
    DeleteNode_bn(a);
    AddNodeListener_bn(nullptr, sees_net_lock, &seen, 0);
    EXPECT_EQ(seen.free, (std::vector<bool>{false, false, false}));

    // Let go on every way out: success, refusal, and a frame that failed
    // after taking the lock.
    EXPECT_TRUE(free_to_other_threads(net));
    SetNodeName_bn(node("b", 2), "bad name");
    EXPECT_EQ(take_message(), "'bad name' is not a legal name for a node");
    EXPECT_TRUE(free_to_other_threads(net));
    {
        ravelo::ApiFrame frame("Test_bn");
        frame.run([&] {
            ravelo::checked_net(frame, net);
            ravelo::checked_net(frame, net);  // held once, let go once
            ravelo::fail(5999, "deliberate");
        });
        EXPECT_FALSE(free_to_other_threads(net));
    }
    EXPECT_TRUE(free_to_other_threads(net));
    DeleteNodeList_bn(list);
}

}  // namespace
