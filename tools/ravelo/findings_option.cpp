#include "findings_option.h"

#include <cstdio>
#include <cstdlib>

namespace ravelo_cli {

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

}  // namespace ravelo_cli
