// The syntax of the engine's text net files: objects holding field
// statements and nested objects, values that are words, strings or nested
// lists.  The reader first parses a file into this form, then builds.
#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "io/read_place.h"

namespace ravelo {

struct Value {
    enum Kind { Empty, Word, String, List };
    Kind kind = Empty;
    std::string text;
    std::vector<Value> items;
    int line = 0;
    int bar = -1;  // items before a '|' in a list that has one
    bool comma_missing = false;  // a table's list with items not separated by commas
    bool is_list() const { return kind == List; }
};

// A value written back as the reader reads it: one line, items separated by
// ", ", strings quoted.  Equal values give equal texts.
std::string value_text(const Value& v);

// How the parentheses of a table statement failed to balance.  Table
// statements are parsed leniently so that the table's reader, which knows
// the node, can say which entry went wrong.
enum class ParenFault { None, Unclosed, ClosedEarly, ExtraAtEnd };

struct Statement {
    std::string keyword;
    Value value;
    int line = 0;
    ParenFault fault = ParenFault::None;
    int unclosed = 0;  // lists still open when the statement ended
};

bool is_table_keyword(std::string_view keyword);

struct Object {
    std::string word;       // "bnet", "node", "NodeSet", "visual", "user", "link", "part"
    std::string declarer;   // "", "define" or "param"
    std::string name;
    std::string base;       // the object it inherits from ("" for none)
    std::vector<Statement> statements;
    std::vector<Object> objects;
    int line = 0;

    const Statement* find(std::string_view keyword) const;
};

// The tag word of the file's tag line ("DNET", "CASE", ...), or "" when it has none.
std::string tag_word(std::string_view text);

// An object written back as the reader reads it, its statements and nested
// objects one to a line, each line after the first indented by indent.
std::string object_text(const Object& object, const std::string& indent);

// Parses the one "bnet" object of a file.
Object parse_net_file(std::string_view text, const ReadPlace& place);

}  // namespace ravelo
