// "ravelo beliefs FILE": compiles the net, enters findings and prints the probability of the
// findings, every nature node's beliefs, and for decision nets the expected utilities.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "findings.h"
#include "labels.h"
#include "progress.h"
#include "query.h"

namespace ravelo_cli {
namespace {

constexpr int kBarWidth = 40;

void print_beliefs(Session& session, node_bn* node, bool engine_names) {
    const prob_bn* beliefs = GetNodeBeliefs_bn(node);
    session.check("updating beliefs");
    std::printf("\n%s\n", node_label(node, engine_names).c_str());
    for (int s = 0; s < GetNodeNumberStates_bn(node); ++s) {
        int filled = static_cast<int>(std::lround(beliefs[s] * kBarWidth));
        std::string bar(static_cast<size_t>(std::clamp(filled, 0, kBarWidth)), '#');
        std::printf("  %-20s %8.4f%%  |%-*s|\n", state_label(node, s, engine_names).c_str(), 100.0 * beliefs[s],
                    kBarWidth, bar.c_str());
    }
}

void print_utilities(Session& session, node_bn* node, bool engine_names) {
    const util_bn* utils = GetNodeExpectedUtils_bn(node);
    session.check("finding expected utilities");
    std::printf("\n%s (decision: expected utility of each choice)\n", node_label(node, engine_names).c_str());
    for (int s = 0; s < GetNodeNumberStates_bn(node); ++s)
        std::printf("  %-20s %12.6g\n", state_label(node, s, engine_names).c_str(), utils[s]);
}

void print_text(Session& session, net_bn* net, const std::vector<node_bn*>& nodes, bool engine_names) {
    double p = FindingsProbability_bn(net);
    session.check("finding the probability of the findings");
    std::printf("probability of findings: %.6g\n", p);
    if (has_decisions(net)) {
        double utility = GetNetExpectedUtility_bn(net);
        session.check("finding the expected utility");
        std::printf("expected utility: %.6g\n", utility);
    }
    for (node_bn* node : nodes) {
        nodekind_bn kind = GetNodeKind_bn(node);
        if (kind == NATURE_NODE && GetNodeNumberStates_bn(node) > 0) print_beliefs(session, node, engine_names);
        else if (kind == DECISION_NODE) print_utilities(session, node, engine_names);
    }
}

}  // namespace

Command add_beliefs(CLI::App& program) {
    auto file = std::make_shared<std::string>();
    auto options = std::make_shared<QueryOptions>();
    CLI::App* command = program.add_subcommand("beliefs", "Compile a net, enter findings and print beliefs");
    command->add_option("FILE", *file, "Net file to read")->required();
    add_query_options(command, *options);
    return {command, [file, options] {
                Session session;
                Progress progress(4);
                progress.step("reading");
                net_bn* net = session.read_net(*file);
                compile_with_findings(session, net, options->findings, &progress);
                std::vector<node_bn*> nodes = chosen_nodes(session, net, options->nodes);
                progress.finish();
                if (options->format == "json") {
                    JsonWriter json;
                    json.begin_object();
                    write_beliefs_json(json, session, net, nodes, options->engine_names);
                    std::printf("%s\n", json.end_object().text().c_str());
                } else {
                    print_text(session, net, nodes, options->engine_names);
                }
                return 0;
            }};
}

}  // namespace ravelo_cli
