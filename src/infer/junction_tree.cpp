#include "infer/junction_tree.h"

#include <algorithm>

#include "base/failure.h"
#include "base/mark.h"

namespace ravelo {
namespace {

void join_cliques(const Graph& g, std::vector<Clique>& cliques, std::vector<Sepset>& sepsets) {
    std::vector<std::uint64_t> stamp(g.nodes.size(), 0), in_shared(g.nodes.size(), 0);
    const std::uint64_t met = fresh_mark();
    std::vector<int> shared;
    for (size_t k = 0; k < cliques.size(); ++k) {
        Clique& clique = cliques[k];
        shared.clear();
        for (int v : clique.members)
            if (stamp[v] == met) shared.push_back(v);
        for (int v : clique.members) stamp[v] = met;
        if (k == 0) continue;
        const std::uint64_t probe = fresh_mark();
        for (int v : shared) in_shared[v] = probe;
        int found = -1;
        for (size_t d = k; d-- > 0;) {
            const Clique& other = cliques[d];
            if (other.members.size() < shared.size()) continue;
            size_t hits = 0;
            for (int v : other.members)
                if (in_shared[v] == probe) ++hits;
            if (hits == shared.size()) {
                found = static_cast<int>(d);
                break;
            }
        }
        RAVELO_ASSERT(found >= 0);
        Sepset s;
        s.near = found;
        s.far = static_cast<int>(k);
        s.members = shared;
        for (int v : shared) s.size *= g.states(v);
        int id = static_cast<int>(sepsets.size());
        sepsets.push_back(std::move(s));
        cliques[found].links.push_back({static_cast<int>(k), id});
        clique.links.push_back({found, id});
    }
}

bool holds_family(const JunctionTree& jt, const Node& node,
                  const std::vector<std::uint64_t>& stamp, std::uint64_t in_clique) {
    for (const Node* p : node.parents.nodes) {
        if (p->kind == NodeKind::Constant) continue;
        int w = jt.graph.local_of[p->index];
        if (w < 0 || stamp[w] != in_clique) return false;
    }
    return true;
}

void assign_home_cliques(JunctionTree& jt, Net& net) {
    const Graph& g = jt.graph;
    std::vector<std::uint64_t> stamp(g.nodes.size(), 0);
    for (Node* n : net.nodes.nodes) n->home_clique = -1;
    std::vector<double> home_size(net.nodes.nodes.size(), 0.0);
    for (Clique& clique : jt.cliques) {
        std::uint64_t in_clique = fresh_mark();
        for (int v : clique.members) stamp[v] = in_clique;
        auto consider = [&](Node* node) {
            if (!holds_family(jt, *node, stamp, in_clique)) return;
            if (node->home_clique < 0 || clique.size < home_size[node->index]) {
                node->home_clique = clique.index;
                home_size[node->index] = clique.size;
            }
        };
        for (int v : clique.members)
            if (g.nodes[v]->kind != NodeKind::Decision) consider(g.nodes[v]);
        for (Node* n : net.nodes.nodes)
            if (g.local_of[n->index] < 0) consider(n);
    }
    // A decision has no table of its own to load; it lives with its smallest clique.
    for (int v = 0; v < g.size(); ++v) {
        Node* n = g.nodes[v];
        if (n->kind == NodeKind::Decision) n->home_clique = jt.belief_clique[v];
        RAVELO_ASSERT(n->home_clique >= 0);
    }
    for (Clique& clique : jt.cliques) {
        clique.rebuild = true;
        clique.homed.clear();
    }
    for (Node* n : net.nodes.nodes)
        if (n->home_clique >= 0 && g.local_of[n->index] >= 0)
            jt.cliques[n->home_clique].homed.push_back(n);
}

void choose_belief_cliques(JunctionTree& jt) {
    jt.belief_clique.assign(jt.graph.nodes.size(), -1);
    for (const Clique& clique : jt.cliques)
        for (int v : clique.members) {
            int& best = jt.belief_clique[v];
            if (best < 0 || clique.size < jt.cliques[best].size) best = clique.index;
        }
}

}  // namespace

int local_index(const JunctionTree& jt, const Node& node) {
    if (node.index < 0 || node.index >= static_cast<int>(jt.graph.local_of.size())) return -1;
    return jt.graph.local_of[node.index];
}

std::vector<Clique> make_cliques(const Graph& g, std::vector<std::vector<int>> cliques,
                                 const std::vector<int>* position = nullptr) {
    std::vector<Clique> out(cliques.size());
    for (size_t k = 0; k < cliques.size(); ++k) {
        Clique& c = out[k];
        c.index = static_cast<int>(k);
        c.members = std::move(cliques[k]);
        if (position)
            std::sort(c.members.begin(), c.members.end(),
                      [&](int a, int b) { return (*position)[a] > (*position)[b]; });
        c.stride.assign(c.members.size(), 1);
        for (size_t i = c.members.size(); i-- > 0;) {
            if (i + 1 < c.members.size())
                c.stride[i] = c.stride[i + 1] * static_cast<size_t>(g.states(c.members[i + 1]));
        }
        c.size = weight_of(g, c.members.data(), c.members.size());
    }
    return out;
}

double joined_size(const Graph& g, std::vector<std::vector<int>> members) {
    std::vector<Clique> cliques = make_cliques(g, std::move(members));
    std::vector<Sepset> sepsets;
    join_cliques(g, cliques, sepsets);
    double total = 0.0;
    for (const Clique& c : cliques) total += c.size;
    for (const Sepset& s : sepsets) total += s.size;
    return total;
}

void build_junction_tree(JunctionTree& jt, Net& net, std::vector<std::vector<int>> cliques,
                         const std::vector<int>& position) {
    jt.cliques = make_cliques(jt.graph, std::move(cliques), &position);
    join_cliques(jt.graph, jt.cliques, jt.sepsets);
    choose_belief_cliques(jt);
    assign_home_cliques(jt, net);
    jt.applied.assign(jt.graph.nodes.size(), {});
    jt.fixed.assign(jt.graph.nodes.size(), -1);
    jt.expected_utils.assign(jt.graph.nodes.size(), {});
}

double total_size(const JunctionTree& jt) {
    double total = 0.0;
    for (const Clique& c : jt.cliques) total += c.size;
    for (const Sepset& s : jt.sepsets) total += s.size;
    return total;
}

namespace {
int possible_states(const Node& node) {
    const FindingRecord& f = node.finding;
    if (f.state >= 0) return 1;
    if (f.likelihood.empty()) return node.num_states();
    int count = 0;
    for (float x : f.likelihood)
        if (x > 0.0f) ++count;
    return count;
}
double reduced_size(const JunctionTree& jt, const std::vector<int>& members) {
    double size = 1.0;
    for (int v : members) size *= possible_states(*jt.graph.nodes[v]);
    return size;
}
}  // namespace

double size_with_findings(const JunctionTree& jt) {
    double total = 0.0;
    for (const Clique& c : jt.cliques) total += reduced_size(jt, c.members);
    for (const Sepset& s : jt.sepsets) total += reduced_size(jt, s.members);
    return total;
}

}  // namespace ravelo
