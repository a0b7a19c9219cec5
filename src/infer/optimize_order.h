// The optimizing elimination order search: improves on the greedy order by
// the total compiled table size, sepsets included.
#pragma once
#include "infer/elim_order.h"

namespace ravelo {

// 'total' of the result is the compiled size of its tree.
ElimOrder optimize_elim_order(const Graph& g, const Net& net, const std::vector<int>& list);

// Total size of the junction tree that an order produces.
double compiled_size_of_order(const Graph& g, const std::vector<int>& order);

}  // namespace ravelo
