// The tables a node carries over the conditions of its parents: its CPT,
// its function table (discrete or continuous) and its experience table, with
// the rules for when a node may have each and for setting their entries.
#pragma once
#include <string>
#include <vector>

#include "net/model.h"

namespace ravelo {

// Tables beyond this many entries are refused as too large.
constexpr double kMaxTableEntries = 134217728.0;  // 2^27

// Fail unless node may have the table (its own variable and every parent
// discrete or discretised; not too large).
void check_can_have_cpt(const Node& node);
void check_can_have_functable(const Node& node, bool discrete);
void check_can_have_expertable(const Node& node);

// Give node the table if it has none: CPT entries missing, function entries
// undefined, experience 0.
void ensure_cpt(Node& node);
void ensure_func_states(Node& node);
void ensure_func_reals(Node& node);
void ensure_experience(Node& node);

// Rows of the tables matching a parent condition; EVERY_STATE entries match
// every state of their parent.  Fails on a state out of range.
std::vector<std::size_t> matching_rows(const Node& node, const int* parent_states);
// The single row of a parent condition (no EVERY_STATE); fails when out of range.
std::size_t condition_row(const Node& node, const int* parent_states);
// A condition as text: "a=x, b=y" (parent names and state names or indexes).
std::string condition_text(const Node& node, const int* parent_states);

// Sets the CPT rows matching a condition.  A node without a CPT gets one
// unless it has a function table (then 3071).  With checking off, the
// vector is taken as it is.
void set_cpt_rows(Node& node, const int* parent_states, const float* probs, bool checking);
// Replaces the whole CPT at once (length rows x states), each row checked.
void set_whole_cpt(Node& node, const std::vector<float>& cpt);
// Replaces the whole discrete function table at once (one state per row,
// UNDEF_STATE for rows yet to be filled).
void set_whole_func_states(Node& node, const std::vector<int>& states);
// The CPT row of a condition; for a node with only a discrete function
// table, the 0/1 row the function gives.
const float* cpt_row(Node& node, const int* parent_states);

void set_func_state(Node& node, const int* parent_states, int state);
void set_func_real(Node& node, const int* parent_states, double value);
void set_experience(Node& node, const int* parent_states, double amount);

void delete_tables(Node& node);
bool has_table(const Node& node);
// No missing CPT entries and no undefined function entries.
bool table_complete(const Node& node);
// The relation is a function: a function table, or a CPT of 0/1 rows.
bool is_deterministic(const Node& node);

// Lowest and highest finite values of a continuous function table; false when none.
bool func_real_range(const Node& node, double& low, double& high);

}  // namespace ravelo
