// Counting learning family.
#include <cmath>

#include "api/handles.h"
#include "io/case_table.h"
#include "learn/counting.h"

using namespace ravelo;

namespace {

void check_learning_arguments(int updating, double degree) {
    if (updating != 0)
        fail(5517, "argument 'updating' should be 0 with this version of >-Ravelo (it is %g)",
             static_cast<double>(updating));
    // A count of UNDEF or infinity would spoil every row it touched.
    if (!std::isfinite(degree)) fail(5519, "argument 'degree' should be a finite number (it is %g)", degree);
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
        check_learning_arguments(updating, degree);
        learn_findings_by_counting(list, degree);
    });
}

void ReviseCPTsByCaseFile_bn(stream_ns* file, const nodelist_bn* nodes, int updating, double degree) {
    ApiFrame frame("ReviseCPTsByCaseFile_bn");
    frame.run([&] {
        Stream& stream = checked_stream(frame, file);
        const std::vector<Node*>& list = checked_learning_list(frame, nodes);
        check_learning_arguments(updating, degree);
        if (list.empty()) return;
        learn_cases_by_counting(list, read_case_file(stream, *list.front()->net, 1.0), degree);
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
