#include "eqn/scanner.h"

#include <cctype>
#include <cstring>

#include "base/numbers.h"
#include "net/model.h"

namespace ravelo {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Characters that make up operator symbols; "(", ")", ",", ";" and "#" stand alone.
bool is_operator_char(char c) { return c && std::strchr("+-*/%^<>=!&|?:~", c) != nullptr; }

}  // namespace

bool is_name_char(char c) { return is_letter(c) || is_digit(c) || c == '_'; }

void Scanner::skip_space() {
    while (pos_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[pos_]))) ++pos_;
}

bool Scanner::take(char c) {
    if (peek() != c) return false;
    ++pos_;
    return true;
}

bool Scanner::name_starts() { return is_letter(peek()) || peek() == '_'; }

std::string Scanner::read_name() {
    skip_space();
    size_t start = pos_;
    while (pos_ < text_.size() && is_name_char(text_[pos_]) &&
           pos_ - start < static_cast<size_t>(kMaxNameLength))
        ++pos_;
    return std::string(text_.substr(start, pos_ - start));
}

bool Scanner::number_starts() {
    char c = peek();
    if (is_digit(c) || c == '@') return true;
    if (c == '.') return is_digit(here(1));
    if (c == '-') return is_digit(here(1)) || (here(1) == '.' && is_digit(here(2)));
    return false;
}

bool Scanner::read_number(double& value, std::string& units) {
    skip_space();
    size_t taken = read_number_prefix(rest(), value, units);
    pos_ += taken;
    return taken > 0;
}

std::string Scanner::punctuation_run() {
    skip_space();
    size_t p = pos_;
    // No operator symbol is longer than this; the rest is for the next look.
    constexpr size_t kLongestSymbol = 3;
    while (p < text_.size() && p - pos_ < kLongestSymbol && is_operator_char(text_[p])) ++p;
    return std::string(text_.substr(pos_, p - pos_));
}

}  // namespace ravelo
