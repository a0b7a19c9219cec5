#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using ForeignFormats = IoTest;

void expect_same_tables(const Net& a, const Net& b) {
    ASSERT_EQ(a.nodes.nodes.size(), b.nodes.nodes.size());
    for (size_t i = 0; i < a.nodes.nodes.size(); ++i) {
        const Node& x = *a.nodes.nodes[i];
        const Node& y = *b.nodes.nodes[i];
        SCOPED_TRACE(x.name);
        ASSERT_EQ(x.num_states(), y.num_states());
        ASSERT_EQ(x.parents.nodes.size(), y.parents.nodes.size());
        for (size_t p = 0; p < x.parents.nodes.size(); ++p)
            EXPECT_EQ(x.parents.nodes[p]->index, y.parents.nodes[p]->index);
        ASSERT_EQ(x.cpt.size(), y.cpt.size());
        for (size_t e = 0; e < x.cpt.size(); ++e) ASSERT_NEAR(x.cpt[e], y.cpt[e], 1e-6) << e;
        EXPECT_EQ(x.func_reals, y.func_reals);
    }
}

TEST_F(ForeignFormats, AlarmReadsTheSameInXmlAndHugin) {
    Net* bif = file_ok(data_path("alarm.bif"));
    Net* xml = file_ok(data_path("alarm.bifxml"));
    Net* hugin = file_ok(data_path("alarm.net"));
    // The BIF file is a variant of the net with other tables for some nodes,
    // so it shares only the structure.
    for (const Node* n : bif->nodes.nodes) ASSERT_NE(hugin->find(n->name), nullptr) << n->name;
    // The files list nodes in different orders: compare by name.  The XML sample lists some
    // nodes' parents in another order than their tables follow; only the others compare.
    ASSERT_EQ(xml->nodes.nodes.size(), hugin->nodes.nodes.size());
    for (const Node* n : hugin->nodes.nodes) {
        const Node* m = xml->find(n->name);
        ASSERT_NE(m, nullptr) << n->name;
        ASSERT_EQ(m->parents.nodes.size(), n->parents.nodes.size()) << n->name;
        bool same_order = true;
        for (size_t p = 0; p < n->parents.nodes.size(); ++p)
            same_order = same_order && m->parents.nodes[p]->name == n->parents.nodes[p]->name;
        if (!same_order) continue;
        ASSERT_EQ(m->cpt.size(), n->cpt.size()) << n->name;
        for (size_t e = 0; e < n->cpt.size(); ++e) ASSERT_NEAR(m->cpt[e], n->cpt[e], 1e-6) << n->name;
    }
}

TEST_F(ForeignFormats, UaiFactorsGiveTheChildLastAndTablesInNodeLayout) {
    Net* net = file_ok(data_path("asia.uai"));
    ASSERT_EQ(net->nodes.nodes.size(), 8u);
    const Node* v5 = net->find("v5");
    ASSERT_EQ(v5->parents.nodes.size(), 2u);
    EXPECT_EQ(v5->parents.nodes[0]->name, "v3");
    EXPECT_EQ(v5->parents.nodes[1]->name, "v4");
    EXPECT_EQ(v5->cpt, (std::vector<float>{1, 0, 1, 0, 1, 0, 0, 1}));
    EXPECT_EQ(net->name, "asia");
}

TEST_F(ForeignFormats, XdslKeepsTitlesAndPositions) {
    Net* net = file_ok(data_path("benefits.xdsl"));
    const Node* n = net->find("Business_planning");
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(n->title, "Business planning");
    EXPECT_TRUE(n->has_position);
    EXPECT_DOUBLE_EQ(n->vis_x, 571.5);
    const Node* pm = net->find("Project_management");
    EXPECT_EQ(pm->parents.nodes.size(), 4u);
    EXPECT_EQ(pm->cpt.size(), 32u);
}

TEST_F(ForeignFormats, EveryWritableFormatReadsBackToEqualTables) {
    Net* net = file_ok(data_path("child.bif"));
    for (const char* name : {"out.bif", "out.xml", "out.xmlbif", "out.bifxml", "out.net", "out.uai", "out.dne"}) {
        SCOPED_TRACE(name);
        Net* again = read_ok(name, write_text(net, name));
        expect_same_tables(*net, *again);
        if (std::string(name) != "out.uai") {
            // Foreign names come back as they were written.
            const Node* age = again->find("Age");
            ASSERT_NE(age, nullptr);
            EXPECT_EQ(age->states[0].title, "0-3_days");
        }
    }
}

TEST_F(ForeignFormats, XdslIsReadButNotWritten) {
    Net* net = read_file(data_path("asia.bif"));
    EXPECT_EQ(write_text(net, "out.xdsl"), "");
    EXPECT_NE(last_message().find("nets are not written in that format"), std::string::npos);
}

