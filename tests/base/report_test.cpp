#include <gtest/gtest.h>

#include "base/environment.h"
#include "base/failure.h"
#include "base/lexicon.h"
#include "base/report.h"

namespace ravelo {
namespace {

TEST(Lexicon, SubstitutesTermsInTheProceduralLanguage) {
    EXPECT_EQ(substitute_terms("deleted >-Bnode passed", 1), "deleted node_bn passed");
    EXPECT_EQ(substitute_terms("can't add >-node X to >-net-s", 1), "can't add node X to nets");
    EXPECT_EQ(substitute_terms("a>-cr-b", 3), "a\nb");
    EXPECT_EQ(substitute_terms(">-NoSuchTerm here", 1), "NoSuchTerm here");
    EXPECT_EQ(substitute_terms(">-Bnet", 0), "net");
}

TEST(Lexicon, ClassLanguageFallsBackToObjectLanguage) {
    EXPECT_EQ(lookup_term("Bnet", 2), "Net");
    EXPECT_EQ(lookup_term("bool", 2), "bool");
}

TEST(Lexicon, LongTermsAreCutTo30Characters) {
    std::string term(35, 'x');
    EXPECT_EQ(lookup_term(term, 1), std::string(30, 'x'));
}

class ReportsTest : public ::testing::Test {
protected:
    void SetUp() override {
        env = create_environment();
        env->life_state = kLifeInitialized;
        env->report_limit = 8;
        set_current_environment(env);
    }
    void TearDown() override {
        drop_all_reports(*env);
        env->store.clear();
        retire_environment(*env);
    }
    Environment* env = nullptr;
};

TEST_F(ReportsTest, WarningsAreThrottledBeforeErrors) {
    for (int i = 0; i < 6; ++i) EXPECT_FALSE(is_stock_report(warning(1, "w%d", i)));
    EXPECT_TRUE(is_stock_report(warning(1, "dropped")));  // 6 >= 3L/4
    EXPECT_FALSE(is_stock_report(error_report(2, "kept")));
    EXPECT_FALSE(is_stock_report(error_report(2, "kept")));
    EXPECT_TRUE(is_stock_report(error_report(2, "dropped")));  // 8 >= L
    clear_reports(*env, kInternalError);
    EXPECT_EQ(next_report(*env, 0, nullptr), nullptr);
    EXPECT_FALSE(is_stock_report(warning(1, "recorded again")));
}

TEST_F(ReportsTest, NextReportVisitsInOrderBySeverity) {
    Report* a = warning(1, "a");
    Report* b = error_report(2, "b");
    Report* c = notice(3, "c");
    EXPECT_EQ(next_report(*env, 0, nullptr), a);
    EXPECT_EQ(next_report(*env, 0, a), b);
    EXPECT_EQ(next_report(*env, 0, b), c);
    EXPECT_EQ(next_report(*env, kError, nullptr), b);
    EXPECT_EQ(next_report(*env, kError, b), nullptr);
    EXPECT_EQ(b->number, -2);
    EXPECT_EQ(b->group->severity, kError);  // severity propagates to the group
}

TEST_F(ReportsTest, AssertionFailureNamesFileLineAndCondition) {
    try {
        RAVELO_ASSERT(1 + 1 == 3);
        FAIL();
    } catch (const Failure& f) {
        EXPECT_EQ(f.report->severity, kInternalError);
        EXPECT_NE(f.report->message.find("report_test-"), std::string::npos);
        EXPECT_NE(f.report->message.find("(1 + 1 == 3)."), std::string::npos);
    }
}

}  // namespace
}  // namespace ravelo
