#include <gtest/gtest.h>

#include <thread>

#include "base/environment.h"
#include "base/failure.h"
#include "base/report.h"
#include "base/thread_state.h"

namespace ravelo {
namespace {

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

TEST_F(ReportsTest, LesserReportsAreCutOffFirst) {
    for (int i = 0; i < 4; ++i) EXPECT_FALSE(is_stock_report(notice(1, "n%d", i)));
    Report* dropped = notice(1, "dropped");  // 4 >= L/2
    EXPECT_TRUE(is_stock_report(dropped));
    EXPECT_EQ(dropped->severity, kNotice);
    EXPECT_FALSE(is_stock_report(warning(1, "a warning still fits")));
    Report* stock_warning = (warning(1, "w"), warning(1, "dropped"));
    EXPECT_TRUE(is_stock_report(stock_warning));
    EXPECT_EQ(stock_warning->severity, kWarning);
    EXPECT_EQ(stock_warning->tag, kReportType | kStaticBit);
    clear_report(stock_warning);  // stock reports live forever
    EXPECT_EQ(stock_warning->tag, kReportType | kStaticBit);
    clear_reports(*env, kNotice);  // the four notices go, two warnings stay
    EXPECT_FALSE(is_stock_report(notice(1, "room again")));
}

TEST_F(ReportsTest, GroupsHoldTheirReportsAndTakeTheHighestSeverity) {
    Report* before = notice(1, "before");
    Report* group;
    Report* inner_error;
    {
        ReportGroup outer(10, kNotice, "while reading");
        group = outer.report();
        warning(11, "first reason");
        {
            ReportGroup nested(12, kNotice, "in a part");
            inner_error = error_report(13, "second reason");
        }
    }
    Report* after = error_report(14, "after");
    EXPECT_EQ(group->severity, kError);
    EXPECT_EQ(group->contents.size(), 2u);
    EXPECT_EQ(inner_error->group->group, group);
    EXPECT_EQ(group->group->severity, kError);  // the root group rose too
    std::vector<Report*> order;
    for (Report* r = nullptr; (r = next_report(*env, kNullError, r)) != nullptr;) order.push_back(r);
    ASSERT_EQ(order.size(), 6u);
    EXPECT_EQ(order.front(), before);
    EXPECT_EQ(order[1], group);
    EXPECT_EQ(order[4], inner_error);
    EXPECT_EQ(order.back(), after);
    clear_reports(*env, kWarning);  // depth first: the error and its groups stay
    order.clear();
    for (Report* r = nullptr; (r = next_report(*env, kNullError, r)) != nullptr;) order.push_back(r);
    ASSERT_EQ(order.size(), 4u);
    EXPECT_EQ(order[0], group);
    EXPECT_EQ(order[2], inner_error);
    EXPECT_EQ(order[3], after);
    clear_report(group);
    EXPECT_EQ(next_report(*env, kNullError, nullptr), after);
    clear_report(after);
    EXPECT_EQ(next_report(*env, kNullError, nullptr), nullptr);
    EXPECT_TRUE(env->report_groups.empty());  // the emptied root group went too
}

TEST_F(ReportsTest, ReportsBelongToTheThreadThatMadeThem) {
    Report* mine = warning(1, "mine");
    std::thread::id other_id;
    std::thread other([&] {
        other_id = std::this_thread::get_id();
        set_current_environment(env);
        error_report(2, "theirs");
        EXPECT_EQ(next_report(*env, kNullError, nullptr)->message, "theirs");
    });
    other.join();
    EXPECT_EQ(next_report(*env, kNullError, nullptr), mine);
    EXPECT_EQ(next_report(*env, kNullError, mine), nullptr);
    EXPECT_EQ(env->report_groups.size(), 2u);
    clear_reports(*env, kInternalError, other_id);
    EXPECT_EQ(env->report_groups.size(), 1u);
    EXPECT_EQ(next_report(*env, kNullError, nullptr), mine);
}

TEST_F(ReportsTest, MessagesAndFunctionNamesAreBounded) {
    Report* r = error_report(1, "%s", std::string(2000, 'm').c_str());
    EXPECT_EQ(r->message.size(), 511u);
    current_function_text() = std::string(300, 'f');
    Report* named = warning(2, "named");
    current_function_text().clear();
    EXPECT_EQ(named->function, std::string(100, 'f'));
    EXPECT_EQ(named->display, 4);
    EXPECT_EQ(named->fixed_status, -1);
    EXPECT_EQ(named->display_result, 1);
}

TEST_F(ReportsTest, OutOfMemoryReportsAreWorded) {
    Report* plain = out_of_memory_report(5134, "left to even start function >-NewNet_bn");
    EXPECT_EQ(plain->message, "not enough memory left to even start function NewNet_bn");
    EXPECT_EQ(plain->conditions & kOutOfMemoryCondition, kOutOfMemoryCondition);
    EXPECT_EQ(plain->severity, kError);
    Report* sized = out_of_memory_report(3000, "for the junction tree", 4096);
    EXPECT_EQ(sized->message, "not enough memory for the junction tree (4096 bytes needed)");
}

TEST(ReportsWithoutEnvironment, GoToTheErrorStreamAndYieldTheCriticalReport) {
    Environment* unready = create_environment();  // life state 1: reports cannot attach
    set_current_environment(unready);
    testing::internal::CaptureStderr();
    Report* r = error_report(4321, "lost >-Bnet");
    std::string shown = testing::internal::GetCapturedStderr();
    set_current_environment(nullptr);
    retire_environment(*unready);
    EXPECT_EQ(r, critical_report());
    EXPECT_EQ(r->number, -2600);
    EXPECT_EQ(r->severity, kInternalError);
    EXPECT_EQ(shown, "\a\n*********\nRavelo Error 4321:\nlost net_bn\n*********\n");
}

}  // namespace
}  // namespace ravelo
