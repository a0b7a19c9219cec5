// The ravelo command-line program: information about nets, conversion
// between net file formats, beliefs given findings, and simulated cases.
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

    ravelo_cli::SimulateOptions sim;
    CLI::App* simulate = app.add_subcommand("simulate", "Draw random cases from a net and write them as a case file");
    simulate->add_option("NET", sim.net_file, "Net file to read")->required();
    simulate->add_option("-n,--cases", sim.cases, "Number of cases to draw")->required()->check(CLI::PositiveNumber);
    simulate->add_option("-f,--finding", sim.findings, "A finding NODE=STATE every case keeps");
    simulate->add_option("--missing", sim.missing_percent, "Percentage of drawn values left out, as missing")
        ->check(CLI::Range(0.0, 100.0));
    simulate->add_option("--seed", sim.seed, "Seed of the random generator (an integer)");
    simulate->add_option("--method", sim.method,
                         "auto (the tree when findings are given), tree (exact through the compiled net) or "
                         "forward (parents first, rejecting draws that contradict the findings)")
        ->check(CLI::IsMember({"auto", "tree", "forward"}));
    simulate->add_option("-o,--output", sim.out_file, "Case file to write (\".csv\": commas between entries)")
        ->required();

    CLI11_PARSE(app, argc, argv);
    try {
        if (info->parsed()) return ravelo_cli::run_info(file);
        if (convert->parsed()) return ravelo_cli::run_convert(in, out);
        if (beliefs->parsed()) return ravelo_cli::run_beliefs(file, findings, format);
        if (simulate->parsed()) return ravelo_cli::run_simulate(sim);
    } catch (const ravelo_cli::CommandFailed&) {
        return 1;  // already explained on standard error
    }
    return 0;
}
