// Findings as written on the command line and in scenario files:
//   NODE=STATE      the node is in that state
//   NODE!=STATE     the node is not in that state
//   NODE=[l0,l1,..] a likelihood, one entry in [0, 1] per state
// NODE is a node's name or label; STATE a state's name or label (names first, never an empty
// label) or "#N", the state with index N from 0.
#pragma once
#include <string>
#include <vector>

#include "session.h"

namespace ravelo_cli {

// The node a command-line word means; an unknown one is a usage failure naming close matches.
node_bn* node_named(Session& session, net_bn* net, const std::string& text);
// The nodes of a comma-separated list, or every node when the list is empty.
std::vector<node_bn*> chosen_nodes(Session& session, net_bn* net, const std::string& list);
// Enters one finding; a finding naming nothing is a usage failure, one the engine refuses a
// runtime failure.
void enter_finding_text(Session& session, net_bn* net, const std::string& text);

}  // namespace ravelo_cli
