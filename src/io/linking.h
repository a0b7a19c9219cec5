// Links made by readers, with the checks the interface makes: no second
// link between the same nodes, no directed cycle.
#pragma once
#include <string>

#include "io/read_place.h"
#include "net/model.h"

namespace ravelo {

void link_checked(Node& parent, Node& child, const std::string& input_name,
                  const ReadPlace& place, int line);

}  // namespace ravelo
