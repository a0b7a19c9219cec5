// The ravelo command-line program: information about nets, conversion
// between net file formats, and beliefs given findings.
#include <CLI/CLI.hpp>

#include <cstdio>

#include "commands.h"
#include "session.h"

int main(int argc, char** argv) {
    CLI::App app{"ravelo: Bayesian belief networks from the command line"};
    app.require_subcommand(1);

    std::string file, in, out;

    CLI::App* info = app.add_subcommand("info", "Describe a net: its nodes, states and links");
    info->add_option("FILE", file, "Net file (.dne, .bif, .xml, .xmlbif, .bifxml, .net, .uai, .xdsl)")->required();

    CLI::App* convert = app.add_subcommand("convert", "Convert a net to the format OUT's extension names");
    convert->add_option("IN", in, "Net file to read")->required();
    convert->add_option("OUT", out, "Net file to write (.dne, .bif, .xml, .xmlbif, .bifxml, .net, .uai)")->required();

    CLI11_PARSE(app, argc, argv);
    try {
        if (info->parsed()) return ravelo_cli::run_info(file);
        if (convert->parsed()) return ravelo_cli::run_convert(in, out);
    } catch (const ravelo_cli::CommandFailed&) {
        return 1;  // already explained on standard error
    }
    return 0;
}
