// Net testing: how well a net predicts chosen nodes from the other values of
// cases, tallied per test node and weighted by each case's multiplicity.
#pragma once
#include <string>
#include <vector>

#include "base/environment.h"
#include "base/tags.h"
#include "io/case_table.h"
#include "net/model.h"

namespace ravelo {

// Lower bounds of the probability bins of calibration, ascending.
extern const std::vector<double> kCalibrationBins;
// Cutoffs of the quality table of a two-state test node: the first state is
// predicted when its belief is at least the cutoff.
extern const std::vector<double> kQualityCutoffs;

// The bin of a probability: the greatest lower bound not above it (the first
// of equal ones), or -1 below the first.
int probability_bin(const std::vector<double>& bounds, double p);

struct NodeTally {
    explicit NodeTally(int states = 0);
    void merge(const NodeTally& other);

    int states;
    std::vector<double> confusion;  // [actual * states + predicted]
    double total = 0, errors = 0, log_loss = 0, quadratic_loss = 0, spherical_payoff = 0;
    std::vector<double> cum, hits;  // [state * bins + bin]
    // Per state: cases with belief < 1%, of them the state occurred; < 10%,
    // occurred; > 90%, did not occur; > 99%, did not occur.
    std::vector<double> surprise;   // [state * 8 + k]
    // Per cutoff: true positives, false negatives, false positives, true negatives.
    std::vector<double> quality;    // [cutoff * 4 + k]
    // Real values of a continuous node.
    double real_count = 0, abs_sum = 0, abs_squares = 0, abs_max = 0, rel_sum = 0, rel_max = 0;
    double z_sum = 0, z_max = 0, beyond1 = 0, beyond2 = 0, beyond3 = 0;

    // Adds one case of weight w with actual state a (or -1), beliefs, and the
    // real-value terms when known (x and the belief's mean and deviation).
    void add(double w, int actual, const float* beliefs);
    void add_real(double w, double x, double mean, double std_dev);
};

class Tester : public Tagged {
public:
    Tester(Environment* owner, Net* tested_net) : Tagged(kTesterType), env(owner), net(tested_net) {}

    Environment* env;
    Net* net;
    std::vector<Node*> test_nodes;
    std::vector<Node*> unobserved;
    std::vector<NodeTally> tallies;  // by test node
    double skipped = 0;              // weight of cases whose findings are impossible

    // The tally of node, failing when it is not a test node.
    const NodeTally& tally_of(const Node& node) const;
};

// Runs every case through the net and adds to the tallies.  Only nodes that
// are neither tested nor unobserved receive findings; findings entered in the
// net before are not used (and stay).  A case whose findings the net makes
// impossible is left out, and one warning counts such cases.
void test_with_cases(Tester& tester, const CaseTable& cases);

// The written report of every test node, in order.
std::string test_report(const Tester& tester);

}  // namespace ravelo
