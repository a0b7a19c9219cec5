#include <gtest/gtest.h>

#include "base/environment.h"
#include "base/failure.h"
#include "base/listener.h"
#include "base/report.h"
#include "base/thread_state.h"

namespace ravelo {
namespace {

class ListenerTest : public ::testing::Test {
protected:
    void SetUp() override {
        env = create_environment();
        env->life_state = kLifeInitialized;
        set_current_environment(env);
        current_function_text() = "DeleteNode_bn";
    }
    void TearDown() override {
        current_function_text().clear();
        drop_all_reports(*env);
        env->store.clear();
        retire_environment(*env);
    }
    Report* only_report() {
        Report* r = next_report(*env, kNullError, nullptr);
        EXPECT_NE(r, nullptr);
        EXPECT_EQ(next_report(*env, kNullError, r), nullptr);
        return r;
    }
    Environment* env = nullptr;
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

TEST_F(ListenerTest, OutOfRangeResult) {
    EXPECT_EQ(run_listener("Bnet", "Net1", 1, [] { return -1001; }), -1001);
    Report* r = only_report();
    EXPECT_EQ(r->number, -3637);
    EXPECT_EQ(r->message, "callback function for net_bn 'Net1' CREATE_EVENT, returned an "
                          "out-of-range (<-1000) value");
}

TEST_F(ListenerTest, ThrownFailureIsReportedWithItsTextAndItsReportRemoved) {
    EXPECT_EQ(run_listener("Bnode", "B", 2, []() -> int { fail(77, "inner trouble"); }), -1002);
    Report* r = only_report();
    EXPECT_EQ(r->number, -3636);
    EXPECT_EQ(r->message, "callback function for node_bn 'B' DUPLICATE_EVENT, threw an exception.  "
                          "inner trouble");
    EXPECT_EQ(r->function, "DeleteNode_bn");
}

TEST_F(ListenerTest, OtherNegativeResultsAndUnknownEvents) {
    EXPECT_EQ(run_listener("Bnode", "C", 9, [] { return -5; }), -5);
    Report* r = only_report();
    EXPECT_EQ(r->number, -5173);
    EXPECT_EQ(r->message, "callback function for node_bn 'C' UNKNOWN_EVENT, returned negative (-5)");
}

}  // namespace
}  // namespace ravelo
