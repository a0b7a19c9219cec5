#include "io/case_table.h"

#include "base/text.h"
#include "infer/update.h"

namespace ravelo {

double CaseTable::undefined_real() { return undef_value(); }

namespace {

bool same_finding(const FindingRecord& a, const FindingRecord& b) {
    return a.state == b.state && a.likelihood == b.likelihood && a.has_value == b.has_value &&
           (!a.has_value || a.value == b.value);
}

}  // namespace

// Findings are set directly rather than through the checked entry functions:
// the case reader has already checked each entry against its node, and a case
// that contradicts the model must still reach the update (where it shows as
// probability zero) instead of being refused one finding at a time.
void enter_case(const CaseTable& cases, std::size_t c, Net& net, const std::vector<char>* skip) {
    const std::size_t width = cases.columns.size();
    for (std::size_t k = 0; k < width; ++k) {
        const int position = cases.columns[k];
        if (skip && (*skip)[static_cast<std::size_t>(position)]) continue;
        Node& node = *net.nodes.nodes[static_cast<std::size_t>(position)];
        const std::size_t cell = cases.cell(c, k);
        FindingRecord wanted;
        auto special = cases.nonsimple.empty() ? cases.nonsimple.end() : cases.nonsimple.find(cell);
        if (special != cases.nonsimple.end()) {
            wanted = special->second;
        } else {
            wanted.state = cases.states[cell];
            double value = cases.value(c, k);
            if (!is_undef(value)) {
                wanted.value = value;
                wanted.has_value = true;
            }
        }
        if (same_finding(node.finding, wanted)) continue;
        node.finding.state = wanted.state;
        node.finding.likelihood = std::move(wanted.likelihood);
        node.finding.value = wanted.value;
        node.finding.has_value = wanted.has_value;
        findings_changed(node);
    }
}

}  // namespace ravelo
