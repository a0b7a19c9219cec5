// What each foreign net format can express.  A net holding something its
// format cannot say is refused before anything is written, naming the node,
// rather than written with parts left out or made up.
#pragma once
#include <string>

#include "io/foreign_net.h"

namespace ravelo {

struct ForeignFormat {
    const char* name;        // as reports name the format
    bool tables_optional;    // a node may be written without a table
    bool decision_nodes;     // decision and utility nodes can be written
};

// Fails with a report naming the first node that the format cannot express.
void require_expressible(const ForeignNet& net, const ForeignFormat& format);

}  // namespace ravelo
