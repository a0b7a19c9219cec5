#include "io/legal_names.h"

#include <cctype>

#include "base/text.h"
#include "net/model.h"
#include "net/names.h"

namespace ravelo {

std::string UniqueNames::legal(const std::string& original) {
    std::string base = repaired_name(original);
    std::string name = base;
    for (int n = 2; used_.count(name); ++n) {
        std::string suffix = format("_%d", n);
        name = base.substr(0, kMaxNameLength - suffix.size()) + suffix;
    }
    used_.insert(name);
    return name;
}

std::string foreign_name(const std::string& name, const std::string& title) {
    if (title.empty() || title == name) return name;
    std::string base = repaired_name(title);
    if (base == name) return title;
    // A uniqueness suffix "_<n>" may follow a prefix of the repaired title.
    size_t bar = name.rfind('_');
    if (bar == std::string::npos || bar + 1 == name.size()) return name;
    for (size_t i = bar + 1; i < name.size(); ++i)
        if (!std::isdigit(static_cast<unsigned char>(name[i]))) return name;
    if (base.compare(0, bar, name, 0, bar) == 0) return title;
    return name;
}

}  // namespace ravelo
