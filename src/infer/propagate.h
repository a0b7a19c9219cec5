// Propagation over the junction tree: cliques worked from a circular queue
// by their propagation states, collecting towards a root and distributing
// back, with only changed cliques sending while collecting.
#pragma once
#include "infer/junction_tree.h"

namespace ravelo {

constexpr int kPropagated = 0;
constexpr int kNothingToPropagate = 1;
constexpr int kPropagationFault = -3;
constexpr int kPropagationOutOfMemory = -5;
constexpr int kZeroProbability = -11;

// Multiplies the probability of findings by the root's normalising sum.
int propagate(JunctionTree& jt, double& findings_probability);

// Passes the sending clique's message through the link to its neighbour.
void pass_message(JunctionTree& jt, Clique& from, const CliqueLink& link);

}  // namespace ravelo
