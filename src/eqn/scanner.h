// The character scanner of the equation language: white space, names,
// numbers (with the "@" special forms and a trailing units word) and runs
// of operator punctuation.
#pragma once
#include <string>
#include <string_view>

namespace ravelo {

class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text) {}

    void skip_space();
    bool at_end() { skip_space(); return pos_ >= text_.size(); }
    // The next character after white space, or 0 at the end.
    char peek() { skip_space(); return pos_ < text_.size() ? text_[pos_] : '\0'; }
    // The character right here, without skipping white space.
    char here(size_t ahead = 0) const {
        return pos_ + ahead < text_.size() ? text_[pos_ + ahead] : '\0';
    }
    bool take(char c);      // after white space
    void advance(size_t n = 1) { pos_ += n; }

    bool name_starts();     // after white space
    std::string read_name();  // at most the name length; the rest stays
    bool number_starts();   // after white space
    // Reads a number; false when the text is not one (position unchanged).
    bool read_number(double& value, std::string& units);
    // A run of operator punctuation, without consuming it.
    std::string punctuation_run();

    size_t position() const { return pos_; }
    void set_position(size_t pos) { pos_ = pos; }
    std::string_view rest() const { return text_.substr(pos_ < text_.size() ? pos_ : text_.size()); }

private:
    std::string_view text_;
    size_t pos_ = 0;
};

bool is_name_char(char c);

}  // namespace ravelo
