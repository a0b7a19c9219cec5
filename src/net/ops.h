// Unchecked building blocks of the net model.  Callers have already made the
// checks the interface requires; these keep the model's invariants
// (name index, parent/child lists in step, node indexes, compiled state, and
// the shape of every table).
#pragma once
#include <string>

#include "net/model.h"

namespace ravelo {

Net* create_net(Environment& env, const std::string& name);
// A discrete node of num_states unnamed states, or a continuous one when 0.
Node* create_node(Net& net, const std::string& name, int num_states);
// Appends parent to child's parents, with the link's time delay ("" for
// none).  The child's tables keep their entries: each existing row is
// repeated for every state of the new parent.  Returns the link's index.
int connect(Node& parent, Node& child, const std::string& input_name = std::string(),
            const std::string& delay = std::string());
// Removes a parent link.  The child's tables keep the rows of the removed
// parent's first state.
void disconnect(Node& child, int link_index);
// Puts new_parent in the place of a parent link, keeping its input name and delay.  The
// tables stay as they are when both have the same number of states;
// otherwise the rows of the old parent's first state are repeated.
void replace_parent(Node& child, int link_index, Node& new_parent);
// Removes a node; its children lose it as a parent (see disconnect).
void delete_node(Node& node);
void delete_net(Net& net);
// Moves a node to position index of its net's node order.
void place_node(Node& node, int index);
// Changes a node's name, keeping the net's name index.
void rename_node(Node& node, const std::string& name);

// Everything that compiled inference rests on is gone: junction tree and beliefs.
void discard_compiled(Net& net);
// Beliefs no longer current (findings or tables changed) but the tree stays.
void beliefs_changed(Net& net);

}  // namespace ravelo

namespace ravelo {
// A node's tables changed: compiled clique tables must be reloaded.
void node_tables_changed(Node& node);
}  // namespace ravelo
