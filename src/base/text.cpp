#include "base/text.h"

#include <cstdio>
#include <limits>
#include <vector>

namespace ravelo {

std::string vformat(const char* fmt, va_list args) {
    char small[512];
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(small, sizeof small, fmt, copy);
    va_end(copy);
    if (n < 0) return std::string();
    if (static_cast<size_t>(n) < sizeof small) return std::string(small, static_cast<size_t>(n));
    std::vector<char> big(static_cast<size_t>(n) + 1);
    std::vsnprintf(big.data(), big.size(), fmt, args);
    return std::string(big.data(), static_cast<size_t>(n));
}

std::string format(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string s = vformat(fmt, args);
    va_end(args);
    return s;
}

double undef_value() { return std::numeric_limits<double>::quiet_NaN(); }
double infinity_value() { return std::numeric_limits<double>::infinity(); }

}  // namespace ravelo
