#include "infer/prior_rebuild.h"

#include <algorithm>

#include "infer/clique_tables.h"
#include "infer/table_memory.h"
#include "infer/table_walk.h"

namespace ravelo {
namespace {

// A clique is rebuilt when it is this large and holds at least half of all
// clique entries: its kept prior would then nearly double the memory, while
// rebuilding one clique costs a fraction of an update.  Rebuilding many large
// cliques costs more time than the memory saved is worth.
constexpr double kRebuildFrom = 1 << 22;
// Entries rebuilt at a time, so that every factor multiplies in within cache.
constexpr double kPieceEntries = 1 << 16;

bool all_families_within(const JunctionTree& jt, const Clique& c) {
    std::vector<int> members;
    for (const Node* n : c.homed)
        if (!family_within(jt, c, *n, members)) return false;
    return true;
}

// The message the neighbour across s sent the clique: recorded as sent when
// the neighbour collected into it, else the prior over what the clique sent.
bool incoming_message(const JunctionTree& jt, const Clique& c, const Sepset& s, std::vector<float>& out) {
    const int sender = jt.collected_from[static_cast<size_t>(&s - jt.sepsets.data())];
    const std::vector<float>& sent = jt.collected[static_cast<size_t>(&s - jt.sepsets.data())];
    if (sender < 0 || sent.size() != s.table.size()) return false;
    if (sender != c.index) {
        out = sent;
        return true;
    }
    out.resize(sent.size());
    for (size_t i = 0; i < sent.size(); ++i) out[i] = sent[i] == 0.0f ? 0.0f : s.table[i] / sent[i];
    return true;
}

// The node's table laid out with its family in the clique's order, so that
// multiplying it in walks contiguous runs.
bool family_factor(const JunctionTree& jt, const Clique& c, const Node& n, JunctionTree::Factor& f) {
    std::vector<int> family;
    if (!family_within(jt, c, n, family)) return false;
    const std::vector<float> table = loadable_table(n);
    for (int v : c.members)
        if (std::find(family.begin(), family.end(), v) != family.end()) f.members.push_back(v);
    f.values.assign(table.size(), 1.0f);
    walk_multiply(make_walk(jt.graph, f.members, family, nullptr), f.values.data(), f.values.data(), table.data());
    return true;
}

bool make_factors(JunctionTree& jt, Clique& c, std::vector<JunctionTree::Factor>& factors) {
    for (const Node* n : c.homed) {
        JunctionTree::Factor f;
        if (!family_factor(jt, c, *n, f)) return false;
        factors.push_back(std::move(f));
    }
    bool sent_once = false;  // a root of the prior propagation keeps its prior
    for (const CliqueLink& link : c.links) {
        const Sepset& s = jt.sepsets[static_cast<size_t>(link.sepset)];
        if (jt.collected_from[static_cast<size_t>(link.sepset)] == c.index) sent_once = true;
        JunctionTree::Factor f;
        f.members = s.members;
        if (!incoming_message(jt, c, s, f.values)) return false;
        std::vector<float> kept;
        copy_table(kept, f.values);
        f.values.swap(kept);
        factors.push_back(std::move(f));
    }
    return sent_once;
}

}  // namespace

void plan_rebuilds(JunctionTree& jt) {
    jt.rebuilt.assign(jt.cliques.size(), 0);
    jt.rebuild_factors.assign(jt.cliques.size(), {});
    bool any = false;
    double entries = 0.0;
    for (const Clique& c : jt.cliques) entries += c.size;
    for (const Clique& c : jt.cliques)
        if (c.size >= kRebuildFrom && 2 * c.size >= entries && all_families_within(jt, c)) {
            jt.rebuilt[static_cast<size_t>(c.index)] = 1;
            any = true;
        }
    jt.recording = any;
    jt.collected_from.assign(any ? jt.sepsets.size() : 0, -1);
    jt.collected.assign(any ? jt.sepsets.size() : 0, {});
}

void record_collected(JunctionTree& jt, const Clique& from, const Sepset& s) {
    if (!jt.recording) return;
    const size_t i = static_cast<size_t>(&s - jt.sepsets.data());
    jt.collected_from[i] = from.index;
    jt.collected[i] = s.table;
}

void finish_rebuilds(JunctionTree& jt) {
    if (jt.recording)
        for (Clique& c : jt.cliques) {
            const size_t i = static_cast<size_t>(c.index);
            if (!jt.rebuilt[i]) continue;
            if (!make_factors(jt, c, jt.rebuild_factors[i])) {
                jt.rebuilt[i] = 0;
                jt.rebuild_factors[i] = {};
            }
        }
    jt.recording = false;
    jt.collected_from = {};
    jt.collected = {};
}

void drop_rebuilds(JunctionTree& jt) {
    jt.rebuilt = {};
    jt.rebuild_factors = {};
    jt.recording = false;
    jt.collected_from = {};
    jt.collected = {};
}

bool is_rebuilt(const JunctionTree& jt, const Clique& c) {
    return static_cast<size_t>(c.index) < jt.rebuilt.size() && jt.rebuilt[static_cast<size_t>(c.index)];
}

void rebuild_prior(JunctionTree& jt, Clique& c, const std::function<void(const int*)>& then) {
    // The outermost free members are fixed in turn until a piece fits in cache.
    std::vector<int> fixed = jt.fixed;
    std::vector<int> outer;
    double piece = 1.0;
    for (int v : c.members)
        if (fixed[static_cast<size_t>(v)] < 0) piece *= jt.graph.states(v);
    for (int v : c.members) {
        if (piece <= kPieceEntries) break;
        if (fixed[static_cast<size_t>(v)] >= 0) continue;
        outer.push_back(v);
        piece /= jt.graph.states(v);
    }
    for (int v : outer) fixed[static_cast<size_t>(v)] = 0;
    const std::vector<JunctionTree::Factor>& factors = jt.rebuild_factors[static_cast<size_t>(c.index)];
    float* t = c.table.data();
    for (;;) {
        walk_fill(make_walk(jt.graph, c.members, {}, fixed.data()), t, 1.0f);
        for (const JunctionTree::Factor& f : factors)
            walk_multiply(make_walk(jt.graph, c.members, f.members, fixed.data()), t, t, f.values.data());
        if (then) then(fixed.data());
        size_t i = outer.size();
        for (;;) {
            if (i == 0) {
                c.from_prior = false;
                return;
            }
            --i;
            int& s = fixed[static_cast<size_t>(outer[i])];
            if (++s < jt.graph.states(outer[i])) break;
            s = 0;
        }
    }
}

}  // namespace ravelo
