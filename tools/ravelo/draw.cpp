// "ravelo draw FILE -o OUT": a picture of the net drawn by Graphviz's dot program, with a belief
// bar per state in each node when the net compiles.  The format is OUT's extension (svg, png,
// pdf, ...).  dot is run directly, never through a shell, so no file name is ever interpreted.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include "commands.h"
#include "session.h"

extern char** environ;

namespace ravelo_cli {
namespace {

constexpr int kBarWidth = 60;

std::string html_escaped(const char* text) {
    std::string out;
    for (const char* c = text; *c; ++c) {
        switch (*c) {
            case '&': out += "&amp;"; break;
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '"': out += "&quot;"; break;
            default: out += *c;
        }
    }
    return out;
}

std::string quoted(const char* text) {
    std::string out = "\"";
    for (const char* c = text; *c; ++c) {
        if (*c == '"' || *c == '\\') out += '\\';
        out += *c;
    }
    return out + "\"";
}

const char* fill_of(node_bn* node) {
    switch (GetNodeKind_bn(node)) {
        case DECISION_NODE: return "#dce8f5";
        case UTILITY_NODE: return "#f5dcdc";
        case CONSTANT_NODE: return "#eeeeee";
        default: return "#fffbe6";
    }
}

std::string state_label(node_bn* node, int s) {
    const char* name = GetNodeStateName_bn(node, s);
    if (name && *name) return name;
    std::string label = "#";  // appended, as "#" + text trips a false GCC 12 warning
    label += std::to_string(s);
    return label;
}

// The node's label and, when beliefs are at hand, one row per state: name, percentage, bar.
std::string node_label(Session& session, node_bn* node, bool compiled) {
    std::string rows = "<TR><TD COLSPAN=\"3\"><B>" + html_escaped(GetNodeLabel_bn(node)) + "</B></TD></TR>";
    int kind = GetNodeKind_bn(node);
    int states = GetNodeNumberStates_bn(node);
    const prob_bn* beliefs = nullptr;
    if (compiled && states > 0 && (kind == NATURE_NODE || kind == DECISION_NODE)) {
        beliefs = GetNodeBeliefs_bn(node);
        if (!session.take_error("updating beliefs").empty()) beliefs = nullptr;
    }
    for (int s = 0; beliefs && s < states; ++s) {
        int width = std::max(1, static_cast<int>(std::lround(beliefs[s] * kBarWidth)));
        char percent[16];
        std::snprintf(percent, sizeof percent, "%.1f", 100.0 * beliefs[s]);
        rows += "<TR><TD ALIGN=\"LEFT\">" + html_escaped(state_label(node, s).c_str()) + "</TD><TD ALIGN=\"RIGHT\">" +
                percent +
                "</TD><TD><TABLE BORDER=\"0\" CELLPADDING=\"0\" CELLSPACING=\"0\"><TR>"
                "<TD BGCOLOR=\"#2b5797\" WIDTH=\"" + std::to_string(width) + "\" HEIGHT=\"8\" FIXEDSIZE=\"TRUE\"></TD>"
                "<TD WIDTH=\"" + std::to_string(std::max(1, kBarWidth + 1 - width)) +
                "\" HEIGHT=\"8\" FIXEDSIZE=\"TRUE\"></TD></TR></TABLE></TD></TR>";
    }
    return std::string("<TABLE BORDER=\"1\" CELLBORDER=\"0\" CELLSPACING=\"0\" CELLPADDING=\"2\" BGCOLOR=\"") +
           fill_of(node) + "\">" + rows + "</TABLE>";
}

std::string dot_text(Session& session, net_bn* net, bool compiled) {
    std::string dot = "digraph " + quoted(GetNetName_bn(net)) +
                      " {\n  node [shape=plaintext fontname=\"Helvetica\" fontsize=10];\n";
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        dot += "  " + quoted(GetNodeName_bn(node)) + " [label=<" + node_label(session, node, compiled) + ">];\n";
    }
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        const nodelist_bn* parents = GetNodeParents_bn(node);
        for (int j = 0; j < LengthNodeList_bn(parents); ++j)
            dot += "  " + quoted(GetNodeName_bn(NthNode_bn(parents, j))) + " -> " + quoted(GetNodeName_bn(node)) + ";\n";
    }
    return dot + "}\n";
}

// Runs dot on the text through a temporary file; false (with the reason printed) on failure.
bool run_dot(const std::string& dot, const std::string& out) {
    size_t slash = out.find_last_of('/'), dot_at = out.find_last_of('.');
    std::string format = dot_at != std::string::npos && (slash == std::string::npos || dot_at > slash)
                             ? out.substr(dot_at + 1) : "svg";
    char input[] = "/tmp/ravelo-draw-XXXXXX";
    int fd = mkstemp(input);
    if (fd < 0 || write(fd, dot.data(), dot.size()) != static_cast<ssize_t>(dot.size())) {
        std::perror("ravelo: writing the drawing");
        if (fd >= 0) close(fd), unlink(input);
        return false;
    }
    close(fd);
    std::string type = "-T" + format;
    char* argv[] = {const_cast<char*>("dot"), type.data(), const_cast<char*>("-o"), const_cast<char*>(out.c_str()),
                    input, nullptr};
    pid_t pid = 0;
    int status = -1;
    bool spawned = posix_spawnp(&pid, "dot", nullptr, nullptr, argv, environ) == 0;
    if (spawned) waitpid(pid, &status, 0);
    unlink(input);
    if (!spawned) {
        std::fprintf(stderr, "ravelo: drawing needs Graphviz's 'dot' program (Debian package graphviz)\n");
        return false;
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "ravelo: Graphviz's dot couldn't draw '%s'\n", out.c_str());
        return false;
    }
    return true;
}

}  // namespace

Command add_draw(CLI::App& program) {
    auto file = std::make_shared<std::string>();
    auto out = std::make_shared<std::string>();
    CLI::App* command = program.add_subcommand("draw", "Draw a net with Graphviz, with belief bars when it compiles");
    command->add_option("FILE", *file, "Net file to read")->required();
    command->add_option("-o,--output", *out, "Picture to write; its extension names the format (svg, png, pdf)")
        ->required();
    return {command, [file, out] {
                Session session;
                net_bn* net = session.read_net(*file);
                CompileNet_bn(net);
                // A net that doesn't compile is still drawn, without belief bars.
                bool compiled = session.take_error("compiling").empty();
                std::string dot = dot_text(session, net, compiled);
                session.check("reading the net");
                return run_dot(dot, *out) ? 0 : kRuntimeFailure;
            }};
}

}  // namespace ravelo_cli
