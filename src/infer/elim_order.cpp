#include "infer/elim_order.h"

#include <algorithm>

#include "base/failure.h"
#include "base/mark.h"
#include "base/environment.h"
#include "base/report.h"

namespace ravelo {
namespace {

bool internal_error_pending() {
    Environment* env = current_environment();
    return env && next_report(*env, kInternalError, nullptr) != nullptr;
}

// A clique recorded by the search: uneliminated neighbours of a chosen node.
struct RecordedClique {
    std::vector<int> members;
    bool alive = true;
};

class GreedySearch {
public:
    GreedySearch(const Graph& g, const std::vector<int>& list)
        : g_(g), candidates_(list), position_(g.nodes.size(), kNotEliminated),
          working_(g.neighbours), group_(g.nodes.size(), 0), cliques_of_(g.nodes.size()),
          stamp_(g.nodes.size(), 0) {
        assign_decision_groups();
    }

    ElimOrder run(const HaltCheck& halt);

private:
    void assign_decision_groups();
    int current_group() const;
    double cost_of(int v);
    void eliminate(int chosen, int step);

    const Graph& g_;
    std::vector<int> candidates_;
    std::vector<int> position_;
    std::vector<std::vector<int>> working_;
    std::vector<int> group_;
    std::vector<int> group_count_;
    std::vector<RecordedClique> cliques_;
    std::vector<std::vector<int>> cliques_of_;
    std::vector<std::uint64_t> stamp_;
    std::vector<int> live_;  // uneliminated neighbours of the node in hand
};

void GreedySearch::assign_decision_groups() {
    std::vector<int> decisions;
    for (int v : candidates_)
        if (g_.nodes[static_cast<size_t>(v)]->kind == NodeKind::Decision) decisions.push_back(v);
    std::reverse(decisions.begin(), decisions.end());
    for (size_t k = 0; k < decisions.size(); ++k) {
        int d = decisions[k];
        group_[static_cast<size_t>(d)] = static_cast<int>(2 * k + 1);
        for (const Node* p : g_.nodes[static_cast<size_t>(d)]->parents.nodes) {
            int w = g_.local_of[static_cast<size_t>(p->index)];
            if (w >= 0) group_[static_cast<size_t>(w)] = static_cast<int>(2 * k + 2);
        }
    }
    group_count_.assign(2 * decisions.size() + 1, 0);
    for (int v : candidates_) ++group_count_[static_cast<size_t>(group_[static_cast<size_t>(v)])];
}

int GreedySearch::current_group() const {
    for (size_t k = 0; k < group_count_.size(); ++k)
        if (group_count_[k] > 0) return static_cast<int>(k);
    return 0;
}

double GreedySearch::cost_of(int v) {
    live_.clear();
    const auto& nbrs = working_[static_cast<size_t>(v)];
    for (int w : nbrs)
        if (position_[static_cast<size_t>(w)] == kNotEliminated) live_.push_back(w);
    if (!nbrs.empty())
        for (int c : cliques_of_[static_cast<size_t>(v)])
            if (cliques_[static_cast<size_t>(c)].alive &&
                cliques_[static_cast<size_t>(c)].members.size() > live_.size())
                return 0.0;
    live_.push_back(v);
    return weight_of(g_, live_.data(), live_.size());
}

void GreedySearch::eliminate(int chosen, int step) {
    position_[static_cast<size_t>(chosen)] = step;
    candidates_.erase(std::find(candidates_.begin(), candidates_.end(), chosen));
    --group_count_[static_cast<size_t>(group_[static_cast<size_t>(chosen)])];
    for (int c : cliques_of_[static_cast<size_t>(chosen)]) cliques_[static_cast<size_t>(c)].alive = false;

    std::vector<int> live;
    for (int w : working_[static_cast<size_t>(chosen)])
        if (position_[static_cast<size_t>(w)] == kNotEliminated) live.push_back(w);
    std::sort(live.begin(), live.end(), [&](int a, int b) {
        return name_before(g_.nodes[static_cast<size_t>(a)], g_.nodes[static_cast<size_t>(b)]);
    });
    if (!working_[static_cast<size_t>(chosen)].empty()) {
        int id = static_cast<int>(cliques_.size());
        cliques_.push_back({live, true});
        for (int w : live) cliques_of_[static_cast<size_t>(w)].push_back(id);
    }
    // Fill-in: adjacency tested by a fresh stamp on x's neighbours.
    for (size_t i = 0; i < live.size(); ++i) {
        int x = live[i];
        std::uint64_t mark = fresh_mark();
        for (int w : working_[static_cast<size_t>(x)]) stamp_[static_cast<size_t>(w)] = mark;
        for (size_t j = i + 1; j < live.size(); ++j) {
            int y = live[j];
            if (stamp_[static_cast<size_t>(y)] == mark) continue;
            working_[static_cast<size_t>(x)].push_back(y);
            working_[static_cast<size_t>(y)].push_back(x);
        }
    }
}

ElimOrder GreedySearch::run(const HaltCheck& halt) {
    ElimOrder result;
    const int n = static_cast<int>(candidates_.size());
    for (int k = 0; k < n; ++k) {
        int group = current_group();
        int best = -1;
        double best_cost = 0.0;
        for (int v : candidates_) {
            if (group_[static_cast<size_t>(v)] != group) continue;
            double cost = cost_of(v);
            if (best < 0 || cost < best_cost) {
                best = v;
                best_cost = cost;
            }
            if (cost == 0.0) break;
        }
        RAVELO_ASSERT(best >= 0);
        eliminate(best, k);
        result.order.push_back(best);
        result.total += best_cost;
        if (halt && halt(static_cast<double>(k + 1) / n) && k + 1 < n) {
            int found = k + 1;
            result.order.insert(result.order.end(), candidates_.begin(), candidates_.end());
            if (!internal_error_pending())
                warning(kHaltedOrderNumber,
                        "resulting elimination order will probably be poor because only %d "
                        ">-node-s of it were found before action was halted.",
                        found);
            result.total = evaluate_elim_order(g_, result.order);
            return result;
        }
    }
    return result;
}

}  // namespace

ElimOrder find_elim_order(const Graph& g, const std::vector<int>& list, const HaltCheck& halt) {
    if (list.size() < 2) {
        ElimOrder result{list, 0.0};
        result.total = evaluate_elim_order(g, list);
        return result;
    }
    GreedySearch search(g, list);
    return search.run(halt);
}

double evaluate_elim_order(const Graph& g, const std::vector<int>& order) {
    std::vector<int> position(g.nodes.size(), kNotEliminated);
    for (size_t i = 0; i < order.size(); ++i) position[static_cast<size_t>(order[i])] = static_cast<int>(i);
    std::vector<int> counter(g.nodes.size(), 0);
    std::vector<std::vector<int>> working(g.neighbours);
    std::vector<std::uint64_t> stamp(g.nodes.size(), 0);
    double total = 0.0;
    std::vector<int> later;
    for (int v : order) {
        later.clear();
        int successor = -1;
        for (int w : working[static_cast<size_t>(v)])
            if (position[static_cast<size_t>(w)] > position[static_cast<size_t>(v)] &&
                position[static_cast<size_t>(w)] != kNotEliminated) {
                later.push_back(w);
                if (successor < 0 || position[static_cast<size_t>(w)] < position[static_cast<size_t>(successor)])
                    successor = w;
            }
        int count = static_cast<int>(later.size());
        if (successor >= 0)
            counter[static_cast<size_t>(successor)] = std::max(counter[static_cast<size_t>(successor)], count - 1);
        if (working[static_cast<size_t>(v)].empty() || count > counter[static_cast<size_t>(v)]) {
            later.push_back(v);
            total += weight_of(g, later.data(), later.size());
            later.pop_back();
        }
        for (size_t i = 0; i < later.size(); ++i) {
            int x = later[i];
            std::uint64_t mark = fresh_mark();
            for (int w : working[static_cast<size_t>(x)]) stamp[static_cast<size_t>(w)] = mark;
            for (size_t j = 0; j < later.size(); ++j) {
                int y = later[j];
                if (y == x || stamp[static_cast<size_t>(y)] == mark) continue;
                working[static_cast<size_t>(x)].push_back(y);
                stamp[static_cast<size_t>(y)] = mark;
            }
        }
    }
    return total;
}

}  // namespace ravelo
