// Links made by readers, with the checks the interface makes: no second
// link between the same nodes, no directed cycle without a time delay.
#pragma once
#include <optional>
#include <string>

#include "io/read_place.h"
#include "net/model.h"

namespace ravelo {

// Connects parent to child, or ends the read at the first refused link.
void link_checked(Node& parent, Node& child, const std::string& input_name,
                  const ReadPlace& place, int line, const std::string& delay = std::string());

// A link a reader turned down, and why.
struct RefusedLink {
    const Node* parent = nullptr;
    const Node* child = nullptr;
    int line = 0;
    bool already_connected = false;  // otherwise it would close a cycle with no time delay
};

// Connects parent to child when the link is allowed.  Otherwise the link is
// not made, a warning names it and its line, and the refusal is returned, so
// that a reader can go on to name every bad link of a file before refusing it.
std::optional<RefusedLink> link_or_warn(Node& parent, Node& child, const std::string& input_name,
                                        const ReadPlace& place, int line, const std::string& delay);

// Ends the read with the report of a refused link.
[[noreturn]] void refuse_link(const RefusedLink& link, const ReadPlace& place);

}  // namespace ravelo
