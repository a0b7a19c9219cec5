// Function tables given as state lists, and tables whose parentheses do
// not balance: each fault is reported against the entry where it arises.
#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using TableReading = IoTest;

constexpr const char* kParents =
    "node A { states = (a0, a1); };\nnode B { states = (b0, b1, b2); };\n";

std::string net_text(const std::string& body) {
    return std::string("// ~->[DNET-1]->~\n\nbnet T {\n") + kParents + body + "\n};\n";
}

TEST_F(TableReading, StateListsFillAFunctionTable) {
    Net* net = read_ok("f.dne", net_text("node C { states = (no, yes); parents = (A, B); "
                                           "functable = ((@any, @any | no), (a1, b2 | yes), (a0, b1 | yes)); };"));
    // Rows in parent order, B fastest.
    EXPECT_EQ(net->find("C")->func_states, (std::vector<int>{0, 1, 0, 0, 0, 1}));
    Net* partial = read_ok("g.dne", net_text("node C { states = (no, yes); parents = (A); functable = (a1 | yes); };"));
    EXPECT_EQ(partial->find("C")->func_states, (std::vector<int>{kUndefState, 1}));
    Net* flat = read_ok("h.dne", net_text("node C { states = (no, yes); parents = (A); probs = ((1, 0), FLAT); };"));
    EXPECT_EQ(flat->find("C")->cpt, (std::vector<float>{1, 0, 0.5f, 0.5f}));
}

struct BadTable {
    const char* node;  // a node C with parents A and/or B
    const char* message;
};


TEST_F(TableReading, FaultsAreReportedWhereTheyArise) {
    const BadTable cases[] = {
        // State lists.
        {"node C { states = (no, yes); parents = (A, B); functable = ((a0, b3 | yes)); };",
         "node B has no state named 'b3'"},
        {"node C { states = (no, yes); parents = (A, B); functable = ((a0, b0 | maybe)); };",
         "node C has no state named 'maybe'"},
        {"node C { states = (no, yes); parents = (A, B); functable = ((a0 | yes)); };",
         "not enough states were given (node C has 2 parents, but only 1 states were given)"},
        {"node C { states = (no, yes); parents = (A); functable = ((a0, b0 | yes)); };",
         "too many states were given (node C has 1 parents, so state 'b0' is extra)"},
        {"node C { states = (no, yes); parents = (A); functable = ((a0 | yes, no)); };",
         "too many states were given (only 1 required, so state 'no' is extra)"},
        {"node C { states = (no, yes); parents = (A, B); functable = ((a0, , b1 | yes)); };",
         "the 2nd state name is empty"},
        {"node C { states = (no, yes); parents = (A, B); functable = ((no, yes, no), (no, , yes)); };",
         "the 5th state name is empty"},
        // Flat function tables.
        {"node C { states = (no, yes); parents = (A, B); functable = (no, yes, no, yes, no); };",
         "not enough states were given (6 needed, but only 5 given)"},
        {"node C { states = (no, yes); parents = (A, B); functable = (no, yes, no, yes, no, yes, yes); };",
         "too many states were given (only 6 required, so state 'yes' is extra)"},
        // Flat probability tables, and lists without their commas.
        {"node C { states = (no, yes); parents = (A, B); probs = (1, 0, 1, 0, 1, 0, 1, 0); };",
         "not enough table entries"},
        {"node C { states = (no, yes); parents = (A, B); numcases = (1, 2, 3, 4, 5); };", "not enough table entries"},
        {"node C { states = (no, yes); parents = (A, B); probs = (((1, 0), (1, 0), (1, 0)) ((1, 0), (1, 0), (1, 0))); };",
         "missing comma (,) in table entry [] of node C"},
        {"node C { states = (no, yes); parents = (A); probs = ((1, 0), (0 1)); };",
         "missing comma (,) in table entry [a1] of node C"},
        {"node C { states = (no, yes); parents = (A); functable = ((a0 | yes) (a1 | no)); };",
         "missing comma (,) in table entry [] of node C"},
        // Parentheses.
        {"node C { states = (no, yes); parents = (A); probs = (((1, 0)), (0, 1)); };",
         "too many open parenthesis (are 3, but should be 2) within table of node C"},
        {"node C { states = (no, yes); parents = (A); probs = ((1, 0), (0, 1); };",
         "only 1 close parenthesis (but should be 2) within table entry [a1] of node C"},
        {"node C { states = (no, yes); parents = (A, B); numcases = ((1, 2, 3), (4, 5; };",
         "only 0 close parenthesis (but should be 2) within table entry [a1, b1] of node C"},
        {"node C { states = (no, yes); parents = (A); probs = ((1, 0)), (0, 1)); };",
         "too many close parenthesis (should be 2) within table entry [a0] of node C"},
        {"node C { states = (no, yes); parents = (A); probs = ((1, 0), (0, 1))); };",
         "extra close parenthesis at end of table entry [a1] of node C"},
        {"node C { states = (no, yes); parents = (A); functable = ((a0 | yes), (a1 | no); };",
         "only 1 close parenthesis (but should be 2) within table entry [a1] of node C"},
    };
    for (const BadTable& c : cases) {
        SCOPED_TRACE(c.node);
        EXPECT_EQ(read_text("bad.dne", net_text(c.node)), nullptr);
        std::string message = last_message();
        EXPECT_NE(message.find(c.message), std::string::npos) << message;
        EXPECT_EQ(core_of<Environment>(env)->nets.size(), 0u);
    }
}

TEST_F(TableReading, ABarOutsideAStateListIsRefused) {
    EXPECT_EQ(read_text("bad.dne", net_text("node C { states = (no | yes); };")), nullptr);
    EXPECT_NE(last_message().find("missing comma"), std::string::npos);
    EXPECT_EQ(read_text("bad.dne", net_text("node C { states = (no, yes); parents = (A); "
                                            "probs = ((1, 0), (0.5 | 0.5)); };")),
              nullptr);
    EXPECT_NE(last_message().find("unexpected punctuation | in table entry [a1] of node C"), std::string::npos);
}

}  // namespace
}  // namespace ravelo::testing
