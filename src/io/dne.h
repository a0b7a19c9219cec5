// The engine's own text net file format (.dne).
#pragma once
#include <string>
#include <string_view>

#include "io/read_place.h"
#include "net/model.h"

namespace ravelo {

// Reads the file's net; control says whether visual information is read.
Net* read_dne(Environment& env, std::string_view text, const ReadPlace& place, int control);
std::string write_dne(const Net& net);

}  // namespace ravelo
