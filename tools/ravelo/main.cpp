// The ravelo command-line program: information about nets, conversion
// between net file formats, beliefs given findings, and pictures of nets.
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

    CLI::App* draw = app.add_subcommand("draw", "Draw a net with Graphviz, with belief bars when it compiles");
    draw->add_option("FILE", file, "Net file to read")->required();
    draw->add_option("-o,--output", out, "Picture to write; its extension names the format (svg, png, pdf)")
        ->required();

    CLI11_PARSE(app, argc, argv);
    try {
        if (info->parsed()) return ravelo_cli::run_info(file);
        if (convert->parsed()) return ravelo_cli::run_convert(in, out);
        if (beliefs->parsed()) return ravelo_cli::run_beliefs(file, findings, format);
        if (draw->parsed()) return ravelo_cli::run_draw(file, out);
    } catch (const ravelo_cli::CommandFailed&) {
        return 1;  // already explained on standard error
    }
    return 0;
}
