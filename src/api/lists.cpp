// Node lists family.
#include "api/handles.h"

using namespace ravelo;

namespace {

constexpr int kLastEntry = LAST_ENTRY;

int checked_index(const NodeList& list, int index, bool may_be_end) {
    const int length = static_cast<int>(list.nodes.size());
    const int last = may_be_end ? length : length - 1;
    if (index < 0 || index > last)
        fail(5305, "argument 'index' is %d, but it must be between 0 and %d, or LAST_ENTRY", index, last);
    return index;
}

void check_same_net(NodeList& list, const Node& node) {
    if (!list.net) {
        list.net = node.net;
    } else if (list.net != node.net) {
        fail(5304, "can't put >-node '%s' of >-net %s into a >-Bnodes for >-net %s", node.name.c_str(),
             node.net->name.c_str(), list.net->name.c_str());
    }
}

NodeList* new_list(Environment& env, Net* net) { return env.store.make<NodeList>(net, false); }

}  // namespace

nodelist_bn* NewNodeList2_bn(int length, const net_bn* net) {
    ApiFrame frame("NewNodeList2_bn");
    return frame.run<nodelist_bn*>(nullptr, [&]() -> nodelist_bn* {
        Net* n = net ? &checked_net(frame, net) : nullptr;
        Environment& env = n ? *n->env : frame.environment(nullptr);
        if (length < 0) fail(5306, "argument 'length' is negative (%d)", length);
        NodeList* list = new_list(env, n);
        list->nodes.assign(static_cast<size_t>(length), nullptr);
        return handle_of(list);
    });
}

void AddNodeToList_bn(node_bn* node, nodelist_bn* nodes, int index) {
    ApiFrame frame("AddNodeToList_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        NodeList& list = checked_mutable_list(frame, nodes);
        if (index == kLastEntry) index = static_cast<int>(list.nodes.size());
        checked_index(list, index, true);
        check_same_net(list, n);
        list.nodes.insert(list.nodes.begin() + index, &n);
    });
}

node_bn* RemoveNthNode_bn(nodelist_bn* nodes, int index) {
    ApiFrame frame("RemoveNthNode_bn");
    return frame.run<node_bn*>(nullptr, [&] {
        NodeList& list = checked_mutable_list(frame, nodes);
        if (list.nodes.empty()) fail(5301, "the passed >-node list is empty");
        if (index == kLastEntry) index = static_cast<int>(list.nodes.size()) - 1;
        checked_index(list, index, false);
        Node* removed = list.nodes[static_cast<size_t>(index)];
        list.nodes.erase(list.nodes.begin() + index);
        return handle_of(removed);
    });
}

int LengthNodeList_bn(const nodelist_bn* nodes) {
    ApiFrame frame("LengthNodeList_bn");
    return frame.run(-1, [&] { return static_cast<int>(checked_list(frame, nodes).nodes.size()); });
}

node_bn* NthNode_bn(const nodelist_bn* nodes, int index) {
    ApiFrame frame("NthNode_bn");
    return frame.run<node_bn*>(nullptr, [&] {
        NodeList& list = checked_list(frame, nodes);
        if (index == kLastEntry) index = static_cast<int>(list.nodes.size()) - 1;
        return handle_of(list.nodes[static_cast<size_t>(checked_index(list, index, false))]);
    });
}

void SetNthNode_bn(nodelist_bn* nodes, int index, node_bn* node) {
    ApiFrame frame("SetNthNode_bn");
    frame.run([&] {
        NodeList& list = checked_mutable_list(frame, nodes);
        Node* n = node ? &checked_node(frame, node) : nullptr;
        if (index == kLastEntry) index = static_cast<int>(list.nodes.size()) - 1;
        checked_index(list, index, false);
        if (n) check_same_net(list, *n);
        list.nodes[static_cast<size_t>(index)] = n;
    });
}

int IndexOfNodeInList_bn(const node_bn* node, const nodelist_bn* nodes, int start_index) {
    ApiFrame frame("IndexOfNodeInList_bn");
    return frame.run(-1, [&] {
        NodeList& list = checked_list(frame, nodes);
        if (node) checked_node(frame, node);
        checked_index(list, start_index, true);
        for (size_t i = static_cast<size_t>(start_index); i < list.nodes.size(); ++i)
            if (list.nodes[i] == core_of<Node>(node)) return static_cast<int>(i);
        return -1;
    });
}

nodelist_bn* DupNodeList_bn(const nodelist_bn* nodes) {
    ApiFrame frame("DupNodeList_bn");
    return frame.run<nodelist_bn*>(nullptr, [&]() -> nodelist_bn* {
        NodeList& list = checked_list(frame, nodes);
        Environment& env = list.net ? *list.net->env : frame.environment(nullptr);
        NodeList* copy = new_list(env, list.net);
        copy->nodes = list.nodes;
        return handle_of(copy);
    });
}

void ClearNodeList_bn(nodelist_bn* nodes) {
    ApiFrame frame("ClearNodeList_bn");
    frame.run([&] { checked_mutable_list(frame, nodes).nodes.clear(); });
}

void DeleteNodeList_bn(nodelist_bn* nodes) {
    ApiFrame frame("DeleteNodeList_bn");
    frame.run([&] {
        NodeList& list = checked_mutable_list(frame, nodes);
        list.kill();
        list.nodes = {};
    });
}

state_bn* MapStateList_bn(const state_bn* src_states, const nodelist_bn* src_nodes, state_bn* dest_states,
                          const nodelist_bn* dest_nodes) {
    ApiFrame frame("MapStateList_bn");
    return frame.run<state_bn*>(nullptr, [&]() -> state_bn* {
        NodeList& src = checked_list(frame, src_nodes, "src_nodes");
        NodeList& dest = checked_list(frame, dest_nodes, "dest_nodes");
        if (!src_states && !src.nodes.empty()) fail(5120, "NULL passed for the vector of >-node states");
        if (!dest_states) fail(5120, "NULL passed for the vector of >-node states");
        // The two vectors may be the same memory.
        std::vector<state_bn> from(src_states, src_states + (src_states ? src.nodes.size() : 0));
        for (size_t i = 0; i < dest.nodes.size(); ++i) {
            dest_states[i] = UNDEF_STATE;
            for (size_t j = 0; j < src.nodes.size(); ++j)
                if (src.nodes[j] == dest.nodes[i]) {
                    dest_states[i] = from[j];
                    break;
                }
        }
        return dest_states;
    });
}
