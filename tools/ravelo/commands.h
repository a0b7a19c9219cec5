// The commands of the program. Each command file defines one add_* function that adds its
// subcommand, with its options, to the program and returns what runs it; main() lists them,
// one line per command. A run returns the exit code.
#pragma once
#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace ravelo_cli {

struct Command {
    CLI::App* app;
    std::function<int()> run;
};

Command add_info(CLI::App& program);
Command add_convert(CLI::App& program);
Command add_beliefs(CLI::App& program);
Command add_mpe(CLI::App& program);
Command add_batch(CLI::App& program);
Command add_draw(CLI::App& program);
Command add_learn(CLI::App& program);
Command add_test(CLI::App& program);
Command add_simulate(CLI::App& program);

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
