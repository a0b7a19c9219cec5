#include "infer/propagate.h"

#include <utility>

#include "infer/clique_tables.h"
#include "infer/prior_rebuild.h"
#include "infer/root_choice.h"
#include "infer/table_memory.h"

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

// The root's sum is the probability of the findings (times what earlier
// roots gave); the division by it is owed until the root's first sweep.
int normalise_root(Clique& c, double sum, double& findings_probability) {
    if (!(sum > 0.0)) {
        findings_probability = 0.0;
        return kZeroProbability;
    }
    c.owed_scale = static_cast<float>(1.0 / sum);
    findings_probability *= sum;
    return kPropagated;
}

// Links of c to neighbours in the given state, and the last of them.
int links_in_state(const JunctionTree& jt, const Clique& c, int state, bool equal, const CliqueLink** last) {
    int count = 0;
    for (const CliqueLink& link : c.links)
        if ((jt.cliques[link.neighbour].state == state) == equal) {
            ++count;
            *last = &link;
        }
    return count;
}

// Calls sweep(fixed, source) to rewrite the clique's table from its current
// entries: a clique whose prior is rebuilt is swept a rebuilt piece at a time.
template <class Sweep>
void rewrite(JunctionTree& jt, Clique& c, Sweep&& sweep) {
    if (c.from_prior && is_rebuilt(jt, c))
        rebuild_prior(jt, c, [&](const int* fixed) { sweep(fixed, c.table.data()); });
    else
        sweep(jt.fixed.data(), current_entries(jt, c));
    c.from_prior = false;
}

// The message the clique held back goes into its table.
void multiply_held(JunctionTree& jt, Clique& c) {
    const Sepset& h = jt.sepsets[static_cast<size_t>(c.held)];
    rewrite(jt, c, [&](const int* fixed, const float* source) {
        walk_multiply(make_walk(jt.graph, c.members, h.members, fixed), c.table.data(), source, c.held_message.data());
    });
    c.held = -1;
}

// jt.sums receives the sender's sums onto the sepset.
void sum_onto_sepset(JunctionTree& jt, Clique& from, const Sepset& s) {
    if (from.held >= 0) multiply_held(jt, from);
    walk_clear(sepset_walk(jt, s), jt.sums.data());
    if (from.owed_scale != 1.0f) {
        // Scales the sender in the same sweep.
        TableWalk w = make_walk(jt.graph, from.members, {}, jt.fixed.data(), s.members);
        walk_multiply_sum(w, from.table.data(), from.table.data(), &from.owed_scale, jt.sums.data());
        from.owed_scale = 1.0f;
        return;
    }
    if (from.from_prior && is_rebuilt(jt, from)) {
        rebuild_prior(jt, from, [&](const int* fixed) {
            walk_sum(make_walk(jt.graph, from.members, s.members, fixed), from.table.data(), jt.sums.data());
        });
        return;
    }
    walk_sum(clique_walk(jt, from, s.members), current_entries(jt, from), jt.sums.data());
}

// The sepset takes the sums in jt.sums (or those made early); jt.ratio gets
// the message.
void replace_sepset(JunctionTree& jt, Sepset& s) {
    const float* old = s.from_prior ? jt.prior_sepsets[static_cast<size_t>(&s - jt.sepsets.data())].data() : s.table.data();
    walk_replace(sepset_walk(jt, s), s.presummed ? s.fresh.data() : jt.sums.data(), old, s.table.data(), jt.ratio.data());
    s.from_prior = false;
    s.presummed = false;
}

// A large clique passing messages on to two neighbours sums onto the second
// sepset in the sweep that takes in its message, sparing a sweep of its own.
constexpr double kPresumFrom = 1 << 20;

