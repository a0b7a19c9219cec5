#include "infer/order_report.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"

namespace ravelo {
namespace {

// Measured on the benchmark nets: a full update with hard findings and the reading of every
// node's beliefs costs about 1.5 ns per table entry (sepsets included) on one core.
constexpr double kSecondsPerEntry = 1.5e-9;

std::string memory_line(double bytes) {
    const double kb = bytes / 1024.0, mb = kb / 1024.0;
    if (kb < 1024.0) return format(" Memory = %d KB\n", static_cast<int>(std::ceil(kb)));
    if (mb < 1000.0) return format(" Memory = %.2f MB\n", mb);
    return format(" Memory = %g MB\n", mb);
}

std::string time_line(double seconds) {
    if (seconds < 1.0) return format("   Time = %d ms\n", static_cast<int>(std::ceil(seconds * 1000.0)));
    if (seconds < 3600.0) return format("   Time = %.2f sec (with sufficient RAM)\n", seconds);
    return format("   Time = %g hour (with sufficient RAM)\n", seconds / 3600.0);
}

}  // namespace

std::string requirements_text(double table_entries) {
    // The working tables and the prior tables kept for retraction.
    const double bytes = 2.0 * sizeof(float) * table_entries;
    return "Max Required:\n" + memory_line(bytes) + time_line(table_entries * kSecondsPerEntry);
}

std::string compiled_size_text(const JunctionTree& jt) {
    double total = total_size(jt), current = size_with_findings(jt);
    std::string text = format("Compiled to %d cliques, with total table size (including sepsets) of %g",
                              static_cast<int>(jt.cliques.size()), total);
    return text + (current != total ? format(" (with current findings %g)", current) : std::string(".\n"));
}

std::string elim_order_report(const Net& net, const JunctionTree& jt) {
    std::string text = format("Elimination order of >-net '%s':", net.name.c_str());
    if (net.elim_order)
        for (const Node* n : net.elim_order->nodes) text += " " + n->name;
    text += "\n";
    double largest = 0.0;
    for (const Clique& c : jt.cliques) largest = std::max(largest, static_cast<double>(c.size));
    text += format("%d cliques, the largest with %g entries\n", static_cast<int>(jt.cliques.size()),
                   largest);
    return text + requirements_text(total_size(jt));
}

}  // namespace ravelo
