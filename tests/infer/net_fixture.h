// Small nets built with the internal operations, and the brute-force joint
// enumeration that exact beliefs are checked against.
#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "base/environment.h"
#include "base/failure.h"
#include "base/report.h"
#include "infer/update.h"
#include "net/ops.h"

namespace ravelo {

class NetTest : public ::testing::Test {
protected:
    void SetUp() override {
        env = create_environment();
        env->life_state = kLifeInitialized;
        set_current_environment(env);
        net = create_net(*env, "testnet");
    }
    void TearDown() override {
        drop_all_reports(*env);
        env->store.clear();
        retire_environment(*env);
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

    // Joint weight of every configuration, times the findings' likelihoods.
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

    // Number of the last report the thread holds, 0 when none.
    int last_number() const {
        const Report* r = nullptr, *last = nullptr;
        while ((r = next_report(*env, 0, r)) != nullptr) last = r;
        return last ? -last->number : 0;
    }
    // The message of the thread's report with that number, or "" when none.
    std::string message_of(int number) const {
        const Report* r = nullptr;
        while ((r = next_report(*env, 0, r)) != nullptr)
            if (-r->number == number) return r->message;
        return std::string();
    }
    std::string last_message() const {
        const Report* r = nullptr, *last = nullptr;
        while ((r = next_report(*env, 0, r)) != nullptr) last = r;
        return last ? last->message : std::string();
    }

    Environment* env = nullptr;
    Net* net = nullptr;
};

}  // namespace ravelo
