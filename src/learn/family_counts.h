// One pass over the cases under the net's current tables, on every core:
// the log likelihood of the cases and, when wanted, the expected counts of
// each learned node's family (node state and parent condition), which EM
// re-estimates from and which the gradient of the log likelihood is made of.
#pragma once
#include <cstddef>
#include <vector>

#include "io/case_table.h"
#include "learn/case_batch.h"

namespace ravelo {

// The learned nodes and where their tables lie in one flat array of cells.
struct LearnedTables {
    explicit LearnedTables(std::vector<Node*> learned);
    std::vector<Node*> nodes;
    std::vector<std::size_t> offset;  // of each node's first cell
    std::size_t cells = 0;
    std::size_t states(std::size_t k) const { return static_cast<std::size_t>(nodes[k]->num_states()); }
    std::size_t size(std::size_t k) const { return offset[k + 1] - offset[k]; }
};

struct CasePass {
    double log_likelihood = 0.0;
    std::vector<double> counts;  // by cell of LearnedTables (empty unless wanted)
    long impossible = -1;        // the first case of probability zero, or -1
};

// Each case counts its weight times degree.  Cases without findings add 0.
CasePass pass_over_cases(CaseBatch& batch, const LearnedTables& tables, const CaseTable& cases,
                         double degree, bool want_counts);

// Fails with the log-likelihood report naming the impossible case.
[[noreturn]] void fail_log_likelihood(const Net& net, const CaseTable& cases, long impossible);

// The log likelihood of the cases under net (compiled in working copies).
double cases_log_likelihood(Net& net, const CaseTable& cases, double degree);

}  // namespace ravelo
