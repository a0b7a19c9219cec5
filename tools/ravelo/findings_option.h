// Findings given on the command line as NODE=STATE.
#pragma once
#include <string>
#include <vector>

#include "session.h"

namespace ravelo_cli {

// STATE is a state name, a state title, or "#N" (the N-th state, from 0);
// UNDEF_STATE when the node has no such state.
state_bn state_for(node_bn* node, const std::string& text);

// Enters each NODE=STATE finding; a malformed one, an unknown node or state,
// or a finding the engine refuses is explained and fails the command.
void enter_findings(Session& session, net_bn* net, const std::vector<std::string>& findings);

}  // namespace ravelo_cli
