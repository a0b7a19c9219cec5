// The commands of the program; each returns the exit code.
#pragma once
#include <string>
#include <vector>

namespace ravelo_cli {

int run_info(const std::string& file);
int run_convert(const std::string& in, const std::string& out);
int run_beliefs(const std::string& file, const std::vector<std::string>& findings, const std::string& format);

struct LearnOptions {
    std::string net, cases, out, method = "em", nodes, format = "text";
    int max_iters = -1, threads = 0;
    double tolerance = -1, degree = 1;
    bool fresh = false;
};
int run_learn(const LearnOptions& options);

struct TestOptions {
    std::string net, cases, nodes, unobserved, format = "text";
};
int run_test(const TestOptions& options);

}  // namespace ravelo_cli
