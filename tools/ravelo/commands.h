// The commands of the program; each returns the exit code.
#pragma once
#include <string>
#include <vector>

namespace ravelo_cli {

int run_info(const std::string& file);
int run_convert(const std::string& in, const std::string& out);

}  // namespace ravelo_cli
