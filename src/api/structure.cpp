// Structure queries and elimination order family.
#include <mutex>

#include "api/handles.h"
#include "infer/order_check.h"
#include "infer/relations.h"
#include "net/ops.h"

using namespace ravelo;

namespace {

const char* checked_relation(const char* relation) {
    if (!relation) fail(5104, "NULL passed for relation");
    return relation;
}

void check_same_net(const NodeList& list, const Net& net) {
    if (list.net && list.net != &net)
        fail(5676, "the >-Bnodes list passed is for a different >-net than the >-Bnode");
}

}  // namespace

void GetRelatedNodes_bn(nodelist_bn* related_nodes, const char* relation, node_bn* node) {
    ApiFrame frame("GetRelatedNodes_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        NodeList& out = checked_mutable_list(frame, related_nodes);
        check_same_net(out, *n.net);
        std::lock_guard<std::recursive_mutex> hold(n.net->lock);
        RelationRequest request = parse_relation(checked_relation(relation));
        combine_into(out.nodes, related_nodes_of(request, {&n}), request);
    });
}

void GetRelatedNodesMult_bn(nodelist_bn* related_nodes, const char* relation, const nodelist_bn* nodes) {
    ApiFrame frame("GetRelatedNodesMult_bn");
    frame.run([&] {
        NodeList& from = checked_list(frame, nodes);
        NodeList& out = checked_mutable_list(frame, related_nodes);
        for (Node* n : from.nodes) {
            if (!n) fail(5105, "NULL passed for >-Bnode");
            ApiFrame::check(n, kNodeHandle);
            check_same_net(out, *n->net);
        }
        RelationRequest request = parse_relation(checked_relation(relation));
        combine_into(out.nodes, related_nodes_of(request, from.nodes), request);
    });
}

bool_ns IsNodeRelated_bn(node_bn* related_node, const char* relation, node_bn* node) {
    ApiFrame frame("IsNodeRelated_bn");
    return frame.run<bool_ns>(0, [&]() -> bool_ns {
        Node& n = checked_node(frame, node);
        Node& other = checked_node(frame, related_node, "related_node");
        std::lock_guard<std::recursive_mutex> hold(n.net->lock);
        RelationRequest request = parse_relation(checked_relation(relation));
        for (Node* r : related_nodes_of(request, {&n}))
            if (r == &other) return 1;
        return 0;
    });
}

const nodelist_bn* GetNetElimOrder_bn(const net_bn* net) {
    ApiFrame frame("GetNetElimOrder_bn");
    return frame.run<const nodelist_bn*>(nullptr, [&]() -> const nodelist_bn* {
        Net& n = checked_net(frame, net);
        return n.elim_order ? handle_of(n.elim_order) : nullptr;
    });
}

void SetNetElimOrder_bn(const nodelist_bn* elim_order, net_bn* net) {
    ApiFrame frame("SetNetElimOrder_bn");
    frame.run([&] {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        if (!elim_order) {
            if (!n.elim_order) return;
            set_elim_order(n, nullptr);
            discard_compiled(n);
            return;
        }
        const NodeList& list = checked_list(frame, elim_order, "elim_order");
        std::string problem = elim_order_problem(n, list.nodes);
        if (!problem.empty())
            fail(2290, "couldn't set the elimination order of >-net '%s', because new list %s",
                 n.name.c_str(), problem.c_str());
        if (n.elim_order && n.elim_order->nodes == list.nodes) return;
        set_elim_order(n, &list.nodes);
        discard_compiled(n);
    });
}
