// The words of an option text such as "optimize, report": separated by commas or white space.
#pragma once
#include <cctype>
#include <string>
#include <vector>

namespace ravelo {

inline std::vector<std::string> option_words(const char* text) {
    std::vector<std::string> words;
    for (const char* p = text ? text : ""; *p;) {
        if (*p == ',' || std::isspace(static_cast<unsigned char>(*p))) {
            ++p;
            continue;
        }
        const char* start = p;
        while (*p && *p != ',' && !std::isspace(static_cast<unsigned char>(*p))) ++p;
        words.emplace_back(start, p);
    }
    return words;
}

}  // namespace ravelo
