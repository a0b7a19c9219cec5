#include "net/reshape.h"

#include <algorithm>
#include <numeric>

#include "base/text.h"
#include "net/ops.h"

namespace ravelo {
namespace {

std::size_t states_of(const Node* n) { return static_cast<std::size_t>(n->num_states()); }

std::size_t parents_before(const Node& child, int k) {
    std::size_t n = 1;
    for (int i = 0; i < k; ++i) n *= states_of(child.parents.nodes[static_cast<std::size_t>(i)]);
    return n;
}

std::size_t parents_after(const Node& child, int k) {
    std::size_t n = 1;
    for (std::size_t i = static_cast<std::size_t>(k) + 1; i < child.parents.nodes.size(); ++i)
        n *= states_of(child.parents.nodes[i]);
    return n;
}

}  // namespace

std::vector<int> identity_states(int n) {
    std::vector<int> v(static_cast<std::size_t>(std::max(n, 0)));
    std::iota(v.begin(), v.end(), 0);
    return v;
}

void remap_parent_axis(Node& child, int k, const std::vector<int>& old_of_new) {
    const std::size_t outer = parents_before(child, k);
    const std::size_t after = parents_after(child, k);
    if (!child.cpt.empty())
        child.cpt = remap_axis(child.cpt, outer, after * states_of(&child), old_of_new, kMissingProb);
    if (!child.func_states.empty())
        child.func_states = remap_axis(child.func_states, outer, after, old_of_new, kUndefState);
    if (!child.func_reals.empty())
        child.func_reals = remap_axis(child.func_reals, outer, after, old_of_new, undef_value());
    if (!child.experience.empty())
        child.experience = remap_axis(child.experience, outer, after, old_of_new, 0.0);
    node_tables_changed(child);
}

int remap_own_states(Node& node, const std::vector<int>& old_of_new, float cpt_fill) {
    int zero_rows = 0;
    if (!node.cpt.empty()) {
        const std::size_t rows = static_cast<std::size_t>(table_rows(node));
        const std::size_t old_m = rows ? node.cpt.size() / rows : 0;
        std::vector<float> before = node.cpt;
        node.cpt = remap_axis(node.cpt, rows, 1, old_of_new, cpt_fill);
        const std::size_t m = old_of_new.size();
        for (std::size_t r = 0; r < rows && m; ++r) {
            bool was_zero = true, now_zero = true;
            for (std::size_t i = 0; i < old_m; ++i) was_zero &= before[r * old_m + i] == 0.0f;
            for (std::size_t i = 0; i < m; ++i) now_zero &= node.cpt[r * m + i] == 0.0f;
            if (now_zero && !was_zero) ++zero_rows;
        }
    }
    if (!node.func_states.empty()) {
        int old_count = 0;
        for (int from : old_of_new) old_count = std::max(old_count, from + 1);
        std::vector<int> new_of_old(static_cast<std::size_t>(old_count), kUndefState);
        for (std::size_t j = 0; j < old_of_new.size(); ++j)
            if (old_of_new[j] >= 0) new_of_old[static_cast<std::size_t>(old_of_new[j])] = static_cast<int>(j);
        for (int& s : node.func_states)
            if (s >= 0) s = s < old_count ? new_of_old[static_cast<std::size_t>(s)] : kUndefState;
    }
    for (Node* child : node.children.nodes) {
        auto& ps = child->parents.nodes;
        for (std::size_t k = 0; k < ps.size(); ++k)
            if (ps[k] == &node) remap_parent_axis(*child, static_cast<int>(k), old_of_new);
    }
    node.finding = {};
    node_tables_changed(node);
    return zero_rows;
}

void insert_parent_axis(Node& child, int k) {
    const Node* parent = child.parents.nodes[static_cast<std::size_t>(k)];
    remap_parent_axis(child, k, std::vector<int>(states_of(parent), 0));
}

void drop_parent_axis(Node& child, int k) {
    const Node* parent = child.parents.nodes[static_cast<std::size_t>(k)];
    if (parent->num_states() == 0) {
        // A parent without states leaves no shape to keep.
        child.cpt.clear();
        child.func_states.clear();
        child.func_reals.clear();
        child.experience.clear();
        node_tables_changed(child);
        return;
    }
    remap_parent_axis(child, k, {0});
}

}  // namespace ravelo
