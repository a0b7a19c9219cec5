// "ravelo info FILE": what a net holds, node by node, and what compiling it makes.
#include <cstdio>
#include <string>

#include "commands.h"
#include "json.h"
#include "labels.h"
#include "session.h"

namespace ravelo_cli {
namespace {

const char* kind_word(nodekind_bn kind) {
    switch (kind) {
        case NATURE_NODE: return "nature";
        case CONSTANT_NODE: return "constant";
        case DECISION_NODE: return "decision";
        case UTILITY_NODE: return "utility";
        case DISCONNECTED_NODE: return "disconnected";
        default: return "unknown";
    }
}

// "table 4x2 = 8 entries", "table 4x2 = 8 entries, incomplete", "no table", "equation only".
std::string table_words(node_bn* node) {
    bool_ns complete = 0;
    if (!HasNodeTable_bn(node, &complete)) {
        const char* equation = GetNodeEquation_bn(node);
        return equation && *equation ? "equation only" : "no table";
    }
    double conditions = 1.0;
    const nodelist_bn* parents = GetNodeParents_bn(node);
    for (int p = 0; p < LengthNodeList_bn(parents); ++p)
        conditions *= GetNodeNumberStates_bn(NthNode_bn(parents, p));
    int states = GetNodeNumberStates_bn(node);
    char words[96];
    if (states > 0)
        std::snprintf(words, sizeof words, "table %.0fx%d = %.0f entries%s", conditions, states,
                      conditions * states, complete ? "" : ", incomplete");
    else
        std::snprintf(words, sizeof words, "function table %.0f entries%s", conditions,
                      complete ? "" : ", incomplete");
    return words;
}

struct Compiled {
    std::string report;  // the compiled size and the elimination order report
    std::string error;   // why the net could not be compiled
};

// The report is asked for as a text of its own: engine reports are capped in length.
Compiled compile(Session& session, net_bn* net) {
    Compiled compiled;
    CompileNet_bn(net);
    compiled.error = session.take_error("compiling");
    if (!compiled.error.empty()) return compiled;
    const char* report = CreateCustomReport_bn(net, nullptr, "compiled", nullptr);
    compiled.error = session.take_error("reporting");
    if (report) compiled.report = report;
    return compiled;
}

void print_text(Session& session, net_bn* net, bool engine_names) {
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    int count = LengthNodeList_bn(nodes);
    int links = 0;
    for (int i = 0; i < count; ++i) links += LengthNodeList_bn(GetNodeParents_bn(NthNode_bn(nodes, i)));
    std::printf("net %s", GetNetName_bn(net));
    const char* title = GetNetTitle_bn(net);
    if (title && *title) std::printf("  \"%s\"", title);
    std::printf("\n%d nodes, %d links\n", count, links);
    for (int i = 0; i < count; ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        std::printf("  %-20s %-8s %s", node_label(node, engine_names).c_str(), kind_word(GetNodeKind_bn(node)),
                    GetNodeType_bn(node) == CONTINUOUS_TYPE ? "continuous" : "discrete");
        int states = GetNodeNumberStates_bn(node);
        std::printf("  %d states (", states);
        for (int s = 0; s < states; ++s)
            std::printf(s ? ", %s" : "%s", state_label(node, s, engine_names).c_str());
        std::printf(")");
        const nodelist_bn* parents = GetNodeParents_bn(node);
        int p_count = LengthNodeList_bn(parents);
        if (p_count > 0) {
            std::printf("  parents:");
            for (int p = 0; p < p_count; ++p)
                std::printf(" %s", node_label(NthNode_bn(parents, p), engine_names).c_str());
        }
        std::printf("  [%s]\n", table_words(node).c_str());
    }
    session.check("describing the net");
    Compiled compiled = compile(session, net);
    if (compiled.error.empty()) std::fputs(compiled.report.c_str(), stdout);
    else std::printf("not compiled: %s\n", compiled.error.c_str());
}

void print_json(Session& session, net_bn* net) {
    JsonWriter json;
    json.begin_object().key("name").value(GetNetName_bn(net)).key("title").value(GetNetTitle_bn(net));
    json.key("nodes").begin_array();
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        json.begin_object().key("name").value(GetNodeName_bn(node)).key("label").value(node_label(node, false));
        json.key("kind").value(kind_word(GetNodeKind_bn(node)));
        json.key("type").value(GetNodeType_bn(node) == CONTINUOUS_TYPE ? "continuous" : "discrete");
        json.key("states").begin_array();
        for (int s = 0; s < GetNodeNumberStates_bn(node); ++s) json.value(state_label(node, s, true));
        json.end_array().key("state_labels").begin_array();
        for (int s = 0; s < GetNodeNumberStates_bn(node); ++s) json.value(state_label(node, s, false));
        json.end_array().key("parents").begin_array();
        const nodelist_bn* parents = GetNodeParents_bn(node);
        for (int p = 0; p < LengthNodeList_bn(parents); ++p) json.value(GetNodeName_bn(NthNode_bn(parents, p)));
        json.end_array().key("table").value(table_words(node)).end_object();
    }
    json.end_array();
    session.check("describing the net");
    Compiled compiled = compile(session, net);
    if (compiled.error.empty()) {
        json.key("compiled_size").value(SizeCompiledNet_bn(net, 0));
        json.key("compiled_report").value(compiled.report);
    } else {
        json.key("compile_error").value(compiled.error);
    }
    std::printf("%s\n", json.end_object().text().c_str());
}

}  // namespace

Command add_info(CLI::App& program) {
    struct Arguments {
        std::string file, format = "text";
        bool engine_names = false;
    };
    auto args = std::make_shared<Arguments>();
    CLI::App* command = program.add_subcommand("info", "Describe a net: its nodes, states and links");
    command->add_option("FILE", args->file, std::string("Net file (") + kReadFormats + "), or - for standard input")
        ->required();
    command->add_option("--format", args->format, "Output format: text or json")
        ->check(CLI::IsMember({"text", "json"}));
    command->add_flag("--names", args->engine_names, "Show the engine's names rather than the labels the file gave");
    return {command, [args] {
                Session session;
                net_bn* net = session.read_net(args->file);
                if (args->format == "json") print_json(session, net);
                else print_text(session, net, args->engine_names);
                return 0;
            }};
}

}  // namespace ravelo_cli
