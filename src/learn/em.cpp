// Expectation-maximisation: each iteration sets every learned table to its
// prior counts plus the counts the cases are expected to add given the
// current tables.  The pass that scores the cases under the new tables also
// gathers the expected counts of the next iteration, so every iteration is
// one pass over the cases.
#include "base/failure.h"
#include "base/text.h"
#include "learn/learning_tables.h"
#include "net/ops.h"

namespace ravelo {

LearnOutcome learn_by_em(Learner& learner, Net& net, const LearnedTables& tables, const CaseTable& cases,
                         double degree) {
    ProgressTable progress(learner, "doing EM learning",
                           "\nDoing EM Learning, hold down <ctrl> + <mouse button> to stop ...\n");
    const std::vector<double> prior = table_counts(tables);
    CaseBatch batch(net, batch_threads());
    CasePass pass = pass_over_cases(batch, tables, cases, degree, true);
    if (pass.impossible >= 0) fail_log_likelihood(net, cases, pass.impossible);
    LearnOutcome outcome;
    double change = undef_value();
    for (int i = 0;; ++i) {
        outcome.log_likelihood = pass.log_likelihood;
        const bool converged = !is_undef(change) && change < learner.tolerance;
        if (progress.row(i, pass.log_likelihood, change) || converged || i >= learner.max_iters) {
            outcome.converged = converged;
            break;
        }
        std::vector<double> counts = prior;
        for (std::size_t c = 0; c < counts.size(); ++c) counts[c] += pass.counts[c];
        // Kept so that a failing pass leaves the tables of the last finished iteration.
        std::vector<std::vector<float>> before;
        for (Node* node : tables.nodes) before.push_back(node->cpt);
        std::vector<std::vector<double>> experience_before;
        for (Node* node : tables.nodes) experience_before.push_back(node->experience);
        set_tables_from_counts(tables, counts);
        batch.refresh_tables(tables.nodes);
        CasePass next = pass_over_cases(batch, tables, cases, degree, true);
        if (next.impossible >= 0) {
            for (std::size_t k = 0; k < tables.nodes.size(); ++k) {
                tables.nodes[k]->cpt = std::move(before[k]);
                tables.nodes[k]->experience = std::move(experience_before[k]);
                node_tables_changed(*tables.nodes[k]);
            }
            fail_log_likelihood(net, cases, next.impossible);
        }
        change = relative_change(pass.log_likelihood, next.log_likelihood);
        pass = std::move(next);
        outcome.iterations = i + 1;
    }
    return outcome;
}

}  // namespace ravelo
