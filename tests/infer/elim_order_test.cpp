#include "infer/elim_order.h"

#include "infer/junction_tree.h"
#include "infer/order_report.h"
#include "infer/triangulate.h"
#include "net_fixture.h"

namespace ravelo {
namespace {

using ElimOrderTest = NetTest;

std::vector<int> all_of(const Graph& g) {
    std::vector<int> list;
    for (int v = 0; v < g.size(); ++v) list.push_back(v);
    return list;
}

std::vector<std::string> names(const Graph& g, const std::vector<int>& order) {
    std::vector<std::string> out;
    for (int v : order) out.push_back(g.nodes[static_cast<size_t>(v)]->name);
    return out;
}

TEST_F(ElimOrderTest, WeightRules) {
    Node* a = node("a", 3);
    node("z", 0);
    Node* b = node("b", 4, {a});
    (void)b;
    Graph g = build_graph(*net);
    EXPECT_EQ(weight_of(g, nullptr, 0), 1.0);
    int ab[] = {0, 2};
    EXPECT_EQ(weight_of(g, ab, 2), 12.0);
    int with_zero[] = {0, 1, 2};
    EXPECT_EQ(weight_of(g, with_zero, 3), 0.0);
    // 16^260 = 2^1040 would pass the cap (about 2^1013).
    std::vector<int> big;
    for (int i = 0; i < 260; ++i) big.push_back(node("w" + std::to_string(i), 16)->index);
    Graph g2 = build_graph(*net);
    EXPECT_EQ(weight_of(g2, big.data(), big.size()), kWeightCap);
}

TEST_F(ElimOrderTest, EqualCostsGoToTheFirstInListOrder) {
    // A chain b - a - c of two-state nodes: the ends cost 4, the middle 8.
    Node* a = node("a", 2);
    node("b", 2, {a});
    node("c", 2, {a});
    Graph g = build_graph(*net);
    ElimOrder r = find_elim_order(g, {2, 1, 0});
    EXPECT_EQ(names(g, r.order), (std::vector<std::string>{"c", "b", "a"}));
    r = find_elim_order(g, {1, 2, 0});
    EXPECT_EQ(names(g, r.order), (std::vector<std::string>{"b", "c", "a"}));
    // b and c cost 4 each; a is then alone inside the recorded clique {a}.
    EXPECT_EQ(r.total, 4.0 + 4.0 + 0.0);
}

TEST_F(ElimOrderTest, SubsumedNodeIsEliminatedAtOnceWhateverItsPosition) {
    // x has parents p, q (married); eliminating x records {p, q}; p then has
    // one uneliminated neighbour q inside {p, q} and costs 0, ending the scan
    // before q, though the isolated y stands earlier in the list.
    Node *p = node("p", 3), *q = node("q", 3);
    node("x", 2, {p, q});
    node("y", 20);
    Graph g = build_graph(*net);
    ElimOrder r = find_elim_order(g, {2, 3, 0, 1});
    EXPECT_EQ(names(g, r.order), (std::vector<std::string>{"x", "p", "q", "y"}));
    EXPECT_EQ(r.total, 18.0 + 0.0 + 0.0 + 20.0);
}

TEST_F(ElimOrderTest, DecisionGroupsGoLastDecisionFirst) {
    Node *obs = node("obs", 2), *d1 = node("d1", 2, {obs});
    d1->kind = NodeKind::Decision;
    Node *mid = node("mid", 2, {d1}), *d2 = node("d2", 2, {mid});
    d2->kind = NodeKind::Decision;
    Node* out = node("out", 3, {d2, obs});
    (void)out;
    Graph g = build_graph(*net);
    ElimOrder r = find_elim_order(g, all_of(g));
    // Group 0: out; then d2 (group 1), its parent mid (group 2), d1 (3), obs (4).
    EXPECT_EQ(names(g, r.order), (std::vector<std::string>{"out", "d2", "mid", "d1", "obs"}));
}

TEST_F(ElimOrderTest, HaltingKeepsTheRestInListOrderAndWarns) {
    std::mt19937 rng(7);
    random_net(rng, 8, 2);
    Graph g = build_graph(*net);
    int calls = 0;
    ElimOrder r = find_elim_order(g, all_of(g), [&](double) { return ++calls == 3; });
    ASSERT_EQ(r.order.size(), 8u);
    std::vector<int> rest(r.order.begin() + 3, r.order.end());
    EXPECT_TRUE(std::is_sorted(rest.begin(), rest.end()));
    EXPECT_EQ(last_number(), 2295);
    EXPECT_NE(last_message().find("only 3 nodes of it were found"), std::string::npos);
    EXPECT_EQ(r.total, evaluate_elim_order(g, r.order));
}

TEST_F(ElimOrderTest, EvaluationAgreesWithTheCliquesOfTheTriangulation) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        std::mt19937 rng(seed);
        for (Node* n : std::vector<Node*>(net->nodes.nodes)) delete_node(*n);
        random_net(rng, 12, 3, 4);
        Graph g = build_graph(*net);
        std::vector<int> order = all_of(g);
        std::shuffle(order.begin(), order.end(), rng);
        Triangulation t = triangulate(g, order);
        double sum = 0;
        for (const auto& c : t.cliques) sum += weight_of(g, c.data(), c.size());
        EXPECT_DOUBLE_EQ(evaluate_elim_order(g, order), sum) << "seed " << seed;
        ElimOrder greedy = find_elim_order(g, all_of(g));
        EXPECT_DOUBLE_EQ(greedy.total, evaluate_elim_order(g, greedy.order)) << "seed " << seed;
    }
}

// Each line's form changes with the size; the boundaries are where a report is misread.
TEST(OrderReport, MemoryAndTimeFormsFollowTheSize) {
    EXPECT_EQ(requirements_text(56), "Max Required:\n Memory = 1 KB\n   Time = 1 ms\n");
    EXPECT_EQ(requirements_text(8603748), "Max Required:\n Memory = 65.64 MB\n   Time = 13 ms\n");
    EXPECT_EQ(requirements_text(1e9), "Max Required:\n Memory = 7629.39 MB\n   Time = 1.50 sec (with sufficient RAM)\n");
    EXPECT_EQ(requirements_text(6e12), "Max Required:\n Memory = 4.57764e+07 MB\n   Time = 2.5 hour (with sufficient RAM)\n");
    // Just under and just over one megabyte of tables.
    EXPECT_EQ(requirements_text(131000).substr(14, 18), " Memory = 1024 KB\n");
    EXPECT_EQ(requirements_text(131072).substr(14, 18), " Memory = 1.00 MB\n");
}

}  // namespace
}  // namespace ravelo
