#include "infer/propagate.h"

#include "infer/clique_tables.h"

namespace ravelo {
namespace {

class Queue {
public:
    explicit Queue(JunctionTree& jt) : jt_(jt), slots_(jt.queue) {
        slots_.resize(jt.cliques.size() + 1);
    }
    bool empty() const { return head_ == tail_; }
    void push(Clique& c) {
        if (c.on_queue) return;
        c.on_queue = true;
        slots_[tail_] = c.index;
        tail_ = (tail_ + 1) % slots_.size();
    }
    Clique& pop() {
        Clique& c = jt_.cliques[slots_[head_]];
        head_ = (head_ + 1) % slots_.size();
        c.on_queue = false;
        return c;
    }

private:
    JunctionTree& jt_;
    std::vector<int>& slots_;
    std::size_t head_ = 0, tail_ = 0;
};

void set_state(JunctionTree& jt, Queue& queue, Clique& c, int state) {
    c.state = state;
    queue.push(c);
    for (const CliqueLink& link : c.links) queue.push(jt.cliques[link.neighbour]);
}

int normalise_root(JunctionTree& jt, Clique& c, double& findings_probability) {
    restore_from_prior(jt, c);
    const TableWalk walk = clique_walk(jt, c, {});
    double sum = walk_total(walk, c.table.data());
    if (!(sum > 0.0)) {
        findings_probability = 0.0;
        return kZeroProbability;
    }
    walk_scale(walk, c.table.data(), static_cast<float>(1.0 / sum));
    findings_probability *= sum;
    return kPropagated;
}

int collect(JunctionTree& jt, Queue& queue, Clique& c, double& findings_probability) {
    const CliqueLink* remaining = nullptr;
    int uncollected = 0;
    for (const CliqueLink& link : c.links)
        if (jt.cliques[link.neighbour].state != kCollected) {
            ++uncollected;
            remaining = &link;
        }
    if (uncollected >= 2) return kPropagated;
    if (uncollected == 1) {
        Clique& next = jt.cliques[remaining->neighbour];
        if (c.state == kChanged) {
            pass_message(jt, c, *remaining);
            if (next.state != kReset) set_state(jt, queue, next, kChanged);
        }
        set_state(jt, queue, c, kCollected);
        return kPropagated;
    }
    set_state(jt, queue, c, kReceiving);
    return normalise_root(jt, c, findings_probability);
}

int distribute(JunctionTree& jt, Queue& queue, Clique& c) {
    for (const CliqueLink& link : c.links) {
        Clique& next = jt.cliques[link.neighbour];
        if (next.state != kCollected) continue;
        pass_message(jt, c, link);
        set_state(jt, queue, next, kReceiving);
    }
    set_state(jt, queue, c, kDone);
    return kPropagated;
}

int process(JunctionTree& jt, Queue& queue, Clique& c, int mode, double& findings_probability) {
    switch (c.state) {
        case kReset:
        case kChanged:
            if (mode == 1) return kPropagated;
            return collect(jt, queue, c, findings_probability);
        case kUnchanged:
            return collect(jt, queue, c, findings_probability);
        case kCollected:
        case kDone:
            return kPropagated;
        case kReceiving:
            return distribute(jt, queue, c);
        default:
            return kPropagationFault;
    }
}

}  // namespace

void pass_message(JunctionTree& jt, Clique& from, const CliqueLink& link) {
    Sepset& s = jt.sepsets[link.sepset];
    if (s.blocked) return;
    Clique& to = jt.cliques[link.neighbour];
    const TableWalk own = sepset_walk(jt, s);
    double* sums = jt.sums.data();
    walk_clear(own, sums);
    walk_sum(clique_walk(jt, from, s.members), current_entries(jt, from), sums);
    walk_replace(own, sums, s.table.data(), jt.ratio.data());
    walk_multiply(clique_walk(jt, to, s.members), to.table.data(), current_entries(jt, to), jt.ratio.data());
    to.from_prior = false;
}

namespace {

int propagate_queue(JunctionTree& jt, double& findings_probability) {
    bool any_changed = false;
    for (Clique& c : jt.cliques) {
        if (c.state != kChanged) c.state = kUnchanged;
        else any_changed = true;
    }
    if (!any_changed) return kNothingToPropagate;
    Queue queue(jt);
    for (Clique& c : jt.cliques) c.on_queue = false;
    for (Clique& c : jt.cliques) queue.push(c);
    for (int mode = 1; mode <= 2; ++mode) {
        while (!queue.empty()) {
            Clique& c = queue.pop();
            int result = process(jt, queue, c, mode, findings_probability);
            if (result == kZeroProbability || result == kPropagationOutOfMemory ||
                result == kPropagationFault)
                return result;
        }
        if (mode == 1)
            for (Clique& c : jt.cliques) queue.push(c);
    }
    return kPropagated;
}

}  // namespace

int propagate(JunctionTree& jt, double& findings_probability) {
    int result = propagate_queue(jt, findings_probability);
    // Cliques nothing reached still stand for the prior: give them its entries.
    for (Clique& c : jt.cliques) restore_from_prior(jt, c);
    return result;
}

}  // namespace ravelo
