// Core structural rules that have no interface function of their own, and
// the legal-name check.
#include "core_fixture.h"
#include "net/names.h"
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

TEST(LegalNames, LengthLimitIsThirty) {
    std::string thirty(30, 'a'), thirty_one(31, 'a');
    EXPECT_TRUE(is_legal_name(thirty.c_str()));
    EXPECT_EQ(name_problem(thirty_one.c_str()),
              "'" + thirty_one + "...' is too long (31 characters, maximum is 30)");
    EXPECT_EQ(repaired_name(thirty_one), thirty);
}

TEST(LegalNames, FaultsInTheirOrder) {
    EXPECT_TRUE(is_legal_name("_a"));
    EXPECT_EQ(name_problem(nullptr), "is missing");
    EXPECT_EQ(name_problem(""), "is empty (contains no characters)");
    EXPECT_EQ(name_problem("1a"), "'1a' starts with non-alphabetic character '1'");
    EXPECT_EQ(name_problem("a b"), "'a b' contains a space");
    EXPECT_EQ(name_problem("a\tb"), "'a\tb' contains a tab");
    EXPECT_EQ(name_problem("a\rb"), "'a\rb' contains a 'return' character");
    EXPECT_EQ(name_problem("a\nb"), "'a\nb' contains a 'new-line' character");
    EXPECT_EQ(name_problem("a-b"), "'a-b' contains the illegal character '-'");
    EXPECT_EQ(name_problem("a\x01"), "'a\x01' contains an illegal character (ascii code 1)");
    // Characters are checked before the length, and the first 30 are shown.
    std::string long_spaced = "a b" + std::string(40, 'c');
    EXPECT_EQ(name_problem(long_spaced.c_str()), "'" + long_spaced.substr(0, 30) + "' contains a space");
    EXPECT_TRUE(name_problem("*", true).empty());
    EXPECT_FALSE(name_problem("*").empty());
}

TEST(LegalNames, RepairMode) {
    EXPECT_EQ(repaired_name("1a"), "xa");
    EXPECT_EQ(repaired_name("a b"), "a_b");
    NameCheck c = check_name("a b", true);
    EXPECT_EQ(c.problem, "'a b' contains a space");
    EXPECT_EQ(c.name, "a_b");
    EXPECT_EQ(check_name("ok", true).problem, "");
}

TEST(LegalNames, WideText) {
    EXPECT_EQ(wide_name_problem(u"ab\u00e9"), "contains a non-ascii character (3rd char is Unicode-x00E9)");
    std::u16string long_name(31, u'a');
    EXPECT_EQ(wide_name_problem(long_name.c_str()), "is too long (31 characters, maximum is 30)");
    EXPECT_EQ(wide_name_problem(u"a b"), "'a b' contains a space");
    EXPECT_EQ(wide_name_problem(u"ok"), "");
}

}  // namespace
}  // namespace ravelo
