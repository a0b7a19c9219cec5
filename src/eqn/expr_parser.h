// The expression grammar, used by the equation forms in equation_forms.cpp.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "eqn/expr.h"
#include "eqn/scanner.h"

namespace ravelo {

// Ends a parse; the report is made by whoever asked for the parse.
struct ParseFault {
    int number;
    std::string message;
    int position;
    std::string subject;
};

[[noreturn]] void parse_fault(int number, int position, const char* fmt, ...)
    __attribute__((format(printf, 3, 4)));

using ExprPtr = std::unique_ptr<Expr>;

class ExprParser {
public:
    ExprParser(Scanner& scanner, SymbolTable& symbols, const std::vector<EqnVariable>& vars,
               bool probabilistic, int output_var, bool allow_new_names)
        : sc_(scanner), symbols_(symbols), vars_(vars), probabilistic_(probabilistic),
          output_var_(output_var), allow_new_names_(allow_new_names) {}

    // An expression whose operators bind tighter than min_precedence (or
    // repeat the right-grouping operator 'owner'); NULL when none is there.
    ExprPtr expression(int min_precedence, int current_var, const FuncDesc* owner = nullptr);

    // Wraps e in a call of f with the given extra constant arguments.
    static ExprPtr wrap(const FuncDesc& f, ExprPtr e, const std::vector<double>& extra,
                        ValueType type);
    static bool mentions(const Expr& e, int var);

private:
    ExprPtr primary(int current_var);
    ExprPtr group(int current_var);
    ExprPtr number(bool state_indicator, int current_var, int position);
    ExprPtr prefix_operator(int current_var, int position);
    ExprPtr name_reference(bool state_indicator, int current_var, int position);
    ExprPtr state_of_variable(const std::string& state, int position);
    ExprPtr variable_reference(int var, bool state_indicator, int position);
    ExprPtr function_call(const std::string& name, int current_var, int position);
    ExprPtr binary(const FuncDesc& f, ExprPtr left, ExprPtr right, int position);
    ExprPtr conditional(ExprPtr condition, int current_var, int position);

    void check_arguments(const FuncDesc& f, std::vector<ExprPtr>& args, bool as_operator,
                         int position);
    void check_noisy(const FuncDesc& f, const std::vector<ExprPtr>& args);
    void check_noisy_sum(const char* name, const std::vector<ExprPtr>& args, size_t states);
    void check_boolean(const FuncDesc& f, ExprPtr& arg, int position);
    ValueType result_type(const FuncDesc& f, const std::vector<ExprPtr>& args) const;
    int find_variable(const std::string& name) const;

    Scanner& sc_;
    SymbolTable& symbols_;
    const std::vector<EqnVariable>& vars_;
    bool probabilistic_;
    int output_var_;
    bool allow_new_names_;
    int depth_ = 0;  // nesting of expressions being read, bounded against hostile text
};

}  // namespace ravelo
