// Entering, checking, reading back and retracting findings.  The net-file
// reader and case readers enter findings through these as well.
#pragma once
#include "net/model.h"

namespace ravelo {

// Consistency tests against the model (beliefs, stated and calculated values)
// run when the net updates automatically or when asked for.
enum class FindingTests { ByNet, Always, Never };

// Positive finding; replace: the source may replace what is there (case data).
void enter_finding(Node& node, int state, bool replace = false,
                   FindingTests tests = FindingTests::ByNet);
// The node is not in 'state'.
void enter_finding_not(Node& node, int state);
// A likelihood vector, one weight in [0, 1] per state; combined with any
// negative or likelihood findings already present.
void enter_likelihood(Node& node, const float* likelihood,
                      FindingTests tests = FindingTests::ByNet);
void enter_value(Node& node, double value);
void enter_gaussian(Node& node, double mean, double std_dev);
void enter_interval(Node& node, double low, double high);
void enter_calibration(Node& node, const float* calibration);

void retract_findings(Node& node);
void retract_net_findings(Net& net);

// The state a real value stands for: a discrete node's state with that level,
// or the interval of a discretized node holding it; UNDEF_STATE when none.
int state_holding_value(const Node& node, double value);

// The code GetNodeFinding_bn returns.
int finding_code(const Node& node);
// The likelihood the findings give each state (all 1 without findings).
const std::vector<float>& likelihood_view(const Node& node);

// The state (or real value) the node's findings and its parents' determine.
int calc_node_state(const Node& node);
double calc_node_value(const Node& node);

}  // namespace ravelo
