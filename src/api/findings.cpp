// Findings family.
#include <mutex>

#include "api/handles.h"
#include "infer/findings.h"
#include "infer/update.h"

using namespace ravelo;

namespace {

// Runs body with the node checked and its net locked.
template <class R, class Body>
R with_node(ApiFrame& frame, R failed, const node_bn* node, Body&& body) {
    return frame.run<R>(failed, [&]() -> R {
        Node& n = checked_node(frame, node);
        std::lock_guard<std::recursive_mutex> hold(n.net->lock);
        return body(n);
    });
}

// With auto-update on, a compiled net brings its beliefs up to date right after each change of
// findings, so that a finding the model makes impossible is reported by the call that entered it.
void update_if_automatic(Net& net) {
    if (net.auto_update && tree_of(net)) update_beliefs(net);
}

int after_change(Node& n) {
    update_if_automatic(*n.net);
    return 0;
}

}  // namespace

void EnterFinding_bn(node_bn* node, state_bn state) {
    ApiFrame frame("EnterFinding_bn");
    with_node(frame, 0, node, [&](Node& n) { enter_finding(n, state); return after_change(n); });
}

void EnterFindingNot_bn(node_bn* node, state_bn state) {
    ApiFrame frame("EnterFindingNot_bn");
    with_node(frame, 0, node, [&](Node& n) { enter_finding_not(n, state); return after_change(n); });
}

void EnterNodeValue_bn(node_bn* node, double value) {
    ApiFrame frame("EnterNodeValue_bn");
    with_node(frame, 0, node, [&](Node& n) { enter_value(n, value); return after_change(n); });
}

void EnterNodeLikelihood_bn(node_bn* node, const prob_bn* likelihood) {
    ApiFrame frame("EnterNodeLikelihood_bn");
    with_node(frame, 0, node, [&](Node& n) {
        if (!likelihood) fail(5514, "argument 'likelihood' is NULL, for >-Bnode %s", n.name.c_str());
        enter_likelihood(n, likelihood);
        return after_change(n);
    });
}

void EnterNodeCalibration_bn(node_bn* node, const prob_bn* calibration) {
    ApiFrame frame("EnterNodeCalibration_bn");
    with_node(frame, 0, node, [&](Node& n) {
        if (!calibration) fail(5514, "argument 'calibration' is NULL, for >-Bnode %s", n.name.c_str());
        enter_calibration(n, calibration);
        return after_change(n);
    });
}

void EnterGaussianFinding_bn(node_bn* node, double mean, double std_dev) {
    ApiFrame frame("EnterGaussianFinding_bn");
    with_node(frame, 0, node, [&](Node& n) { enter_gaussian(n, mean, std_dev); return after_change(n); });
}

void EnterIntervalFinding_bn(node_bn* node, double low, double high) {
    ApiFrame frame("EnterIntervalFinding_bn");
    with_node(frame, 0, node, [&](Node& n) { enter_interval(n, low, high); return after_change(n); });
}

state_bn GetNodeFinding_bn(const node_bn* node) {
    ApiFrame frame("GetNodeFinding_bn");
    return with_node(frame, kUndefState, node, [&](Node& n) -> int {
        if (!n.is_discrete() && !n.is_discretized())
            fail(5515, "argument 'node' is '%s', which is not discrete or discretized", n.name.c_str());
        return finding_code(n);
    });
}

const prob_bn* GetNodeLikelihood_bn(const node_bn* node) {
    ApiFrame frame("GetNodeLikelihood_bn");
    return with_node(frame, static_cast<const prob_bn*>(nullptr), node,
                     [&](Node& n) -> const prob_bn* { return likelihood_view(n).data(); });
}

double GetNodeValueEntered_bn(const node_bn* node) {
    ApiFrame frame("GetNodeValueEntered_bn");
    return with_node(frame, undef_value(), node, [&](Node& n) -> double {
        return n.finding.has_value ? n.finding.value : undef_value();
    });
}

void RetractNodeFindings_bn(node_bn* node) {
    ApiFrame frame("RetractNodeFindings_bn");
    with_node(frame, 0, node, [&](Node& n) { retract_findings(n); return after_change(n); });
}

void RetractNetFindings_bn(net_bn* net) {
    ApiFrame frame("RetractNetFindings_bn");
    frame.run([&] {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        retract_net_findings(n);
        update_if_automatic(n);
    });
}

state_bn CalcNodeState_bn(node_bn* node) {
    ApiFrame frame("CalcNodeState_bn");
    return with_node(frame, kUndefState, node, [&](Node& n) -> int { return calc_node_state(n); });
}

double CalcNodeValue_bn(node_bn* node) {
    ApiFrame frame("CalcNodeValue_bn");
    return with_node(frame, undef_value(), node, [&](Node& n) -> double { return calc_node_value(n); });
}
