// Large cliques whose propagated prior is not kept as a table but rebuilt at
// each reload, in cache-sized pieces, as the product of its homed nodes'
// tables and the messages its neighbours sent it while the prior was
// propagated.  Rebuilding writes the clique once, like copying a kept prior,
// but the messages are sepset-sized: the memory of the largest tables is
// halved and the first update touches half as much fresh memory.
#pragma once
#include <functional>

#include "infer/junction_tree.h"

namespace ravelo {

// Before the prior propagation: chooses the cliques to rebuild and starts
// recording what collecting passes through each sepset.
void plan_rebuilds(JunctionTree& jt);
// While collecting: the sepset has just taken the sender's message.
void record_collected(JunctionTree& jt, const Clique& from, const Sepset& s);
// After the prior propagation (sepsets hold the prior): keeps the factors of
// each rebuilt clique, and stops recording.
void finish_rebuilds(JunctionTree& jt);
void drop_rebuilds(JunctionTree& jt);

bool is_rebuilt(const JunctionTree& jt, const Clique& c);
// The clique's entries that agree with the hard findings become the prior's,
// a cache-sized piece at a time; after each piece, 'then' (when given) gets
// the states that pick out the piece (by local index, -1: free), so that the
// sweep the clique was rebuilt for takes the piece while it is still in cache.
void rebuild_prior(JunctionTree& jt, Clique& c, const std::function<void(const int*)>& then = {});

}  // namespace ravelo
