#include "net/model.h"

#include <algorithm>

#include "base/numbers.h"

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
    delays = {};
    persistence = {};
    position_rest = {};
    equation = {};
    parsed_equation.reset();
    cpt = {};
    func_states = {};
    func_reals = {};
    experience = {};
    counts = {};
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

const std::string& link_delay(const Node& node, std::size_t k) {
    static const std::string none;
    return k < node.delays.size() ? node.delays[k] : none;
}

bool is_delay(const std::string& delay_text) {
    std::size_t first = delay_text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos) return false;
    std::size_t last = delay_text.find_last_not_of(" \t\r\n");
    std::optional<double> number = read_real(std::string_view(delay_text).substr(first, last - first + 1));
    return !number || *number != 0.0;
}

bool is_delayed_link(const Node& node, std::size_t k) { return is_delay(link_delay(node, k)); }

bool has_delayed_links(const Net& net, const Node** where) {
    for (const Node* n : net.nodes.nodes)
        for (std::size_t k = 0; k < n->parents.nodes.size(); ++k)
            if (is_delayed_link(*n, k)) {
                if (where) *where = n;
                return true;
            }
    return false;
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
