// The two forms of an equation: "X (A, B) = expr" (or "f (...)") and
// "P (X | A, B) = expr" (or "p"), and what the parser does to the tree
// once the whole right-hand side is read.
#include <cctype>

#include "base/failure.h"
#include "base/text.h"
#include "eqn/expr_parser.h"
#include "eqn/parser.h"
#include "net/model.h"

namespace ravelo {
namespace {

struct HeadNumbers {
    int missing_open, missing_comma, comma_misplaced, punctuation, repeated, unknown, missing_equals;
};

constexpr HeadNumbers kFunctionHead = {2026, 2027, 2028, 2029, 2030, 2459, 2031};
constexpr HeadNumbers kProbabilityHead = {2470, 2027, 2028, 2029, 2030, 2476, 2477};

class EquationParser {
public:
    EquationParser(const std::string& text, Node& node, const ParseOptions& options)
        : sc_(text), node_(node), options_(options),
          local_(std::make_unique<SymbolTable>(options.functions ? options.functions : &builtin_symbols())) {}

    std::unique_ptr<ParsedEquation> parse();

private:
    int here() { return static_cast<int>(sc_.position()); }
    void read_names(ParsedEquation& eq, const HeadNumbers& numbers);
    bool resolve(const std::string& name, EqnVariable& var, bool allow_self) const;
    void function_form(ParsedEquation& eq);
    void probability_form(ParsedEquation& eq);
    void finish_function(ParsedEquation& eq);
    void finish_probability(ParsedEquation& eq);
    void read_right_side(ParsedEquation& eq, int missing_number, const char* missing_text);

