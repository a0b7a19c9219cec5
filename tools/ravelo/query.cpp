#include "query.h"

#include "findings.h"
#include "labels.h"
#include "progress.h"

namespace ravelo_cli {

void add_query_options(CLI::App* command, QueryOptions& options) {
    command->add_option("-f,--finding", options.findings,
                        "A finding: NODE=STATE, NODE!=STATE, or NODE=[x1,x2,...] for a likelihood; STATE is a "
                        "name, a label, or #N for the N-th state from 0");
    command->add_option("--nodes", options.nodes, "Show only these nodes (names separated by commas)");
    command->add_flag("--names", options.engine_names,
                      "Show the engine's names rather than the labels the file gave");
    command->add_option("--format", options.format, "Output format: text or json")
        ->check(CLI::IsMember({"text", "json"}));
}

void compile_with_findings(Session& session, net_bn* net, const std::vector<std::string>& findings,
                           Progress* progress) {
    if (progress) progress->step("compiling");
    CompileNet_bn(net);
    session.check("compiling");
    if (progress) progress->step("entering findings");
    for (const std::string& finding : findings) enter_finding_text(session, net, finding);
    if (progress) progress->step("updating beliefs");
    FindingsProbability_bn(net);  // brings the beliefs up to date
    session.check("updating beliefs");
}

bool has_decisions(net_bn* net) {
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        nodekind_bn kind = GetNodeKind_bn(NthNode_bn(nodes, i));
        if (kind == DECISION_NODE || kind == UTILITY_NODE) return true;
    }
    return false;
}

void write_beliefs_json(JsonWriter& json, Session& session, net_bn* net, const std::vector<node_bn*>& nodes,
                        bool engine_names) {
    json.key("findings_probability").value(FindingsProbability_bn(net));
    session.check("finding the probability of the findings");
    json.key("nodes").begin_object();
    for (node_bn* node : nodes) {
        if (GetNodeKind_bn(node) != NATURE_NODE || GetNodeNumberStates_bn(node) == 0) continue;
        const prob_bn* beliefs = GetNodeBeliefs_bn(node);
        session.check("updating beliefs");
        json.key(node_label(node, engine_names)).begin_object();
        for (int s = 0; s < GetNodeNumberStates_bn(node); ++s)
            json.key(state_label(node, s, engine_names)).value(beliefs[s]);
        json.end_object();
    }
    json.end_object();
    if (!has_decisions(net)) return;
    json.key("decisions").begin_object();
    for (node_bn* node : nodes) {
        if (GetNodeKind_bn(node) != DECISION_NODE) continue;
        const util_bn* utils = GetNodeExpectedUtils_bn(node);
        session.check("finding expected utilities");
        json.key(node_label(node, engine_names)).begin_object();
        for (int s = 0; s < GetNodeNumberStates_bn(node); ++s)
            json.key(state_label(node, s, engine_names)).value(static_cast<float>(utils[s]));
        json.end_object();
    }
    json.end_object();
    // Utilities come from single-precision tables: digits beyond a float's are noise.
    json.key("expected_utility").value(static_cast<float>(GetNetExpectedUtility_bn(net)));
    session.check("finding the expected utility");
}

}  // namespace ravelo_cli
