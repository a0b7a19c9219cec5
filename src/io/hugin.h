// The Hugin-style .net format: "net", "node", "decision", "utility" and
// "potential" blocks of attributes.
#pragma once
#include <string>
#include <string_view>

#include "io/foreign_net.h"

namespace ravelo {

ForeignNet read_hugin(std::string_view text, const ReadPlace& place);
std::string write_hugin(const ForeignNet& net);

}  // namespace ravelo
