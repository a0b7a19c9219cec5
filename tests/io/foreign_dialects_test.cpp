// Forms of the foreign formats that other tools write besides the common one.
#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using ForeignDialects = IoTest;

const char* const kHuginClass = R"(% one class, no instances
class lawn
{
    inputs = ();
    outputs = ();
    node_size = (80 40);
    node rain
    {
        label = "Rain?";
        states = ("yes" "no");
    }
    potential (wet | rain)
    {
        data = (( 0.9 0.1 )   % rain=yes
                ( 0.2 0.8 ));
    }
    node wet
    {
        states = ("yes" "no");
    }
    potential (rain) { data = ( 0.3 0.7 ); }
}
)";

TEST_F(ForeignDialects, HuginClassWithoutInstancesReadsAsANet) {
    Net* net = read_ok("lawn.net", kHuginClass);
    EXPECT_EQ(net->name, "lawn");
    ASSERT_EQ(net->nodes.nodes.size(), 2u);
    const Node* wet = net->find("wet");
    ASSERT_NE(wet, nullptr);
    ASSERT_EQ(wet->parents.nodes.size(), 1u);
    EXPECT_FLOAT_EQ(row_of_node(*wet, {1})[0], 0.2f);
    EXPECT_EQ(net->find("rain")->title, "Rain?");
    // The class's attributes other than its interface lists are kept and written back.
    EXPECT_NE(write_text(net, "out.net").find("node_size"), std::string::npos);
    EXPECT_EQ(write_text(net, "out.net").find("inputs"), std::string::npos);
}

// Words, strings and lists keep their form through a read and a write: other tools tell
// "interval" from a string, and read a list only as a list.
TEST_F(ForeignDialects, HuginAttributeValuesKeepTheirForm) {
    Net* net = read_ok("forms.net", R"(net { node_size = (80 40); HR_Grid_X = "10"; }
node b { states = ("lo" "hi"); subtype = interval; state_values = (0 5 10); HR_Desc = "a \"b\""; }
potential (b) { data = (0.5 0.5); }
)");
    std::string text = write_text(net, "out.net");
    for (const char* kept : {"node_size = (80 40);", "HR_Grid_X = \"10\";", "subtype = interval;",
                             "state_values = (0 5 10);", "HR_Desc = \"a \\\"b\\\"\";"})
        EXPECT_NE(text.find(kept), std::string::npos) << kept << "\n" << text;
    Net* again = read_ok("again.net", text);
    EXPECT_EQ(write_text(again, "out.net"), text);
}

TEST_F(ForeignDialects, HuginInstancesAndUnclosedClassesAreRefusedWithTheirLine) {
    EXPECT_EQ(read_text("oo.net", "class outer\n{\n  instance inner : lawn ();\n}\n"), nullptr);
    EXPECT_NE(last_message().find("instances of object-oriented classes can't be read (line 3"),
              std::string::npos);
    EXPECT_EQ(read_text("open.net", "class open\n{\n  node a { states = (\"x\"); }\n"), nullptr);
    EXPECT_NE(last_message().find("the end of the file"), std::string::npos);
}

TEST_F(ForeignDialects, XmlDocumentTypeWithInternalSubsetIsSkipped) {
    const char* text = R"(<?xml version="1.0"?>
<!DOCTYPE BIF [
    <!ELEMENT BIF ( NETWORK )*>
    <!ATTLIST BIF VERSION CDATA #REQUIRED>
    <!-- the subset's own '>' and "quoted ]>" text do not end it -->
]>
<BIF VERSION="0.3"><NETWORK><NAME>dog</NAME>
<VARIABLE TYPE="nature"><NAME>out</NAME><OUTCOME>t</OUTCOME><OUTCOME>f</OUTCOME></VARIABLE>
<DEFINITION><FOR>out</FOR><TABLE>0.15 0.85</TABLE></DEFINITION>
</NETWORK></BIF>
)";
    Net* net = read_ok("dog.xml", text);
    EXPECT_FLOAT_EQ(net->find("out")->cpt[0], 0.15f);
    EXPECT_EQ(read_text("bad.xml", "<!DOCTYPE BIF [ <!ELEMENT BIF ANY>\n"), nullptr);
    EXPECT_NE(last_message().find("declaration is never closed"), std::string::npos);
}

