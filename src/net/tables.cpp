#include "net/tables.h"

#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "net/ops.h"
#include "net/probcheck.h"

namespace ravelo {
namespace {

bool has_values(const Node& n) { return n.is_discrete() || n.is_discretized(); }

const Node* non_discrete_parent(const Node& node) {
    for (const Node* p : node.parents.nodes)
        if (!has_values(*p)) return p;
    return nullptr;
}

std::size_t rows_of(const Node& node) { return static_cast<std::size_t>(table_rows(node)); }

}  // namespace

void check_can_have_cpt(const Node& node) {
    const char* name = node.name.c_str();
    if (!has_values(node))
        fail(3073, "can't give >-node '%s' a >-CPTable, because it is not a discrete or discretized "
                   "variable",
             name);
    if (const Node* p = non_discrete_parent(node))
        fail(3074, "can't give >-node '%s' a >-CPTable, because it has a parent >-node ('%s') which "
                   "is not a discrete or discretized variable",
             name, p->name.c_str());
    double size = table_rows(node) * node.num_states();
    if (size > kMaxTableEntries)
        fail(3075, "can't create >-CPTable for >-node '%s', because the >-CPTable would be too large "
                   "(%g), due to too many parent >-node-s",
             name, size);
}

void check_can_have_functable(const Node& node, bool discrete) {
    const char* name = node.name.c_str();
    if (discrete && !has_values(node))
        fail(3077, "can't give >-node '%s' a discrete >-functable, because it is not a discrete or "
                   "discretized variable",
             name);
    if (const Node* p = non_discrete_parent(node))
        fail(3078, "can't give >-node '%s' a >-functable, because it has a parent >-node ('%s') which "
                   "is not a discrete or discretized variable",
             name, p->name.c_str());
    double size = table_rows(node);
    if (size > kMaxTableEntries)
        fail(3075, "can't create >-CPTable for >-node '%s', because the >-CPTable would be too large "
                   "(%g), due to too many parent >-node-s",
             name, size);
}

void check_can_have_expertable(const Node& node) {
    const char* name = node.name.c_str();
    if (!has_values(node))
        fail(3079, "can't give >-node '%s' an >-expertable, because it is not a discrete or "
                   "discretized variable",
             name);
    if (const Node* p = non_discrete_parent(node))
        fail(3080, "can't give >-node '%s' an >-expertable, because it has a parent >-node ('%s') "
                   "which is not a discrete or discretized variable",
             name, p->name.c_str());
    check_can_have_functable(node, false);
}

void ensure_cpt(Node& node) {
    if (!node.cpt.empty()) return;
    check_can_have_cpt(node);
    node.cpt.assign(rows_of(node) * static_cast<std::size_t>(node.num_states()), kMissingProb);
}

void ensure_func_states(Node& node) {
    if (!node.func_states.empty()) return;
    check_can_have_functable(node, true);
    node.func_states.assign(rows_of(node), kUndefState);
}

void ensure_func_reals(Node& node) {
    if (!node.func_reals.empty()) return;
    check_can_have_functable(node, false);
    node.func_reals.assign(rows_of(node), undef_value());
}

void ensure_experience(Node& node) {
    if (!node.experience.empty()) return;
    check_can_have_expertable(node);
    node.experience.assign(rows_of(node), 0.0);
}

std::vector<std::size_t> matching_rows(const Node& node, const int* ps) {
    std::vector<std::size_t> rows{0};
    const auto& parents = node.parents.nodes;
    for (std::size_t i = 0; i < parents.size(); ++i) {
        const int count = parents[i]->num_states();
        const int s = ps[i];
        if (s != kEveryState && (s < 0 || s >= count))
            fail(3089, "state %d given for parent %d ('%s') of >-node '%s' is out of range (0 to %d)",
                 s, static_cast<int>(i), parents[i]->name.c_str(), node.name.c_str(), count - 1);
        std::vector<std::size_t> next;
        for (std::size_t r : rows) {
            if (s == kEveryState)
                for (int t = 0; t < count; ++t) next.push_back(r * static_cast<std::size_t>(count) + static_cast<std::size_t>(t));
            else
                next.push_back(r * static_cast<std::size_t>(count) + static_cast<std::size_t>(s));
        }
        rows = std::move(next);
    }
    return rows;
}

std::size_t condition_row(const Node& node, const int* ps) {
    const auto& parents = node.parents.nodes;
    for (std::size_t i = 0; i < parents.size(); ++i)
        if (ps[i] == kEveryState)
            fail(3089, "state %d given for parent %d ('%s') of >-node '%s' is out of range (0 to %d)",
                 ps[i], static_cast<int>(i), parents[i]->name.c_str(), node.name.c_str(),
                 parents[i]->num_states() - 1);
    return matching_rows(node, ps).front();
}

std::string condition_text(const Node& node, const int* ps) {
    std::string text;
    const auto& parents = node.parents.nodes;
    for (std::size_t i = 0; i < parents.size(); ++i) {
        const Node& p = *parents[i];
        const int s = ps[i];
        std::string state = s >= 0 && s < p.num_states() && !p.states[static_cast<std::size_t>(s)].name.empty()
                                ? p.states[static_cast<std::size_t>(s)].name
                                : std::to_string(s);
        if (i) text += ", ";
        text += p.name + "=" + state;
    }
    return text;
}

void set_cpt_rows(Node& node, const int* ps, const float* probs, bool checking) {
    std::vector<std::size_t> rows = matching_rows(node, ps);
    if (node.cpt.empty() && !node.func_states.empty() && checking)
        fail(3071, "couldn't change a >-CPTable entry of >-node '%s', because it doesn't have a CPT "
                   "table yet",
             node.name.c_str());
    const int m = node.num_states();
    if (checking) {
        unsigned flags = check_prob_vector(probs, m);
        if (flags & kProbRowRefused)
            fail(3072, "couldn't change a >-CPTable vector of >-node '%s', because new vector %s",
                 node.name.c_str(), prob_problem_reason(flags).c_str());
    }
    ensure_cpt(node);
    for (std::size_t r : rows)
        for (int i = 0; i < m; ++i) node.cpt[r * static_cast<std::size_t>(m) + static_cast<std::size_t>(i)] = probs[i];
    node_tables_changed(node);
}

void set_whole_cpt(Node& node, const std::vector<float>& cpt) {
    check_can_have_cpt(node);
    const std::size_t m = static_cast<std::size_t>(node.num_states());
    const std::size_t expected = rows_of(node) * m;
    if (cpt.size() != expected)
        fail(3091, "couldn't change the >-CPTable of >-node '%s', because new %s", node.name.c_str(),
             cpt.size() < expected ? "table has too few probabilities" : "table has too many probabilities");
    for (std::size_t r = 0; r * m < cpt.size(); ++r) {
        unsigned flags = check_prob_vector(&cpt[r * m], static_cast<int>(m));
        if (flags & kProbRowRefused & ~kProbImpossible)
            fail(3091, "couldn't change the >-CPTable of >-node '%s', because new %s", node.name.c_str(),
                 format("row %d %s", static_cast<int>(r), prob_problem_reason(flags).c_str()).c_str());
    }
    node.cpt = cpt;
    node_tables_changed(node);
}

void set_whole_func_states(Node& node, const std::vector<int>& states) {
    check_can_have_functable(node, true);
    const std::size_t expected = rows_of(node);
    std::string problem;
    if (states.size() != expected)
        problem = format("table has %d entries, but the >-node has %d parent conditions",
                         static_cast<int>(states.size()), static_cast<int>(expected));
    for (std::size_t r = 0; problem.empty() && r < states.size(); ++r)
        if (states[r] != kUndefState && (states[r] < 0 || states[r] >= node.num_states()))
            problem = format("entry %d (%d) isn't a state of the >-node", static_cast<int>(r), states[r]);
    if (!problem.empty())
        fail(3092, "couldn't change the >-functable of >-node '%s', because new %s", node.name.c_str(),
             problem.c_str());
    node.func_states = states;
    node_tables_changed(node);
}

const float* cpt_row(Node& node, const int* ps) {
    const std::size_t r = condition_row(node, ps);
    const std::size_t m = static_cast<std::size_t>(node.num_states());
    if (!node.cpt.empty()) return &node.cpt[r * m];
    if (node.func_states.empty()) return nullptr;
    node.derived_row.assign(m, 0.0f);
    int s = node.func_states[r];
    if (s >= 0 && static_cast<std::size_t>(s) < m)
        node.derived_row[static_cast<std::size_t>(s)] = 1.0f;
    else
        node.derived_row.assign(m, kMissingProb);
    return node.derived_row.data();
}

void set_func_state(Node& node, const int* ps, int state) {
    const char* name = node.name.c_str();
    if (node.func_states.empty() && !node.cpt.empty())
        fail(3083, "couldn't change an entry of the discrete >-functable of >-node '%s', because it "
                   "doesn't have a >-functable",
             name);
    const std::size_t r = condition_row(node, ps);
    if (state < 0)
        fail(3081, "couldn't change an entry of the discrete >-functable of >-node '%s', because the "
                   "new entry is negative (%d).  New entry was for condition %s",
             name, state, condition_text(node, ps).c_str());
    if (state >= node.num_states())
        fail(3082, "couldn't change an entry of the discrete >-functable of >-node '%s', because the "
                   "new entry (%d) is greater than the highest state (%d).  New entry was for condition %s",
             name, state, node.num_states() - 1, condition_text(node, ps).c_str());
    ensure_func_states(node);
    node.func_states[r] = state;
    node_tables_changed(node);
}

void set_func_real(Node& node, const int* ps, double value) {
    const char* name = node.name.c_str();
    if (node.func_reals.empty() && !node.cpt.empty())
        fail(3085, "couldn't change an entry of the continuous >-functable of >-node '%s', because it "
                   "doesn't have a >-functable",
             name);
    const std::size_t r = condition_row(node, ps);
    if (!node.is_discrete() && node.levels.size() >= 2 && !is_undef(value)) {
        const double low = node.levels.front(), high = node.levels.back();
        if (value < low || value > high) {
            const bool below = value < low;
            fail(3084, "couldn't change an entry of the continuous >-functable of >-node '%s', because "
                       "it is %.30g, which is %s than the %s range (= %.30g).  New entry was for "
                       "condition [%s]",
                 name, value, below ? "lower" : "higher", below ? "lowest" : "highest",
                 below ? low : high, condition_text(node, ps).c_str());
        }
    }
    ensure_func_reals(node);
    node.func_reals[r] = value;
    node_tables_changed(node);
}

void set_experience(Node& node, const int* ps, double amount) {
    const char* name = node.name.c_str();
    std::vector<std::size_t> rows = matching_rows(node, ps);
    if (amount < 0)
        fail(3087, "couldn't change an experience quantity of >-node '%s', because the new value is "
                   "negative (%g)",
             name, amount);
    ensure_experience(node);
    for (std::size_t r : rows) node.experience[r] = amount;
    node_tables_changed(node);
}

void delete_tables(Node& node) {
    node.cpt.clear();
    node.func_states.clear();
    node.func_reals.clear();
    node.experience.clear();
    node_tables_changed(node);
}

bool has_table(const Node& node) {
    return !node.cpt.empty() || !node.func_states.empty() || !node.func_reals.empty();
}

bool table_complete(const Node& node) {
    for (float p : node.cpt)
        if (p == kMissingProb) return false;
    for (int s : node.func_states)
        if (s == kUndefState) return false;
    for (double v : node.func_reals)
        if (is_undef(v)) return false;
    return has_table(node);
}

bool is_deterministic(const Node& node) {
    if (!node.func_states.empty() || !node.func_reals.empty()) return true;
    if (node.cpt.empty()) return false;
    const std::size_t m = static_cast<std::size_t>(node.num_states());
    for (std::size_t r = 0; r * m < node.cpt.size(); ++r) {
        int ones = 0;
        bool impossible = true;
        for (std::size_t i = 0; i < m; ++i) {
            float p = node.cpt[r * m + i];
            impossible &= p == kImpossibleProb;
            if (p == 1.0f) ++ones;
            else if (p != 0.0f && p != kImpossibleProb) return false;
        }
        if (ones != 1 && !impossible) return false;
    }
    return true;
}

bool func_real_range(const Node& node, double& low, double& high) {
    bool any = false;
    for (double v : node.func_reals) {
        if (is_undef(v) || std::isinf(v)) continue;
        if (!any || v < low) low = v;
        if (!any || v > high) high = v;
        any = true;
    }
    return any;
}

}  // namespace ravelo
