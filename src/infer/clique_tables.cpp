#include "infer/clique_tables.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"

namespace ravelo {
namespace {

IndexMap make_map(const JunctionTree& jt, const Clique& clique, const Sepset& sepset) {
    const Graph& g = jt.graph;
    const size_t k = clique.members.size();
    // The sepset stride of each clique member (0 when outside the sepset).
    std::vector<std::size_t> sstride(k, 0);
    std::size_t step = 1;
    for (size_t j = sepset.members.size(); j-- > 0;) {
        int v = sepset.members[j];
        for (size_t i = 0; i < k; ++i)
            if (clique.members[i] == v) sstride[i] = step;
        step *= static_cast<std::size_t>(g.states(v));
    }
    IndexMap map;
    size_t first = k;  // first member of the fastest-varying run
    if (k > 0 && sstride[k - 1] == 0) {
        while (first > 0 && sstride[first - 1] == 0) --first;
    } else {
        map.spread = true;
        std::size_t expect = 1;
        while (first > 0 && sstride[first - 1] == expect) {
            expect *= static_cast<std::size_t>(g.states(clique.members[first - 1]));
            --first;
        }
    }
    map.inner = 1;
    for (size_t i = first; i < k; ++i) map.inner *= static_cast<std::size_t>(g.states(clique.members[i]));
    std::size_t runs = map.inner ? static_cast<std::size_t>(clique.size) / map.inner : 0;
    map.run_base.resize(runs);
    std::vector<int> count(first, 0);
    std::size_t base = 0;
    for (std::size_t r = 0; r < runs; ++r) {
        map.run_base[r] = static_cast<std::uint32_t>(base);
        for (size_t i = first; i-- > 0;) {
            base += sstride[i];
            if (++count[i] < g.states(clique.members[i])) break;
            base -= sstride[i] * static_cast<std::size_t>(count[i]);
            count[i] = 0;
        }
    }
    return map;
}

void fix_row(float* row, int n) {
    bool missing = false, impossible = false;
    for (int i = 0; i < n; ++i) {
        if (row[i] == kMissingProb || std::isnan(row[i])) missing = true;
        else if (row[i] < 0.0f) impossible = true;
    }
    if (missing) std::fill(row, row + n, 1.0f / static_cast<float>(n));
    else if (impossible) std::fill(row, row + n, 0.0f);
}

void load_one(const JunctionTree& jt, Clique& clique, const Node& node) {
    const Graph& g = jt.graph;
    std::vector<float> table = loadable_table(node);
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
    for (Clique& c : jt.cliques) c.table.assign(static_cast<std::size_t>(c.size), 0.0f);
    for (Sepset& s : jt.sepsets) {
        s.table.assign(static_cast<std::size_t>(s.size), 1.0f);
        s.near_map = make_map(jt, jt.cliques[s.near], s);
        s.far_map = make_map(jt, jt.cliques[s.far], s);
        widest = std::max(widest, s.table.size());
    }
    for (const Clique& c : jt.cliques)
        for (size_t i = 0; i < c.members.size(); ++i)
            widest = std::max(widest, static_cast<std::size_t>(jt.graph.states(c.members[i])));
    jt.sums.assign(widest, 0.0);
    jt.ratio.assign(widest, 0.0f);
    jt.tables_allocated = true;
}

void free_tables(JunctionTree& jt) {
    for (Clique& c : jt.cliques) c.table = {};
    for (Sepset& s : jt.sepsets) {
        s.table = {};
        s.near_map = {};
        s.far_map = {};
    }
    jt.prior_cliques = {};
    jt.prior_sepsets = {};
    jt.prior_valid = false;
    jt.tables_allocated = false;
}

void load_node_tables(JunctionTree& jt) {
    for (Clique& c : jt.cliques) {
        std::fill(c.table.begin(), c.table.end(), 1.0f);
        for (const Node* n : c.homed) load_one(jt, c, *n);
        c.rebuild = false;
    }
    for (Sepset& s : jt.sepsets) std::fill(s.table.begin(), s.table.end(), 1.0f);
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

void sum_onto(const Clique& clique, const IndexMap& map, double* out, std::size_t out_size) {
    std::fill(out, out + out_size, 0.0);
    const float* t = clique.table.data();
    const std::size_t inner = map.inner;
    if (!map.spread) {
        for (std::uint32_t base : map.run_base) {
            double s = 0.0;
            for (std::size_t i = 0; i < inner; ++i) s += t[i];
            out[base] += s;
            t += inner;
        }
    } else {
        for (std::uint32_t base : map.run_base) {
            double* o = out + base;
            for (std::size_t i = 0; i < inner; ++i) o[i] += t[i];
            t += inner;
        }
    }
}

void max_onto(const Clique& clique, const IndexMap& map, double* out, std::size_t out_size) {
    std::fill(out, out + out_size, 0.0);
    const float* t = clique.table.data();
    const std::size_t inner = map.inner;
    for (std::uint32_t base : map.run_base) {
        for (std::size_t i = 0; i < inner; ++i) {
            double& o = out[map.spread ? base + i : base];
            o = std::max(o, static_cast<double>(t[i]));
        }
        t += inner;
    }
}

void multiply_by(Clique& clique, const IndexMap& map, const float* factor) {
    float* t = clique.table.data();
    const std::size_t inner = map.inner;
    if (!map.spread) {
        for (std::uint32_t base : map.run_base) {
            const float f = factor[base];
            for (std::size_t i = 0; i < inner; ++i) t[i] *= f;
            t += inner;
        }
    } else {
        for (std::uint32_t base : map.run_base) {
            const float* f = factor + base;
            for (std::size_t i = 0; i < inner; ++i) t[i] *= f[i];
            t += inner;
        }
    }
}

void member_sums(const Clique& clique, int pos, int num_states, double* out) {
    std::fill(out, out + num_states, 0.0);
    const std::size_t inner = clique.stride[static_cast<size_t>(pos)];
    const std::size_t block = inner * static_cast<std::size_t>(num_states);
    const float* t = clique.table.data();
    for (std::size_t o = 0; o < clique.table.size(); o += block)
        for (int j = 0; j < num_states; ++j) {
            const float* run = t + o + inner * static_cast<std::size_t>(j);
            double s = 0.0;
            for (std::size_t i = 0; i < inner; ++i) s += run[i];
            out[j] += s;
        }
}

double table_sum(const std::vector<float>& table) {
    double s = 0.0;
    for (float x : table) s += x;
    return s;
}

}  // namespace ravelo
