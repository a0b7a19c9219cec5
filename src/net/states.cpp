#include "net/states.h"

#include <algorithm>
#include <cstring>

#include "base/failure.h"
#include "base/text.h"
#include "net/names.h"
#include "net/ops.h"
#include "net/reshape.h"
#include "net/tables.h"

namespace ravelo {
namespace {

int same_name_state(const Node& node, const std::string& name, int except) {
    for (int i = 0; i < node.num_states(); ++i)
        if (i != except && node.states[static_cast<std::size_t>(i)].name == name) return i;
    return -1;
}

// Why a list of new state names can't be given, or empty.
std::string names_problem(const std::vector<std::string>& names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::string problem = name_problem(names[i].c_str());
        if (!problem.empty()) return problem;
        for (std::size_t j = 0; j < i; ++j)
            if (names[j] == names[i]) return format("name '%s' appears twice", names[i].c_str());
    }
    return {};
}

void structure_changed(Node& node) { discard_compiled(*node.net); }

}  // namespace

void check_state_count(const std::string& node_name, bool discrete, long long count) {
    const char* name = node_name.c_str();
    if (count < 0)
        fail(3250, "can't change the number of states of >-node '%s' to %lld, because that is negative",
             name, count);
    if (discrete && count < 1)
        fail(3251, "can't change the number of states of >-node '%s' to %lld, because it is a discrete "
                   ">-node, and discrete >-node-s must have at least one state",
             name, count);
    if (count > kMaxStates)
        fail(3276, "can't change the number of states of >-node '%s' to %lld, because that is more than "
                   "the maximum of %d",
             name, count, kMaxStates);
}

std::vector<std::string> split_state_names(const char* text) {
    std::vector<std::string> names;
    std::string current;
    for (const char* c = text; c && *c; ++c) {
        if (*c == ',' || *c == ' ' || *c == '\t' || *c == '\n' || *c == '\r') {
            if (!current.empty()) names.push_back(current);
            current.clear();
        } else {
            current += *c;
        }
    }
    if (!current.empty()) names.push_back(current);
    return names;
}

void set_state_name(Node& node, int state, const char* name) {
    const int last = node.num_states() - 1;
    if (state < 0 || state > last)
        fail(3255, "can't change the name of state with index %d of >-node %s, because its state "
                   "indexes must be between 0 and %d",
             state, node.name.c_str(), last);
    std::string new_name = name ? name : "";
    if (name) {
        std::string problem = name_problem(name);
        if (problem.empty() && same_name_state(node, new_name, state) >= 0)
            problem = format("state %d already has that name", same_name_state(node, new_name, state));
        if (!problem.empty())
            fail(3259, "can't set the name of the %s state of >-node '%s', because %s",
                 ordinal(state + 1).c_str(), node.name.c_str(), problem.c_str());
    }
    node.states[static_cast<std::size_t>(state)].name = new_name;
}

void set_state_names(Node& node, const char* text) {
    std::vector<std::string> names = split_state_names(text);
    if (text) {
        std::string problem = names_problem(names);
        if (problem.empty() && static_cast<int>(names.size()) != node.num_states())
            problem = format("list has %d names, but the >-node has %d states",
                             static_cast<int>(names.size()), node.num_states());
        if (!problem.empty())
            fail(3260, "couldn't change the state names of >-node '%s', because new %s",
                 node.name.c_str(), problem.c_str());
    }
    for (int i = 0; i < node.num_states(); ++i)
        node.states[static_cast<std::size_t>(i)].name = text ? names[static_cast<std::size_t>(i)] : "";
}

void set_state_title(Node& node, int state, const char* title) {
    if (node.type == NodeType::Continuous && node.levels.empty())
        fail(3258, "can't set a state title of >-node %s, because it is an undiscretized continuous "
                   ">-node with no states",
             node.name.c_str());
    const int last = node.num_states() - 1;
    if (state < 0 || state > last)
        fail(3256, "can't set the title of state %d of >-node %s, because its state indexes must be "
                   "between 0 and %d",
             state, node.name.c_str(), last);
    node.states[static_cast<std::size_t>(state)].title = title ? title : "";
}

void set_state_comment(Node& node, int state, const char* comment) {
    const int last = node.num_states() - 1;
    if (state < 0 || state > last)
        fail(3257, "can't change the comment of state %d of >-node %s, because its state indexes must "
                   "be between 0 and %d",
             state, node.name.c_str(), last);
    node.states[static_cast<std::size_t>(state)].comment = comment ? comment : "";
}

int find_state(const Node& node, const char* name) {
    for (int i = 0; i < node.num_states(); ++i)
        if (node.states[static_cast<std::size_t>(i)].name == name) return i;
    for (int i = 0; i < node.num_states(); ++i)
        if (!node.states[static_cast<std::size_t>(i)].title.empty() &&
            node.states[static_cast<std::size_t>(i)].title == name)
            return i;
    return kUndefState;
}

