// The report on an elimination order: the order itself, the cliques it makes, and what belief
// updating over the resulting tree will require.
#pragma once
#include <string>

#include "infer/junction_tree.h"

namespace ravelo {

// "Max Required:" with the memory and time lines, for a tree of 'table_entries' float entries.
std::string requirements_text(double table_entries);

// "Compiled to N cliques, with total table size ..." for a compiled net's tree.
std::string compiled_size_text(const JunctionTree& jt);

// The whole report for a compiled net's tree.
std::string elim_order_report(const Net& net, const JunctionTree& jt);

}  // namespace ravelo
