#include "findings.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "labels.h"
#include "suggest.h"

namespace ravelo_cli {
namespace {

std::vector<std::string> node_words(net_bn* net) {
    std::vector<std::string> words;
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        words.push_back(node_label(node, true));
        if (node_label(node, false) != words.back()) words.push_back(node_label(node, false));
    }
    return words;
}

std::vector<std::string> state_words(const node_bn* node) {
    std::vector<std::string> words;
    for (int s = 0; s < GetNodeNumberStates_bn(node); ++s) words.push_back(state_label(node, s, false));
    return words;
}

std::string state_choice(const node_bn* node) {
    return "its states are " + quoted_list(state_words(node)) + ", or #0 to #" +
           std::to_string(GetNodeNumberStates_bn(node) - 1);
}

state_bn state_named(const node_bn* node, const std::string& text) {
    const std::string node_text = "node '" + node_label(node, false) + "'";
    const int states = GetNodeNumberStates_bn(node);
    if (text.empty()) usage_failure("no state given for " + node_text + "; " + state_choice(node));
    if (text[0] == '#') {
        char* end = nullptr;
        errno = 0;
        long n = std::strtol(text.c_str() + 1, &end, 10);
        if (text.size() == 1 || *end != '\0' || errno)
            usage_failure("'" + text + "' is not a state index; write #N with N from 0 to " +
                          std::to_string(states - 1));
        if (n < 0 || n >= states)
            usage_failure("state " + text + " is out of range for " + node_text + ", which has states #0 to #" +
                          std::to_string(states - 1));
        return static_cast<state_bn>(n);
    }
    for (int s = 0; s < states; ++s)
        if (text == GetNodeStateName_bn(node, s)) return s;
    for (int s = 0; s < states; ++s) {
        const char* title = GetNodeStateTitle_bn(node, s);
        if (title && *title && text == title) return s;
    }
    usage_failure(node_text + " has no state '" + text + "'" + did_you_mean(text, state_words(node)) + "; " +
                  state_choice(node));
}

// "[0.2, 0.8]" as one number per state.
std::vector<prob_bn> likelihood_of(const node_bn* node, const std::string& text) {
    std::vector<prob_bn> values;
    const char* p = text.c_str() + 1;
    for (;;) {
        char* end = nullptr;
        double x = std::strtod(p, &end);
        if (end == p) break;
        values.push_back(static_cast<prob_bn>(x));
        p = end;
        while (*p == ' ') ++p;
        if (*p != ',') break;
        ++p;
    }
    if (std::strcmp(p, "]") != 0)
        usage_failure("likelihood '" + text + "' should be [x1,x2,...], numbers separated by commas");
    if (values.size() != static_cast<size_t>(GetNodeNumberStates_bn(node)))
        usage_failure("likelihood '" + text + "' has " + std::to_string(values.size()) + " numbers, but node '" +
                      node_label(node, false) + "' has " + std::to_string(GetNodeNumberStates_bn(node)) +
                      " states");
    return values;
}

}  // namespace

node_bn* node_named(Session& session, net_bn* net, const std::string& text) {
    if (node_bn* node = text.empty() ? nullptr : GetNodeNamed_bn(text.c_str(), net)) return node;
    ClearErrors_ns(session.env(), ERROR_ERR);  // an illegal name is simply not a node's name
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        const char* title = GetNodeTitle_bn(node);
        if (title && *title && text == title) return node;
    }
    usage_failure("the net has no node '" + text + "'" + did_you_mean(text, node_words(net)));
}

std::vector<node_bn*> chosen_nodes(Session& session, net_bn* net, const std::string& list) {
    std::vector<node_bn*> chosen;
    if (list.empty()) {
        const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
        for (int i = 0; i < LengthNodeList_bn(nodes); ++i) chosen.push_back(NthNode_bn(nodes, i));
        return chosen;
    }
    size_t start = 0;
    while (start <= list.size()) {
        size_t comma = list.find(',', start);
        if (comma == std::string::npos) comma = list.size();
        chosen.push_back(node_named(session, net, list.substr(start, comma - start)));
        start = comma + 1;
    }
    return chosen;
}

void enter_finding_text(Session& session, net_bn* net, const std::string& text) {
    size_t eq = text.find('=');
    if (eq == std::string::npos || eq == 0)
        usage_failure("finding '" + text + "' should be NODE=STATE, NODE!=STATE or NODE=[x1,x2,...]");
    bool negative = text[eq - 1] == '!';
    node_bn* node = node_named(session, net, text.substr(0, negative ? eq - 1 : eq));
    std::string value = text.substr(eq + 1);
    if (!negative && !value.empty() && value[0] == '[') {
        std::vector<prob_bn> likelihood = likelihood_of(node, value);
        EnterNodeLikelihood_bn(node, likelihood.data());
    } else if (negative) {
        EnterFindingNot_bn(node, state_named(node, value));
    } else {
        EnterFinding_bn(node, state_named(node, value));
    }
    session.check("entering findings");
}

}  // namespace ravelo_cli
