#include "labels.h"

#include <cctype>

#include "session.h"

namespace ravelo_cli {
namespace {

constexpr size_t kMaxNameLength = 30;

bool is_legal_name(const std::string& text) {
    if (text.empty() || text.size() > kMaxNameLength || !std::isalpha(static_cast<unsigned char>(text[0])))
        return false;
    for (char c : text)
        if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
    return true;
}

// A title the reader kept because the name in the file could not be the engine's name.
bool was_changed(const char* name, const char* title) {
    return title && *title && std::string(name) != title && !is_legal_name(title);
}

}  // namespace

std::string node_label(const node_bn* node, bool engine_names) {
    const char* text = engine_names ? GetNodeName_bn(node) : GetNodeLabel_bn(node);
    return text ? text : "";
}

std::string state_label(const node_bn* node, int state, bool engine_names) {
    const char* text = engine_names ? GetNodeStateName_bn(node, state) : GetNodeStateLabel_bn(node, state);
    if (text && *text) return text;
    return "#" + std::to_string(state);
}

void warn_if_names_changed(net_bn* net, const std::string& path) {
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    int changed = 0;
    std::string example;
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        auto note = [&](const char* name, const char* title) {
            if (!was_changed(name, title)) return;
            if (changed++ == 0) example = std::string("'") + title + "' is now '" + name + "'";
        };
        note(GetNodeName_bn(node), GetNodeTitle_bn(node));
        for (int s = 0; s < GetNodeNumberStates_bn(node); ++s)
            note(GetNodeStateName_bn(node, s), GetNodeStateTitle_bn(node, s));
    }
    if (changed == 0) return;
    complain("warning: " + std::to_string(changed) + " name" + (changed > 1 ? "s" : "") + " in '" + path +
             "' had to be changed to legal names (" + example +
             "); the output shows the names of the file, --names shows the changed ones");
}

}  // namespace ravelo_cli
