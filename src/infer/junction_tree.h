// The compiled form of a net: cliques joined into one tree by sepsets, with
// flat float tables.
#pragma once
#include <cstdint>
#include <vector>

#include "infer/graph.h"
#include "infer/walk_shape.h"

namespace ravelo {

struct Sepset {
    int near = -1, far = -1;   // clique indexes, near < far
    std::vector<int> members;  // local indexes, in the cliques' order
    double size = 1.0;
    bool blocked = false;
    std::vector<float> table;  // the last message passed through it
    bool from_prior = false;   // the table still stands for the kept prior's
    // The sums of the next message across it, made early by the sweep in
    // which its sender took in a message (valid while 'presummed' is set).
    std::vector<double> fresh;
    bool presummed = false;
    // The walk over the sepset for the observed states of its members it was
    // last made for: most messages find the same states again.  A cache, kept
    // up to date by sepset_walk under the net's lock.
    mutable TableWalk walk;
    mutable std::vector<int> walk_fixed;
    mutable bool walk_made = false;
};

struct CliqueLink {
    int neighbour;
    int sepset;
};

struct Clique {
    int index = -1;
    std::vector<int> members;         // local indexes; the last varies fastest
    std::vector<std::size_t> stride;  // entry stride of each member
    double size = 1.0;
    std::vector<CliqueLink> links;
    bool rebuild = true;
    int state = 1;
    bool on_queue = false;
    std::vector<float> table;
    // The table's content is still the kept prior's: copied (or multiplied
    // in one pass) only when first changed.
    bool from_prior = false;
    // A root's normalising factor, applied by the sweep that sends its first
    // message rather than by a sweep of its own.
    float owed_scale = 1.0f;
    bool waits = false;  // the chosen root: never sends while collecting
    std::vector<Node*> homed;  // nodes whose tables load here
    // A message received while collecting that the clique could not pass on
    // yet: held back (over sepset 'held', -1: none) and multiplied in by the
    // sweep that takes the next one, which spares the clique a sweep.
    int held = -1;
    std::vector<float> held_message;
};

// Propagation states of a clique.
enum CliqueState : int { kReset = 0, kUnchanged = 1, kChanged = 2, kCollected = 3,
                         kReceiving = 4, kDone = 5 };

struct JunctionTree {
    Graph graph;
    std::vector<Clique> cliques;
    std::vector<Sepset> sepsets;
    std::vector<int> belief_clique;   // by local index: smallest clique holding the node

    // What is multiplied into the clique tables for each node (empty: nothing).
    std::vector<std::vector<float>> applied;
    std::vector<int> pending;         // local indexes whose findings changed since
    // By local index, the state of a hard finding the tables hold (-1: none):
    // every table walk skips the entries that disagree with it.
    std::vector<int> fixed;
    std::vector<std::vector<double>> expected_utils;  // by local index, handed to callers
    bool tables_allocated = false;
    // Some node's beliefs were read since findings or tables last changed:
    // only then is there a node whose beliefs must be marked stale.
    bool beliefs_read = false;

    // The propagated tables without findings, kept so that a retraction
    // reloads by copying instead of rebuilding from the node tables.
    std::vector<std::vector<float>> prior_cliques, prior_sepsets;
    bool prior_valid = false;
    bool keep_prior = true;

    // Cliques whose prior is rebuilt rather than kept: by clique, the factors
    // whose product it is (empty: kept, or none).
    struct Factor {
        std::vector<int> members;
        std::vector<float> values;
    };
    std::vector<std::vector<Factor>> rebuild_factors;
    std::vector<char> rebuilt;
    // What collecting passed through each sepset during the prior propagation.
    bool recording = false;
    std::vector<int> collected_from;
    std::vector<std::vector<float>> collected;

    // Working space of message passing, sized at compile time.
    std::vector<double> sums;
    std::vector<float> ratio;
    std::vector<int> queue;
};

// Joins the cliques (members by local index) into one tree, assigns home
// cliques, and computes the index maps.
// position: elimination position by local index, which orders the members.
void build_junction_tree(JunctionTree& jt, Net& net, std::vector<std::vector<int>> cliques,
                         const std::vector<int>& position);

// Total size (cliques and sepsets) of the tree the cliques would be joined into.
double joined_size(const Graph& g, std::vector<std::vector<int>> cliques);

double total_size(const JunctionTree& jt);
double size_with_findings(const JunctionTree& jt);

// Local index of a node in the tree, or -1.
int local_index(const JunctionTree& jt, const Node& node);

}  // namespace ravelo
