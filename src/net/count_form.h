// A node's probability table in count form: for a row with experience e and
// probabilities p(s), the count of state s is p(s) x e.  Learning and fading
// change counts; the CPT and experience table are written back from them row
// by row, so every reader of the CPT sees probabilities.  The counts stay with
// the node (in double precision) and are trusted for a row only while the
// CPT and experience still hold what they were written as.
#pragma once
#include <cstddef>
#include <vector>

#include "net/model.h"

namespace ravelo {

// The prior count of every cell of the node's table (1 when undefined).
double prior_count_of(const Node& node);
// The experience a row rests on: its entry in the experience table, or the
// prior count of its cells when the node has no experience table yet.
double row_experience(const Node& node, std::size_t row);

// Whether node carries a table learning may change: a nature or disconnected
// node whose own variable and parents are all discrete or discretized, and
// which is not given as a function table alone.
bool has_learnable_table(const Node& node);

// The count form of one node's table for one learning or fading action.  The
// first touch of a row converts it to counts; settle() writes every touched
// row back as probabilities and experience (and is run by the destructor, so
// a failure part way keeps the changes made before it).
class CountForm {
public:
    // Gives the node a CPT (rows missing) and an experience table (from the
    // prior count) when it lacks them.  many_rows: the action may touch many
    // rows (they are then tracked by a flag per row rather than by a search).
    CountForm(Node& node, bool many_rows);
    ~CountForm();
    CountForm(const CountForm&) = delete;
    CountForm& operator=(const CountForm&) = delete;

    // The counts of a row (num_states() of them), converted on first touch.
    double* row(std::size_t r) {
        if (!was_touched(r)) convert(r);
        return node_.counts.data() + r * states_;
    }
    std::size_t rows() const { return rows_; }
    std::size_t states() const { return states_; }
    void settle();

private:
    bool was_touched(std::size_t r) const {
        if (!touched_.empty()) return touched_[r] != 0;
        for (std::size_t i = 0; i < num_few_; ++i)
            if (few_[i] == r) return true;
        return false;
    }
    void convert(std::size_t r);
    void settle_row(std::size_t r);

    Node& node_;
    std::size_t states_, rows_;
    // The first few rows touched are kept in place, so that learning a single
    // case allocates nothing; more, or many_rows, switch to a flag per row.
    static constexpr std::size_t kFewRows = 8;
    std::size_t few_[kFewRows] = {};
    std::size_t num_few_ = 0;
    std::vector<char> touched_;
    std::vector<std::size_t> touched_rows_;
};

// Whether CPT row r holds special marks (missing entries, an impossible
// condition) rather than probabilities.
bool row_has_marks(const Node& node, std::size_t r);

// Writes a row of counts as probabilities (uniform when they sum to 0) into
// probs, returning their sum: the row's experience.
double counts_to_probabilities(const double* counts, std::size_t states, float* probs);

}  // namespace ravelo
