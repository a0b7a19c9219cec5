// "ravelo batch FILE [SCENARIOS]": compiles the net once, then for each scenario (a line of
// findings separated by spaces, from a file or standard input) writes one JSON line with the
// probability of the findings and the beliefs. Blank lines and lines starting with '#' are skipped.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include "findings.h"
#include "query.h"

namespace ravelo_cli {
namespace {

std::vector<std::string> words_of(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string word; in >> word;) words.push_back(word);
    return words;
}

// Runs every scenario read from 'in'; returns whether all of them succeeded.
bool run_scenarios(Session& session, net_bn* net, std::istream& in, const QueryOptions& options) {
    std::vector<node_bn*> nodes = chosen_nodes(session, net, options.nodes);
    bool all_good = true;
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> findings = words_of(line);
        if (findings.empty() || findings[0][0] == '#') continue;
        JsonWriter json;
        json.begin_object().key("scenario").value(++number).key("findings").begin_array();
        for (const std::string& f : findings) json.value(f);
        json.end_array();
        try {
            RetractNetFindings_bn(net);
            for (const std::string& f : findings) enter_finding_text(session, net, f);
            write_beliefs_json(json, session, net, nodes, options.engine_names);
        } catch (const std::runtime_error& failed) {  // already explained on standard error
            all_good = false;
            json = JsonWriter();
            json.begin_object().key("scenario").value(number).key("error").value(failed.what());
        }
        std::printf("%s\n", json.end_object().text().c_str());
        std::fflush(stdout);
    }
    return all_good;
}

}  // namespace

Command add_batch(CLI::App& program) {
    auto file = std::make_shared<std::string>();
    auto scenarios = std::make_shared<std::string>("-");
    auto options = std::make_shared<QueryOptions>();
    CLI::App* command = program.add_subcommand(
        "batch", "Compile a net once and print the beliefs for each scenario, one JSON line each");
    command->add_option("FILE", *file, "Net file to read")->required();
    command->add_option("SCENARIOS", *scenarios,
                        "File of scenarios, one line of findings each (as for -f, separated by spaces); "
                        "- or nothing for standard input");
    command->add_option("--nodes", options->nodes, "Show only these nodes (names separated by commas)");
    command->add_flag("--names", options->engine_names, "Show the engine's names rather than the labels the file gave");
    return {command, [file, scenarios, options] {
                Session session;
                net_bn* net = session.read_net(*file);
                CompileNet_bn(net);
                session.check("compiling");
                if (*scenarios == "-") return run_scenarios(session, net, std::cin, *options) ? 0 : kRuntimeFailure;
                std::ifstream in(*scenarios);
                if (!in) {
                    complain("couldn't open scenario file '" + *scenarios + "'");
                    throw CommandFailed("no scenarios");
                }
                return run_scenarios(session, net, in, *options) ? 0 : kRuntimeFailure;
            }};
}

}  // namespace ravelo_cli
