#include <gtest/gtest.h>

#include <string>

#include "base/lexicon.h"

namespace ravelo {
namespace {

TEST(Lexicon, TypeTermsInEveryLanguage) {
    const char* net[] = {"net", "net_bn", "Net", "Net", "BNet"};
    const char* env[] = {"internal environment", "environ_ns", "Environ", "Environ", "Application"};
    for (int language = 0; language < kNumLanguages; ++language) {
        EXPECT_EQ(lookup_term("Bnet", language), net[language]) << language;
        EXPECT_EQ(lookup_term("Enviro", language), env[language]) << language;
        EXPECT_EQ(substitute_terms("a>-cr-b", language), "a\nb") << language;
        EXPECT_EQ(lookup_term("Ravelo", language), "Ravelo");
        EXPECT_EQ(lookup_term("Tolvek", language), "Tolvek");
    }
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
