#include "learn/random_case.h"

#include <climits>
#include <cmath>

#include "base/failure.h"
#include "base/random.h"
#include "base/text.h"
#include "eqn/to_table.h"
#include "infer/clique_tables.h"
#include "infer/findings.h"
#include "infer/update.h"
#include "net/count_form.h"
#include "net/tables.h"

namespace ravelo {
namespace {

// One node's sample slot: a state (kUndefState when only a real value is
// known) and a real value (UNDEF when none).
struct Slot {
    int state = kUndefState;
    double value = 0.0;
};

// Working space kept per thread, so that drawing case after case allocates
// nothing once it has grown.
struct Scratch {
    std::vector<Slot> slots;             // by net index
    std::vector<Node*> order;            // forward sampling: parents first
    std::vector<char> visit;             // by net index: 0 new, 1 on the path, 2 placed
    std::vector<int> parent_states;
    std::vector<double> parent_values;
    std::vector<int> by_local;           // junction-tree sampling: state by local index
    std::vector<int> queue;              // cliques in the order they are drawn
    std::vector<char> queued;
    std::vector<int> free_members;       // positions within the clique
    std::vector<int> digits;
    std::vector<double> running;
};
thread_local Scratch scratch;

[[noreturn]] void cannot_simulate(const std::string& reason) {
    fail(2461, "can't simulate case because %s", reason.c_str());
}

bool has_any_finding(const Net& net) {
    for (const Node* n : net.nodes.nodes)
        if (!n->finding.empty()) return true;
    return false;
}

double level_value(const Node& node, int state) {
    return node.is_discrete() && static_cast<std::size_t>(state) < node.levels.size()
               ? node.levels[static_cast<std::size_t>(state)]
               : undef_value();
}

// ---- forward sampling ----

// Places node after its parents (depth first).
void place(Node& node, Scratch& s) {
    char& mark = s.visit[static_cast<std::size_t>(node.index)];
    if (mark == 2) return;
    if (mark == 1) cannot_simulate("there is a directed cycle in the >-net");
    mark = 1;
    for (std::size_t k = 0; k < node.parents.nodes.size(); ++k) {
        if (is_delayed_link(node, k))
            cannot_simulate(format("one of the >-node-s involved (%s) has a delay link", node.name.c_str()));
        place(*node.parents.nodes[k], s);
    }
    mark = 2;
    s.order.push_back(&node);
}

// The nodes a draw needs: the chosen ones, those with findings, and their ancestors.
void order_for_forward_sampling(Net& net, const std::vector<Node*>& chosen, Scratch& s) {
    s.order.clear();
    s.visit.assign(net.nodes.nodes.size(), 0);
    for (Node* n : chosen)
        if (n->kind != NodeKind::Utility) place(*n, s);
    for (Node* n : net.nodes.nodes)
        if (!n->finding.empty() && n->kind != NodeKind::Utility) place(*n, s);
}

// The state of a parent already drawn (a real value mapped by its discretization).
int parent_state(const Node& parent, const Slot& slot) {
    if (slot.state >= 0) return slot.state;
    const int st = state_holding_value(parent, slot.value);
    if (st < 0)
        fail(2462, "the real value of node %s was found to be %g, but that does correspond to any of its states",
             parent.name.c_str(), slot.value);
    return st;
}

// A parent's value as an equation takes it: a state index, or a real value
// (drawn inside its interval when only its state is known).
double parent_value(const Node& parent, Slot& slot, RandomGenerator& rng) {
    if (parent.is_discrete()) return slot.state;
    if (is_undef(slot.value) && slot.state >= 0)
        slot.value = rng.sample_in_interval(parent.levels.data(), static_cast<int>(parent.levels.size()), slot.state);
    return slot.value;
}

std::string parent_values_text(const Node& node, const Scratch& s) {
    std::string text;
    for (std::size_t i = 0; i < node.parents.nodes.size(); ++i) {
        if (i) text += ", ";
        text += node.parents.nodes[i]->name + " = " + format("%g", s.parent_values[i]);
    }
    return text;
}

int draw_from_row(const float* row, int states, RandomGenerator& rng) {
    double total = 0.0;
    for (int i = 0; i < states; ++i) total += row[i];
    double u = rng.uniform() * total;
    for (int i = 0; i < states; ++i) {
        u -= row[i];
        if (u < 0.0) return i;
    }
    for (int i = states - 1; i > 0; --i)  // rounding: the last possible state
        if (row[i] > 0.0f) return i;
    return 0;
}

Slot draw_by_equation(Node& node, Scratch& s, RandomGenerator& rng) {
    const std::size_t parents = node.parents.nodes.size();
    s.parent_values.resize(parents);
    for (std::size_t i = 0; i < parents; ++i) {
        Node& p = *node.parents.nodes[i];
        s.parent_values[i] = parent_value(p, s.slots[static_cast<std::size_t>(p.index)], rng);
    }
    Slot out;
    out.value = sample_from_equation(node, s.parent_values.data(), rng);
    if (node.is_discrete()) {
        out.state = node.levels.empty() ? static_cast<int>(out.value) : state_holding_value(node, out.value);
        if (node.levels.empty()) out.value = undef_value();
    } else if (node.has_states()) {
        out.state = state_holding_value(node, out.value);
        if (out.state < 0)
            fail(2463, "the real value of node %s was found to be %g, but that does correspond to any state.  "
                       "Parent values were: %s",
                 node.name.c_str(), out.value, parent_values_text(node, s).c_str());
    }
    return out;
}

Slot draw_node(Node& node, Scratch& s, RandomGenerator& rng) {
    const std::size_t parents = node.parents.nodes.size();
    s.parent_states.resize(parents);
    for (std::size_t i = 0; i < parents; ++i) {
        const Node& p = *node.parents.nodes[i];
        s.parent_states[i] = parent_state(p, s.slots[static_cast<std::size_t>(p.index)]);
    }
    const std::size_t row = parents ? row_of(node, s.parent_states.data()) : 0;
    const int m = node.num_states();
    Slot out;
    out.value = undef_value();
    if (!node.cpt.empty() && !row_has_marks(node, row)) {
        out.state = draw_from_row(node.cpt.data() + row * static_cast<std::size_t>(m), m, rng);
    } else if (!node.cpt.empty() && node.cpt[row * static_cast<std::size_t>(m)] == kImpossibleProb) {
        fail(2464, "in the CPT of node %s, parent conditions declared \"impossible\" have occurred: %s",
             node.name.c_str(), condition_text(node, s.parent_states.data()).c_str());
    } else if (!node.func_states.empty() && node.func_states[row] >= 0) {
        out.state = node.func_states[row];
    } else if (!node.func_reals.empty() && !is_undef(node.func_reals[row])) {
        out.value = node.func_reals[row];
        if (node.has_states()) out.state = state_holding_value(node, out.value);
    } else if (!node.equation.empty()) {
        return draw_by_equation(node, s, rng);
    } else {
        fail(2465, "table (e.g. >-CPTable) missing for >-node '%s'", node.name.c_str());
    }
    if (node.is_discrete()) out.value = level_value(node, out.state);
    return out;
}

// Whether the drawn slot agrees with the node's findings (a likelihood accepts
// a state with a chance in proportion to its weight); a finding's real value
// becomes the slot's.
bool agrees_with_finding(const Node& node, Slot& slot, RandomGenerator& rng) {
    const FindingRecord& f = node.finding;
    if (f.state >= 0 && slot.state != f.state) return false;
    if (!f.likelihood.empty() && slot.state >= 0) {
        float top = 0.0f;
        for (float x : f.likelihood) top = x > top ? x : top;
        const float weight = f.likelihood[static_cast<std::size_t>(slot.state)];
        if (!(weight > 0.0f)) return false;
        if (weight < top && rng.uniform() * top >= weight) return false;
    }
    if (f.has_value) {
        if (node.has_states() && state_holding_value(node, f.value) != slot.state) return false;
        slot.value = f.value;
    }
    return true;
}

bool has_relation(const Node& node) {
    return !node.cpt.empty() || !node.func_states.empty() || !node.func_reals.empty() || !node.equation.empty();
}

bool forward_attempt(Scratch& s, RandomGenerator& rng) {
    for (Node* node : s.order) {
        Slot& slot = s.slots[static_cast<std::size_t>(node->index)];
        const FindingRecord& f = node->finding;
        if (!has_relation(*node) && (f.state >= 0 || f.has_value)) {  // the finding alone gives the value
            slot.state = f.state >= 0 ? f.state : state_holding_value(*node, f.value);
            slot.value = f.has_value ? f.value : level_value(*node, f.state);
            continue;
        }
        slot = draw_node(*node, s, rng);
        if (!node->finding.empty() && !agrees_with_finding(*node, slot, rng)) return false;
    }
    return true;
}

bool forward_sample(Net& net, const std::vector<Node*>& chosen, double maxtries, Scratch& s) {
    const double tries = std::fmin(std::floor(maxtries), static_cast<double>(INT_MAX));
    if (!(tries >= 1.0)) return false;
    order_for_forward_sampling(net, chosen, s);
    RandomGenerator& rng = case_generator(net);
    for (int attempt = 0; attempt < static_cast<int>(tries); ++attempt)
        if (forward_attempt(s, rng)) return true;
    return false;
}

// ---- junction-tree sampling ----

// Draws the members of clique c not drawn yet, from its calibrated table
// restricted to the members already drawn: the table is proportional to the
// posterior of its members, so this is the exact conditional.
void draw_clique(const JunctionTree& jt, const Clique& c, Scratch& s, RandomGenerator& rng) {
    const float* table = current_entries(jt, c);
    std::size_t base = 0;
    s.free_members.clear();
    for (std::size_t i = 0; i < c.members.size(); ++i) {
        const int st = s.by_local[static_cast<std::size_t>(c.members[i])];
        if (st >= 0) base += c.stride[i] * static_cast<std::size_t>(st);
        else s.free_members.push_back(static_cast<int>(i));
    }
    if (s.free_members.empty()) return;
    const std::size_t dims = s.free_members.size();
    s.digits.assign(dims, 0);
    s.running.clear();
    double total = 0.0;
    std::size_t offset = base;
    for (;;) {
        total += table[offset];
        s.running.push_back(total);
        std::size_t d = dims;
        for (; d > 0; --d) {
            const std::size_t i = static_cast<std::size_t>(s.free_members[d - 1]);
            const int n = jt.graph.states(c.members[i]);
            if (++s.digits[d - 1] < n) {
                offset += c.stride[i];
                break;
            }
            offset -= c.stride[i] * static_cast<std::size_t>(n - 1);
            s.digits[d - 1] = 0;
        }
        if (d == 0) break;
    }
    RAVELO_ASSERT(total > 0.0);
    const double u = rng.uniform() * total;
    std::size_t pick = 0;
    while (pick + 1 < s.running.size() && !(u < s.running[pick])) ++pick;
    // The configuration's index in the enumeration, last free member fastest.
    for (std::size_t d = dims; d-- > 0;) {
        const int member = c.members[static_cast<std::size_t>(s.free_members[d])];
        const std::size_t n = static_cast<std::size_t>(jt.graph.states(member));
        s.by_local[static_cast<std::size_t>(member)] = static_cast<int>(pick % n);
        pick /= n;
    }
}

void tree_sample(Net& net, Scratch& s) {
    JunctionTree* jt = tree_of(net);
    if (!jt)
        cannot_simulate(format("junction tree sampling needs >-net '%s' to be compiled", net.name.c_str()));
    update_beliefs(net);
    RandomGenerator& rng = case_generator(net);
    s.by_local.assign(jt->fixed.begin(), jt->fixed.end());
    const std::size_t cliques = jt->cliques.size();
    s.queued.assign(cliques, 0);
    s.queue.clear();
    // Breadth first from each clique not reached yet, so that every clique
    // meets its drawn neighbour's members through their sepset.
    for (std::size_t root = 0; root < cliques; ++root) {
        if (s.queued[root]) continue;
        s.queued[root] = 1;
        s.queue.push_back(static_cast<int>(root));
        for (std::size_t at = s.queue.size() - 1; at < s.queue.size(); ++at) {
            const Clique& c = jt->cliques[static_cast<std::size_t>(s.queue[at])];
            draw_clique(*jt, c, s, rng);
            for (const CliqueLink& link : c.links)
                if (!s.queued[static_cast<std::size_t>(link.neighbour)]) {
                    s.queued[static_cast<std::size_t>(link.neighbour)] = 1;
                    s.queue.push_back(link.neighbour);
                }
        }
    }
    for (Node* n : net.nodes.nodes) {
        Slot& slot = s.slots[static_cast<std::size_t>(n->index)];
        const int v = local_index(*jt, *n);
        slot.state = v >= 0 ? s.by_local[static_cast<std::size_t>(v)] : kUndefState;
        slot.value = undef_value();
        if (n->finding.has_value) slot.value = n->finding.value;
        else if (slot.state >= 0 && n->is_discretized())
            slot.value = rng.sample_in_interval(n->levels.data(), static_cast<int>(n->levels.size()), slot.state);
    }
}

// The drawn slot becomes the node's finding; a node whose finding already
// fixes its value keeps it.
void enter_drawn(Node& node, const Slot& slot) {
    FindingRecord& f = node.finding;
    if (f.state >= 0 || f.has_value) return;
    if (!node.is_discrete() && !is_undef(slot.value)) {
        f.value = slot.value;
        f.has_value = true;
    }
    if (slot.state >= 0) enter_finding(node, slot.state, false, FindingTests::Never);
    else if (f.has_value) findings_changed(node);
}

}  // namespace

int automatic_sampling_method(const Net& net) {
    return tree_of(net) && has_any_finding(net) ? kJunctionTreeSampling : kForwardSampling;
}

RandomGenerator& case_generator(Net& net) {
    if (!net.random_gen) return default_generator(*net.env);
    if (net.random_gen->is_dead())
        fail(2466, "the random generator given to >-net '%s' has been deleted", net.name.c_str());
    return *net.random_gen;
}

int generate_random_case(const std::vector<Node*>& nodes, int method, double maxtries) {
    if (nodes.empty()) return kCaseMade;
    Net& net = *nodes.front()->net;
    Scratch& s = scratch;
    s.slots.assign(net.nodes.nodes.size(), Slot{kUndefState, undef_value()});
    if (method == kAutomaticSampling) method = automatic_sampling_method(net);
    if (method == kJunctionTreeSampling) tree_sample(net, s);
    else if (!forward_sample(net, nodes, maxtries, s)) return kCaseRejected;
    for (Node* n : nodes)
        if (n->kind != NodeKind::Utility) enter_drawn(*n, s.slots[static_cast<std::size_t>(n->index)]);
    return kCaseMade;
}

}  // namespace ravelo
