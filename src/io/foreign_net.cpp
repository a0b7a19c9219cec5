#include "io/foreign_net.h"

#include <unordered_map>

#include "base/failure.h"
#include "base/text.h"
#include "io/legal_names.h"
#include "io/linking.h"
#include "io/row_check.h"
#include "net/ops.h"

namespace ravelo {

// Tables beyond this many entries are refused rather than allocated.
constexpr double kMaxTableEntries = 5e7;

int find_node(const ForeignNet& net, const std::string& name) {
    for (size_t i = 0; i < net.nodes.size(); ++i)
        if (net.nodes[i].name == name) return static_cast<int>(i);
    return -1;
}

size_t table_size(const ForeignNet& net, const ForeignNode& node, const ReadPlace& place) {
    double size = static_cast<double>(node.states.size());
    for (const std::string& parent : node.parents) {
        int p = find_node(net, parent);
        if (p < 0) read_failure(place, node.line, format("undefined >-node '%s'", parent.c_str()));
        size *= static_cast<double>(net.nodes[static_cast<size_t>(p)].states.size());
    }
    if (size > kMaxTableEntries)
        read_failure(place, node.line,
                     format("can't create >-CPTable for >-node '%s', because the >-CPTable would "
                            "be too large (%g), due to too many parent >-node-s",
                            node.name.c_str(), size));
    return static_cast<size_t>(size);
}

namespace {

void check_rows(const Node& node, const ReadPlace& place, int line) {
    size_t m = node.states.size();
    for (size_t start = 0; start + m <= node.cpt.size(); start += m) {
        std::string problem = row_problem(&node.cpt[start], static_cast<int>(m));
        if (!problem.empty())
            read_failure(place, line,
                         format("probabilities of >-node '%s' for row %zu %s", node.name.c_str(),
                                start / m, problem.c_str()));
    }
}

void fill_node(Net& net, Node& node, const ForeignNode& from) {
    UniqueNames state_names;
    for (size_t s = 0; s < from.states.size(); ++s) {
        StateInfo& state = node.states[s];
        state.name = state_names.legal(from.states[s]);
        if (state.name != from.states[s]) state.title = from.states[s];
    }
    if (!from.title.empty()) node.title = from.title;
    node.comment = from.comment;
    node.has_position = from.has_position;
    node.vis_x = from.x;
    node.vis_y = from.y;
    for (const auto& [key, value] : from.fields) node.user_fields.set(key, value);
    (void)net;
}

Net* build(Environment& env, const ForeignNet& from, const ReadPlace& place, Net& net) {
    UniqueNames node_names;
    std::unordered_map<std::string, Node*> by_foreign;
    for (const ForeignNode& f : from.nodes) {
        if (by_foreign.count(f.name))
            read_failure(place, f.line,
                         format("more than one %s with the name '%s'", "node", f.name.c_str()));
        bool utility = f.kind == NodeKind::Utility;
        if (f.states.empty() && !utility)
            read_failure(place, f.line, format(">-node '%s' has no states", f.name.c_str()));
        Node* node = create_node(net, node_names.legal(f.name), static_cast<int>(f.states.size()));
        node->kind = f.kind;
        if (node->name != f.name) node->title = f.name;
        fill_node(net, *node, f);
        by_foreign[f.name] = node;
    }
    for (const ForeignNode& f : from.nodes) {
        Node& child = *by_foreign[f.name];
        for (const std::string& p : f.parents) {
            auto it = by_foreign.find(p);
            if (it == by_foreign.end())
                read_failure(place, f.line, format("undefined >-node '%s'", p.c_str()));
            link_checked(*it->second, child, "", place, f.line);
        }
    }
    for (const ForeignNode& f : from.nodes) {
        Node& node = *by_foreign[f.name];
        if (!f.utilities.empty()) {
            if (static_cast<double>(f.utilities.size()) != table_rows(node))
                read_failure(place, f.table_line ? f.table_line : f.line,
                             format("utility table of >-node '%s' has %zu entries, but there should be %.0f",
                                    f.name.c_str(), f.utilities.size(), table_rows(node)));
            node.func_reals = f.utilities;
        }
        if (f.cpt.empty()) continue;
        if (static_cast<double>(f.cpt.size()) != table_rows(node) * node.num_states())
            read_failure(place, f.line,
                         format("table of >-node '%s' has %zu entries, but there should be %.0f",
                                f.name.c_str(), f.cpt.size(),
                                table_rows(node) * node.num_states()));
        node.cpt = f.cpt;
        check_rows(node, place, f.table_line ? f.table_line : f.line);
    }
    for (const auto& [key, value] : from.fields) net.user_fields.set(key, value);
    if (!from.title.empty()) net.title = from.title;
    net.comment = from.comment;
    (void)env;
    return &net;
}

// A discrete function table as the probability table it means: each row
// certain of its state, undefined where the function is.
std::vector<float> function_as_probabilities(const Node& node) {
    std::vector<float> cpt;
    size_t m = node.states.size();
    for (int state : node.func_states) {
        bool defined = state >= 0 && static_cast<size_t>(state) < m;
        for (size_t s = 0; s < m; ++s)
            cpt.push_back(!defined ? kMissingProb : static_cast<size_t>(state) == s ? 1.0f : 0.0f);
    }
    return cpt;
}

}  // namespace

Net* build_net(Environment& env, const ForeignNet& description, const ReadPlace& place) {
    UniqueNames net_names;
    Net* net = create_net(env, net_names.legal(description.name.empty() ? "Net" : description.name));
    if (net->name != description.name && !description.name.empty() && description.title.empty())
        net->title = description.name;
    try {
        return build(env, description, place, *net);
    } catch (...) {
        delete_net(*net);
        throw;
    }
}

ForeignNet describe_net(const Net& net) {
    ForeignNet out;
    out.name = foreign_name(net.name, net.title);
    out.title = net.title == out.name ? std::string() : net.title;
    out.comment = net.comment;
    out.fields = net.user_fields.fields;
    for (const Node* node : net.nodes.nodes) {
        ForeignNode f;
        f.name = foreign_name(node->name, node->title);
        f.title = node->title == f.name ? std::string() : node->title;
        f.comment = node->comment;
        for (const StateInfo& s : node->states)
            f.states.push_back(foreign_name(s.name.empty() ? format("s%zu", f.states.size()) : s.name,
                                            s.title));
        for (const Node* p : node->parents.nodes) f.parents.push_back(foreign_name(p->name, p->title));
        f.kind = node->kind;
        f.cpt = node->cpt.empty() ? function_as_probabilities(*node) : node->cpt;
        f.utilities = node->func_reals;
        f.has_position = node->has_position;
        f.x = node->vis_x;
        f.y = node->vis_y;
        f.fields = node->user_fields.fields;
        out.nodes.push_back(std::move(f));
    }
    return out;
}

}  // namespace ravelo
