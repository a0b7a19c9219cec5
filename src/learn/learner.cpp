#include "learn/learner.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/progress.h"
#include "base/random.h"
#include "base/text.h"
#include "learn/learning_tables.h"
#include "net/count_form.h"
#include "net/ops.h"
#include "net/tables.h"

namespace ravelo {
namespace {

const char* kind_word(NodeKind kind) {
    switch (kind) {
        case NodeKind::Decision: return "decision";
        case NodeKind::Utility: return "utility";
        case NodeKind::Constant: return "constant";
        default: return "non-nature";
    }
}

}  // namespace

void check_learnable(const std::vector<Node*>& nodes) {
    for (const Node* node : nodes) {
        if (node->kind != NodeKind::Nature && node->kind != NodeKind::Disconnected)
            fail(5633, "can't learn the >-CPTable of >-node '%s', because it is a %s >-node", node->name.c_str(),
                 kind_word(node->kind));
        check_can_have_cpt(*node);
    }
}

std::vector<double> table_counts(const LearnedTables& tables) {
    std::vector<double> counts(tables.cells);
    for (std::size_t k = 0; k < tables.nodes.size(); ++k) {
        CountForm form(*tables.nodes[k], true);
        for (std::size_t r = 0; r < form.rows(); ++r)
            std::copy_n(form.row(r), form.states(), &counts[tables.offset[k] + r * form.states()]);
    }
    return counts;
}

void set_tables_from_counts(const LearnedTables& tables, const std::vector<double>& counts) {
    for (std::size_t k = 0; k < tables.nodes.size(); ++k) {
        CountForm form(*tables.nodes[k], true);
        for (std::size_t r = 0; r < form.rows(); ++r)
            std::copy_n(&counts[tables.offset[k] + r * form.states()], form.states(), form.row(r));
    }
}

void randomize_fresh_tables(const LearnedTables& tables, RandomGenerator& random) {
    for (Node* node : tables.nodes) {
        if (!node->experience.empty()) continue;
        const std::size_t m = static_cast<std::size_t>(node->num_states());
        node->cpt.resize(static_cast<std::size_t>(table_rows(*node)) * m);
        for (std::size_t r = 0; r * m < node->cpt.size(); ++r) {
            double sum = 0.0;
            for (std::size_t s = 0; s < m; ++s) sum += node->cpt[r * m + s] = static_cast<float>(0.5 + random.uniform());
            for (std::size_t s = 0; s < m; ++s) node->cpt[r * m + s] = static_cast<float>(node->cpt[r * m + s] / sum);
        }
        node_tables_changed(*node);
    }
}

ProgressTable::ProgressTable(Learner& learner, const char* title, const char* banner)
    : learner_(learner), title_(title) {
    print(banner);
    print("  Iteration   Log Likelihood   Change %\n");
}

void ProgressTable::print(const std::string& text) {
    if (learner_.listener && learner_.listener(text)) stop_ = true;
}

bool ProgressTable::last_row(int iteration, double log_likelihood, double change, LearnOutcome& outcome) {
    std::string line = format("  %9d   %-14g", iteration, log_likelihood);
    if (!is_undef(change)) line += format("   %.4f", 100.0 * change);
    print(line + "\n");
    Progress progress(learner_.env, title_);
    const double done = learner_.max_iters > 0 ? std::min(1.0, iteration / double(learner_.max_iters)) : 1.0;
    if (progress.update(done)) stop_ = true;
    outcome.iterations = iteration;
    outcome.log_likelihood = log_likelihood;
    outcome.converged = !is_undef(change) && change < learner_.tolerance;
    return stop_ || outcome.converged || iteration >= learner_.max_iters;
}

SavedTables::SavedTables(const LearnedTables& tables) : tables_(tables) {
    for (const Node* node : tables.nodes) {
        probabilities_.push_back(node->cpt);
        experience_.push_back(node->experience);
    }
}

void SavedTables::restore() {
    for (std::size_t k = 0; k < tables_.nodes.size(); ++k) {
        Node& node = *tables_.nodes[k];
        node.cpt = probabilities_[k];
        node.experience = experience_[k];
        node_tables_changed(node);
    }
}

double relative_change(double before, double after) {
    return before == 0.0 ? 0.0 : (before - after) / before;
}

LearnOutcome learn_tables(Learner& learner, Net& net, const std::vector<Node*>& nodes, const CaseTable& cases,
                          double degree) {
    check_learnable(nodes);
    LearnedTables tables(nodes);
    if (learner.random) randomize_fresh_tables(tables, *learner.random);
    if (learner.method == kGradientLearning) return learn_by_gradient(learner, net, tables, cases, degree);
    return learn_by_em(learner, net, tables, cases, degree);
}

}  // namespace ravelo
