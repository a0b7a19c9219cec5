// Reading and printing of real numbers in net files: strict reading of a
// whole word, and printing that reads back to the same value.
#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace ravelo {

// The number a whole word spells ("0.25", "-1e-3", "INFINITY", "-INFINITY"),
// or nothing when the word is not a number.
std::optional<double> read_real(std::string_view word);
// An integer word within int range, or nothing.
std::optional<long> read_integer(std::string_view word);

// Reads a number at the start of text: digits as read_real takes them, or
// one of the "@" forms of special values ("@undef", "@inf", "@infinity",
// "@neginf", "@neginfinity"); a word that follows after optional blanks is
// its units word.  Returns how many characters were taken (0 when the text
// does not start with a number; value and units are then untouched).
size_t read_number_prefix(std::string_view text, double& value, std::string& units);

// Shortest text that reads back to the same double or float.
std::string real_text(double x);
std::string prob_text(float p);

}  // namespace ravelo
