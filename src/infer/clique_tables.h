// The flat tables of a junction tree: allocation with the index maps,
// loading from node tables, and the tight loops that marginalise onto a
// sepset and multiply a message in.
#pragma once
#include <vector>

#include "infer/junction_tree.h"

namespace ravelo {

// Sizes every clique and sepset table and computes the index maps.
void allocate_tables(JunctionTree& jt);
void free_tables(JunctionTree& jt);

// Clique tables become the products of their homed nodes' tables; sepset
// tables become all ones.  Nothing of the findings is in them afterwards.
void load_node_tables(JunctionTree& jt);

// A node's tables as loaded into its home clique: missing tables and rows
// uniform, impossible rows zero, function tables as 0/1 rows.
std::vector<float> loadable_table(const Node& node);

// Multiplies the clique's table by a vector over one of its members' states.
void multiply_by_states(Clique& clique, int member_position, int num_states, const float* factor);

// out (sepset size, zeroed here) receives the clique's sums (or maxima) onto the map.
void sum_onto(const Clique& clique, const IndexMap& map, double* out, std::size_t out_size);
void max_onto(const Clique& clique, const IndexMap& map, double* out, std::size_t out_size);
// Multiplies the clique's table by a factor over the sepset's entries.
void multiply_by(Clique& clique, const IndexMap& map, const float* factor);
// The same, reading the entries from source (the clique's size) instead.
void multiply_by(Clique& clique, const IndexMap& map, const float* factor, const float* source);
void sum_onto(const float* table, const IndexMap& map, double* out, std::size_t out_size);

// The clique's current entries, whether still those of the kept prior or not.
const float* current_entries(const JunctionTree& jt, const Clique& clique);
// Copies the kept prior into a clique whose table still stands for it.
void restore_from_prior(JunctionTree& jt, Clique& clique);

// Sums of the clique's table onto one member's states (out: num_states doubles).
void member_sums(const Clique& clique, int member_position, int num_states, double* out);
double table_sum(const std::vector<float>& table);

int member_position(const Clique& clique, int local);

// The map from a clique onto a family of its members in the family's own order.
IndexMap make_family_map(const JunctionTree& jt, const Clique& clique, const Sepset& family);

}  // namespace ravelo
