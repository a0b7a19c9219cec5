#include <gtest/gtest.h>

#include <cfenv>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "base/frame.h"
#include "base/report.h"
#include "base/thread_state.h"
#include "ravelo/ravelo.h"

namespace ravelo {
namespace {

class FrameTest : public ::testing::Test {
protected:
    void SetUp() override {
        env = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
        ASSERT_NE(env, nullptr);
        char mesg[MESG_LEN_ns];
        ASSERT_EQ(InitRavelo2_bn(env, mesg), 0);
    }
    void TearDown() override {
        current_function_text().clear();
        char mesg[MESG_LEN_ns];
        EXPECT_EQ(CloseRavelo_bn(env, mesg), 0);
    }
    // The last report the thread holds in env.
    report_ns* last() {
        report_ns *r = nullptr, *found = nullptr;
        while ((r = GetError_ns(env, NULL_ERR, r)) != nullptr) found = r;
        return found;
    }
    int count() {
        int n = 0;
        for (report_ns* r = nullptr; (r = GetError_ns(env, NULL_ERR, r)) != nullptr;) ++n;
        return n;
    }
    size_t env_groups() { return core_of<Environment>(env)->report_groups.size(); }
    environ_ns* env = nullptr;
};

TEST_F(FrameTest, ReenteringTheInterfaceIsReportedAndTheCallStillRuns) {
    current_function_text() = "ReadNet_bn";
    EXPECT_EQ(ArgumentChecking_ns(static_cast<checking_ns>(-1), env), RegularCheck);
    EXPECT_EQ(current_function_text(), "ReadNet_bn");
    current_function_text().clear();
    report_ns* r = last();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(ErrorNumber_ns(r), 5114);
    EXPECT_STREQ(ErrorMessage_ns(r),
                 "Thread is calling a Ravelo API function ArgumentChecking_ns before the previous "
                 "one ReadNet_bn is finished.");
}

TEST_F(FrameTest, CallbackMarkerAllowsNestedCalls) {
    current_function_text() = "Callback of ReadNet_bn: ";
    report_ns* made = NewError_ns(7, NOTICE_ERR, static_cast<errcond_ns>(0), "from %s", "callback");
    EXPECT_EQ(current_function_text(), "Callback of ReadNet_bn: ");
    current_function_text().clear();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(count(), 1);  // no re-entry report
    EXPECT_EQ(core_of<Report>(made)->function, "Callback of ReadNet_bn: NewError_ns");
    EXPECT_STREQ(ErrorMessage_ns(made), "from callback");
}

TEST_F(FrameTest, FloatingPointStateIsMaskedInsideAndRestoredAfter) {
    std::fesetround(FE_UPWARD);
    feenableexcept(FE_DIVBYZERO);
    std::feraiseexcept(FE_INEXACT);
    EXPECT_EQ(TestFaultRecovery_ns(env, 3), 1);  // divides by zero without a trap
    EXPECT_EQ(TestFaultRecovery_ns(env, 14), 1);
    int traps = fegetexcept();
    int round = std::fegetround();
    int pending = std::fetestexcept(FE_ALL_EXCEPT);
    fedisableexcept(FE_ALL_EXCEPT);
    std::fesetround(FE_TONEAREST);
    EXPECT_TRUE(traps & FE_DIVBYZERO);
    EXPECT_EQ(round, FE_UPWARD);
    EXPECT_EQ(pending, 0);
    EXPECT_EQ(count(), 0);
}

TEST_F(FrameTest, EnvironmentChecks) {
    environ_ns* fresh = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(ArgumentChecking_ns(static_cast<checking_ns>(-1), fresh), static_cast<checking_ns>(-1));
    report_ns* r = last();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(ErrorNumber_ns(r), 5101);
    EXPECT_STREQ(ErrorMessage_ns(r),
                 "This function was called before Ravelo finished initialization, or while it was "
                 "closing");
    char mesg[MESG_LEN_ns];
    EXPECT_EQ(CloseRavelo_bn(fresh, mesg), 0);
    EXPECT_EQ(SetLanguage_ns(-1, fresh), -1);
    r = last();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(ErrorNumber_ns(r), 5139);
    EXPECT_STREQ(ErrorMessage_ns(r), "deleted or damaged environ_ns passed");
    EXPECT_EQ(SetLanguage_ns(-1, nullptr), 1);  // NULL stands for the default environment
}

TEST_F(FrameTest, GuardTurnsStrayFailuresIntoReports) {
    ArgumentChecking_ns(static_cast<checking_ns>(-1), env);  // makes env the thread's current one
    {
        ApiFrame frame("SomeFunction_bn");
        frame.environment(env);
        EXPECT_EQ(frame.run(-1, []() -> int { throw std::runtime_error("boom"); }), -1);
        EXPECT_EQ(frame.run(-1, []() -> int { throw 42; }), -1);
        EXPECT_EQ(frame.run(-1, []() -> int { throw std::bad_alloc(); }), -1);
        EXPECT_EQ(frame.run(-1, []() -> int { fail(1234, "ended %d", 1); }), -1);
        EXPECT_EQ(frame.run(-1, [] { return 8; }), 8);
    }
    report_ns* r = GetError_ns(env, NULL_ERR, nullptr);
    ASSERT_NE(r, nullptr);
    EXPECT_STREQ(ErrorMessage_ns(r), "unhandled standard library error: boom");
    EXPECT_EQ(ErrorSeverity_ns(r), INTERNAL_ERR);
    r = GetError_ns(env, NULL_ERR, r);
    ASSERT_NE(r, nullptr);
    EXPECT_STREQ(ErrorMessage_ns(r), "unhandled system-level error");
    r = GetError_ns(env, NULL_ERR, r);
    ASSERT_NE(r, nullptr);
    EXPECT_STREQ(ErrorMessage_ns(r), "not enough memory to finish function SomeFunction_bn");
    EXPECT_TRUE(ErrorCategory_ns(OUT_OF_MEMORY_CND, r));
    r = GetError_ns(env, NULL_ERR, r);
    ASSERT_NE(r, nullptr);
    EXPECT_STREQ(ErrorMessage_ns(r), "ended 1");
    EXPECT_EQ(GetError_ns(env, NULL_ERR, r), nullptr);
}

void* exhausted_heap(std::size_t) { return nullptr; }

TEST_F(FrameTest, FunctionThatCannotStartForLackOfMemory) {
    set_memory_reserve_source(exhausted_heap);
    spend_memory_reserve();
    checking_ns result = ArgumentChecking_ns(static_cast<checking_ns>(-1), env);
    set_memory_reserve_source(nullptr);
    EXPECT_EQ(result, static_cast<checking_ns>(-1));
    report_ns* r = last();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(ErrorNumber_ns(r), 5134);
    EXPECT_STREQ(ErrorMessage_ns(r), "not enough memory left to even start function ArgumentChecking_ns");
    EXPECT_TRUE(ErrorCategory_ns(OUT_OF_MEMORY_CND, r));
    EXPECT_EQ(ArgumentChecking_ns(static_cast<checking_ns>(-1), env), RegularCheck);  // reserve back
}

TEST_F(FrameTest, ClosingFromInsideACallbackIsRefused) {
    current_function_text() = "Callback of DeleteNet_bn: ";
    char mesg[MESG_LEN_ns];
    EXPECT_LT(CloseRavelo_bn(env, mesg), 0);
    current_function_text().clear();
    EXPECT_STREQ(mesg, "Not closing Ravelo because user-claimed object won't close.\n");
    EXPECT_EQ(SetLanguage_ns(-1, env), 1);  // still open
}

TEST_F(FrameTest, TheTableHoldsAtMostAHundredEnvironments) {
    std::vector<environ_ns*> more;
    while (environ_ns* e = NewRaveloEnviron_ns(nullptr, nullptr, nullptr)) more.push_back(e);
    char mesg[MESG_LEN_ns];
    for (environ_ns* e : more) CloseRavelo_bn(e, mesg);
    EXPECT_EQ(more.size(), 99u);
    report_ns* r = last();
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(ErrorSeverity_ns(r), INTERNAL_ERR);
    std::string text = ErrorMessage_ns(r);
    EXPECT_EQ(text.rfind("env-", 0), 0u) << text;
    EXPECT_NE(text.find(" (NumEnvs < MAX_NUM_ENVIROS)."), std::string::npos) << text;
}

TEST_F(FrameTest, ThreadsCallingAtOnceKeepTheirOwnReports) {
    constexpr int kEach = 200;
    auto work = [&](int number, int* seen) {
        for (int i = 0; i < kEach; ++i) NewError_ns(number, NOTICE_ERR, static_cast<errcond_ns>(0), "n");
        for (report_ns* r = nullptr; (r = GetError_ns(env, NULL_ERR, r)) != nullptr;)
            if (ErrorNumber_ns(r) == number) ++*seen;
            else *seen = -100000;
    };
    int seen_a = 0, seen_b = 0;
    std::thread a(work, 501, &seen_a), b(work, 502, &seen_b);
    a.join();
    b.join();
    ClearErrors_ns(env, INTERNAL_ERR);  // every thread's reports
    EXPECT_EQ(env_groups(), 0u);
    EXPECT_EQ(seen_a, kEach);
    EXPECT_EQ(seen_b, kEach);
}

TEST_F(FrameTest, HandlesAreCheckedByTag) {
    std::uint16_t not_a_report[8] = {kNetType};
    EXPECT_EQ(ErrorMessage_ns(reinterpret_cast<report_ns*>(not_a_report)), nullptr);
    report_ns* r = last();
    ASSERT_NE(r, nullptr);
    EXPECT_STREQ(ErrorMessage_ns(r), "deleted or damaged report_ns passed");
    report_ns* gone = NewError_ns(9, WARNING_ERR, static_cast<errcond_ns>(0), "soon cleared");
    ClearError_ns(gone);
    ClearErrors_ns(env, INTERNAL_ERR);
    EXPECT_EQ(ErrorSeverity_ns(gone), NULL_ERR);
    EXPECT_EQ(ErrorNumber_ns(last()), 5150);
}

}  // namespace
}  // namespace ravelo
