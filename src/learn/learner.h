// Learners: learning the probability tables of chosen nodes from cases by
// counting, by expectation-maximisation, or by gradient ascent on the log
// likelihood.
#pragma once
#include <functional>
#include <string>
#include <vector>

#include "base/environment.h"
#include "base/tags.h"
#include "io/case_table.h"
#include "net/model.h"

namespace ravelo {

class RandomGenerator;

enum LearnMethod : int { kCountingLearning = 1, kCountingLearning2 = 2, kEmLearning = 3, kGradientLearning = 4 };

class Learner : public Tagged {
public:
    Learner(Environment* owner, int learn_method) : Tagged(kLearnerType), env(owner), method(learn_method) {}

    Environment* env;
    int method;
    int max_iters = 1000;
    double tolerance = 1e-5;
    // When set, the starting tables of learned nodes with no experience are
    // drawn at random, which lets EM and gradient ascent leave the symmetric
    // start that hidden nodes would otherwise keep.
    RandomGenerator* random = nullptr;
    // Gets each piece of the progress table as it is made (heading, rows);
    // true asks learning to stop after the iteration under way.
    std::function<bool(const std::string& text)> listener;
};

struct LearnOutcome {
    int iterations = 0;  // re-estimations done
    double log_likelihood = 0.0;
    bool converged = false;
};

// Checks that every node can have its table learned; fails naming the first
// that cannot.
void check_learnable(const std::vector<Node*>& nodes);

// Learns the tables of nodes (of net) from the cases, each weighted by degree
// times its weight.  A failure part way (an impossible case, a net that will
// not compile) leaves the tables of the last finished iteration.
LearnOutcome learn_tables(Learner& learner, Net& net, const std::vector<Node*>& nodes, const CaseTable& cases,
                          double degree);

}  // namespace ravelo
