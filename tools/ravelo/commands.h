// The commands of the program; each returns the exit code.
#pragma once
#include <string>
#include <vector>

namespace ravelo_cli {

int run_info(const std::string& file);
int run_convert(const std::string& in, const std::string& out);
int run_beliefs(const std::string& file, const std::vector<std::string>& findings, const std::string& format);

struct SimulateOptions {
    std::string net_file, out_file;
    long cases = 0;
    std::vector<std::string> findings;
    double missing_percent = 0;
    std::string seed = "1";
    std::string method = "auto";
};
int run_simulate(const SimulateOptions& options);

}  // namespace ravelo_cli
