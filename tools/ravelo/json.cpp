#include "json.h"

#include <cmath>
#include <cstdio>

namespace ravelo_cli {

std::string json_string(const char* text) {
    std::string out = "\"";
    for (const char* c = text; *c; ++c) {
        unsigned char u = static_cast<unsigned char>(*c);
        if (u == '"' || u == '\\') {
            out += '\\';
            out += *c;
        } else if (u < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", u);
            out += escape;
        } else {
            out += *c;
        }
    }
    return out + "\"";
}

std::string json_number(double x) {
    if (!std::isfinite(x)) return "null";
    char text[32];
    std::snprintf(text, sizeof text, "%.10g", x);
    return text;
}

}  // namespace ravelo_cli
