#include "base/mark.h"

#include <atomic>

namespace ravelo {

std::uint64_t fresh_mark() {
    static std::atomic<std::uint64_t> counter{0};
    return ++counter;
}

}  // namespace ravelo
