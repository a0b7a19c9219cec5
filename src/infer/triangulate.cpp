#include "infer/triangulate.h"

#include <algorithm>

#include "base/failure.h"

namespace ravelo {
namespace {

using Lists = std::vector<std::vector<int>>;

Lists fill_in(const Graph& g, const std::vector<int>& order) {
    const size_t n = g.nodes.size();
    std::vector<int> position(n), follow(n), index(n);
    for (size_t i = 0; i < order.size(); ++i) {
        int v = order[i];
        position[static_cast<size_t>(v)] = static_cast<int>(i);
        follow[static_cast<size_t>(v)] = v;
        index[static_cast<size_t>(v)] = static_cast<int>(i);
    }
    Lists filled(n);
    for (size_t i = 0; i < order.size(); ++i) {
        int v = order[i];
        for (int w : g.neighbours[static_cast<size_t>(v)]) {
            if (position[static_cast<size_t>(w)] >= static_cast<int>(i)) continue;
            int x = w;
            while (index[static_cast<size_t>(x)] < static_cast<int>(i)) {
                index[static_cast<size_t>(x)] = static_cast<int>(i);
                filled[static_cast<size_t>(x)].push_back(v);
                filled[static_cast<size_t>(v)].push_back(x);
                x = follow[static_cast<size_t>(x)];
            }
            if (follow[static_cast<size_t>(x)] == x) follow[static_cast<size_t>(x)] = v;
        }
    }
    return filled;
}

// Buckets of unnumbered nodes by their count of numbered neighbours, each a
// doubly linked list with insertion at its head.
std::vector<int> number_by_cardinality(const Lists& filled, const std::vector<int>& order) {
    const size_t n = filled.size();
    std::vector<int> head(n + 1, -1), next(n, -1), prev(n, -1), bucket(n, 0), number(n, -1);
    auto unlink = [&](int v) {
        int b = bucket[static_cast<size_t>(v)];
        if (prev[static_cast<size_t>(v)] >= 0) next[static_cast<size_t>(prev[static_cast<size_t>(v)])] = next[static_cast<size_t>(v)];
        else head[static_cast<size_t>(b)] = next[static_cast<size_t>(v)];
        if (next[static_cast<size_t>(v)] >= 0) prev[static_cast<size_t>(next[static_cast<size_t>(v)])] = prev[static_cast<size_t>(v)];
    };
    auto push_head = [&](int v, int b) {
        bucket[static_cast<size_t>(v)] = b;
        prev[static_cast<size_t>(v)] = -1;
        next[static_cast<size_t>(v)] = head[static_cast<size_t>(b)];
        if (head[static_cast<size_t>(b)] >= 0) prev[static_cast<size_t>(head[static_cast<size_t>(b)])] = v;
        head[static_cast<size_t>(b)] = v;
    };
    for (auto it = order.rbegin(); it != order.rend(); ++it) push_head(*it, 0);
    int top = 0;
    for (size_t i = 0; i < order.size(); ++i) {
        while (top > 0 && head[static_cast<size_t>(top)] < 0) --top;
        int v = head[static_cast<size_t>(top)];
        RAVELO_ASSERT(v >= 0);
        unlink(v);
        number[static_cast<size_t>(v)] = static_cast<int>(i);
        for (int w : filled[static_cast<size_t>(v)]) {
            if (number[static_cast<size_t>(w)] >= 0) continue;
            unlink(w);
            int b = bucket[static_cast<size_t>(w)] + 1;
            push_head(w, b);
            top = std::max(top, b);
        }
    }
    return number;
}

Lists extract_cliques(const Lists& filled, const std::vector<int>& number) {
    const size_t n = filled.size();
    std::vector<int> by_number(n);
    for (size_t v = 0; v < n; ++v) by_number[static_cast<size_t>(number[v])] = static_cast<int>(v);
    std::vector<int> counter(n, 0);
    Lists cliques;
    std::vector<int> lower;
    for (size_t k = n; k-- > 0;) {
        int v = by_number[k];
        lower.clear();
        int parent = -1;
        for (int w : filled[static_cast<size_t>(v)])
            if (number[static_cast<size_t>(w)] < number[static_cast<size_t>(v)]) {
                lower.push_back(w);
                if (parent < 0 || number[static_cast<size_t>(w)] > number[static_cast<size_t>(parent)]) parent = w;
            }
        int size = static_cast<int>(lower.size());
        if (parent >= 0) counter[static_cast<size_t>(parent)] = std::max(counter[static_cast<size_t>(parent)], size - 1);
        if (filled[static_cast<size_t>(v)].empty() || size > counter[static_cast<size_t>(v)]) {
            lower.push_back(v);
            cliques.push_back(lower);
        }
    }
    std::reverse(cliques.begin(), cliques.end());
    return cliques;
}

}  // namespace

Triangulation triangulate(const Graph& g, const std::vector<int>& order) {
    RAVELO_ASSERT(order.size() == g.nodes.size());
    Triangulation t;
    t.filled = fill_in(g, order);
    t.number = number_by_cardinality(t.filled, order);
    t.cliques = extract_cliques(t.filled, t.number);
    return t;
}

}  // namespace ravelo
