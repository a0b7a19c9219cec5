#include "eqn/to_table.h"

#include <cmath>
#include <vector>

#include "base/failure.h"
#include "base/progress.h"
#include "base/random.h"
#include "base/text.h"
#include "eqn/equation.h"
#include "eqn/evaluate.h"
#include "eqn/interval_sampling.h"
#include "net/model.h"
#include "net/ops.h"

namespace ravelo {
namespace {

// Counts are kept in floats: beyond 2^24 whole counts stop being exact.
constexpr int kMaxSamplesPerCell = 1 << 24;
constexpr double kMaxTableEntries = 1e8;

std::string value_text(const Node& node, double value) {
    if (node.is_discrete()) {
        bool named = value >= 0 && value < node.num_states() &&
                     !node.states[static_cast<size_t>(value)].name.empty();
        // Adding 0.0 turns a negative zero into "#0".
        return named ? node.states[static_cast<size_t>(value)].name : format("#%.0f", std::trunc(value) + 0.0);
    }
    return format("%g", value);
}

class Conversion {
public:
    Conversion(Node& node, const ParsedEquation& eq, RandomGenerator* rng)
        : node_(node), eq_(eq), rng_(rng), values_(eq.vars.size(), 0.0),
          parent_states_(node.parents.nodes.size(), 0) {}

    void run(int num_samples, bool samp_unc, bool add_exist);

private:
    void bind_parents(size_t row);
    void sample_deterministic(std::vector<double>& counts);
    void sample_probabilistic(std::vector<double>& counts);
    double probability_at(double output_value);
    int output_state(double v);
    std::string input_text() const;
    void store(std::vector<double>& counts, std::vector<int>& function_states, int samples,
               bool samp_unc, bool add_exist, bool function_table);

