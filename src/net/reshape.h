// Keeping a node's tables in step with the shape of its relation: when a
// parent is added or removed, or the states of the node or of a parent are
// added, removed or reordered, the existing entries are carried over instead
// of being dropped.
#pragma once
#include <vector>

#include "net/model.h"

namespace ravelo {

// A table is a dense row-major array; along one of its axes, new index j
// takes the entries of old index old_of_new[j], or `fill` when that is -1.
// outer and inner are the sizes of the axes before and after it.
template <class T>
std::vector<T> remap_axis(const std::vector<T>& data, std::size_t outer, std::size_t inner,
                          const std::vector<int>& old_of_new, T fill) {
    const std::size_t old_size = outer && inner ? data.size() / (outer * inner) : 0;
    std::vector<T> out(outer * old_of_new.size() * inner, fill);
    for (std::size_t o = 0; o < outer; ++o)
        for (std::size_t j = 0; j < old_of_new.size(); ++j) {
            int from = old_of_new[j];
            if (from < 0 || static_cast<std::size_t>(from) >= old_size) continue;
            const T* src = &data[(o * old_size + static_cast<std::size_t>(from)) * inner];
            T* dst = &out[(o * old_of_new.size() + j) * inner];
            for (std::size_t i = 0; i < inner; ++i) dst[i] = src[i];
        }
    return out;
}

// Remaps the parent axis `parent_index` of every table of child.  The other
// parents and the child's own states must already have their current counts.
void remap_parent_axis(Node& child, int parent_index, const std::vector<int>& old_of_new);

// After node's own states changed (new state j was old state old_of_new[j],
// -1 for a new one): its own tables follow, and so do its children's.
// New CPT entries get cpt_fill.  Returns the number of CPT rows that became
// all zeros.
int remap_own_states(Node& node, const std::vector<int>& old_of_new, float cpt_fill);

// A new parent at parent_index (already in the parent list): each existing
// row is repeated for every state of the new parent.
void insert_parent_axis(Node& child, int parent_index);
// The parent at parent_index is about to go (still in the list): the rows of
// its first state are kept.
void drop_parent_axis(Node& child, int parent_index);

// The identity mapping of n states.
std::vector<int> identity_states(int n);

}  // namespace ravelo