std::string xdsl_with(const std::string& noisy) {
    return R"(<?xml version="1.0"?>
<smile version="1.0" id="causes"><nodes>
<cpt id="a"><state id="on"/><state id="off"/><probabilities>0.5 0.5</probabilities></cpt>
<cpt id="b"><state id="hi"/><state id="mid"/><state id="lo"/><probabilities>0.2 0.3 0.5</probabilities></cpt>
)" + noisy + "\n</nodes></smile>\n";
}

// Each cause alone moves the effect up from its last (distinguished) state; the effect is
// the most severe of what the causes and the leak produce.
TEST_F(ForeignDialects, XdslNoisyMaxBecomesTheCombinedTable) {
    Net* net = read_ok("or.xdsl", xdsl_with(R"(<noisymax id="e"><state id="yes"/><state id="no"/>
<parents>a b</parents><strengths>0 1 0 1 2</strengths>
<parameters>0.8 0.2 0 1  0.6 0.4 0.3 0.7 0 1  0.1 0.9</parameters></noisymax>)"));
    const Node& e = *net->find("e");
    // a=on, b=hi: 1 - 0.2 * 0.4 * 0.9; a=off, b=lo: the leak alone.
    EXPECT_NEAR(row_of_node(e, {0, 0})[0], 1 - 0.2 * 0.4 * 0.9, 1e-6);
    EXPECT_NEAR(row_of_node(e, {0, 1})[0], 1 - 0.2 * 0.7 * 0.9, 1e-6);
    EXPECT_NEAR(row_of_node(e, {1, 2})[0], 0.1, 1e-6);
    EXPECT_NEAR(row_of_node(e, {1, 2})[1], 0.9, 1e-6);

    // The same node with the distinguished states' fixed rows left out, and b's strength order
    // reversed for its first two states.
    net = read_ok("short.xdsl", xdsl_with(R"(<noisymax id="e"><state id="yes"/><state id="no"/>
<parents>a b</parents><strengths>0 1 1 0 2</strengths>
<parameters>0.8 0.2  0.3 0.7 0.6 0.4  0.1 0.9</parameters></noisymax>)"));
    EXPECT_NEAR(row_of_node(*net->find("e"), {0, 0})[0], 1 - 0.2 * 0.4 * 0.9, 1e-6);
    EXPECT_NEAR(row_of_node(*net->find("e"), {0, 1})[0], 1 - 0.2 * 0.7 * 0.9, 1e-6);
}

TEST_F(ForeignDialects, XdslNoisyMaxOverThreeSeverities) {
    Net* net = read_ok("max.xdsl", xdsl_with(R"(<noisymax id="e"><state id="severe"/><state id="mild"/><state id="none"/>
<parents>a</parents>
<parameters>0.5 0.3 0.2 0 0 1  0.1 0.2 0.7</parameters></noisymax>)"));
    const float* row = row_of_node(*net->find("e"), {0});
    // P(at most mild) = 0.5 * 0.9, P(none) = 0.2 * 0.7.
    EXPECT_NEAR(row[0], 1 - 0.5 * 0.9, 1e-6);
    EXPECT_NEAR(row[1], 0.5 * 0.9 - 0.2 * 0.7, 1e-6);
    EXPECT_NEAR(row[2], 0.2 * 0.7, 1e-6);
    EXPECT_EQ(read_text("bad.xdsl", xdsl_with(R"(<noisymax id="e"><state id="y"/><state id="n"/>
<parents>a</parents><parameters>0.5 0.5</parameters></noisymax>)")), nullptr);
    EXPECT_NE(last_message().find("noisy-MAX node 'e' has 2 parameters, but there should be 6"),
              std::string::npos);
}

}  // namespace
}  // namespace ravelo::testing
