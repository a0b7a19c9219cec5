// Tables and findings of the text net file reader.
#include <algorithm>
#include <cmath>
#include <functional>

#include "base/numbers.h"
#include "base/text.h"
#include "infer/findings.h"
#include "io/dne_reader.h"
#include "io/row_check.h"

namespace ravelo {
namespace {

bool has_lists(const Value& v) {
    for (const Value& item : v.items)
        if (item.is_list()) return true;
    return false;
}

int depth_of(const Value& v) {
    int depth = 0;
    const Value* at = &v;
    while (at->is_list() && !at->items.empty()) {
        ++depth;
        at = &at->items[0];
    }
    return depth;
}

// Walks a table given as nested lists, one level per parent, and hands each
// condition's innermost value to 'entry' with the condition's text.
class TableWalk {
public:
    using Entry = std::function<void(size_t row, const Value& v, const std::string& condition)>;

    TableWalk(const Node& node, const ReadPlace& place, int line, int inner_depth)
        : node_(node), place_(place), line_(line), inner_depth_(inner_depth) {}

    void run(const Value& table, const Entry& entry) {
        size_t parents = node_.parents.nodes.size();
        int depth = depth_of(table), expected = static_cast<int>(parents) + inner_depth_;
        if (depth > expected)
            fail_at(format("too many open parenthesis (are %d, but should be %d) within table of >-node %s",
                           depth, expected, node_.name.c_str()));
        std::vector<int> condition;
        size_t row = 0;
        walk(table, 0, condition, row, entry);
    }

    [[noreturn]] void fail_at(const std::string& message) const { read_failure(place_, line_, message); }

    // Reports the parentheses of a table statement that did not balance,
    // naming the last entry read before the fault.
    void check_parens(const Statement& s, int expected) const {
        if (s.fault == ParenFault::None) return;
        if (depth_of(s.value) > expected)
            fail_at(format("too many open parenthesis (are %d, but should be %d) within table of >-node %s",
                           depth_of(s.value), expected, node_.name.c_str()));
        std::string where = condition_text(last_condition(s.value));
        const char* name = node_.name.c_str();
        if (s.fault == ParenFault::Unclosed)
            fail_at(format("only %d close parenthesis (but should be %d) within table entry [%s] of >-node %s",
                           std::max(0, expected - s.unclosed), expected, where.c_str(), name));
        if (s.fault == ParenFault::ClosedEarly)
            fail_at(format("too many close parenthesis (should be %d) within table entry [%s] of >-node %s",
                           expected, where.c_str(), name));
        fail_at(format("extra close parenthesis at end of table entry [%s] of >-node %s", where.c_str(), name));
    }

    // A '|' belongs only in state lists of function tables; every list
    // separates its items by commas.
    void refuse_bars(const Value& v, std::vector<int>& condition, bool bars_allowed = false) const {
        if (!v.is_list()) return;
        if (v.comma_missing)
            fail_at(format("missing comma (,) in table entry [%s] of >-node %s", condition_text(condition).c_str(),
                           node_.name.c_str()));
        if (v.bar >= 0 && !bars_allowed)
            fail_at(format("unexpected punctuation %s in table entry [%s] of >-node %s", "|",
                           condition_text(condition).c_str(), node_.name.c_str()));
        for (size_t i = 0; i < v.items.size(); ++i) {
            size_t level = condition.size();
            bool tracked = level < node_.parents.nodes.size() &&
                           i < static_cast<size_t>(node_.parents.nodes[level]->num_states());
            if (tracked) condition.push_back(static_cast<int>(i));
            refuse_bars(v.items[i], condition, bars_allowed);
            if (tracked) condition.pop_back();
        }
    }

    // Checks of a table's shape made before its entries are read.
    void check_shape(const Statement& s) const {
        check_parens(s, expected_depth());
        std::vector<int> condition;
        refuse_bars(s.value, condition);
    }

    // A flat list of all numbers that falls short (function tables count
    // their states themselves).
    void refuse_short_flat(const Value& table, size_t width) const {
        size_t needed = static_cast<size_t>(table_rows(node_)) * width;
        if (!node_.parents.nodes.empty() && table.is_list() && !has_lists(table) &&
            table.items.size() > static_cast<size_t>(node_.parents.nodes[0]->num_states()) &&
            table.items.size() < needed)
            fail_at("not enough table entries");
    }

