// The message-term lexicon: replaces the ">-term" words of message templates
// with the words of the caller's interface language.
#pragma once
#include <string>
#include <string_view>

namespace ravelo {

constexpr int kNumLanguages = 5;
constexpr int kProceduralLanguage = 1;
constexpr int kMaxTermLength = 30;

// The text a term stands for in a language (falls back as the lexicon rules say).
std::string lookup_term(std::string_view term, int language);

// Copies a template with every ">-term" replaced; a term may end with one "-".
std::string substitute_terms(std::string_view text, int language);

}  // namespace ravelo
