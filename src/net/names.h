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
// The same check for a name given as wide (UTF-16) text.
std::string wide_name_problem(const char16_t* name);

// "1st", "2nd", "3rd", "4th", ... for naming a state by its position.
std::string ordinal(int n);

// Checks a name in report mode (returns the fault as a report-ready reason,
// empty when legal) or in repair mode (rewrites name in place and returns
// the fault it repaired).  kind_word names the thing in the reader's message
// "'%s' is not a legal name for a %s".
struct NameCheck {
    std::string problem;  // empty when the name was legal
    std::string name;     // the name, repaired when asked
};
// Fails unless name is a legal name for a new thing of kind_word ("net",
// "node", "user field"): NULL gives "NULL passed for name".
void require_legal_name(const char* name, const char* kind_word);

NameCheck check_name(const char* name, bool repair, bool allow_star = false);

}  // namespace ravelo
