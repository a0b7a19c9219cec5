// "ravelo mpe FILE": the most probable configuration of the nature nodes given the findings.
#include <cstdio>

#include "findings.h"
#include "labels.h"
#include "progress.h"
#include "query.h"

namespace ravelo_cli {
namespace {

// The nodes a configuration covers: the chosen nature nodes with states.
nodelist_bn* configured_nodes(net_bn* net, const std::vector<node_bn*>& chosen) {
    nodelist_bn* list = NewNodeList2_bn(0, net);
    for (node_bn* node : chosen)
        if (GetNodeKind_bn(node) == NATURE_NODE && GetNodeNumberStates_bn(node) > 0)
            AddNodeToList_bn(node, list, LAST_ENTRY);
    return list;
}

}  // namespace

Command add_mpe(CLI::App& program) {
    auto file = std::make_shared<std::string>();
    auto options = std::make_shared<QueryOptions>();
    CLI::App* command = program.add_subcommand(
        "mpe", "Print the most probable configuration of the nodes given the findings");
    command->add_option("FILE", *file, "Net file to read")->required();
    add_query_options(command, *options);
    return {command, [file, options] {
                Session session;
                Progress progress(4);
                progress.step("reading");
                net_bn* net = session.read_net(*file);
                compile_with_findings(session, net, options->findings, &progress);
                std::vector<node_bn*> chosen = chosen_nodes(session, net, options->nodes);
                // The configuration is found over every node; --nodes chooses what is printed.
                nodelist_bn* all = configured_nodes(net, chosen_nodes(session, net, ""));
                std::vector<state_bn> config(static_cast<size_t>(LengthNodeList_bn(all)) + 1);
                MostProbableConfig_bn(all, config.data(), 0);
                double p = JointProbability_bn(all, config.data());
                std::string error = session.take_error("finding the most probable configuration");
                progress.finish();
                if (!error.empty()) {
                    DeleteNodeList_bn(all);
                    throw CommandFailed(error);
                }
                auto state_of = [&](node_bn* node) {
                    return config[static_cast<size_t>(IndexOfNodeInList_bn(node, all, 0))];
                };
                JsonWriter json;
                if (options->format == "json")
                    json.begin_object().key("probability").value(p).key("configuration").begin_object();
                else
                    std::printf("probability of this configuration given the findings: %.6g\n", p);
                for (node_bn* node : chosen) {
                    if (IndexOfNodeInList_bn(node, all, 0) < 0) continue;
                    std::string name = node_label(node, options->engine_names);
                    std::string state = state_label(node, state_of(node), options->engine_names);
                    if (options->format == "json") json.key(name).value(state);
                    else std::printf("  %-20s %s\n", name.c_str(), state.c_str());
                }
                if (options->format == "json") std::printf("%s\n", json.end_object().end_object().text().c_str());
                DeleteNodeList_bn(all);
                return 0;
            }};
}

}  // namespace ravelo_cli
