#include "infer/order_report.h"

#include "infer/compile.h"
#include "net_fixture.h"

namespace ravelo {
namespace {

using OrderReportTest = NetTest;

// Each line's form changes with the size; the boundaries are where a report is misread.
TEST(OrderReport, MemoryAndTimeFormsFollowTheSize) {
    EXPECT_EQ(requirements_text(56), "Max Required:\n Memory = 1 KB\n   Time = 1 ms\n");
    EXPECT_EQ(requirements_text(8603748), "Max Required:\n Memory = 65.64 MB\n   Time = 13 ms\n");
    EXPECT_EQ(requirements_text(1e9), "Max Required:\n Memory = 7629.39 MB\n   Time = 1.50 sec (with sufficient RAM)\n");
    EXPECT_EQ(requirements_text(6e12), "Max Required:\n Memory = 4.57764e+07 MB\n   Time = 2.5 hour (with sufficient RAM)\n");
    // Just under and just over one megabyte of tables.
    EXPECT_EQ(requirements_text(131000).substr(14, 18), " Memory = 1024 KB\n");
    EXPECT_EQ(requirements_text(131072).substr(14, 18), " Memory = 1.00 MB\n");
}

TEST_F(OrderReportTest, ReportingCompileNamesTheOrderAndRequirements) {
    Node* a = node("a", 2);
    Node* b = node("b", 3, {a});
    node("c", 2, {a, b});
    CompileOptions options;
    options.report = true;
    compile_net(*net, options);
    std::string all;
    for (const Report* r = next_report(*env, 0, nullptr); r; r = next_report(*env, 0, r))
        all += r->message;
    EXPECT_NE(all.find("Compiled to 1 cliques, with total table size (including sepsets) of 12.\n"),
              std::string::npos);
    EXPECT_NE(all.find("Elimination order of net 'testnet': a b c\n1 cliques, the largest with 12 entries\n"
                       "Max Required:\n Memory = 1 KB\n   Time = 1 ms\n"),
              std::string::npos) << all;
}

}  // namespace
}  // namespace ravelo
