#include "io/linking.h"

#include <algorithm>

#include "base/failure.h"
#include "base/text.h"
#include "net/ops.h"
#include "net/structure.h"

namespace ravelo {
namespace {

constexpr int kCycleWarning = 3226;
constexpr int kMultipleLinksWarning = 3227;

std::optional<RefusedLink> refusal(const Node& parent, const Node& child, int line, const std::string& delay) {
    const auto& ps = child.parents.nodes;
    if (std::find(ps.begin(), ps.end(), &parent) != ps.end()) return RefusedLink{&parent, &child, line, true};
    if (closes_undelayed_cycle(parent, child, delay)) return RefusedLink{&parent, &child, line, false};
    return std::nullopt;
}

}  // namespace

void link_checked(Node& parent, Node& child, const std::string& input_name,
                  const ReadPlace& place, int line, const std::string& delay) {
    if (auto refused = refusal(parent, child, line, delay)) refuse_link(*refused, place);
    connect(parent, child, input_name, delay);
}

std::optional<RefusedLink> link_or_warn(Node& parent, Node& child, const std::string& input_name,
                                        const ReadPlace& place, int line, const std::string& delay) {
    std::optional<RefusedLink> refused = refusal(parent, child, line, delay);
    if (!refused) {
        connect(parent, child, input_name, delay);
        return refused;
    }
    const char* pn = parent.name.c_str();
    const char* cn = child.name.c_str();
    if (refused->already_connected)
        warning(kMultipleLinksWarning, "connecting >-node '%s' to >-node '%s' results in multiple links between "
                                       "the same two >-node-s (line %d of '%s')",
                pn, cn, line, place.file.c_str());
    else
        warning(kCycleWarning, "connecting >-node '%s' to >-node '%s' results in a directed cycle (with no time "
                               "delays) (line %d of '%s')",
                pn, cn, line, place.file.c_str());
    return refused;
}

void refuse_link(const RefusedLink& link, const ReadPlace& place) {
    const char* pn = link.parent->name.c_str();
    const char* cn = link.child->name.c_str();
    if (link.already_connected)
        read_failure(place, link.line,
                     format("can't connect >-node '%s' to >-node '%s', because they are already connected", pn, cn));
    read_failure(place, link.line,
                 format("can't connect >-node '%s' to >-node '%s', because that would result in a directed "
                        "cycle (with no time delays)",
                        pn, cn));
}

}  // namespace ravelo
