#include "json.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace ravelo_cli {

namespace {

template <class Real>
std::string shortest(Real x) {
    if (!std::isfinite(x)) return "null";
    char text[64];
    auto result = std::to_chars(text, text + sizeof text, x);
    return std::string(text, result.ptr);
}

}  // namespace

std::string json_number(double x) { return shortest(x); }
std::string json_number(float x) { return shortest(x); }

std::string json_quoted(std::string_view text) {
    std::string out = "\"";
    for (char c : text) {
        unsigned char u = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (u < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", u);
            out += escape;
        } else {
            out += c;
        }
    }
    return out + "\"";
}

void JsonWriter::separate() {
    if (after_key_) {
        after_key_ = false;
        return;
    }
    if (!has_items_.empty()) {
        if (has_items_.back()) out_ += ", ";
        has_items_.back() = true;
    }
}

JsonWriter& JsonWriter::begin_object() {
    separate();
    out_ += '{';
    has_items_.push_back(false);
    return *this;
}

JsonWriter& JsonWriter::end_object() {
    out_ += '}';
    has_items_.pop_back();
    return *this;
}

JsonWriter& JsonWriter::begin_array() {
    separate();
    out_ += '[';
    has_items_.push_back(false);
    return *this;
}

JsonWriter& JsonWriter::end_array() {
    out_ += ']';
    has_items_.pop_back();
    return *this;
}

JsonWriter& JsonWriter::key(std::string_view name) {
    separate();
    out_ += json_quoted(name) + ": ";
    after_key_ = true;
    return *this;
}

JsonWriter& JsonWriter::value(std::string_view text) {
    separate();
    out_ += json_quoted(text);
    return *this;
}

JsonWriter& JsonWriter::value(double number) {
    separate();
    out_ += json_number(number);
    return *this;
}

JsonWriter& JsonWriter::value(float number) {
    separate();
    out_ += json_number(number);
    return *this;
}

JsonWriter& JsonWriter::value(int number) {
    separate();
    out_ += std::to_string(number);
    return *this;
}

JsonWriter& JsonWriter::value(bool truth) {
    separate();
    out_ += truth ? "true" : "false";
    return *this;
}

JsonWriter& JsonWriter::null() {
    separate();
    out_ += "null";
    return *this;
}

}  // namespace ravelo_cli
