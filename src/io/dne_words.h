// The keyword tables of text net files.  A keyword's index in its table
// is its identity, so the order is fixed.
#pragma once
#include <span>
#include <string_view>

namespace ravelo {

extern const std::string_view kNetFieldWords[15];
extern const std::string_view kNodeFieldWords[40];
extern const std::string_view kKindWords[7];
extern const std::string_view kMeasureWords[6];
extern const std::string_view kChanceWords[4];

int keyword_index(std::span<const std::string_view> table, std::string_view word);
inline int net_field_index(std::string_view w) { return keyword_index(kNetFieldWords, w); }
inline int node_field_index(std::string_view w) { return keyword_index(kNodeFieldWords, w); }

// Fields this version reads and writes back as written without acting on them: the net's
// equation context and compile-on-load switch, and nested definitions of nets and nodes.
inline bool is_kept_keyword(std::string_view w) {
    return w == "eqncontext" || w == "AutoCompile" || w == "definenodes";
}

}  // namespace ravelo
