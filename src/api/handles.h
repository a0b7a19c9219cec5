// Conversions between interface handles and core objects, and the handle
// kinds of the net model.
#pragma once
#include "base/frame.h"
#include "net/model.h"
#include "ravelo/ravelo.h"

namespace ravelo {

class Stream;

extern const HandleKind kNetHandle;
extern const HandleKind kNodeHandle;
extern const HandleKind kNodeListHandle;
extern const HandleKind kCaseSetHandle;

inline environ_ns* handle_of(Environment* e) { return reinterpret_cast<environ_ns*>(e); }
inline report_ns* handle_of(Report* r) { return reinterpret_cast<report_ns*>(r); }
inline net_bn* handle_of(Net* n) { return reinterpret_cast<net_bn*>(n); }
inline node_bn* handle_of(Node* n) { return reinterpret_cast<node_bn*>(n); }
inline nodelist_bn* handle_of(NodeList* l) { return reinterpret_cast<nodelist_bn*>(l); }
inline const nodelist_bn* handle_of(const NodeList* l) {
    return reinterpret_cast<const nodelist_bn*>(l);
}

// Checks a net handle, enters its environment and holds the net for the call.
Net& checked_net(ApiFrame& frame, const net_bn* net, const char* argument = nullptr);
// Checks a node handle, enters its environment and holds its net for the call.
Node& checked_node(ApiFrame& frame, const node_bn* node, const char* argument = nullptr);
// Checks a node list handle (entering and holding its net when it has one).
NodeList& checked_list(ApiFrame& frame, const nodelist_bn* list, const char* argument = nullptr);
// Checks a stream handle and enters its environment.
Stream& checked_stream(ApiFrame& frame, const stream_ns* stream);
// A list the function may change: constant lists are refused.
NodeList& checked_mutable_list(ApiFrame& frame, nodelist_bn* list, const char* argument = nullptr);

}  // namespace ravelo
