#include "net/ops.h"

#include <algorithm>

#include "net/reshape.h"

namespace ravelo {
namespace {

void renumber(Net& net) {
    int i = 0;
    for (Node* n : net.nodes.nodes) n->index = i++;
}

void erase_one(std::vector<Node*>& v, Node* n) {
    auto it = std::find(v.begin(), v.end(), n);
    if (it != v.end()) v.erase(it);
}

bool has_parent(const Node& child, const Node* parent) {
    const auto& ps = child.parents.nodes;
    return std::find(ps.begin(), ps.end(), parent) != ps.end();
}

}  // namespace

Net* create_net(Environment& env, const std::string& name) {
    Net* net = env.store.make<Net>(&env);
    net->name = name;
    env.nets.push_back(net);
    return net;
}

Node* create_node(Net& net, const std::string& name, int num_states) {
    Node* node = net.env->store.make<Node>(&net, name);
    if (num_states > 0) {
        node->states.resize(static_cast<size_t>(num_states));
    } else {
        node->type = NodeType::Continuous;
    }
    node->index = static_cast<int>(net.nodes.nodes.size());
    net.nodes.nodes.push_back(node);
    net.by_name[name] = node;
    discard_compiled(net);
    return node;
}

int connect(Node& parent, Node& child, const std::string& input_name, const std::string& delay) {
    child.parents.nodes.push_back(&parent);
    child.input_names.push_back(input_name);
    // Delays are kept only as far as the last delayed link.
    if (!delay.empty()) {
        child.delays.resize(child.parents.nodes.size() - 1);
        child.delays.push_back(delay);
    }
    parent.children.nodes.push_back(&child);
    const int k = static_cast<int>(child.parents.nodes.size()) - 1;
    insert_parent_axis(child, k);
    discard_compiled(*child.net);
    return k;
}

void disconnect(Node& child, int link_index) {
    Node* parent = child.parents.nodes[static_cast<size_t>(link_index)];
    drop_parent_axis(child, link_index);
    child.parents.nodes.erase(child.parents.nodes.begin() + link_index);
    child.input_names.erase(child.input_names.begin() + link_index);
    if (static_cast<std::size_t>(link_index) < child.delays.size())
        child.delays.erase(child.delays.begin() + link_index);
    // A parent linked twice keeps its other link.
    if (!has_parent(child, parent)) erase_one(parent->children.nodes, &child);
    discard_compiled(*child.net);
}

void replace_parent(Node& child, int link_index, Node& new_parent) {
    const auto k = static_cast<size_t>(link_index);
    Node* old_parent = child.parents.nodes[k];
    if (old_parent == &new_parent) return;
    const bool same_shape = old_parent->num_states() == new_parent.num_states();
    if (!same_shape) drop_parent_axis(child, link_index);
    child.parents.nodes[k] = &new_parent;
    if (!same_shape) insert_parent_axis(child, link_index);
    if (!has_parent(child, old_parent)) erase_one(old_parent->children.nodes, &child);
    new_parent.children.nodes.push_back(&child);
    discard_compiled(*child.net);
}

void delete_node(Node& node) {
    Net& net = *node.net;
    for (Node* p : node.parents.nodes) erase_one(p->children.nodes, &node);
    for (Node* c : std::vector<Node*>(node.children.nodes)) {
        auto& ps = c->parents.nodes;
        while (true) {
            auto it = std::find(ps.begin(), ps.end(), &node);
            if (it == ps.end()) break;
            disconnect(*c, static_cast<int>(it - ps.begin()));
        }
    }
    erase_one(net.nodes.nodes, &node);
    net.by_name.erase(node.name);
    for (NodeSet& set : net.node_sets) erase_one(set.members, &node);
    if (net.elim_order) erase_one(net.elim_order->nodes, &node);
    erase_one(net.copied_nodes.nodes, &node);
    node.release();
    renumber(net);
    discard_compiled(net);
}

void delete_net(Net& net) {
    Environment& env = *net.env;
    for (Node* n : net.nodes.nodes) n->release();
    env.nets.erase(std::remove(env.nets.begin(), env.nets.end(), &net), env.nets.end());
    net.release();
}

void place_node(Node& node, int index) {
    Net& net = *node.net;
    erase_one(net.nodes.nodes, &node);
    auto at = std::min(static_cast<size_t>(std::max(index, 0)), net.nodes.nodes.size());
    net.nodes.nodes.insert(net.nodes.nodes.begin() + static_cast<std::ptrdiff_t>(at), &node);
    renumber(net);
}

void rename_node(Node& node, const std::string& name) {
    Net& net = *node.net;
    net.by_name.erase(node.name);
    node.name = name;
    net.by_name[name] = &node;
}

void discard_compiled(Net& net) {
    net.jtree.reset();
    net.junction_step = 0;
    net.findings_probability = 1.0;
    for (Node* n : net.nodes.nodes) {
        n->beliefs_current = false;
        n->home_clique = -1;
    }
}

void beliefs_changed(Net& net) {
    if (net.junction_step > 4) net.junction_step = 4;
    for (Node* n : net.nodes.nodes) n->beliefs_current = false;
}

}  // namespace ravelo

namespace ravelo {
void node_tables_changed(Node& node) {
    Net& net = *node.net;
    if (net.junction_step > 2) net.junction_step = 2;
    for (Node* n : net.nodes.nodes) n->beliefs_current = false;
}
}  // namespace ravelo
