// A node's states and levels: names, titles and comments of states, adding,
// removing and reordering states, and discretisation thresholds (or state
// values).  Every change keeps the node's tables and its children's in step.
#pragma once
#include <string>
#include <vector>

#include "net/model.h"

namespace ravelo {

// The most states a node may have.
constexpr int kMaxStates = 1 << 20;
// Fails unless a node may have count states.
void check_state_count(const std::string& node_name, bool discrete, long long count);

// Splits a list of state names separated by commas or white space.
std::vector<std::string> split_state_names(const char* text);

void set_state_name(Node& node, int state, const char* name);  // NULL: unnamed
void set_state_names(Node& node, const char* names);           // NULL: all unnamed
void set_state_title(Node& node, int state, const char* title);
void set_state_comment(Node& node, int state, const char* comment);
// The state with that name, else with that title; kUndefState when none.
int find_state(const Node& node, const char* name);

// Inserts num_states states before first_state (kLastEntry appends).
constexpr int kLastEntry = -10;
void add_states(Node& node, int first_state, const char* names, int num_states, double cpt_fill);
void remove_state(Node& node, int state);
void reorder_states(Node& node, const int* new_order);

// Levels: num_states+1 increasing thresholds of a continuous node (its
// states follow them), or one value per state of a discrete node; -1
// removes them.
void set_levels(Node& node, int num_states, const double* levels);
// Changes one threshold (continuous node, 0 to its number of states) or one
// state value (discrete node).
void set_level(Node& node, int state, double level);
// Turns a continuous function table into a discrete one over the node's
// intervals; values outside them become undefined, with a warning.
void discretize_function_table(Node& node);

}  // namespace ravelo
