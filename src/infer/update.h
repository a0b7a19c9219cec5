// The update driver: brings a compiled net's junction tree, step by step,
// into agreement with its node tables and findings.
#pragma once
#include <vector>

#include "net/model.h"

namespace ravelo {

struct JunctionTree;

// Junction steps of a net.
enum JunctionStep : int { kNotCompiled = 0, kCompiled = 1, kReloadTables = 2,
                          kTablesAllocated = 3, kTablesLoaded = 4, kPropagatedStep = 5 };

constexpr int kZeroFindingsNumber = 2078;

// Throws a Failure with its report when the beliefs cannot be brought up to date.
void update_beliefs(Net& net);

// The same, but findings of probability zero give kImpossibleFindings (or
// kStalePropagation, when the zero was met while propagating) without a
// report, so that worker threads scoring many cases can go on; other
// failures still throw.
enum UpdateResult : int { kBeliefsUpdated = 0, kImpossibleFindings = 1, kStalePropagation = 2 };
int update_beliefs_if_possible(Net& net);

// The next update reloads the tables and findings from the kept prior, so
// that what follows does not depend on the findings propagated before.
void restart_from_prior(Net& net);

// The tree of a compiled net, or NULL.
JunctionTree* tree_of(const Net& net);

// The vector by which a node's findings multiply the tree (empty: none).
std::vector<float> finding_likelihood(const Node& node);

// The node's findings changed: its clique must be reloaded or multiplied.
void findings_changed(Node& node);

// Computes the node's beliefs from its clique after an update.
void read_beliefs(Node& node);

}  // namespace ravelo
