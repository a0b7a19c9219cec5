#include <cstdarg>
#include <cstring>

#include "base/failure.h"
#include "base/text.h"
#include "eqn/expr.h"
#include "eqn/library.h"

namespace ravelo {

const char* type_word(ValueType type) {
    static const char* const words[] = {"none", "boolean", "state", "integer",
                                        "real", "numeric", "any"};
    int i = static_cast<int>(type);
    return i >= 0 && i <= 6 ? words[i] : "none";
}

const Symbol* SymbolTable::find(std::string_view name) const {
    for (auto it = entries_.rbegin(); it != entries_.rend(); ++it)
        if (it->name == name) return &*it;
    return outer_ ? outer_->find(name) : nullptr;
}

const FuncDesc* SymbolTable::find_operator(std::string_view symbol, int arity) const {
    for (auto it = functions_.rbegin(); it != functions_.rend(); ++it) {
        if (!it->symbol || symbol != it->symbol || it->precedence == 0) continue;
        bool prefix = it->arity == 1;
        if (arity == 1 ? prefix : (arity == 3 ? it->arity == 3 : !prefix && it->arity != 3))
            return &*it;
    }
    return outer_ ? outer_->find_operator(symbol, arity) : nullptr;
}

const FuncDesc& SymbolTable::add_function(FuncDesc desc) {
    functions_.push_back(std::move(desc));
    const FuncDesc& f = functions_.back();
    entries_.push_back(Symbol{f.name, &f, nullptr});
    return f;
}

const NamedConstant& SymbolTable::add_constant(NamedConstant constant) {
    constants_.push_back(std::move(constant));
    const NamedConstant& c = constants_.back();
    entries_.push_back(Symbol{c.name, nullptr, &c});
    return c;
}

namespace {

SymbolTable* make_builtins() {
    auto* table = new SymbolTable();
    add_operators(*table);
    add_builtin_functions(*table);
    table->add_constant({"pi", ValueType::Real, 3.141592653589793});
    table->add_constant({"deg", ValueType::Real, 0.017453292519943295});
    table->add_constant({"Infinity", ValueType::Numeric, infinity_value()});
    table->add_constant({"true", ValueType::Boolean, 1});
    table->add_constant({"false", ValueType::Boolean, 0});
    add_probability_functions(*table);
    return table;
}

// Internal descriptors live in a table of their own so that users cannot name them.
SymbolTable* make_internals() {
    auto* table = new SymbolTable();
    add_internal_functions(*table);
    return table;
}

}  // namespace

const SymbolTable& builtin_symbols() {
    static const SymbolTable* table = make_builtins();
    return *table;
}

const FuncDesc& internal_function(const char* name) {
    static const SymbolTable* table = make_internals();
    const Symbol* s = table->find(name);
    RAVELO_ASSERT(s && s->func);
    return *s->func;
}

}  // namespace ravelo
