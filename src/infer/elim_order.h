// The elimination order: the greedy weight-minimising search, and the
// evaluation of an order by the total weight of its maximal cliques.
#pragma once
#include <functional>
#include <vector>

#include "infer/graph.h"

namespace ravelo {

constexpr int kNotEliminated = 2147483647;
constexpr int kHaltedOrderNumber = 2295;

// Called after each step with the fraction done; returning true halts.
using HaltCheck = std::function<bool(double fraction)>;

struct ElimOrder {
    std::vector<int> order;  // local indexes, first-eliminated first
    double total = 0.0;
};

// The greedy search over the nodes of 'list' (local indexes, in list order).
ElimOrder find_elim_order(const Graph& g, const std::vector<int>& list,
                          const HaltCheck& halt = nullptr);

// Total weight of the maximal cliques that eliminating in 'order' produces.
double evaluate_elim_order(const Graph& g, const std::vector<int>& order);

}  // namespace ravelo
