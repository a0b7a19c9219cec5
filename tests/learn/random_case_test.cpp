// Random cases: the distribution of junction-tree and forward samples against
// the joint distribution enumerated, with findings and without; rejection;
// equations and levels; the faults that end a draw.
#include <cmath>
#include <map>

#include "base/random.h"
#include "infer/findings.h"
#include "infer/net_fixture.h"
#include "learn/random_case.h"
#include "net/states.h"
#include "net/tables.h"

namespace ravelo {
namespace {

class RandomCaseTest : public NetTest {
protected:
    // The nodes without positive findings (those a case is drawn for).
    std::vector<Node*> unobserved() const {
        std::vector<Node*> out;
        for (Node* n : net->nodes.nodes)
            if (n->finding.state < 0) out.push_back(n);
        return out;
    }

    // Draws cases and counts each joint configuration of the net's nodes
    // (findings included: they are part of every drawn case).
    std::map<std::vector<int>, int> draw(int method, int cases) {
        std::vector<Node*> chosen = unobserved();
        std::vector<FindingRecord> kept;  // likelihood findings, given back after each case
        for (Node* n : chosen) kept.push_back(n->finding);
        std::map<std::vector<int>, int> counts;
        for (int k = 0; k < cases; ++k) {
            EXPECT_EQ(generate_random_case(chosen, method, 1e6), kCaseMade);
            std::vector<int> config;
            for (Node* n : net->nodes.nodes) config.push_back(n->finding.state);
            ++counts[config];
            for (std::size_t i = 0; i < chosen.size(); ++i) {
                retract_findings(*chosen[i]);
                if (!kept[i].likelihood.empty()) enter_likelihood(*chosen[i], kept[i].likelihood.data());
            }
        }
        return counts;
    }

    // Chi-square of the counts against the enumerated joint given the findings
    // (cells expecting fewer than 5 pooled), against its 0.1% critical value.
    void expect_follows_joint(const std::map<std::vector<int>, int>& counts, int cases, const char* what) {
        std::vector<std::vector<int>> configs;
        std::vector<double> joint = brute_joint(&configs);
        double evidence = 0;
        for (double p : joint) evidence += p;
        double chi = 0, pooled_expected = 0, pooled_seen = 0;
        int cells = 0, seen_total = 0;
        for (std::size_t c = 0; c < joint.size(); ++c) {
            const double expected = joint[c] / evidence * cases;
            auto it = counts.find(configs[c]);
            const int seen = it == counts.end() ? 0 : it->second;
            seen_total += seen;
            if (expected == 0) {
                EXPECT_EQ(seen, 0) << what << ": an impossible case was drawn";
            } else if (expected < 5) {
                pooled_expected += expected;
                pooled_seen += seen;
            } else {
                chi += (seen - expected) * (seen - expected) / expected;
                ++cells;
            }
        }
        if (pooled_expected > 0) {
            chi += (pooled_seen - pooled_expected) * (pooled_seen - pooled_expected) / pooled_expected;
            ++cells;
        }
        EXPECT_EQ(seen_total, cases) << what;
        const double df = cells - 1, h = 2.0 / (9.0 * df);
        const double critical = df * std::pow(1 - h + 3.09 * std::sqrt(h), 3);  // Wilson-Hilferty
        EXPECT_LT(chi, critical) << what << " (" << df << " degrees of freedom)";
    }

