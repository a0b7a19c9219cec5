#include "net/names.h"

#include <cctype>

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

std::string repaired_name(std::string_view name) {
    std::string out;
    for (unsigned char c : name) out += is_name_char(c) ? static_cast<char>(c) : '_';
    if (out.size() > static_cast<size_t>(kMaxNameLength)) out.resize(kMaxNameLength);
    if (out.empty()) return "x";
    if (!std::isalpha(static_cast<unsigned char>(out[0])) && out[0] != '_') out[0] = 'x';
    return out;
}

}  // namespace ravelo
