#include "learn/family_counts.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "base/failure.h"
#include "base/text.h"
#include "infer/clique_tables.h"
#include "infer/update.h"

namespace ravelo {
namespace {

// Where one learned node's family lies in a worker's tree.
struct FamilyPlace {
    int clique;
    std::vector<int> members;  // parents then the node, as local indexes
};

std::vector<FamilyPlace> family_places(const CaseBatch& batch, const LearnedTables& tables, int w) {
    std::vector<FamilyPlace> places;
    for (Node* node : tables.nodes) {
        Node& copy = batch.copy_of(*node, w);
        JunctionTree& jt = *copy.net->jtree;
        FamilyPlace place{copy.home_clique, {}};
        RAVELO_ASSERT(place.clique >= 0);
        const bool whole = family_within(jt, jt.cliques[static_cast<std::size_t>(place.clique)], copy, place.members);
        RAVELO_ASSERT(whole);
        places.push_back(std::move(place));
    }
    return places;
}

struct WorkerPass {
    std::vector<FamilyPlace> places;
    std::vector<double> family;  // one family's sums for one case
    CasePass result;
};

void add_family_posteriors(const LearnedTables& tables, WorkerPass& pass, const JunctionTree& jt, double weight) {
    for (std::size_t k = 0; k < tables.nodes.size(); ++k) {
        const FamilyPlace& place = pass.places[k];
        const Clique& clique = jt.cliques[static_cast<std::size_t>(place.clique)];
        const std::size_t size = tables.size(k);
        double* sums = pass.family.data();
        std::fill(sums, sums + size, 0.0);
        walk_sum(clique_walk(jt, clique, place.members), current_entries(jt, clique), sums);
        double total = 0.0;
        for (std::size_t i = 0; i < size; ++i) total += sums[i];
        if (total <= 0.0) continue;
        const double scale = weight / total;
        double* counts = pass.result.counts.data() + tables.offset[k];
        for (std::size_t i = 0; i < size; ++i) counts[i] += sums[i] * scale;
    }
}

}  // namespace

LearnedTables::LearnedTables(std::vector<Node*> learned) : nodes(std::move(learned)) {
    for (const Node* node : nodes) {
        offset.push_back(cells);
        cells += static_cast<std::size_t>(table_rows(*node)) * static_cast<std::size_t>(node->num_states());
    }
    offset.push_back(cells);
}

CasePass pass_over_cases(CaseBatch& batch, const LearnedTables& tables, const CaseTable& cases, double degree,
                         bool want_counts) {
    std::size_t widest = 0;
    for (std::size_t k = 0; k < tables.nodes.size(); ++k) widest = std::max(widest, tables.size(k));
    std::vector<WorkerPass> passes(static_cast<std::size_t>(batch.workers()));
    for (int w = 0; w < batch.workers(); ++w) {
        WorkerPass& pass = passes[static_cast<std::size_t>(w)];
        if (want_counts) {
            pass.places = family_places(batch, tables, w);
            pass.family.resize(widest);
        }
    }
    CasePass total;
    if (want_counts) total.counts.assign(tables.cells, 0.0);

    auto work = [&](int w, std::size_t first, std::size_t last) {
        WorkerPass& pass = passes[static_cast<std::size_t>(w)];
        pass.result.log_likelihood = 0.0;
        pass.result.impossible = -1;
        if (want_counts) pass.result.counts.assign(tables.cells, 0.0);
        Net& net = batch.worker_net(w);
        for (std::size_t c = first; c < last; ++c) {
            const double weight = cases.weights[c] * degree;
            if (weight == 0.0) continue;
            enter_case(cases, c, net);
            if (update_beliefs_if_possible(net) != kBeliefsUpdated) {
                pass.result.impossible = static_cast<long>(c);
                return;
            }
            pass.result.log_likelihood += weight * std::log(net.findings_probability);
            if (want_counts) add_family_posteriors(tables, pass, *net.jtree, weight);
        }
    };
    auto merge = [&](int w) {
        const CasePass& part = passes[static_cast<std::size_t>(w)].result;
        if (total.impossible >= 0) return;
        if (part.impossible >= 0) {
            total.impossible = part.impossible;
            return;
        }
        total.log_likelihood += part.log_likelihood;
        for (std::size_t i = 0; i < total.counts.size(); ++i) total.counts[i] += part.counts[i];
    };
    batch.run(cases.num_cases(), work, merge);
    return total;
}

void fail_log_likelihood(const Net& net, const CaseTable& cases, long impossible) {
    const std::size_t c = static_cast<std::size_t>(impossible);
    const long id = c < cases.ids.size() && cases.ids[c] >= 0 ? cases.ids[c] : impossible + 1;
    const std::string where = c < cases.lines.size() && cases.lines[c] > 0
                                  ? format(" (file line number %ld)", cases.lines[c])
                                  : std::string();
    const std::string reason =
        format("couldn't calculate log likelihood, because couldn't calculate joint probability of findings "
               "for >-net %s",
               net.name.c_str());
    fail(2379, "%s, in case%s%s (while calcuating log-likelihood)", reason.c_str(), format(" %ld", id).c_str(),
         where.c_str());
}

double cases_log_likelihood(Net& net, const CaseTable& cases, double degree) {
    CaseBatch batch(net, batch_threads());
    CasePass pass = pass_over_cases(batch, LearnedTables({}), cases, degree, false);
    if (pass.impossible >= 0) fail_log_likelihood(net, cases, pass.impossible);
    return pass.log_likelihood;
}

}  // namespace ravelo
