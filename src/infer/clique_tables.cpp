#include "infer/clique_tables.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "infer/prior_rebuild.h"
#include "infer/table_memory.h"

namespace ravelo {
namespace {

constexpr double kPriorLimit = 3e8;

void fix_row(float* row, int n) {
    bool missing = false, impossible = false;
    for (int i = 0; i < n; ++i) {
        if (row[i] == kMissingProb || std::isnan(row[i])) missing = true;
        else if (row[i] < 0.0f) impossible = true;
    }
    if (missing) std::fill(row, row + n, 1.0f / static_cast<float>(n));
    else if (impossible) std::fill(row, row + n, 0.0f);
}

// The node's family, in table order, when all of it lies in the clique once.
bool family_in_clique(const JunctionTree& jt, const Clique& clique, const Node& node, Sepset& family) {
    for (const Node* p : node.parents.nodes) family.members.push_back(jt.graph.local_of[p->index]);
    family.members.push_back(jt.graph.local_of[node.index]);
    for (size_t i = 0; i < family.members.size(); ++i) {
        int v = family.members[i];
        if (v < 0 || member_position(clique, v) < 0) return false;
        for (size_t j = 0; j < i; ++j)
            if (family.members[j] == v) return false;
    }
    return true;
}

void load_one(const JunctionTree& jt, Clique& clique, const Node& node) {
    const Graph& g = jt.graph;
    std::vector<float> table = loadable_table(node);
    Sepset family;
    if (family_in_clique(jt, clique, node, family)) {
        TableWalk walk = make_walk(g, clique.members, family.members, nullptr);
        walk_multiply(walk, clique.table.data(), clique.table.data(), table.data());
        return;
    }
    const size_t k = clique.members.size();
    std::vector<std::size_t> tstride(k, 0);
    std::size_t fixed = 0;  // offset of parents outside the clique (constants)
    std::size_t step = static_cast<std::size_t>(node.num_states());
    int self = g.local_of[node.index];
    for (size_t i = 0; i < k; ++i)
        if (clique.members[i] == self) tstride[i] += 1;
    const auto& ps = node.parents.nodes;
    for (size_t j = ps.size(); j-- > 0;) {
        int w = g.local_of[ps[j]->index];
        size_t i = 0;
        while (i < k && clique.members[i] != w) ++i;
        if (i < k) tstride[i] += step;
        else if (ps[j]->finding.state > 0) fixed += step * static_cast<std::size_t>(ps[j]->finding.state);
        step *= static_cast<std::size_t>(ps[j]->num_states());
    }
    std::vector<int> count(k, 0);
    std::size_t at = fixed;
    float* t = clique.table.data();
    const std::size_t size = clique.table.size();
    for (std::size_t e = 0; e < size; ++e) {
        t[e] *= table[at];
        for (size_t i = k; i-- > 0;) {
            at += tstride[i];
            if (++count[i] < g.states(clique.members[i])) break;
            at -= tstride[i] * static_cast<std::size_t>(count[i]);
            count[i] = 0;
        }
    }
}

}  // namespace

bool family_within(const JunctionTree& jt, const Clique& clique, const Node& node, std::vector<int>& members) {
    Sepset family;
    const bool within = family_in_clique(jt, clique, node, family);
    members = std::move(family.members);
    return within;
}

int member_position(const Clique& clique, int local) {
    for (size_t i = 0; i < clique.members.size(); ++i)
        if (clique.members[i] == local) return static_cast<int>(i);
    return -1;
}

std::vector<float> loadable_table(const Node& node) {
    const int n = node.num_states();
    const std::size_t rows = static_cast<std::size_t>(table_rows(node));
    std::vector<float> table(rows * static_cast<std::size_t>(n));
    if (!node.func_states.empty() && node.func_states.size() == rows) {
        std::fill(table.begin(), table.end(), 0.0f);
        for (std::size_t r = 0; r < rows; ++r) {
            int s = node.func_states[r];
            if (s >= 0 && s < n) table[r * static_cast<std::size_t>(n) + static_cast<std::size_t>(s)] = 1.0f;
            else std::fill_n(table.begin() + static_cast<long>(r * static_cast<std::size_t>(n)), n, 1.0f / static_cast<float>(n));
        }
    } else if (node.cpt.size() == table.size()) {
        table = node.cpt;
        for (std::size_t r = 0; r < rows; ++r) fix_row(table.data() + r * static_cast<std::size_t>(n), n);
    } else {
        std::fill(table.begin(), table.end(), n ? 1.0f / static_cast<float>(n) : 0.0f);
    }
    return table;
}

void allocate_tables(JunctionTree& jt) {
    std::size_t widest = 1;
    // Past this the propagated prior tables would cost more memory than reloading saves.
    jt.keep_prior = total_size(jt) <= kPriorLimit;
    for (Clique& c : jt.cliques) fill_table(c.table, static_cast<std::size_t>(c.size), 0.0f);
    for (Sepset& s : jt.sepsets) {
        fill_table(s.table, static_cast<std::size_t>(s.size), 1.0f);
        widest = std::max(widest, s.table.size());
    }
    for (const Clique& c : jt.cliques)
        for (size_t i = 0; i < c.members.size(); ++i)
            widest = std::max(widest, static_cast<std::size_t>(jt.graph.states(c.members[i])));
    fill_table(jt.sums, widest, 0.0);
    fill_table(jt.ratio, widest, 0.0f);
    jt.tables_allocated = true;
}

void free_tables(JunctionTree& jt) {
    for (Clique& c : jt.cliques) {
        c.table = {};
        c.held_message = {};
        c.held = -1;
        c.from_prior = false;
    }
    for (Sepset& s : jt.sepsets) {
        s.table = {};
        s.fresh = {};
        s.presummed = false;
        s.from_prior = false;
    }
    jt.prior_cliques = {};
    jt.prior_sepsets = {};
    jt.rebuilt = {};
    jt.rebuild_factors = {};
    jt.prior_valid = false;
    jt.tables_allocated = false;
}

void load_node_tables(JunctionTree& jt) {
    for (Clique& c : jt.cliques) {
        std::fill(c.table.begin(), c.table.end(), 1.0f);
        c.from_prior = false;
        c.held = -1;
        for (const Node* n : c.homed) load_one(jt, c, *n);
        c.rebuild = false;
    }
    for (Sepset& s : jt.sepsets) {
        std::fill(s.table.begin(), s.table.end(), 1.0f);
        s.from_prior = false;
    }
    for (auto& a : jt.applied) a.clear();
}

void multiply_by_states(Clique& clique, int pos, int num_states, const float* factor) {
    const std::size_t inner = clique.stride[static_cast<size_t>(pos)];
    const std::size_t block = inner * static_cast<std::size_t>(num_states);
    float* t = clique.table.data();
    for (std::size_t o = 0; o < clique.table.size(); o += block)
        for (int j = 0; j < num_states; ++j) {
            const float f = factor[j];
            float* run = t + o + inner * static_cast<std::size_t>(j);
            for (std::size_t i = 0; i < inner; ++i) run[i] *= f;
        }
}

TableWalk clique_walk(const JunctionTree& jt, const Clique& clique, const std::vector<int>& target) {
    return make_walk(jt.graph, clique.members, target, jt.fixed.data());
}

const TableWalk& sepset_walk(const JunctionTree& jt, const Sepset& sepset) {
    const std::size_t k = sepset.members.size();
    bool same = sepset.walk_made;
    for (std::size_t i = 0; same && i < k; ++i)
        same = sepset.walk_fixed[i] == jt.fixed[static_cast<std::size_t>(sepset.members[i])];
    if (!same) {
        sepset.walk = make_walk(jt.graph, sepset.members, sepset.members, jt.fixed.data());
        sepset.walk_fixed.resize(k);
        for (std::size_t i = 0; i < k; ++i)
            sepset.walk_fixed[i] = jt.fixed[static_cast<std::size_t>(sepset.members[i])];
        sepset.walk_made = true;
    }
    return sepset.walk;
}

const float* current_entries(const JunctionTree& jt, const Clique& clique) {
    RAVELO_ASSERT(!clique.from_prior || !is_rebuilt(jt, clique));
    return clique.from_prior ? jt.prior_cliques[static_cast<size_t>(clique.index)].data() : clique.table.data();
}

void restore_from_prior(JunctionTree& jt, Clique& clique) {
    if (!clique.from_prior) return;
    if (is_rebuilt(jt, clique)) {
        rebuild_prior(jt, clique);
        return;
    }
    const std::vector<float>& prior = jt.prior_cliques[static_cast<size_t>(clique.index)];
    walk_copy(clique_walk(jt, clique, {}), clique.table.data(), prior.data());
    clique.from_prior = false;
}

void restore_from_prior(JunctionTree& jt, Sepset& sepset) {
    if (!sepset.from_prior) return;
    const std::vector<float>& prior = jt.prior_sepsets[static_cast<size_t>(&sepset - jt.sepsets.data())];
    walk_copy(sepset_walk(jt, sepset), sepset.table.data(), prior.data());
    sepset.from_prior = false;
}

void member_sums(const JunctionTree& jt, const Clique& clique, int local, int num_states, double* out) {
    std::fill(out, out + num_states, 0.0);
    walk_sum(clique_walk(jt, clique, {local}), current_entries(jt, clique), out);
}

double clique_total(const JunctionTree& jt, const Clique& clique) {
    return walk_total(clique_walk(jt, clique, {}), current_entries(jt, clique));
}

}  // namespace ravelo
