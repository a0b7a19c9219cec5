#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using BifReading = IoTest;

TEST_F(BifReading, TableListsNodeStateSlowestAndDefaultFillsTheRest) {
    Net* net = read_ok("t.bif", R"(
        network "small net" { property author = someone; }
        /* block comment
           over lines */
        variable A { type discrete [2] { a0, a1 }; }
        variable B { type discrete [3] { b0 b1 b2 }; property position = (10, 20); }
        variable C { type discrete [2] { c0, c1 }; }
        probability ( A ) { table 0.3 0.7 ; }
        probability ( B | A ) { table 0.1, 0.2, 0.3, 0.4, 0.6, 0.4; }
        probability ( C | A, B ) { default 0.5, 0.5; (a1, b2) 0.9, 0.1; }
    )");
    EXPECT_EQ(net->name, "small_net");
    EXPECT_EQ(net->title, "small net");
    const Node* b = net->find("B");
    EXPECT_FLOAT_EQ(row_of_node(*b, {0})[0], 0.1f);
    EXPECT_FLOAT_EQ(row_of_node(*b, {0})[1], 0.3f);
    EXPECT_FLOAT_EQ(row_of_node(*b, {1})[0], 0.2f);
    EXPECT_FLOAT_EQ(row_of_node(*b, {1})[2], 0.4f);
    EXPECT_TRUE(b->has_position);
    EXPECT_EQ(b->vis_y, 20);
    const Node* c = net->find("C");
    EXPECT_FLOAT_EQ(row_of_node(*c, {1, 2})[0], 0.9f);
    EXPECT_FLOAT_EQ(row_of_node(*c, {0, 1})[0], 0.5f);
    ASSERT_NE(net->user_fields.find("author"), nullptr);
    EXPECT_EQ(*net->user_fields.find("author"), "someone");
}

TEST_F(BifReading, IllegalNamesAreRepairedAndKeptAsTitles) {
    Net* net = file_ok(data_path("child.bif"));
    const Node* age = net->find("Age");
    ASSERT_NE(age, nullptr);
    ASSERT_EQ(age->num_states(), 3);
    EXPECT_EQ(age->states[0].name, "x_3_days");
    EXPECT_EQ(age->states[0].title, "0-3_days");
    // Names must stay distinct after repair.
    Net* water = file_ok(data_path("water.bif"));
    const Node* n = water->find("C_NI_12_00");
    EXPECT_EQ(n->states[0].name, "x");
    EXPECT_EQ(n->states[1].name, "x_2");
    EXPECT_EQ(n->states[3].title, "6");
}

struct BadBif {
    const char* text;
    const char* message;
};

TEST_F(BifReading, FaultyFilesAreReportedWithTheirLineAndLeaveNoNet) {
    const BadBif cases[] = {
        {"variable A { type discrete [2] { a, b }; }\nprobability ( A ) { table 0.5, 0.6; }",
         "sum of probabilities isn't 1 (100%)"},
        {"variable A { type discrete [3] { a, b }; }", "there are 3 states, but 2 names"},
        {"variable A { type discrete [2] { a, b }; }\nprobability ( A | Z ) { }",
         "undefined node 'Z'"},
        {"variable A { type discrete [2] { a, b }; }\nvariable B { type discrete [2] { a, b }; }\n"
         "probability ( A | B ) { (a) 1, 0; }\nprobability ( B | A ) { (a) 1, 0; }",
         "directed cycle"},
        {"variable A { type discrete [2] { a, b };\n", "file ends where"},
        {"variable A { type discrete [2] { a, b }; }\nprobability ( A ) { table 0.5 x; }",
         "'x' is not a probability"},
        {"variable A { type discrete [2] { a, b }; }\nprobability ( A ) { table 0.5 0.5 }",
         "missing ';'"},
        {"variable A { type continuous; }", "only discrete variables"},
        {"bogus", "unknown block 'bogus'"},
        {"variable A { type discrete [99999999999999] { a }; }", "is not a number of states"},
        {"/* never closed", "comment is never closed"},
    };
    for (const BadBif& c : cases) {
        SCOPED_TRACE(c.text);
        size_t nets_before = core_of<Environment>(env)->nets.size();
        EXPECT_EQ(read_text("bad.bif", c.text), nullptr);
        std::string message = last_message();
        EXPECT_NE(message.find(c.message), std::string::npos) << message;
        EXPECT_NE(message.find("of 'bad.bif')"), std::string::npos) << message;
        EXPECT_EQ(core_of<Environment>(env)->nets.size(), nets_before);
    }
}

}  // namespace
}  // namespace ravelo::testing
