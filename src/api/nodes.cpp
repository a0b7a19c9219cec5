// Nodes family (states and levels are beside it in states.cpp).
#include <cstring>

#include "api/node_args.h"
#include "api/userfields.h"
#include "net/copy.h"
#include "net/listeners.h"
#include "net/names.h"
#include "net/ops.h"
#include "net/states.h"
#include "net/structure.h"

using namespace ravelo;

node_bn* NewNode_bn(const char* name, int num_states, net_bn* net) {
    ApiFrame frame("NewNode_bn");
    return frame.run<node_bn*>(nullptr, [&]() -> node_bn* {
        Net& n = checked_net(frame, net);
        require_legal_name(name, "node");
        check_state_count(name, false, num_states);
        // A definition's name is taken too: the net's file declares both.
        if (n.find(name) || n.find_definition(name))
            fail(3210, "can't add >-node %s to >-net %s because it already has a >-node with that name",
                 name, n.name.c_str());
        Node* node = create_node(n, name, num_states);
        notify_node(*node, kCreateEvent, nullptr);
        return handle_of(node);
    });
}

const nodelist_bn* CopyNodes_bn(const nodelist_bn* nodes, net_bn* new_net, const char* options) {
    ApiFrame frame("CopyNodes_bn");
    return frame.run<const nodelist_bn*>(nullptr, [&]() -> const nodelist_bn* {
        NodeList& list = checked_list(frame, nodes);
        Net& dest = checked_net(frame, new_net, "new_net");
        CopyOptions parsed = parse_copy_options(options);
        if (list.nodes.empty()) fail(5301, "the passed >-node list is empty");
        const Net* source = nullptr;
        for (Node* n : list.nodes) {
            if (!n) fail(5302, "the passed >-Bnodes has a NULL entry");
            ApiFrame::check(n, kNodeHandle, "nodes");
            if (source && n->net != source)
                fail(5303, "the >-Bnodes passed holds >-node-s of different >-net-s (%s and %s)",
                     source->name.c_str(), n->net->name.c_str());
            source = n->net;
        }
        std::vector<Node*> copies = copy_nodes(list.nodes, dest, parsed);
        dest.copied_nodes.nodes = copies;
        for (size_t i = 0; i < copies.size(); ++i) notify_node(*list.nodes[i], kDuplicateEvent, copies[i]);
        return handle_of(&dest.copied_nodes);
    });
}

void DeleteNode_bn(node_bn* node) {
    ApiFrame frame("DeleteNode_bn");
    frame.run([&] { delete_node_keeping_children(checked_node(frame, node)); });
}

net_bn* GetNodeNet_bn(const node_bn* node) {
    ApiFrame frame("GetNodeNet_bn");
    return frame.run<net_bn*>(nullptr, [&] { return handle_of(checked_node(frame, node).net); });
}

const char* GetNodeName_bn(const node_bn* node) {
    ApiFrame frame("GetNodeName_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_node(frame, node).name.c_str(); });
}

void SetNodeName_bn(node_bn* node, const char* name) {
    ApiFrame frame("SetNodeName_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        require_legal_name(name, "node");
        if (n.name == name) return;
        if (n.net->find(name) || n.net->find_definition(name))
            fail(3211, "can't rename >-node %s to %s, because >-net %s already has a >-node with that name",
                 n.name.c_str(), name, n.net->name.c_str());
        rename_node(n, name);
    });
}

nodekind_bn GetNodeKind_bn(const node_bn* node) {
    ApiFrame frame("GetNodeKind_bn");
    return frame.run<nodekind_bn>(static_cast<nodekind_bn>(0), [&] {
        return static_cast<nodekind_bn>(checked_node(frame, node).kind);
    });
}

void SetNodeKind_bn(node_bn* node, nodekind_bn kind_arg) {
    ApiFrame frame("SetNodeKind_bn");
    frame.run([&] {
        // A C caller may pass any int; read it without trusting the enum's range.
        int kind;
        std::memcpy(&kind, &kind_arg, sizeof kind);
        Node& n = checked_connected_node(frame, node);
        const char* name = n.name.c_str();
        if (kind == DISCONNECTED_NODE)
            fail(3241, "argument 'kind' passed for >-Bnode '%s' is DISCONNECTED_NODE, but link "
                       "disconnection should be done with SwitchNodeParent_bn or CopyNodes_bn",
                 name);
        if (kind == ADVERSARY_NODE)
            fail(3240, "argument 'kind' passed for >-Bnode '%s' is ADVERSARY_NODE, but that is not "
                       "supported yet",
                 name);
        if (kind < NATURE_NODE || kind > UTILITY_NODE)
            fail(3243, "argument 'kind' passed for >-Bnode '%s' is %d, which is not a legal >-NodeKindEN",
                 name, kind);
        if (kind == UTILITY_NODE && n.is_discrete() && n.levels.empty())
            fail(3254, "can't make >-node '%s' >-discrete, because it is a >-utility_node and has no "
                       "discretization thresholds defined",
                 name);
        if (n.kind == static_cast<NodeKind>(kind)) return;
        n.kind = static_cast<NodeKind>(kind);
        discard_compiled(*n.net);
    });
}

