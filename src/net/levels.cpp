// Discretisation thresholds of continuous nodes and state values of discrete ones.
#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "net/ops.h"
#include "net/reshape.h"
#include "net/states.h"
#include "net/tables.h"

namespace ravelo {
namespace {

void remove_levels(Node& node) {
    if (node.type == NodeType::Continuous && node.num_states() > 0)
        fail(3253, "can't remove the discretization thresholds of a >-continuous >-node (%s), when it "
                   "still has states",
             node.name.c_str());
    node.levels.clear();
}

void check_thresholds(const Node& node, int num, const double* levels) {
    const char* name = node.name.c_str();
    for (int i = 0; i <= num; ++i)
        if (is_undef(levels[i]) || (i > 0 && !(levels[i] > levels[i - 1])))
            fail(3268, "couldn't change the discretization thresholds of >-node %s, because they "
                       "aren't all defined and in increasing order (threshold %d is %g)",
                 name, i, levels[i]);
    double low = 0, high = 0;
    if (!func_real_range(node, low, high)) return;
    if (levels[0] > low)
        fail(3269, "couldn't change the discretization thresholds of >-node %s, because new lowest "
                   "range (%.30g) isn't as low as the lowest value of the >-node's continuous "
                   ">-functable (%.30g)",
             name, levels[0], low);
    if (levels[num] < high)
        fail(3270, "couldn't change the discretization thresholds of >-node %s, because new highest "
                   "range (%.30g) isn't as high as the highest value of the >-node's continuous "
                   ">-functable (%.30g)",
             name, levels[num], high);
}

void set_thresholds(Node& node, int num, const double* levels) {
    if (num == 0) {
        // No states left: the thresholds go, and with them every table over the states.
        std::vector<int> none;
        node.levels.clear();
        node.states.clear();
        remap_own_states(node, none, kMissingProb);
        node.cpt.clear();
        node.func_states.clear();
        node.experience.clear();
        return;
    }
    check_thresholds(node, num, levels);
    const int old = node.num_states();
    std::vector<int> old_of_new;
    for (int j = 0; j < num; ++j) old_of_new.push_back(j < old ? j : -1);
    node.levels.assign(levels, levels + num + 1);
    node.states.resize(static_cast<std::size_t>(num));
    if (old == 0) {
        // Newly discretised: tables over the states start fresh.
        node.cpt.clear();
        node.func_states.clear();
        node.experience.clear();
    }
    if (old != num) remap_own_states(node, old_of_new, kMissingProb);
}

void refuse_level(const Node& node, int state, const std::string& reason) {
    fail(3272, "couldn't change discretization threshold or state value of state %d of >-node %s, because %s",
         state, node.name.c_str(), reason.c_str());
}

}  // namespace

void set_level(Node& node, int state, double level) {
    if (state < 0) refuse_level(node, state, "state can't be negative");
    const bool continuous = node.type == NodeType::Continuous;
    const int last = continuous ? static_cast<int>(node.levels.size()) - 1 : node.num_states() - 1;
    if (state > last || node.levels.empty()) refuse_level(node, state, "it doesn't have that many states");
    double low = 0, high = 0;
    if (continuous && func_real_range(node, low, high)) {
        if (state == 0 && level > low)
            refuse_level(node, state,
                         format("new level (%.30g) is more than the lowest value of the >-node's continuous "
                                ">-functable (%.30g)",
                                level, low));
        if (state == last && level < high)
            refuse_level(node, state,
                         format("new level (%.30g) is less than the highest value of the >-node's continuous "
                                ">-functable (%.30g)",
                                level, high));
    }
    if (continuous) {
        std::vector<double> levels = node.levels;
        levels[static_cast<std::size_t>(state)] = level;
        check_thresholds(node, last, levels.data());
    }
    node.levels[static_cast<std::size_t>(state)] = level;
    discard_compiled(*node.net);
}

void discretize_function_table(Node& node) {
    if (node.func_reals.empty() || node.levels.size() < 2) return;
    const int count = node.num_states();
    bool outside = false;
    std::vector<int> states(node.func_reals.size(), kUndefState);
    for (std::size_t r = 0; r < states.size(); ++r) {
        const double v = node.func_reals[r];
        if (is_undef(v)) continue;
        if (v < node.levels.front() || v > node.levels.back()) {
            outside = true;
            continue;
        }
        int s = 0;
        while (s < count - 1 && v >= node.levels[static_cast<std::size_t>(s) + 1]) ++s;
        states[r] = s;
    }
    node.func_states = std::move(states);
    node_tables_changed(node);
    if (outside) warning(3273, "some values of the deterministic table were outside the range of the discretization");
}

void set_levels(Node& node, int num, const double* levels) {
    const char* name = node.name.c_str();
    if (num == -1 || !levels) {
        remove_levels(node);
    } else if (num < 0 || num > kMaxStates) {
        check_state_count(node.name, false, num);
    } else if (node.type == NodeType::Continuous) {
        set_thresholds(node, num, levels);
    } else {
        if (num != node.num_states())
            fail(3271, "couldn't change the state values of >-node %s, because %d values were given, "
                       "but it has %d states",
                 name, num, node.num_states());
        node.levels.assign(levels, levels + num);
    }
    discard_compiled(*node.net);
}

}  // namespace ravelo
