// Foreign formats refuse what they cannot express instead of dropping or
// making up table rows.
#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using ForeignLimits = IoTest;

std::string with_net(const std::string& body) { return "// ~->[DNET-1]->~\nbnet T {\n" + body + "\n};\n"; }

const char* const kParent = "node A { states = (a, b); probs = (0.5, 0.5); };\n";

TEST_F(ForeignLimits, RowsTheFormatCannotSayAreRefusedByEveryWriter) {
    struct Case {
        const char* body;
        const char* reason;
    };
    const Case cases[] = {
        {"node B { states = (x, y); parents = (A); probs = ((@imposs, @imposs), (0.5, 0.5)); };",
         "because its table has impossible parent conditions ('@imposs') in 1 of 2 rows, which that format can't "
         "express"},
        {"node B { states = (x, y); parents = (A); probs = ((@undef, @undef), (0.5, @undef)); };",
         "because its table has undefined entries ('@undef') in 2 of 2 rows, which that format can't express"},
        {"node B { states = (x, y); parents = (A); functable = (x, @undef); };",
         "because its table has undefined entries ('@undef') in 1 of 2 rows"},
    };
    const std::pair<const char*, const char*> formats[] = {
        {"out.bif", "BIF"}, {"out.xml", "XMLBIF"}, {"out.net", "Hugin .net"}, {"out.uai", "UAI"}};
    for (const Case& c : cases) {
        Net* net = read_ok("gaps.dne", with_net(std::string(kParent) + c.body));
        for (const auto& [file, format] : formats) {
            SCOPED_TRACE(std::string(c.body) + " to " + file);
            EXPECT_EQ(write_text(net, file), "");
            std::string message = last_message();
            EXPECT_EQ(message.rfind(std::string("can't write node 'B' in ") + format + " format, " + c.reason, 0), 0u)
                << message;
        }
    }
}

TEST_F(ForeignLimits, MissingTablesAndDecisionsWhereTheFormatLacksThem) {
    Net* net = read_ok("untabled.dne", with_net(std::string(kParent) + "node B { states = (x, y); parents = (A); };"));
    EXPECT_EQ(write_text(net, "out.uai"), "");
    EXPECT_EQ(last_message(), "can't write node 'B' in UAI format, because it has no table, which that format requires");
    // The others may leave a table out, and it reads back absent.
    for (const char* file : {"out.bif", "out.xml", "out.net"}) {
        SCOPED_TRACE(file);
        Net* back = read_ok(file, write_text(net, file));
        EXPECT_TRUE(back->find("B")->cpt.empty());
    }

    Net* decision = read_ok("decide.dne", with_net("node D { kind = DECISION; states = (go, stay); };"));
    for (const char* file : {"out.bif", "out.uai"}) {
        EXPECT_EQ(write_text(decision, file), "");
        EXPECT_NE(last_message().find("because it is a decision node, which that format can't express"),
                  std::string::npos);
    }
    EXPECT_NE(write_text(decision, "out.net"), "");
    EXPECT_EQ(last_message(), "");
}

TEST_F(ForeignLimits, FunctionTablesAreWrittenAsTheCertainRowsTheyMean) {
    Net* net = read_ok("func.dne", with_net(std::string(kParent) +
                                              "node B { states = (x, y); parents = (A); functable = (y, x); };"));
    for (const char* file : {"out.bif", "out.xml", "out.net", "out.uai"}) {
        SCOPED_TRACE(file);
        Net* back = read_ok(file, write_text(net, file));
        EXPECT_EQ(back->nodes.nodes[1]->cpt, (std::vector<float>{0, 1, 1, 0}));
    }
}

}  // namespace
}  // namespace ravelo::testing
