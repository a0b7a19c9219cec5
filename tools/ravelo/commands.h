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

}  // namespace ravelo_cli
