// Batch work over the cases of a table on every core: each worker thread has
// its own copy of the net, compiled like it, so that entering a case and
// updating beliefs touch only that worker's tables.  Cases go in blocks of a
// fixed size whatever the number of threads; every block starts from the
// kept prior and its results are merged in block order, so one thread and
// many give bit-identical sums.
#pragma once
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "io/case_table.h"
#include "net/model.h"

namespace ravelo {

// The number of worker threads batch work uses: at first the RAVELO_THREADS
// environment variable, else the machine's cores.  Setting n < 1 only queries;
// returns the previous value.
int batch_threads();
int set_batch_threads(int n);

class CaseBatch {
public:
    // Makes the working copies of net (compiled, beliefs updated, no findings).
    // Fails with the compiler's report when the net cannot compile.
    CaseBatch(Net& net, int threads);
    ~CaseBatch();
    CaseBatch(const CaseBatch&) = delete;
    CaseBatch& operator=(const CaseBatch&) = delete;

    int workers() const { return static_cast<int>(copies_.size()); }
    // The copy of node (a node of the original net) in worker w's net.
    Node& copy_of(const Node& node, int w) const;
    Net& worker_net(int w) const { return *copies_[static_cast<std::size_t>(w)]; }
    // The original's current tables of these nodes go into every copy.
    void refresh_tables(const std::vector<Node*>& nodes);

    // For each block of cases [first, last), work(w, first, last) runs on
    // some worker w with that worker's net restarted from its prior; right
    // after, merge(w) runs, one block at a time and in block order.  The
    // first exception thrown stops the batch and is rethrown here.
    using BlockWork = std::function<void(int worker, std::size_t first, std::size_t last)>;
    using BlockMerge = std::function<void(int worker)>;
    void run(std::size_t num_cases, const BlockWork& work, const BlockMerge& merge);

    static constexpr std::size_t kBlockSize = 256;

private:
    Net& original_;
    std::vector<Net*> copies_;
};

}  // namespace ravelo
