// Static type checks of calls and operators, and the recognition of
// boolean variables by their state names.
#include <algorithm>
#include <cctype>
#include <cstring>

#include "eqn/expr_parser.h"
#include "eqn/library.h"
#include "eqn/parser.h"
#include "net/model.h"

namespace ravelo {
namespace {

bool is_stateful(ValueType t) { return t == ValueType::State || t == ValueType::Boolean; }

bool acceptable(ValueType declared, ValueType actual) {
    using V = ValueType;
    switch (declared) {
        case V::None: return false;
        case V::Any: case V::Real: case V::Numeric: return actual != V::None;
        case V::Boolean: return actual == V::Boolean || actual == V::Any || actual == V::Numeric;
        case V::State: case V::Integer: return actual != V::Real && actual != V::None;
    }
    return false;
}

bool compatible(ValueType a, ValueType b) {
    if (a == ValueType::Real) return !is_stateful(b);
    if (b == ValueType::Real) return !is_stateful(a);
    return true;
}

ValueType join(ValueType a, ValueType b) {
    using V = ValueType;
    if (a == b) return a;
    if (a == V::None) return b;
    if (b == V::None) return a;
    if (a == V::Any || b == V::Any) return V::Any;
    if (a == V::Numeric || b == V::Numeric) return V::Numeric;
    if (a == V::Real || b == V::Real) return V::Real;
    return V::Integer;
}

ValueType declared_type(const FuncDesc& f, size_t i) { return i == 0 ? f.first : f.rest; }

std::string lower(const std::string& s) {
    std::string out = s;
    for (char& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return out;
}

// Names of opposite sense, false-like first.
const char* const kBooleanPairs[][2] = {
    {"false", "true"}, {"no", "yes"}, {"f", "t"}, {"n", "y"}, {"off", "on"},
    {"absent", "present"}, {"negative", "positive"}, {"fail", "pass"}, {"0", "1"},
};

}  // namespace

int boolean_true_state(const Node& node) {
    if (node.num_states() != 2) return -1;
    std::string a = lower(node.states[0].name), b = lower(node.states[1].name);
    for (const auto& pair : kBooleanPairs) {
        if (a == pair[0] && b == pair[1]) return 1;
        if (a == pair[1] && b == pair[0]) return 0;
    }
    return -1;
}

void ExprParser::check_boolean(const FuncDesc& f, ExprPtr& arg, int position) {
    const Node& node = *vars_[static_cast<size_t>(arg->states_of)].node;
    const char* name = vars_[static_cast<size_t>(arg->states_of)].name.c_str();
    if (node.num_states() != 2)
        parse_fault(2055, position, "attempt to use variable '%s' as a boolean in function '%s', but it doesn't have 2 states (it has %d)",
                    name, f.name.c_str(), node.num_states());
    int true_state = boolean_true_state(node);
    if (true_state < 0)
        parse_fault(2056, position, "variable '%s' is used as a boolean in function '%s', but it doesn't have recognized boolean state names (e.g. true, false)",
                    name, f.name.c_str());
    if (arg->kind == ExprKind::Variable && true_state == 0)
        arg = wrap(internal_function("_not"), std::move(arg), {}, ValueType::Boolean);
    arg->type = ValueType::Boolean;
}

void ExprParser::check_arguments(const FuncDesc& f, std::vector<ExprPtr>& args, bool as_operator,
                                 int position) {
    const char* shown = as_operator && f.symbol ? f.symbol : f.name.c_str();
    bool prefix = as_operator && f.arity == 1;
    ValueType common = ValueType::None;
    size_t common_index = 0;
    for (size_t i = 0; i < args.size(); ++i) {
        ValueType want = declared_type(f, i);
        ExprPtr& arg = args[i];
        if (want == ValueType::Boolean && arg->type == ValueType::State && arg->states_of >= 0)
            check_boolean(f, arg, arg->position);
        ValueType got = arg->type;
        if (!acceptable(want, got)) {
            if (prefix)
                parse_fault(2049, arg->position, "argument of operator '%s' should be of type '%s', but it is type %s",
                            shown, type_word(want), type_word(got));
            if (as_operator && i == 0)
                parse_fault(2050, arg->position, "the first argument of operator '%s' should be of type '%s', but it is type '%s'",
                            shown, type_word(want), type_word(got));
            if (as_operator)
                parse_fault(2052, arg->position, "the %s argument of operator '%s' should be type '%s', but it is type '%s'",
                            ordinal_word(static_cast<int>(i)), shown, type_word(want), type_word(got));
            parse_fault(2046, arg->position, "%s argument of function '%s' should be of type %s, but it is type %s",
                        ordinal_word(static_cast<int>(i)), shown, type_word(want), type_word(got));
        }
        if (want != ValueType::Any) continue;
        if (common != ValueType::None && !compatible(common, got)) {
            if (as_operator)
                parse_fault(2053, arg->position, "the %s argument of operator '%s' is of type '%s', which is not compatible with the other argument(s) (of type '%s')",
                            ordinal_word(static_cast<int>(i)), shown, type_word(got), type_word(common));
            parse_fault(2047, arg->position, "%s argument of function '%s' is of type %s, which is not compatible with the other argument(s) of type %s",
                        ordinal_word(static_cast<int>(i)), shown, type_word(got), type_word(common));
        }
        if (common == ValueType::None) common_index = i;
        common = join(common, got);
    }
    (void)common_index;
    // Equality between a variable with state names and one without compares nothing meaningful.
    if ((f.name == "equal" || f.name == "not_equal") && args.size() == 2 &&
        args[0]->states_of >= 0 && args[1]->states_of >= 0 &&
        args[0]->states_of != args[1]->states_of) {
        auto named = [&](const ExprPtr& a) {
            const Node& n = *vars_[static_cast<size_t>(a->states_of)].node;
            return std::any_of(n.states.begin(), n.states.end(),
                               [](const StateInfo& s) { return !s.name.empty(); });
        };
        if (named(args[0]) != named(args[1]))
            parse_fault(2057, position, "equation equality test of a variable having state names to one without (%s and %s)",
                        vars_[static_cast<size_t>(args[0]->states_of)].name.c_str(),
                        vars_[static_cast<size_t>(args[1]->states_of)].name.c_str());
    }
}

ValueType ExprParser::result_type(const FuncDesc& f, const std::vector<ExprPtr>& args) const {
    if (f.result != ValueType::Numeric && f.result != ValueType::Any) return f.result;
    ValueType t = ValueType::None;
    for (size_t i = 0; i < args.size(); ++i) {
        ValueType want = declared_type(f, i);
        if (want == ValueType::Numeric || want == ValueType::Any) t = join(t, args[i]->type);
    }
    if (t == ValueType::None) return f.result;
    if (f.result == ValueType::Numeric && is_stateful(t)) {
        // Arithmetic on states gives whole numbers; a lone state passes through (abs, min).
        bool passes = f.special == Special::None && args.size() == 1;
        return passes ? t : ValueType::Integer;
    }
    return t;
}

}  // namespace ravelo
