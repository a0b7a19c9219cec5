// Expectation-maximisation: each iteration sets every learned table to its
// prior counts plus the counts the cases are expected to add given the
// current tables.  The pass that scores the cases under the new tables also
// gathers the expected counts of the next iteration, so every iteration is
// one pass over the cases.
#include "base/failure.h"
#include "base/text.h"
#include "learn/learning_tables.h"

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
    for (int i = 0; !progress.last_row(i, pass.log_likelihood, change, outcome); ++i) {
        std::vector<double> counts = prior;
        for (std::size_t c = 0; c < counts.size(); ++c) counts[c] += pass.counts[c];
        SavedTables before(tables);
        set_tables_from_counts(tables, counts);
        batch.refresh_tables(tables.nodes);
        CasePass next = pass_over_cases(batch, tables, cases, degree, true);
        if (next.impossible >= 0) {
            before.restore();
            fail_log_likelihood(net, cases, next.impossible);
        }
        change = relative_change(pass.log_likelihood, next.log_likelihood);
        pass = std::move(next);
    }
    return outcome;
}

}  // namespace ravelo
