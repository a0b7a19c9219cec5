#include "io/linking.h"

#include <vector>

#include "base/text.h"
#include "net/ops.h"

namespace ravelo {
namespace {

// True when 'from' reaches 'to' by following links from parent to child.
bool reaches(const Node& from, const Node& to, std::vector<char>& seen) {
    std::vector<const Node*> stack{&from};
    while (!stack.empty()) {
        const Node* n = stack.back();
        stack.pop_back();
        if (n == &to) return true;
        if (seen[static_cast<size_t>(n->index)]) continue;
        seen[static_cast<size_t>(n->index)] = 1;
        for (const Node* c : n->children.nodes) stack.push_back(c);
    }
    return false;
}

}  // namespace

void link_checked(Node& parent, Node& child, const std::string& input_name,
                  const ReadPlace& place, int line) {
    for (const Node* p : child.parents.nodes)
        if (p == &parent)
            read_failure(place, line,
                         format("can't connect >-node '%s' to >-node '%s', because they are "
                                "already connected",
                                parent.name.c_str(), child.name.c_str()));
    std::vector<char> seen(child.net->nodes.nodes.size(), 0);
    if (reaches(child, parent, seen))
        read_failure(place, line,
                     format("can't connect >-node '%s' to >-node '%s', because that would result "
                            "in a directed cycle (with no time delays)",
                            parent.name.c_str(), child.name.c_str()));
    connect(parent, child, input_name);
}

}  // namespace ravelo
