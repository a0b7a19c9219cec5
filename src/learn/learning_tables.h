// What EM and gradient ascent share: the progress table they print, and the
// conversions between a learned node's table and counts.
#pragma once
#include <string>
#include <vector>

#include "learn/family_counts.h"
#include "learn/learner.h"

namespace ravelo {

// The counts the learned tables now stand for (probability times row
// experience), the prior that each M step adds its expected counts to.
std::vector<double> table_counts(const LearnedTables& tables);

// Sets each learned node's table to its counts, in count form: normalised
// row by row (a row of no counts becomes uniform), with the row sums as its
// experience.
void set_tables_from_counts(const LearnedTables& tables, const std::vector<double>& counts);

// Draws new starting tables for learned nodes with no experience.
void randomize_fresh_tables(const LearnedTables& tables, RandomGenerator& random);

// The printed progress of an iterative method.
class ProgressTable {
public:
    ProgressTable(Learner& learner, const char* title, const char* banner);
    // Prints the row of iteration i and records its score in outcome; true
    // when iterating ends there: the change fell below the tolerance, the
    // limit was reached, or the learner's listener or the environment's
    // progress listener asked to stop.
    bool last_row(int iteration, double log_likelihood, double change, LearnOutcome& outcome);
    void print(const std::string& text);

private:
    Learner& learner_;
    std::string title_;
    bool stop_ = false;
};

// The tables (and experience) of the learned nodes as they were, put back
// when an iteration cannot finish.
class SavedTables {
public:
    explicit SavedTables(const LearnedTables& tables);
    void restore();

private:
    const LearnedTables& tables_;
    std::vector<std::vector<float>> probabilities_;
    std::vector<std::vector<double>> experience_;
};

// The relative change of the score from before to after, as printed and
// compared with the tolerance.
double relative_change(double before, double after);

LearnOutcome learn_by_em(Learner& learner, Net& net, const LearnedTables& tables, const CaseTable& cases,
                         double degree);
LearnOutcome learn_by_gradient(Learner& learner, Net& net, const LearnedTables& tables, const CaseTable& cases,
                               double degree);

}  // namespace ravelo
