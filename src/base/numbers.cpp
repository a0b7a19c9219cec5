#include "base/numbers.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>
#include <limits>

#include "base/text.h"

namespace ravelo {

std::optional<double> read_real(std::string_view word) {
    bool negative = false;
    std::string_view digits = word;
    if (!digits.empty() && (digits[0] == '-' || digits[0] == '+')) {
        negative = digits[0] == '-';
        digits.remove_prefix(1);
    }
    if (digits == "INFINITY" || digits == "inf" || digits == "INF")
        return negative ? -infinity_value() : infinity_value();
    if (digits.empty() || !(std::isdigit(static_cast<unsigned char>(digits[0])) || digits[0] == '.'))
        return std::nullopt;
    double value = 0;
    auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (end != digits.data() + digits.size()) return std::nullopt;
    if (error == std::errc::result_out_of_range) {
        // Too large becomes infinite, too small zero, as strtod rounds them.
        value = std::strtod(std::string(digits).c_str(), nullptr);
    } else if (error != std::errc()) {
        return std::nullopt;
    }
    return negative ? -value : value;
}

std::optional<long> read_integer(std::string_view word) {
    long value = 0;
    const char* first = word.data();
    if (!word.empty() && word[0] == '+') ++first;
    auto [end, error] = std::from_chars(first, word.data() + word.size(), value);
    if (error != std::errc() || end != word.data() + word.size() || first == end)
        return std::nullopt;
    if (value > std::numeric_limits<int>::max() || value < std::numeric_limits<int>::min())
        return std::nullopt;
    return value;
}

namespace {

bool is_digit_char(char c) { return c >= '0' && c <= '9'; }
bool is_word_start(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }
bool is_word_char(char c) { return is_word_start(c) || is_digit_char(c); }

// Length of the digits, point and exponent of a number starting at text[0].
size_t numeral_length(std::string_view text) {
    size_t p = 0;
    auto digit_at = [&](size_t i) { return i < text.size() && is_digit_char(text[i]); };
    if (p < text.size() && text[p] == '-') ++p;
    while (digit_at(p)) ++p;
    if (p < text.size() && text[p] == '.') {
        ++p;
        while (digit_at(p)) ++p;
    }
    if (p < text.size() && (text[p] == 'e' || text[p] == 'E')) {
        size_t q = p + 1;
        if (q < text.size() && (text[q] == '+' || text[q] == '-')) ++q;
        if (digit_at(q)) {
            while (digit_at(q)) ++q;
            p = q;
        }
    }
    return p;
}

size_t special_value_length(std::string_view text, double& value) {
    struct Form {
        std::string_view word;
        double value;
    };
    const Form forms[] = {{"@undef", undef_value()},          {"@infinity", infinity_value()},
                          {"@inf", infinity_value()},         {"@neginfinity", -infinity_value()},
                          {"@neginf", -infinity_value()}};
    for (const Form& f : forms) {
        size_t len = f.word.size();
        if (text.substr(0, len) == f.word && !(len < text.size() && is_word_char(text[len]))) {
            value = f.value;
            return len;
        }
    }
    return 0;
}

}  // namespace

size_t read_number_prefix(std::string_view text, double& value, std::string& units) {
    double x = 0;
    size_t taken = 0;
    if (!text.empty() && text[0] == '@') {
        taken = special_value_length(text, x);
    } else {
        taken = numeral_length(text);
        // A lone "-" or "." is no number; read_real decides the rest.
        std::optional<double> read = taken ? read_real(text.substr(0, taken)) : std::nullopt;
        if (!read) return 0;
        x = *read;
    }
    if (taken == 0) return 0;
    size_t after = taken;
    while (after < text.size() && (text[after] == ' ' || text[after] == '\t' || text[after] == '\n' ||
                                   text[after] == '\r'))
        ++after;
    units.clear();
    if (after < text.size() && is_word_start(text[after])) {
        size_t end = after;
        while (end < text.size() && is_word_char(text[end])) ++end;
        units.assign(text.substr(after, end - after));
        taken = end;
    }
    value = x;
    return taken;
}

std::string real_text(double x) {
    if (is_undef(x)) return "@undef";
    if (std::isinf(x)) return x > 0 ? "INFINITY" : "-INFINITY";
    char buffer[64];
    auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, x);
    (void)error;
    return std::string(buffer, end);
}

std::string prob_text(float p) {
    if (std::isnan(p)) return "@undef";
    if (std::isinf(p)) return p > 0 ? "INFINITY" : "-INFINITY";
    char buffer[64];
    auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, p);
    (void)error;
    return std::string(buffer, end);
}

}  // namespace ravelo
