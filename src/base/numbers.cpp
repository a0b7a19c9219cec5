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
