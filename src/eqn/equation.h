// A node's equation as the other layers use it: parsed once and kept on the
// node until what it rests on changes.
#pragma once
#include <cstdint>

#include "eqn/expr.h"
#include "eqn/parser.h"

namespace ravelo {

// A fingerprint of everything a node's parse rests on: the equation text,
// the node's and its parents' names, input names, states and levels.
std::uint64_t equation_stamp(const Node& node);

// The node's parsed equation, parsing it again when the stamp has changed.
// NULL with problem filled when it doesn't parse (or the node has none:
// problem.number is then 0).
const ParsedEquation* node_equation(Node& node, ParseProblem& problem);

}  // namespace ravelo
