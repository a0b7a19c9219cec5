// Node definitions in net files: kept apart from the nodes, written back as
// declared, and never taken for real nodes.
#include "io/io_fixture.h"
#include "base/text.h"
#include "net/ops.h"

namespace ravelo::testing {
namespace {

using NodeDefinitions = IoTest;

const char* const kDefinitions = R"(// ~->[DNET-1]->~
bnet Lights {
define node Switch { kind = NATURE; discrete = TRUE; states = (off, on); probs = (0.5, 0.5); title = "a switch";
    visual V1 { style = "round"; }; user U1 { "made by" = "hand"; }; };
param node Dimmer : Switch { states = (low, mid, high); probs = (0.2, 0.3, 0.5); };
node Hall : Switch { title = "hall"; };
node Lamp : Dimmer { parents = (Hall); probs = ((1, 0, 0), (0, 0.5, 0.5)); };
node Door { states = (shut, open); parents = (Hall); probs = ((0.9, 0.1), (0.4, 0.6)); };
};
)";

std::string with_net(const std::string& body) { return "// ~->[DNET-1]->~\nbnet T {\n" + body + "\n};\n"; }

TEST_F(NodeDefinitions, SurviveAWriteAndReadAsTheSameDeclarations) {
    Net* net = read_ok("lights.dne", kDefinitions);
    ASSERT_EQ(net->definitions.size(), 2u);
    EXPECT_EQ(net->find("Hall")->inherits, "Switch");
    EXPECT_EQ(net->find("Door")->inherits, "");

    std::string text = write_text(net, "lights.dne");
    EXPECT_NE(text.find("\ndefine node Switch {\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\tvisual V1 {\n\t\tstyle = \"round\";\n\t\t};\n\tuser U1 {\n\t\t\"made by\" = \"hand\";"),
              std::string::npos) << text;
    EXPECT_NE(text.find("\nparam node Dimmer : Switch {\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nnode Lamp : Dimmer {\n"), std::string::npos) << text;
    // What Lamp inherits unchanged is not stated again.
    size_t lamp = text.find("\nnode Lamp");
    EXPECT_EQ(text.find("states = (low, mid, high)", lamp), std::string::npos) << text;

    Net* again = read_ok("lights.dne", text);
    ASSERT_EQ(again->definitions.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        const NodeDefinition &a = net->definitions[i], &b = again->definitions[i];
        EXPECT_EQ(std::tie(a.declarer, a.name, a.base, a.statements, a.objects),
                  std::tie(b.declarer, b.name, b.base, b.statements, b.objects));
    }
    ASSERT_EQ(again->nodes.nodes.size(), 3u);
    for (const Node* n : net->nodes.nodes) {
        const Node* m = again->find(n->name);
        ASSERT_NE(m, nullptr) << n->name;
        EXPECT_EQ(std::tie(m->inherits, m->title, m->cpt), std::tie(n->inherits, n->title, n->cpt));
    }
    EXPECT_EQ(write_text(again, "lights.dne"), text);
}

TEST_F(NodeDefinitions, ANodeChangedSinceReadingStatesWhatDiffers) {
    Net* net = read_ok("lights.dne", kDefinitions);
    node_bn* lamp = handle_of(net->find("Lamp"));
    SetNodeStateName_bn(lamp, 2, "bright");
    SetNodeTitle_bn(handle_of(net->find("Hall")), "");
    Net* again = read_ok("lights.dne", write_text(net, "lights.dne"));
    EXPECT_EQ(again->find("Lamp")->states[2].name, "bright");
    EXPECT_EQ(again->find("Lamp")->inherits, "Dimmer");
    // Hall lost the title it would inherit, so it is written on its own.
    EXPECT_EQ(again->find("Hall")->title, "");
    EXPECT_EQ(again->find("Hall")->inherits, "");

    DeleteNodeTables_bn(handle_of(again->find("Lamp")));
    Net* third = read_ok("lights.dne", write_text(again, "lights.dne"));
    EXPECT_TRUE(third->find("Lamp")->cpt.empty());
}

TEST_F(NodeDefinitions, CopiesKeepThem) {
    Net* net = read_ok("lights.dne", kDefinitions);
    net_bn* copy = CopyNet_bn(handle_of(net), "Copied", env, nullptr);
    ASSERT_NE(copy, nullptr) << last_message();
    std::string text = write_text(core_of<Net>(copy), "copy.dne");
    EXPECT_NE(text.find("\nparam node Dimmer : Switch {\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nnode Lamp : Dimmer {\n"), std::string::npos) << text;

    // Copied into a net without the definition, a node is written in full.
    Net* other = read_ok("other.dne", with_net("define node Hall { states = (x); };"));
    nodelist_bn* list = NewNodeList2_bn(0, handle_of(net));
    AddNodeToList_bn(handle_of(net->find("Hall")), list, LAST_ENTRY);
    CopyNodes_bn(list, handle_of(other), nullptr);
    DeleteNodeList_bn(list);
    ASSERT_EQ(other->nodes.nodes.size(), 1u);
    EXPECT_NE(other->nodes.nodes[0]->name, "Hall");  // the definition keeps its name
    Net* back = read_ok("other.dne", write_text(other, "other.dne"));
    EXPECT_EQ(back->nodes.nodes[0]->states[1].name, "on");
}

TEST_F(NodeDefinitions, InheritedProbabilitiesWaitForTheNodesOwnParents) {
    Net* net = read_ok("late.dne", with_net("define node D { states = (a, b); probs = ((1, 0), (0, 1)); };\n"
                                              "node A { states = (x, y); };\nnode B : D { parents = (A); };"));
    EXPECT_EQ(net->find("B")->cpt, (std::vector<float>{1, 0, 0, 1}));
}

constexpr const char* kUsedAsNode = "a node meant only for defining others (declared with 'define') 'D' appears";

TEST_F(NodeDefinitions, FaultyDefinitionsAreRefused) {
    const std::pair<const char*, const char*> cases[] = {
        {"define node D { states = (a); };\ndefine node D { states = (b); };", "duplicate node name 'D'"},
        {"node D { states = (a); };\ndefine node D { states = (b); };", "duplicate node name 'D'"},
        {"define node D { colour = red; };", "unknown field 'colour'"},
        {"define node D { probs = ((1, 0); };", "missing close parenthesis, starting"},
        {"node D { isdefine = maybe; };", "illegal value 'maybe'"},
        {"define node D { isdefine = FALSE; };", "illegal value 'FALSE'"},
        {"define node D : E { };", "declaration of node 'D' tries to inherit from a node not yet defined"},
        {"define node D { inputs = (u, v); };\nnode A { states = (x, y); };\nnode B : D { states = (a); parents = (A); };",
         "the number of parents (1) does not match the number of link names (2)"},
        {"define node D { states = (a); };\nnode B { states = (a); parents = (D); };", kUsedAsNode},
        {"define node D { states = (a); };\nNodeSet S { Nodes = (D); };", kUsedAsNode},
        {"define node D { states = (a); };\nElimOrder = (D);", kUsedAsNode},
    };
    std::string chain = "define node D0 { states = (a); };\n";
    for (int i = 1; i <= 70; ++i) chain += format("define node D%d : D%d { };\n", i, i - 1);
    EXPECT_EQ(read_text("chain.dne", with_net(chain)), nullptr);
    EXPECT_NE(last_message().find("inherits through more than 64 definitions"), std::string::npos);
    for (const auto& [body, message] : cases) {
        SCOPED_TRACE(body);
        EXPECT_EQ(read_text("bad.dne", with_net(body)), nullptr);
        EXPECT_NE(last_message().find(message), std::string::npos);
    }
    // "isdefine" marks a definition as the declaration word does, and is not inherited.
    Net* net = read_ok("flag.dne", with_net("node D { isdefine = TRUE; states = (a, b); };\nnode A : D { };"));
    EXPECT_EQ(net->definitions.size(), 1u);
    EXPECT_EQ(net->nodes.nodes.size(), 1u);
}

}  // namespace
}  // namespace ravelo::testing
