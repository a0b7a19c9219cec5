// Unchecked building blocks of the net model.  Callers have already made the
// checks the interface requires; these keep the model's invariants
// (name index, parent/child lists in step, node indexes, compiled state).
#pragma once
#include <string>

#include "net/model.h"

namespace ravelo {

Net* create_net(Environment& env, const std::string& name);
// A discrete node of num_states unnamed states, or a continuous one when 0.
Node* create_node(Net& net, const std::string& name, int num_states);
// Appends parent to child's parents; tables of child are dropped (their
// shape changed).  Returns the link's index.
int connect(Node& parent, Node& child, const std::string& input_name = std::string());
void disconnect(Node& child, int link_index);
void delete_node(Node& node);
void delete_net(Net& net);

// Everything that compiled inference rests on is gone: junction tree and beliefs.
void discard_compiled(Net& net);
// Beliefs no longer current (findings or tables changed) but the tree stays.
void beliefs_changed(Net& net);

}  // namespace ravelo

namespace ravelo {
// A node's tables changed: compiled clique tables must be reloaded.
void node_tables_changed(Node& node);
}  // namespace ravelo
