#include "infer/queries.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/report.h"
#include "base/text.h"
#include "infer/clique_tables.h"
#include "infer/propagate.h"
#include "infer/update.h"

namespace ravelo {
namespace {

// Cliques in depth-first order from clique 0, with the link to each one's parent.
struct TreeWalk {
    std::vector<int> order;
    std::vector<const CliqueLink*> up;  // link from a clique towards its parent
};

TreeWalk walk_from_root(const JunctionTree& jt) {
    TreeWalk w;
    w.up.assign(jt.cliques.size(), nullptr);
    std::vector<char> seen(jt.cliques.size(), 0);
    for (size_t start = 0; start < jt.cliques.size(); ++start) {
        if (seen[start]) continue;
        std::vector<int> stack{static_cast<int>(start)};
        seen[start] = 1;
        while (!stack.empty()) {
            int c = stack.back();
            stack.pop_back();
            w.order.push_back(c);
            for (const CliqueLink& link : jt.cliques[c].links)
                if (!seen[link.neighbour]) {
                    seen[link.neighbour] = 1;
                    stack.push_back(link.neighbour);
                    for (const CliqueLink& back : jt.cliques[link.neighbour].links)
                        if (back.neighbour == c) w.up[link.neighbour] = &back;
                }
        }
    }
    return w;
}

// The clique and sepset tables, set aside while a query works on them.
class SavedTables {
public:
    explicit SavedTables(JunctionTree& jt) : jt_(jt) {
        for (const Clique& c : jt.cliques) cliques_.push_back(c.table);
        for (const Sepset& s : jt.sepsets) sepsets_.push_back(s.table);
    }
    ~SavedTables() {
        for (size_t i = 0; i < cliques_.size(); ++i) jt_.cliques[i].table.swap(cliques_[i]);
        for (size_t i = 0; i < sepsets_.size(); ++i) jt_.sepsets[i].table.swap(sepsets_[i]);
    }

private:
    JunctionTree& jt_;
    std::vector<std::vector<float>> cliques_, sepsets_;
};

void pass_max(JunctionTree& jt, Clique& from, const CliqueLink& link) {
    Sepset& s = jt.sepsets[link.sepset];
    Clique& to = jt.cliques[link.neighbour];
    const std::size_t n = s.table.size();
    std::fill(jt.sums.begin(), jt.sums.begin() + static_cast<long>(n), 0.0);
    // The tables hold every entry here, so the walks skip nothing.
    walk_max(make_walk(jt.graph, from.members, s.members, nullptr), from.table.data(), jt.sums.data());
    for (std::size_t i = 0; i < n; ++i) jt.ratio[i] = static_cast<float>(jt.sums[i]);
    walk_multiply(make_walk(jt.graph, to.members, s.members, nullptr), to.table.data(), to.table.data(),
                  jt.ratio.data());
}

// The clique entry of greatest value among those agreeing with 'chosen'
// (-1: not chosen yet); its members' states are written into 'chosen'.
void choose_in_clique(const JunctionTree& jt, const Clique& c, std::vector<int>& chosen) {
    const size_t k = c.members.size();
    std::vector<int> count(k, 0), best(k, 0);
    float best_value = -1.0f;
    for (std::size_t e = 0; e < c.table.size(); ++e) {
        bool agrees = true;
        for (size_t i = 0; i < k && agrees; ++i) {
            int s = chosen[c.members[i]];
            agrees = s < 0 || s == count[i];
        }
        if (agrees && c.table[e] > best_value) {
            best_value = c.table[e];
            best = count;
        }
        for (size_t i = k; i-- > 0;) {
            if (++count[i] < jt.graph.states(c.members[i])) break;
            count[i] = 0;
        }
    }
    for (size_t i = 0; i < k; ++i) chosen[c.members[i]] = best[i];
}

}  // namespace

double joint_probability(Net& net, const std::vector<Node*>& nodes, const int* states) {
    JunctionTree& jt = *net.jtree;
    SavedTables saved(jt);
    std::vector<char> changed(jt.cliques.size(), 0);
    std::vector<float> indicator;
    for (size_t i = 0; i < nodes.size(); ++i) {
        int v = local_index(jt, *nodes[i]);
        RAVELO_ASSERT(v >= 0);
        Clique& c = jt.cliques[jt.belief_clique[v]];
        indicator.assign(static_cast<size_t>(nodes[i]->num_states()), 0.0f);
        indicator[static_cast<size_t>(states[i])] = 1.0f;
        multiply_by_states(c, member_position(c, v), nodes[i]->num_states(), indicator.data());
        changed[c.index] = 1;
    }
    TreeWalk walk = walk_from_root(jt);
    double total = 1.0;
    for (size_t i = walk.order.size(); i-- > 0;) {
        int c = walk.order[i];
        if (walk.up[c]) {
            if (!changed[c]) continue;
            pass_message(jt, jt.cliques[c], *walk.up[c]);
            changed[walk.up[c]->neighbour] = 1;
        } else {
            total *= changed[c] ? clique_total(jt, jt.cliques[c]) : 1.0;
        }
    }
    return total;
}

std::vector<int> most_probable_config(Net& net) {
    JunctionTree& jt = *net.jtree;
    SavedTables saved(jt);
    std::vector<std::vector<float>> applied = jt.applied;
    load_node_tables(jt);
    for (int v = 0; v < jt.graph.size(); ++v) {
        std::vector<float> likelihood = finding_likelihood(*jt.graph.nodes[v]);
        if (likelihood.empty()) continue;
        Clique& c = jt.cliques[jt.graph.nodes[v]->home_clique];
        multiply_by_states(c, member_position(c, v), jt.graph.states(v), likelihood.data());
    }
    TreeWalk walk = walk_from_root(jt);
    for (size_t i = walk.order.size(); i-- > 0;) {
        int c = walk.order[i];
        if (walk.up[c]) pass_max(jt, jt.cliques[c], *walk.up[c]);
    }
    std::vector<int> chosen(jt.graph.nodes.size(), -1);
    for (int c : walk.order) choose_in_clique(jt, jt.cliques[c], chosen);
    jt.applied = std::move(applied);
    return chosen;
}

double expected_utility(Net& net) {
    JunctionTree& jt = *net.jtree;
    double total = 0.0;
    std::vector<double> p;
    for (Node* u : net.nodes.nodes) {
        if (u->kind != NodeKind::Utility || u->home_clique < 0) continue;
        const Clique& c = jt.cliques[u->home_clique];
        Sepset family;
        family.size = 1.0;
        for (const Node* q : u->parents.nodes) {
            family.members.push_back(jt.graph.local_of[q->index]);
            family.size *= q->num_states();
        }
        p.assign(static_cast<size_t>(family.size), 0.0);
        walk_sum(clique_walk(jt, c, family.members), c.table.data(), p.data());
        double mass = 0.0, sum = 0.0;
        for (size_t r = 0; r < p.size(); ++r) {
            mass += p[r];
            double x = r < u->func_reals.size() ? u->func_reals[r] : 0.0;
            if (!is_undef(x)) sum += p[r] * x;
        }
        total += mass > 0 ? sum / mass : 0.0;
    }
    return total;
}

std::vector<double> expected_utils(Node& decision) {
    Net& net = *decision.net;
    FindingRecord saved = decision.finding;
    std::vector<double> out(static_cast<size_t>(decision.num_states()), 0.0);
    struct Restore {
        Node& node;
        FindingRecord& saved;
        ~Restore() {
            node.finding = saved;
            findings_changed(node);
        }
    } restore{decision, saved};
    for (int d = 0; d < decision.num_states(); ++d) {
        decision.finding = FindingRecord{};
        decision.finding.state = d;
        findings_changed(decision);
        try {
            update_beliefs(net);
            out[static_cast<size_t>(d)] = expected_utility(net);
        } catch (const Failure& f) {
            clear_report(f.report);  // a decision the findings rule out
            out[static_cast<size_t>(d)] = undef_value();
        }
    }
    return out;
}

double expected_value(Node& node, double* std_dev) {
    const int n = node.num_states();
    double mean = 0.0, square = 0.0;
    for (int i = 0; i < n; ++i) {
        double x;
        if (node.is_discrete()) {
            x = static_cast<size_t>(i) < node.levels.size() ? node.levels[static_cast<size_t>(i)] : i;
        } else {
            double a = node.levels[static_cast<size_t>(i)], b = node.levels[static_cast<size_t>(i) + 1];
            x = std::isinf(a) ? b : std::isinf(b) ? a : (a + b) / 2;
        }
        double p = node.beliefs[static_cast<size_t>(i)];
        mean += p * x;
        square += p * x * x;
    }
    if (std_dev) {
        double variance = square - mean * mean;
        *std_dev = variance > 0 ? std::sqrt(variance) : 0.0;
    }
    return mean;
}

}  // namespace ravelo
