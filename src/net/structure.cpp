#include "net/structure.h"

#include <algorithm>
#include <unordered_set>

#include "base/failure.h"
#include "base/numbers.h"
#include "base/text.h"
#include "net/names.h"
#include "net/states.h"
#include "net/listeners.h"
#include "net/ops.h"

namespace ravelo {

bool is_ancestor(const Node& from, const Node& to) {
    std::vector<const Node*> stack{&to};
    std::unordered_set<const Node*> seen{&to};
    while (!stack.empty()) {
        const Node* n = stack.back();
        stack.pop_back();
        if (n == &from) return true;
        for (const Node* p : n->parents.nodes)
            if (seen.insert(p).second) stack.push_back(p);
    }
    return false;
}

bool closes_undelayed_cycle(const Node& parent, const Node& child, const std::string& delay) {
    if (is_delay(delay)) return false;
    std::vector<const Node*> stack{&parent};
    std::unordered_set<const Node*> seen{&parent};
    while (!stack.empty()) {
        const Node* n = stack.back();
        stack.pop_back();
        if (n == &child) return true;
        for (std::size_t k = 0; k < n->parents.nodes.size(); ++k) {
            const Node* p = n->parents.nodes[k];
            if (!is_delayed_link(*n, k) && seen.insert(p).second) stack.push_back(p);
        }
    }
    return false;
}

void check_link_allowed(const Node& parent, const Node& child, const std::string& delay) {
    const char* pn = parent.name.c_str();
    const char* cn = child.name.c_str();
    if (parent.net != child.net)
        fail(3220, "can't connect >-node '%s' to >-node '%s', because they are in different >-net-s "
                   "(%s and %s respectively)",
             pn, cn, parent.net->name.c_str(), child.net->name.c_str());
    if (child.kind == NodeKind::Disconnected)
        fail(3221, "can't connect >-node '%s' to >-node '%s', because the latter is a disconnected "
                   "node, so it can only act as a parent",
             pn, cn);
    const auto& ps = child.parents.nodes;
    if (std::find(ps.begin(), ps.end(), &parent) != ps.end())
        fail(3222, "can't connect >-node '%s' to >-node '%s', because they are already connected", pn,
             cn);
    if (closes_undelayed_cycle(parent, child, delay))
        fail(3223, "can't connect >-node '%s' to >-node '%s', because that would result in a directed "
                   "cycle (with no time delays)",
             pn, cn);
}

std::string delay_problem(const Node& parent, const Node& child, const std::string& delay) {
    std::optional<double> number = read_real(delay);
    if (number && *number < 0)
        return format("the delay of the link from >-node '%s' to >-node '%s' is negative (%s)", parent.name.c_str(),
                      child.name.c_str(), delay.c_str());
    return {};
}

void set_link_delay(Node& child, std::size_t k, const std::string& delay) {
    const Node& parent = *child.parents.nodes[k];
    std::string problem = delay_problem(parent, child, delay);
    if (!problem.empty())
        fail(3228, "can't change the time delay of link %d of >-node '%s', because %s", static_cast<int>(k),
             child.name.c_str(), problem.c_str());
    if (closes_undelayed_cycle(parent, child, delay))
        fail(3229, "can't remove the time delay of the link from >-node '%s' to >-node '%s', because that would "
                   "result in a directed cycle (with no time delays)",
             parent.name.c_str(), child.name.c_str());
    if (child.delays.size() <= k) child.delays.resize(k + 1);
    child.delays[k] = delay;
    discard_compiled(*child.net);
}

std::string persistence_problem(const Node& node, int dimension, double value) {
    if (value == 0)
        return format("invalid node persistance of zero, for node '%s', dimension %d", node.name.c_str(), dimension);
    if (value < 0 || value != value)
        return format("invalid node persistance %g (negative not allowed), for node '%s', dimension %d", value,
                      node.name.c_str(), dimension);
    return {};
}

std::string unique_node_name(const Net& net, const std::string& base) {
    auto taken = [&](const std::string& name) { return net.find(name) || net.find_definition(name); };
    if (!taken(base)) return base;
    for (int n = 1;; ++n) {
        std::string suffix = std::to_string(n);
        suffix.insert(suffix.begin(), '_');
        std::string stem = base.substr(0, static_cast<size_t>(kMaxNameLength) - suffix.size());
        std::string name = stem + suffix;
        if (!taken(name)) return name;
    }
}

Node* create_disconnected_like(Net& net, const Node& like, const std::string& name) {
    Node* stand_in = create_node(net, name, like.num_states());
    stand_in->kind = NodeKind::Disconnected;
    stand_in->type = like.type;
    stand_in->measure = like.measure;
    stand_in->states = like.states;
    stand_in->levels = like.levels;
    stand_in->title = like.title;
    return stand_in;
}

void remove_nodes(Net& net, const std::vector<Node*>& doomed) {
    std::unordered_set<const Node*> set(doomed.begin(), doomed.end());
    for (const Node* n : doomed)
        if (n->net != &net)
            fail(3231, "trying to remove >-node '%s' that is in a different >-net (%s)",
                 n->name.c_str(), n->net->name.c_str());
    for (const Node* n : doomed)
        for (const Node* c : n->children.nodes)
            if (!set.count(c))
                fail(3230, ">-node '%s' to be removed has child >-node '%s' which is not being removed",
                     n->name.c_str(), c->name.c_str());
    std::unordered_set<const Node*> gone;
    for (Node* n : doomed)
        if (gone.insert(n).second) {
            notify_node(*n, kRemoveEvent, nullptr);
            if (!n->is_dead()) delete_node(*n);
        }
}

void delete_node_keeping_children(Node& node) {
    Net& net = *node.net;
    notify_node(node, kRemoveEvent, nullptr);
    if (node.is_dead()) return;  // its listener deleted it
    // A delayed link from the node to itself goes with it.
    std::vector<Node*> children = node.children.nodes;
    children.erase(std::remove(children.begin(), children.end(), &node), children.end());
    if (children.empty() || node.kind == NodeKind::Disconnected) {
        delete_node(node);
        return;
    }
    // The stand-in is made before the node goes, so its name is free only after.
    Node* stand_in = create_disconnected_like(net, node, unique_node_name(net, node.name + "_x"));
    for (Node* child : children) {
        auto& ps = child->parents.nodes;
        for (size_t k = 0; k < ps.size(); ++k)
            if (ps[k] == &node) replace_parent(*child, static_cast<int>(k), *stand_in);
    }
    // The stand-in takes the node's place in a user-given elimination order too.
    if (net.elim_order) std::replace(net.elim_order->nodes.begin(), net.elim_order->nodes.end(), &node, stand_in);
    std::string name = node.name;
    int position = node.index;
    delete_node(node);
    rename_node(*stand_in, name);
    place_node(*stand_in, position);
}

Node* disconnect_parent(Node& child, int link_index) {
    Net& net = *child.net;
    Node& parent = *child.parents.nodes[static_cast<size_t>(link_index)];
    Node* stand_in = create_disconnected_like(net, parent, unique_node_name(net, parent.name));
    replace_parent(child, link_index, *stand_in);
    return stand_in;
}

std::string input_name_problem(const Node& child, int k, const char* name) {
    std::string problem = name_problem(name);
    for (std::size_t i = 0; problem.empty() && i < child.input_names.size(); ++i)
        if (static_cast<int>(i) != k && child.input_names[i] == name)
            problem = format("is already the name of link %d", static_cast<int>(i));
    return problem;
}

void set_input_names(Node& child, const char* text) {
    std::vector<std::string> names = split_state_names(text);
    const int links = static_cast<int>(child.parents.nodes.size());
    if (text) {
        std::string problem;
        for (std::size_t i = 0; problem.empty() && i < names.size(); ++i) {
            problem = name_problem(names[i].c_str());
            for (std::size_t j = 0; problem.empty() && j < i; ++j)
                if (names[j] == names[i]) problem = format("name '%s' appears twice", names[i].c_str());
        }
        if (problem.empty() && static_cast<int>(names.size()) != links)
            problem = format("list has %d names, but the >-node has %d links", static_cast<int>(names.size()), links);
        if (!problem.empty())
            fail(3274, "couldn't change the link names of >-node '%s', because new %s", child.name.c_str(),
                 problem.c_str());
    }
    for (int i = 0; i < links; ++i)
        child.input_names[static_cast<std::size_t>(i)] = text ? names[static_cast<std::size_t>(i)] : "";
}

void check_link_name(const char* name) {
    std::string problem = name_problem(name);
    if (!problem.empty()) fail(3275, "'%s' cannot be a link name, because it %s", name ? name : "", problem.c_str());
}

}  // namespace ravelo
