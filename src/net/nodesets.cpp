#include "net/nodesets.h"

#include <algorithm>

#include "base/failure.h"
#include "net/names.h"

namespace ravelo {

NodeSet* find_node_set(Net& net, const std::string& name) {
    for (NodeSet& set : net.node_sets)
        if (set.name == name) return &set;
    return nullptr;
}

NodeSet& create_node_set(Net& net, const std::string& name) {
    if (NodeSet* set = find_node_set(net, name)) return *set;
    std::string problem = name_problem(name.c_str());
    if (!problem.empty())
        fail(3280, "'%s' is not a legal name for a %s", name.c_str(), ">-Nodeset");
    net.node_sets.push_back(NodeSet{name, {}, {}});
    return net.node_sets.back();
}

void add_to_node_set(Net& net, const std::string& name, Node& node) {
    NodeSet& set = create_node_set(net, name);
    if (std::find(set.members.begin(), set.members.end(), &node) == set.members.end())
        set.members.push_back(&node);
}

bool remove_from_node_set(Net& net, const std::string& name, Node& node) {
    NodeSet* set = find_node_set(net, name);
    if (!set) return false;
    auto it = std::find(set->members.begin(), set->members.end(), &node);
    if (it == set->members.end()) return false;
    set->members.erase(it);
    return true;
}

bool is_in_node_set(const Net& net, const std::string& name, const Node& node) {
    for (const NodeSet& set : net.node_sets)
        if (set.name == name)
            return std::find(set.members.begin(), set.members.end(), &node) != set.members.end();
    return false;
}

std::vector<std::string> node_set_names(const Net& net, const Node* node) {
    std::vector<std::string> names;
    for (const NodeSet& set : net.node_sets)
        if (!node || std::find(set.members.begin(), set.members.end(), node) != set.members.end())
            names.push_back(set.name);
    return names;
}

void delete_node_set(Net& net, const std::string& name) {
    auto& sets = net.node_sets;
    sets.erase(std::remove_if(sets.begin(), sets.end(), [&](const NodeSet& s) { return s.name == name; }),
               sets.end());
}

}  // namespace ravelo
