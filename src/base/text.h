// printf-style formatting into std::string.
#pragma once
#include <cstdarg>
#include <string>

namespace ravelo {

std::string vformat(const char* fmt, va_list args);
std::string format(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

// The undefined real value and infinity, shared by every layer.
double undef_value();
double infinity_value();
inline bool is_undef(double x) { return x != x; }

}  // namespace ravelo
