#include "net/model.h"

#include <algorithm>

namespace ravelo {

const std::string* UserFields::find(const std::string& name) const {
    for (const auto& [key, value] : fields)
        if (key == name) return &value;
    return nullptr;
}

void UserFields::set(const std::string& name, std::string value) {
    for (auto& [key, old] : fields)
        if (key == name) {
            old = std::move(value);
            return;
        }
    fields.emplace_back(name, std::move(value));
}

bool UserFields::remove(const std::string& name) {
    auto it = std::find_if(fields.begin(), fields.end(),
                           [&](const auto& f) { return f.first == name; });
    if (it == fields.end()) return false;
    fields.erase(it);
    return true;
}

Node::Node(Net* owner, std::string node_name)
    : Tagged(kNodeType), net(owner), name(std::move(node_name)), parents(owner, true),
      children(owner, true) {}

void Node::release() {
    kill();
    parents.kill();
    children.kill();
    states = {};
    levels = {};
    parents.nodes = {};
    children.nodes = {};
    input_names = {};
    equation = {};
    parsed_equation.reset();
    cpt = {};
    func_states = {};
    func_reals = {};
    experience = {};
    finding = {};
    beliefs = {};
    derived_row = {};
    inherits = {};
    user_fields = {};
    user_data = {};
    listeners = {};
}

Net::Net(Environment* owner)
    : Tagged(kNetType), env(owner), nodes(this, true), copied_nodes(this, true) {}

Node* Net::find(const std::string& node_name) const {
    auto it = by_name.find(node_name);
    return it == by_name.end() ? nullptr : it->second;
}

const NodeDefinition* Net::find_definition(const std::string& definition_name) const {
    for (const NodeDefinition& d : definitions)
        if (d.name == definition_name) return &d;
    return nullptr;
}

void Net::release() {
    kill();
    nodes.kill();
    copied_nodes.kill();
    if (elim_order) elim_order->kill();
    nodes.nodes = {};
    copied_nodes.nodes = {};
    by_name = {};
    node_sets = {};
    definitions = {};
    user_fields = {};
    user_data = {};
    listeners = {};
    jtree.reset();
}

double table_rows(const Node& node) {
    double rows = 1.0;
    for (const Node* p : node.parents.nodes) rows *= p->num_states();
    return rows;
}

std::size_t row_of(const Node& node, const int* parent_states) {
    std::size_t row = 0;
    const auto& ps = node.parents.nodes;
    for (std::size_t i = 0; i < ps.size(); ++i)
        row = row * static_cast<std::size_t>(ps[i]->num_states()) +
              static_cast<std::size_t>(parent_states[i]);
    return row;
}

}  // namespace ravelo
