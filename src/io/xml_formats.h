// The XML net formats: XMLBIF (.xml, .xmlbif, .bifxml), read and written,
// and the GeNIe-style .xdsl, read only.
#pragma once
#include <string>
#include <string_view>

#include "io/foreign_net.h"

namespace ravelo {

ForeignNet read_xmlbif(std::string_view text, const ReadPlace& place);
std::string write_xmlbif(const ForeignNet& net);

ForeignNet read_xdsl(std::string_view text, const ReadPlace& place);

// Numbers of a whitespace-separated list, each checked.
std::vector<double> numbers_of(const std::string& text, const ReadPlace& place, int line);

}  // namespace ravelo
