// Node sets: named groups of a net's nodes, kept for the net file reader and
// writer and the editor.
#pragma once
#include <string>
#include <vector>

#include "net/model.h"

namespace ravelo {

// The set of that name, or NULL.
NodeSet* find_node_set(Net& net, const std::string& name);
// Makes the set if it does not exist yet (its name must be legal) and returns it.
NodeSet& create_node_set(Net& net, const std::string& name);
// Adds node to the named set (made when missing); a member already in is left as is.
void add_to_node_set(Net& net, const std::string& name, Node& node);
// Removes node from the named set; false when it was not in it.
bool remove_from_node_set(Net& net, const std::string& name, Node& node);
bool is_in_node_set(const Net& net, const std::string& name, const Node& node);
// The names of the sets node belongs to (all sets when node is NULL), in set order.
std::vector<std::string> node_set_names(const Net& net, const Node* node = nullptr);
void delete_node_set(Net& net, const std::string& name);

}  // namespace ravelo
