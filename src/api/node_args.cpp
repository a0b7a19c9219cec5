#include "api/node_args.h"

namespace ravelo {

Node& checked_connected_node(ApiFrame& frame, const node_bn* handle, const char* argument) {
    Node& node = checked_node(frame, handle, argument);
    if (node.kind == NodeKind::Disconnected)
        fail(3242, "passed >-Bnode '%s' is a DISCONNECTED_NODE, which is not allowed with this function",
             node.name.c_str());
    return node;
}

const int* checked_parent_states(const Node& node, const state_bn* parent_states) {
    static const int none = 0;
    if (node.parents.nodes.empty()) return parent_states ? parent_states : &none;
    if (!parent_states) fail(5120, "NULL passed for the vector of >-node states");
    return parent_states;
}

int checked_state(const Node& node, state_bn state, const char* argument) {
    if (state < 0 || state >= node.num_states())
        fail(5221, "argument '%s' is %d, but the states of >-node '%s' are numbered 0 to %d", argument,
             state, node.name.c_str(), node.num_states() - 1);
    return state;
}

}  // namespace ravelo
