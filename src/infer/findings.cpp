#include "infer/findings.h"

#include <algorithm>
#include <cmath>

#include "base/failure.h"
#include "base/text.h"
#include "infer/clique_tables.h"
#include "infer/update.h"

namespace ravelo {
namespace {

const char* kind_name(NodeKind kind) {
    switch (kind) {
        case NodeKind::Nature: return "nature";
        case NodeKind::Constant: return "constant";
        case NodeKind::Decision: return "decision";
        case NodeKind::Utility: return "utility";
        case NodeKind::Disconnected: return "disconnected";
        case NodeKind::Adversary: return "adversary";
        default: return "unknown";
    }
}

std::string state_label(const Node& node, int state) {
    if (state >= 0 && state < node.num_states() && !node.states[static_cast<size_t>(state)].name.empty())
        return node.states[static_cast<size_t>(state)].name;
    return format("%d", state);
}

[[noreturn]] void refuse_state(int number, const Node& node, const std::string& reason) {
    fail(number, "can't enter finding for >-node '%s', because %s", node.name.c_str(), reason.c_str());
}

[[noreturn]] void refuse_likelihood(int number, const Node& node, const std::string& reason) {
    fail(number, "can't enter negative or likelihood finding for >-node '%s', because %s",
         node.name.c_str(), reason.c_str());
}

[[noreturn]] void refuse_value(int number, const Node& node, const std::string& reason) {
    fail(number, "can't enter real value finding for node '%s', because %s", node.name.c_str(),
         reason.c_str());
}

bool model_tests_on(const Node& node, FindingTests tests) {
    if (tests == FindingTests::Never) return false;
    return tests == FindingTests::Always || node.net->auto_update != 0;
}

// Current beliefs of the node, or NULL when the net cannot give them.
const std::vector<float>* current_beliefs(Node& node) {
    if (!tree_of(*node.net)) return nullptr;
    try {
        update_beliefs(*node.net);
    } catch (const Failure& f) {
        clear_report(f.report);
        return nullptr;
    }
    if (!node.beliefs_current) read_beliefs(node);
    return &node.beliefs;
}

// A 0/1 row per parent condition: the node is a function of its parents.
int function_state(const Node& node, std::size_t row) {
    const int n = node.num_states();
    if (!node.func_states.empty()) return row < node.func_states.size() ? node.func_states[row] : kUndefState;
    if (node.cpt.size() != static_cast<size_t>(table_rows(node)) * static_cast<size_t>(n)) return kUndefState;
    int found = kUndefState;
    for (int i = 0; i < n; ++i) {
        float p = node.cpt[row * static_cast<size_t>(n) + static_cast<size_t>(i)];
        if (p == 1.0f) found = i;
        else if (p != 0.0f) return kUndefState;
    }
    return found;
}

// The states of a node's parents as far as they are known now, or false.
// A delayed parent stands for its value at an earlier time, which findings
// don't give; stopping there also keeps this walk off cycles, which all
// pass through a delayed link.
bool known_parent_states(const Node& node, std::vector<int>& states) {
    states.clear();
    for (std::size_t k = 0; k < node.parents.nodes.size(); ++k) {
        if (is_delayed_link(node, k)) return false;
        int s = calc_node_state(*node.parents.nodes[k]);
        if (s < 0) return false;
        states.push_back(s);
    }
    return true;
}

// The state the parents' known states give a deterministic node, or UNDEF_STATE.
int state_from_parents(const Node& node) {
    std::vector<int> states;
    if (!known_parent_states(node, states)) return kUndefState;
    return function_state(node, row_of(node, states.data()));
}

void test_state_against_model(Node& node, int state, bool replace) {
    if (node.kind != NodeKind::Decision && node.parents.nodes.empty()) {
        std::vector<float> row = node.cpt;
        if (node.cpt.size() == static_cast<size_t>(node.num_states()) && row[static_cast<size_t>(state)] == 0.0f &&
            function_state(node, 0) >= 0)
            refuse_state(3315, node, format("new finding '%s' is inconsistent with the model's stated value for this >-node",
                                            state_label(node, state).c_str()));
    }
    if (!node.parents.nodes.empty() && (replace || node.finding.state < 0)) {
        int calculated = state_from_parents(node);
        if (calculated >= 0 && calculated != state)
            refuse_state(3319, node, format("new finding '%s' contradicts state '%s' calculated from the parent >-node-s of this >-node",
                                            state_label(node, state).c_str(), state_label(node, calculated).c_str()));
    }
    if (node.kind == NodeKind::Nature) {
        const std::vector<float>* beliefs = current_beliefs(node);
        if (beliefs && beliefs->size() == static_cast<size_t>(node.num_states()) &&
            (*beliefs)[static_cast<size_t>(state)] == 0.0f)
            refuse_state(3302, node, format("new finding '%s' is inconsistent with findings for other >-node-s, according to this model",
                                            state_label(node, state).c_str()));
    }
}

void set_likelihood(Node& node, std::vector<float> likelihood) {
    bool all_ones = std::all_of(likelihood.begin(), likelihood.end(), [](float x) { return x == 1.0f; });
    node.finding.likelihood = all_ones ? std::vector<float>() : std::move(likelihood);
    findings_changed(node);
}

}  // namespace

int state_holding_value(const Node& node, double value) {
    const auto& lv = node.levels;
    if (node.is_discrete()) {
        for (size_t i = 0; i < lv.size(); ++i)
            if (lv[i] == value) return static_cast<int>(i);
        return kUndefState;
    }
    const int n = node.num_states();
    for (int i = 0; i < n; ++i) {
        double lo = lv[static_cast<size_t>(i)], hi = lv[static_cast<size_t>(i) + 1];
        if (lo > hi) std::swap(lo, hi);
        if (value >= lo && (value < hi || (value == hi && i == n - 1))) return i;
    }
    return kUndefState;
}

void enter_finding(Node& node, int state, bool replace, FindingTests tests) {
    FindingRecord& f = node.finding;
    if (replace ? (state == kUndefState || state == f.state) : (state == f.state && f.likelihood.empty()))
        return;
    const int n = node.num_states();
    if (n == 0 && state != kUndefState)
        refuse_state(3316, node, "the >-node is continuous without any discretization intervals defined");
    if (state >= n)
        refuse_state(3300, node, format("new finding is too large (%d, but states are numbered from 0 to %d)", state, n - 1));
    if (state < 0 && state != kUndefState)
        refuse_state(3301, node, format("new finding is negative (%d), and is not UNDEF_STATE (%d)", state, kUndefState));
    if (state == kUndefState) return;  // accepted as no finding
    if (!replace) {
        if (f.state >= 0 && f.state != state)
            refuse_state(3310, node, format("new finding '%s' contradicts previous finding '%s' for this >-node",
                                            state_label(node, state).c_str(), state_label(node, f.state).c_str()));
        if (!f.likelihood.empty() && f.likelihood[static_cast<size_t>(state)] == 0.0f)
            refuse_state(3313, node, format("new finding '%s' contradicts previous negative or likelihood findings for this >-node",
                                            state_label(node, state).c_str()));
    }
    if (model_tests_on(node, tests)) test_state_against_model(node, state, replace);
    f.state = state;
    f.likelihood.clear();
    findings_changed(node);
}

void enter_finding_not(Node& node, int state) {
    const int n = node.num_states();
    if (n == 1)
        fail(2327, "can't enter a negative finding for >-node '%s', since it has only 1 state", node.name.c_str());
    if (state < 0 || state >= n)
        refuse_likelihood(3300, node, format("state %d is not between 0 and %d", state, n - 1));
    if (n == 2) {
        enter_finding(node, 1 - state);
        return;
    }
    std::vector<float> likelihood(static_cast<size_t>(n), 1.0f);
    likelihood[static_cast<size_t>(state)] = 0.0f;
    enter_likelihood(node, likelihood.data());
}

void enter_likelihood(Node& node, const float* likelihood, FindingTests tests) {
    const int n = node.num_states();
    FindingRecord& f = node.finding;
    std::vector<float> given(likelihood, likelihood + n);
    if (std::all_of(given.begin(), given.end(), [](float x) { return x == 1.0f; })) return;
    if (given == f.likelihood) return;
    if (std::all_of(given.begin(), given.end(), [](float x) { return x == 0.0f; }))
        refuse_likelihood(3303, node, "it consists of all zeros");
    if (node.kind == NodeKind::Utility || node.kind == NodeKind::Decision || node.kind == NodeKind::Constant)
        refuse_likelihood(3304, node, format("negative or likelihood findings are not allowed for %s >-node-s", kind_name(node.kind)));
    for (int i = 0; i < n; ++i) {
        float x = given[static_cast<size_t>(i)];
        if (x < 0.0f || x != x) refuse_likelihood(3318, node, format("it has a negative value (%g) at index %d", x, i));
        if (x > 1.0f) refuse_likelihood(3317, node, format("it is greater than one (%g) at index %d", x, i));
    }
    if (f.state >= 0 && given[static_cast<size_t>(f.state)] == 0.0f)
        refuse_likelihood(3306, node, format("it is inconsistent with previous finding (%s) for this >-node",
                                             state_label(node, f.state).c_str()));
    std::vector<float> combined = given;
    if (!f.likelihood.empty()) {
        for (int i = 0; i < n; ++i) combined[static_cast<size_t>(i)] *= f.likelihood[static_cast<size_t>(i)];
        if (std::all_of(combined.begin(), combined.end(), [](float x) { return x == 0.0f; }))
            refuse_likelihood(3307, node, "it is inconsistent with previous negative or likelihood findings for this >-node");
    }
    if (model_tests_on(node, tests) && node.kind == NodeKind::Nature) {
        const std::vector<float>* beliefs = current_beliefs(node);
        if (beliefs && beliefs->size() == static_cast<size_t>(n)) {
            double weighted = 0.0;
            for (int i = 0; i < n; ++i) weighted += static_cast<double>((*beliefs)[static_cast<size_t>(i)]) * combined[static_cast<size_t>(i)];
            if (weighted == 0.0)
                refuse_likelihood(3305, node, "it is inconsistent with findings for other >-node-s, according to this model");
        }
    }
    if (f.state >= 0) return;  // the positive finding already says more
    set_likelihood(node, std::move(combined));
}

void enter_value(Node& node, double value) {
    FindingRecord& f = node.finding;
    if (f.has_value && f.value == value) return;
    if (f.has_value)
        refuse_value(3320, node, format("new value %g contradicts previously entered value %g", value, f.value));
    double calculated = calc_node_value(node);
    if (!is_undef(calculated) && calculated != value)
        refuse_value(3321, node, format("new value %g contradicts value %g calculated from parent >-node values", value, calculated));
    int state = kUndefState;
    if (node.num_states() > 0) {
        state = state_holding_value(node, value);
        if (state < 0 || (f.state >= 0 && f.state != state) ||
            (!f.likelihood.empty() && f.likelihood[static_cast<size_t>(state)] == 0.0f))
            refuse_value(3322, node, format("new value %g is inconsistent with findings previously entered for this node", value));
        try {
            enter_finding(node, state);
        } catch (const Failure& failure) {
            clear_report(failure.report);
            refuse_value(3323, node, "new value is inconsistent with previous findings, according to this model");
        }
    }
    f.value = value;
    f.has_value = true;
    findings_changed(node);
}

void enter_gaussian(Node& node, double mean, double std_dev) {
    if (std_dev == 0.0) return enter_value(node, mean);
    const int n = node.num_states();
    if (!node.is_discretized() || std_dev < 0.0 || is_undef(mean) || is_undef(std_dev))
        refuse_likelihood(3324, node, "a Gaussian finding needs a discretized >-node, a real mean and a positive standard deviation");
    auto cdf = [&](double x) { return 0.5 * std::erfc(-(x - mean) / (std_dev * std::sqrt(2.0))); };
    std::vector<double> mass(static_cast<size_t>(n));
    double top = 0.0;
    for (int i = 0; i < n; ++i) {
        double lo = node.levels[static_cast<size_t>(i)], hi = node.levels[static_cast<size_t>(i) + 1];
        mass[static_cast<size_t>(i)] = std::fabs(cdf(hi) - cdf(lo));
        top = std::max(top, mass[static_cast<size_t>(i)]);
    }
    std::vector<float> likelihood(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) likelihood[static_cast<size_t>(i)] = top > 0 ? static_cast<float>(mass[static_cast<size_t>(i)] / top) : 0.0f;
    enter_likelihood(node, likelihood.data());
}

void enter_interval(Node& node, double low, double high) {
    const int n = node.num_states();
    if (!node.is_discretized() || !(low <= high))
        refuse_likelihood(3325, node, "an interval finding needs a discretized >-node and a low end not above the high end");
    std::vector<float> likelihood(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) {
        double lo = std::min(node.levels[static_cast<size_t>(i)], node.levels[static_cast<size_t>(i) + 1]);
        double hi = std::max(node.levels[static_cast<size_t>(i)], node.levels[static_cast<size_t>(i) + 1]);
        likelihood[static_cast<size_t>(i)] = (high >= lo && low < hi) || (low == high && low == hi && i == n - 1) ? 1.0f : 0.0f;
    }
    enter_likelihood(node, likelihood.data());
}

// The likelihood that moves the node's beliefs (without its own findings) to
// the calibration, by the ratio of the two.
void enter_calibration(Node& node, const float* calibration) {
    const int n = node.num_states();
    FindingRecord saved = node.finding;
    node.finding = {};
    findings_changed(node);
    const std::vector<float>* beliefs = current_beliefs(node);
    node.finding = saved;
    findings_changed(node);
    if (!beliefs)
        refuse_likelihood(3326, node, "calibration needs the beliefs of a compiled >-net whose findings are consistent");
    std::vector<double> ratio(static_cast<size_t>(n));
    double top = 0.0;
    for (int i = 0; i < n; ++i) {
        double b = (*beliefs)[static_cast<size_t>(i)], c = calibration[i];
        if (c < 0.0 || c > 1.0 || c != c) refuse_likelihood(3318, node, format("it has a negative value (%g) at index %d", c, i));
        if (b == 0.0 && c > 0.0)
            refuse_likelihood(3305, node, "it is inconsistent with findings for other >-node-s, according to this model");
        ratio[static_cast<size_t>(i)] = b > 0.0 ? c / b : 0.0;
        top = std::max(top, ratio[static_cast<size_t>(i)]);
    }
    if (top == 0.0) refuse_likelihood(3303, node, "it consists of all zeros");
    std::vector<float> likelihood(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) likelihood[static_cast<size_t>(i)] = static_cast<float>(ratio[static_cast<size_t>(i)] / top);
    node.finding.state = kUndefState;
    node.finding.likelihood.clear();
    enter_likelihood(node, likelihood.data(), FindingTests::Never);
    findings_changed(node);
}

void retract_findings(Node& node) {
    if (node.finding.empty()) return;
    node.finding.state = kUndefState;
    node.finding.likelihood.clear();
    node.finding.has_value = false;
    node.finding.value = 0.0;
    findings_changed(node);
}

void retract_net_findings(Net& net) {
    for (Node* n : net.nodes.nodes) {
        if (n->finding.empty()) continue;
        n->finding.state = kUndefState;
        n->finding.likelihood.clear();
        n->finding.has_value = false;
        findings_changed(*n);
    }
}

int finding_code(const Node& node) {
    const FindingRecord& f = node.finding;
    if (f.state >= 0) return f.state;
    if (f.likelihood.empty()) return kUndefState;
    int first = -1, nonzero = 0;
    bool zero_seen = false;
    for (size_t i = 0; i < f.likelihood.size(); ++i) {
        float x = f.likelihood[i];
        if (x == 0.0f) {
            zero_seen = true;
        } else if (first < 0) {
            first = static_cast<int>(i);
            nonzero = 1;
        } else if (x == f.likelihood[static_cast<size_t>(first)]) {
            ++nonzero;
        } else {
            return kLikelihoodFinding;
        }
    }
    if (first < 0) return -1;
    if (nonzero == 1) return first;
    return zero_seen ? kNegativeFinding : kUndefState;
}

const std::vector<float>& likelihood_view(const Node& node) {
    std::vector<float>& view = node.finding.view;
    std::vector<float> likelihood = finding_likelihood(node);
    if (likelihood.empty()) likelihood.assign(static_cast<size_t>(node.num_states()), 1.0f);
    view = std::move(likelihood);
    return view;
}

int calc_node_state(const Node& node) {
    if (node.finding.state >= 0) return node.finding.state;
    if (node.kind == NodeKind::Decision || node.kind == NodeKind::Utility) return kUndefState;
    if (node.parents.nodes.empty() && node.func_states.empty() && node.cpt.empty()) return kUndefState;
    return state_from_parents(node);
}

double calc_node_value(const Node& node) {
    const FindingRecord& f = node.finding;
    if (f.has_value) return f.value;
    if (f.state >= 0 && node.is_discrete() && static_cast<size_t>(f.state) < node.levels.size())
        return node.levels[static_cast<size_t>(f.state)];
    if (node.func_reals.empty()) return undef_value();
    std::vector<int> states;
    if (!known_parent_states(node, states)) return undef_value();
    std::size_t row = row_of(node, states.data());
    return row < node.func_reals.size() ? node.func_reals[row] : undef_value();
}

}  // namespace ravelo