    int expected_depth() const { return static_cast<int>(node_.parents.nodes.size()) + inner_depth_; }

    std::string row_text(size_t row) const {
        std::vector<int> condition(node_.parents.nodes.size());
        for (size_t p = condition.size(); p-- > 0;) {
            size_t count = static_cast<size_t>(node_.parents.nodes[p]->num_states());
            condition[p] = static_cast<int>(row % count);
            row /= count;
        }
        return condition_text(condition);
    }

    // The parent states of the last entry of a (possibly short) table.
    std::vector<int> last_condition(const Value& table) const {
        std::vector<int> condition;
        const Value* at = &table;
        for (const Node* parent : node_.parents.nodes) {
            if (!at->is_list() || at->items.empty()) break;
            size_t last = std::min(at->items.size(), static_cast<size_t>(parent->num_states())) - 1;
            condition.push_back(static_cast<int>(last));
            at = &at->items[last];
        }
        return condition;
    }

    std::string condition_text(const std::vector<int>& condition) const {
        std::string out;
        for (size_t p = 0; p < condition.size(); ++p) {
            const Node& parent = *node_.parents.nodes[p];
            const std::string& name = parent.states[static_cast<size_t>(condition[p])].name;
            if (p) out += ", ";
            out += name.empty() ? format("%d", condition[p]) : name;
        }
        return out;
    }

private:
    void walk(const Value& v, size_t level, std::vector<int>& condition, size_t& row, const Entry& entry) {
        if (level == node_.parents.nodes.size()) {
            entry(row++, v, condition_text(condition));
            return;
        }
        const Node& parent = *node_.parents.nodes[level];
        if (!v.is_list())
            fail_at(format("not enough elements in table entry [%s] of >-node %s",
                           condition_text(condition).c_str(), node_.name.c_str()));
        size_t count = static_cast<size_t>(parent.num_states());
        if (v.items.size() < count)
            fail_at(format("not enough elements in table entry [%s] of >-node %s",
                           condition_text(condition).c_str(), node_.name.c_str()));
        if (v.items.size() > count)
            fail_at(format("too many items in list, or missing ')', within table entry [%s] of >-node %s",
                           condition_text(condition).c_str(), node_.name.c_str()));
        for (size_t s = 0; s < count; ++s) {
            condition.push_back(static_cast<int>(s));
            walk(v.items[s], level + 1, condition, row, entry);
            condition.pop_back();
        }
    }

