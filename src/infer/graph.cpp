#include "infer/graph.h"

#include <cstring>

#include "base/mark.h"

namespace ravelo {

bool takes_part_in_cliques(const Node& node) { return node.kind != NodeKind::Utility; }

bool name_before(const Node* a, const Node* b) {
    int c = std::strncmp(a->name.c_str(), b->name.c_str(), kMaxNameLength);
    if (c != 0) return c < 0;
    return a->index < b->index;
}

Graph build_graph(const Net& net) {
    Graph g;
    g.local_of.assign(net.nodes.nodes.size(), -1);
    for (Node* n : net.nodes.nodes)
        if (takes_part_in_cliques(*n)) {
            g.local_of[static_cast<size_t>(n->index)] = g.size();
            g.nodes.push_back(n);
        }
    g.neighbours.resize(g.nodes.size());
    std::vector<std::uint64_t> seen(g.nodes.size(), 0);
    for (int v = 0; v < g.size(); ++v) {
        const Node* node = g.nodes[static_cast<size_t>(v)];
        std::uint64_t stamp = fresh_mark();
        seen[static_cast<size_t>(v)] = stamp;
        auto& out = g.neighbours[static_cast<size_t>(v)];
        auto join = [&](const Node* other) {
            int w = g.local_of[static_cast<size_t>(other->index)];
            if (w < 0 || seen[static_cast<size_t>(w)] == stamp) return;
            seen[static_cast<size_t>(w)] = stamp;
            out.push_back(w);
        };
        for (const Node* p : node->parents.nodes) join(p);
        for (const Node* c : node->children.nodes) {
            join(c);
            for (const Node* co : c->parents.nodes) join(co);
        }
    }
    return g;
}

double weight_of(const Graph& g, const int* set, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        if (g.states(set[i]) == 0) return 0.0;
    double w = 1.0;
    for (std::size_t i = 0; i < count; ++i) {
        double n = g.states(set[i]);
        if (kWeightCap / n <= w) return kWeightCap;
        w *= n;
    }
    return w;
}

}  // namespace ravelo
