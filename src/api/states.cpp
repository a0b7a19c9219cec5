// States and levels of nodes (part of the Nodes family).
#include "api/node_args.h"
#include "net/states.h"

using namespace ravelo;

int GetNodeNumberStates_bn(const node_bn* node) {
    ApiFrame frame("GetNodeNumberStates_bn");
    return frame.run(-1, [&] { return checked_node(frame, node).num_states(); });
}

const char* GetNodeStateName_bn(const node_bn* node, state_bn state) {
    ApiFrame frame("GetNodeStateName_bn");
    return frame.run<const char*>(nullptr, [&] {
        Node& n = checked_node(frame, node);
        return n.states[static_cast<size_t>(checked_state(n, state))].name.c_str();
    });
}

void SetNodeStateName_bn(node_bn* node, state_bn state, const char* state_name) {
    ApiFrame frame("SetNodeStateName_bn");
    frame.run([&] { set_state_name(checked_connected_node(frame, node), state, state_name); });
}

void SetNodeStateNames_bn(node_bn* node, const char* state_names) {
    ApiFrame frame("SetNodeStateNames_bn");
    frame.run([&] { set_state_names(checked_connected_node(frame, node), state_names); });
}

const char* GetNodeStateTitle_bn(const node_bn* node, state_bn state) {
    ApiFrame frame("GetNodeStateTitle_bn");
    return frame.run<const char*>(nullptr, [&] {
        Node& n = checked_node(frame, node);
        return n.states[static_cast<size_t>(checked_state(n, state))].title.c_str();
    });
}

void SetNodeStateTitle_bn(node_bn* node, state_bn state, const char* state_title) {
    ApiFrame frame("SetNodeStateTitle_bn");
    frame.run([&] { set_state_title(checked_node(frame, node), state, state_title); });
}

const char* GetNodeStateComment_bn(const node_bn* node, state_bn state) {
    ApiFrame frame("GetNodeStateComment_bn");
    return frame.run<const char*>(nullptr, [&] {
        Node& n = checked_node(frame, node);
        return n.states[static_cast<size_t>(checked_state(n, state))].comment.c_str();
    });
}

void SetNodeStateComment_bn(node_bn* node, state_bn state, const char* state_comment) {
    ApiFrame frame("SetNodeStateComment_bn");
    frame.run([&] { set_state_comment(checked_node(frame, node), state, state_comment); });
}

const char* GetNodeStateLabel_bn(const node_bn* node, state_bn state) {
    ApiFrame frame("GetNodeStateLabel_bn");
    return frame.run<const char*>(nullptr, [&] {
        Node& n = checked_node(frame, node);
        const StateInfo& s = n.states[static_cast<size_t>(checked_state(n, state))];
        return s.title.empty() ? s.name.c_str() : s.title.c_str();
    });
}

state_bn GetStateNamed_bn(const char* name, const node_bn* node) {
    ApiFrame frame("GetStateNamed_bn");
    return frame.run<state_bn>(UNDEF_STATE, [&] {
        Node& n = checked_node(frame, node);
        if (!name) fail(5104, "NULL passed for name");
        return find_state(n, name);
    });
}

void AddNodeStates_bn(node_bn* node, state_bn first_state, const char* state_names, int num_states,
                      double cpt_fill) {
    ApiFrame frame("AddNodeStates_bn");
    frame.run([&] {
        add_states(checked_connected_node(frame, node), first_state, state_names, num_states, cpt_fill);
    });
}

void RemoveNodeState_bn(node_bn* node, state_bn state) {
    ApiFrame frame("RemoveNodeState_bn");
    frame.run([&] { remove_state(checked_connected_node(frame, node), state); });
}

void ReorderNodeStates_bn(node_bn* node, const state_bn* new_order) {
    ApiFrame frame("ReorderNodeStates_bn");
    frame.run([&] {
        Node& n = checked_connected_node(frame, node);
        if (!new_order) fail(5120, "NULL passed for the vector of >-node states");
        reorder_states(n, new_order);
    });
}

const level_bn* GetNodeLevels_bn(const node_bn* node) {
    ApiFrame frame("GetNodeLevels_bn");
    return frame.run<const level_bn*>(nullptr, [&]() -> const level_bn* {
        Node& n = checked_node(frame, node);
        return n.levels.empty() ? nullptr : n.levels.data();
    });
}

void SetNodeLevels_bn(node_bn* node, int num_states, const level_bn* levels) {
    ApiFrame frame("SetNodeLevels_bn");
    frame.run([&] { set_levels(checked_connected_node(frame, node), num_states, levels); });
}
