// Fresh values from an ever-increasing counter, stamped on objects to test
// set membership without clearing passes.
#pragma once
#include <cstdint>

namespace ravelo {

std::uint64_t fresh_mark();

}  // namespace ravelo
