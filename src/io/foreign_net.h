// A net as foreign formats describe it: names as they appear in the file,
// parents by name, and each table already in the engine's layout (first
// parent slowest, the node's own state fastest).  Every foreign reader fills
// one and builds the net from it; every foreign writer starts from one.
#pragma once
#include <string>
#include <utility>
#include <vector>

#include "base/environment.h"
#include "io/read_place.h"
#include "net/model.h"

namespace ravelo {

struct ForeignNode {
    std::string name;  // as written in the file
    std::string title, comment;
    std::vector<std::string> states;
    std::vector<std::string> parents;
    NodeKind kind = NodeKind::Nature;
    std::vector<float> cpt;         // empty: no table given
    std::vector<double> utilities;  // a utility node's value per parent condition
    bool has_position = false;
    double x = 0, y = 0;
    std::vector<std::pair<std::string, std::string>> fields;  // other properties
    int line = 0;  // where it was declared
    int table_line = 0;  // where its table was given, when elsewhere
};

struct ForeignNet {
    std::string name, title, comment;
    std::vector<ForeignNode> nodes;
    std::vector<std::pair<std::string, std::string>> fields;
};

// Builds a net from its description: names are made legal and unique (the
// original text becomes the title), links are checked for cycles, and every
// probability row is checked.  Nothing is left behind when it fails.
Net* build_net(Environment& env, const ForeignNet& description, const ReadPlace& place);

// Describes a net with its foreign names restored from the titles that
// reading kept.
ForeignNet describe_net(const Net& net);

// The number of table entries a node would need, refused when too large.
size_t table_size(const ForeignNet& net, const ForeignNode& node, const ReadPlace& place);

// Index of a named node of the description, or -1.
int find_node(const ForeignNet& net, const std::string& name);

}  // namespace ravelo
