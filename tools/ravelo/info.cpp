// "ravelo info FILE": what a net holds, node by node.
#include <cstdio>
#include <string>

#include "commands.h"
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

// Compiles the net and prints its compiled size and elimination order report, or why it cannot
// be compiled.
void print_compiled(Session& session, net_bn* net) {
    CompileNetWith_bn(net, "report");
    const report_ns* notice = nullptr;
    while ((notice = GetError_ns(session.env(), NOTICE_ERR, notice)) != nullptr)
        if (ErrorSeverity_ns(notice) == NOTICE_ERR) std::printf("%s", ErrorMessage_ns(notice));
    std::string error = session.take_error("compiling");
    ClearErrors_ns(session.env(), NOTICE_ERR);
    if (!error.empty()) std::printf("not compiled: %s\n", error.c_str());
}

}  // namespace

int run_info(const std::string& file) {
    Session session;
    net_bn* net = session.read_net(file);
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
        std::printf("  %-20s %-8s %s", GetNodeName_bn(node), kind_word(GetNodeKind_bn(node)),
                    GetNodeType_bn(node) == CONTINUOUS_TYPE ? "continuous" : "discrete");
        int states = GetNodeNumberStates_bn(node);
        std::printf("  %d states (", states);
        for (int s = 0; s < states; ++s) std::printf(s ? ", %s" : "%s", GetNodeStateName_bn(node, s));
        std::printf(")");
        const nodelist_bn* parents = GetNodeParents_bn(node);
        int p_count = LengthNodeList_bn(parents);
        if (p_count > 0) {
            std::printf("  parents:");
            for (int p = 0; p < p_count; ++p) std::printf(" %s", GetNodeName_bn(NthNode_bn(parents, p)));
        }
        std::printf("  [%s]\n", table_words(node).c_str());
    }
    session.check("describing the net");
    print_compiled(session, net);
    return 0;
}

}  // namespace ravelo_cli
