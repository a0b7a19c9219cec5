// Turning a node's equation into its table, and drawing one value of a node
// from its equation.
#pragma once

namespace ravelo {

class Node;
class RandomGenerator;

// Builds the node's function table (deterministic equation, discrete node,
// discrete parents) or CPT from its equation, num_samples samples per cell
// when a parent is continuous.  rng may be NULL when nothing is sampled.
// Fails with the report made; the node is then left as it was.
void equation_to_table(Node& node, int num_samples, bool samp_unc, bool add_exist,
                       RandomGenerator* rng);

// One value of node drawn from its equation, given its parents' values (one
// per parent: a state index for a discrete parent, a real for a continuous
// one).  The result is a state index for a discrete node without levels, the
// state's level for one with levels, or a real for a continuous node.
double sample_from_equation(Node& node, const double* parent_values, RandomGenerator& rng);

}  // namespace ravelo
