// The ravelo command-line program: information about nets, conversion
// between net file formats, and beliefs given findings.
#include <CLI/CLI.hpp>

#include <cstdio>

#include "commands.h"
#include "session.h"

int main(int argc, char** argv) {
    CLI::App app{"ravelo: Bayesian belief networks from the command line"};
    app.require_subcommand(1);

    std::string file, in, out, format = "text";
    std::vector<std::string> findings;

    CLI::App* info = app.add_subcommand("info", "Describe a net: its nodes, states and links");
    info->add_option("FILE", file, "Net file (.dne, .bif, .xml, .xmlbif, .bifxml, .net, .uai, .xdsl)")->required();

    CLI::App* convert = app.add_subcommand("convert", "Convert a net to the format OUT's extension names");
    convert->add_option("IN", in, "Net file to read")->required();
    convert->add_option("OUT", out, "Net file to write (.dne, .bif, .xml, .xmlbif, .bifxml, .net, .uai)")->required();

    CLI::App* beliefs = app.add_subcommand("beliefs", "Compile a net, enter findings and print beliefs");
    beliefs->add_option("FILE", file, "Net file to read")->required();
    beliefs->add_option("-f,--finding", findings,
                        "A finding NODE=STATE (STATE a name, a title, or #N for the N-th state from 0)");
    beliefs->add_option("--format", format, "Output format: text (a bar per state) or json")
        ->check(CLI::IsMember({"text", "json"}));

    CLI11_PARSE(app, argc, argv);
    try {
        if (info->parsed()) return ravelo_cli::run_info(file);
        if (convert->parsed()) return ravelo_cli::run_convert(in, out);
        if (beliefs->parsed()) return ravelo_cli::run_beliefs(file, findings, format);
    } catch (const ravelo_cli::CommandFailed&) {
        return 1;  // already explained on standard error
    }
    return 0;
}
