// Queries read from a propagated junction tree: the joint probability of a
// configuration and the most probable configuration, both exact.
#pragma once
#include <vector>

#include "net/model.h"

namespace ravelo {

// P(nodes = states | findings); the tree must be propagated.
double joint_probability(Net& net, const std::vector<Node*>& nodes, const int* states);

// The most probable states of every compiled node given the findings, by
// local index; the tree must be propagated.
std::vector<int> most_probable_config(Net& net);

// Expected total utility of the net's utility nodes given the findings; the
// tree must be propagated.
double expected_utility(Net& net);
// Expected utility of each state of a decision node: the findings plus that
// decision, other decisions following their own tables.
std::vector<double> expected_utils(Node& decision);

// The node's expected real value and standard deviation over its beliefs.
double expected_value(Node& node, double* std_dev);

}  // namespace ravelo
