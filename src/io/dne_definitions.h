// Writing the node definitions of text net files, and the declarations
// of nodes that inherit from them.
#pragma once
#include <string>

#include "net/model.h"

namespace ravelo {

// A definition's declaration: "define" or "param", its name, the definition
// it inherits from, and its statements as the file gave them.
std::string definition_declaration(const NodeDefinition& definition);

// The declaration `written` of a node (as the writer makes it, header to
// closing line), turned into one that inherits from the node's definition
// and states only what differs from it.  Unchanged when the node does not
// inherit, its definition is gone, or the node lacks something it would
// inherit.
std::string inheriting_declaration(const Net& net, const Node& node, const std::string& written);

}  // namespace ravelo
