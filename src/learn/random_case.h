// Random cases drawn from a net given its findings: exactly through the
// compiled junction tree, or forward from the node tables (parents first)
// with rejection of draws that contradict the findings.
#pragma once
#include <vector>

#include "net/model.h"

namespace ravelo {

class RandomGenerator;

enum SamplingMethod : int { kAutomaticSampling = 0, kJunctionTreeSampling = 1, kForwardSampling = 2 };

constexpr int kCaseMade = 0;
constexpr int kCaseRejected = -13;

// Draws one case and enters the drawn values as findings of 'nodes' (of one
// net; nodes with findings keep them).  Returns kCaseMade, or kCaseRejected
// when forward sampling rejected maxtries attempts.  Fails with its report,
// leaving every finding as it was.
int generate_random_case(const std::vector<Node*>& nodes, int method, double maxtries);

// The method the automatic choice takes for the net now.
int automatic_sampling_method(const Net& net);

// The generator the net's random cases come from.
RandomGenerator& case_generator(Net& net);

}  // namespace ravelo
