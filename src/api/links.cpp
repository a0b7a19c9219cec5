// Links family.
#include "api/node_args.h"
#include "base/text.h"
#include "net/names.h"
#include "net/ops.h"
#include "net/structure.h"

using namespace ravelo;

namespace {

int checked_link(const Node& node, int link_index) {
    const int count = static_cast<int>(node.parents.nodes.size());
    if (link_index < 0 || link_index >= count)
        fail(5223, "argument 'link_index' is %d, but >-node '%s' has %d parent links (numbered from 0)",
             link_index, node.name.c_str(), count);
    return link_index;
}

void refuse_disconnected_pred(const Node& parent, const char* argument, const char* advice) {
    if (parent.kind == NodeKind::Disconnected)
        fail(3225, "passed >-Bnode '%s' for argument '%s' is a DISCONNECTED_NODE, so a link cannot be made "
                   "from it to another node (%s)",
             parent.name.c_str(), argument, advice);
}

int add_link(ApiFrame& frame, node_bn* parent, node_bn* child, const std::string& delay) {
    Node& p = checked_node(frame, parent, "pred");
    Node& c = checked_node(frame, child, "succ");
    if (c.kind == NodeKind::Disconnected)
        fail(3224, "passed >-Bnode '%s' for argument 'succ' is a DISCONNECTED_NODE, so a link cannot "
                   "be made to it from another node",
             c.name.c_str());
    refuse_disconnected_pred(p, "pred", "use >-SwitchNodeParent_bn instead?");
    check_link_allowed(p, c, delay);
    std::string problem = delay_problem(p, c, delay);
    if (!problem.empty())
        fail(3218, "can't connect >-node '%s' to >-node '%s', because %s", p.name.c_str(), c.name.c_str(),
             problem.c_str());
    return connect(p, c, std::string(), delay);
}

}  // namespace

int AddLink_bn(node_bn* parent, node_bn* child) {
    ApiFrame frame("AddLink_bn");
    return frame.run(-1, [&] { return add_link(frame, parent, child, std::string()); });
}

int AddDelayedLink_bn(node_bn* parent, node_bn* child, const char* delay) {
    ApiFrame frame("AddDelayedLink_bn");
    return frame.run(-1, [&] { return add_link(frame, parent, child, delay ? delay : ""); });
}

void DeleteLink_bn(int link_index, node_bn* child) {
    ApiFrame frame("DeleteLink_bn");
    frame.run([&] {
        Node& c = checked_node(frame, child);
        disconnect(c, checked_link(c, link_index));
    });
}

void SwitchNodeParent_bn(int link_index, node_bn* node, node_bn* new_parent) {
    ApiFrame frame("SwitchNodeParent_bn");
    frame.run([&] {
        Node& c = checked_node(frame, node);
        checked_link(c, link_index);
        if (!new_parent) {
            disconnect_parent(c, link_index);
            return;
        }
        Node& p = checked_node(frame, new_parent, "newpred");
        refuse_disconnected_pred(p, "newpred", "pass NULL instead to disconnect a link");
        if (c.parents.nodes[static_cast<size_t>(link_index)] == &p) return;
        // The link keeps its delay, so a cycle through it stays allowed.
        check_link_allowed(p, c, link_delay(c, static_cast<size_t>(link_index)));
        replace_parent(c, link_index, p);
    });
}

const nodelist_bn* GetNodeParents_bn(const node_bn* node) {
    ApiFrame frame("GetNodeParents_bn");
    return frame.run<const nodelist_bn*>(nullptr, [&] { return handle_of(&checked_node(frame, node).parents); });
}

const nodelist_bn* GetNodeChildren_bn(const node_bn* node) {
    ApiFrame frame("GetNodeChildren_bn");
    return frame.run<const nodelist_bn*>(nullptr, [&] { return handle_of(&checked_node(frame, node).children); });
}

const char* GetNodeInputName_bn(const node_bn* node, int input_index) {
    ApiFrame frame("GetNodeInputName_bn");
    return frame.run<const char*>(nullptr, [&] {
        Node& n = checked_node(frame, node);
        return n.input_names[static_cast<size_t>(checked_link(n, input_index))].c_str();
    });
}

void SetNodeInputName_bn(node_bn* node, int input_index, const char* name) {
    ApiFrame frame("SetNodeInputName_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        const auto k = static_cast<size_t>(checked_link(n, input_index));
        if (!name || !*name) {
            n.input_names[k].clear();
            return;
        }
        std::string problem = input_name_problem(n, static_cast<int>(k), name);
        if (!problem.empty())
            fail(3261, "can't change the name of link %d of >-node %s to '%.80s', because that %s",
                 input_index, n.name.c_str(), name, problem.c_str());
        n.input_names[k] = name;
    });
}

int GetInputNamed_bn(const char* name, const node_bn* node) {
    ApiFrame frame("GetInputNamed_bn");
    return frame.run(-1, [&] {
        Node& n = checked_node(frame, node);
        if (!name) fail(5104, "NULL passed for name");
        for (size_t i = 0; i < n.input_names.size(); ++i)
            if (!n.input_names[i].empty() && n.input_names[i] == name) return static_cast<int>(i);
        return -1;
    });
}

const char* GetNodeInputDelay_bn(const node_bn* node, int input_index) {
    ApiFrame frame("GetNodeInputDelay_bn");
    return frame.run<const char*>(nullptr, [&] {
        Node& n = checked_node(frame, node);
        return link_delay(n, static_cast<size_t>(checked_link(n, input_index))).c_str();
    });
}

void SetNodeInputDelay_bn(node_bn* node, int input_index, const char* delay) {
    ApiFrame frame("SetNodeInputDelay_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        set_link_delay(n, static_cast<size_t>(checked_link(n, input_index)), delay ? delay : "");
    });
}
