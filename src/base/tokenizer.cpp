#include "base/tokenizer.h"

#include <cctype>

#include "base/failure.h"

namespace ravelo {

const TokenRules kNetFileRules{"(){}=,;:|\"", true, 0};

const Token& Tokenizer::peek() {
    if (!has_ahead_) {
        scan();
        has_ahead_ = true;
    }
    return ahead_;
}

Token Tokenizer::next() {
    peek();
    has_ahead_ = false;
    return std::move(ahead_);
}

void Tokenizer::skip_space_and_comments() {
    while (pos_ < text_.size()) {
        char c = text_[pos_];
        if (c == '\n') {
            ++line_;
            ++pos_;
        } else if (std::isspace(static_cast<unsigned char>(c))) {
            ++pos_;
        } else if (rules_.c_comments && c == '/' && pos_ + 1 < text_.size() &&
                   text_[pos_ + 1] == '/') {
            while (pos_ < text_.size() && text_[pos_] != '\n') ++pos_;
        } else if (rules_.c_comments && c == '/' && pos_ + 1 < text_.size() &&
                   text_[pos_ + 1] == '*') {
            int start = line_;
            size_t end = text_.find("*/", pos_ + 2);
            if (end == std::string_view::npos)
                fail(3400, "comment is never closed (line %d of '%s')", start, source_.c_str());
            for (size_t i = pos_; i < end; ++i) line_ += text_[i] == '\n';
            pos_ = end + 2;
        } else if (rules_.line_comment && c == rules_.line_comment) {
            while (pos_ < text_.size() && text_[pos_] != '\n') ++pos_;
        } else {
            return;
        }
    }
}

void Tokenizer::scan() {
    skip_space_and_comments();
    ahead_ = Token{};
    ahead_.line = line_;
    ahead_pos_ = pos_;
    if (pos_ >= text_.size()) return;
    char c = text_[pos_];
    if (c == '"') {
        ahead_.kind = Token::String;
        ++pos_;
        while (true) {
            if (pos_ >= text_.size())
                fail(3400, "string has no closing '\"' (line %d of '%s')", ahead_.line,
                     source_.c_str());
            char s = text_[pos_++];
            if (s == '"') break;
            if (s == '\n') ++line_;
            if (s == '\\' && pos_ < text_.size()) {
                char e = text_[pos_++];
                s = e == 'n' ? '\n' : e == 't' ? '\t' : e;
                if (e == '\n') ++line_;
            }
            ahead_.text.push_back(s);
        }
        return;
    }
    if (rules_.punctuation.find(c) != std::string_view::npos) {
        ahead_.kind = Token::Punct;
        ahead_.text.assign(1, c);
        ++pos_;
        return;
    }
    ahead_.kind = Token::Word;
    size_t start = pos_;
    while (pos_ < text_.size()) {
        char w = text_[pos_];
        if (std::isspace(static_cast<unsigned char>(w)) || w == '"' ||
            rules_.punctuation.find(w) != std::string_view::npos)
            break;
        if (rules_.c_comments && w == '/' && pos_ + 1 < text_.size() &&
            (text_[pos_ + 1] == '/' || text_[pos_ + 1] == '*'))
            break;
        ++pos_;
    }
    ahead_.text.assign(text_.substr(start, pos_ - start));
}

std::string Tokenizer::raw_until(char c) {
    if (has_ahead_) {
        // Step back to the start of the token already looked at.
        has_ahead_ = false;
        pos_ = ahead_pos_;
        line_ = ahead_.line;
    }
    size_t start = pos_;
    while (pos_ < text_.size() && text_[pos_] != c) {
        if (text_[pos_] == '\n') ++line_;
        ++pos_;
    }
    return std::string(text_.substr(start, pos_ - start));
}

std::string quoted(std::string_view text) {
    std::string out = "\"";
    for (char c : text) {
        if (c == '"' || c == '\\') out.push_back('\\');
        if (c == '\n') {
            out += "\\n";
            continue;
        }
        out.push_back(c);
    }
    out.push_back('"');
    return out;
}

}  // namespace ravelo