    const Node& node_;
    const ReadPlace& place_;
    int line_;
    int inner_depth_;
};

// A flat list of all entries stands for the nested form.
bool is_flat(const Node& node, const Value& v, size_t width) {
    return !node.parents.nodes.empty() && v.is_list() && !has_lists(v) &&
           static_cast<double>(v.items.size()) == table_rows(node) * static_cast<double>(width);
}

void require_discrete(const Node& node, const ReadPlace& place, int line) {
    if (!node.has_states())
        read_failure(place, line, format("can't have a table for >-node %s because it is not a discrete "
                                         "or discretized variable", node.name.c_str()));
    for (const Node* p : node.parents.nodes)
        if (!p->has_states())
            read_failure(place, line, format("can't have a table for >-node %s because it has a parent (%s) "
                                             "which is not a discrete or discretized variable",
                                             node.name.c_str(), p->name.c_str()));
}

std::string ordinal(size_t n) {
    const char* suffix = "th";
    if (n % 100 < 11 || n % 100 > 13) {
        if (n % 10 == 1) suffix = "st";
        else if (n % 10 == 2) suffix = "nd";
        else if (n % 10 == 3) suffix = "rd";
    }
    return format("%zu%s", n, suffix);
}

// A state by name, or by index where the state has no name; -1 if none.
int state_named(const Node& node, const std::string& word) {
    for (int i = 0; i < node.num_states(); ++i)
        if (node.states[static_cast<size_t>(i)].name == word) return i;
    auto index = read_integer(word);
    if (index && *index >= 0 && *index < node.num_states() &&
        node.states[static_cast<size_t>(*index)].name.empty())
        return static_cast<int>(*index);
    return -1;
}

// A function table given as state lists: each names a state of every
// parent (or "@any") and, after '|', the node's own state, as in
// (a, @any | x).  Later lists override earlier ones.
bool is_state_lists(const Value& v) {
    if (!v.is_list()) return false;
    if (v.bar >= 0) return true;
    for (const Value& item : v.items)
        if (item.is_list() && item.bar >= 0) return true;
    return false;
}

// The parent states a state list names (kEveryState for "@any"), after
// checking its shape.
std::vector<int> state_list_condition(const Node& node, const Value& list, const TableWalk& walk) {
    for (size_t i = 0; i < list.items.size(); ++i) {
        if (list.items[i].is_list()) walk.fail_at("illegal punctuation '('");
        if (list.items[i].kind == Value::Empty)
            walk.fail_at(format("the %s state name is empty", ordinal(i + 1).c_str()));
    }
    size_t parents = node.parents.nodes.size();
    size_t given = list.bar >= 0 ? static_cast<size_t>(list.bar) : (list.items.empty() ? 0 : list.items.size() - 1);
    if (given < parents)
        walk.fail_at(format("not enough states were given (>-node %s has %d parents, but only %d states were given)",
                            node.name.c_str(), static_cast<int>(parents), static_cast<int>(given)));
    if (given > parents)
        walk.fail_at(format("too many states were given (>-node %s has %d parents, so state '%s' is extra)",
                            node.name.c_str(), static_cast<int>(parents), list.items[parents].text.c_str()));
    size_t own = list.items.size() - given;
    if (own < 1) walk.fail_at(format("not enough states were given (%d needed, but only %d given)", 1, 0));
    if (own > 1)
        walk.fail_at(format("too many states were given (only %d required, so state '%s' is extra)", 1,
                            list.items[given + 1].text.c_str()));
    std::vector<int> condition(parents);
    for (size_t p = 0; p < parents; ++p) {
        const std::string& w = list.items[p].text;
        const Node& parent = *node.parents.nodes[p];
        condition[p] = w == "@any" ? kEveryState : state_named(parent, w);
        if (condition[p] == -1)
            walk.fail_at(format(">-node %s has no state named '%s'", parent.name.c_str(), w.c_str()));
    }
    const std::string& w = list.items[given].text;
    if (node.is_discrete() && (w.empty() || w[0] != '@') && state_named(node, w) < 0)
        walk.fail_at(format(">-node %s has no state named '%s'", node.name.c_str(), w.c_str()));
    return condition;
}

// Hands every row whose condition fits the pattern to 'each'.
void matching_rows(const Node& node, const std::vector<int>& pattern, size_t level, size_t row,
                   const std::function<void(size_t)>& each) {
    if (level == pattern.size()) {
        each(row);
        return;
    }
    size_t count = static_cast<size_t>(node.parents.nodes[level]->num_states());
    for (size_t s = 0; s < count; ++s)
        if (pattern[level] == kEveryState || pattern[level] == static_cast<int>(s))
            matching_rows(node, pattern, level + 1, row * count + s, each);
}

void read_state_lists(const Node& node, const Value& table, const TableWalk& walk, const TableWalk::Entry& entry) {
    std::vector<const Value*> lists;
    if (table.bar >= 0) lists.push_back(&table);
    else
        for (const Value& item : table.items) {
            if (!item.is_list()) walk.fail_at("missing 2nd open parenthesis (it should be a list of vectors)");
            lists.push_back(&item);
        }
    for (const Value* list : lists) {
        std::vector<int> pattern = state_list_condition(node, *list, walk);
        const Value& own = list->items[pattern.size()];
        matching_rows(node, pattern, 0, 0, [&](size_t row) { entry(row, own, walk.row_text(row)); });
    }
}

// A function table given as one flat list of states must have one for
// every condition (with a single parent, flat and nested are the same).
void check_state_count(const Node& node, const Value& table, const TableWalk& walk) {
    size_t parents = node.parents.nodes.size();
    if (!table.is_list() || has_lists(table) || parents == 1 || (parents == 0 && table.items.size() < 2)) return;
    size_t rows = static_cast<size_t>(table_rows(node));
    if (table.items.size() < rows)
        walk.fail_at(format("not enough states were given (%d needed, but only %d given)", static_cast<int>(rows),
                            static_cast<int>(table.items.size())));
    if (table.items.size() > rows)
        walk.fail_at(format("too many states were given (only %d required, so state '%s' is extra)",
                            static_cast<int>(rows), table.items[rows].text.c_str()));
}

}  // namespace

void DneReader::tables(const Declared& d) {
    for (const Statement* s : d.statements) {
        if (s->keyword == "probs") read_probs(*d.node, *s);
        else if (s->keyword == "functable") read_functable(*d.node, *s);
        else if (s->keyword == "numcases") read_experience(*d.node, *s);
        else if (s->keyword == "ExperBase") read_prior_count(*d.node, *s);
    }
}

void DneReader::read_probs(Node& node, const Statement& s) {
    require_discrete(node, place_, s.line);
    size_t m = static_cast<size_t>(node.num_states());
    if (table_rows(node) * static_cast<double>(m) > 5e7)
        failure(s.line, format("can't create >-CPTable for >-node '%s', because the >-CPTable would be too "
                               "large (%g), due to too many parent >-node-s",
                               node.name.c_str(), table_rows(node) * static_cast<double>(m)));
    std::vector<float> cpt(static_cast<size_t>(table_rows(node)) * m);
    TableWalk walk(node, place_, s.line, 1);
    walk.check_shape(s);
    walk.refuse_short_flat(s.value, m);
    auto entry = [&](size_t row, const Value& v, const std::string& condition) {
        float* out = &cpt[row * m];
        auto problem = [&](const std::string& what) {
            walk.fail_at(format("%s in table entry [%s] of >-node %s", what.c_str(), condition.c_str(),
                                node.name.c_str()));
        };
        if (v.kind == Value::Word && v.text == "FLAT") {
            for (size_t i = 0; i < m; ++i) out[i] = 1.0f / static_cast<float>(m);
            return;
        }
        if (!v.is_list()) problem("missing open parenthesis");
        std::vector<float> given(v.items.size());
        for (size_t i = 0; i < v.items.size(); ++i) {
            const Value& item = v.items[i];
            if (item.is_list())
                walk.fail_at(format("unexpected punctuation %s in table entry [%s] of >-node %s", "(",
                                    condition.c_str(), node.name.c_str()));
            if (item.text == "@imposs") given[i] = kImpossibleProb;
            else if (item.text == "@undef") given[i] = kMissingProb;
            else if (!item.text.empty() && item.text[0] == '@')
                walk.fail_at(format("unknown escape name '%s' in table entry [%s] of >-node %s",
                                    item.text.c_str(), condition.c_str(), node.name.c_str()));
            else if (auto p = read_real(item.text)) given[i] = static_cast<float>(*p);
            else problem(format("illegal value '%s'", item.text.c_str()));
        }
        std::string reason = row_problem(given.data(), static_cast<int>(given.size()), static_cast<int>(m));
        if (!reason.empty()) problem(reason);
        std::copy(given.begin(), given.end(), out);
    };
    if (is_flat(node, s.value, m)) {
        Value row;
        row.kind = Value::List;
        for (size_t r = 0; r * m < s.value.items.size(); ++r) {
            row.items.assign(s.value.items.begin() + static_cast<long>(r * m),
                             s.value.items.begin() + static_cast<long>((r + 1) * m));
            entry(r, row, walk.row_text(r));
        }
    } else {
        walk.run(s.value, entry);
    }
    node.cpt = std::move(cpt);
}

void DneReader::read_functable(Node& node, const Statement& s) {
    for (const Node* p : node.parents.nodes)
        if (!p->has_states())
            failure(s.line, format("can't have a table for >-node %s because it has a parent (%s) which is "
                                   "not a discrete or discretized variable", node.name.c_str(), p->name.c_str()));
    size_t rows = static_cast<size_t>(table_rows(node));
    bool discrete = node.is_discrete();
    std::vector<int> states(discrete ? rows : 0);
    std::vector<double> reals(discrete ? 0 : rows);
    TableWalk walk(node, place_, s.line, 0);
    auto entry = [&](size_t row, const Value& v, const std::string& condition) {
        if (v.is_list())
            walk.fail_at(format("too many open parenthesis (are %d, but should be %d) within table of >-node %s",
                                static_cast<int>(node.parents.nodes.size()) + 1,
                                static_cast<int>(node.parents.nodes.size()), node.name.c_str()));
        const std::string& w = v.text;
        if (!discrete) {
            auto x = w == "@undef" ? std::optional<double>(undef_value()) : read_real(w);
            if (!x)
                walk.fail_at(format("%s in table entry [%s] of >-node %s",
                                    "should give a numeric value, but this gives a state value",
                                    condition.c_str(), node.name.c_str()));
            reals[row] = *x;
            return;
        }
        if (v.kind == Value::Empty) walk.fail_at(format("the %s state name is empty", ordinal(row + 1).c_str()));
        int state = -1;
        if (w == "@undef") state = kUndefState;
        else if (w == "@imposs") state = kImpossState;
        else if (w == "@any") state = kEveryState;
        else if (!w.empty() && w[0] == '@')
            walk.fail_at(format("unknown escape name '%s' in table entry [%s] of >-node %s", w.c_str(),
                                condition.c_str(), node.name.c_str()));
        if (state == -1) state = state_named(node, w);
        if (state == -1)
            walk.fail_at(format("unknown state name '%s' in table entry [%s] of >-node %s", w.c_str(),
                                condition.c_str(), node.name.c_str()));
        states[row] = state;
    };
    if (is_state_lists(s.value)) {
        walk.check_parens(s, s.value.bar >= 0 ? 1 : 2);
        std::vector<int> none;
        walk.refuse_bars(s.value, none, true);
        // Conditions no list names are left undefined.
        std::fill(states.begin(), states.end(), kUndefState);
        std::fill(reals.begin(), reals.end(), undef_value());
        read_state_lists(node, s.value, walk, entry);
    } else {
        walk.check_shape(s);
        check_state_count(node, s.value, walk);
        if (is_flat(node, s.value, 1)) {
            for (size_t r = 0; r < rows; ++r) entry(r, s.value.items[r], walk.row_text(r));
        } else {
            walk.run(s.value, entry);
        }
    }
    node.func_states = std::move(states);
    node.func_reals = std::move(reals);
}

void DneReader::read_experience(Node& node, const Statement& s) {
    require_discrete(node, place_, s.line);
    size_t rows = static_cast<size_t>(table_rows(node));
    std::vector<double> experience(rows);
    TableWalk walk(node, place_, s.line, 0);
    walk.check_shape(s);
    walk.refuse_short_flat(s.value, 1);
    auto entry = [&](size_t row, const Value& v, const std::string& condition) {
        auto x = v.is_list() ? std::nullopt : read_real(v.text);
        if (!x)
            walk.fail_at(format("%s in table entry [%s] of >-node %s", "missing comma", condition.c_str(),
                                node.name.c_str()));
        if (*x < 0) walk.fail_at(format("'%g' is less than zero", *x));
        experience[row] = *x;
    };
    if (!s.value.is_list() && !node.parents.nodes.empty()) {
        // One amount for every condition.
        for (size_t r = 0; r < rows; ++r) entry(r, s.value, "");
    } else if (is_flat(node, s.value, 1)) {
        for (size_t r = 0; r < rows; ++r) entry(r, s.value.items[r], walk.row_text(r));
    } else {
        walk.run(s.value, entry);
    }
    node.experience = std::move(experience);
}

// The prior count is one number per node; a table of them is taken when its
// entries all agree, since nothing could keep differing ones.
void DneReader::read_prior_count(Node& node, const Statement& s) {
    require_discrete(node, place_, s.line);
    std::optional<double> prior;
    bool is_undefined = false;
    auto take = [&](const Value& v, auto& self) -> void {
        if (v.is_list()) {
            for (const Value& item : v.items) self(item, self);
            return;
        }
        std::optional<double> x = v.text == "@undef" ? std::optional<double>(undef_value()) : read_real(v.text);
        if (!x) failure(s.line, format("illegal value '%s' in the experience base of >-node %s", v.text.c_str(),
                                       node.name.c_str()));
        if (*x < 0) failure(s.line, format("'%g' is less than zero", *x));
        if (prior && !(*prior == *x || (is_undef(*prior) && is_undef(*x))))
            failure(s.line, format("the experience base of >-node %s has differing entries (%g and %g)",
                                   node.name.c_str(), *prior, *x));
        prior = x;
        is_undefined = is_undef(*x);
    };
    take(s.value, take);
    if (!prior) failure(s.line, format("the experience base of >-node %s is empty", node.name.c_str()));
    node.prior_count = is_undefined ? undef_value() : *prior;
}

namespace {

// The state a real value falls in, or -1 when it is outside the node's range.
int state_of_value(const Node& node, double x) {
    if (node.is_discretized()) {
        const auto& l = node.levels;
        bool ascending = l.front() <= l.back();
        double low = ascending ? l.front() : l.back(), high = ascending ? l.back() : l.front();
        if (x < low || x > high) return -1;
        for (size_t i = 0; i + 1 < l.size(); ++i) {
            double a = std::min(l[i], l[i + 1]), b = std::max(l[i], l[i + 1]);
            if (x >= a && x <= b) return static_cast<int>(i);
        }
        return -1;
    }
    for (size_t i = 0; i < node.levels.size(); ++i)
        if (node.levels[i] == x) return static_cast<int>(i);
    return node.levels.empty() ? kUndefState : -1;
}

}  // namespace

void DneReader::findings(const Declared& d) {
    Node& node = *d.node;
    FindingRecord f;
    for (const Statement* s : d.statements) {
        const std::string w = word_of(s->value);
        if (s->keyword == "evidence" || s->keyword == "Finding") {
            if (w == "@undef" || w.empty()) continue;
            int state = -1;
            for (int i = 0; i < node.num_states(); ++i)
                if (node.states[static_cast<size_t>(i)].name == w) state = i;
            if (state < 0 && s->keyword == "Finding") {
                auto n = read_integer(w);
                if (n && *n >= 0 && *n < node.num_states()) state = static_cast<int>(*n);
            }
            if (state < 0) failure(s->line, format("unknown state '%s'", w.c_str()));
            bool clash = (f.has_value && state_of_value(node, f.value) >= 0 &&
                          state_of_value(node, f.value) != state) ||
                         (!f.likelihood.empty() && f.likelihood[static_cast<size_t>(state)] == 0);
            if (clash)
                failure(s->line, format("'%s' is inconsistent with real value or likelihood of this %s",
                                        w.c_str(), "node"));
            f.state = state;
        } else if (s->keyword == "value") {
            auto x = read_real(w);
            if (!x) failure(s->line, format("illegal value '%s'", w.c_str()));
            int state = node.has_states() ? state_of_value(node, *x) : kUndefState;
            if (state == -1) failure(s->line, format("'%g' is out-of-range for this >-node", *x));
            if ((f.state >= 0 && state >= 0 && state != f.state) ||
                (state >= 0 && !f.likelihood.empty() && f.likelihood[static_cast<size_t>(state)] == 0))
                failure(s->line, format("'%g' is inconsistent with state value or likelihood of this >-node", *x));
            f.value = *x;
            f.has_value = true;
        } else if (s->keyword == "likelihood") {
            if (!s->value.is_list()) failure(s->line, "missing open parenthesis");
            if (s->value.items.size() != node.states.size())
                failure(s->line, format("there are %d entries, but there should be %d, because this %s has "
                                        "that many states", static_cast<int>(s->value.items.size()),
                                        node.num_states(), "node"));
            std::vector<float> likelihood;
            for (const Value& item : s->value.items) {
                auto x = read_real(word_of(item));
                if (!x) failure(s->line, format("illegal value '%s'", word_of(item).c_str()));
                if (*x < 0) failure(s->line, format("'%g' is less than zero", *x));
                likelihood.push_back(static_cast<float>(*x));
            }
            if (f.state >= 0 && likelihood[static_cast<size_t>(f.state)] == 0)
                failure(s->line, format("likelihood is inconsistent with previously stated finding for this %s",
                                        "node"));
            f.likelihood = std::move(likelihood);
        }
    }
    // The checks above name the statement; the engine's entry keeps the
    // findings and the compiled state in step.
    if (!f.likelihood.empty()) enter_likelihood(node, f.likelihood.data(), FindingTests::Never);
    if (f.state >= 0) enter_finding(node, f.state, false, FindingTests::Never);
    if (f.has_value) enter_value(node, f.value);
}

}  // namespace ravelo