    Scanner sc_;
    Node& node_;
    const ParseOptions& options_;
    std::unique_ptr<SymbolTable> local_;

public:
    std::string unknown_name_;  // an argument name that matched no input
};

bool EquationParser::resolve(const std::string& name, EqnVariable& var, bool allow_self) const {
    const auto& parents = node_.parents.nodes;
    for (size_t i = 0; i < parents.size(); ++i) {
        const std::string& link = i < node_.input_names.size() ? node_.input_names[i] : std::string();
        if (link == name || (link.empty() && parents[i]->name == name)) {
            var = EqnVariable{name, parents[i], static_cast<int>(i), false};
            return true;
        }
    }
    for (size_t i = 0; i < parents.size(); ++i) {
        if (parents[i]->name == name) {
            var = EqnVariable{name, parents[i], static_cast<int>(i), false};
            return true;
        }
    }
    if (allow_self && name == node_.name) {
        var = EqnVariable{name, &node_, -1, false};
        return true;
    }
    return false;
}

// The parenthesised list of names after the first word, up to ")".
void EquationParser::read_names(ParsedEquation& eq, const HeadNumbers& numbers) {
    bool probability = eq.probabilistic;
    bool want_name = true, bar_seen = false, ordinary_seen = false;
    while (true) {
        char c = sc_.peek();
        if (c == ')') {
            sc_.advance();
            break;
        }
        if (c == '\0') parse_fault(2033, here(), "missing close parenthesis");
        if (probability && c == '|') {
            if (bar_seen) parse_fault(2471, here(), "more than one conditioning bar '|'");
            if (eq.vars.empty()) parse_fault(2472, here(), "must have at least one variable before the conditioning bar '|'");
            bar_seen = true;
            want_name = true;
            eq.num_before_bar = static_cast<int>(eq.vars.size());
            sc_.advance();
            continue;
        }
        if (c == ',' && !want_name) {
            want_name = true;
            sc_.advance();
            continue;
        }
        bool cumulative = false;
        if (probability && c == '<') {
            if (bar_seen)
                parse_fault(2473, here(), "all cdf variables (those preceeded with '<') must come before the conditioning bar '|'");
            if (ordinary_seen)
                parse_fault(2474, here(), "all cdf variables (those preceeded with '<') must come first");
            if (!want_name) parse_fault(numbers.missing_comma, here(), "missing comma");
            sc_.advance();
            cumulative = true;
        }
        if (!sc_.name_starts()) {
            c = sc_.peek();
            parse_fault(c == ',' ? numbers.comma_misplaced : numbers.punctuation, here(),
                        "unexpected punctuation '%c'", c ? c : ' ');
        }
        if (!want_name) parse_fault(numbers.missing_comma, here(), "missing comma");
        int position = here();
        std::string name = sc_.read_name();
        for (const EqnVariable& v : eq.vars)
            if (v.name == name) parse_fault(numbers.repeated, position, "repeated variable name");
        EqnVariable var;
        if (!resolve(name, var, probability)) {
            unknown_name_ = name;
            if (probability)
                parse_fault(numbers.unknown, position, "unknown input variable '%s' (use link names if present)", name.c_str());
            parse_fault(numbers.unknown, position, "unknown variable '%s' to the left of = in function definition >-cr-(if links are named, remember to use link names instead of parent names)",
                        name.c_str());
        }
        var.cumulative = cumulative;
        eq.num_cumulative += cumulative;
        ordinary_seen = ordinary_seen || !cumulative;
        eq.vars.push_back(var);
        want_name = false;
    }
    if (!bar_seen) eq.num_before_bar = static_cast<int>(eq.vars.size());
}

void EquationParser::read_right_side(ParsedEquation& eq, int missing_number, const char* missing_text) {
    ExprParser parser(sc_, *local_, eq.vars, eq.probabilistic, eq.output_var, options_.allow_new_names);
    eq.expr = parser.expression(0, eq.output_var);
    if (!eq.expr) {
        if (sc_.peek() == ')') parse_fault(2032, here(), "unexpected close parenthesis");
        parse_fault(missing_number, here(), "%s", missing_text);
    }
    while (sc_.take(';')) {
    }
    if (!sc_.at_end()) {
        if (sc_.peek() == ')') parse_fault(2058, here(), "character '%c' unexpected", ')');
        parse_fault(2481, here(), "it is a complete equation, followed by '%.80s'", std::string(sc_.rest()).c_str());
    }
}

void EquationParser::function_form(ParsedEquation& eq) {
    if (!sc_.take('(')) parse_fault(2026, here(), "missing open parenthesis in function declaration");
    read_names(eq, kFunctionHead);
    eq.vars.push_back(EqnVariable{node_.name, &node_, -1, false});
    eq.output_var = static_cast<int>(eq.vars.size()) - 1;
    if (!sc_.take('=')) parse_fault(2031, here(), "missing '=' in function definition");
    read_right_side(eq, 2494, "missing equation after '=' symbol in function definition");
    finish_function(eq);
}

void EquationParser::finish_function(ParsedEquation& eq) {
    Expr& e = *eq.expr;
    if (e.type == ValueType::Boolean) {
        if (node_.num_states() != 2)
            parse_fault(2461, 0, "attempt to assign a boolean expression to variable '%s', which doesn't have 2 states (it has %d)",
                        node_.name.c_str(), node_.num_states());
        eq.boolean_output = true;
        eq.true_state = boolean_true_state(node_);
        if (eq.true_state < 0) {
            warning(2462, "assigning boolean expression to variable '%s' but it doesn't have recognized boolean state names (e.g. true, false)",
                    node_.name.c_str());
            eq.true_state = 1;
        }
        return;
    }
    if (!node_.is_discrete() || node_.levels.empty()) return;
    if (e.kind == ExprKind::Call && e.func->special == Special::AsState) {
        eq.expr = std::move(e.args[0]);  // the value already is a state index
        return;
    }
    if (e.type == ValueType::State || e.type == ValueType::Boolean) return;
    // A value maps to the state whose level is nearest: thresholds halfway between levels.
    const auto& levels = node_.levels;
    bool increasing = true;
    for (size_t i = 1; i < levels.size(); ++i) increasing = increasing && levels[i] > levels[i - 1];
    if (increasing) {
        std::vector<double> midpoints;
        for (size_t i = 1; i < levels.size(); ++i) midpoints.push_back((levels[i - 1] + levels[i]) / 2);
        eq.expr = ExprParser::wrap(internal_function("_discretize"), std::move(eq.expr), midpoints, ValueType::State);
    } else {
        eq.expr = ExprParser::wrap(internal_function("_find0"), std::move(eq.expr), levels, ValueType::State);
    }
}

void EquationParser::probability_form(ParsedEquation& eq) {
    if (!sc_.take('(')) parse_fault(2470, here(), "missing open parenthesis in probability expression");
    read_names(eq, kProbabilityHead);
    if (!sc_.take('=')) parse_fault(2477, here(), "missing '=' in probability equation");
    if (eq.vars.empty() || eq.vars[0].node != &node_)
        parse_fault(2460, 0, "'%s' is not the correct name for the output variable",
                    eq.vars.empty() ? "" : eq.vars[0].name.c_str());
    eq.output_var = 0;
    read_right_side(eq, 2479, "missing equation after '=' symbol");
    finish_probability(eq);
}

void EquationParser::finish_probability(ParsedEquation& eq) {
    if (ExprParser::mentions(*eq.expr, 0)) return;
    int true_state = boolean_true_state(node_);
    if (true_state < 0) {
        warning(2480, ">-node %s doesn't appear on the right hand side of its equation (and it isn't a boolean variable), >-cr-so its value won't influence the probability calculation, and after normalization its distributions will be uniform",
                node_.name.c_str());
        return;
    }
    // The expression is the probability that the output is true.
    auto x = std::make_unique<Expr>();
    x->kind = ExprKind::Variable;
    x->var = 0;
    x->type = ValueType::Boolean;
    if (true_state == 0) x = ExprParser::wrap(internal_function("_not"), std::move(x), {}, ValueType::Boolean);
    auto call = std::make_unique<Expr>();
    call->kind = ExprKind::Call;
    call->func = &internal_function("_BernoulliDist");
    call->type = ValueType::Real;
    call->args.push_back(std::move(x));
    call->args.push_back(std::move(eq.expr));
    eq.expr = std::move(call);
}

std::unique_ptr<ParsedEquation> EquationParser::parse() {
    auto eq = std::make_unique<ParsedEquation>();
    if (!sc_.name_starts()) parse_fault(2460, 0, "'%s' is not the correct name for the output variable", "");
    std::string first = sc_.read_name();
    if (first == "P" || first == "p") {
        eq->probabilistic = true;
        eq->upper_p = first == "P";
        probability_form(*eq);
    } else {
        if (first != node_.name && first != "f")
            parse_fault(2460, 0, "'%s' is not the correct name for the output variable", first.c_str());
        function_form(*eq);
    }
    eq->local = std::move(local_);
    return eq;
}

}  // namespace

std::unique_ptr<ParsedEquation> parse_equation(const std::string& text, Node& node,
                                               ParseProblem& problem, const ParseOptions& options) {
    EquationParser parser(text, node, options);
    bool probabilistic = false;
    {
        Scanner peek(text);
        std::string first = peek.name_starts() ? peek.read_name() : std::string();
        probabilistic = first == "P" || first == "p";
    }
    problem.context = probabilistic ? "parsing probability function" : "parsing expression";
    try {
        auto eq = parser.parse();
        return eq;
    } catch (const ParseFault& fault) {
        problem.number = fault.number;
        problem.message = fault.message;
        problem.position = fault.position;
        problem.subject = parser.unknown_name_;
        return nullptr;
    }
}

const FuncDesc& define_function(SymbolTable& table, const std::string& name,
                                std::unique_ptr<ParsedEquation> definition) {
    RAVELO_ASSERT(definition && definition->expr && !definition->probabilistic);
    FuncDesc f;
    f.name = name;
    f.arity = static_cast<int>(definition->vars.size()) - 1;  // the output comes last
    f.result = definition->expr->type;
    f.first = f.rest = ValueType::Numeric;
    // The body keeps the whole definition alive: its calls may name the definition's own table.
    std::shared_ptr<ParsedEquation> owner(std::move(definition));
    f.body = std::shared_ptr<const Expr>(owner, owner->expr.get());
    return table.add_function(std::move(f));
}

}  // namespace ravelo
