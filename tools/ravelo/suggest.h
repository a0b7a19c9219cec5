// Close matches for a mistyped word, for "did you mean ...?" hints.
#pragma once
#include <string>
#include <vector>

namespace ravelo_cli {

// The candidates within a small edit distance of 'typed' (ignoring case), nearest first.
std::vector<std::string> close_matches(const std::string& typed, const std::vector<std::string>& candidates);
// " (did you mean 'a' or 'b'?)", or "" when nothing is close.
std::string did_you_mean(const std::string& typed, const std::vector<std::string>& candidates);
// "'a', 'b', 'c'".
std::string quoted_list(const std::vector<std::string>& words);

}  // namespace ravelo_cli
