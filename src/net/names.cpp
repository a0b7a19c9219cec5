#include "net/names.h"

#include <cctype>

#include "base/failure.h"
#include "base/text.h"
#include "net/model.h"

namespace ravelo {
namespace {

bool is_name_char(unsigned char c) { return std::isalnum(c) || c == '_'; }

std::string character_problem(std::string_view name, unsigned char c) {
    std::string shown(name.substr(0, kMaxNameLength));
    switch (c) {
        case ' ': return format("'%s' contains a space", shown.c_str());
        case '\t': return format("'%s' contains a tab", shown.c_str());
        case '\r': return format("'%s' contains a 'return' character", shown.c_str());
        case '\n': return format("'%s' contains a 'new-line' character", shown.c_str());
        default:
            if (c < 128 && std::isprint(c))
                return format("'%s' contains the illegal character '%c'", shown.c_str(), c);
            return format("'%s' contains an illegal character (ascii code %u)", shown.c_str(),
                          static_cast<unsigned>(c));
    }
}

}  // namespace

std::string name_problem(const char* name, bool allow_star) {
    if (!name) return "is missing";
    std::string_view n(name);
    if (n.empty()) return "is empty (contains no characters)";
    if (allow_star && n == "*") return {};
    for (unsigned char c : n)
        if (!is_name_char(c)) return character_problem(n, c);
    if (n.size() > static_cast<size_t>(kMaxNameLength))
        return format("'%.31s...' is too long (%d characters, maximum is %d)", name,
                      static_cast<int>(n.size()), kMaxNameLength);
    if (!std::isalpha(static_cast<unsigned char>(n[0])) && n[0] != '_')
        return format("'%.30s' starts with non-alphabetic character '%c'", name, n[0]);
    return {};
}

std::string wide_name_problem(const char16_t* name) {
    if (!name) return "is missing";
    std::u16string_view n(name);
    if (n.empty()) return "is empty (contains no characters)";
    for (size_t i = 0; i < n.size(); ++i)
        if (n[i] > 0x7F)
            return format("contains a non-ascii character (%s char is Unicode-x%04X)",
                          ordinal(static_cast<int>(i) + 1).c_str(), static_cast<unsigned>(n[i]));
    std::string narrow(n.begin(), n.end());
    std::string problem = name_problem(narrow.c_str());
    if (n.size() > static_cast<size_t>(kMaxNameLength) && problem.find("is too long") != std::string::npos)
        return format("is too long (%d characters, maximum is %d)", static_cast<int>(n.size()),
                      kMaxNameLength);
    return problem;
}

std::string ordinal(int n) {
    const char* suffix = "th";
    if (n % 100 < 11 || n % 100 > 13) {
        if (n % 10 == 1) suffix = "st";
        else if (n % 10 == 2) suffix = "nd";
        else if (n % 10 == 3) suffix = "rd";
    }
    return format("%d%s", n, suffix);
}

void require_legal_name(const char* name, const char* kind_word) {
    if (!name) fail(5104, "NULL passed for name");
    if (!name_problem(name).empty())
        fail(3212, "'%s' is not a legal name for a %s", name, kind_word);
}

NameCheck check_name(const char* name, bool repair, bool allow_star) {
    NameCheck result{name_problem(name, allow_star), name ? name : ""};
    if (repair && !result.problem.empty()) result.name = repaired_name(result.name);
    return result;
}

std::string repaired_name(std::string_view name) {
    std::string out;
    for (unsigned char c : name) out += is_name_char(c) ? static_cast<char>(c) : '_';
    if (out.size() > static_cast<size_t>(kMaxNameLength)) out.resize(kMaxNameLength);
    if (out.empty()) return "x";
    if (!std::isalpha(static_cast<unsigned char>(out[0])) && out[0] != '_') out[0] = 'x';
    return out;
}

}  // namespace ravelo
