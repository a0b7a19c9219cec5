#include "infer/junction_tree.h"

#include "infer/compile.h"
#include "infer/update.h"
#include "infer/triangulate.h"
#include "net_fixture.h"

namespace ravelo {
namespace {

using JunctionTreeTest = NetTest;

TEST_F(JunctionTreeTest, OneNodeAndTwoUnconnectedNodes) {
    node("a", 3);
    compile_net(*net, {});
    ASSERT_EQ(net->jtree->cliques.size(), 1u);
    EXPECT_EQ(net->jtree->cliques[0].size, 3.0);
    node("b", 2);
    EXPECT_EQ(net->jtree, nullptr);  // adding a node discards the tree
    compile_net(*net, {});
    const JunctionTree& jt = *net->jtree;
    ASSERT_EQ(jt.cliques.size(), 2u);
    ASSERT_EQ(jt.sepsets.size(), 1u);
    EXPECT_TRUE(jt.sepsets[0].members.empty());
    EXPECT_EQ(total_size(jt), 3.0 + 2.0 + 1.0);
}

TEST_F(JunctionTreeTest, HomeIsTheEarliestOfEqualSizedCandidates) {
    // a -> b, a -> c: cliques {a,b} and {a,c} of equal size both hold a's family.
    Node *a = node("a", 2), *b = node("b", 2, {a}), *c = node("c", 2, {a});
    compile_net(*net, {});
    const JunctionTree& jt = *net->jtree;
    ASSERT_EQ(jt.cliques.size(), 2u);
    EXPECT_EQ(a->home_clique, 0);
    EXPECT_EQ(jt.cliques[static_cast<size_t>(b->home_clique)].members.size(), 2u);
    EXPECT_NE(b->home_clique, c->home_clique);
}

// Every family in its home clique, and the running intersection property:
// the cliques holding any node form a connected subtree.
TEST_F(JunctionTreeTest, RandomNetsGiveValidTrees) {
    for (unsigned seed = 1; seed <= 25; ++seed) {
        std::mt19937 rng(seed);
        for (Node* n : std::vector<Node*>(net->nodes.nodes)) delete_node(*n);
        random_net(rng, 15, 3);
        compile_net(*net, {});
        const JunctionTree& jt = *net->jtree;
        EXPECT_EQ(jt.sepsets.size() + 1, jt.cliques.size());
        for (Node* n : net->nodes.nodes) {
            const Clique& home = jt.cliques[static_cast<size_t>(n->home_clique)];
            auto holds = [&](const Node* x) {
                int v = jt.graph.local_of[static_cast<size_t>(x->index)];
                return std::find(home.members.begin(), home.members.end(), v) != home.members.end();
            };
            EXPECT_TRUE(holds(n));
            for (const Node* p : n->parents.nodes) EXPECT_TRUE(holds(p)) << "seed " << seed;
            // Connected: count cliques holding n and sepsets holding n.
            int v = jt.graph.local_of[static_cast<size_t>(n->index)];
            int cliques = 0, sepsets = 0;
            for (const Clique& c : jt.cliques)
                cliques += std::count(c.members.begin(), c.members.end(), v) > 0;
            for (const Sepset& s : jt.sepsets) sepsets += std::count(s.members.begin(), s.members.end(), v) > 0;
            EXPECT_EQ(sepsets, cliques - 1) << "seed " << seed << " node " << n->name;
        }
    }
}

TEST_F(JunctionTreeTest, OptimizingNeverDoesWorseThanGreedy) {
    for (unsigned seed = 1; seed <= 6; ++seed) {
        std::mt19937 rng(seed);
        for (Node* n : std::vector<Node*>(net->nodes.nodes)) delete_node(*n);
        random_net(rng, 18, 3, 4);
        compile_net(*net, {});
        double greedy = total_size(*net->jtree);
        CompileOptions optimize;
        optimize.optimize = true;
        compile_net(*net, optimize);
        EXPECT_LE(total_size(*net->jtree), greedy) << "seed " << seed;
    }
}

// Nine 10-state parents of one child: a clique of 10^10 entries (40 GB).
TEST_F(JunctionTreeTest, HugeTablesWarnAtCompileAndFailAtUpdate) {
    std::vector<Node*> parents;
    for (int i = 0; i < 9; ++i) parents.push_back(node("p" + std::to_string(i), 10));
    node("child", 10, parents);
    compile_net(*net, {});
    EXPECT_EQ(message_of(2758), "you will not be able to do belief updating with this net unless you "
                              "enter some findings first, since it would require 40 GB");
    ASSERT_NE(net->jtree, nullptr);
    EXPECT_EQ(size_with_findings(*net->jtree), 1e10);
    EXPECT_THROW(update_beliefs(*net), Failure);
    EXPECT_EQ(last_number(), 2759);
    EXPECT_EQ(net->junction_step, 1);  // the next query repeats the failing step
}

}  // namespace
}  // namespace ravelo
