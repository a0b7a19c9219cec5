// Noisy-MAX nodes as the .xdsl format gives them, turned into full tables.
#pragma once
#include "io/foreign_net.h"
#include "io/xml.h"

namespace ravelo {

// Fills node.cpt from the element's <parameters> (and <strengths>): per parent, one
// distribution over the node's states for each parent state, in the parent's strength
// order, whose last is the parent's distinguished state; then the leak's distribution.
// A node's states run from the most to the least severe, the last being distinguished.
void read_noisy_max(const XmlElement& e, const ForeignNet& net, ForeignNode& node, const ReadPlace& place);

}  // namespace ravelo