// Multiplies the message in jt.ratio into the clique (with the message it
// holds back, if any).  With an onward sepset the same sweep sums the new
// entries onto it into jt.sums; with none but a total, it sums them all.
void receive(JunctionTree& jt, Clique& to, const Sepset& s, const Sepset* onward, double* total,
             Sepset* also = nullptr) {
    double* out = total;
    if (onward) {
        walk_clear(sepset_walk(jt, *onward), jt.sums.data());
        out = jt.sums.data();
    }
    if (to.held >= 0 && (!out || also)) multiply_held(jt, to);
    if (also) {
        if (also->fresh.size() != also->table.size()) fill_table(also->fresh, also->table.size(), 0.0);
        walk_clear(sepset_walk(jt, *also), also->fresh.data());
    }
    const std::vector<int> none;
    rewrite(jt, to, [&](const int* fixed, const float* source) {
        if (also) {
            walk_multiply_sum2(make_walk(jt.graph, to.members, s.members, fixed, onward->members, also->members),
                               to.table.data(), source, jt.ratio.data(), out, also->fresh.data());
        } else if (to.held >= 0) {
            const Sepset& h = jt.sepsets[static_cast<size_t>(to.held)];
            walk_multiply2_sum(make_walk(jt.graph, to.members, h.members, fixed, onward ? onward->members : none,
                                         s.members),
                               to.table.data(), source, to.held_message.data(), jt.ratio.data(), out);
        } else if (out) {
            walk_multiply_sum(make_walk(jt.graph, to.members, s.members, fixed, onward ? onward->members : none),
                              to.table.data(), source, jt.ratio.data(), out);
        } else {
            walk_multiply(make_walk(jt.graph, to.members, s.members, fixed), to.table.data(), source, jt.ratio.data());
        }
    });
    to.held = -1;
    if (also) also->presummed = true;
}

// The clique holds back the message in jt.ratio, received over s, until its
// next sweep.
void hold(JunctionTree& jt, Clique& to, const Sepset& s) {
    if (to.held >= 0) multiply_held(jt, to);
    if (to.held_message.size() < s.table.size()) fill_table(to.held_message, s.table.size(), 0.0f);
    walk_copy(sepset_walk(jt, s), to.held_message.data(), jt.ratio.data());
    to.held = static_cast<int>(&s - jt.sepsets.data());
}

// A changed clique with one uncollected neighbour sends it its message.  When
// that leaves the neighbour with one uncollected neighbour of its own, the
// sweep that takes the message in makes the neighbour's message too, which
// follows at once, and so on; when it leaves none, the neighbour is the root.
int send_up(JunctionTree& jt, Queue& queue, Clique& c, const CliqueLink& first, double& findings_probability) {
    Clique* from = &c;
    const CliqueLink* link = &first;
    bool summed = false;
    for (;;) {
        Sepset& s = jt.sepsets[link->sepset];
        Clique& next = jt.cliques[link->neighbour];
        set_state(jt, queue, *from, kCollected);
        if (s.blocked || next.state == kReset) {
            if (!s.blocked) pass_message(jt, *from, *link);
            if (next.state != kReset) set_state(jt, queue, next, kChanged);
            return kPropagated;
        }
        if (!summed) sum_onto_sepset(jt, *from, s);
        replace_sepset(jt, s);
        record_collected(jt, *from, s);
        const CliqueLink* onward = nullptr;
        const int left = links_in_state(jt, next, kCollected, false, &onward);
        if (left == 0) {
            double total = 0.0;
            receive(jt, next, s, nullptr, &total);
            set_state(jt, queue, next, kReceiving);
            return normalise_root(next, total, findings_probability);
        }
        const bool onward_now = left == 1 && !next.waits;
        if (onward_now) receive(jt, next, s, &jt.sepsets[onward->sepset], nullptr);
        else hold(jt, next, s);
        set_state(jt, queue, next, kChanged);
        if (!onward_now) return kPropagated;
        from = &next;
        link = onward;
        summed = true;
    }
}

