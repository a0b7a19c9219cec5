// The undirected graph that compilation works on: the nodes taking part in
// the junction tree, by local index, each joined to its parents, its children
// and its children's other parents.
#pragma once
#include <cstdint>
#include <vector>

#include "net/model.h"

namespace ravelo {

struct Graph {
    std::vector<Node*> nodes;                   // local index -> node
    std::vector<std::vector<int>> neighbours;   // by local index, no repeats
    std::vector<int> local_of;                  // net index -> local index, -1 if absent

    int size() const { return static_cast<int>(nodes.size()); }
    int states(int v) const { return nodes[static_cast<size_t>(v)]->num_states(); }
};

// Utility nodes stand outside the cliques; their parents are joined to each
// other so that every utility family lies inside one clique.
bool takes_part_in_cliques(const Node& node);

// Builds the graph over the net's nodes that take part, in net order.
Graph build_graph(const Net& net);

// Byte-wise name order, the net index breaking ties between equal names.
bool name_before(const Node* a, const Node* b);

// Weight of a set of nodes: the product of their state counts, 1.0 when
// empty, 0.0 when any has no states, saturating at kWeightCap.
constexpr double kWeightCap = 1.7976931348623156e305;
double weight_of(const Graph& g, const int* set, std::size_t count);

}  // namespace ravelo