    Node& node_;
    const ParsedEquation& eq_;
    RandomGenerator* rng_;
    std::vector<double> values_;
    std::vector<int> parent_states_;
};

void Conversion::bind_parents(size_t row) {
    const auto& parents = node_.parents.nodes;
    for (size_t i = parents.size(); i-- > 0;) {
        size_t states = static_cast<size_t>(parents[i]->num_states());
        parent_states_[i] = static_cast<int>(row % states);
        row /= states;
    }
    for (size_t v = 0; v < eq_.vars.size(); ++v) {
        int p = eq_.vars[v].parent;
        if (p < 0) continue;
        const Node& parent = *parents[static_cast<size_t>(p)];
        int st = parent_states_[static_cast<size_t>(p)];
        if (parent.is_discrete()) {
            values_[v] = st;
        } else {
            double weight;
            values_[v] = sample_in_interval(parent.levels, st, *rng_, weight);
        }
    }
}

std::string Conversion::input_text() const {
    std::string text;
    for (size_t v = 0; v < eq_.vars.size(); ++v) {
        if (eq_.vars[v].parent < 0) continue;
        if (!text.empty()) text += ", ";
        text += eq_.vars[v].name + " = " + value_text(*eq_.vars[v].node, values_[v]);
    }
    return text.empty() ? std::string("(none)") : text;
}

int Conversion::output_state(double v) {
    const char* name = node_.name.c_str();
    if (is_undef(v))
        fail(2550, "equation for node %s is returning an undefined value; could one of its parents have an undefined value (-3)?  \nInput is %s",
             name, input_text().c_str());
    if (node_.is_discrete()) {
        if (eq_.boolean_output) return v != 0 ? eq_.true_state : 1 - eq_.true_state;
        if (v != std::floor(v))
            fail(2551, "since %s is discrete, its equation should return a state number, which is an integer, but it is returning %g with input %s",
                 name, v, input_text().c_str());
        if (v < 0 || v >= node_.num_states())
            fail(2552, "since %s is discrete, its equation should return a state number between 0 and %d, but it is returning %.0f with input %s",
                 name, node_.num_states() - 1, v, input_text().c_str());
        return static_cast<int>(v);
    }
    int st = interval_of(node_.levels, v);
    if (st < 0)
        fail(2553, "equation for %s is returning %g, which is not between the lowest (%g) and highest (%g) discretization thresholds.  Its input is %s",
             name, v, node_.levels.front(), node_.levels.back(), input_text().c_str());
    return st;
}

void Conversion::sample_deterministic(std::vector<double>& counts) {
    double v = evaluate(*eq_.expr, values_.data(), &eq_);
    counts[static_cast<size_t>(output_state(v))] += 1;
}

double Conversion::probability_at(double output_value) {
    values_[static_cast<size_t>(eq_.output_var)] = output_value;
    std::string reason;
    double p = evaluate_probability(eq_, values_.data(), reason);
    if (is_undef(p)) {
        if (reason.empty()) reason = "it gave an undefined value";
        fail(2555, "error evaluating equation of >-node '%s':  %s.%s%s", node_.name.c_str(),
             reason.c_str(), "  Input is ", input_text().c_str());
    }
    return p;
}

void Conversion::sample_probabilistic(std::vector<double>& counts) {
    bool cumulative = eq_.vars[static_cast<size_t>(eq_.output_var)].cumulative;
    double below = 0;  // a cumulative equation: each state gets the rise over it
    for (int s = 0; s < node_.num_states(); ++s) {
        double p;
        if (cumulative) {
            double top = probability_at(node_.is_discrete() ? s : node_.levels[static_cast<size_t>(s) + 1]);
            if (s == 0 && !node_.is_discrete()) below = probability_at(node_.levels[0]);
            p = top - below;
            below = top;
        } else if (node_.is_discrete()) {
            p = probability_at(s);
        } else {
            double weight;
            double x = sample_in_interval(node_.levels, s, *rng_, weight);
            p = probability_at(x) * weight;
        }
        if (p > 0) counts[static_cast<size_t>(s)] += p;
    }
}

void Conversion::run(int num_samples, bool samp_unc, bool add_exist) {
    bool sampled = false;
    for (const Node* p : node_.parents.nodes) sampled = sampled || !p->is_discrete();
    if (!sampled) num_samples = 1;
    bool cumulative = eq_.probabilistic && eq_.vars[static_cast<size_t>(eq_.output_var)].cumulative;
    if (sampled || (eq_.probabilistic && !node_.is_discrete() && !cumulative)) RAVELO_ASSERT(rng_ != nullptr);
    if (num_samples > kMaxSamplesPerCell) {
        notice(2557, "only doing %d samples (instead of %d) for a cell of node %s, because otherwise would overflow",
               kMaxSamplesPerCell, num_samples, node_.name.c_str());
        num_samples = kMaxSamplesPerCell;
    }
    bool function_table = !eq_.probabilistic && node_.is_discrete() && !sampled;
    size_t rows = static_cast<size_t>(table_rows(node_));
    size_t m = static_cast<size_t>(node_.num_states());
    std::vector<double> counts(rows * m, 0.0);
    std::vector<int> function_states(function_table ? rows : 0, 0);
    Progress progress(node_.net->env, format("generating >-CPTable for node '%s'", node_.name.c_str()));
    for (size_t row = 0; row < rows; ++row) {
        // Nothing is stored before every row is done, so a halt leaves the node as it was.
        if (progress.update(static_cast<double>(row) / static_cast<double>(rows)))
            fail(2559, "converting the equation of >-node '%s' to a table was halted", node_.name.c_str());
        std::vector<double> cell(m, 0.0);
        for (int k = 0; k < num_samples; ++k) {
            bind_parents(row);
            if (eq_.probabilistic) sample_probabilistic(cell);
            else sample_deterministic(cell);
        }
        if (function_table)
            for (size_t s = 0; s < m; ++s)
                if (cell[s] > 0) function_states[row] = static_cast<int>(s);
        std::copy(cell.begin(), cell.end(), counts.begin() + static_cast<long>(row * m));
    }
    progress.update(1.0);
    store(counts, function_states, num_samples, samp_unc, add_exist, function_table);
    node_.chance = eq_.probabilistic || sampled ? Chance::Chance : Chance::Determin;
    node_tables_changed(node_);
}

void Conversion::store(std::vector<double>& counts, std::vector<int>& function_states,
                       int samples, bool samp_unc, bool add_exist, bool function_table) {
    size_t m = static_cast<size_t>(node_.num_states());
    size_t rows = m ? counts.size() / m : 0;
    bool merge = add_exist && node_.cpt.size() == counts.size();
    bool has_experience = node_.experience.size() == rows;
    std::vector<float> cpt(counts.size());
    std::vector<double> experience(rows, 0.0);
    int unsampled = 0;
    for (size_t row = 0; row < rows; ++row) {
        double* c = &counts[row * m];
        double old_weight = merge ? (has_experience ? node_.experience[row] : samples) : 0;
        double sum = 0;
        for (size_t s = 0; s < m; ++s) {
            c[s] /= samples;
            if (merge) {
                double old = node_.cpt[row * m + s];
                c[s] = c[s] * samples + (old > 0 ? old * old_weight : 0);
            }
            sum += c[s];
        }
        if (!(sum > 0)) ++unsampled;
        for (size_t s = 0; s < m; ++s)
            cpt[row * m + s] = static_cast<float>(sum > 0 ? c[s] / sum : 1.0 / static_cast<double>(m));
        experience[row] = old_weight + samples;
    }
    if (unsampled && !samp_unc)
        warning(2558, "in equation of >-node %s, for %d out of %d parent settings (i.e. conditions), no nonzero probability was discovered by sampling, so they were given uniform distributions",
                node_.name.c_str(), unsampled, static_cast<int>(rows));
    node_.cpt = std::move(cpt);
    if (function_table) node_.func_states = std::move(function_states);
    else node_.func_states.clear();
    node_.func_reals.clear();
    if (samp_unc) node_.experience = std::move(experience);
    node_.equation_dirty = false;
}

}  // namespace

const ParsedEquation& checked_equation(Node& node, bool for_table);

void equation_to_table(Node& node, int num_samples, bool samp_unc, bool add_exist,
                       RandomGenerator* rng) {
    const ParsedEquation& eq = checked_equation(node, true);
    TableBuildingScope building;
    Conversion(node, eq, rng).run(num_samples, samp_unc, add_exist);
}

// The node's parsed equation, after the checks both conversion and sampling make.
const ParsedEquation& checked_equation(Node& node, bool for_table) {
    const char* name = node.name.c_str();
    for (const Node* p : node.parents.nodes)
        if (!p->is_discrete() && p->levels.size() < 2)
            fail(2540, "can't convert equation to table for >-node '%s' because it has a parent >-node (%s) with no discretization intervals set (it needs them because it is continuous)",
                 name, p->name.c_str());
    if (node.equation.empty()) fail(2542, ">-node '%s' doesnt have a defining equation", name);
    ParseProblem problem;
    const ParsedEquation* eq = node_equation(node, problem);
    if (!eq) {
        Report* r;
        if (problem.number == 2459 || problem.number == 2476)
            r = error_report(2544, "equation for >-node '%s' contains argument '%s', which does not match any of its input names or parent names",
                             name, problem.subject.c_str());
        else
            r = error_report(2543, "problem with equation of >-node '%s':  %s", name, problem.message.c_str());
        if (!is_stock_report(r)) {
            r->context = problem.context;
            r->position = problem.position;
        }
        throw Failure{r};
    }
    if (for_table) {
        if (!node.is_discrete() && node.levels.size() < 2) {
            if (eq->probabilistic)
                fail(2541, "can't convert equation to table for >-node '%s' because it has no discretization intervals set (it needs them because it is continuous and nondeterministic)",
                     name);
            fail(2546, "can't build >-CPTable from equation for >-node %s, because can't form/revise its >-CPTable", name);
        }
        if (table_rows(node) * node.num_states() > kMaxTableEntries || node.num_states() == 0)
            fail(2546, "can't build >-CPTable from equation for >-node %s, because can't form/revise its >-CPTable", name);
    }
    return *eq;
}

}  // namespace ravelo
