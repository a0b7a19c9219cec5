#include "learn/tester.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "infer/queries.h"
#include "infer/update.h"
#include "learn/case_batch.h"

namespace ravelo {

const std::vector<double> kCalibrationBins = {0, 0.01, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 0.99};
const std::vector<double> kQualityCutoffs = {0.05, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.8, 0.9, 0.95};

int probability_bin(const std::vector<double>& bounds, double p) {
    // upper_bound finds the first bound above p; the bin is the run of equal
    // bounds before it, whose first member is taken.
    auto above = std::upper_bound(bounds.begin(), bounds.end(), p);
    if (above == bounds.begin()) return -1;
    auto first = std::lower_bound(bounds.begin(), above, *(above - 1));
    return static_cast<int>(first - bounds.begin());
}

NodeTally::NodeTally(int num_states)
    : states(num_states),
      confusion(static_cast<std::size_t>(num_states * num_states)),
      cum(static_cast<std::size_t>(num_states) * kCalibrationBins.size()),
      hits(cum.size()),
      surprise(static_cast<std::size_t>(num_states) * 8),
      quality(num_states == 2 ? kQualityCutoffs.size() * 4 : 0) {}

void NodeTally::add(double w, int a, const float* beliefs) {
    if (a < 0 || a >= states) return;
    const std::size_t m = static_cast<std::size_t>(states), bins = kCalibrationBins.size();
    std::size_t predicted = 0;
    double squares = 0.0;
    for (std::size_t s = 0; s < m; ++s) {
        if (beliefs[s] > beliefs[predicted]) predicted = s;
        squares += static_cast<double>(beliefs[s]) * beliefs[s];
    }
    const std::size_t actual = static_cast<std::size_t>(a);
    const double pa = beliefs[actual];
    confusion[actual * m + predicted] += w;
    total += w;
    if (predicted != actual) errors += w;
    for (std::size_t s = 0; s < m; ++s) {
        const double p = beliefs[s];
        const int b = probability_bin(kCalibrationBins, p);
        if (b >= 0) {
            cum[s * bins + static_cast<std::size_t>(b)] += w;
            if (s == actual) hits[s * bins + static_cast<std::size_t>(b)] += w;
        }
        double* surprised = &surprise[s * 8];
        const bool occurred = s == actual;
        if (p < 0.01) surprised[0] += w, surprised[1] += occurred ? w : 0;
        if (p < 0.10) surprised[2] += w, surprised[3] += occurred ? w : 0;
        if (p > 0.90) surprised[4] += w, surprised[5] += occurred ? 0 : w;
        if (p > 0.99) surprised[6] += w, surprised[7] += occurred ? 0 : w;
    }
    log_loss = pa > 0.0 && !std::isinf(log_loss) ? log_loss - w * std::log(pa) : INFINITY;
    quadratic_loss += w * (1.0 - 2.0 * pa + squares);
    spherical_payoff += squares > 0.0 ? w * pa / std::sqrt(squares) : 0.0;
    for (std::size_t k = 0; k < quality.size() / 4; ++k) {
        const bool said_first = beliefs[0] >= kQualityCutoffs[k];
        quality[k * 4 + (actual == 0 ? (said_first ? 0 : 1) : (said_first ? 2 : 3))] += w;
    }
}

void NodeTally::add_real(double w, double x, double mean, double std_dev) {
    const double d = std::fabs(x - mean);
    real_count += w;
    abs_sum += w * d;
    abs_squares += w * d * d;
    abs_max = std::max(abs_max, d);
    if (x != 0.0) {
        rel_sum += w * std::fabs(d / x);
        rel_max = std::max(rel_max, std::fabs(d / x));
    } else if (d != 0.0) {
        rel_sum = rel_max = INFINITY;
    }
    double z = 0.0;
    if (std_dev != 0.0) {
        z = d / std_dev;
        z_sum += w * z;
        z_max = std::max(z_max, z);
    } else if (d != 0.0) {
        z = z_sum = z_max = INFINITY;
    }
    if (z > 3) beyond3 += w;
    else if (z > 2) beyond2 += w;
    else if (z > 1) beyond1 += w;
}

void NodeTally::merge(const NodeTally& o) {
    auto add_all = [](std::vector<double>& to, const std::vector<double>& from) {
        for (std::size_t i = 0; i < to.size(); ++i) to[i] += from[i];
    };
    add_all(confusion, o.confusion);
    add_all(cum, o.cum);
    add_all(hits, o.hits);
    add_all(surprise, o.surprise);
    add_all(quality, o.quality);
    total += o.total, errors += o.errors, quadratic_loss += o.quadratic_loss, spherical_payoff += o.spherical_payoff;
    log_loss = std::isinf(log_loss) || std::isinf(o.log_loss) ? INFINITY : log_loss + o.log_loss;
    real_count += o.real_count, abs_sum += o.abs_sum, abs_squares += o.abs_squares, rel_sum += o.rel_sum;
    z_sum += o.z_sum, beyond1 += o.beyond1, beyond2 += o.beyond2, beyond3 += o.beyond3;
    abs_max = std::max(abs_max, o.abs_max), rel_max = std::max(rel_max, o.rel_max), z_max = std::max(z_max, o.z_max);
}

const NodeTally& Tester::tally_of(const Node& node) const {
    for (std::size_t i = 0; i < test_nodes.size(); ++i)
        if (test_nodes[i] == &node) return tallies[i];
    fail(5634, ">-node '%s' was not one of the >-node-s tested (i.e. not in the test_nodes list passed to "
               ">-NewNetTester_bn)",
         node.name.c_str());
}

namespace {

// The node's actual state in case c: its state entry, or the state whose
// interval holds its real value.
int actual_state(const Node& node, const CaseTable& cases, std::size_t c, std::size_t column) {
    const int state = cases.states[cases.cell(c, column)];
    const double x = cases.value(c, column);
    if (state >= 0 || is_undef(x) || !node.is_discretized()) return state;
    for (std::size_t s = 0; s + 1 < node.levels.size(); ++s)
        if (x >= std::min(node.levels[s], node.levels[s + 1]) && x < std::max(node.levels[s], node.levels[s + 1]))
            return static_cast<int>(s);
    return kUndefState;
}

struct WorkerTallies {
    std::vector<NodeTally> tallies;
    double skipped = 0;
};

}  // namespace

void test_with_cases(Tester& tester, const CaseTable& cases) {
    Net& net = *tester.net;
    std::vector<char> skip(net.nodes.nodes.size(), 0);
    for (const Node* n : tester.test_nodes) skip[static_cast<std::size_t>(n->index)] = 1;
    for (const Node* n : tester.unobserved) skip[static_cast<std::size_t>(n->index)] = 1;
    // The column of each test node, or -1.
    std::vector<int> column(tester.test_nodes.size(), -1);
    for (std::size_t t = 0; t < tester.test_nodes.size(); ++t)
        for (std::size_t k = 0; k < cases.columns.size(); ++k)
            if (cases.columns[k] == tester.test_nodes[t]->index) column[t] = static_cast<int>(k);

    CaseBatch batch(net, batch_threads());
    std::vector<WorkerTallies> parts(static_cast<std::size_t>(batch.workers()));
    auto work = [&](int w, std::size_t first, std::size_t last) {
        WorkerTallies& part = parts[static_cast<std::size_t>(w)];
        part.tallies.clear();
        for (const Node* n : tester.test_nodes) part.tallies.emplace_back(n->num_states());
        part.skipped = 0;
        Net& copy = batch.worker_net(w);
        for (std::size_t c = first; c < last; ++c) {
            const double weight = cases.weights[c];
            enter_case(cases, c, copy, &skip);
            if (update_beliefs_if_possible(copy) != kBeliefsUpdated) {
                part.skipped += weight;
                continue;
            }
            for (std::size_t t = 0; t < tester.test_nodes.size(); ++t) {
                if (column[t] < 0) continue;
                const std::size_t k = static_cast<std::size_t>(column[t]);
                Node& node = batch.copy_of(*tester.test_nodes[t], w);
                const int actual = actual_state(node, cases, c, k);
                const double x = cases.value(c, k);
                if (actual < 0 && (is_undef(x) || node.is_discrete())) continue;
                read_beliefs(node);
                part.tallies[t].add(weight, actual, node.beliefs.data());
                if (!node.is_discrete() && !is_undef(x)) {
                    double std_dev = 0.0;
                    const double mean = expected_value(node, &std_dev);
                    part.tallies[t].add_real(weight, x, mean, std_dev);
                }
            }
        }
    };
    std::vector<NodeTally> sums;
    for (const Node* n : tester.test_nodes) sums.emplace_back(n->num_states());
    double skipped = 0;
    auto merge = [&](int w) {
        const WorkerTallies& part = parts[static_cast<std::size_t>(w)];
        for (std::size_t t = 0; t < sums.size(); ++t) sums[t].merge(part.tallies[t]);
        skipped += part.skipped;
    };
    batch.run(cases.num_cases(), work, merge);
    for (std::size_t t = 0; t < sums.size(); ++t) tester.tallies[t].merge(sums[t]);
    tester.skipped += skipped;
    if (skipped > 0)
        warning(5635, "the findings of %g cases are impossible in >-net '%s', so the net tester left them out",
                skipped, net.name.c_str());
}

}  // namespace ravelo