int collect(JunctionTree& jt, Queue& queue, Clique& c, double& findings_probability) {
    const CliqueLink* remaining = nullptr;
    const int uncollected = links_in_state(jt, c, kCollected, false, &remaining);
    if (uncollected >= 2 || (uncollected == 1 && c.waits)) return kPropagated;
    if (uncollected == 1) {
        if (c.state == kChanged) return send_up(jt, queue, c, *remaining, findings_probability);
        set_state(jt, queue, c, kCollected);
        return kPropagated;
    }
    set_state(jt, queue, c, kReceiving);
    if (c.held >= 0) multiply_held(jt, c);
    restore_from_prior(jt, c);
    return normalise_root(c, walk_total(clique_walk(jt, c, {}), c.table.data()), findings_probability);
}

// Sends c's message down the link, then on down the receiver's first
// uncollected neighbour, whose message the receiving sweep makes, and so on.
void send_down(JunctionTree& jt, Queue& queue, Clique& c, const CliqueLink& first) {
    Clique* from = &c;
    const CliqueLink* link = &first;
    bool summed = false;
    for (;;) {
        Sepset& s = jt.sepsets[link->sepset];
        Clique& next = jt.cliques[link->neighbour];
        if (s.blocked) {
            set_state(jt, queue, next, kReceiving);
            return;
        }
        if (!summed && !s.presummed) sum_onto_sepset(jt, *from, s);
        replace_sepset(jt, s);
        const CliqueLink *onward = nullptr, *second = nullptr;
        for (const CliqueLink& l : next.links)
            if (jt.cliques[l.neighbour].state == kCollected) {
                if (onward) {
                    second = &l;
                    break;
                }
                onward = &l;
            }
        // The early sums are kept while the message chain goes on: keep the smaller.
        if (second && jt.sepsets[second->sepset].size > jt.sepsets[onward->sepset].size) std::swap(onward, second);
        Sepset* also = second && next.size >= kPresumFrom && !jt.sepsets[second->sepset].blocked
                           ? &jt.sepsets[second->sepset]
                           : nullptr;
        receive(jt, next, s, onward ? &jt.sepsets[onward->sepset] : nullptr, nullptr, also);
        set_state(jt, queue, next, kReceiving);
        if (!onward || jt.sepsets[onward->sepset].blocked) return;
        from = &next;
        link = onward;
        summed = true;
    }
}

int distribute(JunctionTree& jt, Queue& queue, Clique& c) {
    if (c.held >= 0) multiply_held(jt, c);
    for (const CliqueLink& link : c.links)
        if (jt.cliques[link.neighbour].state == kCollected) send_down(jt, queue, c, link);
    if (c.owed_scale != 1.0f) {
        restore_from_prior(jt, c);
        walk_scale(clique_walk(jt, c, {}), c.table.data(), c.owed_scale);
        c.owed_scale = 1.0f;
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
    sum_onto_sepset(jt, from, s);
    replace_sepset(jt, s);
    receive(jt, jt.cliques[link.neighbour], s, nullptr, nullptr);
}

namespace {

int propagate_queue(JunctionTree& jt, double& findings_probability) {
    bool any_changed = false;
    for (Clique& c : jt.cliques) {
        if (c.state != kChanged) c.state = kUnchanged;
        else any_changed = true;
    }
    if (!any_changed) return kNothingToPropagate;
    choose_roots(jt);
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
    for (Sepset& s : jt.sepsets) s.presummed = false;  // left by a propagation that stopped
    for (Clique& c : jt.cliques) {
        c.waits = false;
        if (c.held >= 0) multiply_held(jt, c);  // left by a propagation that stopped
    }
    for (Clique& c : jt.cliques)
        if (c.owed_scale != 1.0f) {  // a root left before distributing
            restore_from_prior(jt, c);
            walk_scale(clique_walk(jt, c, {}), c.table.data(), c.owed_scale);
            c.owed_scale = 1.0f;
        }
    // Tables nothing reached still stand for the prior: give them its entries.
    for (Clique& c : jt.cliques) restore_from_prior(jt, c);
    for (size_t i = 0; i < jt.sepsets.size(); ++i) restore_from_prior(jt, jt.sepsets[i]);
    return result;
}

}  // namespace ravelo
