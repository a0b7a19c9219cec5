// The ravelo command-line program: information about nets, conversion
// between net file formats, beliefs given findings, and learning and
// testing from case files.
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

    ravelo_cli::LearnOptions learning;
    CLI::App* learn = app.add_subcommand("learn", "Learn the tables of a net's nodes from a case file");
    learn->add_option("NET", learning.net, "Net file to read")->required();
    learn->add_option("CASES", learning.cases, "Case file to learn from")->required();
    learn->add_option("--method", learning.method, "count, em or gradient")
        ->check(CLI::IsMember({"count", "em", "gradient"}));
    learn->add_option("--max-iters", learning.max_iters, "Iteration limit of em and gradient (default 1000)")
        ->check(CLI::NonNegativeNumber);
    learn->add_option("--tol", learning.tolerance, "Relative change of log likelihood that ends iterating (default 1e-5)")
        ->check(CLI::NonNegativeNumber);
    learn->add_option("--threads", learning.threads, "Worker threads (default: RAVELO_THREADS, else the cores)")
        ->check(CLI::PositiveNumber);
    learn->add_option("--nodes", learning.nodes, "Nodes to learn, A,B,... (default: every nature node)");
    learn->add_option("--degree", learning.degree, "Weight of each case (default 1)")->check(CLI::NonNegativeNumber);
    learn->add_flag("--fresh", learning.fresh, "Remove the nodes' tables and experience first");
    learn->add_option("-o,--output", learning.out, "Net file to write")->required();
    learn->add_option("--format", learning.format, "Output format: text or json")->check(CLI::IsMember({"text", "json"}));

    ravelo_cli::TestOptions testing;
    CLI::App* test = app.add_subcommand("test", "Score how well a net predicts nodes of the cases in a case file");
    test->add_option("NET", testing.net, "Net file to read")->required();
    test->add_option("CASES", testing.cases, "Case file to test with")->required();
    test->add_option("--nodes", testing.nodes, "Nodes to test, A,B,...")->required();
    test->add_option("--unobserved", testing.unobserved, "Nodes never entered as findings, C,D,...");
    test->add_option("--format", testing.format, "Output format: text (the report) or json")
        ->check(CLI::IsMember({"text", "json"}));

    CLI11_PARSE(app, argc, argv);
    try {
        if (info->parsed()) return ravelo_cli::run_info(file);
        if (convert->parsed()) return ravelo_cli::run_convert(in, out);
        if (beliefs->parsed()) return ravelo_cli::run_beliefs(file, findings, format);
        if (learn->parsed()) return ravelo_cli::run_learn(learning);
        if (test->parsed()) return ravelo_cli::run_test(testing);
    } catch (const ravelo_cli::CommandFailed&) {
        return 1;  // already explained on standard error
    }
    return 0;
}
