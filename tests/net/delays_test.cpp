// Links with time delays: which cycles they allow, how the delays follow
// their links as the net changes, and that what walks the graph still ends.
#include "core_fixture.h"
#include "infer/relations.h"
#include "net/copy.h"
#include "net/structure.h"

namespace ravelo {
namespace {

// a -> b -> c, and c -> a one step later.
class DelayTest : public CoreTest {
protected:
    void SetUp() override {
        CoreTest::SetUp();
        a = create_node(*net, "a", 2);
        b = create_node(*net, "b", 2);
        c = create_node(*net, "c", 2);
        connect(*a, *b);
        connect(*b, *c);
        connect(*c, *a, "", "1");
    }
    std::vector<std::string> names_of(const std::vector<Node*>& nodes) {
        std::vector<std::string> out;
        for (const Node* n : nodes) out.push_back(n->name);
        return out;
    }
    Node *a, *b, *c;
};

TEST_F(DelayTest, OnlyCyclesWithoutADelayAreRefused) {
    EXPECT_EQ(failure_of([&] { check_link_allowed(*c, *b); }),
              "can't connect node 'c' to node 'b', because that would result in a directed cycle (with no time "
              "delays)");
    // A delayed link back is fine, but "0" and blanks are no delay at all.
    EXPECT_EQ(failure_of([&] { check_link_allowed(*c, *b, "dt"); }), "");
    EXPECT_TRUE(closes_undelayed_cycle(*c, *b, " 0 "));
    EXPECT_TRUE(closes_undelayed_cycle(*c, *b, "0.0"));
    // b -> a closes a -> b -> a without passing the delayed link c -> a.
    EXPECT_TRUE(closes_undelayed_cycle(*b, *a));
    EXPECT_FALSE(closes_undelayed_cycle(*b, *a, "1"));
    // A node may follow itself in time, but not depend on itself at once.
    EXPECT_TRUE(closes_undelayed_cycle(*b, *b));
    EXPECT_FALSE(closes_undelayed_cycle(*b, *b, "1"));
    EXPECT_EQ(failure_of([&] { check_link_allowed(*c, *a, "2"); }),
              "can't connect node 'c' to node 'a', because they are already connected");
}

TEST_F(DelayTest, DelaysFollowTheirLinks) {
    Node *d = create_node(*net, "d", 3), *e = create_node(*net, "e", 2);
    connect(*d, *a);
    connect(*e, *a, "", "t");
    ASSERT_EQ(names_of(a->parents.nodes), (std::vector<std::string>{"c", "d", "e"}));
    disconnect(*a, 1);
    EXPECT_EQ(link_delay(*a, 0), "1");
    EXPECT_EQ(link_delay(*a, 1), "t");
    // Switching a parent keeps the link's delay, so the cycle stays allowed.
    replace_parent(*a, 0, *b);
    EXPECT_TRUE(is_delayed_link(*a, 0));
    disconnect_parent(*a, 1);
    EXPECT_EQ(link_delay(*a, 1), "t");
    EXPECT_EQ(a->parents.nodes[1]->kind, NodeKind::Disconnected);
    delete_node(*a->parents.nodes[0]);  // b, and with it the delayed link
    EXPECT_EQ(a->parents.nodes.size(), 1u);
    EXPECT_EQ(link_delay(*a, 0), "t");
    EXPECT_FALSE(is_delayed_link(*a, 5));
}

TEST_F(DelayTest, CopiesKeepDelaysAndPersistence) {
    a->persistence = {2.5, 1};
    net->dimensions = 2;
    Net* copy = copy_net(*net, *env, "M", CopyOptions{});
    Node* ca = copy->find("a");
    ASSERT_NE(ca, nullptr);
    EXPECT_EQ(link_delay(*ca, 0), "1");
    EXPECT_EQ(ca->parents.nodes[0], copy->find("c"));
    EXPECT_EQ(ca->persistence, a->persistence);
    // Persistence is per dimension, so a net of other dimensions doesn't take it.
    Net* flat = create_net(*env, "Flat");
    flat->dimensions = 1;
    std::vector<Node*> copies = copy_nodes({a, b, c}, *flat, CopyOptions{});
    EXPECT_TRUE(copies[0]->persistence.empty());
    EXPECT_EQ(link_delay(*copies[0], 0), "1");
}

}  // namespace
}  // namespace ravelo
