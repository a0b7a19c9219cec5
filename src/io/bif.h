// The BIF interchange format (.bif): "network", "variable" and
// "probability" blocks.
#pragma once
#include <string>
#include <string_view>

#include "io/foreign_net.h"

namespace ravelo {

ForeignNet read_bif(std::string_view text, const ReadPlace& place);
std::string write_bif(const ForeignNet& net);

}  // namespace ravelo
