#include "net/count_form.h"

#include "base/text.h"
#include "net/ops.h"
#include "net/tables.h"

namespace ravelo {

double prior_count_of(const Node& node) { return is_undef(node.prior_count) ? 1.0 : node.prior_count; }

double row_experience(const Node& node, std::size_t row) {
    if (!node.experience.empty()) return node.experience[row];
    return prior_count_of(node) * node.num_states();
}

bool has_learnable_table(const Node& node) {
    if (node.kind != NodeKind::Nature && node.kind != NodeKind::Disconnected) return false;
    auto has_values = [](const Node& n) { return n.is_discrete() || n.is_discretized(); };
    if (!has_values(node) || node.num_states() == 0) return false;
    for (const Node* p : node.parents.nodes)
        if (!has_values(*p)) return false;
    return !node.cpt.empty() || (node.func_states.empty() && node.func_reals.empty());
}

double counts_to_probabilities(const double* counts, std::size_t states, float* probs) {
    double sum = 0.0;
    for (std::size_t s = 0; s < states; ++s) sum += counts[s];
    if (sum > 0.0)
        for (std::size_t s = 0; s < states; ++s) probs[s] = static_cast<float>(counts[s] / sum);
    else
        for (std::size_t s = 0; s < states; ++s) probs[s] = static_cast<float>(1.0 / static_cast<double>(states));
    return sum;
}

bool row_has_marks(const Node& node, std::size_t r) {
    const std::size_t m = static_cast<std::size_t>(node.num_states());
    for (std::size_t s = r * m; s < (r + 1) * m; ++s)
        if (!(node.cpt[s] >= 0.0f)) return true;
    return false;
}

CountForm::CountForm(Node& node, bool many_rows)
    : node_(node), states_(static_cast<std::size_t>(node.num_states())), rows_(0) {
    ensure_cpt(node);
    rows_ = node.cpt.size() / states_;
    if (node.experience.size() != rows_) node.experience.assign(rows_, prior_count_of(node) * static_cast<double>(states_));
    // Counts of another shape are stale: every row fails the match below.
    if (node.counts.size() != node.cpt.size()) node.counts.assign(node.cpt.size(), undef_value());
    if (many_rows) touched_.assign(rows_, 0);
}

CountForm::~CountForm() { settle(); }

void CountForm::convert(std::size_t r) {
    if (touched_.empty() && num_few_ < kFewRows) {
        few_[num_few_++] = r;
    } else {
        if (touched_.empty()) {
            touched_.assign(rows_, 0);
            for (std::size_t i = 0; i < num_few_; ++i) touched_[few_[i]] = 1;
        }
        touched_[r] = 1;
        touched_rows_.push_back(r);
    }
    const float* p = node_.cpt.data() + r * states_;
    double* c = node_.counts.data() + r * states_;
    const double e = node_.experience[r];
    // The kept counts stand when they still give this row exactly.
    double sum = 0.0;
    for (std::size_t s = 0; s < states_; ++s) sum += c[s];
    bool kept = sum == e;
    for (std::size_t s = 0; kept && s < states_; ++s)
        kept = static_cast<float>(sum > 0.0 ? c[s] / sum : 1.0 / static_cast<double>(states_)) == p[s];
    if (kept) return;
    // A row holding special marks is one yet to be learned: it starts from the prior.
    const bool marked = row_has_marks(node_, r);
    const double prior = prior_count_of(node_);
    for (std::size_t s = 0; s < states_; ++s) c[s] = marked ? prior : static_cast<double>(p[s]) * e;
}

void CountForm::settle_row(std::size_t r) {
    node_.experience[r] = counts_to_probabilities(node_.counts.data() + r * states_, states_,
                                                  node_.cpt.data() + r * states_);
    if (!touched_.empty()) touched_[r] = 0;
}

void CountForm::settle() {
    if (num_few_ == 0 && touched_rows_.empty()) return;
    for (std::size_t i = 0; i < num_few_; ++i) settle_row(few_[i]);
    for (std::size_t r : touched_rows_) settle_row(r);
    num_few_ = 0;
    touched_rows_.clear();
    node_tables_changed(node_);
}

}  // namespace ravelo
