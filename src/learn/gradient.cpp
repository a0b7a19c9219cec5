// Gradient ascent on the log likelihood plus the log of the prior counts (so
// that it seeks what EM seeks).  Each row of a learned table is the softmax
// of free parameters, which keeps every step a proper distribution; the
// gradient with respect to a row's parameters is then its expected counts
// less the row's probabilities times their sum.  Successive directions are
// made conjugate (Polak-Ribiere, restarting along the gradient whenever that
// would not climb), and each is searched by bracketing and Brent's method.
#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "learn/learning_tables.h"
#include "learn/line_search.h"
#include "net/ops.h"

namespace ravelo {
namespace {

constexpr double kSmallestProbability = 1e-30;

class SoftmaxTables {
public:
    SoftmaxTables(const LearnedTables& tables, std::vector<double> prior)
        : tables_(tables), prior_(std::move(prior)), params_(tables.cells) {
        const std::vector<double> counts = table_counts(tables);
        for_rows([&](std::size_t first, std::size_t m) {
            double sum = 0.0;
            for (std::size_t s = 0; s < m; ++s) sum += counts[first + s];
            for (std::size_t s = 0; s < m; ++s)
                params_[first + s] = std::log(std::max(sum > 0 ? counts[first + s] / sum : 1.0 / m, kSmallestProbability));
        });
    }

    const std::vector<double>& params() const { return params_; }

    // Writes the tables of params + t * direction into the nodes; returns
    // the log prior term of the objective there.
    double set(const std::vector<double>& params, double t, const std::vector<double>* direction) {
        std::vector<double> probs(tables_.cells);
        double log_prior = 0.0;
        for_rows([&](std::size_t first, std::size_t m) {
            double top = -INFINITY;
            for (std::size_t s = 0; s < m; ++s) top = std::max(top, at(params, t, direction, first + s));
            double sum = 0.0;
            for (std::size_t s = 0; s < m; ++s) sum += probs[first + s] = std::exp(at(params, t, direction, first + s) - top);
            for (std::size_t s = 0; s < m; ++s) {
                probs[first + s] /= sum;
                if (prior_[first + s] > 0.0)
                    log_prior += prior_[first + s] * std::log(std::max(probs[first + s], kSmallestProbability));
            }
        });
        for (std::size_t k = 0; k < tables_.nodes.size(); ++k) {
            Node& node = *tables_.nodes[k];
            node.cpt.resize(tables_.size(k));
            for (std::size_t i = 0; i < tables_.size(k); ++i)
                node.cpt[i] = static_cast<float>(probs[tables_.offset[k] + i]);
            node_tables_changed(node);
        }
        return log_prior;
    }

    void move(const std::vector<double>& direction, double t) {
        for (std::size_t i = 0; i < params_.size(); ++i) params_[i] += t * direction[i];
    }

    // Gradient of the objective with respect to the parameters, from the
    // expected counts at the tables now set.
    std::vector<double> gradient(const std::vector<double>& expected) const {
        std::vector<double> g(tables_.cells);
        for (std::size_t k = 0; k < tables_.nodes.size(); ++k) {
            const Node& node = *tables_.nodes[k];
            const std::size_t m = tables_.states(k);
            for (std::size_t first = tables_.offset[k]; first < tables_.offset[k + 1]; first += m) {
                double total = 0.0;
                for (std::size_t s = 0; s < m; ++s) total += expected[first + s] + prior_[first + s];
                for (std::size_t s = 0; s < m; ++s)
                    g[first + s] = expected[first + s] + prior_[first + s] -
                                   node.cpt[first - tables_.offset[k] + s] * total;
            }
        }
        return g;
    }

private:
    static double at(const std::vector<double>& params, double t, const std::vector<double>* direction,
                     std::size_t i) {
        return direction ? params[i] + t * (*direction)[i] : params[i];
    }
    template <class Row>
    void for_rows(Row&& row) const {
        for (std::size_t k = 0; k < tables_.nodes.size(); ++k) {
            const std::size_t m = tables_.states(k);
            for (std::size_t first = tables_.offset[k]; first < tables_.offset[k + 1]; first += m) row(first, m);
        }
    }

