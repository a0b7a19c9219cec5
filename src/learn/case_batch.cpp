#include "learn/case_batch.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <exception>
#include <mutex>
#include <thread>

#include "infer/compile.h"
#include "infer/findings.h"
#include "infer/update.h"
#include "net/copy.h"
#include "net/ops.h"

namespace ravelo {
namespace {

int default_threads() {
    if (const char* text = std::getenv("RAVELO_THREADS")) {
        const int n = std::atoi(text);
        if (n >= 1) return n;
    }
    const unsigned cores = std::thread::hardware_concurrency();
    return cores ? static_cast<int>(cores) : 1;
}

std::atomic<int>& thread_setting() {
    static std::atomic<int> threads{default_threads()};
    return threads;
}

}  // namespace

int batch_threads() { return thread_setting().load(); }

int set_batch_threads(int n) {
    const int previous = thread_setting().load();
    if (n >= 1) thread_setting().store(n);
    return previous;
}

CaseBatch::CaseBatch(Net& net, int threads) : original_(net) {
    CopyOptions options;
    options.visual = false;
    options.window = false;
    try {
        for (int w = 0; w < std::max(threads, 1); ++w) {
            Net* copy = copy_net(net, *net.env, net.name, options);
            copies_.push_back(copy);
            copy->auto_update = 0;
            retract_net_findings(*copy);
            compile_net(*copy, {});
            update_beliefs(*copy);
        }
    } catch (...) {
        for (Net* copy : copies_) delete_net(*copy);
        throw;
    }
}

CaseBatch::~CaseBatch() {
    for (Net* copy : copies_) delete_net(*copy);
}

Node& CaseBatch::copy_of(const Node& node, int w) const {
    return *worker_net(w).nodes.nodes[static_cast<std::size_t>(node.index)];
}

void CaseBatch::refresh_tables(const std::vector<Node*>& nodes) {
    for (int w = 0; w < workers(); ++w) {
        for (const Node* node : nodes) {
            Node& copy = copy_of(*node, w);
            copy.cpt = node->cpt;
            node_tables_changed(copy);
        }
        // Brings the copy's kept prior up to date here, once, not in a worker.
        update_beliefs(worker_net(w));
    }
}

void CaseBatch::run(std::size_t num_cases, const BlockWork& work, const BlockMerge& merge) {
    const std::size_t blocks = (num_cases + kBlockSize - 1) / kBlockSize;
    std::atomic<std::size_t> next_block{0};
    std::size_t next_merge = 0;
    std::mutex merging;
    std::condition_variable turn;
    std::exception_ptr fault;
    std::atomic<bool> stop{false};

    auto worker = [&](int w) {
        for (;;) {
            const std::size_t b = next_block.fetch_add(1);
            if (b >= blocks || stop.load()) break;
            const std::size_t first = b * kBlockSize;
            bool ok = true;
            try {
                restart_from_prior(worker_net(w));
                work(w, first, std::min(num_cases, first + kBlockSize));
            } catch (...) {
                ok = false;
                std::lock_guard<std::mutex> hold(merging);
                if (!fault) fault = std::current_exception();
                stop.store(true);
            }
            std::unique_lock<std::mutex> hold(merging);
            turn.wait(hold, [&] { return next_merge == b || stop.load(); });
            if (!ok || stop.load()) {
                turn.notify_all();
                break;
            }
            merge(w);
            ++next_merge;
            turn.notify_all();
        }
    };
    const int threads = static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(workers()), blocks));
    if (threads <= 1) {
        if (blocks) worker(0);
    } else {
        std::vector<std::thread> pool;
        for (int w = 0; w < threads; ++w) pool.emplace_back(worker, w);
        for (std::thread& t : pool) t.join();
    }
    if (fault) std::rethrow_exception(fault);
}

}  // namespace ravelo
