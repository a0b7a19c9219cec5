// The commands of the program; each returns the exit code.
#pragma once
#include <string>
#include <vector>

namespace ravelo_cli {

int run_info(const std::string& file);
int run_convert(const std::string& in, const std::string& out);
int run_draw(const std::string& file, const std::string& out);
int run_beliefs(const std::string& file, const std::vector<std::string>& findings, const std::string& format);

}  // namespace ravelo_cli
