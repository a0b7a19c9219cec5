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
    Net* net = read_text("lawn.net", kHuginClass);
    ASSERT_NE(net, nullptr) << last_message();
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
    Net* net = read_text("dog.xml", text);
    ASSERT_NE(net, nullptr) << last_message();
    EXPECT_FLOAT_EQ(net->find("out")->cpt[0], 0.15f);
    EXPECT_EQ(read_text("bad.xml", "<!DOCTYPE BIF [ <!ELEMENT BIF ANY>\n"), nullptr);
    EXPECT_NE(last_message().find("declaration is never closed"), std::string::npos);
}

}  // namespace
}  // namespace ravelo::testing
