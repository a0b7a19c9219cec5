// The equation parser: the two forms of an equation, and the expression
// grammar (precedence climbing over the operator table) with name
// resolution and static type checks.
#pragma once
#include <memory>
#include <string>

#include "eqn/expr.h"

namespace ravelo {

class Node;

// The first fault met while parsing, with where in the text it was found.
struct ParseProblem {
    int number = 0;
    std::string message;
    int position = -1;
    std::string subject;  // the name at fault, where there is one
    const char* context = "parsing expression";
};

struct ParseOptions {
    bool allow_new_names = false;  // unknown names become named constants with value UNDEF
    // Searched before the engine's own table: user-defined functions (made
    // with define_function) live here.  Its outer table should be the engine's.
    const SymbolTable* functions = nullptr;
};

// Parses the equation text of node; the names of its parents are their link
// (input) names where set, otherwise the parents' own names.  Returns NULL
// with problem filled on failure; warnings are reported as they are found.
std::unique_ptr<ParsedEquation> parse_equation(const std::string& text, Node& node,
                                               ParseProblem& problem,
                                               const ParseOptions& options = {});

// Registers in table a user-defined function made from a parsed deterministic
// equation "f (A, B, ...) = body": the function takes as many arguments as
// the equation names parents, and its value is the body with argument i in
// place of the i-th name.  The result type is the body's.
const FuncDesc& define_function(SymbolTable& table, const std::string& name,
                                std::unique_ptr<ParsedEquation> definition);

// Index of the state of a two-state node that means "true", or -1 when its
// state names are not a recognised boolean pair.
int boolean_true_state(const Node& node);

}  // namespace ravelo
