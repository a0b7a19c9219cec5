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

class Progress;
// What a query command does once its net is read, compiled and holds the findings, given the
// nodes --nodes chose (every node without it).
using QueryBody =
    std::function<int(Session&, net_bn*, const std::vector<node_bn*>&, const QueryOptions&, Progress&)>;
// A command "NAME FILE" with the query options that reads the net, compiles it, enters the
// findings and then runs 'body'.
Command add_query_command(CLI::App& program, const char* name, const char* description, QueryBody body);

// Compiles the net, enters the findings and updates the beliefs, drawing the steps in 'progress' if given.
void compile_with_findings(Session& session, net_bn* net, const std::vector<std::string>& findings,
                           Progress* progress = nullptr);

// Beliefs of the chosen nature nodes, the expected utility of each choice of the decision nodes
// and the net's expected utility, as the members of the JSON object being written.
void write_beliefs_json(JsonWriter& json, Session& session, net_bn* net, const std::vector<node_bn*>& nodes,
                        bool engine_names);

bool has_decisions(net_bn* net);

}  // namespace ravelo_cli
