// The tokenizer of text net files: words, double-quoted strings and single
// punctuation characters, with line numbers for reports.
#pragma once
#include <string>
#include <string_view>

namespace ravelo {

struct Token {
    enum Kind { End, Word, String, Punct };
    Kind kind = End;
    std::string text;
    int line = 1;

    bool is(char punct) const { return kind == Punct && text.size() == 1 && text[0] == punct; }
    bool is_word(std::string_view word) const { return kind == Word && text == word; }
};

struct TokenRules {
    std::string_view punctuation;  // each of these is a token by itself
    bool c_comments = true;        // "//" to end of line and "/* ... */"
    char line_comment = 0;         // a further character that starts a comment line
};

// The punctuation of the engine's own net files: ( ) { } = , ; : | "
extern const TokenRules kNetFileRules;

class Tokenizer {
public:
    // source names the file in reports of unclosed strings and comments.
    Tokenizer(std::string_view text, const TokenRules& rules, std::string source)
        : text_(text), rules_(rules), source_(std::move(source)) {}

    const Token& peek();
    Token next();
    // Line of the next token (or of the end).
    int line() { return peek().line; }
    // Everything up to (not including) the next character c, raw; the token
    // stream resumes at c.  Used for free text such as property values.
    std::string raw_until(char c);

private:
    void scan();
    void skip_space_and_comments();

    std::string_view text_;
    TokenRules rules_;
    std::string source_;
    size_t pos_ = 0;
    int line_ = 1;
    Token ahead_;
    size_t ahead_pos_ = 0;
    bool has_ahead_ = false;
};

// A name or text as a double-quoted string, with quotes and backslashes escaped.
std::string quoted(std::string_view text);

}  // namespace ravelo
