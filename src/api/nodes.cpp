// Nodes and states family.
#include "api/handles.h"
#include "net/ops.h"

using namespace ravelo;

node_bn* NewNode_bn(const char* name, int num_states, net_bn* net) {
    ApiFrame frame("NewNode_bn");
    return frame.run<node_bn*>(nullptr, [&]() -> node_bn* {
        Net& n = checked_net(frame, net);
        if (!name) fail(5104, "NULL passed for name");
        if (n.find(name))
            fail(3210, "can't add >-node %s to >-net %s because it already has a >-node with that name",
                 name, n.name.c_str());
        return handle_of(create_node(n, name, num_states));
    });
}

void DeleteNode_bn(node_bn* node) {
    ApiFrame frame("DeleteNode_bn");
    frame.run([&] { delete_node(checked_node(frame, node)); });
}

const char* GetNodeName_bn(const node_bn* node) {
    ApiFrame frame("GetNodeName_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_node(frame, node).name.c_str(); });
}