TEST_F(ForeignFormats, DecisionAndUtilityNodesCrossHugin) {
    Net* net = read_ok("d.net", R"(
        % a comment
        net { name = "Choice"; }
        node W { label = "Weather"; states = ("sun" "rain"); position = (10 20); }
        decision Go { states = ("yes" "no"); }
        utility U { }
        potential ( W ) { data = ( 0.7 0.3 ); }
        potential ( Go | W ) { }
        potential ( U | Go W ) { data = (( 10 -5 ) ( 0 0 )); }
    )");
    EXPECT_EQ(net->find("Go")->kind, NodeKind::Decision);
    const Node* u = net->find("U");
    EXPECT_EQ(u->kind, NodeKind::Utility);
    EXPECT_EQ(u->func_reals, (std::vector<double>{10, -5, 0, 0}));
    EXPECT_EQ(net->find("W")->title, "Weather");
    Net* again = read_ok("again.net", write_text(net, "again.net"));
    expect_same_tables(*net, *again);
    EXPECT_EQ(again->find("U")->kind, NodeKind::Utility);
}

struct BadForeign {
    const char* name;
    const char* text;
    const char* message;
};

TEST_F(ForeignFormats, FaultyFilesAreReportedWithTheirLine) {
    const BadForeign cases[] = {
        {"a.xml", "<BIF><NETWORK>\n<VARIABLE><NAME>A</NAME></VARIABLE></NETWORK></BIF>", "has no <OUTCOME> (line 2"},
        {"a.xml", "<BIF><NETWORK>\n<VARIABLE><NAME>A</NAME><OUTCOME>x</OUTCOME></NETWORK></BIF>",
         "</NETWORK> closes <VARIABLE>"},
        {"a.xml", "<BIF><NETWORK><VARIABLE><NAME>A</NAME><OUTCOME>x</OUTCOME></VARIABLE>\n"
                  "<DEFINITION><FOR>A</FOR><TABLE>0.5 0.5</TABLE></DEFINITION></NETWORK></BIF>",
         "table of 'A' has 2 entries, but there should be 1 (line 2"},
        {"a.xml", "<BIF><NETWORK>&bogus;</NETWORK></BIF>", "unknown entity '&bogus;'"},
        {"a.xml", "not xml at all", "not an XML document"},
        {"a.net", "node A { states = (\"a\" \"b\"); }\npotential ( A ) { data = ( 0.5 0.6 ); }",
         "sum of probabilities isn't 1 (100%) (line 2"},
        {"a.net", "node A { states = (\"a\" \"b\") }", "expected ';' but found '}'"},
        {"a.net", "node A { states = (\"a\" \"b\"); }\npotential ( A | B ) { }", "undefined node 'B'"},
        {"a.uai", "MARKOV\n1\n2\n1\n1 0\n2\n0.5 0.5\n", "only BAYES networks can be read"},
        {"a.uai", "BAYES\n1\n2\n1\n1 0\n2\n0.5\n", "'' is not a probability"},
        {"a.uai", "BAYES\n2\n2 2\n2\n2 1 0\n2 0 1\n4 1 0 0 1\n4 1 0 0 1\n", "directed cycle"},
        {"a.uai", "BAYES\n3\n1000 1000 1000\n3\n1 0\n1 1\n3 0 1 2\n", "too large"},
        {"a.xdsl", "<smile id=\"n\"><nodes><equation id=\"A\"/></nodes></smile>", "can't be read"},
    };
    for (const BadForeign& c : cases) {
        SCOPED_TRACE(c.text);
        size_t nets_before = core_of<Environment>(env)->nets.size();
        EXPECT_EQ(read_text(c.name, c.text), nullptr);
        std::string message = last_message();
        EXPECT_NE(message.find(c.message), std::string::npos) << message;
        EXPECT_NE(message.find(std::string("of '") + c.name + "')"), std::string::npos) << message;
        EXPECT_EQ(core_of<Environment>(env)->nets.size(), nets_before);
    }
}

TEST_F(ForeignFormats, HostileInputIsRefusedWithoutHarm) {
    std::string deep_xml = std::string(10000, '<') ;
    for (const char* name : {"g.bif", "g.xml", "g.net", "g.uai", "g.xdsl"}) {
        SCOPED_TRACE(name);
        std::string garbage;
        for (int i = 0; i < 2048; ++i) garbage.push_back(static_cast<char>((i * 131 + 7) % 256));
        EXPECT_EQ(read_text(name, garbage), nullptr);
        std::string nested;
        for (int i = 0; i < 5000; ++i) nested += "<a>";
        EXPECT_EQ(read_text(name, "<BIF>" + nested), nullptr);
        EXPECT_EQ(read_text(name, "potential ( A ) { data = " + std::string(5000, '(') + "; }"), nullptr);
        EXPECT_EQ(read_text(name, "BAYES 99999999999 2 2"), nullptr);
    }
    // Every prefix of good files is refused cleanly or read whole.
    for (const char* file : {"alarm.bifxml", "alarm.net", "asia.uai", "benefits.xdsl"}) {
        Net* net = file_ok(data_path(file));
        std::string name = std::string("cut.") + file;
        std::string text = write_text(net, std::string("x.") + (std::string(file).find("xdsl") != std::string::npos ? "dne" : file));
        for (size_t cut = 0; cut < text.size(); cut += 97) read_text("cut" + std::string(file).substr(std::string(file).find('.')), text.substr(0, cut));
    }
    ClearErrors_ns(env, ERROR_ERR);
}

}  // namespace
}  // namespace ravelo::testing
