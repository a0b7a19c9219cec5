// Reading the time-delay side of text net files: the delay of each link, a
// node's persistence along each dimension of the net, and node positions
// with as many coordinates as the net has dimensions.
#include "base/numbers.h"
#include "base/text.h"
#include "io/dne_reader.h"
#include "net/structure.h"

namespace ravelo {
namespace {

const Statement* statement_named(const std::vector<const Statement*>& statements, std::string_view keyword) {
    for (const Statement* s : statements)
        if (s->keyword == keyword) return s;
    return nullptr;
}

}  // namespace

// One delay per parent, in parent order, kept as written so that it is
// written back the same.
std::vector<std::string> DneReader::link_delays(const Declared& d, size_t parents) const {
    const Statement* s = statement_named(d.statements, "delays");
    if (!s) return std::vector<std::string>(parents);
    if (!s->value.is_list()) failure(s->line, "missing open parenthesis");
    if (s->value.items.size() != parents)
        failure(s->line, format("there are %d input names but other indications (e.g. delay equations) are for "
                                "%d parents",
                                static_cast<int>(parents), static_cast<int>(s->value.items.size())));
    std::vector<std::string> delays;
    for (const Value& item : s->value.items) {
        if (item.is_list()) failure(s->line, format("illegal punctuation '%s'", "("));
        delays.push_back(item.text);
    }
    return delays;
}

void DneReader::check_delay(const Node& parent, const Node& child, const std::string& delay,
                            const std::vector<const Statement*>& statements) const {
    std::string problem = delay_problem(parent, child, delay);
    if (problem.empty()) return;
    const Statement* delays = statement_named(statements, "delays");
    failure(delays ? delays->line : 0, problem);
}

void DneReader::read_persistence(Node& node, const Statement& s) const {
    if (!s.value.is_list()) failure(s.line, "missing open parenthesis");
    if (static_cast<int>(s.value.items.size()) != dimensions_)
        failure(s.line, format("there are %d entries, but %d dimensions in >-net '%s'",
                               static_cast<int>(s.value.items.size()), dimensions_, net_.name.c_str()));
    std::vector<double> persistence;
    for (const Value& item : s.value.items) {
        std::optional<double> v = item.kind == Value::Word ? read_real(item.text) : std::nullopt;
        if (!v)
            failure(s.line, format("should give a numeric value, but this gives a %s value",
                                   item.kind == Value::List ? "list" : "text"));
        // Dimensions are numbered from 1 in reports.
        std::string problem = persistence_problem(node, static_cast<int>(persistence.size()) + 1, *v);
        if (!problem.empty()) failure(s.line, problem);
        persistence.push_back(*v);
    }
    node.persistence = std::move(persistence);
}

void DneReader::read_position(Node& node, const Statement& s) const {
    if (!s.value.is_list()) failure(s.line, format("illegal value for `%s` statement", "position"));
    if (static_cast<int>(s.value.items.size()) != dimensions_)
        failure(s.line, format("there are %d entries, but %d dimensions in >-net '%s'",
                               static_cast<int>(s.value.items.size()), dimensions_, net_.name.c_str()));
    if (!visual_) return;
    std::vector<double> xy;
    for (const Value& item : s.value.items) {
        std::optional<double> v = read_real(word_of(item));
        if (!v) failure(s.line, format("illegal value for `%s` statement", "position"));
        xy.push_back(*v);
    }
    node.vis_x = xy[0];
    node.vis_y = xy.size() > 1 ? xy[1] : 0.0;
    node.position_rest.assign(xy.begin() + std::min<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(xy.size())), xy.end());
    node.has_position = true;
}

}  // namespace ravelo
