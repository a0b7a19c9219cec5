// The flat tables of a junction tree: allocation, loading from node tables
// and kept priors, and reading sums off a clique.
#pragma once
#include <vector>

#include "infer/junction_tree.h"
#include "infer/table_walk.h"

namespace ravelo {

// Sizes every clique and sepset table and the working space of message passing.
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

// The walk over the clique's entries that agree with the hard findings, paired
// with a target table over 'target' (members of the clique, in its order).
TableWalk clique_walk(const JunctionTree& jt, const Clique& clique, const std::vector<int>& target);
// The walk over the sepset's own entries that agree with the hard findings.
const TableWalk& sepset_walk(const JunctionTree& jt, const Sepset& sepset);

// The clique's current entries, whether still those of the kept prior or not.
const float* current_entries(const JunctionTree& jt, const Clique& clique);
// Copies the kept prior into a clique (sepset) whose table still stands for it.
void restore_from_prior(JunctionTree& jt, Clique& clique);
void restore_from_prior(JunctionTree& jt, Sepset& sepset);

// Sums of the clique's entries that agree with the hard findings onto one
// member's states (out: num_states doubles), and of all of them.
void member_sums(const JunctionTree& jt, const Clique& clique, int local, int num_states, double* out);
double clique_total(const JunctionTree& jt, const Clique& clique);

int member_position(const Clique& clique, int local);

// The node's family (parents, then the node) when all of it lies in the
// clique once, so that its table multiplies in through a walk.
bool family_within(const JunctionTree& jt, const Clique& clique, const Node& node, std::vector<int>& members);

}  // namespace ravelo
