// What the commands that query a compiled net share: the findings and display options, entering
// the findings, and writing beliefs and expected utilities as text or JSON.
#pragma once
#include <string>
#include <vector>

#include "commands.h"
#include "json.h"
#include "session.h"

namespace ravelo_cli {

struct QueryOptions {
    std::vector<std::string> findings;
    std::string nodes;  // comma-separated; empty for every node
    std::string format = "text";
    bool engine_names = false;
};

// Adds -f, --nodes, --names and --format to a command.
void add_query_options(CLI::App* command, QueryOptions& options);

// Compiles the net, enters the findings and updates the beliefs, drawing the steps in 'progress' if given.
class Progress;
void compile_with_findings(Session& session, net_bn* net, const std::vector<std::string>& findings,
                           Progress* progress = nullptr);

// Beliefs of the chosen nature nodes, the expected utility of each choice of the decision nodes
// and the net's expected utility, as the members of the JSON object being written.
void write_beliefs_json(JsonWriter& json, Session& session, net_bn* net, const std::vector<node_bn*>& nodes,
                        bool engine_names);

bool has_decisions(net_bn* net);

}  // namespace ravelo_cli
