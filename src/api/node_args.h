// Argument checks shared by the node, state, link and table families.
#pragma once
#include "api/handles.h"

namespace ravelo {

// A node that is not a DISCONNECTED stand-in (those only serve as parents).
Node& checked_connected_node(ApiFrame& frame, const node_bn* node, const char* argument = nullptr);
// A parent condition: one state per parent; NULL is fine only without parents.
const int* checked_parent_states(const Node& node, const state_bn* parent_states);
// A state index of node: 0 to its number of states minus one.
int checked_state(const Node& node, state_bn state, const char* argument = "state");

}  // namespace ravelo
