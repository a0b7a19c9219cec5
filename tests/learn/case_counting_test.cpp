// Counting learning from a table of cases: every table of a random net
// against counts made here case by case, real values of discretized nodes,
// and a batch that fails part way.
#include <map>
#include <random>

#include "infer/net_fixture.h"
#include "learn/counting.h"
#include "net/count_form.h"
#include "net/states.h"

namespace ravelo {
namespace {

class CaseCountingTest : public NetTest {
protected:
    // A table over every node of the net, in net order, with random states,
    // about one entry in eight missing, and weights of 1 to 3.
    CaseTable random_cases(std::mt19937& rng, int count) {
        CaseTable t;
        for (Node* n : net->nodes.nodes) t.columns.push_back(n->index);
        for (int c = 0; c < count; ++c) {
            t.weights.push_back(1 + rng() % 3);
            t.ids.push_back(-1);
            t.lines.push_back(c + 2);
            for (Node* n : net->nodes.nodes)
                t.states.push_back(rng() % 8 == 0 ? kUndefState : static_cast<int>(rng() % n->num_states()));
        }
        return t;
    }
};

TEST_F(CaseCountingTest, EveryTableOfTheNetMatchesItsCounts) {
    fresh_random_net(17, 7, 3);
    std::mt19937 rng(4);
    CaseTable cases = random_cases(rng, 2000);
    const double degree = 0.5;
    // Expected counts: the prior experience (1 per cell) spread over each row, plus the weights seen.
    std::map<std::pair<const Node*, std::size_t>, double> expected;  // (node, cell)
    for (Node* n : net->nodes.nodes)
        for (std::size_t cell = 0; cell < n->cpt.size(); ++cell)
            expected[{n, cell}] = n->cpt[cell] * static_cast<double>(n->num_states());
    const std::size_t width = cases.columns.size();
    for (std::size_t c = 0; c < cases.num_cases(); ++c)
        for (Node* n : net->nodes.nodes) {
            const int own = cases.states[c * width + static_cast<std::size_t>(n->index)];
            std::vector<int> ps;
            for (Node* p : n->parents.nodes) ps.push_back(cases.states[c * width + static_cast<std::size_t>(p->index)]);
            bool known = own >= 0;
            for (int s : ps) known = known && s >= 0;
            if (known)
                expected[{n, row_of(*n, ps.data()) * static_cast<std::size_t>(n->num_states()) + static_cast<std::size_t>(own)}] +=
                    cases.weights[c] * degree;
        }
    learn_cases_by_counting(net->nodes.nodes, cases, degree);
    for (Node* n : net->nodes.nodes) {
        const std::size_t m = static_cast<std::size_t>(n->num_states());
        for (std::size_t r = 0; r < n->experience.size(); ++r) {
            double total = 0;
            for (std::size_t s = 0; s < m; ++s) total += expected[{n, r * m + s}];
            EXPECT_NEAR(n->experience[r], total, 1e-5) << n->name << " row " << r;
            for (std::size_t s = 0; s < m; ++s) {
                const double want = expected[{n, r * m + s}] / total;
                EXPECT_NEAR(n->cpt[r * m + s], want, 1e-6) << n->name << " row " << r;
            }
        }
    }
    // Learned tables reach the compiled net.
    update_beliefs(*net);
    expect_exact("after learning");
}

TEST_F(CaseCountingTest, RealValuesCountInTheirIntervalsAndOnlyListedNodesLearn) {
    Node* x = create_node(*net, "x", 0);
    set_levels(*x, 2, std::vector<double>{0, 1, 5}.data());
    Node* y = node("y", 2, {x});
    Node* z = node("z", 2);
    CaseTable cases;
    cases.columns = {x->index, y->index, z->index};
    cases.weights = {1, 1};
    cases.ids = {-1, -1};
    cases.lines = {2, 3};
    cases.states = {kUndefState, 1, 0, kUndefState, 0, 0};
    cases.values = {3.5, CaseTable::undefined_real(), CaseTable::undefined_real(), 9.0, CaseTable::undefined_real(),
                    CaseTable::undefined_real()};
    learn_cases_by_counting({x, y}, cases, 1.0);
    // x = 3.5 lies in interval 1; x = 9 lies in none, so that case teaches neither.
    EXPECT_FLOAT_EQ(x->cpt[1], 2.0f / 3);
    EXPECT_DOUBLE_EQ(x->experience[0], 3.0);
    EXPECT_FLOAT_EQ(y->cpt[2 + 1], 2.0f / 3);
    EXPECT_DOUBLE_EQ(y->experience[0], 2.0);  // row x = 0 untouched
    EXPECT_TRUE(z->cpt.empty());
}

TEST_F(CaseCountingTest, AFailedBatchKeepsWhatItChangedBeforeTheFault) {
    Node* a = node("a", 2);
    CaseTable cases;
    cases.columns = {a->index};
    cases.weights = {1, 1, 1};
    cases.ids = {-1, -1, -1};
    cases.lines = {2, 3, 4};
    cases.states = {0, 1, 1};
    learn_cases_by_counting({a}, cases, 1.0);  // counts 2, 3
    cases.states = {0, 1, 0};
    learn_cases_by_counting({a}, cases, -1.0);  // counts 0, 2
    EXPECT_FLOAT_EQ(a->cpt[0], 0.0f);
    cases.states = {1, 0, 1};  // the first case unlearns, the second fails
    try {
        learn_cases_by_counting({a}, cases, -1.0);
        FAIL() << "unlearned below zero";
    } catch (const Failure& f) {
        EXPECT_EQ(f.report->message, "attempt to unlearn (degree = -1) more cases than were learned, for node 'a'");
    }
    EXPECT_FLOAT_EQ(a->cpt[1], 1.0f);
    EXPECT_DOUBLE_EQ(a->experience[0], 1.0);
}

}  // namespace
}  // namespace ravelo
