// Hard findings restrict every table walk to the slice of the observed
// states; these cases aim at the places where a wrong slice would show:
// several observed members of one clique, a likelihood next to hard
// findings, findings changed or added between updates, and impossible
// combinations inside one clique.
#include <algorithm>

#include "infer/compile.h"
#include "infer/findings.h"
#include "infer/junction_tree.h"
#include "infer/queries.h"
#include "infer/update.h"
#include "net_fixture.h"

namespace ravelo {
namespace {

class EvidenceSlicesTest : public NetTest {
protected:
    // The nodes of the largest clique, in the clique's order.
    std::vector<Node*> largest_clique() const {
        const JunctionTree& jt = *tree_of(*net);
        const Clique* big = &jt.cliques[0];
        for (const Clique& c : jt.cliques)
            if (c.size > big->size) big = &c;
        std::vector<Node*> out;
        for (int v : big->members) out.push_back(jt.graph.nodes[v]);
        return out;
    }
    // A state the node can take given the findings so far, by enumeration.
    int possible_state(Node* n, unsigned pick) const {
        std::vector<double> b = brute_beliefs(n);
        std::vector<int> open;
        for (size_t i = 0; i < b.size(); ++i)
            if (b[i] > 0) open.push_back(static_cast<int>(i));
        return open.empty() ? 0 : open[pick % open.size()];
    }
};

TEST_F(EvidenceSlicesTest, ObservedMembersOfTheLargestClique) {
    int tried = 0;
    for (unsigned seed = 1; seed <= 12; ++seed) {
        fresh_random_net(seed, 9, 3);
        std::vector<Node*> big = largest_clique();
        if (big.size() < 3) continue;
        ++tried;
        std::mt19937 rng(seed);
        // The innermost member, an outer one, then all but one.
        enter_finding(*big.back(), possible_state(big.back(), rng()));
        expect_exact("innermost member, seed " + std::to_string(seed));
        enter_finding(*big.front(), possible_state(big.front(), rng()));
        expect_exact("outer member too, seed " + std::to_string(seed));
        for (size_t i = 1; i + 1 < big.size() - 1; ++i)
            enter_finding(*big[i], possible_state(big[i], rng()));
        expect_exact("all but one, seed " + std::to_string(seed));
        enter_finding(*big[big.size() - 2], possible_state(big[big.size() - 2], rng()));
        expect_exact("every member, seed " + std::to_string(seed));
        retract_net_findings(*net);
        expect_exact("retracted, seed " + std::to_string(seed));
    }
    EXPECT_GE(tried, 8);
}

TEST_F(EvidenceSlicesTest, LikelihoodBesideHardFindingsInOneClique) {
    for (unsigned seed = 20; seed <= 27; ++seed) {
        fresh_random_net(seed, 9, 3);
        std::vector<Node*> big = largest_clique();
        std::mt19937 rng(seed);
        enter_finding(*big[0], possible_state(big[0], rng()));
        std::vector<float> lik(static_cast<size_t>(big[1]->num_states()), 0.7f);
        lik[0] = 0.05f;
        enter_likelihood(*big[1], lik.data());
        expect_exact("likelihood then hard, seed " + std::to_string(seed));
        enter_finding(*big.back(), possible_state(big.back(), rng()));
        expect_exact("hard added after the likelihood, seed " + std::to_string(seed));
    }
}

TEST_F(EvidenceSlicesTest, FindingChangedOrAddedBetweenUpdates) {
    for (unsigned seed = 40; seed <= 47; ++seed) {
        fresh_random_net(seed, 9, 3);
        std::vector<Node*> big = largest_clique();
        std::mt19937 rng(seed);
        Node* n = big[big.size() / 2];
        enter_finding(*n, 0);
        expect_exact("first state, seed " + std::to_string(seed));
        // Another state of the same node: the slice moves, nothing of the old one may remain.
        enter_finding(*n, n->num_states() - 1, true);
        expect_exact("last state, seed " + std::to_string(seed));
        Node* other = net->nodes.nodes[rng() % net->nodes.nodes.size()];
        if (other->finding.empty()) {
            enter_finding(*other, possible_state(other, rng()));
            expect_exact("added elsewhere, seed " + std::to_string(seed));
        }
        retract_findings(*n);
        expect_exact("first one retracted, seed " + std::to_string(seed));
    }
}

// Case after case, as a net tester enters them: most nodes observed, the same
// states often coming back between updates, so that a walk kept from one
// update must serve the next only when its members' states still match.
TEST_F(EvidenceSlicesTest, MostNodesObservedCaseAfterCase) {
    for (unsigned seed = 90; seed <= 93; ++seed) {
        fresh_random_net(seed, 9, 3);
        std::mt19937 rng(seed);
        for (int c = 0; c < 8; ++c) {
            retract_net_findings(*net);
            for (Node* n : net->nodes.nodes)
                if (rng() % 4 != 0) enter_finding(*n, possible_state(n, rng() % 2));
            expect_exact("case " + std::to_string(c) + ", seed " + std::to_string(seed));
        }
    }
}

TEST_F(EvidenceSlicesTest, ImpossibleStatesWithinOneCliqueFailWith2078) {
    Node *a = node("a", 3), *b = node("b", 2, {a}), *c = node("c", 3, {a, b});
    a->cpt = {0.2f, 0.3f, 0.5f};
    b->cpt = {1.0f, 0.0f, 0.4f, 0.6f, 0.5f, 0.5f};  // a=0 forces b=0
    c->cpt = {0.1f, 0.2f, 0.7f, 0.3f, 0.3f, 0.4f, 0.5f, 0.5f, 0.0f,
              0.2f, 0.2f, 0.6f, 0.9f, 0.1f, 0.0f, 0.4f, 0.4f, 0.2f};
    net->auto_update = 0;
    compile_net(*net, {});
    enter_finding(*c, 1);
    expect_exact("possible");
    enter_finding(*a, 0);
    enter_finding(*b, 1);
    EXPECT_THROW(update_beliefs(*net), Failure);
    EXPECT_EQ(last_number(), 2078);
    EXPECT_EQ(net->findings_probability, 0.0);
    // Zero probability reached only through c's table entry for a=2, b=0, c=2.
    enter_finding(*a, 2, true);
    enter_finding(*b, 0, true);
    enter_finding(*c, 2, true);
    EXPECT_THROW(update_beliefs(*net), Failure);
    EXPECT_EQ(last_number(), 2078);
    enter_finding(*c, 1, true);
    expect_exact("consistent again");
}

TEST_F(EvidenceSlicesTest, QueriesSeeOnlyTheObservedSlice) {
    for (unsigned seed = 60; seed <= 65; ++seed) {
        fresh_random_net(seed, 8, 3);
        std::vector<Node*> big = largest_clique();
        std::mt19937 rng(seed);
        // Beliefs read first under other findings leave stale entries outside the slice.
        enter_finding(*big[0], 0);
        update_beliefs(*net);
        retract_net_findings(*net);
        enter_finding(*big[0], big[0]->num_states() - 1);
        enter_finding(*big.back(), possible_state(big.back(), rng()));
        expect_exact("before queries, seed " + std::to_string(seed));
        std::vector<std::vector<int>> configs;
        std::vector<double> joint = brute_joint(&configs);
        double total = 0, want = 0;
        Node* q = big[1];
        for (size_t c = 0; c < joint.size(); ++c) {
            total += joint[c];
            if (configs[c][static_cast<size_t>(q->index)] == 0) want += joint[c];
        }
        std::vector<Node*> pick{q};
        int states[] = {0};
        EXPECT_NEAR(joint_probability(*net, pick, states), want / total, 1e-6) << "seed " << seed;
        expect_exact("after queries, seed " + std::to_string(seed));
    }
}

TEST_F(EvidenceSlicesTest, FindingsInSeveralPiecesOfTheTree) {
    for (unsigned seed = 80; seed <= 85; ++seed) {
        for (Node* n : std::vector<Node*>(net->nodes.nodes)) delete_node(*n);
        std::mt19937 rng(seed);
        random_net(rng, 5, 2, 3);
        // A second piece, joined to nothing of the first.
        std::vector<Node*> second;
        for (int i = 0; i < 5; ++i) {
            std::vector<Node*> parents;
            if (i > 0) parents.push_back(second[rng() % second.size()]);
            if (i > 1 && rng() % 2) {
                Node* p = second[rng() % second.size()];
                if (p != parents[0]) parents.push_back(p);
            }
            second.push_back(node("m" + std::to_string(i), 2 + static_cast<int>(rng() % 2), parents));
        }
        random_tables(rng);
        net->auto_update = 0;
        compile_net(*net, {});
        Node* x = net->nodes.nodes[rng() % 5];
        enter_finding(*x, possible_state(x, rng()));
        enter_finding(*second[0], possible_state(second[0], rng()));
        enter_finding(*second[4], possible_state(second[4], rng()));
        expect_exact("both pieces, seed " + std::to_string(seed));
        retract_findings(*x);
        expect_exact("second piece only, seed " + std::to_string(seed));
    }
}

}  // namespace
}  // namespace ravelo
