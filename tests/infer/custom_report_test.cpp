// Texts asked for as reports of their own are complete, however long, unlike engine reports.
#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using CustomReport = IoTest;

TEST_F(CustomReport, TheCompiledSectionHoldsTheWholeOrderOfALargeNet) {
    net_bn* net = handle_of(file_ok(data_path("hepar2.bif")));
    CompileNet_bn(net);
    const char* report = CreateCustomReport_bn(net, nullptr, "compiled", nullptr);
    ASSERT_NE(report, nullptr) << last_message();
    std::string text = report;
    EXPECT_GT(text.size(), 511u);
    EXPECT_EQ(text.rfind("Compiled to ", 0), 0u) << text;
    EXPECT_NE(text.find("Elimination order of net 'unknown':"), std::string::npos) << text;
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i)
        EXPECT_NE(text.find(std::string(" ") + GetNodeName_bn(NthNode_bn(nodes, i))), std::string::npos);
    EXPECT_NE(text.find("Max Required:\n Memory = "), std::string::npos);
    EXPECT_EQ(text.back(), '\n');

    // Sections repeat in the order asked for.
    std::string twice = CreateCustomReport_bn(net, nullptr, "compiled, compiled", nullptr);
    EXPECT_EQ(twice, text + text);
}

TEST_F(CustomReport, BadRequestsAreRefusedWithAReport) {
    net_bn* net = handle_of(read_ok("small.dne", "bnet Small { node A { states = (yes, no); }; };"));
    EXPECT_EQ(CreateCustomReport_bn(net, nullptr, "compiled", nullptr), nullptr);
    EXPECT_EQ(last_message(), "net_bn 'Small' has no junction tree (it is not yet compiled)");
    CompileNet_bn(net);
    last_message();
    EXPECT_EQ(CreateCustomReport_bn(net, nullptr, "compiled cliques", nullptr), nullptr);
    EXPECT_EQ(last_message(), "unknown report section 'cliques' (known: compiled)");
    nodelist_bn* list = NewNodeList2_bn(0, net);
    EXPECT_EQ(CreateCustomReport_bn(net, list, "compiled", nullptr), nullptr);
    EXPECT_NE(last_message().find("argument 'nodes' must be NULL"), std::string::npos);
    DeleteNodeList_bn(list);
    EXPECT_EQ(CreateCustomReport_bn(net, nullptr, nullptr, nullptr), nullptr);
    EXPECT_EQ(last_message(), "argument 'sections' is NULL");
    EXPECT_EQ(CreateCustomReport_bn(net, nullptr, "compiled", "fast"), nullptr);
    EXPECT_EQ(last_message(), "unknown report option 'fast'");
    EXPECT_EQ(CreateCustomReport_bn(nullptr, nullptr, "compiled", nullptr), nullptr);
    EXPECT_FALSE(last_message().empty());
}

}  // namespace
}  // namespace ravelo::testing