    std::string failure_of(const std::vector<Node*>& chosen, int method) {
        try {
            generate_random_case(chosen, method, 100);
        } catch (const Failure& f) {
            return f.report->message;
        }
        return "";
    }
};

TEST_F(RandomCaseTest, BothMethodsFollowTheJointWithoutFindings) {
    fresh_random_net(21, 6, 2);
    expect_follows_joint(draw(kJunctionTreeSampling, 20000), 20000, "junction tree");
    expect_follows_joint(draw(kForwardSampling, 20000), 20000, "forward");
}

TEST_F(RandomCaseTest, BothMethodsFollowThePosteriorGivenFindings) {
    fresh_random_net(5, 6, 2);
    Node* last = net->nodes.nodes.back();
    enter_finding(*last, 1);
    std::vector<float> likelihood(static_cast<std::size_t>(net->nodes.nodes[2]->num_states()), 0.3f);
    likelihood[0] = 1.0f;
    enter_likelihood(*net->nodes.nodes[2], likelihood.data());
    expect_follows_joint(draw(kJunctionTreeSampling, 20000), 20000, "junction tree");
    expect_follows_joint(draw(kForwardSampling, 20000), 20000, "forward");
    // The automatic choice takes the tree when findings are entered.
    EXPECT_EQ(automatic_sampling_method(*net), kJunctionTreeSampling);
}

TEST_F(RandomCaseTest, RejectionRunsOutWhereTheTreeAlwaysSucceeds) {
    Node* rare = node("rare", 2);
    Node* child = node("child", 2, {rare});
    rare->cpt = {0.9999999f, 1e-7f};
    child->cpt = {0.5f, 0.5f, 0.1f, 0.9f};
    net->auto_update = 0;
    enter_finding(*rare, 1);
    std::vector<Node*> chosen{child};
    EXPECT_EQ(generate_random_case(chosen, kForwardSampling, 50), kCaseRejected);
    EXPECT_TRUE(child->finding.empty());  // nothing entered
    EXPECT_EQ(automatic_sampling_method(*net), kForwardSampling);  // not compiled
    EXPECT_EQ(generate_random_case(chosen, kAutomaticSampling, 0), kCaseRejected);  // no attempt at all
    compile_net(*net, {});
    int ones = 0;
    for (int k = 0; k < 200; ++k) {
        ASSERT_EQ(generate_random_case(chosen, kAutomaticSampling, 0), kCaseMade);
        ones += child->finding.state;
        retract_findings(*child);
    }
    EXPECT_GT(ones, 160);  // P(child = 1 | rare = 1) = 0.9
    // A node with a finding keeps it.
    std::vector<Node*> both{rare, child};
    ASSERT_EQ(generate_random_case(both, kJunctionTreeSampling, 1), kCaseMade);
    EXPECT_EQ(rare->finding.state, 1);
}

TEST_F(RandomCaseTest, EquationsAndLevelsGiveRealValues) {
    Node* a = node("a", 2);
    a->cpt = {0.3f, 0.7f};
    a->levels = {10, 20};  // a discrete node with levels
    Node* y = create_node(*net, "y", 0);
    set_levels(*y, 3, std::vector<double>{0, 30, 60, 90}.data());
    connect(*a, *y);
    y->equation = "y (a) = a * 2.5 + 1";  // a stands for its state's level
    Node* w = node("w", 3, {a});
    w->equation = "P (w | a) = a == 10 ? (w == 0 ? 1 : 0) : (w == 0 ? 0 : 0.5)";
    int made = 0, high = 0;
    std::vector<Node*> chosen{a, y, w};
    for (int k = 0; k < 3000; ++k) {
        ASSERT_EQ(generate_random_case(chosen, kForwardSampling, 1), kCaseMade);
        ++made;
        const int sa = a->finding.state;
        ASSERT_TRUE(y->finding.has_value);
        EXPECT_EQ(y->finding.value, a->levels[static_cast<std::size_t>(sa)] * 2.5 + 1);
        EXPECT_EQ(y->finding.state, sa);
        EXPECT_EQ(sa == 0, w->finding.state == 0);
        high += sa;
        for (Node* n : chosen) retract_findings(*n);
    }
    EXPECT_NEAR(high / 3000.0, 0.7, 0.03);
}

TEST_F(RandomCaseTest, FaultsEndTheDrawAndLeaveFindingsAlone) {
    Node* a = node("a", 2);
    Node* b = node("b", 2, {a});
    a->cpt = {0.5f, 0.5f};
    std::vector<Node*> chosen{a, b};
    EXPECT_EQ(failure_of(chosen, kForwardSampling), "table (e.g. CPT table) missing for node 'b'");
    b->cpt = {-1, -1, 0, 1};  // a = 0 declared impossible
    enter_finding(*a, 0);
    EXPECT_EQ(failure_of({b}, kForwardSampling),
              "in the CPT of node b, parent conditions declared \"impossible\" have occurred: a=0");
    EXPECT_TRUE(b->finding.empty());
    retract_findings(*a);

    Node* r = node("r", 2);
    r->cpt = {1, 0};
    Node* x = create_node(*net, "x", 0);
    set_levels(*x, 2, std::vector<double>{0, 1, 2}.data());
    connect(*r, *x);
    Node* c = node("c", 2, {x});
    c->cpt = {0.5f, 0.5f, 0.5f, 0.5f};
    x->equation = "x (r) = r + 7";
    EXPECT_EQ(failure_of({c}, kForwardSampling),
              "the real value of node x was found to be 7, but that does correspond to any state.  Parent values "
              "were: r = 0");
    x->equation = "";
    x->finding.value = 9;  // a value no interval holds
    x->finding.has_value = true;
    EXPECT_EQ(failure_of({c}, kForwardSampling),
              "the real value of node x was found to be 9, but that does correspond to any of its states");
    x->finding = {};

    Node* d = node("d", 2);
    connect(*d, *a, "", "1");  // a delayed link
    d->cpt = {0.5f, 0.5f};
    EXPECT_EQ(failure_of({a}, kForwardSampling),
              "can't simulate case because one of the nodes involved (a) has a delay link");
}

TEST_F(RandomCaseTest, TheNetsOwnGeneratorMakesTheCasesReproducible) {
    fresh_random_net(3, 5, 2);
    RandomGenerator own(env, 99);
    auto sequence = [&] {
        std::vector<int> states;
        std::vector<Node*> chosen = unobserved();
        for (int k = 0; k < 50; ++k) {
            generate_random_case(chosen, kForwardSampling, 1);
            for (Node* n : chosen) states.push_back(n->finding.state), retract_findings(*n);
        }
        return states;
    };
    net->random_gen = &own;
    std::vector<int> first = sequence();
    RandomGenerator again(env, 99);
    net->random_gen = &again;
    EXPECT_EQ(sequence(), first);
    net->random_gen = nullptr;
    EXPECT_NE(sequence(), first);
}

}  // namespace
}  // namespace ravelo
