// Evaluation of expression trees for given values of an equation's variables.
#pragma once
#include <string>

#include "eqn/expr.h"

namespace ravelo {

// The value of a tree; values holds one entry per variable of the equation
// (a state index for a discrete variable, a real for a continuous one).
// Failures give UNDEF, and a report for a function that fails on defined
// arguments.  cumulative marks variables written with "<", or is NULL.
double evaluate(const Expr& expr, const double* values, const ParsedEquation* equation = nullptr);

// The probability (or density) that a probabilistic equation gives its
// output value, all variables bound.  UNDEF with reason set on failure.
double evaluate_probability(const ParsedEquation& equation, const double* values,
                            std::string& reason);

// While one of these lives on a thread, functions that may only be used to
// build a table (NoisySumTableDist) are evaluated instead of refused.
class TableBuildingScope {
public:
    TableBuildingScope();
    ~TableBuildingScope();
    TableBuildingScope(const TableBuildingScope&) = delete;
    TableBuildingScope& operator=(const TableBuildingScope&) = delete;

private:
    bool was_;
};

}  // namespace ravelo
