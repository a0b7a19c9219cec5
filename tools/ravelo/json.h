// The JSON forms of texts and numbers the commands print.
#pragma once
#include <string>

namespace ravelo_cli {

std::string json_string(const char* text);
// A number, or null when it is not finite.
std::string json_number(double x);

}  // namespace ravelo_cli
