#include "infer/optimize_order.h"

#include <algorithm>

#include "base/mark.h"
#include "infer/junction_tree.h"
#include "infer/triangulate.h"

namespace ravelo {
namespace {

// Minimum fill-in ordering, ties broken by the weight of the family, then list order.
std::vector<int> min_fill_order(const Graph& g, const std::vector<int>& list) {
    const size_t n = g.nodes.size();
    std::vector<std::vector<int>> working(g.neighbours);
    std::vector<bool> gone(n, false);
    std::vector<std::uint64_t> stamp(n, 0);
    std::vector<int> order, candidates(list), live;
    while (!candidates.empty()) {
        size_t best = 0;
        double best_fill = 0, best_weight = 0;
        for (size_t c = 0; c < candidates.size(); ++c) {
            int v = candidates[c];
            live.clear();
            for (int w : working[v])
                if (!gone[w]) live.push_back(w);
            double fill = 0;
            for (size_t i = 0; i < live.size(); ++i) {
                std::uint64_t mark = fresh_mark();
                for (int w : working[live[i]]) stamp[w] = mark;
                for (size_t j = i + 1; j < live.size(); ++j)
                    if (stamp[live[j]] != mark) ++fill;
            }
            live.push_back(v);
            double weight = weight_of(g, live.data(), live.size());
            if (c == 0 || fill < best_fill || (fill == best_fill && weight < best_weight)) {
                best = c;
                best_fill = fill;
                best_weight = weight;
            }
        }
        int v = candidates[best];
        candidates.erase(candidates.begin() + static_cast<long>(best));
        gone[v] = true;
        order.push_back(v);
        live.clear();
        for (int w : working[v])
            if (!gone[w]) live.push_back(w);
        for (size_t i = 0; i < live.size(); ++i) {
            std::uint64_t mark = fresh_mark();
            for (int w : working[live[i]]) stamp[w] = mark;
            for (size_t j = i + 1; j < live.size(); ++j)
                if (stamp[live[j]] != mark) {
                    working[live[i]].push_back(live[j]);
                    working[live[j]].push_back(live[i]);
                }
        }
    }
    return order;
}

}  // namespace

double compiled_size_of_order(const Graph& g, const std::vector<int>& order) {
    return joined_size(g, triangulate(g, order).cliques);
}

// Starts from the better of the greedy and minimum fill-in orders, then moves
// single nodes a few places later while that shrinks the tree, until a whole
// pass finds nothing or the evaluation budget is spent.
ElimOrder optimize_elim_order(const Graph& g, const Net&, const std::vector<int>& list) {
    ElimOrder best{find_elim_order(g, list).order, 0.0};
    best.total = compiled_size_of_order(g, best.order);
    if (list.size() < 2) return best;
    std::vector<int> fill = min_fill_order(g, list);
    double fill_size = compiled_size_of_order(g, fill);
    if (fill_size < best.total) best = {fill, fill_size};

    const int window = 4;
    long budget = std::min<long>(4000, 40L * static_cast<long>(list.size()));
    bool improved = true;
    while (improved && budget > 0) {
        improved = false;
        for (size_t i = 0; i + 1 < best.order.size() && budget > 0; ++i) {
            for (int d = 1; d <= window && i + static_cast<size_t>(d) < best.order.size() && budget > 0; ++d) {
                std::vector<int> trial = best.order;
                std::rotate(trial.begin() + static_cast<long>(i), trial.begin() + static_cast<long>(i) + 1,
                            trial.begin() + static_cast<long>(i) + d + 1);
                double size = compiled_size_of_order(g, trial);
                --budget;
                if (size < best.total) {
                    best = {std::move(trial), size};
                    improved = true;
                    break;
                }
            }
        }
    }
    return best;
}

}  // namespace ravelo
