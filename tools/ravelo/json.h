// A small JSON writer for the program's output: objects and arrays written in order, numbers in
// the shortest form that reads back as the same value.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace ravelo_cli {

class JsonWriter {
public:
    JsonWriter& begin_object();
    JsonWriter& end_object();
    JsonWriter& begin_array();
    JsonWriter& end_array();
    JsonWriter& key(std::string_view name);
    JsonWriter& value(std::string_view text);
    JsonWriter& value(const char* text) { return value(std::string_view(text ? text : "")); }
    JsonWriter& value(double number);
    JsonWriter& value(float number);  // a stored single-precision value, without double noise
    JsonWriter& value(int number);
    JsonWriter& value(bool truth);
    JsonWriter& null();
    const std::string& text() const { return out_; }

private:
    void separate();
    std::string out_;
    std::vector<bool> has_items_;  // one entry per open object or array
    bool after_key_ = false;
};

std::string json_quoted(std::string_view text);
// The shortest decimal text that reads back as x; "null" for NaN and infinities.
std::string json_number(double x);
std::string json_number(float x);

}  // namespace ravelo_cli
