#include "net/copy.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "base/failure.h"
#include "net/ops.h"
#include "net/states.h"
#include "net/structure.h"

namespace ravelo {
namespace {

void copy_fields(const Node& from, Node& to, const CopyOptions& options) {
    to.title = from.title;
    to.comment = from.comment;
    to.kind = from.kind;
    to.type = from.type;
    to.measure = from.measure;
    to.chance = from.chance;
    to.states = from.states;
    to.levels = from.levels;
    to.equation = from.equation;
    to.equation_dirty = from.equation_dirty;
    to.inherits = from.inherits;
    to.user_fields = from.user_fields;
    to.kept_statements = from.kept_statements;
    // Persistence is given per dimension, so it only means something in a net of as many.
    if (from.net->dimensions == to.net->dimensions) to.persistence = from.persistence;
    if (options.visual) {
        to.vis_x = from.vis_x;
        to.vis_y = from.vis_y;
        to.position_rest = from.position_rest;
        to.has_position = from.has_position;
        to.vis_style = from.vis_style;
    }
}

Node* outside_parent(Node& parent, Net& dest) {
    if (parent.net == &dest) return &parent;
    Node* same = dest.find(parent.name);
    if (same && same->num_states() == parent.num_states()) return same;
    return create_disconnected_like(dest, parent, unique_node_name(dest, parent.name));
}

}  // namespace

CopyOptions parse_copy_options(const char* options) {
    CopyOptions result;
    for (const std::string& word : split_state_names(options)) {
        if (word == "no_nodes") result.nodes = false;
        else if (word == "no_links") result.links = false;
        else if (word == "no_tables") result.tables = false;
        else if (word == "no_visual") result.visual = false;
        else if (word == "no_window") result.window = false;
        else fail(5211, "in argument 'options', unknown option '%s'", word.c_str());
    }
    return result;
}

std::vector<Node*> copy_nodes(const std::vector<Node*>& nodes, Net& dest, const CopyOptions& options) {
    std::unordered_map<const Node*, Node*> copy_of;
    std::vector<Node*> copies;
    for (Node* n : nodes) {
        if (copy_of.count(n)) {
            copies.push_back(copy_of[n]);
            continue;
        }
        Node* c = create_node(dest, unique_node_name(dest, n->name), n->num_states());
        copy_fields(*n, *c, options);
        copy_of[n] = c;
        copies.push_back(c);
    }
    std::vector<std::pair<Node*, Node*>> pairs;  // in the order given, each once
    std::unordered_set<const Node*> seen;
    for (std::size_t i = 0; i < nodes.size(); ++i)
        if (seen.insert(nodes[i]).second) pairs.emplace_back(nodes[i], copies[i]);
    for (auto& [from, to] : pairs) {
        if (options.links) {
            for (std::size_t k = 0; k < from->parents.nodes.size(); ++k) {
                Node* p = from->parents.nodes[k];
                auto it = copy_of.find(p);
                connect(it != copy_of.end() ? *it->second : *outside_parent(*p, dest), *to,
                        from->input_names[k], link_delay(*from, k));
            }
        } else if (to->kind == NodeKind::Disconnected) {
            to->kind = NodeKind::Nature;
        }
        // Without its links a node keeps its tables only when it had no parents.
        if (options.tables && (options.links || from->parents.nodes.empty())) {
            to->cpt = from->cpt;
            to->func_states = from->func_states;
            to->func_reals = from->func_reals;
            to->experience = from->experience;
            to->prior_count = from->prior_count;
        }
    }
    discard_compiled(dest);
    return copies;
}

Net* copy_net(const Net& net, Environment& env, const std::string& name, const CopyOptions& options) {
    Net* copy = create_net(env, name);
    copy->title = net.title;
    copy->comment = net.comment;
    copy->user_fields = net.user_fields;
    copy->kept_statements = net.kept_statements;
    copy->auto_update = net.auto_update;
    copy->definitions = net.definitions;
    copy->dimensions = net.dimensions;
    if (options.visual) copy->visual = net.visual;
    if (!options.nodes) return copy;
    std::vector<Node*> copies = copy_nodes(net.nodes.nodes, *copy, options);
    std::unordered_map<const Node*, Node*> copy_of;
    for (std::size_t i = 0; i < copies.size(); ++i) copy_of[net.nodes.nodes[i]] = copies[i];
    for (const NodeSet& set : net.node_sets) {
        NodeSet s{set.name, {}, set.color};
        for (Node* m : set.members) s.members.push_back(copy_of[m]);
        copy->node_sets.push_back(std::move(s));
    }
    if (net.elim_order && options.links) {
        copy->elim_order = env.store.make<NodeList>(copy, true);
        for (Node* n : net.elim_order->nodes) copy->elim_order->nodes.push_back(copy_of[n]);
    }
    return copy;
}

}  // namespace ravelo
