// Where collecting ends: the root of each piece of the tree.
#pragma once
#include "infer/junction_tree.h"

namespace ravelo {

// In each piece of the tree holding a changed clique, marks as waiting the
// root that collecting should end in: the smallest clique (counting only the
// entries the hard findings leave) on the paths between the changed cliques.
// Every clique on those paths takes in a message while collecting wherever
// the root is, but the root takes in all of them before it is summed for
// any: a small root spares a large clique the extra sweeps.
void choose_roots(JunctionTree& jt);

}  // namespace ravelo
