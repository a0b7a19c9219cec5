// Compiling a net into its junction tree, and the memory check that guards
// the building of its tables.
#pragma once
#include "infer/elim_order.h"
#include "infer/junction_tree.h"

namespace ravelo {

struct CompileOptions {
    bool optimize = false;
    bool update = true;
    bool report = false;
    HaltCheck halt = nullptr;
};

constexpr double kMaxTableBytes = 4e9;

void compile_net(Net& net, const CompileOptions& options);
void uncompile_net(Net& net);

// Refuses (or, at compile time, warns about) tables too large to build.
void check_table_memory(Net& net, const JunctionTree& jt, bool at_compile);

// The elimination order of the net's own list as local indexes of g.
std::vector<int> local_order(const Graph& g, const NodeList& order);

// Builds the tree of g for an order of its local indexes.
std::unique_ptr<JunctionTree> tree_for_order(Graph g, Net& net, const std::vector<int>& order);

}  // namespace ravelo
