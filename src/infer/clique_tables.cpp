#include "infer/clique_tables.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"

namespace ravelo {
namespace {

constexpr double kPriorLimit = 3e8;

IndexMap make_map(const JunctionTree& jt, const Clique& clique, const Sepset& sepset) {
    const Graph& g = jt.graph;
    const size_t k = clique.members.size();
    // The sepset stride of each clique member (0 when outside the sepset).
    std::vector<std::size_t> sstride(k, 0);
    std::vector<char> inside(k, 0);
    std::size_t step = 1;
    for (size_t j = sepset.members.size(); j-- > 0;) {
        int v = sepset.members[j];
        for (size_t i = 0; i < k; ++i)
            if (clique.members[i] == v) {
                sstride[i] = step;
                inside[i] = 1;
            }
        step *= static_cast<std::size_t>(g.states(v));
    }
    IndexMap map;
    auto states = [&](size_t i) { return static_cast<std::size_t>(g.states(clique.members[i])); };
    size_t first = k;
    map.spread = k > 0 && inside[k - 1];
    // Innermost segment; spread members must also be consecutive in the sepset.
    std::size_t expect = 1;
    while (first > 0 && inside[first - 1] == map.spread && (!map.spread || sstride[first - 1] == expect)) {
        expect *= states(first - 1);
        map.inner *= states(first - 1);
        --first;
    }
    // Middle segment of the other kind, consecutive in the sepset when inside.
    std::size_t middle_stride = map.spread ? 0 : 1;
    if (map.spread) {
        while (first > 0 && !inside[first - 1]) {
            map.middle *= states(first - 1);
            --first;
        }
    } else {
        while (first > 0 && inside[first - 1] && sstride[first - 1] == middle_stride) {
            middle_stride *= states(first - 1);
            map.middle *= states(first - 1);
            --first;
        }
    }
    const std::size_t run = map.inner * map.middle;
    std::size_t runs = run ? static_cast<std::size_t>(clique.size) / run : 0;
    map.run_base.resize(runs);
    std::vector<std::size_t> count(first, 0);
    std::size_t base = 0;
    for (std::size_t r = 0; r < runs; ++r) {
        map.run_base[r] = static_cast<std::uint32_t>(base);
        for (size_t i = first; i-- > 0;) {
            base += sstride[i];
            if (++count[i] < states(i)) break;
            base -= sstride[i] * count[i];
            count[i] = 0;
        }
    }
    return map;
}

// Sum of n floats in double, in four independent lanes so it vectorises.
inline double block_sum(const float* t, std::size_t n) {
    double a = 0, b = 0, c = 0, d = 0;
    std::size_t i = 0;
    for (; i + 4 <= n; i += 4) {
        a += t[i];
        b += t[i + 1];
        c += t[i + 2];
        d += t[i + 3];
    }
    for (; i < n; ++i) a += t[i];
    return (a + b) + (c + d);
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
        multiply_by(clique, make_map(jt, clique, family), table.data());
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

IndexMap make_family_map(const JunctionTree& jt, const Clique& clique, const Sepset& family) {
    return make_map(jt, clique, family);
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
    for (Clique& c : jt.cliques) {
        c.table = {};
        c.from_prior = false;
    }
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
        c.from_prior = false;
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

namespace {

// The inner loops with the inner block length fixed at compile time, for
// the short blocks of nets of two- and three-state nodes.
template <std::size_t N>
void sum_runs(const IndexMap& map, const float* t, double* out) {
    const std::size_t middle = map.middle;
    for (std::uint32_t base : map.run_base) {
        double* o = out + base;
        for (std::size_t j = 0; j < middle; ++j, t += N) {
            if (!map.spread) {
                double s = 0.0;
                for (std::size_t i = 0; i < N; ++i) s += t[i];
                o[j] += s;
            } else {
                for (std::size_t i = 0; i < N; ++i) o[i] += t[i];
            }
        }
    }
}

template <std::size_t N>
void multiply_runs(const IndexMap& map, float* t, const float* src, const float* factor) {
    const std::size_t middle = map.middle;
    for (std::uint32_t base : map.run_base) {
        const float* f = factor + base;
        for (std::size_t j = 0; j < middle; ++j, t += N, src += N) {
            if (!map.spread) {
                const float x = f[j];
                for (std::size_t i = 0; i < N; ++i) t[i] = src[i] * x;
            } else {
                for (std::size_t i = 0; i < N; ++i) t[i] = src[i] * f[i];
            }
        }
    }
}

}  // namespace

void sum_onto(const Clique& clique, const IndexMap& map, double* out, std::size_t out_size) {
    sum_onto(clique.table.data(), map, out, out_size);
}

void sum_onto(const float* t, const IndexMap& map, double* out, std::size_t out_size) {
    std::fill(out, out + out_size, 0.0);
    const std::size_t inner = map.inner, middle = map.middle;
    switch (inner) {
        case 1: return sum_runs<1>(map, t, out);
        case 2: return sum_runs<2>(map, t, out);
        case 3: return sum_runs<3>(map, t, out);
        case 4: return sum_runs<4>(map, t, out);
        default: break;
    }
    if (!map.spread) {
        for (std::uint32_t base : map.run_base) {
            double* o = out + base;
            for (std::size_t j = 0; j < middle; ++j, t += inner) o[j] += block_sum(t, inner);
        }
    } else {
        for (std::uint32_t base : map.run_base) {
            double* o = out + base;
            for (std::size_t j = 0; j < middle; ++j, t += inner)
                for (std::size_t i = 0; i < inner; ++i) o[i] += t[i];
        }
    }
}

void max_onto(const Clique& clique, const IndexMap& map, double* out, std::size_t out_size) {
    std::fill(out, out + out_size, 0.0);
    const float* t = clique.table.data();
    const std::size_t inner = map.inner, middle = map.middle;
    for (std::uint32_t base : map.run_base)
        for (std::size_t j = 0; j < middle; ++j, t += inner)
            for (std::size_t i = 0; i < inner; ++i) {
                double& o = out[map.spread ? base + i : base + j];
                o = std::max(o, static_cast<double>(t[i]));
            }
}

namespace {

// In place, src is t itself, which the compiler must know to vectorise.
template <bool InPlace>
void multiply_entries(const IndexMap& map, float* t, const float* src, const float* factor) {
    if constexpr (InPlace) src = t;
    const std::size_t inner = map.inner, middle = map.middle;
    switch (inner) {
        case 1: return multiply_runs<1>(map, t, src, factor);
        case 2: return multiply_runs<2>(map, t, src, factor);
        case 3: return multiply_runs<3>(map, t, src, factor);
        case 4: return multiply_runs<4>(map, t, src, factor);
        default: break;
    }
    if (!map.spread) {
        for (std::uint32_t base : map.run_base) {
            const float* f = factor + base;
            for (std::size_t j = 0; j < middle; ++j, t += inner, src += inner) {
                const float x = f[j];
                for (std::size_t i = 0; i < inner; ++i) t[i] = src[i] * x;
            }
        }
    } else {
        for (std::uint32_t base : map.run_base) {
            const float* f = factor + base;
            for (std::size_t j = 0; j < middle; ++j, t += inner, src += inner)
                for (std::size_t i = 0; i < inner; ++i) t[i] = src[i] * f[i];
        }
    }
}

}  // namespace

void multiply_by(Clique& clique, const IndexMap& map, const float* factor) {
    multiply_entries<true>(map, clique.table.data(), nullptr, factor);
}

void multiply_by(Clique& clique, const IndexMap& map, const float* factor, const float* src) {
    if (src == clique.table.data()) multiply_entries<true>(map, clique.table.data(), nullptr, factor);
    else multiply_entries<false>(map, clique.table.data(), src, factor);
}

const float* current_entries(const JunctionTree& jt, const Clique& clique) {
    return clique.from_prior ? jt.prior_cliques[static_cast<size_t>(clique.index)].data() : clique.table.data();
}

void restore_from_prior(JunctionTree& jt, Clique& clique) {
    if (!clique.from_prior) return;
    const std::vector<float>& prior = jt.prior_cliques[static_cast<size_t>(clique.index)];
    std::copy(prior.begin(), prior.end(), clique.table.begin());
    clique.from_prior = false;
}

void member_sums(const Clique& clique, int pos, int num_states, double* out) {
    std::fill(out, out + num_states, 0.0);
    const std::size_t inner = clique.stride[static_cast<size_t>(pos)];
    const std::size_t block = inner * static_cast<std::size_t>(num_states);
    const float* t = clique.table.data();
    for (std::size_t o = 0; o < clique.table.size(); o += block)
        for (int j = 0; j < num_states; ++j) {
            out[j] += block_sum(t + o + inner * static_cast<std::size_t>(j), inner);
        }
}

double table_sum(const std::vector<float>& table) { return block_sum(table.data(), table.size()); }

}  // namespace ravelo
