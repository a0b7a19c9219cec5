// Counting learning and fading: revising nodes' probability tables, held in
// count form, from cases whose values are known for a node and its parents.
#pragma once
#include <vector>

#include "io/case_table.h"
#include "net/model.h"

namespace ravelo {

// Learns every case of the table into the tables of 'nodes' (nature and
// disconnected nodes with probability tables; others are passed over), each
// case weighted by degree times its weight.  A node learns from a case only
// when its own state and every parent's state are known in it.  Fails with
// its report when a negative degree would unlearn more than was learned
// (cells already changed keep their changes).
void learn_cases_by_counting(const std::vector<Node*>& nodes, const CaseTable& cases, double degree);

// Learns the findings now entered in the net as one case of weight 'degree'
// (negative: unlearns it).
void learn_findings_by_counting(const std::vector<Node*>& nodes, double degree);

// Discounts what a node's table has learned, moving each row toward its
// prior count by degree (0 to 1).
void fade_table(Node& node, double degree);

}  // namespace ravelo
