// The command-line program's own helpers: its JSON text and its "did you mean" matches.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

#include "json.h"
#include "suggest.h"

namespace ravelo_cli {
namespace {

TEST(JsonText, NumbersAreTheShortestTextThatReadsBackTheSameValue) {
    // Single-precision values print as floats, without the digits a double would add.
    for (float x : {0.1f, 0.30000001f, 1.0f / 3.0f, 0.98967f, 1e-30f, 3.4e38f, 1.4e-45f, 0.0f, -2.5f}) {
        std::string text = json_number(x);
        EXPECT_EQ(std::strtof(text.c_str(), nullptr), x) << text;
        EXPECT_LE(text.size(), 15u) << text;
    }
    EXPECT_EQ(json_number(0.1f), "0.1");
    EXPECT_EQ(json_number(0.1), "0.1");
    EXPECT_EQ(json_number(1.0), "1");
    double third = 1.0 / 3.0;
    EXPECT_EQ(std::strtod(json_number(third).c_str(), nullptr), third);
    // JSON has no text for these.
    EXPECT_EQ(json_number(std::numeric_limits<double>::quiet_NaN()), "null");
    EXPECT_EQ(json_number(-std::numeric_limits<float>::infinity()), "null");
}

TEST(JsonText, StringsEscapeWhatJsonForbids) {
    EXPECT_EQ(json_quoted("plain"), "\"plain\"");
    EXPECT_EQ(json_quoted("say \"hi\" \\ now"), "\"say \\\"hi\\\" \\\\ now\"");
    EXPECT_EQ(json_quoted("a\nb\tc\x01"), "\"a\\nb\\tc\\u0001\"");
    EXPECT_EQ(json_quoted("\xC3\x81sia"), "\"\xC3\x81sia\"");  // UTF-8 passes through
}

TEST(JsonText, NestedValuesAreSeparatedOnceEach) {
    JsonWriter json;
    json.begin_object().key("a").value(1).key("list").begin_array();
    json.value("x").begin_object().end_object().begin_array().end_array().null().value(true);
    json.end_array().key("b").begin_object().key("c").value(0.5f).end_object().end_object();
    EXPECT_EQ(json.text(), R"({"a": 1, "list": ["x", {}, [], null, true], "b": {"c": 0.5}})");
}

TEST(CloseMatches, NearWordsComeFirstAndFarOnesNever) {
    const std::vector<std::string> commands = {"info", "convert", "beliefs", "mpe", "batch"};
    EXPECT_EQ(close_matches("infoo", commands), std::vector<std::string>{"info"});
    EXPECT_EQ(close_matches("belifes", commands), std::vector<std::string>{"beliefs"});  // a swap is one edit
    EXPECT_EQ(close_matches("CONVERT", commands), std::vector<std::string>{"convert"});
    EXPECT_EQ(close_matches("conv", commands), std::vector<std::string>{"convert"});  // a prefix
    EXPECT_TRUE(close_matches("simulate", commands).empty());
    // Short words allow one edit only: "ye" is near "yes" but not "no".
    EXPECT_EQ(close_matches("ye", {"yes", "no"}), std::vector<std::string>{"yes"});
    EXPECT_EQ(close_matches("x", {"yes", "no"}), std::vector<std::string>{});
}

TEST(CloseMatches, HintsNameAtMostThreeCandidates) {
    EXPECT_EQ(did_you_mean("infoo", {"info", "convert"}), " (did you mean 'info'?)");
    EXPECT_EQ(did_you_mean("ab", {"ac", "ad"}), " (did you mean 'ac' or 'ad'?)");
    EXPECT_EQ(did_you_mean("ab", {"ac", "ad", "ae", "af"}), " (did you mean 'ac', 'ad' or 'ae'?)");
    EXPECT_EQ(did_you_mean("zzzz", {"ac"}), "");
    EXPECT_EQ(quoted_list({"yes", "no"}), "'yes', 'no'");
}

}  // namespace
}  // namespace ravelo_cli
