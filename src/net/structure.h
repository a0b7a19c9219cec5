// The checked structural operations of a net: which links may be made, which
// nodes may be removed together, and the disconnected stand-ins that keep a
// child's relation when its parent goes.
#pragma once
#include <string>
#include <vector>

#include "net/model.h"

namespace ravelo {

// Fails with the reason a link from parent to child, carrying the given time
// delay, is refused (different nets, disconnected child, already connected,
// directed cycle with no time delay).
void check_link_allowed(const Node& parent, const Node& child, const std::string& delay = std::string());
// True when a link from parent to child with the given delay would close a
// directed cycle that carries no time delay: the link itself is undelayed and
// child reaches parent along undelayed links (or they are the same node).
// Every check against cycles, interactive or from files, asks this.
bool closes_undelayed_cycle(const Node& parent, const Node& child, const std::string& delay = std::string());
// True when `to` can be reached from `from` by following links from parent
// to child, delayed ones included.
bool is_ancestor(const Node& from, const Node& to);

// Why delay can't be the time delay of a link from parent to child (a link
// cannot reach back to an earlier time), or empty when it can.
std::string delay_problem(const Node& parent, const Node& child, const std::string& delay);
// Gives parent link k of child the time delay delay ("" for none).  Refused
// when the delay is bad, or when taking it away would leave a cycle with no
// time delay.
void set_link_delay(Node& child, std::size_t k, const std::string& delay);

// Why value can't be the persistence of node along dimension (numbered from
// 1), or empty when it can: a persistence must be positive.
std::string persistence_problem(const Node& node, int dimension, double value);

// A name for a new node of net: base itself when free, otherwise base with
// the smallest "_<n>" suffix that is free (cut to stay a legal length).
std::string unique_node_name(const Net& net, const std::string& base);

// A DISCONNECTED node with the states and levels of `like`, named name.
Node* create_disconnected_like(Net& net, const Node& like, const std::string& name);

// Removes a set of nodes of net.  Refused, with nothing removed, when a node
// is of another net or a child of a removed node is not removed with it.
void remove_nodes(Net& net, const std::vector<Node*>& doomed);

// Deletes node; each child keeps its relation through a DISCONNECTED node
// that takes the deleted node's place (its name, states and levels).
void delete_node_keeping_children(Node& node);

// Disconnects the link_index-th parent link of child: a DISCONNECTED copy of
// the parent takes its place, keeping the link and its input name.
Node* disconnect_parent(Node& child, int link_index);

// Why name can't be the input name of link k of child (legal, and no other
// link of child has it), or empty when it can.
std::string input_name_problem(const Node& child, int k, const char* name);
// Names every parent link of child at once from a list separated by commas
// or white space (NULL removes them all).
void set_input_names(Node& child, const char* names);
// Fails unless name may be a link name, as the net file reader words it.
void check_link_name(const char* name);

}  // namespace ravelo
