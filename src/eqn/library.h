// The function library of the equation language, registered into the
// engine's symbol table in its fixed order.
#pragma once
#include "eqn/expr.h"

namespace ravelo {

void add_operators(SymbolTable& table);
void add_builtin_functions(SymbolTable& table);
void add_probability_functions(SymbolTable& table);
// _not, _discretize, _find0, _select0, _levels, _BernoulliDist.
void add_internal_functions(SymbolTable& table);

void add_bernoulli_internal(SymbolTable& table);
void add_noisy_functions(SymbolTable& table);

// "first", "second", ... for argument positions counted from 0.
const char* ordinal_word(int index);

// Equality as member() tests it: both 0, or magnitudes within 1e-8 relative.
bool nearly_equal(double a, double b, double ratio = 0.99999999);

}  // namespace ravelo
