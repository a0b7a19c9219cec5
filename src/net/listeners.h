// Listener callbacks of nets and nodes: each net or node keeps its own, and
// global ones (registered with no object) hear every net or node.
#pragma once
#include "net/model.h"

namespace ravelo {

constexpr int kCreateEvent = 1;
constexpr int kDuplicateEvent = 2;
constexpr int kRemoveEvent = 4;

// Adds (or, with filter 0, removes) a listener; net or node NULL means global.
void add_net_listener(Net* net, void* callback, void* object, int filter);
void add_node_listener(Node* node, void* callback, void* object, int filter);

// Calls the net's listeners, then the global net listeners, that want event.
void notify_net(Net& net, int event, void* info);
void notify_node(Node& node, int event, void* info);

// Drops every global listener (when the last environment closes).
void clear_global_listeners();

}  // namespace ravelo
