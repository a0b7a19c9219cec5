// Small nets built with the internal operations, and the brute-force joint
// enumeration that exact beliefs are checked against.
#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "base/env_fixture.h"
#include "base/failure.h"
#include "infer/compile.h"
#include "infer/update.h"
#include "net/ops.h"

namespace ravelo {

class NetTest : public EnvTest {
protected:
    void SetUp() override {
        EnvTest::SetUp();
        net = create_net(*env, "testnet");
    }

    Node* node(const std::string& name, int states, std::vector<Node*> parents = {}) {
        Node* n = create_node(*net, name, states);
        for (Node* p : parents) connect(*p, *n);
        return n;
    }

    // Fills every CPT with random rows (some entries may be exactly zero).
    void random_tables(std::mt19937& rng, bool with_zeros = false) {
        std::uniform_real_distribution<float> u(0.05f, 1.0f);
        for (Node* n : net->nodes.nodes) {
            size_t rows = static_cast<size_t>(table_rows(*n));
            size_t k = static_cast<size_t>(n->num_states());
            n->cpt.resize(rows * k);
            for (size_t r = 0; r < rows; ++r) {
                double sum = 0;
                for (size_t i = 0; i < k; ++i) {
                    float x = u(rng);
                    if (with_zeros && rng() % 5 == 0) x = 0.0f;
                    n->cpt[r * k + i] = x;
                    sum += x;
                }
                if (sum == 0) n->cpt[r * k] = 1.0f, sum = 1.0;
                for (size_t i = 0; i < k; ++i) n->cpt[r * k + i] = static_cast<float>(n->cpt[r * k + i] / sum);
            }
        }
    }

    // A random DAG: each node takes up to max_parents earlier nodes as parents.
    void random_net(std::mt19937& rng, int nodes, int max_parents, int max_states = 3) {
        for (int i = 0; i < nodes; ++i) {
            int states = 2 + static_cast<int>(rng() % static_cast<unsigned>(max_states - 1));
            std::vector<Node*> parents;
            int want = i == 0 ? 0 : static_cast<int>(rng() % static_cast<unsigned>(max_parents + 1));
            for (int j = 0; j < want; ++j) {
                Node* p = net->nodes.nodes[rng() % static_cast<unsigned>(i)];
                if (std::find(parents.begin(), parents.end(), p) == parents.end()) parents.push_back(p);
            }
            node("n" + std::to_string(i), states, parents);
        }
    }

    // Replaces the net's nodes with a random compiled net, updated only on request.
    void fresh_random_net(unsigned seed, int nodes, int parents) {
        for (Node* n : std::vector<Node*>(net->nodes.nodes)) delete_node(*n);
        std::mt19937 rng(seed);
        random_net(rng, nodes, parents);
        random_tables(rng);
        net->auto_update = 0;
        compile_net(*net, {});
    }

    // Every node's beliefs and the probability of the findings, against the joint enumerated.
    void expect_exact(const std::string& what) {
        update_beliefs(*net);
        std::vector<std::vector<int>> configs;
        std::vector<double> joint = brute_joint(&configs);
        double evidence = 0;
        for (double p : joint) evidence += p;
        for (Node* n : net->nodes.nodes) {
            read_beliefs(*n);
            std::vector<double> want(static_cast<size_t>(n->num_states()), 0.0);
            for (size_t c = 0; c < joint.size(); ++c)
                want[static_cast<size_t>(configs[c][static_cast<size_t>(n->index)])] += joint[c] / evidence;
            for (size_t i = 0; i < want.size(); ++i)
                ASSERT_NEAR(n->beliefs[i], want[i], 2e-6) << what << " node " << n->name << " state " << i;
        }
        EXPECT_NEAR(net->findings_probability, evidence, 1e-6 * std::max(evidence, 1e-3)) << what;
    }

    std::vector<double> brute_joint(std::vector<std::vector<int>>* configs) const {
        const auto& ns = net->nodes.nodes;
        std::vector<int> s(ns.size(), 0);
        std::vector<double> out;
        while (true) {
            double p = 1.0;
            for (const Node* n : ns) {
                std::vector<int> ps;
                for (const Node* q : n->parents.nodes) ps.push_back(s[static_cast<size_t>(q->index)]);
                size_t row = row_of(*n, ps.data());
                int me = s[static_cast<size_t>(n->index)];
                p *= n->cpt[row * static_cast<size_t>(n->num_states()) + static_cast<size_t>(me)];
                const FindingRecord& f = n->finding;
                if (f.state >= 0 && f.state != me) p = 0;
                if (!f.likelihood.empty()) p *= f.likelihood[static_cast<size_t>(me)];
            }
            out.push_back(p);
            if (configs) configs->push_back(s);
            size_t i = 0;
            while (i < ns.size() && ++s[i] == ns[i]->num_states()) s[i++] = 0;
            if (i == ns.size()) break;
        }
        return out;
    }

    std::vector<double> brute_beliefs(const Node* target, double* evidence = nullptr) const {
        std::vector<std::vector<int>> configs;
        std::vector<double> joint = brute_joint(&configs);
        std::vector<double> b(static_cast<size_t>(target->num_states()), 0.0);
        double total = 0;
        for (size_t c = 0; c < joint.size(); ++c) {
            b[static_cast<size_t>(configs[c][static_cast<size_t>(target->index)])] += joint[c];
            total += joint[c];
        }
        for (double& x : b) x = total > 0 ? x / total : 0;
        if (evidence) *evidence = total;
        return b;
    }

    // The thread's report with that number (the last one when 0), or NULL.
    const Report* report(int number = 0) const {
        const Report *r = nullptr, *found = nullptr;
        while ((r = next_report(*env, 0, r)) != nullptr)
            if (number == 0 || -r->number == number) found = r;
        return found;
    }
    int last_number() const { return report() ? -report()->number : 0; }
    std::string last_message() const { return report() ? report()->message : std::string(); }
    std::string message_of(int number) const { return report(number) ? report(number)->message : std::string(); }

    Net* net = nullptr;
};

}  // namespace ravelo
