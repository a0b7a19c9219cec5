// Expression trees of the equation language, the function descriptors and
// named constants they refer to, the symbol table that holds those, and a
// node's parsed equation.
#pragma once
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ravelo {

class Node;

// Static types, in the order (and with the words) the parser's messages use.
enum class ValueType : int { None = 0, Boolean, State, Integer, Real, Numeric, Any };
const char* type_word(ValueType type);

// Functions that are not plain maps from argument values to a result.
enum class Special : int {
    None, And, Or, If, Select0, Select1, Member, AsState, NoisySum, Bernoulli
};

// A routine gets the argument values (n of them) and returns the result, or
// UNDEF on failure.  A routine with a reason of its own to give sets it with
// routine_problem() before returning UNDEF.
using Routine = double (*)(const double* args, int n);
void routine_problem(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

struct Expr;

struct FuncDesc {
    std::string name;
    const char* symbol = nullptr;   // operator form, if any
    int arity = 1;                  // -1: any number
    Routine eval = nullptr;
    Routine cdf = nullptr;          // cumulative form of a probability function
    bool probability = false;
    ValueType result = ValueType::Real, first = ValueType::Real, rest = ValueType::Real;
    int precedence = 0;             // 0: no operator form
    bool left_grouping = true;
    bool associative = false;       // a chain may be flattened into one call
    bool symmetric = false;
    Special special = Special::None;
    // A user-defined function: its body, whose variables are the arguments in
    // order (variable i is argument i).  Shared so that copies stay valid.
    std::shared_ptr<const Expr> body;
};

struct NamedConstant {
    std::string name;
    ValueType type;
    double value;
};

struct Symbol {
    std::string name;
    const FuncDesc* func = nullptr;
    const NamedConstant* constant = nullptr;
};

// Searched from the newest entry back to the first, then the outer table.
class SymbolTable {
public:
    explicit SymbolTable(const SymbolTable* outer = nullptr) : outer_(outer) {}
    const Symbol* find(std::string_view name) const;
    // The operator with this symbol taking this many operands.
    const FuncDesc* find_operator(std::string_view symbol, int arity) const;
    const FuncDesc& add_function(FuncDesc desc);
    const NamedConstant& add_constant(NamedConstant constant);

private:
    const SymbolTable* outer_;
    std::deque<FuncDesc> functions_;
    std::deque<NamedConstant> constants_;
    std::vector<Symbol> entries_;
};

// The engine's table: operators and built-in functions, named constants,
// probability functions, made once on first use.
const SymbolTable& builtin_symbols();
// Descriptors the parser wraps trees in; they are not reachable by name.
const FuncDesc& internal_function(const char* name);

enum class ExprKind { Number, Variable, State, Constant, Call };

struct Expr {
    ExprKind kind = ExprKind::Number;
    ValueType type = ValueType::Real;
    double value = 0;            // number, or state index
    std::string units;
    int var = -1;                // variable index, for kind Variable
    const NamedConstant* constant = nullptr;
    const FuncDesc* func = nullptr;
    std::vector<std::unique_ptr<Expr>> args;
    int states_of = -1;          // the variable whose states this value denotes
    int position = 0;            // where it starts in the equation text
    bool state_indicated = false;  // a variable written with "#"
};

struct EqnVariable {
    std::string name;
    Node* node = nullptr;
    int parent = -1;             // index among the node's parents; -1 for the node itself
    bool cumulative = false;     // written with "<" in a probability equation
};

struct ParsedEquation {
    bool probabilistic = false;
    bool upper_p = false;
    std::vector<EqnVariable> vars;
    int num_before_bar = 0;
    int num_cumulative = 0;
    int output_var = -1;
    std::unique_ptr<Expr> expr;
    // Deterministic boolean equations set the output through its state names.
    bool boolean_output = false;
    int true_state = 1;
    std::unique_ptr<SymbolTable> local;  // names entered by a parse that allows new ones
    std::uint64_t stamp = 0;             // what the parse rested on (see equation_stamp)
    // Sampling a continuous output: per parent condition, the highest density seen.
    std::vector<double> density_bounds;
};

}  // namespace ravelo
