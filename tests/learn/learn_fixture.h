// Nets and simulated cases for the learning and testing units: cases drawn
// from a net by forward sampling in the test itself, with values blanked at
// random, held in the case table learning reads.
#pragma once
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "infer/net_fixture.h"
#include "io/case_table.h"
#include "learn/case_batch.h"

namespace ravelo {

class LearnTest : public NetTest {
protected:
    void TearDown() override {
        set_batch_threads(saved_threads_);
        NetTest::TearDown();
    }

    // Draws n cases of every node (in net order, parents first), each value
    // blanked with probability missing; hidden nodes (by position) are never kept.
    CaseTable simulate(std::mt19937& rng, std::size_t n, double missing, const std::vector<int>& hidden = {}) {
        CaseTable cases;
        const auto& nodes = net->nodes.nodes;
        for (std::size_t i = 0; i < nodes.size(); ++i)
            if (std::find(hidden.begin(), hidden.end(), static_cast<int>(i)) == hidden.end())
                cases.columns.push_back(static_cast<int>(i));
        std::uniform_real_distribution<double> u(0.0, 1.0);
        std::vector<int> drawn(nodes.size());
        for (std::size_t c = 0; c < n; ++c) {
            for (const Node* node : nodes) {
                std::vector<int> ps;
                for (const Node* p : node->parents.nodes) ps.push_back(drawn[static_cast<std::size_t>(p->index)]);
                const std::size_t m = static_cast<std::size_t>(node->num_states());
                const float* row = &node->cpt[row_of(*node, ps.data()) * m];
                double x = u(rng);
                int s = 0;
                while (s + 1 < static_cast<int>(m) && (x -= row[s]) >= 0) ++s;
                drawn[static_cast<std::size_t>(node->index)] = s;
            }
            for (int position : cases.columns)
                cases.states.push_back(u(rng) < missing ? kUndefState : drawn[static_cast<std::size_t>(position)]);
            cases.weights.push_back(1.0);
            cases.ids.push_back(-1);
            cases.lines.push_back(static_cast<long>(c) + 2);
        }
        return cases;
    }

    // Every table uniform and without experience, as a fresh start for learning.
    void forget_tables() {
        for (Node* n : net->nodes.nodes) {
            std::fill(n->cpt.begin(), n->cpt.end(), 1.0f / static_cast<float>(n->num_states()));
            n->experience.clear();
        }
    }

    void use_threads(int n) { set_batch_threads(n); }

    int saved_threads_ = batch_threads();
};

}  // namespace ravelo
