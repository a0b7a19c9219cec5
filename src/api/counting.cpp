// Counting learning family.
#include "api/handles.h"
#include "learn/counting.h"

using namespace ravelo;

namespace {

void check_updating(int updating) {
    if (updating != 0)
        fail(5517, "argument 'updating' should be 0 with this version of >-Ravelo (it is %g)",
             static_cast<double>(updating));
}

// The list's nodes, all live and of one net (which the call holds).
const std::vector<Node*>& checked_learning_list(ApiFrame& frame, const nodelist_bn* nodes) {
    NodeList& list = checked_list(frame, nodes);
    for (const Node* n : list.nodes)
        if (!n || n->is_dead() || (!list.nodes.empty() && n->net != list.nodes.front()->net))
            fail(5146, "deleted or damaged >-Bnodes passed");
    if (!list.nodes.empty()) {
        frame.use(*list.nodes.front()->net->env);
        frame.hold(list.nodes.front()->net->lock);
    }
    return list.nodes;
}

}  // namespace

void ReviseCPTsByFindings_bn(const nodelist_bn* nodes, int updating, double degree) {
    ApiFrame frame("ReviseCPTsByFindings_bn");
    frame.run([&] {
        const std::vector<Node*>& list = checked_learning_list(frame, nodes);
        check_updating(updating);
        learn_findings_by_counting(list, degree);
    });
}

void FadeCPTable_bn(node_bn* node, double degree) {
    ApiFrame frame("FadeCPTable_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        if (!(degree >= 0.0 && degree <= 1.0))
            fail(5516, "argument 'degree' is %g, but it should be within 0 to 1 inclusive", degree);
        if (n.cpt.empty())
            fail(5518, ">-Bnode '%s' doesnt have any >-CPTable", n.name.c_str());
        fade_table(n, degree);
    });
}
