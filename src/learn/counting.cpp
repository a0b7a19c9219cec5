#include "learn/counting.h"

#include <memory>

#include "base/failure.h"
#include "infer/findings.h"
#include "net/count_form.h"

namespace ravelo {
namespace {

// A cell reaching no lower than this by unlearning is rounding, taken as 0.
constexpr double kUnlearnRounding = -2e-06;

[[noreturn]] void fail_unlearn(double degree, const Node& node) {
    fail(2190, "attempt to unlearn (degree = %g) more cases than were learned, for >-node '%s'", degree,
         node.name.c_str());
}

// Adds w to one count; a count left below the rounding allowance stays as it
// was and fails.
void add_count(double& count, double w, double degree, const Node& node) {
    double changed = count + w;
    if (changed < 0.0) {
        if (changed < kUnlearnRounding) fail_unlearn(degree, node);
        changed = 0.0;
    }
    count = changed;
}

// The state a node's findings make known: a positive finding, or a real value
// inside one of a discretized node's intervals; -1 when unknown.
int known_state(const Node& node) {
    const FindingRecord& f = node.finding;
    if (f.state >= 0 && f.state < node.num_states()) return f.state;
    if (f.has_value && node.is_discretized()) return state_holding_value(node, f.value);
    return -1;
}

// Where one node's family stands in the columns of a case table.
struct FamilyColumns {
    Node* node;
    std::size_t own;
    std::vector<std::size_t> parents;
    std::vector<std::size_t> radix;
    std::unique_ptr<CountForm> form;
};

// The case's state of a column: its state, or a discretized node's interval of its real value.
int case_state(const CaseTable& cases, std::size_t c, std::size_t column, const Node& node) {
    int s = cases.states[cases.cell(c, column)];
    if (s >= 0 || !node.is_discretized() || cases.values.empty()) return s;
    double v = cases.value(c, column);
    return is_undef(v) ? -1 : state_holding_value(node, v);
}

}  // namespace

void learn_cases_by_counting(const std::vector<Node*>& nodes, const CaseTable& cases, double degree) {
    if (nodes.empty() || cases.num_cases() == 0) return;
    const Net& net = *nodes.front()->net;
    std::vector<int> column_of(net.nodes.nodes.size(), -1);
    for (std::size_t k = 0; k < cases.columns.size(); ++k)
        if (cases.columns[k] >= 0 && static_cast<std::size_t>(cases.columns[k]) < column_of.size())
            column_of[static_cast<std::size_t>(cases.columns[k])] = static_cast<int>(k);
    std::vector<FamilyColumns> families;
    for (Node* node : nodes) {
        if (!has_learnable_table(*node) || column_of[static_cast<std::size_t>(node->index)] < 0) continue;
        FamilyColumns f{node, static_cast<std::size_t>(column_of[static_cast<std::size_t>(node->index)]), {}, {}, {}};
        bool all_columns = true;
        for (const Node* p : node->parents.nodes) {
            int k = column_of[static_cast<std::size_t>(p->index)];
            all_columns = all_columns && k >= 0;
            f.parents.push_back(static_cast<std::size_t>(k));
            f.radix.push_back(static_cast<std::size_t>(p->num_states()));
        }
        if (all_columns) families.push_back(std::move(f));
    }
    for (FamilyColumns& f : families) f.form = std::make_unique<CountForm>(*f.node, true);
    // Each form settles what it changed when it goes, also when a cell fails.
    for (std::size_t c = 0; c < cases.num_cases(); ++c) {
        const double w = cases.weights[c] * degree;
        for (FamilyColumns& f : families) {
            const int s = case_state(cases, c, f.own, *f.node);
            if (s < 0) continue;
            std::size_t row = 0;
            bool known = true;
            for (std::size_t i = 0; i < f.parents.size() && known; ++i) {
                const int ps = case_state(cases, c, f.parents[i], *f.node->parents.nodes[i]);
                known = ps >= 0;
                row = row * f.radix[i] + static_cast<std::size_t>(ps);
            }
            if (known) add_count(f.form->row(row)[s], w, degree, *f.node);
        }
    }
}

void learn_findings_by_counting(const std::vector<Node*>& nodes, double degree) {
    for (Node* node : nodes) {
        if (!has_learnable_table(*node)) continue;
        const int s = known_state(*node);
        if (s < 0) continue;
        std::size_t row = 0;
        bool known = true;
        for (const Node* p : node->parents.nodes) {
            const int ps = known_state(*p);
            if (ps < 0) {
                known = false;
                break;
            }
            row = row * static_cast<std::size_t>(p->num_states()) + static_cast<std::size_t>(ps);
        }
        if (!known) continue;
        CountForm form(*node, false);
        add_count(form.row(row)[s], degree, degree, *node);
    }
}

void fade_table(Node& node, double degree) {
    if (degree == 0.0) return;
    CountForm form(node, true);
    const double prior = prior_count_of(node);
    for (std::size_t r = 0; r < form.rows(); ++r) {
        if (row_has_marks(node, r)) continue;  // special marks are left alone
        double* counts = form.row(r);
        for (std::size_t s = 0; s < form.states(); ++s)
            if (counts[s] >= 0.0) counts[s] = counts[s] * (1.0 - degree) + degree * prior;
    }
}

}  // namespace ravelo
