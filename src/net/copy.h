// Copying nets and nodes, within a net or into another one.
#pragma once
#include <string>
#include <vector>

#include "net/model.h"

namespace ravelo {

struct CopyOptions {
    bool nodes = true;
    bool links = true;
    bool tables = true;
    bool visual = true;
    bool window = true;
};
// Reads the option words "no_nodes", "no_links", "no_tables", "no_visual",
// "no_window" (separated by commas or white space); fails on any other.
CopyOptions parse_copy_options(const char* options);

// Copies nodes (of one net) into dest, giving each the first free name
// like its own.  Links among the copied nodes are copied; a parent left out
// is linked to as it is when copying within its own net, else to the node of
// dest with its name and number of states, else to a DISCONNECTED node made
// like it.  Returns the copies in the order of `nodes`.
std::vector<Node*> copy_nodes(const std::vector<Node*>& nodes, Net& dest, const CopyOptions& options);

// A copy of net named name in env.
Net* copy_net(const Net& net, Environment& env, const std::string& name, const CopyOptions& options);

}  // namespace ravelo
