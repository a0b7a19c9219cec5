#include "io/dne_reader.h"

#include <algorithm>

#include "base/numbers.h"
#include "base/text.h"
#include "io/dne.h"
#include "io/dne_words.h"
#include "io/linking.h"
#include "net/names.h"
#include "net/ops.h"

namespace ravelo {

std::string word_of(const Value& v) { return v.kind == Value::List ? std::string() : v.text; }
bool is_true_word(const std::string& w) { return w == "TRUE" || w == "1"; }

void DneReader::failure(int line, const std::string& message) const {
    read_failure(place_, line, message);
}

// Chains of inheritance longer than this are refused rather than followed.
constexpr int kMaxInheritance = 64;

std::vector<const Statement*> DneReader::effective(const Object& object, int depth) const {
    std::vector<const Statement*> out;
    if (depth > kMaxInheritance)
        failure(object.line, format("declaration of %s '%s' inherits through more than %d definitions",
                                    object.word.c_str(), object.name.c_str(), kMaxInheritance));
    if (!object.base.empty()) {
        auto it = definitions_.find(object.base);
        if (it == definitions_.end())
            failure(object.line, format("declaration of %s '%s' tries to inherit from a %s not yet "
                                        "defined", object.word.c_str(), object.name.c_str(),
                                        object.word.c_str()));
        out = effective(*it->second, depth + 1);
        // Being a definition is not passed on.
        std::erase_if(out, [](const Statement* i) { return i->keyword == "isdefine"; });
    }
    const std::vector<const Statement*> inherited = out;
    std::vector<std::string> own;
    for (const Statement& s : object.statements) {
        if (std::find(own.begin(), own.end(), s.keyword) != own.end())
            failure(s.line, format("more than one `%s` statement for %s '%s'", s.keyword.c_str(),
                                   object.word.c_str(), object.name.c_str()));
        own.push_back(s.keyword);
        if (options_.inherit_first_pass) {
            check_first_pass(s, inherited);
            out.push_back(&s);
            continue;
        }
        // A repeated statement overrides the inherited one.
        out.erase(std::remove_if(out.begin(), out.end(),
                                 [&](const Statement* i) { return i->keyword == s.keyword; }),
                  out.end());
        out.push_back(&s);
    }
    if (!options_.inherit_first_pass) defer_dependents(out, object);
    return out;
}

// Read as usual, an inherited statement that needs one of the declaration's
// own statements read before it (inherited probabilities, own parents)
// comes after them.
void DneReader::defer_dependents(std::vector<const Statement*>& statements, const Object& object) const {
    auto is_own = [&](const Statement* s) {
        return std::any_of(object.statements.begin(), object.statements.end(), [&](const Statement& o) { return &o == s; });
    };
    std::vector<const Statement*> early, own, late;
    for (const Statement* s : statements) {
        if (is_own(s)) {
            own.push_back(s);
            continue;
        }
        auto needs = [&](const Statement* first) { return depends_on(s->keyword, first->keyword); };
        bool deferred = std::any_of(late.begin(), late.end(), needs) ||
                        std::any_of(object.statements.begin(), object.statements.end(),
                                    [&](const Statement& o) { return needs(&o); });
        (deferred ? late : early).push_back(s);
    }
    statements = std::move(early);
    statements.insert(statements.end(), own.begin(), own.end());
    statements.insert(statements.end(), late.begin(), late.end());
}

// Statements whose reading depends on others: the node's states decide
// how its tables, state texts and findings are read, its parents how its
// tables and input names are.
bool depends_on(const std::string& later, const std::string& first) {
    static const char* const kOnStates[] = {"statetitles", "StateComments", "probs", "functable", "numcases",
                                            "ExperBase", "evidence", "value", "likelihood", "Finding"};
    static const char* const kOnParents[] = {"inputs", "delays", "probs", "functable", "numcases", "ExperBase"};
    auto among = [&](const auto& words) {
        return std::find(std::begin(words), std::end(words), later) != std::end(words);
    };
    if (first == "discrete" || first == "numstates" || first == "states" || first == "levels") return among(kOnStates);
    if (first == "parents") return among(kOnParents);
    return false;
}

// With inherited statements applied first, an own statement can neither
// repeat one nor be one that an inherited statement needed before it.
void DneReader::check_first_pass(const Statement& own, const std::vector<const Statement*>& inherited) const {
    for (const Statement* s : inherited)
        if (s->keyword == own.keyword)
            failure(own.line, format("`%s` statement already inherited", own.keyword.c_str()));
    for (const Statement* s : inherited)
        if (depends_on(s->keyword, own.keyword))
            failure(own.line, format("`%s` statement should appear earlier.  Or reread with 'Inherit in First "
                                     "Pass' off", own.keyword.c_str()));
}

void DneReader::read(const Object& bnet) {
    if (!bnet.base.empty())
        failure(bnet.line, format("declaration of %s '%s' tries to inherit from a %s not yet defined",
                                  "bnet", bnet.name.c_str(), "bnet"));
    refuse_definitions(bnet);
    dimensions_ = net_dimensions(bnet);
    for (const Object& o : bnet.objects) {
        if (o.word == "node") declare(o);
        else if (o.word == "visual" && visual_) net_.visual = o.statements.empty() ? "" : word_of(o.statements[0].value);
        else if (o.word == "user")
            for (const Statement& s : o.statements) net_.user_fields.set(s.keyword, word_of(s.value));
    }
    net_.dimensions = dimensions_;
    for (const Declared& d : declared_) resolve_links(d);
    if (first_refused_) refuse_link(*first_refused_, place_);
    for (const Declared& d : declared_) tables(d);
    for (const Declared& d : declared_) findings(d);
    net_statements(bnet);
    node_sets(bnet);
}

// Only nodes are declared for others to inherit from.
void DneReader::refuse_definitions(const Object& object) const {
    for (const Object& o : object.objects) {
        if (!o.declarer.empty() && o.word != "node")
            failure(o.line, format("a DEFINED %s '%s' appears", o.word.c_str(), o.name.c_str()));
        refuse_definitions(o);
    }
}

// Node positions have as many coordinates as the net has dimensions.
int DneReader::net_dimensions(const Object& bnet) const {
    const Statement* s = bnet.find("numdimensions");
    if (!s) return 2;
    auto n = read_integer(word_of(s->value));
    if (!n || *n < 1 || *n > 1000) failure(s->line, format("illegal value '%s'", word_of(s->value).c_str()));
    return static_cast<int>(*n);
}

void DneReader::net_statements(const Object& bnet) {
    std::vector<std::string> seen;
    for (const Statement& s : bnet.statements) {
        if (std::find(seen.begin(), seen.end(), s.keyword) != seen.end())
            failure(s.line, format("more than one `%s` statement", s.keyword.c_str()));
        seen.push_back(s.keyword);
        int field = net_field_index(s.keyword);
        if (field < 0) failure(s.line, format("unknown %s '%s'", "field", s.keyword.c_str()));
        const std::string w = word_of(s.value);
        if (s.keyword == "title") net_.title = w;
        else if (s.keyword == "comment") net_.comment = w;
        else if (s.keyword == "autoupdate") net_.auto_update = is_true_word(w) ? 1 : 0;
        else if (s.keyword == "ElimOrder") elim_order(s);
        else if (s.keyword == "author" || s.keyword == "whochanged" || s.keyword == "whenchanged")
            net_.user_fields.set(s.keyword, w);
        else if (is_kept_keyword(s.keyword)) net_.kept_statements.emplace_back(s.keyword, value_text(s.value));
        // The other net fields are derived or belong to features kept elsewhere.
    }
}

void DneReader::declare(const Object& object) {
    if (is_definition(object)) {
        keep_definition(object);
        return;
    }
    std::string problem = name_problem(object.name.c_str());
    if (!problem.empty())
        failure(object.line, format("'%s' is not a legal name for a %s", object.name.c_str(), "node"));
    if (net_.find(object.name))
        failure(object.line, format("more than one %s with the name '%s'", "node", object.name.c_str()));
    if (definitions_.count(object.name))
        failure(object.line, format("duplicate %s name '%s'", "node", object.name.c_str()));
    std::vector<const Statement*> statements = effective(object);
    Node* node = make_node(object, statements);
    node->inherits = object.base;
    node_fields(*node, statements);
    node_objects(*node, object);
    declared_.push_back({&object, node, std::move(statements)});
}

namespace {

const Statement* find_in(const std::vector<const Statement*>& statements, std::string_view keyword) {
    for (const Statement* s : statements)
        if (s->keyword == keyword) return s;
    return nullptr;
}

}  // namespace

Node* DneReader::make_node(const Object& object, const std::vector<const Statement*>& statements) {
    const Statement* numstates = find_in(statements, "numstates");
    const Statement* states = find_in(statements, "states");
    const Statement* levels = find_in(statements, "levels");
    const Statement* discrete = find_in(statements, "discrete");
    bool is_discrete = !discrete || word_of(discrete->value) != "FALSE";
    long count = -1;
    if (states) {
        if (!states->value.is_list()) failure(states->line, "missing open parenthesis");
        count = static_cast<long>(states->value.items.size());
    }
    std::string what = format("node %s", object.name.c_str());
    if (!is_discrete && !levels) {
        for (const char* k : {"states", "statetitles", "StateComments"})
            if (const Statement* s = find_in(statements, k))
                failure(s->line, format("there should not be an `%s` statement for this %s because it is not a "
                                        "discrete or discretized variable", k, "node"));
        if (numstates && word_of(numstates->value) != "0")
            failure(numstates->line, format("'%s' field declared '%s', incompatible with '%s' declared 0",
                                            "numstates", word_of(numstates->value).c_str(), "levels"));
    }
    if (levels && !is_discrete) {
        long implied = levels->value.is_list() ? static_cast<long>(levels->value.items.size()) - 1 : -1;
        if (implied < 1)
            failure(levels->line, format("`levels` has %ld entries, but minimum is %d, because %s is %s",
                                         implied + 1, 2, what.c_str(), "continuous"));
        if (count >= 0 && implied != count)
            failure(levels->line, format("there are %ld states, but %ld names", implied, count));
        count = std::max(implied, 0L);
    }
    if (numstates) {
        auto n = read_integer(word_of(numstates->value));
        if (!n) failure(numstates->line, format("illegal value '%s'", word_of(numstates->value).c_str()));
        if (*n < 1 && is_discrete)
            failure(numstates->line, format("`%s` stated to be %ld, but it must not be less than 1", "numstates", *n));
        if (count >= 0 && *n != count)
            failure(numstates->line, format("`%s` stated to be %d, but other statements imply it is %d",
                                            "numstates", static_cast<int>(*n), static_cast<int>(count)));
        count = *n;
    }
    if (is_discrete && count < 1)
        failure(object.line, format("missing `%s` statement for %s '%s'", "numstates", "node", object.name.c_str()));
    if (count > 1000000) failure(object.line, format("`%s` stated to be %ld, which is too many", "numstates", count));
    Node* node = create_node(net_, object.name, is_discrete ? static_cast<int>(count) : 0);
    if (!is_discrete && count > 0) node->states.resize(static_cast<size_t>(count));
    return node;
}

void DneReader::node_fields(Node& node, const std::vector<const Statement*>& statements) {
    bool parents_seen = false;
    for (const Statement* s : statements) {
        int field = node_field_index(s->keyword);
        if (field < 0) failure(s->line, format("unknown %s '%s'", "field", s->keyword.c_str()));
        const std::string w = word_of(s->value);
        const std::string& k = s->keyword;
        if (k == "kind") {
            int kind = keyword_index(kKindWords, w);
            if (kind < 0) failure(s->line, format("illegal value '%s'", w.c_str()));
            node.kind = static_cast<NodeKind>(kind);
        } else if (k == "measure") {
            int m = keyword_index(kMeasureWords, w);
            if (m < 0) failure(s->line, format("illegal value '%s'", w.c_str()));
            node.measure = static_cast<Measure>(m);
        } else if (k == "chance") {
            int c = keyword_index(kChanceWords, w);
            if (c < 0) failure(s->line, format("illegal value '%s'", w.c_str()));
            node.chance = static_cast<Chance>(c);
        } else if (k == "discrete") {
            if (w != "TRUE" && w != "FALSE" && w != "UNKNOWN_DISCRETE")
                failure(s->line, format("illegal value '%s'", w.c_str()));
        } else if (k == "states" || k == "statetitles" || k == "StateComments" || k == "levels") {
            state_statement(node, *s);
        } else if (k == "parents") {
            parents_seen = true;
        } else if (k == "inputs") {
            if (!find_in(statements, "parents"))
                failure(s->line, format("can't read `%s` statement, because there is no `%s` statement", "inputs",
                                        "parents"));
            if (!parents_seen)
                failure(s->line, format("missing `%s` statement before `%s` statement", "parents", "inputs"));
        } else if (k == "probs" || k == "functable" || k == "numcases" || k == "ExperBase") {
            if (!parents_seen && find_in(statements, "parents"))
                failure(s->line, format("`%s` statement should appear after PREDS statement", k.c_str()));
        } else if (k == "equation") {
            node.equation = w;
        } else if (k == "EqnDirty") {
            node.equation_dirty = is_true_word(w);
        } else if (k == "position") {
            read_position(node, *s);
        } else if (k == "title") {
            node.title = w;
        } else if (k == "comment") {
            node.comment = w;
        } else if (k == "fields") {
            if (!s->value.is_list()) failure(s->line, "missing open parenthesis");
            // A list of (name, value) vectors.
            for (const Value& pair : s->value.items) {
                if (!pair.is_list())
                    failure(s->line, "missing 2nd open parenthesis (it should be a list of vectors)");
                size_t first = s->value.items[0].items.size();
                if (pair.items.size() != first || first != 2)
                    failure(s->line, format("vectors of different lengths (%d and %d)", static_cast<int>(first),
                                            static_cast<int>(pair.items.size() != first ? pair.items.size() : 2)));
            }
            for (const Value& pair : s->value.items)
                node.user_fields.set(word_of(pair.items[0]), word_of(pair.items[1]));
        } else if (is_kept_keyword(k)) {
            node.kept_statements.emplace_back(k, value_text(s->value));
        } else if (k == "author" || k == "whochanged" || k == "whenchanged" || k == "units") {
            node.user_fields.set(k, w);
        } else if (k == "persist") {
            read_persistence(node, *s);
        }
        // The remaining fields ("children", "belief", ...) are derived and so not read.
    }
}

void DneReader::state_statement(Node& node, const Statement& s) {
    const std::string& k = s.keyword;
    if (!s.value.is_list()) failure(s.line, "missing open parenthesis");
    if (k == "levels") {
        for (const Value& item : s.value.items) {
            auto v = read_real(word_of(item));
            if (!v)
                failure(s.line, format("should give a numeric value, but this gives a %s value",
                                       item.kind == Value::List ? "list" : "text"));
            node.levels.push_back(*v);
        }
        if (node.is_discrete() && node.levels.size() != node.states.size())
            failure(s.line, format("`levels` has %d entries, but there should be %d, because %s has %d states and is %s",
                                   static_cast<int>(node.levels.size()), node.num_states(),
                                   ("node " + node.name).c_str(), node.num_states(), "discrete"));
        return;
    }
    if (s.value.items.size() != node.states.size())
        failure(s.line, format("there are %d states, but %d names", node.num_states(),
                               static_cast<int>(s.value.items.size())));
    for (size_t i = 0; i < node.states.size(); ++i) {
        std::string text = word_of(s.value.items[i]);
        if (k == "states") {
            if (!text.empty() && !is_legal_name(text.c_str()))
                failure(s.line, format("'%s' is not a legal name for a %s", text.c_str(), "state"));
            node.states[i].name = text;
        } else if (k == "statetitles") {
            node.states[i].title = text;
        } else {
            node.states[i].comment = text;
        }
    }
}

void DneReader::node_objects(Node& node, const Object& object) {
    for (const Object& o : object.objects) {
        if (o.word == "visual" && visual_) {
            if (const Statement* style = o.find("style")) node.vis_style = word_of(style->value);
        } else if (o.word == "user") {
            for (const Statement& s : o.statements) node.user_fields.set(s.keyword, word_of(s.value));
        }
    }
}

Node* DneReader::named_node(const std::string& name, int line) const {
    Node* node = net_.find(name);
    if (node) return node;
    if (definitions_.count(name))
        failure(line, format("a >-node meant only for defining others (declared with 'define') '%s' appears",
                             name.c_str()));
    failure(line, format("undefined >-node '%s'", name.c_str()));
}

void DneReader::resolve_links(const Declared& d) {
    const Statement* parents = find_in(d.statements, "parents");
    if (!parents) {
        link_delays(d, 0);  // a delay for no link is refused
        return;
    }
    if (!parents->value.is_list()) failure(parents->line, "missing open parenthesis");
    const Statement* inputs = find_in(d.statements, "inputs");
    size_t count = parents->value.items.size();
    if (inputs) {
        if (!inputs->value.is_list()) failure(inputs->line, "missing open parenthesis");
        // Input names inherited, parents the node's own: the parents are at fault.
        auto own = [&](const Statement* of) {
            return std::any_of(d.object->statements.begin(), d.object->statements.end(),
                               [&](const Statement& s) { return &s == of; });
        };
        if (inputs->value.items.size() != count && !own(inputs) && own(parents))
            failure(parents->line, format("the number of parents (%d) does not match the number of link names (%d)",
                                          static_cast<int>(count), static_cast<int>(inputs->value.items.size())));
        if (inputs->value.items.size() != count)
            failure(inputs->line, format("there are %d input names, but require %d (one for each parent)",
                                         static_cast<int>(inputs->value.items.size()), static_cast<int>(count)));
    }
    std::vector<std::string> delays = link_delays(d, count);
    for (size_t i = 0; i < count; ++i) {
        Node* parent = named_node(word_of(parents->value.items[i]), parents->line);
        std::string input = inputs ? word_of(inputs->value.items[i]) : std::string();
        if (!input.empty() && !is_legal_name(input.c_str()))
            failure(inputs->line, format("'%s' is not a legal name for a %s", input.c_str(), "link"));
        check_delay(*parent, *d.node, delays[i], d.statements);
        auto refused = link_or_warn(*parent, *d.node, input, place_, parents->line, delays[i]);
        if (refused && !first_refused_) first_refused_ = refused;
    }
}

void DneReader::node_sets(const Object& bnet) {
    for (const Object& o : bnet.objects) {
        if (o.word != "NodeSet") continue;
        NodeSet set;
        set.name = o.name;
        if (const Statement* nodes = o.find("Nodes")) {
            if (!nodes->value.is_list()) failure(nodes->line, "missing open parenthesis");
            for (const Value& v : nodes->value.items) set.members.push_back(named_node(word_of(v), nodes->line));
        }
        if (const Statement* color = o.find("Color")) set.color = word_of(color->value);
        net_.node_sets.push_back(std::move(set));
    }
}

void DneReader::elim_order(const Statement& s) {
    if (!s.value.is_list()) failure(s.line, "missing open parenthesis");
    NodeList* order = net_.env->store.make<NodeList>(&net_, false);
    for (const Value& v : s.value.items) order->nodes.push_back(named_node(word_of(v), s.line));
    net_.elim_order = order;
}

Net* read_dne(Environment& env, std::string_view text, const ReadPlace& place, int control,
              const DneReadOptions& options) {
    std::string tag = tag_word(text);
    if (tag == "CASE")
        read_failure(place, 1, format("file '%s' is a case file, not a >-net file", place.file.c_str()));
    Object bnet = parse_net_file(text, place);
    std::string problem = name_problem(bnet.name.c_str());
    if (!problem.empty())
        read_failure(place, bnet.line, format("'%s' is not a legal name for a %s", bnet.name.c_str(), ">-net"));
    Net* net = create_net(env, bnet.name);
    try {
        DneReader(*net, place, control != 0, options).read(bnet);
    } catch (...) {
        delete_net(*net);
        throw;
    }
    return net;
}

}  // namespace ravelo
