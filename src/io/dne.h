// The engine's own text net file format (.dne).
#pragma once
#include <string>
#include <string_view>

#include "io/read_place.h"
#include "net/model.h"

namespace ravelo {

struct DneReadOptions {
    // 'Inherit in First Pass': a declaration's inherited statements are
    // applied before its own, which may then neither repeat them nor be
    // statements they depend on.  Off, its own statements override.
    bool inherit_first_pass = false;
};

// Reads the file's net; control says whether visual information is read.
Net* read_dne(Environment& env, std::string_view text, const ReadPlace& place, int control,
              const DneReadOptions& options = {});
std::string write_dne(const Net& net);

}  // namespace ravelo