void add_states(Node& node, int first, const char* text, int num, double cpt_fill) {
    const char* name = node.name.c_str();
    const int count = node.num_states();
    if (node.type == NodeType::Continuous) {
        if (node.levels.empty())
            fail(3252, "can't make >-node '%s' have %d states, because it is a continuous >-node and no "
                       "discretization thresholds are defined",
                 name, count + num);
        fail(3263, "can't add states to >-node '%s', because it is a continuous >-node whose states "
                   "come from its discretization thresholds (use >-SetNodeLevels_bn)",
             name);
    }
    check_state_count(node.name, true, static_cast<long long>(count) + num);
    if (first == kLastEntry) first = count;
    if (first < 0 || first > count)
        fail(3264, "can't add states to >-node '%s' before state %d, because its state indexes must be "
                   "between 0 and %d",
             name, first, count);
    std::vector<std::string> names = split_state_names(text);
    if (text) {
        std::string problem = names_problem(names);
        for (std::size_t i = 0; problem.empty() && i < names.size(); ++i)
            if (same_name_state(node, names[i], -1) >= 0)
                problem = format("'%s' is already the name of a state", names[i].c_str());
        if (problem.empty() && static_cast<int>(names.size()) != num)
            problem = format("list has %d names, but %d states are added",
                             static_cast<int>(names.size()), num);
        if (!problem.empty())
            fail(3262, "'%s' cannot be a state name, because it %s", text, problem.c_str());
    }
    if (num == 0) return;
    std::vector<int> old_of_new;
    std::vector<StateInfo> states;
    for (int i = 0; i < first; ++i) old_of_new.push_back(i);
    for (int i = 0; i < num; ++i) old_of_new.push_back(-1);
    for (int i = first; i < count; ++i) old_of_new.push_back(i);
    for (int j : old_of_new) {
        StateInfo s;
        if (j >= 0) s = node.states[static_cast<std::size_t>(j)];
        else if (text) s.name = names[states.size() - static_cast<std::size_t>(first)];
        states.push_back(s);
    }
    if (!node.levels.empty()) {
        std::vector<double> levels;
        for (int j : old_of_new)
            levels.push_back(j >= 0 ? node.levels[static_cast<std::size_t>(j)] : undef_value());
        node.levels = levels;
    }
    node.states = std::move(states);
    const float fill = is_undef(cpt_fill) ? kMissingProb : static_cast<float>(cpt_fill);
    remap_own_states(node, old_of_new, fill);
    structure_changed(node);
}

void remove_state(Node& node, int state) {
    const char* name = node.name.c_str();
    const int count = node.num_states();
    if (state < 0 || state >= count)
        fail(3265, "can't remove state %d of >-node '%s', because its state indexes must be between 0 "
                   "and %d",
             state, name, count - 1);
    if (node.type == NodeType::Continuous) {
        if (count == 1)
            fail(3253, "can't remove the discretization thresholds of a >-continuous >-node (%s), when "
                       "it still has states",
                 name);
        // Two neighbouring intervals merge: the threshold between them goes.
        node.levels.erase(node.levels.begin() + (state == count - 1 ? state : state + 1));
    } else {
        check_state_count(node.name, true, count - 1);
        if (!node.levels.empty()) node.levels.erase(node.levels.begin() + state);
    }
    std::vector<int> old_of_new;
    for (int i = 0; i < count; ++i)
        if (i != state) old_of_new.push_back(i);
    node.states.erase(node.states.begin() + state);
    int zero_rows = remap_own_states(node, old_of_new, kMissingProb);
    structure_changed(node);
    if (zero_rows > 0)
        warning(3088, "removing state %d from >-node %s creates a row in its CPT table having all zeros "
                      "(i.e. indicates impossible condition)",
                state, name);
}

void reorder_states(Node& node, const int* new_order) {
    const int count = node.num_states();
    std::vector<int> old_of_new(new_order, new_order + count);
    std::vector<bool> seen(static_cast<std::size_t>(count), false);
    for (int j : old_of_new) {
        if (j < 0 || j >= count || seen[static_cast<std::size_t>(j)])
            fail(3266, "couldn't reorder the states of >-node '%s', because the new order is not a "
                       "permutation of its %d state indexes",
                 node.name.c_str(), count);
        seen[static_cast<std::size_t>(j)] = true;
    }
    if (node.type == NodeType::Continuous)
        fail(3267, "couldn't reorder the states of >-node '%s', because it is a continuous >-node, "
                   "whose states are ordered by its discretization thresholds",
             node.name.c_str());
    std::vector<StateInfo> states;
    std::vector<double> levels;
    for (int j : old_of_new) {
        states.push_back(node.states[static_cast<std::size_t>(j)]);
        if (!node.levels.empty()) levels.push_back(node.levels[static_cast<std::size_t>(j)]);
    }
    node.states = std::move(states);
    node.levels = std::move(levels);
    remap_own_states(node, old_of_new, kMissingProb);
    structure_changed(node);
}

}  // namespace ravelo
