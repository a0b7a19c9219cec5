#include "api/handles.h"

#include "base/stream.h"

namespace ravelo {

const HandleKind kNetHandle{kNetType, 5102, "NULL passed for >-Bnet", 5142,
                            "deleted or damaged >-Bnet passed", 0, nullptr};
const HandleKind kNodeHandle{kNodeType, 5105, "NULL passed for >-Bnode", 5144,
                             "deleted or damaged >-Bnode passed", 5184, "deleted >-Bnode passed"};
const HandleKind kNodeListHandle{kNodeListType, 5106, "NULL passed for the >-Bnodes", 5146,
                                 "deleted or damaged >-Bnodes passed", 0, nullptr};
const HandleKind kCaseSetHandle{kCaseSetType, 5111, "NULL passed for the >-caseset_cs", 5151,
                                "deleted or damaged >-caseset_cs passed", 0, nullptr};

Net& checked_net(ApiFrame& frame, const net_bn* handle, const char* argument) {
    ApiFrame::check(handle, kNetHandle, argument);
    Net* net = core_of<Net>(handle);
    frame.use(*net->env);
    frame.hold(net->lock);
    return *net;
}

Node& checked_node(ApiFrame& frame, const node_bn* handle, const char* argument) {
    ApiFrame::check(handle, kNodeHandle, argument);
    Node* node = core_of<Node>(handle);
    frame.use(*node->net->env);
    frame.hold(node->net->lock);
    return *node;
}

NodeList& checked_list(ApiFrame& frame, const nodelist_bn* handle, const char* argument) {
    ApiFrame::check(handle, kNodeListHandle, argument);
    NodeList* list = core_of<NodeList>(handle);
    if (list->net) {
        frame.use(*list->net->env);
        frame.hold(list->net->lock);
    }
    return *list;
}

Stream& checked_stream(ApiFrame& frame, const stream_ns* handle) {
    ApiFrame::check(handle, kStreamHandle);
    Stream* stream = core_of<Stream>(handle);
    frame.use(*stream->env);
    return *stream;
}

NodeList& checked_mutable_list(ApiFrame& frame, nodelist_bn* handle, const char* argument) {
    NodeList& list = checked_list(frame, handle, argument);
    if (list.constant)
        fail(5147, "you cannot pass a constant >-Bnodes to this function, since this function "
                   "may modify or delete it (duplicate it first?)");
    return list;
}

}  // namespace ravelo
