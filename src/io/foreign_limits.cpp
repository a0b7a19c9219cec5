#include "io/foreign_limits.h"

#include "base/failure.h"

namespace ravelo {
namespace {

// Rows of a table given as impossible parent conditions, and rows with
// undefined entries.
struct RowGaps {
    int impossible = 0;
    int undefined = 0;
};

RowGaps gaps_of(const ForeignNode& node) {
    RowGaps gaps;
    size_t m = node.states.size();
    for (size_t start = 0; m > 0 && start + m <= node.cpt.size(); start += m) {
        bool impossible = false, undefined = false;
        for (size_t s = 0; s < m; ++s) {
            float p = node.cpt[start + s];
            impossible = impossible || p == kImpossibleProb;
            undefined = undefined || (p < 0 && p != kImpossibleProb);
        }
        gaps.impossible += impossible;
        gaps.undefined += undefined && !impossible;
    }
    return gaps;
}

}  // namespace

void require_expressible(const ForeignNet& net, const ForeignFormat& format) {
    for (const ForeignNode& node : net.nodes) {
        const char* name = node.name.c_str();
        bool decision = node.kind == NodeKind::Decision || node.kind == NodeKind::Utility;
        if (decision && !format.decision_nodes)
            fail(3406, "can't write >-node '%s' in %s format, because it is a %s >-node, which that format can't express",
                 name, format.name, node.kind == NodeKind::Decision ? "decision" : "utility");
        bool has_table = node.kind == NodeKind::Utility ? !node.utilities.empty() : !node.cpt.empty();
        if (!has_table && !format.tables_optional)
            fail(3407, "can't write >-node '%s' in %s format, because it has no table, which that format requires",
                 name, format.name);
        RowGaps gaps = gaps_of(node);
        int rows = node.states.empty() ? 0 : static_cast<int>(node.cpt.size() / node.states.size());
        if (gaps.impossible > 0)
            fail(3408, "can't write >-node '%s' in %s format, because its table has impossible parent conditions "
                       "('@imposs') in %d of %d rows, which that format can't express",
                 name, format.name, gaps.impossible, rows);
        if (gaps.undefined > 0)
            fail(3409, "can't write >-node '%s' in %s format, because its table has undefined entries ('@undef') "
                       "in %d of %d rows, which that format can't express",
                 name, format.name, gaps.undefined, rows);
    }
}

}  // namespace ravelo
