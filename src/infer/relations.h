// Relation queries over a net's graph: the relation text, and the nodes that
// stand in the named relation to a node.
#pragma once
#include <string>
#include <vector>

#include "net/model.h"

namespace ravelo {

enum class Relation { None, Parent, Child, Ancestor, Descendent, Connected, DConnected, MarkovBlanket };
enum class ListOp { Replace, Append, Union, Intersection, Subtract };

struct RelationRequest {
    Relation relation = Relation::None;
    ListOp op = ListOp::Replace;
    bool remove_duplicates = false;
    bool exclude_self = false;
    bool include_evidence = false;
};

// Reads a relation text; a malformed one fails with its report.
RelationRequest parse_relation(const char* text);

// The nodes in the relation to each of 'from', without repeats, in the order met.
std::vector<Node*> related_nodes_of(const RelationRequest& request, const std::vector<Node*>& from);

// Applies the result to the output list as the request's option says.
void combine_into(std::vector<Node*>& out, const std::vector<Node*>& result, const RelationRequest& request);

}  // namespace ravelo
