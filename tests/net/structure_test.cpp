// Core structural rules that have no interface function of their own.
#include "core_fixture.h"
#include "net/nodesets.h"
#include "net/structure.h"

namespace ravelo {
namespace {

class StructureTest : public CoreTest {
protected:
    void SetUp() override {
        CoreTest::SetUp();
        a = create_node(*net, "a", 2);
        b = create_node(*net, "b", 2);
        c = create_node(*net, "c", 2);
        connect(*a, *b);
        connect(*b, *c);
    }
    Node *a, *b, *c;
};

TEST_F(StructureTest, RemovingNodesNeedsTheirChildrenToGoToo) {
    EXPECT_EQ(failure_of([&] { remove_nodes(*net, {a}); }),
              "node 'a' to be removed has child node 'b' which is not being removed");
    EXPECT_EQ(net->nodes.nodes.size(), 3u);
    EXPECT_FALSE(a->is_dead());
    Net* other = create_net(*env, "M");
    Node* x = create_node(*other, "x", 2);
    EXPECT_EQ(failure_of([&] { remove_nodes(*net, {c, x}); }),
              "trying to remove node 'x' that is in a different net (M)");
    EXPECT_FALSE(c->is_dead());
    remove_nodes(*net, {c, b, b});
    EXPECT_TRUE(b->is_dead());
    EXPECT_EQ(net->nodes.nodes.size(), 1u);
    EXPECT_TRUE(a->children.nodes.empty());
}

TEST_F(StructureTest, CyclesAreFoundAlongLongPaths) {
    EXPECT_TRUE(is_ancestor(*a, *c));
    EXPECT_FALSE(is_ancestor(*c, *a));
    EXPECT_EQ(failure_of([&] { check_link_allowed(*c, *a); }),
              "can't connect node 'c' to node 'a', because that would result in a directed cycle (with no "
              "time delays)");
    EXPECT_EQ(failure_of([&] { check_link_allowed(*a, *c); }), "");
}

TEST_F(StructureTest, UniqueNamesStayLegal) {
    EXPECT_EQ(unique_node_name(*net, "z"), "z");
    EXPECT_EQ(unique_node_name(*net, "a"), "a_1");
    std::string long_name(30, 'q');
    create_node(*net, long_name, 2);
    EXPECT_EQ(unique_node_name(*net, long_name), std::string(28, 'q') + "_1");
}

TEST_F(StructureTest, NodeSets) {
    add_to_node_set(*net, "Group", *a);
    add_to_node_set(*net, "Group", *a);
    add_to_node_set(*net, "Other", *b);
    EXPECT_TRUE(is_in_node_set(*net, "Group", *a));
    EXPECT_EQ(find_node_set(*net, "Group")->members.size(), 1u);
    EXPECT_EQ(node_set_names(*net), (std::vector<std::string>{"Group", "Other"}));
    EXPECT_EQ(node_set_names(*net, b), (std::vector<std::string>{"Other"}));
    EXPECT_EQ(failure_of([&] { create_node_set(*net, "bad name"); }),
              "'bad name' is not a legal name for a Nodeset");
    remove_nodes(*net, {c});
    delete_node(*b);
    EXPECT_TRUE(find_node_set(*net, "Other")->members.empty());
    EXPECT_TRUE(remove_from_node_set(*net, "Group", *a));
    EXPECT_FALSE(remove_from_node_set(*net, "Group", *a));
}

TEST_F(StructureTest, StandInTakesTheDeletedNodesPlaceInTheEliminationOrder) {
    net->elim_order = env->store.make<NodeList>(net, true);
    net->elim_order->nodes = {c, b, a};
    delete_node_keeping_children(*b);
    Node* stand_in = net->find("b");
    ASSERT_NE(stand_in, nullptr);
    EXPECT_NE(stand_in, b);
    EXPECT_EQ(net->elim_order->nodes, (std::vector<Node*>{c, stand_in, a}));
    EXPECT_EQ(stand_in->index, 1);
    EXPECT_TRUE(stand_in->parents.nodes.empty());  // a stand-in only serves as a parent
    EXPECT_EQ(c->parents.nodes, (std::vector<Node*>{stand_in}));
    EXPECT_TRUE(a->children.nodes.empty());
}

TEST_F(StructureTest, LinkNamesAllAtOnce) {
    Node* d = create_node(*net, "d", 2);
    connect(*a, *d);
    connect(*c, *d);
    set_input_names(*d, "first, second");
    EXPECT_EQ(d->input_names, (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(failure_of([&] { set_input_names(*d, "one"); }),
              "couldn't change the link names of node 'd', because new list has 1 names, but the node has 2 links");
    EXPECT_EQ(failure_of([&] { set_input_names(*d, "x x"); }),
              "couldn't change the link names of node 'd', because new name 'x' appears twice");
    EXPECT_EQ(d->input_names[0], "first");
    EXPECT_EQ(input_name_problem(*d, 0, "second"), "is already the name of link 1");
    EXPECT_EQ(input_name_problem(*d, 1, "second"), "");
    EXPECT_EQ(failure_of([] { check_link_name(""); }),
              "'' cannot be a link name, because it is empty (contains no characters)");
    set_input_names(*d, nullptr);
    EXPECT_EQ(d->input_names[1], "");
}

}  // namespace
}  // namespace ravelo
