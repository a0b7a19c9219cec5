// Triangulation of a given elimination order by follow pointers, numbering
// of the filled graph by maximum cardinality search, and extraction of its
// maximal cliques.
#pragma once
#include <vector>

#include "infer/graph.h"

namespace ravelo {

struct Triangulation {
    std::vector<std::vector<int>> filled;   // filled-neighbour lists by local index
    std::vector<int> number;                // maximum-cardinality number by local index
    std::vector<std::vector<int>> cliques;  // members by local index, in clique order
};

// order must hold every node of g exactly once.
Triangulation triangulate(const Graph& g, const std::vector<int>& order);

}  // namespace ravelo
