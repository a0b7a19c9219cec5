// The UAI format of Bayesian networks (.uai): numbers only, so nodes are
// named by their position.
#pragma once
#include <string>
#include <string_view>

#include "io/foreign_net.h"

namespace ravelo {

ForeignNet read_uai(std::string_view text, const ReadPlace& place);
std::string write_uai(const ForeignNet& net);

}  // namespace ravelo
