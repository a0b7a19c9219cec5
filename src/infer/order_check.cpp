#include "infer/order_check.h"

#include "base/failure.h"
#include "base/mark.h"
#include "base/text.h"
#include "infer/graph.h"
#include "net/ops.h"

namespace ravelo {

std::string elim_order_problem(const Net& net, const std::vector<Node*>& order) {
    for (const Node* n : order)
        if (!n) return "contains a NULL";
    for (const Node* n : order)
        if (n->kind == NodeKind::Utility)
            return format("contains a >-utility_node (named '%s')", n->name.c_str());
    std::uint64_t seen = fresh_mark();
    for (Node* n : order) {
        if (n->mark == seen) return format("contains a duplicate >-node (named '%s')", n->name.c_str());
        n->mark = seen;
    }
    for (const Node* n : order)
        if (n->net != &net || n->is_dead())
            return format("contains a >-node not in the >-net (>-node '%s' of >-net '%s')", n->name.c_str(),
                          n->net && !n->net->is_dead() ? n->net->name.c_str() : "");
    for (const Node* n : net.nodes.nodes)
        if (takes_part_in_cliques(*n) && n->mark != seen)
            return format("is missing a >-node (named '%s')", n->name.c_str());
    return std::string();
}

void check_stored_elim_order(Net& net) {
    if (!net.elim_order) return;
    std::string problem = elim_order_problem(net, net.elim_order->nodes);
    if (problem.empty()) return;
    warning(2291, "removing elimination order of >-net '%s', because it %s", net.name.c_str(),
            problem.c_str());
    set_elim_order(net, nullptr);
}

void set_elim_order(Net& net, const std::vector<Node*>* order) {
    if (net.elim_order) net.elim_order->kill();
    net.elim_order = nullptr;
    if (order) {
        net.elim_order = net.env->store.make<NodeList>(&net, true);
        net.elim_order->nodes = *order;
    }
}

}  // namespace ravelo
