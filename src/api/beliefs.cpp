// Beliefs and queries family.
#include <cmath>
#include <mutex>

#include "api/handles.h"
#include "infer/junction_tree.h"
#include "infer/queries.h"
#include "infer/update.h"

using namespace ravelo;

namespace {

const char* kind_word(NodeKind kind) {
    switch (kind) {
        case NodeKind::Constant: return "constant";
        case NodeKind::Utility: return "utility";
        case NodeKind::Adversary: return "adversary";
        case NodeKind::Decision: return "decision";
        case NodeKind::Disconnected: return "disconnected";
        case NodeKind::Nature: return "nature";
        default: return "unknown";
    }
}

bool beliefs_current(const Node& n) {
    if (n.kind == NodeKind::Decision) {
        const JunctionTree* jt = tree_of(*n.net);
        return n.net->junction_step == kPropagatedStep && jt && jt->pending.empty() && n.beliefs_current;
    }
    return n.beliefs_current;
}

const std::vector<float>& current_beliefs(Node& n) {
    if (n.kind != NodeKind::Nature && n.kind != NodeKind::Disconnected && n.kind != NodeKind::Decision)
        fail(2364, "'%s' is a %s >-node, but can only get beliefs of a >-nature_node or >-decision_node",
             n.name.c_str(), kind_word(n.kind));
    if (!beliefs_current(n)) {
        update_beliefs(*n.net);
        read_beliefs(n);
    }
    return n.beliefs;
}

Net& net_of_list(const NodeList& list) {
    if (list.nodes.empty() || !list.nodes.front())
        fail(5617, "the >-Bnodes list passed is empty or holds a NULL");
    Net* net = list.nodes.front()->net;
    for (const Node* n : list.nodes)
        if (!n || n->is_dead() || n->net != net)
            fail(5618, "the >-Bnodes list passed holds a NULL, deleted or foreign >-Bnode");
    return *net;
}

}  // namespace

const prob_bn* GetNodeBeliefs_bn(node_bn* node) {
    ApiFrame frame("GetNodeBeliefs_bn");
    Node* checked = nullptr;
    const prob_bn* result = frame.run<const prob_bn*>(nullptr, [&]() -> const prob_bn* {
        Node& n = checked_node(frame, node);
        checked = &n;
        std::lock_guard<std::recursive_mutex> hold(n.net->lock);
        return current_beliefs(n).data();
    });
    if (result || !checked) return result;
    // A caller that ignores reports sees zeros, never stale beliefs.
    checked->beliefs.assign(static_cast<size_t>(checked->num_states()), 0.0f);
    checked->beliefs_current = false;
    return checked->beliefs.data();
}

double GetNodeExpectedValue_bn(node_bn* node, double* std_dev) {
    ApiFrame frame("GetNodeExpectedValue_bn");
    return frame.run<double>(undef_value(), [&]() -> double {
        Node& n = checked_node(frame, node);
        std::lock_guard<std::recursive_mutex> hold(n.net->lock);
        if (n.kind != NodeKind::Nature && n.kind != NodeKind::Disconnected)
            fail(2365, "'%s' is a %s >-node, but can only get the expected value of a >-nature_node",
                 n.name.c_str(), kind_word(n.kind));
        double deviation = 0.0, mean;
        const FindingRecord& f = n.finding;
        if (n.is_discrete() && n.levels.size() < static_cast<size_t>(n.num_states()))
            fail(2366, "can't get the expected value of >-node '%s', because its states have no real values",
                 n.name.c_str());
        if (f.has_value) {
            mean = f.value;
        } else if (f.state >= 0 && n.is_discrete()) {
            mean = n.levels[static_cast<size_t>(f.state)];
        } else if (f.state >= 0 && std::isfinite(n.levels[static_cast<size_t>(f.state)]) &&
                   std::isfinite(n.levels[static_cast<size_t>(f.state) + 1])) {
            double a = n.levels[static_cast<size_t>(f.state)], b = n.levels[static_cast<size_t>(f.state) + 1];
            mean = (a + b) / 2;
            double variance = ((a + b) * (a + b) - a * b) / 3 - mean * mean;
            deviation = variance > 0 ? std::sqrt(variance) : 0.0;
        } else {
            current_beliefs(n);
            mean = expected_value(n, &deviation);
        }
        if (std_dev) *std_dev = deviation;
        return mean;
    });
}

