#include "infer/update.h"

#include <algorithm>

#include "base/failure.h"
#include "base/text.h"
#include "infer/clique_tables.h"
#include "infer/compile.h"
#include "infer/prior_rebuild.h"
#include "infer/propagate.h"
#include "infer/table_memory.h"

namespace ravelo {
namespace {

int hard_state(const Node& node) {
    const int s = node.finding.state;
    return s >= 0 && s < node.num_states() ? s : -1;
}

// A hard finding multiplies nothing: from now on every clique and sepset
// holding the node works only on the entries of the observed state.  Only the
// home clique counts as changed: every other clique holding the node reaches
// the root through a sepset holding it, or lies on the home clique's way there.
void apply_finding(JunctionTree& jt, int v, std::vector<float> likelihood) {
    Node* node = jt.graph.nodes[v];
    Clique& c = jt.cliques[node->home_clique];
    const int state = hard_state(*node);
    if (state >= 0) {
        jt.fixed[static_cast<size_t>(v)] = state;
    } else {
        restore_from_prior(jt, c);
        walk_multiply(clique_walk(jt, c, {v}), c.table.data(), c.table.data(), likelihood.data());
    }
    c.state = kChanged;
    jt.applied[v] = std::move(likelihood);
}

void apply_all_findings(JunctionTree& jt) {
    for (int v = 0; v < jt.graph.size(); ++v) {
        std::vector<float> likelihood = finding_likelihood(*jt.graph.nodes[v]);
        if (!likelihood.empty()) apply_finding(jt, v, std::move(likelihood));
    }
}

// The propagated tables without findings: made once after the node tables
// change, then copied in at each reload.
bool ensure_prior(JunctionTree& jt) {
    if (jt.prior_valid) return true;
    if (!jt.keep_prior) return false;
    load_node_tables(jt);
    for (Clique& c : jt.cliques) c.state = kChanged;
    plan_rebuilds(jt);
    double probability = 1.0;
    if (propagate(jt, probability) < 0) {
        drop_rebuilds(jt);
        return false;
    }
    finish_rebuilds(jt);
    jt.prior_cliques.resize(jt.cliques.size());
    jt.prior_sepsets.resize(jt.sepsets.size());
    for (size_t i = 0; i < jt.cliques.size(); ++i) {
        if (is_rebuilt(jt, jt.cliques[i])) jt.prior_cliques[i] = {};
        else copy_table(jt.prior_cliques[i], jt.cliques[i].table);
    }
    for (size_t i = 0; i < jt.sepsets.size(); ++i) copy_table(jt.prior_sepsets[i], jt.sepsets[i].table);
    jt.prior_valid = true;
    return true;
}

void load_tables_and_findings(Net& net, JunctionTree& jt) {
    std::fill(jt.fixed.begin(), jt.fixed.end(), -1);
    if (ensure_prior(jt)) {
        for (Clique& c : jt.cliques) {
            c.from_prior = true;  // copied (or rebuilt) when first changed
            c.state = kUnchanged;
            c.held = -1;
        }
        for (auto& a : jt.applied) a.clear();
        for (Sepset& s : jt.sepsets) s.from_prior = true;  // read from the prior until replaced
        apply_all_findings(jt);
    } else {
        load_node_tables(jt);
        for (Clique& c : jt.cliques) c.state = kChanged;
        apply_all_findings(jt);
    }
    jt.pending.clear();
    net.findings_probability = 1.0;
}

// Multiplies in findings added since the last load; false when one was
// changed or retracted, which needs a reload.
bool apply_pending(JunctionTree& jt) {
    for (int v : jt.pending) {
        std::vector<float> likelihood = finding_likelihood(*jt.graph.nodes[v]);
        if (likelihood == jt.applied[v]) continue;
        if (!jt.applied[v].empty()) return false;
        apply_finding(jt, v, std::move(likelihood));
    }
    jt.pending.clear();
    return true;
}

// A table with conditions declared impossible is the other way to reach zero: the findings
// may be consistent and one of those conditions possible after all.
bool declares_impossible_conditions(const Net& net) {
    for (const Node* n : net.nodes.nodes)
        if (std::find(n->cpt.begin(), n->cpt.end(), kImpossibleProb) != n->cpt.end()) return true;
    return false;
}

[[noreturn]] void fail_inconsistent(const Net& net, int number) {
    fail(number, "according to this model, the >-finding-(s) entered are inconsistent%s",
         declares_impossible_conditions(net) ? " (or a condition declared impossible is actually possible)" : "");
}

// False when the findings have probability zero (the tables then hold zeros).
bool propagate_step(Net& net, JunctionTree& jt) {
    if (!apply_pending(jt)) {
        load_tables_and_findings(net, jt);
        net.junction_step = kTablesLoaded;
    }
    int result = propagate(jt, net.findings_probability);
    if (result == kPropagationOutOfMemory) fail_out_of_memory(2698, "to do belief updating");
    if (result == kPropagationFault) RAVELO_ASSERT(result != kPropagationFault);
    if (result == kZeroProbability) net.findings_probability = 0.0;
    if (net.findings_probability > 1.0) net.findings_probability = 1.0;
    if (net.findings_probability == 0.0) {
        // The tables now hold zeros: the next query reloads them.
        net.junction_step = kTablesAllocated;
        return false;
    }
    net.junction_step = kPropagatedStep;
    return true;
}

}  // namespace

JunctionTree* tree_of(const Net& net) {
    return net.junction_step > kNotCompiled ? net.jtree.get() : nullptr;
}

std::vector<float> finding_likelihood(const Node& node) {
    const FindingRecord& f = node.finding;
    if (f.state >= 0 && f.state < node.num_states()) {
        std::vector<float> v(static_cast<size_t>(node.num_states()), 0.0f);
        v[static_cast<size_t>(f.state)] = 1.0f;
        return v;
    }
    return f.likelihood;
}

void findings_changed(Node& node) {
    Net& net = *node.net;
    // Without a tree no node holds current beliefs.
    if (net.jtree && net.jtree->beliefs_read) {
        for (Node* n : net.nodes.nodes) n->beliefs_current = false;
        net.jtree->beliefs_read = false;
    }
    JunctionTree* jt = tree_of(net);
    if (!jt) return;
    int v = local_index(*jt, node);
    if (v >= 0) jt->pending.push_back(v);
    // Findings changed again and again between updates (cases drawn or
    // learned one after another) must not grow the list without bound.
    if (jt->pending.size() > 2 * static_cast<size_t>(jt->graph.size()) + 16) {
        std::sort(jt->pending.begin(), jt->pending.end());
        jt->pending.erase(std::unique(jt->pending.begin(), jt->pending.end()), jt->pending.end());
    }
    if (net.junction_step > kTablesLoaded) net.junction_step = kTablesLoaded;
}

void update_beliefs(Net& net) {
    switch (update_beliefs_if_possible(net)) {
        case kStalePropagation: fail_inconsistent(net, kZeroFindingsNumber);
        case kImpossibleFindings: fail_inconsistent(net, 2378);
        default: break;
    }
}

int update_beliefs_if_possible(Net& net) {
    JunctionTree* jt = tree_of(net);
    if (net.junction_step == kPropagatedStep && jt && jt->pending.empty()) return kBeliefsUpdated;
    if (!jt) fail(2077, "can't update beliefs because >-net '%s' needs to be compiled", net.name.c_str());
    if (net.junction_step == kCompiled) {
        check_table_memory(net, *jt, false);
        allocate_tables(*jt);
        net.findings_probability = 1.0;
        net.junction_step = kTablesAllocated;
    }
    if (net.junction_step == kReloadTables) {
        jt->prior_valid = false;
        net.junction_step = kTablesAllocated;
    }
    if (net.junction_step == kTablesAllocated) {
        load_tables_and_findings(net, *jt);
        net.junction_step = kTablesLoaded;
    }
    if (net.junction_step == kTablesLoaded && !propagate_step(net, *jt)) return kStalePropagation;
    return net.findings_probability == 0.0 ? kImpossibleFindings : kBeliefsUpdated;
}

void restart_from_prior(Net& net) {
    if (net.junction_step > kTablesAllocated) net.junction_step = kTablesAllocated;
}

void read_beliefs(Node& node) {
    JunctionTree& jt = *node.net->jtree;
    int v = local_index(jt, node);
    const int n = node.num_states();
    node.beliefs.assign(static_cast<size_t>(n), 0.0f);
    if (v < 0 || n == 0) return;
    const Clique& c = jt.cliques[jt.belief_clique[v]];
    double* sums = jt.sums.data();  // sized for the widest node at allocation
    member_sums(jt, c, v, n, sums);
    double total = 0.0;
    for (int i = 0; i < n; ++i) total += sums[i];
    if (total > 0.0)
        for (int i = 0; i < n; ++i) node.beliefs[static_cast<size_t>(i)] = static_cast<float>(sums[i] / total);
    node.beliefs_current = true;
    jt.beliefs_read = true;
}

}  // namespace ravelo
