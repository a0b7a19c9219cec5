// Dynamic nets in files: link delays, persistence and the net's dimensions
// read, written and read again; the reports of faulty ones; and the formats
// that can't carry delays.
#include "io/io_fixture.h"
#include "net/ops.h"

namespace ravelo::testing {
namespace {

using DynamicNetFiles = IoTest;

// Weather follows itself, and Temp the weather of the step before.
const char* const kDynamic =
    "// ~->[DNET-1]->~\n\n"
    "bnet Dyn {\n"
    "numdimensions = 3;\n"
    "node Weather { states = (dry, wet); parents = (Weather, Temp); inputs = (before, temp);\n"
    "    delays = (1, \"dt * 2\"); persist = (1, 0.5, INFINITY); position = (1, 2, 3); };\n"
    "node Temp { states = (cold, warm); parents = (Weather, Other); delays = (0, \"\");\n"
    "    position = (4, 5, 6); };\n"
    "node Other { states = (a, b); };\n"
    "};\n";

std::vector<std::string> delays_of(const Node& node) {
    std::vector<std::string> out;
    for (size_t k = 0; k < node.parents.nodes.size(); ++k) out.push_back(link_delay(node, k));
    return out;
}

// Messages of the warnings made since the last clear, in order.
std::vector<std::string> warnings(environ_ns* env) {
    std::vector<std::string> out;
    const report_ns* r = nullptr;
    while ((r = GetError_ns(env, WARNING_ERR, r)) != nullptr)
        if (ErrorSeverity_ns(r) == WARNING_ERR) out.push_back(ErrorMessage_ns(r));
    return out;
}

TEST_F(DynamicNetFiles, WriteThenReadGivesTheSameNet) {
    Net* net = read_ok("dyn.dne", kDynamic);
    Node *weather = net->find("Weather"), *temp = net->find("Temp");
    EXPECT_EQ(net->dimensions, 3);
    EXPECT_EQ(delays_of(*weather), (std::vector<std::string>{"1", "dt * 2"}));
    EXPECT_EQ(delays_of(*temp), (std::vector<std::string>{"0", ""}));
    EXPECT_FALSE(is_delayed_link(*temp, 0));
    EXPECT_EQ(weather->persistence, (std::vector<double>{1, 0.5, infinity_value()}));
    EXPECT_TRUE(temp->persistence.empty());

    std::string text = write_text(net, "dyn.dne");
    EXPECT_NE(text.find("delays = (1, \"dt * 2\");"), std::string::npos) << text;
    EXPECT_NE(text.find("delays = (0, \"\");"), std::string::npos) << text;
    Net* again = read_ok("dyn.dne", text);
    EXPECT_EQ(write_text(again, "dyn.dne"), text);
}

TEST_F(DynamicNetFiles, FaultyDelaysAndPersistenceAreRefused) {
    struct BadFile {
        const char* body;
        const char* message;
    };
    const BadFile cases[] = {
        {"node A { states = (a, b); parents = (A); delays = (1, 2); };",
         "there are 1 input names but other indications (e.g. delay equations) are for 2 parents"},
        {"node A { states = (a, b); parents = (A); delays = (-1); };",
         "the delay of the link from node 'A' to node 'A' is negative (-1)"},
        {"node A { states = (a, b); parents = (A); delays = ((1)); };", "illegal punctuation '('"},
        {"node A { states = (a, b); persist = (1); };", "there are 1 entries, but 2 dimensions in net 'Bad'"},
        {"node A { states = (a, b); persist = (1, x); };",
         "should give a numeric value, but this gives a text value"},
        {"node A { states = (a, b); parents = (A); };",
         "can't connect node 'A' to node 'A', because that would result in a directed cycle (with no time "
         "delays)"},
    };
    for (const BadFile& c : cases) {
        SCOPED_TRACE(c.body);
        std::string text = std::string("// ~->[DNET-1]->~\n\nbnet Bad {\n") + c.body + "\n};\n";
        EXPECT_EQ(read_text("bad.dne", text), nullptr);
        std::string message = last_message();
        EXPECT_NE(message.find(c.message), std::string::npos) << message;
        EXPECT_NE(message.find("(line 4 of 'bad.dne')"), std::string::npos) << message;
        EXPECT_TRUE(core_of<Environment>(env)->nets.empty());
    }
}

TEST_F(DynamicNetFiles, EveryBadLinkIsNamedBeforeTheFileIsRefused) {
    const char* text =
        "// ~->[DNET-1]->~\n\nbnet Bad {\n"
        "node A { states = (a, b); parents = (B); };\n"
        "node B { states = (a, b); parents = (A); };\n"
        "node C { states = (a, b); parents = (A, A); delays = (1, 2); };\n"
        "node D { states = (a, b); parents = (D); delays = (1); };\n"
        "};\n";
    EXPECT_EQ(read_text("bad.dne", text), nullptr);
    EXPECT_EQ(warnings(env), (std::vector<std::string>{
                                 "connecting node 'A' to node 'B' results in a directed cycle (with no time "
                                 "delays) (line 5 of 'bad.dne')",
                                 "connecting node 'A' to node 'C' results in multiple links between the same two "
                                 "nodes (line 6 of 'bad.dne')"}));
    EXPECT_EQ(last_message(),
              "can't connect node 'A' to node 'B', because that would result in a directed cycle (with no time "
              "delays) (line 5 of 'bad.dne')");
    EXPECT_TRUE(core_of<Environment>(env)->nets.empty());
}

TEST_F(DynamicNetFiles, FormatsWithoutDelaysRefuseThem) {
    Net* net = read_ok("dyn.dne", kDynamic);
    for (const char* name : {"dyn.bif", "dyn.xmlbif", "dyn.net", "dyn.uai"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(write_text(net, name), "");
        EXPECT_EQ(last_message(),
                  std::string("can't write net 'Dyn' to file '") + name +
                      "', because the link from node 'Weather' to node 'Weather' has a time delay, which that "
                      "format can't express");
    }
    // A delay of zero is no delay, so dropping its text loses nothing.
    disconnect(*net->find("Weather"), 1);
    disconnect(*net->find("Weather"), 0);
    EXPECT_NE(write_text(net, "dyn.bif"), "");
    EXPECT_EQ(last_message(), "");
}

// Rain follows itself and Wet (at once); Wet follows Rain a step later.
TEST_F(DynamicNetFiles, NothingLoopsOnACycleThroughADelay) {
    Net* core = read_ok("cyc.dne",
                          "// ~->[DNET-1]->~\n\nbnet Cyc {\n"
                          "node Rain { states = (yes, no); parents = (Rain, Wet); inputs = (before, wet);\n"
                          "    delays = (1, 0); equation = \"Rain (before, wet) = wet\"; };\n"
                          "node Wet { states = (yes, no); parents = (Rain); delays = (1); functable = (yes, no); };\n"
                          "node Umbrella { states = (yes, no); parents = (Wet); functable = (yes, no); };\n"
                          "};\n");
    net_bn* net = handle_of(core);
    node_bn *rain = GetNodeNamed_bn("Rain", net), *wet = GetNodeNamed_bn("Wet", net);
    EquationToTable_bn(rain, 1, 0, 0);
    EXPECT_EQ(last_message(), "");
    EXPECT_EQ(core->find("Rain")->func_states, (std::vector<int>{0, 1, 0, 1}));
    // What findings fix follows undelayed links only: a delayed parent is of another time.
    EnterFinding_bn(wet, 1);
    EXPECT_EQ(CalcNodeState_bn(GetNodeNamed_bn("Umbrella", net)), 1);
    EXPECT_EQ(CalcNodeState_bn(rain), UNDEF_STATE);
    EXPECT_EQ(CalcNodeState_bn(wet), 1);
    RetractNodeFindings_bn(wet);
    EXPECT_EQ(CalcNodeState_bn(wet), UNDEF_STATE);
    EnterFinding_bn(rain, 0);
    EXPECT_EQ(last_message(), "");

    nodelist_bn* related = NewNodeList2_bn(0, net);
    GetRelatedNodes_bn(related, "ancestors", rain);
    EXPECT_EQ(LengthNodeList_bn(related), 1);
    EXPECT_EQ(IsNodeRelated_bn(wet, "descendents", rain), 1);
    DeleteNodeList_bn(related);

    net_bn* copy = CopyNet_bn(net, "Copy", env, "");
    ASSERT_NE(copy, nullptr) << last_message();
    Node* copied_rain = core_of<Net>(copy)->find("Rain");
    EXPECT_EQ(copied_rain->parents.nodes[0], copied_rain);
    EXPECT_EQ(delays_of(*copied_rain), (std::vector<std::string>{"1", "0"}));
    EXPECT_EQ(delays_of(*core_of<Net>(copy)->find("Wet")), (std::vector<std::string>{"1"}));
    // Deleting a node that follows itself leaves a stand-in only for its other child.
    DeleteNode_bn(rain);
    EXPECT_EQ(last_message(), "");
    node_bn* stand_in = GetNodeNamed_bn("Rain", net);
    ASSERT_NE(stand_in, nullptr);
    EXPECT_EQ(GetNodeKind_bn(stand_in), DISCONNECTED_NODE);
    EXPECT_EQ(LengthNodeList_bn(GetNodeChildren_bn(stand_in)), 1);
    EXPECT_EQ(link_delay(*core->find("Wet"), 0), "1");
}

}  // namespace
}  // namespace ravelo::testing
