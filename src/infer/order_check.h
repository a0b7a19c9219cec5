// Validation of an elimination order against its net.
#pragma once
#include <string>
#include <vector>

#include "net/model.h"

namespace ravelo {

// The reason the order is not one of the net's orders, or empty when it is.
std::string elim_order_problem(const Net& net, const std::vector<Node*>& order);

// Drops a stored order that no longer fits the net, with a warning.
void check_stored_elim_order(Net& net);

// Replaces the net's order (NULL removes it); the old list's handle dies.
void set_elim_order(Net& net, const std::vector<Node*>* order);

}  // namespace ravelo
