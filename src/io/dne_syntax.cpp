#include "io/dne_syntax.h"

#include <algorithm>
#include <cctype>

#include "base/text.h"
#include "base/tokenizer.h"

namespace ravelo {

const Statement* Object::find(std::string_view keyword) const {
    for (const Statement& s : statements)
        if (s.keyword == keyword) return &s;
    return nullptr;
}

std::string tag_word(std::string_view text) {
    constexpr std::string_view kOpen = "// ~->[";
    size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string_view::npos || text.compare(start, kOpen.size(), kOpen) != 0) return {};
    start += kOpen.size();
    size_t end = text.find_first_of("-]\n", start);
    if (end == std::string_view::npos) return {};
    return std::string(text.substr(start, end - start));
}

std::string value_text(const Value& v) {
    switch (v.kind) {
        case Value::Empty: return {};
        case Value::Word: return v.text;
        case Value::String: return quoted(v.text);
        case Value::List: break;
    }
    std::string out = "(";
    for (size_t i = 0; i < v.items.size(); ++i) {
        if (static_cast<int>(i) == v.bar) out += " | ";
        else if (i) out += ", ";
        out += value_text(v.items[i]);
    }
    return out + ")";
}

std::string object_text(const Object& object, const std::string& indent) {
    std::string out = object.declarer.empty() ? "" : object.declarer + " ";
    out += object.word + " " + object.name;
    if (!object.base.empty()) out += " : " + object.base;
    out += " {\n";
    for (const Statement& s : object.statements) {
        // Keywords given as strings (user fields) stay strings.
        bool word = !s.keyword.empty() && std::all_of(s.keyword.begin(), s.keyword.end(), [](unsigned char c) {
            return std::isalnum(c) || c == '_';
        });
        out += indent + "\t" + (word ? s.keyword : quoted(s.keyword)) + " = " + value_text(s.value) + ";\n";
    }
    for (const Object& o : object.objects) out += indent + "\t" + object_text(o, indent + "\t");
    return out + indent + "\t};\n";
}

bool is_table_keyword(std::string_view keyword) {
    for (const char* k : {"probs", "functable", "numcases", "ExperBase"})
        if (keyword == k) return true;
    return false;
}

namespace {

// Deeper lists than this are refused rather than followed.
constexpr int kMaxListDepth = 200;
constexpr int kMaxObjectDepth = 8;

const char* const kObjectWords[] = {"node", "visual", "user", "bnet", "NodeSet", "link", "part"};

bool is_object_word(const std::string& word) {
    for (const char* w : kObjectWords)
        if (word == w) return true;
    return false;
}

class SyntaxReader {
public:
    SyntaxReader(std::string_view text, const ReadPlace& place)
        : tokens_(text, kNetFileRules, place.file), place_(place) {}

    Object net() {
        Token t = tokens_.next();
        if (t.kind == Token::End) read_failure(place_, t.line, "file contains no 'bnet' object");
        if (!t.is_word("bnet"))
            read_failure(place_, t.line, format("unknown %s '%s'", "object", t.text.c_str()));
        Object net = object("bnet", "", t.line, 0);
        Token rest = tokens_.next();
        if (rest.kind != Token::End)
            read_failure(place_, rest.line, format("unexpected text '%s' after the end of the >-net", rest.text.c_str()));
        return net;
    }

private:
    std::string found(const Token& t) {
        return t.kind == Token::End ? std::string("end of file") : "'" + t.text + "'";
    }

    Object object(const std::string& word, const std::string& declarer, int line, int depth) {
        if (depth > kMaxObjectDepth)
            read_failure(place_, line, format("objects nested more than %d deep", kMaxObjectDepth));
        Object o;
        o.word = word;
        o.declarer = declarer;
        o.line = line;
        Token name = tokens_.next();
        if (name.kind != Token::Word)
            read_failure(place_, name.line, format("missing name of %s (found %s)", word.c_str(), found(name).c_str()));
        o.name = name.text;
        if (tokens_.peek().is(':')) {
            tokens_.next();
            Token base = tokens_.next();
            if (base.kind != Token::Word)
                read_failure(place_, base.line, format("missing name of the %s to inherit from", word.c_str()));
            o.base = base.text;
        }
        std::string what = word + " '" + o.name + "'";
        if (!tokens_.peek().is('{'))
            read_failure(place_, tokens_.line(), format("missing '{' to start %s", what.c_str()));
        tokens_.next();
        while (true) {
            Token t = tokens_.next();
            if (t.is('}')) break;
            if (t.kind == Token::End)
                read_failure(place_, line, format("no closing '}' for %s, starting", what.c_str()));
            if (t.kind != Token::Word && !(t.kind == Token::String && tokens_.peek().is('=')))
                read_failure(place_, t.line, format("unexpected punctuation '%s'", t.text.c_str()));
            statement(o, t, depth);
        }
        Token semi = tokens_.next();
        if (!semi.is(';'))
            read_failure(place_, semi.line, format("missing semicolon at end of %s '%s'", word.c_str(), o.name.c_str()));
        return o;
    }

