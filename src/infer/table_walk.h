// Walks over the entries of a clique (or sepset) table that agree with the
// hard findings, paired with the matching entries of a table over some of its
// members (a sepset, one member, a family).  Observed members are left out
// of the walk, so that passing a message, loading a prior and reading beliefs
// touch only the slice of each table the findings leave possible; entries
// outside the slice are never read and stand for zeros.
#pragma once
#include <cstddef>
#include <vector>

#include "infer/junction_tree.h"
#include "infer/walk_shape.h"

namespace ravelo {

// members: the walked table's members (the last varies fastest); target: the
// target table's members in its own order, all among 'members'.  fixed (by
// local index, -1: free) holds the observed states, or is null for the
// whole table.
TableWalk make_walk(const Graph& g, const std::vector<int>& members, const std::vector<int>& target,
                    const int* fixed, const std::vector<int>& second = {}, const std::vector<int>& third = {});

// out (the target's size) gets the sums (or maxima) of the walked entries
// added onto its entries; the caller clears the target's slice first.
void walk_sum(const TableWalk& w, const float* table, double* out);
void walk_max(const TableWalk& w, const float* table, double* out);
// t = source * factor (source may be t itself).
void walk_multiply(const TableWalk& w, float* t, const float* source, const float* factor);
// t = source over the walked entries.
void walk_copy(const TableWalk& w, float* t, const float* source);
void walk_clear(const TableWalk& w, double* t);
void walk_fill(const TableWalk& w, float* t, float value);
void walk_scale(const TableWalk& w, float* t, float by);
double walk_total(const TableWalk& w, const float* t);
// t = source * factor (over the target) while out (over the second target)
// gets the new entries added onto its entries, in one sweep.
void walk_multiply_sum(const TableWalk& w, float* t, const float* source, const float* factor, double* out);
// t = source * factor while out (over the second target) and out2 (over the
// third) both get the new entries added, in one sweep.
void walk_multiply_sum2(const TableWalk& w, float* t, const float* source, const float* factor, double* out,
                        double* out2);
// The same as walk_multiply_sum with a second factor, over the third target.
void walk_multiply2_sum(const TableWalk& w, float* t, const float* source, const float* factor, const float* factor2,
                        double* out);

// Over a sepset's own walk: the sepset takes the fresh sums and ratio the
// factor by which they change it from 'old' (0 where it held 0; old may be
// the sepset itself).
void walk_replace(const TableWalk& w, const double* fresh, const float* old, float* sepset, float* ratio);

}  // namespace ravelo
