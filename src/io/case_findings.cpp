#include "io/case_findings.h"

#include <cmath>
#include <vector>

#include "base/numbers.h"
#include "base/text.h"

namespace ravelo {

namespace {

std::string_view trimmed(std::string_view s) {
    while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
    while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
    return s;
}

std::vector<std::string_view> list_items(std::string_view inside) {
    std::vector<std::string_view> items;
    while (true) {
        size_t cut = inside.find_first_of(", \t");
        std::string_view item = trimmed(inside.substr(0, cut));
        if (!item.empty()) items.push_back(item);
        if (cut == std::string_view::npos) break;
        inside.remove_prefix(cut + 1);
    }
    return items;
}

bool numeric(const Node& node) { return !node.levels.empty(); }

// The states a value range selects: for a continuous node the intervals it
// meets, for a discrete one the states whose level lies in it.
void select_range(const Node& node, double low, bool low_open, double high, bool high_open,
                  std::vector<float>& weights) {
    const int n = node.num_states();
    for (int s = 0; s < n; ++s) {
        bool in;
        if (node.type == NodeType::Continuous) {
            double a = node.levels[static_cast<size_t>(s)], b = node.levels[static_cast<size_t>(s) + 1];
            if (a > b) std::swap(a, b);
            in = (high_open ? a < high : a <= high) && (low_open ? b > low : b >= low);
        } else {
            double v = node.levels[static_cast<size_t>(s)];
            in = (low_open ? v > low : v >= low) && (high_open ? v < high : v <= high);
        }
        if (in) weights[static_cast<size_t>(s)] = 1;
    }
}

// Marks the state one item names; false when it names none.
bool select_item(const Node& node, std::string_view item, std::vector<float>& weights) {
    const int n = node.num_states();
    if (item.size() > 1 && item[0] == '#') {
        auto k = read_integer(item.substr(1));
        if (!k || *k < 0 || *k >= n) return false;
        weights[static_cast<size_t>(*k)] = 1;
        return true;
    }
    for (int s = 0; s < n; ++s)
        if (node.states[static_cast<size_t>(s)].name == item) {
            weights[static_cast<size_t>(s)] = 1;
            return true;
        }
    auto x = read_real(item);
    if (!x || !numeric(node)) return false;
    std::vector<float> before = weights;
    select_range(node, *x, false, *x, false, weights);
    return weights != before;
}

}  // namespace

bool read_case_finding(const Node& node, std::string_view text, FindingRecord& finding,
                       std::string& fault) {
    const int n = node.num_states();
    const char* name = node.name.c_str();
    const std::string entry(text);
    if (n == 0) {
        fault = format("'%.80s' is not a possible finding for variable '%s', which has no states",
                       entry.c_str(), name);
        return false;
    }
    std::vector<float> weights(static_cast<size_t>(n), 0.0f);
    bool negate = false;
    if (!text.empty() && text[0] == '~') {
        negate = true;
        text.remove_prefix(1);
    }
    const char open = text.empty() ? 0 : text[0];
    const char close = open == '{' ? '}' : open == '(' ? ')' : open == '[' ? ']' : 0;
    if (close && (text.size() < 2 || text.back() != close)) {
        fault = format("'%.80s' for variable '%s' is missing its closing '%c'", entry.c_str(), name, close);
        return false;
    }
    std::string_view inside = close ? text.substr(1, text.size() - 2) : text;
    if (open == '{') {
        std::vector<std::string_view> items = list_items(inside);
        if (static_cast<int>(items.size()) != n) {
            fault = format("likelihood '%.80s' has %d entries, but variable '%s' has %d states", entry.c_str(),
                           static_cast<int>(items.size()), name, n);
            return false;
        }
        for (int s = 0; s < n; ++s) {
            auto p = read_real(items[static_cast<size_t>(s)]);
            if (!p || !(*p >= 0 && *p <= 1)) {
                fault = format("likelihood '%.80s' for variable '%s' has an entry that is not a number from 0 to 1",
                               entry.c_str(), name);
                return false;
            }
            weights[static_cast<size_t>(s)] = static_cast<float>(*p);
        }
    } else if (open == '[' || open == '<' || open == '>') {
        if (!numeric(node)) {
            fault = format("'%.80s' is a range of values, but variable '%s' has no levels", entry.c_str(), name);
            return false;
        }
        double low = -HUGE_VAL, high = HUGE_VAL;
        bool low_open = false, high_open = false, ok;
        if (open == '[') {
            std::vector<std::string_view> items = list_items(inside);
            auto a = items.size() == 2 ? read_real(items[0]) : std::nullopt;
            auto b = items.size() == 2 ? read_real(items[1]) : std::nullopt;
            ok = a && b && *a <= *b;
            if (ok) low = *a, high = *b;
        } else {
            const bool or_equal = text.size() > 1 && text[1] == '=';
            auto x = read_real(trimmed(text.substr(or_equal ? 2 : 1)));
            ok = x.has_value();
            if (ok && open == '<') high = *x, high_open = !or_equal;
            if (ok && open == '>') low = *x, low_open = !or_equal;
        }
        if (!ok) {
            fault = format("'%.80s' for variable '%s' is not a proper range of values", entry.c_str(), name);
            return false;
        }
        select_range(node, low, low_open, high, high_open, weights);
    } else {
        std::vector<std::string_view> items = open == '(' ? list_items(inside) : std::vector{trimmed(inside)};
        for (std::string_view item : items)
            if (!select_item(node, item, weights)) {
                fault = format("'%.80s' in '%.80s' is not a state of variable '%s'", std::string(item).c_str(),
                               entry.c_str(), name);
                return false;
            }
    }
    bool any = false;
    for (float& w : weights) {
        if (negate) w = 1.0f - w;
        any = any || w > 0;
    }
    if (!any) {
        fault = format("finding '%.80s' leaves no possible state for variable '%s'", entry.c_str(), name);
        return false;
    }
    finding = FindingRecord();
    finding.likelihood = std::move(weights);
    return true;
}

void append_case_entry(const Node& node, std::string& out) {
    const FindingRecord& f = node.finding;
    if (f.has_value) {
        out += real_text(f.value);
    } else if (f.state >= 0 && f.state < node.num_states()) {
        const std::string& name = node.states[static_cast<size_t>(f.state)].name;
        if (!name.empty()) out += name;
        else if (node.is_discrete() && !node.levels.empty()) out += real_text(node.levels[static_cast<size_t>(f.state)]);
        else (out += '#') += std::to_string(f.state);
    } else if (!f.likelihood.empty()) {
        out += '{';
        for (size_t s = 0; s < f.likelihood.size(); ++s) {
            if (s) out += ", ";
            out += prob_text(f.likelihood[s]);
        }
        out += '}';
    }
}

}  // namespace ravelo
