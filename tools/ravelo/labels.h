// What the program shows for nodes and states: by default the labels the net file gave (a
// reader keeps a foreign name the engine had to change as the title), or with --names the
// engine's names.
#pragma once
#include <string>

#include "ravelo/ravelo.h"

namespace ravelo_cli {

std::string node_label(const node_bn* node, bool engine_names);
// An unnamed state shows as "#N".
std::string state_label(const node_bn* node, int state, bool engine_names);
// Says once, on standard error, that names read from 'path' were changed, with one example.
void warn_if_names_changed(net_bn* net, const std::string& path);

}  // namespace ravelo_cli