const util_bn* GetNodeExpectedUtils_bn(node_bn* node) {
    ApiFrame frame("GetNodeExpectedUtils_bn");
    return frame.run<const util_bn*>(nullptr, [&]() -> const util_bn* {
        Node& n = checked_node(frame, node);
        std::lock_guard<std::recursive_mutex> hold(n.net->lock);
        if (n.kind != NodeKind::Decision)
            fail(2367, "'%s' is a %s >-node, but can only get expected utilities of a >-decision_node",
                 n.name.c_str(), kind_word(n.kind));
        if (!tree_of(*n.net))
            fail(2077, "can't update beliefs because >-net '%s' needs to be compiled", n.net->name.c_str());
        JunctionTree& jt = *n.net->jtree;
        std::vector<double>& out = jt.expected_utils[static_cast<size_t>(local_index(jt, n))];
        out = expected_utils(n);
        return out.data();
    });
}

double GetNetExpectedUtility_bn(net_bn* net) {
    ApiFrame frame("GetNetExpectedUtility_bn");
    return frame.run<double>(undef_value(), [&]() -> double {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        update_beliefs(n);
        return expected_utility(n);
    });
}

bool_ns IsBeliefUpdated_bn(const node_bn* node) {
    ApiFrame frame("IsBeliefUpdated_bn");
    return frame.run<bool_ns>(0, [&]() -> bool_ns {
        Node& n = checked_node(frame, node);
        if (beliefs_current(n)) return 1;
        const JunctionTree* jt = tree_of(*n.net);
        return n.net->junction_step == kPropagatedStep && jt && jt->pending.empty() &&
               local_index(*jt, n) >= 0;
    });
}

double FindingsProbability_bn(net_bn* net) {
    ApiFrame frame("FindingsProbability_bn");
    return frame.run<double>(-1.0, [&]() -> double {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        update_beliefs(n);
        return n.findings_probability;
    });
}

double JointProbability_bn(const nodelist_bn* nodes, const state_bn* states) {
    ApiFrame frame("JointProbability_bn");
    return frame.run<double>(-1.0, [&]() -> double {
        NodeList& list = checked_list(frame, nodes);
        if (!states) fail(5104, "NULL passed for states");
        if (list.nodes.empty()) return 1.0;
        Net& net = net_of_list(list);
        std::lock_guard<std::recursive_mutex> hold(net.lock);
        for (size_t i = 0; i < list.nodes.size(); ++i) {
            const Node& n = *list.nodes[i];
            if (states[i] < 0 || states[i] >= n.num_states())
                fail(5619, "state %d given for >-node '%s' is not one of its states (0 to %d)",
                     states[i], n.name.c_str(), n.num_states() - 1);
            if (n.kind == NodeKind::Utility)
                fail(5622, ">-node '%s' is a utility node, which has no probabilities", n.name.c_str());
        }
        update_beliefs(net);
        return joint_probability(net, list.nodes, states);
    });
}

void MostProbableConfig_bn(const nodelist_bn* nodes, state_bn* config, int nth) {
    ApiFrame frame("MostProbableConfig_bn");
    frame.run([&] {
        NodeList& list = checked_list(frame, nodes);
        if (!config) fail(5104, "NULL passed for config");
        if (nth != 0)
            fail(5616, "argument 'nth' is %d, but with this version of >-Ravelo it must be 0", nth);
        if (list.nodes.empty()) return;
        Net& net = net_of_list(list);
        std::lock_guard<std::recursive_mutex> hold(net.lock);
        update_beliefs(net);
        std::vector<int> chosen = most_probable_config(net);
        for (size_t i = 0; i < list.nodes.size(); ++i) {
            int v = local_index(*net.jtree, *list.nodes[i]);
            config[i] = v >= 0 ? chosen[static_cast<size_t>(v)] : kUndefState;
        }
    });
}

int GetNetAutoUpdate_bn(const net_bn* net) {
    ApiFrame frame("GetNetAutoUpdate_bn");
    return frame.run<int>(-1, [&]() -> int { return checked_net(frame, net).auto_update; });
}

int SetNetAutoUpdate_bn(net_bn* net, int autoupdate) {
    ApiFrame frame("SetNetAutoUpdate_bn");
    return frame.run<int>(-1, [&]() -> int {
        Net& n = checked_net(frame, net);
        if (autoupdate < 0)
            fail(5621, "argument 'autoupdate' is %d, but it must be 0 or positive", autoupdate);
        int previous = n.auto_update;
        n.auto_update = autoupdate;
        return previous;
    });
}
