#include <gtest/gtest.h>

#include <cmath>

#include "base/lexicon.h"
#include "base/numbers.h"
#include "base/stream.h"
#include "base/text.h"
#include "base/tokenizer.h"

namespace ravelo {
namespace {

TEST(NumberReading, AcceptsOnlyWholeNumberWords) {
    EXPECT_EQ(read_real("0.25"), 0.25);
    EXPECT_EQ(read_real("-1e-3"), -1e-3);
    EXPECT_EQ(read_real("+2"), 2.0);
    EXPECT_EQ(read_real(".5"), 0.5);
    EXPECT_TRUE(std::isinf(*read_real("1e400")));
    EXPECT_EQ(read_real("1e-400"), 0.0);
    EXPECT_EQ(read_real("-INFINITY"), -infinity_value());
    for (const char* bad : {"", "-", "abc", "1.5x", "0x10", "1,5", "--1", "nan"})
        EXPECT_FALSE(read_real(bad).has_value()) << bad;
    EXPECT_EQ(read_integer("12"), 12);
    EXPECT_EQ(read_integer("-3"), -3);
    EXPECT_FALSE(read_integer("99999999999").has_value());
    EXPECT_FALSE(read_integer("1.0").has_value());
    EXPECT_FALSE(read_integer("+").has_value());
}

TEST(NumberPrinting, ReadsBackToTheSameValue) {
    for (float p : {0.1f, 1.0f / 3, 1e-7f, 0.9999999f, 0.0f, 1.0f}) {
        auto back = read_real(prob_text(p));
        ASSERT_TRUE(back.has_value()) << prob_text(p);
        EXPECT_EQ(static_cast<float>(*back), p);
    }
    for (double x : {0.1, 1.0 / 3, -2.5e-300, 1e22}) EXPECT_EQ(read_real(real_text(x)), x);
    EXPECT_EQ(real_text(undef_value()), "@undef");
    EXPECT_EQ(real_text(-infinity_value()), "-INFINITY");
    EXPECT_EQ(prob_text(0.25f), "0.25");
}

TEST(Tokenizer, SplitsWordsStringsAndPunctuationWithLines) {
    Tokenizer t("bnet A{x=(1,-2.5e3);}// note\n/* a\nb */ title = \"say \\\"hi\\\"\\n\" ;",
                kNetFileRules, "f");
    const char* expected[] = {"bnet", "A", "{", "x", "=", "(", "1", ",", "-2.5e3", ")", ";", "}",
                              "title", "=", "say \"hi\"\n", ";"};
    for (const char* e : expected) {
        Token token = t.next();
        EXPECT_EQ(token.text, e);
    }
    EXPECT_EQ(t.next().kind, Token::End);
    Tokenizer lines("a\n\nb /* c\n */ d", kNetFileRules, "f");
    EXPECT_EQ(lines.next().line, 1);
    EXPECT_EQ(lines.next().line, 3);
    EXPECT_EQ(lines.next().line, 4);
}

TEST(Tokenizer, RawTextAfterALookAheadStartsAtThatToken) {
    Tokenizer t("property  position = (1, 2) ; next", TokenRules{"();", true, 0}, "f");
    EXPECT_EQ(t.next().text, "property");
    EXPECT_EQ(t.peek().text, "position");
    EXPECT_EQ(t.raw_until(';'), "position = (1, 2) ");
    EXPECT_TRUE(t.next().is(';'));
    EXPECT_EQ(t.next().text, "next");
}

TEST(StreamNames, ExtensionAndBaseName) {
    EXPECT_EQ(extension_of("nets/Alarm.BIF"), "bif");
    EXPECT_EQ(extension_of("dir.x/net"), "");
    EXPECT_EQ(extension_of("net"), "");
    EXPECT_EQ(base_name_of("a/b/asia.uai"), "asia");
    EXPECT_EQ(base_name_of(".hidden"), ".hidden");
}

TEST(Lexicon, FallbacksFollowTheLookupOrder) {
    EXPECT_EQ(lookup_term("node", 1), "node");               // only language 0 has it
    EXPECT_EQ(lookup_term("probtype", 2), "prob_bn");         // language 2's own text
    EXPECT_EQ(lookup_term("leveltype", 2), "double");         // from language 3
    EXPECT_EQ(lookup_term("NoCheck", 4), "NoCheck");          // empty text: never substituted
    EXPECT_EQ(lookup_term("RegularCheck", 4), "RegularCheck");
    EXPECT_EQ(lookup_term("Bnodes", 3), "nodes");            // language 3 lacks it
    EXPECT_EQ(lookup_term("ErrorNumber_ns", 3), "RaveloError.getIdNumber");
    EXPECT_EQ(lookup_term("CloseRavelo_bn", 4), "Application.Quit");
    EXPECT_EQ(lookup_term("ErrorNumber_ns", 1), "ErrorNumber_ns");  // unknown: the bare word
    EXPECT_EQ(lookup_term("undef_state_int", 0), "\"undefined state\" ID");
}

TEST(Lexicon, TemplatesAreCopiedWithTermsReplaced) {
    EXPECT_EQ(substitute_terms("deleted >-Bnode passed", 1), "deleted node_bn passed");
    EXPECT_EQ(substitute_terms("two >-Bnode-s here", 1), "two node_bns here");
    EXPECT_EQ(substitute_terms("only one dash >-Bnet--", 1), "only one dash net_bn-");
    EXPECT_EQ(substitute_terms("no term >- here, nor at the end >-", 1),
              "no term >- here, nor at the end >-");
    EXPECT_EQ(substitute_terms("a > - b -> c", 1), "a > - b -> c");
    EXPECT_EQ(substitute_terms(">-Bnet:>-Bnode", 0), "net:node");
}

TEST(Lexicon, LongTermsAreReadWholeButCutTo30) {
    std::string term(35, 'x');
    EXPECT_EQ(substitute_terms(">-" + term + " end", 1), std::string(30, 'x') + " end");
    EXPECT_EQ(lookup_term("Bnet" + std::string(40, '_'), 1), "Bnet" + std::string(26, '_'));
}

}  // namespace
}  // namespace ravelo