    void statement(Object& into, const Token& first, int depth) {
        if (tokens_.peek().is('=')) {
            tokens_.next();
            Statement s;
            s.keyword = first.text;
            s.line = first.line;
            if (is_table_keyword(s.keyword)) table_value(s);
            else s.value = value(0);
            if (!tokens_.peek().is(';'))
                read_failure(place_, tokens_.line(), format("missing semicolon after `%s` statement", s.keyword.c_str()));
            tokens_.next();
            into.statements.push_back(std::move(s));
            return;
        }
        std::string declarer;
        Token word = first;
        if (first.text == "define" || first.text == "param") {
            declarer = first.text;
            word = tokens_.next();
        }
        if (word.kind != Token::Word || !is_object_word(word.text)) {
            bool field = !declarer.empty() ? false : tokens_.peek().kind != Token::Word;
            if (field && !tokens_.peek().is('{'))
                read_failure(place_, tokens_.line(), format("missing '=' for `%s` statement", word.text.c_str()));
            read_failure(place_, word.line, format("unknown %s '%s'", "object", word.text.c_str()));
        }
        // Nets, nodes and node sets stand only in a net: met inside another
        // object they mean that object was never closed.
        bool top_level = word.text == "bnet" || word.text == "node" || word.text == "NodeSet";
        if (top_level && (into.word != "bnet" || word.text == "bnet"))
            read_failure(place_, word.line, format("no terminating '}' for %s '%s'", into.word.c_str(), into.name.c_str()));
        into.objects.push_back(object(word.text, declarer, word.line, depth + 1));
    }

    // A table's value, noting rather than refusing unbalanced parentheses.
    void table_value(Statement& s) {
        lenient_ = true;
        unclosed_ = 0;
        s.value = value(0);
        lenient_ = false;
        if (unclosed_ > 0) {
            s.fault = ParenFault::Unclosed;
            s.unclosed = unclosed_;
            return;
        }
        const Token& next = tokens_.peek();
        if (!next.is(',') && !next.is(')')) return;
        // The table closed before the statement ended: skip to its end.
        bool only_closes = true;
        while (!tokens_.peek().is(';') && !tokens_.peek().is('}') && tokens_.peek().kind != Token::End)
            if (!tokens_.next().is(')')) only_closes = false;
        s.fault = only_closes ? ParenFault::ExtraAtEnd : ParenFault::ClosedEarly;
    }

    Value value(int depth) {
        if (depth > kMaxListDepth)
            read_failure(place_, tokens_.line(), format("lists nested more than %d deep", kMaxListDepth));
        Value v;
        v.line = tokens_.line();
        const Token& t = tokens_.peek();
        if (t.kind == Token::Word || t.kind == Token::String) {
            v.kind = t.kind == Token::Word ? Value::Word : Value::String;
            v.text = tokens_.next().text;
            return v;
        }
        if (!t.is('(')) {
            if (t.is(',') || t.is(')') || t.is(';') || (lenient_ && t.is('|'))) return v;  // an empty item
            read_failure(place_, t.line, format("illegal punctuation '%s'", t.text.c_str()));
        }
        tokens_.next();
        v.kind = Value::List;
        if (tokens_.peek().is(')')) {
            tokens_.next();
            return v;
        }
        while (true) {
            v.items.push_back(value(depth + 1));
            if (lenient_ && tokens_.peek().is(';')) {
                ++unclosed_;
                return v;
            }
            // A table's reader names the entry that lacks its comma.
            const Token& ahead = tokens_.peek();
            if (lenient_ && (ahead.kind == Token::Word || ahead.kind == Token::String || ahead.is('('))) {
                v.comma_missing = true;
                continue;
            }
            Token sep = tokens_.next();
            if (sep.is(')')) break;
            if (lenient_ && sep.is('|') && v.bar < 0) {
                v.bar = static_cast<int>(v.items.size());
                continue;
            }
            if (sep.kind == Token::End)
                read_failure(place_, v.line, "missing close parenthesis, starting");
            if (!sep.is(',')) read_failure(place_, sep.line, "missing comma");
        }
        return v;
    }

    Tokenizer tokens_;
    const ReadPlace& place_;
    bool lenient_ = false;
    int unclosed_ = 0;
};

}  // namespace

Object parse_net_file(std::string_view text, const ReadPlace& place) {
    return SyntaxReader(text, place).net();
}

}  // namespace ravelo