nodetype_bn GetNodeType_bn(const node_bn* node) {
    ApiFrame frame("GetNodeType_bn");
    return frame.run<nodetype_bn>(static_cast<nodetype_bn>(0), [&] {
        return static_cast<nodetype_bn>(checked_node(frame, node).type);
    });
}

const char* GetNodeTitle_bn(const node_bn* node) {
    ApiFrame frame("GetNodeTitle_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_node(frame, node).title.c_str(); });
}

void SetNodeTitle_bn(node_bn* node, const char* title) {
    ApiFrame frame("SetNodeTitle_bn");
    frame.run([&] { checked_node(frame, node).title = title ? title : ""; });
}

const char* GetNodeComment_bn(const node_bn* node) {
    ApiFrame frame("GetNodeComment_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_node(frame, node).comment.c_str(); });
}

void SetNodeComment_bn(node_bn* node, const char* comment) {
    ApiFrame frame("SetNodeComment_bn");
    frame.run([&] { checked_node(frame, node).comment = comment ? comment : ""; });
}

const char* GetNodeLabel_bn(const node_bn* node) {
    ApiFrame frame("GetNodeLabel_bn");
    return frame.run<const char*>(nullptr, [&] {
        Node& n = checked_node(frame, node);
        return n.title.empty() ? n.name.c_str() : n.title.c_str();
    });
}

const char* GetNodeUserField_bn(const node_bn* node, const char* name, int* length, int kind) {
    ApiFrame frame("GetNodeUserField_bn");
    if (length) *length = -1;
    return frame.run<const char*>(nullptr, [&] {
        return user_field(checked_node(frame, node).user_fields, name, length, kind);
    });
}

void GetNodeNthUserField_bn(const node_bn* node, int index, const char** name, const char** value,
                            int* length, int kind) {
    ApiFrame frame("GetNodeNthUserField_bn");
    if (name) *name = nullptr;
    frame.run([&] { nth_user_field(checked_node(frame, node).user_fields, index, name, value, length, kind); });
}

void SetNodeUserField_bn(node_bn* node, const char* name, const void* data, int length, int kind) {
    ApiFrame frame("SetNodeUserField_bn");
    frame.run([&] { set_user_field(checked_node(frame, node).user_fields, name, data, length, kind); });
}

void* GetNodeUserData_bn(const node_bn* node, int kind) {
    ApiFrame frame("GetNodeUserData_bn");
    return frame.run<void*>(nullptr, [&]() -> void* {
        auto& data = checked_node(frame, node).user_data;
        auto it = data.find(kind);
        return it == data.end() ? nullptr : it->second;
    });
}

void SetNodeUserData_bn(node_bn* node, int kind, void* data) {
    ApiFrame frame("SetNodeUserData_bn");
    frame.run([&] { checked_node(frame, node).user_data[kind] = data; });
}

void AddNodeListener_bn(node_bn* node, NodeListener_bn callback, void* obj, int filter) {
    ApiFrame frame("AddNodeListener_bn");
    frame.run([&] {
        Node* n = nullptr;
        if (node)
            n = &checked_node(frame, node);
        else
            frame.environment(nullptr);
        if (!callback) fail(5213, "NULL passed for the callback function");
        add_node_listener(n, reinterpret_cast<void*>(callback), obj, filter);
    });
}

const double* GetNodeVisPosition_bn(const node_bn* node, void* vis, double* x, double* y) {
    ApiFrame frame("GetNodeVisPosition_bn");
    return frame.run<const double*>(nullptr, [&]() -> const double* {
        Node& n = checked_node(frame, node);
        if (vis) fail(5222, "argument 'vis' must be NULL with this version of >-Ravelo");
        n.vis_pair[0] = n.vis_x;
        n.vis_pair[1] = n.vis_y;
        if (x) *x = n.vis_x;
        if (y) *y = n.vis_y;
        return n.vis_pair;
    });
}

void SetNodeVisPosition_bn(node_bn* node, void* vis, double x, double y) {
    ApiFrame frame("SetNodeVisPosition_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        if (vis) fail(5222, "argument 'vis' must be NULL with this version of >-Ravelo");
        n.vis_x = x;
        n.vis_y = y;
        n.has_position = true;
    });
}
