#include <gtest/gtest.h>

#include <thread>

#include "base/failure.h"
#include "base/listener.h"
#include "base/thread_state.h"
#include "env_fixture.h"

namespace ravelo {
namespace {

class ReportsTest : public EnvTest {
protected:
    void SetUp() override {
        EnvTest::SetUp();
        env->report_limit = 8;
    }
};

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

// Listeners run through a guard that reports what they return or throw.
class ListenerTest : public EnvTest {
protected:
    void SetUp() override {
        EnvTest::SetUp();
        current_function_text() = "DeleteNode_bn";
    }
    void TearDown() override {
        current_function_text().clear();
        EnvTest::TearDown();
    }
    Report* only_report() {
        Report* r = next_report(*env, kNullError, nullptr);
        EXPECT_NE(r, nullptr);
        EXPECT_EQ(next_report(*env, kNullError, r), nullptr);
        return r;
    }
};

TEST_F(ListenerTest, AcceptedResultsPassThroughWithTheMarkerInPlace) {
    std::string seen;
    int result = run_listener("Bnode", "A", 4, [&] {
        seen = current_function_text();
        return 7;
    });
    EXPECT_EQ(result, 7);
    EXPECT_EQ(seen, "Callback of DeleteNode_bn: ");
    EXPECT_EQ(current_function_text(), "DeleteNode_bn");
    EXPECT_EQ(run_listener("Bnet", "N", 1, [] { return -1003; }), -1003);  // silent failure
    EXPECT_EQ(next_report(*env, kNullError, nullptr), nullptr);
}

TEST_F(ListenerTest, NestedCallbackNamesTheFunctionRunningInside) {
    std::string inner;
    current_function_text() = "Callback of DeleteNet_bn: DeleteNode_bn";
    run_listener("Bnode", "A", 4, [&] {
        inner = current_function_text();
        return 0;
    });
    EXPECT_EQ(inner, "Callback of DeleteNode_bn: ");
}

TEST_F(ListenerTest, OutOfRangeOrNegativeResultsAreReported) {
    EXPECT_EQ(run_listener("Bnet", "Net1", 1, [] { return -1001; }), -1001);
    EXPECT_EQ(only_report()->message, "callback function for net_bn 'Net1' CREATE_EVENT, returned an "
                                      "out-of-range (<-1000) value");
    EXPECT_EQ(only_report()->number, -3637);
    drop_all_reports(*env);
    EXPECT_EQ(run_listener("Bnode", "C", 9, [] { return -5; }), -5);
    EXPECT_EQ(only_report()->number, -5173);
    EXPECT_EQ(only_report()->message, "callback function for node_bn 'C' UNKNOWN_EVENT, returned negative (-5)");
}

TEST_F(ListenerTest, ThrownFailureIsReportedWithItsTextAndItsReportRemoved) {
    EXPECT_EQ(run_listener("Bnode", "B", 2, []() -> int { fail(77, "inner trouble"); }), -1002);
    Report* r = only_report();
    EXPECT_EQ(r->number, -3636);
    EXPECT_EQ(r->message, "callback function for node_bn 'B' DUPLICATE_EVENT, threw an exception.  "
                          "inner trouble");
    EXPECT_EQ(r->function, "DeleteNode_bn");
}

}  // namespace
}  // namespace ravelo
