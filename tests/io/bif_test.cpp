#include <cmath>

#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using BifReading = IoTest;

struct NetSize {
    const char* file;
    size_t nodes;
};

TEST_F(BifReading, ReadsEveryReferenceNetWithCompleteTables) {
    const NetSize nets[] = {{"asia.bif", 8},      {"cancer.bif", 5},      {"earthquake.bif", 5},
                            {"sachs.bif", 11},    {"survey.bif", 6},      {"alarm.bif", 37},
                            {"child.bif", 20},    {"insurance.bif", 27},  {"water.bif", 32},
                            {"hepar2.bif", 70},   {"win95pts.bif", 76},   {"andes.bif", 223}};
    for (const NetSize& n : nets) {
        SCOPED_TRACE(n.file);
        Net* net = read_file(data_path(n.file));
        ASSERT_NE(net, nullptr) << last_message();
        EXPECT_EQ(net->nodes.nodes.size(), n.nodes);
        for (const Node* node : net->nodes.nodes) {
            ASSERT_EQ(node->cpt.size(), table_rows(*node) * node->num_states()) << node->name;
            for (float p : node->cpt) ASSERT_GE(p, 0.0f) << node->name;
        }
        EXPECT_EQ(error_count(), 0);
    }
}

TEST_F(BifReading, PlacesConditionRowsByParentStates) {
    Net* net = read_file(data_path("asia.bif"));
    ASSERT_NE(net, nullptr) << last_message();
    const Node* either = net->find("either");
    ASSERT_EQ(either->parents.nodes.size(), 2u);
    EXPECT_EQ(either->parents.nodes[0]->name, "lung");
    // (lung = no, tub = yes) gives certainty of "yes"; (no, no) of "no".
    EXPECT_EQ(row_of_node(*either, {1, 0})[0], 1.0f);
    EXPECT_EQ(row_of_node(*either, {1, 1})[1], 1.0f);
    const Node* dysp = net->find("dysp");
    EXPECT_FLOAT_EQ(row_of_node(*dysp, {0, 1})[0], 0.8f);
    EXPECT_FLOAT_EQ(row_of_node(*dysp, {1, 0})[0], 0.7f);
}

TEST_F(BifReading, TableListsNodeStateSlowestAndDefaultFillsTheRest) {
    Net* net = read_text("t.bif", R"(
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
    ASSERT_NE(net, nullptr) << last_message();
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
    Net* net = read_file(data_path("child.bif"));
    ASSERT_NE(net, nullptr) << last_message();
    const Node* age = net->find("Age");
    ASSERT_NE(age, nullptr);
    ASSERT_EQ(age->num_states(), 3);
    EXPECT_EQ(age->states[0].name, "x_3_days");
    EXPECT_EQ(age->states[0].title, "0-3_days");
    // Names must stay distinct after repair.
    Net* water = read_file(data_path("water.bif"));
    ASSERT_NE(water, nullptr) << last_message();
    const Node* n = water->find("C_NI_12_00");
    EXPECT_EQ(n->states[0].name, "x");
    EXPECT_EQ(n->states[1].name, "x_2");
    EXPECT_EQ(n->states[3].title, "6");
}

TEST_F(BifReading, WritingRestoresForeignNamesAndEqualTables) {
    Net* net = read_file(data_path("child.bif"));
    ASSERT_NE(net, nullptr) << last_message();
    std::string text = write_text(net, "child.bif");
    EXPECT_NE(text.find("{ <5, 5-12, 12+ }"), std::string::npos);
    Net* again = read_text("again.bif", text);
    ASSERT_NE(again, nullptr) << last_message();
    ASSERT_EQ(again->nodes.nodes.size(), net->nodes.nodes.size());
    for (size_t i = 0; i < net->nodes.nodes.size(); ++i) {
        const Node* a = net->nodes.nodes[i];
        const Node* b = again->nodes.nodes[i];
        EXPECT_EQ(a->name, b->name);
        EXPECT_EQ(a->cpt, b->cpt) << a->name;
        for (int s = 0; s < a->num_states(); ++s) EXPECT_EQ(a->states[s].title, b->states[s].title);
    }
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

TEST_F(BifReading, TheLineOfTheFaultIsNamed) {
    EXPECT_EQ(read_text("x.bif", "variable A {\n type discrete [2] { a, b };\n}\n\nprobability ( A ) "
                                 "{\n  table 0.5, 0.7;\n}"),
              nullptr);
    EXPECT_NE(last_message().find("(line 5 of 'x.bif')"), std::string::npos);
}

}  // namespace
}  // namespace ravelo::testing
