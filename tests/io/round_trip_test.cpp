// Nets the readers accept are written so that they read back: equal in the
// engine's own format, read back or refused with a report in the format
// they came from.  Each case below is a net that was once lost on writing.
#include "fuzz/net_round_trip.h"
#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using RoundTrip = IoTest;

struct NetText {
    const char* what;
    const char* extension;
    std::string text;
};

std::string own_net(const std::string& body) { return "// ~->[DNET-1]->~\n\nbnet Kept {\n" + body + "\n};\n"; }

TEST_F(RoundTrip, NetsThatOnceLostPartsOnWriting) {
    using namespace std::string_literals;
    const NetText cases[] = {
        {"probabilities of a node of one state", "dne",
         own_net("node A { states = (only); probs = (1); };\n"
                 "node B { states = (b0, b1); parents = (A); probs = ((0.25, 0.75)); };\n"
                 "node C { states = (c); parents = (B); probs = ((1), (1)); };")},
        {"delays and persistence in three dimensions", "dne",
         own_net("numdimensions = 3;\n"
                 "node W { states = (dry, wet); parents = (W, T); delays = (1, \"dt * 2\"); persist = (1, 0.5, INFINITY);"
                 " position = (1, 2, 3); };\n"
                 "node T { states = (cold, warm); parents = (W); delays = (\"\"); position = (4, 5, 6); };")},
        {"a variable name with a vertical tab and bytes beyond ASCII", "bif",
         "network \"n\vx\" { }\n"
         "variable \"A\vB\" { type discrete [ 2 ] { \"lo\xc3\xa9\", \"h\x01i\" }; }\n"
         "probability ( \"A\vB\" ) { table 0.5, 0.5; }\n"s},
        {"a property whose name holds a NUL byte", "bif",
         "network n { property au\0th = \"x\"; }\n"
         "variable A { type discrete [ 2 ] { a, b }; property co\0lor blue; }\n"
         "probability ( A ) { table 0.5, 0.5; }\n"s},
    };
    for (const NetText& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_NE(read_text(std::string("case.") + c.extension, c.text), nullptr) << last_message();
        EXPECT_EQ(ravelo_fuzz::net_round_trip_fault(env, c.text, c.extension), "");
    }
}

// A writer that cannot say what a net holds refuses, naming it, and writes nothing.
TEST_F(RoundTrip, WritersRefuseWhatTheirFormatCannotSay) {
    Net* net = read_ok("fields.dne", own_net("node A { states = (a, b); probs = (0.5, 0.5);"
                                             " fields = ((\"note\", \"one; two\")); };"));
    EXPECT_EQ(write_text(net, "fields.bif"), "");
    EXPECT_EQ(last_message(), "can't write property 'note' of node 'A' in BIF format, because it holds a ';', "
                              "which that format can't express");
}

}  // namespace
}  // namespace ravelo::testing
