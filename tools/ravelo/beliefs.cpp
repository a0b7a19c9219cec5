// "ravelo beliefs FILE": compiles the net, enters findings and prints the
// probability of the findings and every nature node's beliefs.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "commands.h"
#include "json.h"
#include "progress.h"
#include "session.h"

namespace ravelo_cli {
namespace {

constexpr int kBarWidth = 40;

// STATE is a state name, a state title, or "#N" (the N-th state, from 0).
state_bn state_for(node_bn* node, const std::string& text) {
    int states = GetNodeNumberStates_bn(node);
    if (text.size() > 1 && text[0] == '#') {
        char* end = nullptr;
        long n = std::strtol(text.c_str() + 1, &end, 10);
        if (*end == '\0' && n >= 0 && n < states) return static_cast<state_bn>(n);
        return UNDEF_STATE;
    }
    for (int s = 0; s < states; ++s) {
        const char* name = GetNodeStateName_bn(node, s);
        if (name && text == name) return s;
    }
    for (int s = 0; s < states; ++s) {
        const char* title = GetNodeStateTitle_bn(node, s);
        if (title && text == title) return s;
    }
    return UNDEF_STATE;
}

void enter_findings(Session& session, net_bn* net, const std::vector<std::string>& findings) {
    for (const std::string& f : findings) {
        size_t eq = f.find('=');
        if (eq == std::string::npos) {
            std::fprintf(stderr, "ravelo: finding '%s' should be NODE=STATE\n", f.c_str());
            throw CommandFailed("bad finding");
        }
        std::string node_name = f.substr(0, eq), state_text = f.substr(eq + 1);
        node_bn* node = GetNodeNamed_bn(node_name.c_str(), net);
        session.check("finding the node");
        if (!node) {
            std::fprintf(stderr, "ravelo: the net has no node named '%s'\n", node_name.c_str());
            throw CommandFailed("bad finding");
        }
        state_bn state = state_for(node, state_text);
        if (state == UNDEF_STATE) {
            std::fprintf(stderr, "ravelo: node '%s' has no state '%s'\n", node_name.c_str(), state_text.c_str());
            throw CommandFailed("bad finding");
        }
        EnterFinding_bn(node, state);
        session.check("entering findings");
    }
}

std::string state_label(node_bn* node, int s) {
    const char* name = GetNodeStateName_bn(node, s);
    if (name && *name) return name;
    std::string label = "#";
    label += std::to_string(s);
    return label;
}

bool is_shown(node_bn* node) {
    return GetNodeKind_bn(node) == NATURE_NODE && GetNodeNumberStates_bn(node) > 0;
}

void print_text(Session& session, net_bn* net, double findings_probability) {
    std::printf("probability of findings: %.6g\n", findings_probability);
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        if (!is_shown(node)) continue;
        const prob_bn* beliefs = GetNodeBeliefs_bn(node);
        session.check("updating beliefs");
        std::printf("\n%s\n", GetNodeName_bn(node));
        for (int s = 0; s < GetNodeNumberStates_bn(node); ++s) {
            int filled = static_cast<int>(std::lround(beliefs[s] * kBarWidth));
            std::string bar(static_cast<size_t>(std::max(0, std::min(kBarWidth, filled))), '#');
            std::printf("  %-20s %8.4f%%  |%-*s|\n", state_label(node, s).c_str(), 100.0 * beliefs[s],
                        kBarWidth, bar.c_str());
        }
    }
}

void print_json(Session& session, net_bn* net, double findings_probability) {
    std::string out = "{\"findings_probability\": " + json_number(findings_probability) + ", \"nodes\": {";
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    bool first = true;
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        if (!is_shown(node)) continue;
        const prob_bn* beliefs = GetNodeBeliefs_bn(node);
        session.check("updating beliefs");
        out += first ? "" : ", ";
        first = false;
        out += json_string(GetNodeName_bn(node)) + ": {";
        for (int s = 0; s < GetNodeNumberStates_bn(node); ++s) {
            if (s) out += ", ";
            out += json_string(state_label(node, s).c_str()) + ": " + json_number(beliefs[s]);
        }
        out += "}";
    }
    out += "}}\n";
    std::fputs(out.c_str(), stdout);
}

}  // namespace

int run_beliefs(const std::string& file, const std::vector<std::string>& findings, const std::string& format) {
    Session session;
    Progress progress(4);
    progress.step("reading");
    net_bn* net = session.read_net(file);
    progress.step("compiling");
    CompileNet_bn(net);
    session.check("compiling");
    progress.step("entering findings");
    enter_findings(session, net, findings);
    progress.step("updating beliefs");
    double p = FindingsProbability_bn(net);
    session.check("finding the probability of the findings");
    if (format == "json") print_json(session, net, p);
    else print_text(session, net, p);
    return 0;
}

}  // namespace ravelo_cli
