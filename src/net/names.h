// Legal names of nets, nodes, states, links and node sets: letters, digits
// and "_", starting with a letter or "_", at most 30 characters.
#pragma once
#include <string>
#include <string_view>

namespace ravelo {

// The first fault of a name as a reason fragment ("'a b' contains a space"),
// or an empty string when the name is legal.  NULL is "is missing".
std::string name_problem(const char* name, bool allow_star = false);
// The name with every fault repaired: bad characters become "_", it is cut
// to 30 characters, a leading non-letter becomes "x".  Empty becomes "x".
std::string repaired_name(std::string_view name);
inline bool is_legal_name(const char* name) { return name_problem(name).empty(); }

}  // namespace ravelo