    const LearnedTables& tables_;
    std::vector<double> prior_;
    std::vector<double> params_;
};

double dot(const std::vector<double>& a, const std::vector<double>& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
    return sum;
}

double largest_magnitude(const std::vector<double>& v) {
    double top = 0.0;
    for (double x : v) top = std::max(top, std::fabs(x));
    return top;
}

}  // namespace

LearnOutcome learn_by_gradient(Learner& learner, Net& net, const LearnedTables& tables, const CaseTable& cases,
                               double degree) {
    ProgressTable progress(learner, "doing gradient learning",
                           "\nDoing Gradient Ascent Learning, hold down <ctrl> + <mouse button> to stop ...\n");
    const std::vector<double> prior = table_counts(tables);
    SoftmaxTables softmax(tables, prior);
    SavedTables start(tables);
    double log_prior = softmax.set(softmax.params(), 0.0, nullptr);
    CaseBatch batch(net, batch_threads());
    batch.refresh_tables(tables.nodes);
    CasePass pass = pass_over_cases(batch, tables, cases, degree, true);
    if (pass.impossible >= 0) {
        start.restore();
        fail_log_likelihood(net, cases, pass.impossible);
    }
    std::vector<double> gradient = softmax.gradient(pass.counts);
    std::vector<double> direction = gradient;
    LearnOutcome outcome;
    outcome.log_likelihood = pass.log_likelihood;
    if (largest_magnitude(gradient) == 0.0) {
        progress.print("Gradient is zero.\n");
        return outcome;
    }
    double change = undef_value();
    for (int i = 0; !progress.last_row(i, pass.log_likelihood, change, outcome); ++i) {
        const std::vector<double> params = softmax.params();
        SavedTables before(tables);
        auto objective_at = [&](double t) -> double {
            const double lp = softmax.set(params, t, &direction);
            batch.refresh_tables(tables.nodes);
            CasePass probe = pass_over_cases(batch, tables, cases, degree, false);
            if (probe.impossible >= 0) return INFINITY;  // a step too far: treated as the worst
            return -(probe.log_likelihood + lp);
        };
        CasePass next;
        try {
            const LineMinimum best =
                line_minimum(objective_at, -(pass.log_likelihood + log_prior), 1.0 / largest_magnitude(direction));
            softmax.move(direction, best.at);
            log_prior = softmax.set(softmax.params(), 0.0, nullptr);
            batch.refresh_tables(tables.nodes);
            next = pass_over_cases(batch, tables, cases, degree, true);
            if (next.impossible >= 0) fail_log_likelihood(net, cases, next.impossible);
        } catch (...) {
            before.restore();
            throw;
        }
        const std::vector<double> fresh = softmax.gradient(next.counts);
        const double beta = std::max(0.0, (dot(fresh, fresh) - dot(fresh, gradient)) / dot(gradient, gradient));
        for (std::size_t c = 0; c < direction.size(); ++c) direction[c] = fresh[c] + beta * direction[c];
        if (dot(direction, fresh) <= 0.0) direction = fresh;
        gradient = fresh;
        change = relative_change(pass.log_likelihood, next.log_likelihood);
        pass = std::move(next);
        if (largest_magnitude(gradient) == 0.0) change = 0.0;
    }
    // The experience of each row is the counts it now rests on.
    std::vector<double> counts = prior;
    for (std::size_t c = 0; c < counts.size(); ++c) counts[c] += pass.counts[c];
    for (std::size_t k = 0; k < tables.nodes.size(); ++k) {
        Node& node = *tables.nodes[k];
        const std::size_t m = tables.states(k);
        node.experience.assign(tables.size(k) / m, 0.0);
        for (std::size_t i = 0; i < tables.size(k); ++i) node.experience[i / m] += counts[tables.offset[k] + i];
    }
    return outcome;
}

}  // namespace ravelo
