#include "suggest.h"

#include <algorithm>
#include <cctype>

namespace ravelo_cli {
namespace {

constexpr size_t kMostShown = 3;

std::string lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// Edits, counting a swap of neighbouring letters as one.
size_t edit_distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<size_t>> d(a.size() + 1, std::vector<size_t>(b.size() + 1));
    for (size_t i = 0; i <= a.size(); ++i) d[i][0] = i;
    for (size_t j = 0; j <= b.size(); ++j) d[0][j] = j;
    for (size_t i = 1; i <= a.size(); ++i)
        for (size_t j = 1; j <= b.size(); ++j) {
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
        }
    return d[a.size()][b.size()];
}

}  // namespace

std::vector<std::string> close_matches(const std::string& typed, const std::vector<std::string>& candidates) {
    const std::string key = lower(typed);
    const size_t allowed = std::max<size_t>(1, key.size() / 3);
    std::vector<std::pair<size_t, std::string>> near;
    for (const std::string& candidate : candidates) {
        std::string other = lower(candidate);
        size_t distance = edit_distance(key, other);
        bool prefix = key.size() >= 3 && other.compare(0, key.size(), key) == 0;
        if (distance <= allowed || prefix) near.emplace_back(prefix ? 0 : distance, candidate);
    }
    std::stable_sort(near.begin(), near.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<std::string> out;
    for (size_t i = 0; i < near.size() && i < kMostShown; ++i) out.push_back(near[i].second);
    return out;
}

std::string quoted_list(const std::vector<std::string>& words) {
    std::string out;
    for (size_t i = 0; i < words.size(); ++i) out += (i ? ", '" : "'") + words[i] + "'";
    return out;
}

std::string did_you_mean(const std::string& typed, const std::vector<std::string>& candidates) {
    std::vector<std::string> near = close_matches(typed, candidates);
    if (near.empty()) return "";
    std::string out = " (did you mean ";
    for (size_t i = 0; i < near.size(); ++i)
        out += (i == 0 ? "'" : i + 1 == near.size() ? " or '" : ", '") + near[i] + "'";
    return out + "?)";
}

}  // namespace ravelo_cli
