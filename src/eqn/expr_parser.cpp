#include "eqn/expr_parser.h"

#include <cmath>
#include <cstdarg>

#include "base/text.h"
#include "eqn/library.h"
#include "eqn/parser.h"
#include "net/model.h"

namespace ravelo {
namespace {

ValueType number_type(double v) {
    if (is_undef(v) || std::isinf(v)) return ValueType::Numeric;
    return v == std::floor(v) ? ValueType::Integer : ValueType::Real;
}

}  // namespace

void parse_fault(int number, int position, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::string message = vformat(fmt, args);
    va_end(args);
    throw ParseFault{number, message, position, {}};
}

// A call node of f over its checked arguments.
static ExprPtr make_call(const FuncDesc& f, std::vector<ExprPtr> args, int position, ValueType type) {
    auto call = std::make_unique<Expr>();
    call->kind = ExprKind::Call;
    call->func = &f;
    call->position = position;
    call->type = type;
    call->args = std::move(args);
    return call;
}

ExprPtr ExprParser::wrap(const FuncDesc& f, ExprPtr e, const std::vector<double>& extra,
                         ValueType type) {
    auto call = std::make_unique<Expr>();
    call->kind = ExprKind::Call;
    call->func = &f;
    call->type = type;
    call->position = e->position;
    call->states_of = e->states_of;
    call->args.push_back(std::move(e));
    for (double v : extra) {
        auto n = std::make_unique<Expr>();
        n->value = v;
        n->type = number_type(v);
        n->position = call->position;
        call->args.push_back(std::move(n));
    }
    return call;
}

bool ExprParser::mentions(const Expr& e, int var) {
    if (e.kind == ExprKind::Variable && e.var == var) return true;
    for (const auto& a : e.args)
        if (mentions(*a, var)) return true;
    return false;
}

int ExprParser::find_variable(const std::string& name) const {
    for (size_t i = 0; i < vars_.size(); ++i) {
        if (static_cast<int>(i) == output_var_ && !probabilistic_) continue;
        if (vars_[i].name == name) return static_cast<int>(i);
    }
    return -1;
}

namespace {

constexpr int kMaxNesting = 400;

// Counts one level of nesting for as long as it lives.
struct NestingLevel {
    explicit NestingLevel(int& depth, int position) : depth_(depth) {
        if (++depth_ > kMaxNesting) {
            --depth_;
            parse_fault(2083, position, "expression is nested too deeply (more than %d levels)", kMaxNesting);
        }
    }
    ~NestingLevel() { --depth_; }
    int& depth_;
};

}  // namespace

ExprPtr ExprParser::expression(int min_precedence, int current_var, const FuncDesc* owner) {
    NestingLevel level(depth_, static_cast<int>(sc_.position()));
    ExprPtr left = primary(current_var);
    if (!left) return nullptr;
    while (true) {
        size_t before = sc_.position();
        std::string run = sc_.punctuation_run();
        const FuncDesc* f = nullptr;
        size_t len = run.size();
        for (; len > 0 && !f; --len) {
            std::string symbol = run.substr(0, len);
            f = symbols_.find_operator(symbol, 2);
            if (!f) f = symbols_.find_operator(symbol, 3);
            if (f) break;
        }
        if (!f) {
            sc_.set_position(before);
            return left;
        }
        bool repeat = f == owner && !f->left_grouping;
        if (f->precedence <= min_precedence && !repeat) {
            sc_.set_position(before);
            return left;
        }
        int position = static_cast<int>(sc_.position());
        sc_.advance(len);
        if (f->arity == 3) {
            left = conditional(std::move(left), current_var, position);
            continue;
        }
        int right_var = left->states_of >= 0 ? left->states_of : -1;
        ExprPtr right = expression(f->precedence, right_var, f);
        if (!right)
            parse_fault(2051, static_cast<int>(sc_.position()), "missing %s argument of operator %s",
                        ordinal_word(1), f->symbol);
        left = binary(*f, std::move(left), std::move(right), position);
    }
}

ExprPtr ExprParser::conditional(ExprPtr condition, int current_var, int position) {
    const FuncDesc& f = *symbols_.find_operator("?", 3);
    ExprPtr yes = expression(0, current_var);
    if (!yes)
        parse_fault(2051, static_cast<int>(sc_.position()), "missing %s argument of operator %s",
                    ordinal_word(1), f.symbol);
    if (!sc_.take(':'))
        parse_fault(2054, static_cast<int>(sc_.position()), "missing '%s' for '%s' operator", ":", "?");
    ExprPtr no = expression(f.precedence, current_var, &f);
    if (!no)
        parse_fault(2051, static_cast<int>(sc_.position()), "missing %s argument of operator %s",
                    ordinal_word(2), ":");
    std::vector<ExprPtr> args;
    args.push_back(std::move(condition));
    args.push_back(std::move(yes));
    args.push_back(std::move(no));
    check_arguments(f, args, true, position);
    auto call = std::make_unique<Expr>();
    call->kind = ExprKind::Call;
    call->func = &f;
    call->position = position;
    call->type = result_type(f, args);
    if (args[1]->states_of == args[2]->states_of) call->states_of = args[1]->states_of;
    call->args = std::move(args);
    return call;
}

ExprPtr ExprParser::binary(const FuncDesc& f, ExprPtr left, ExprPtr right, int position) {
    std::vector<ExprPtr> args;
    bool flatten_left = f.associative && left->kind == ExprKind::Call && left->func == &f;
    if (flatten_left) {
        args = std::move(left->args);
    } else {
        args.push_back(std::move(left));
    }
    size_t checked_from = args.size() - 1;
    args.push_back(std::move(right));
    if (!flatten_left || checked_from == 0) check_arguments(f, args, true, position);
    else {
        std::vector<ExprPtr> pair;
        pair.push_back(std::move(args[checked_from]));
        pair.push_back(std::move(args[checked_from + 1]));
        check_arguments(f, pair, true, position);
        args[checked_from] = std::move(pair[0]);
        args[checked_from + 1] = std::move(pair[1]);
    }
    ValueType type = result_type(f, args);
    return make_call(f, std::move(args), position, type);
}

ExprPtr ExprParser::primary(int current_var) {
    char c = sc_.peek();
    int position = static_cast<int>(sc_.position());
    if (c == '\0' || c == ',' || c == ';' || c == ')') return nullptr;
    if (c == '(') return group(current_var);
    bool state_indicator = sc_.take('#');
    if (sc_.number_starts()) return number(state_indicator, current_var, position);
    if (sc_.name_starts()) return name_reference(state_indicator, current_var, position);
    if (!state_indicator && !sc_.punctuation_run().empty()) return prefix_operator(current_var, position);
    c = sc_.peek();
    if (c == ')') parse_fault(2032, position, "unexpected close parenthesis");
    if (c == '\0') parse_fault(2082, position, "missing end of equation");
    parse_fault(2058, static_cast<int>(sc_.position()), "character '%c' unexpected", c);
}

ExprPtr ExprParser::group(int current_var) {
    sc_.take('(');
    if (sc_.peek() == ')') parse_fault(2032, static_cast<int>(sc_.position()), "unexpected close parenthesis");
    ExprPtr inner = expression(0, current_var);
    if (!inner) {
        char c = sc_.peek();
        if (c == '\0') parse_fault(2033, static_cast<int>(sc_.position()), "missing close parenthesis");
        parse_fault(2058, static_cast<int>(sc_.position()), "character '%c' unexpected", c);
    }
    if (!sc_.take(')')) {
        char c = sc_.peek();
        if (c == '\0') parse_fault(2033, static_cast<int>(sc_.position()), "missing close parenthesis");
        parse_fault(2058, static_cast<int>(sc_.position()), "character '%c' unexpected", c);
    }
    return inner;
}

ExprPtr ExprParser::number(bool state_indicator, int current_var, int position) {
    double value;
    std::string units;
    if (!sc_.read_number(value, units))
        parse_fault(2058, position, "character '%c' unexpected", sc_.peek());
    auto e = std::make_unique<Expr>();
    e->position = position;
    e->value = value;
    e->units = units;
    e->type = number_type(value);
    if (state_indicator) {
        if (e->type != ValueType::Integer)
            parse_fault(2034, position, "state indicator # is followed by a number (%g) that is not an integer", value);
        if (!units.empty())
            parse_fault(2035, position, "state indicator # is followed by a number that has units (#%g %s)",
                        value, units.c_str());
        e->kind = ExprKind::State;
        e->type = ValueType::State;
        e->states_of = current_var;
    }
    return e;
}

ExprPtr ExprParser::prefix_operator(int current_var, int position) {
    std::string run = sc_.punctuation_run();
    const FuncDesc* f = nullptr;
    size_t len = run.size();
    for (; len > 0; --len)
        if ((f = symbols_.find_operator(run.substr(0, len), 1))) break;
    if (!f) parse_fault(2058, position, "character '%c' unexpected", run[0]);
    sc_.advance(len);
    ExprPtr operand = expression(f->precedence, current_var, f);
    if (!operand) parse_fault(2048, static_cast<int>(sc_.position()), "argument of operator '%s' is missing", f->symbol);
    std::vector<ExprPtr> args;
    args.push_back(std::move(operand));
    check_arguments(*f, args, true, position);
    auto call = std::make_unique<Expr>();
    call->kind = ExprKind::Call;
    call->func = f;
    call->position = position;
    call->type = result_type(*f, args);
    call->args = std::move(args);
    return call;
}

ExprPtr ExprParser::name_reference(bool state_indicator, int current_var, int position) {
    std::string name = sc_.read_name();
    if (sc_.peek() == '(') {
        if (state_indicator)
            parse_fault(2036, position, "the name after a state indicator # is followed by an open parenthesis:  # %s (",
                        name.c_str());
        return function_call(name, current_var, position);
    }
    if (sc_.here() == '-' && sc_.here(1) == '-' && (std::isalpha(static_cast<unsigned char>(sc_.here(2))) || sc_.here(2) == '_')) {
        sc_.advance(2);
        return state_of_variable(name, position);
    }
    int var = find_variable(name);
    if (var >= 0) {
        ExprPtr ref = variable_reference(var, state_indicator, position);
        ref->state_indicated = state_indicator;
        return ref;
    }
    if (!probabilistic_ && output_var_ >= 0 && name == vars_[static_cast<size_t>(output_var_)].name)
        parse_fault(2463, position, "'%s' appears as a variable on the right hand side of the = symbol, but it is the output value >-cr-(which is not allowed unless the equation is probabilistic, that is, starts with P)",
                    name.c_str());
    if (current_var >= 0) {
        const Node& node = *vars_[static_cast<size_t>(current_var)].node;
        for (int s = 0; s < node.num_states(); ++s) {
            if (node.states[static_cast<size_t>(s)].name != name) continue;
            auto e = std::make_unique<Expr>();
            e->position = position;
            if (node.is_discrete() && !node.levels.empty() && !state_indicator) {
                e->value = node.levels[static_cast<size_t>(s)];  // compared with the level value
                e->type = number_type(e->value);
            } else {
                e->kind = ExprKind::State;
                e->value = s;
                e->type = ValueType::State;
                e->states_of = current_var;
            }
            return e;
        }
    }
    const Symbol* symbol = symbols_.find(name);
    if (!symbol || !symbol->constant) {
        if (!allow_new_names_)
            parse_fault(2039, position, "unknown name '%s'%s", name.c_str(),
                        state_indicator ? " (was trying to interpret it as a state name, since it is preceeded by #)" : "");
        symbol = symbols_.find(symbols_.add_constant({name, ValueType::Numeric, undef_value()}).name);
    }
    auto e = std::make_unique<Expr>();
    e->kind = ExprKind::Constant;
    e->position = position;
    e->constant = symbol->constant;
    e->type = symbol->constant->type == ValueType::Boolean ? ValueType::Boolean
                                                           : number_type(symbol->constant->value);
    return e;
}

ExprPtr ExprParser::state_of_variable(const std::string& state, int position) {
    std::string var_name = sc_.read_name();
    int var = -1;
    for (size_t i = 0; i < vars_.size(); ++i)
        if (vars_[i].name == var_name) var = static_cast<int>(i);
    if (var < 0)
        parse_fault(2037, position, "'%s--%s' refers to unknown variable '%s'", state.c_str(),
                    var_name.c_str(), var_name.c_str());
    const Node& node = *vars_[static_cast<size_t>(var)].node;
    for (int s = 0; s < node.num_states(); ++s) {
        if (node.states[static_cast<size_t>(s)].name != state) continue;
        auto e = std::make_unique<Expr>();
        e->kind = ExprKind::State;
        e->position = position;
        e->value = s;
        e->type = ValueType::State;
        e->states_of = var;
        return e;
    }
    parse_fault(2038, position, "'%s--%s' refers to %s, which is not a state of %s", state.c_str(),
                var_name.c_str(), state.c_str(), var_name.c_str());
}

ExprPtr ExprParser::variable_reference(int var, bool state_indicator, int position) {
    const EqnVariable& v = vars_[static_cast<size_t>(var)];
    const Node& node = *v.node;
    auto e = std::make_unique<Expr>();
    e->kind = ExprKind::Variable;
    e->var = var;
    e->position = position;
    e->states_of = var;
    if (node.is_discrete()) {
        e->type = ValueType::State;
        if (!node.levels.empty() && !state_indicator)
            return wrap(internal_function("_levels"), std::move(e), node.levels, ValueType::Numeric);
        return e;
    }
    if (!state_indicator) {
        e->type = ValueType::Real;
        e->states_of = -1;
        return e;
    }
    if (node.levels.size() < 2)
        parse_fault(2040, position, "continuous variable '%s' is preceeded with a state indicator #, but it hasn't been discretized",
                    v.name.c_str());
    e->type = ValueType::Real;
    std::vector<double> inner(node.levels.begin() + 1, node.levels.end() - 1);
    return wrap(internal_function("_discretize"), std::move(e), inner, ValueType::State);
}

ExprPtr ExprParser::function_call(const std::string& name, int current_var, int position) {
    const Symbol* symbol = symbols_.find(name);
    if (!symbol || !symbol->func) parse_fault(2041, position, "unknown function '%s'", name.c_str());
    const FuncDesc& f = *symbol->func;
    sc_.take('(');
    std::vector<ExprPtr> args;
    if (!sc_.take(')')) {
        while (true) {
            int arg_var = current_var;
            bool by_first = f.special != Special::Select0 && f.special != Special::Select1;
            if (by_first && !args.empty() && args[0]->states_of >= 0) arg_var = args[0]->states_of;
            ExprPtr arg = expression(0, arg_var);
            if (!arg)
                parse_fault(2044, static_cast<int>(sc_.position()), "missing %s argument of function %s",
                            ordinal_word(static_cast<int>(args.size())), name.c_str());
            if (f.arity >= 0 && static_cast<int>(args.size()) == f.arity)
                parse_fault(2042, arg->position, "too many arguments for function '%s' (requires %d)",
                            name.c_str(), f.arity);
            args.push_back(std::move(arg));
            if (sc_.take(',')) continue;
            if (sc_.take(')')) break;
            parse_fault(2045, static_cast<int>(sc_.position()),
                        "missing comma or close parenthesis, or malformed expression in function '%s'", name.c_str());
        }
    }
    int given = static_cast<int>(args.size());
    if (f.arity >= 0 && given < f.arity) {
        if (f.probability)
            parse_fault(2059, static_cast<int>(sc_.position()), "function '%s' is missing its last arguments", name.c_str());
        parse_fault(2043, static_cast<int>(sc_.position()), "too few arguments for function '%s' (requires %d, but %d supplied)",
                    name.c_str(), f.arity, given);
    }
    check_arguments(f, args, false, position);
    if (f.probability) check_noisy(f, args);
    ValueType type = result_type(f, args);
    return make_call(f, std::move(args), position, type);
}

}  // namespace ravelo
