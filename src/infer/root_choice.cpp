#include "infer/root_choice.h"

namespace ravelo {
namespace {

double slice_size(const JunctionTree& jt, const Clique& c) {
    double size = 1.0;
    for (int v : c.members)
        if (jt.fixed[static_cast<size_t>(v)] < 0) size *= jt.graph.states(v);
    return size;
}

// The cliques of the piece holding 'start' in breadth-first order, with the
// index of each one's parent in that order (-1 for the first).
void walk_piece(const JunctionTree& jt, int start, std::vector<char>& seen, std::vector<int>& order,
                std::vector<int>& parent) {
    order.assign(1, start);
    parent.assign(1, -1);
    seen[static_cast<size_t>(start)] = 1;
    for (size_t i = 0; i < order.size(); ++i)
        for (const CliqueLink& link : jt.cliques[static_cast<size_t>(order[i])].links)
            if (!seen[static_cast<size_t>(link.neighbour)]) {
                seen[static_cast<size_t>(link.neighbour)] = 1;
                order.push_back(link.neighbour);
                parent.push_back(static_cast<int>(i));
            }
}

}  // namespace

void choose_roots(JunctionTree& jt) {
    std::vector<char> seen(jt.cliques.size(), 0);
    std::vector<int> order, parent, changed_below, branches;
    for (Clique& c : jt.cliques) c.waits = false;
    for (size_t start = 0; start < jt.cliques.size(); ++start) {
        if (seen[start]) continue;
        walk_piece(jt, static_cast<int>(start), seen, order, parent);
        const size_t n = order.size();
        changed_below.assign(n, 0);
        branches.assign(n, 0);  // branches below holding changed cliques
        for (size_t i = n; i-- > 0;) {
            if (jt.cliques[static_cast<size_t>(order[i])].state == kChanged) ++changed_below[i];
            if (i > 0 && changed_below[i] > 0) {
                changed_below[static_cast<size_t>(parent[i])] += changed_below[i];
                ++branches[static_cast<size_t>(parent[i])];
            }
        }
        const int total = changed_below[0];
        if (total == 0) continue;
        Clique* best = nullptr;
        double best_size = 0.0;
        for (size_t i = 0; i < n; ++i) {
            Clique& c = jt.cliques[static_cast<size_t>(order[i])];
            const int ways = branches[i] + (total > changed_below[i] ? 1 : 0);
            if (c.state != kChanged && ways < 2) continue;  // not between changed cliques
            const double size = slice_size(jt, c);
            if (!best || size < best_size) {
                best = &c;
                best_size = size;
            }
        }
        best->waits = true;
    }
}

}  // namespace ravelo
