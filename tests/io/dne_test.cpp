#include "io/io_fixture.h"
#include "base/frame.h"
#include "io/dne.h"
#include "net/ops.h"

namespace ravelo::testing {
namespace {

using NetFileReading = IoTest;

// Everything a node holds that the format carries, as one comparable value.
auto node_fields(const Node& n) {
    std::vector<std::string> states, parents;
    for (const StateInfo& s : n.states) states.push_back(s.name + '|' + s.title + '|' + s.comment);
    for (const Node* p : n.parents.nodes) parents.push_back(p->name);
    return std::tuple(n.name, n.kind, n.type, n.title, n.comment, states, n.levels, parents, n.input_names, n.cpt,
                      n.func_states, n.func_reals, n.experience, n.equation, n.finding.state,
                      n.finding.likelihood, n.finding.has_value, n.user_fields.fields, n.has_position, n.vis_x,
                      n.vis_style);
}

void expect_equal_nets(const Net& a, const Net& b) {
    EXPECT_EQ(std::tie(a.name, a.title, a.comment), std::tie(b.name, b.title, b.comment));
    ASSERT_EQ(a.nodes.nodes.size(), b.nodes.nodes.size());
    for (size_t i = 0; i < a.nodes.nodes.size(); ++i)
        EXPECT_TRUE(node_fields(*a.nodes.nodes[i]) == node_fields(*b.nodes.nodes[i])) << a.nodes.nodes[i]->name;
}

TEST_F(NetFileReading, EveryReferenceNetSurvivesAWriteAndRead) {
    for (const char* file : {"asia.bif", "alarm.bif", "child.bif", "insurance.bif", "water.bif",
                             "hepar2.bif", "win95pts.bif"}) {
        SCOPED_TRACE(file);
        Net* net = file_ok(data_path(file));
        std::string text = write_text(net, "copy.dne");
        Net* again = read_ok("copy.dne", text);
        expect_equal_nets(*net, *again);
        EXPECT_EQ(write_text(again, "copy.dne"), text);
    }
}

// A net using every kind of content the format carries.
Net* rich_net(Environment& env) {
    Net* net = create_net(env, "Rich");
    net->title = "A \"rich\" net";
    net->comment = "line one\nline two";
    net->user_fields.set("author", "someone");
    net->user_fields.set("version", "7");
    Node* weather = create_node(*net, "Weather", 3);
    weather->states = {{"sun", "Sunny", "bright"}, {"rain", "", ""}, {"snow", "", "cold"}};
    weather->cpt = {0.5f, 0.25f, 0.25f};
    weather->title = "The weather";
    weather->has_position = true;
    weather->vis_x = 10.5;
    weather->vis_y = -3;
    weather->vis_style = "bold";
    weather->user_fields.set("note", "a, b; {c}");
    weather->finding.likelihood = {1.0f, 0.5f, 0.25f};
    Node* temp = create_node(*net, "Temp", 0);
    temp->levels = {-10, 0, 10, 40};
    temp->states.resize(3);
    connect(*weather, *temp, "w");
    temp->cpt = {0.1f, 0.3f, 0.6f, 0.5f, 0.5f, 0.0f, kImpossibleProb, kImpossibleProb,
                 kImpossibleProb};
    temp->experience = {10, 20, 0};
    temp->finding.state = 1;  // the interval holding the value
    temp->finding.has_value = true;
    temp->finding.value = 5;
    Node* go = create_node(*net, "Go", 2);
    go->kind = NodeKind::Decision;
    go->states[0].name = "yes";  // the other state stays unnamed
    connect(*weather, *go);
    connect(*temp, *go);
    go->func_states.assign(9, 0);
    go->func_states[4] = 1;
    go->func_states[8] = kUndefState;
    go->equation = "Go (Weather, Temp) = Weather == sun";
    go->finding.state = 0;
    Node* value = create_node(*net, "Value", 0);
    value->kind = NodeKind::Utility;
    connect(*go, *value);
    value->func_reals = {3.25, -1e-7};
    net->node_sets.push_back({"Weathers", {weather, temp}, ""});
    net->elim_order = env.store.make<NodeList>(net, false);
    net->elim_order->nodes = {value, go, temp, weather};
    return net;
}

TEST_F(NetFileReading, EveryFieldSurvivesAWriteAndRead) {
    Net* net = rich_net(*core_of<Environment>(env));
    std::string text = write_text(net, "rich.dne");
    stream_ns* s = NewMemoryStream_ns("rich.dne", env, nullptr);
    SetStreamContents_ns(s, text.c_str(), -1, 1);
    Net* again = core_of<Net>(ReadNet_bn(s, REGULAR_WINDOW));
    DeleteStream_ns(s);
    ASSERT_NE(again, nullptr) << last_message() << "\n" << text;
    expect_equal_nets(*net, *again);
    EXPECT_EQ(again->nodes.nodes[1]->finding.value, 5);
    ASSERT_EQ(again->node_sets.size(), 1u);
    EXPECT_EQ(again->node_sets[0].members.size(), 2u);
    EXPECT_NE(text.find("NodeSet Weathers {Nodes = (Weather, Temp);};"), std::string::npos);
    ASSERT_NE(again->elim_order, nullptr);
    EXPECT_EQ(again->elim_order->nodes[0]->name, "Value");
    EXPECT_EQ(*again->user_fields.find("version"), "7");
    EXPECT_EQ(write_text(again, "rich.dne"), text);
    // Without visual information positions are not read.
    Net* plain = read_ok("rich.dne", text);
    EXPECT_FALSE(plain->nodes.nodes[0]->has_position);
    EXPECT_TRUE(plain->nodes.nodes[0]->vis_style.empty());
}

// Fields the engine does not act on still come back as they were written, and a copied net keeps
// them too.
TEST_F(NetFileReading, UnmodelledFieldsAreKeptAsWritten) {
    Net* net = read_ok("kept.dne", R"(// ~->[DNET-1]->~
bnet K {
eqncontext = "x = 3";
AutoCompile = TRUE;
definenodes = (a, b);
node A {
	states = (s, t);
	probs = (0.5, 0.5);
	definenodes = ((1, 2), "z");
	};
};
)");
    std::string text = write_text(net, "kept.dne");
    for (const char* kept : {"eqncontext = \"x = 3\";\nAutoCompile = TRUE;\nautoupdate",
                             "definenodes = (a, b);", "\tdefinenodes = ((1, 2), \"z\");"})
        EXPECT_NE(text.find(kept), std::string::npos) << kept << "\n" << text;
    net_bn* copy = CopyNet_bn(handle_of(net), "K2", env, "");
    ASSERT_NE(copy, nullptr) << last_message();
    std::string copied = write_text(core_of<Net>(copy), "kept.dne");
    EXPECT_NE(copied.find("eqncontext"), std::string::npos);
    EXPECT_NE(copied.find("\tdefinenodes"), std::string::npos);
}

// Reads with inherited statements applied in a first pass.
Net* read_first_pass(environ_ns* env, const std::string& text) {
    ApiFrame frame("ReadNet_bn");
    frame.use(*core_of<Environment>(env));
    DneReadOptions options;
    options.inherit_first_pass = true;
    return frame.run<Net*>(nullptr, [&] { return read_dne(frame.environment(env), text, {"first.dne"}, 0, options); });
}

TEST_F(NetFileReading, InheritingInAFirstPassRefusesOverridesAndLateStatements) {
    const std::string definition =
        "// ~->[DNET-1]->~\nbnet P {\ndefine node Binary { states = (no, yes); probs = (0.5, 0.5); };\n"
        "node A { states = (a, b); };\n";
    Net* net = read_first_pass(env, definition + "node B : Binary { title = \"t\"; };\n};\n");
    ASSERT_NE(net, nullptr) << last_message();
    EXPECT_EQ(net->find("B")->cpt, (std::vector<float>{0.5f, 0.5f}));
    EXPECT_EQ(read_first_pass(env, definition + "node B : Binary { states = (off, on); };\n};\n"), nullptr);
    EXPECT_NE(last_message().find("`states` statement already inherited (line 5"), std::string::npos);
    EXPECT_EQ(read_first_pass(env, definition + "node B : Binary { parents = (A); };\n};\n"), nullptr);
    EXPECT_NE(last_message().find("`parents` statement should appear earlier.  Or reread with 'Inherit in First "
                                  "Pass' off (line 5"),
              std::string::npos);
    EXPECT_TRUE(core_of<Environment>(env)->nets.size() == 1u);
    // Read as usual, the same declaration overrides the inherited statement.
    EXPECT_NE(read_text("p.dne", definition + "node B : Binary { states = (off, on); };\n};\n"), nullptr)
        << last_message();
}

struct BadFile {
    const char* body;  // the inside of the bnet object
    const char* message;
};

TEST_F(NetFileReading, FaultyFilesGetTheReadersMessages) {
    const BadFile cases[] = {
        {"node A { states = (a, b); probs = (0.5); };",
         "has too few probabilities, sum of probabilities isn't 1 (100%) in table entry [] of node A"},
        {"node A { states = (a, b); };\nnode B { states = (a, b); parents = (A); probs = ((1, 0), (0.5, 0.4)); };",
         "sum of probabilities isn't 1 (100%) in table entry [b] of node B"},
        {"node A { states = (a, b); };\nnode B { states = (a, b); parents = (A); probs = ((1, 0)); };",
         "not enough elements in table entry [] of node B"},
        {"node A { states = (a, b); probs = (((0.5, 0.5))); };",
         "too many open parenthesis (are 3, but should be 1) within table of node A"},
        {"node A { states = (a, b); probs = (0.5, @maybe); };", "unknown escape name '@maybe'"},
        {"node A { states = (a, b); colour = red; };", "unknown field 'colour'"},
        {"node A { states = (a, b); title = \"x\"; title = \"y\"; };",
         "more than one `title` statement for node 'A'"},
        {"title = \"x\"; title = \"y\";", "more than one `title` statement"},
        {"node A { states = (a, b); parents = (Z); };", "undefined node 'Z'"},
        {"define node D { states = (a, b); };\nnode A { states = (a, b); parents = (D); };",
         "a node meant only for defining others (declared with 'define') 'D' appears"},
        {"node A : Nothing { states = (a, b); };",
         "declaration of node 'A' tries to inherit from a node not yet defined"},
        {"node 1A { states = (a, b); };", "'1A' is not a legal name for a node"},
        {"node A { states = (a, b); };\nnode A { states = (a, b); };",
         "more than one node with the name 'A'"},
        {"node A { numstates = 3; states = (a, b); };",
         "`numstates` stated to be 3, but other statements imply it is 2"},
        {"node A { numstates = 0; };", "`numstates` stated to be 0, but it must not be less than 1"},
        {"node A { states = (a, b); statetitles = (\"x\"); };", "there are 2 states, but 1 names"},
        {"node A { states = (a, b); kind = WILD; };", "illegal value 'WILD'"},
        {"node A { states = (a, b) };", "missing semicolon after `states` statement"},
        {"node A { states = (a, b); }", "missing semicolon at end of node 'A'"},
        {"node A states = (a, b); };", "missing '{' to start node 'A'"},
        {"node A { states = (a b); };", "missing comma"},
        {"node A { probs = (1); parents = (); states = (a); };",
         "`probs` statement should appear after PREDS statement"},
        {"node A { states = (a, b); };\nnode B { states = (a, b); inputs = (x); parents = (A); };",
         "missing `parents` statement before `inputs` statement"},
        {"node A { states = (a, b); };\nnode B { states = (a, b); parents = (A); inputs = (x, y); };",
         "there are 2 input names, but require 1 (one for each parent)"},
        {"node A { states = (a, b); };\nnode B { states = (a, b); parents = (A); functable = (a, c); };",
         "unknown state name 'c' in table entry [b] of node B"},
        {"node A { discrete = FALSE; };\nnode B { states = (a, b); parents = (A); probs = (1, 0); };",
         "can't have a table for node B because it has a parent (A) which is not a discrete or discretized variable"},
        {"node A { states = (a, b); evidence = c; };", "unknown state 'c'"},
        {"node A { states = (a, b); likelihood = (1, 0); evidence = b; };",
         "'b' is inconsistent with real value or likelihood of this node"},
        {"node A { states = (a, b); evidence = b; likelihood = (1, 0); };",
         "likelihood is inconsistent with previously stated finding for this node"},
        {"node A { discrete = FALSE; levels = (0, 1, 2); value = 7; };", "'7' is out-of-range for this node"},
        {"node A { discrete = FALSE; levels = (0, 1, 2); evidence = @undef; states = (lo, hi); evidence = hi; value = 0.5; };",
         "more than one `evidence` statement"},
        {"node A { discrete = FALSE; levels = (0, 1, 2); states = (lo, hi); evidence = hi; value = 0.5; };",
         "'0.5' is inconsistent with state value or likelihood of this node"},
        {"node A { states = (a, b); likelihood = (1, -1); };", "'-1' is less than zero"},
        {"node A { states = (a, b); delays = (1); };",
         "there are 0 input names but other indications (e.g. delay equations) are for 1 parents"},
        {"node A { states = (a, b); };\nnode B { states = (a, b); parents = (A, A); };",
         "because they are already connected"},
        {"node A { states = (a, b); parents = (B); };\nnode B { states = (a, b); parents = (A); };",
         "would result in a directed cycle"},
        {"gadget G { };", "unknown object 'gadget'"},
        {"node A { discrete = FALSE; states = (a, b); };",
         "there should not be an `states` statement for this node because it is not a discrete or discretized variable"},
        {"node A { discrete = FALSE; levels = (1); };",
         "`levels` has 1 entries, but minimum is 2, because node A is continuous"},
        {"node A { states = (a, b); levels = (1, 2, 3); };",
         "`levels` has 3 entries, but there should be 2, because node A has 2 states and is discrete"},
        {"node A { discrete = FALSE; numstates = 3; };",
         "'numstates' field declared '3', incompatible with 'levels' declared 0"},
        {"define NodeSet S { Nodes = (); };", "a DEFINED NodeSet 'S' appears"},
        {"node A { states = (a, b); param user U { x = 1; }; };", "a DEFINED user 'U' appears"},
        {"node A { states = (a, b); position = (1, 2, 3); };", "there are 3 entries, but 2 dimensions in net 'Bad'"},
        {"numdimensions = 3;\nnode A { states = (a, b); position = (1, 2); };",
         "there are 2 entries, but 3 dimensions in net 'Bad'"},
        {"node A { states = (a, b); fields = ((x, 1), (y, 2, 3)); };", "vectors of different lengths (2 and 3)"},
        {"node A { states = (a, b); fields = ((x, 1, 0)); };", "vectors of different lengths (3 and 2)"},
        {"node A { states = (a, b); inputs = (x); };",
         "can't read `inputs` statement, because there is no `parents` statement"},
        {"node A { states = (a, b);\nnode B { states = (a, b); }; };", "no terminating '}' for node 'A' (line 5"},
        {"node A { states = (a, b); probs = (0.5 0.5); };", "missing comma (,) in table entry [] of node A"},
    };
    for (const BadFile& c : cases) {
        SCOPED_TRACE(c.body);
        size_t nets_before = core_of<Environment>(env)->nets.size();
        std::string text = std::string("// ~->[DNET-1]->~\n\nbnet Bad {\n") + c.body + "\n};\n";
        EXPECT_EQ(read_text("bad.dne", text), nullptr);
        std::string message = last_message();
        EXPECT_NE(message.find(c.message), std::string::npos) << message;
        EXPECT_NE(message.find("of 'bad.dne')"), std::string::npos) << message;
        EXPECT_EQ(core_of<Environment>(env)->nets.size(), nets_before);
    }
}

TEST_F(NetFileReading, FilesThatAreNotNetsAreRefused) {
    EXPECT_EQ(read_text("cases.dne", "// ~->[CASE-1]->~\nIDnum A\n1 a\n"), nullptr);
    EXPECT_NE(last_message().find("is a case file"), std::string::npos);
    EXPECT_EQ(read_text("x.dne", "bnet X { title = \"never closed"), nullptr);
    EXPECT_NE(last_message().find("no closing '\"'"), std::string::npos);
    EXPECT_EQ(read_text("x.dne", "bnet X {\nnode A { states = (a); };\n"), nullptr);
    EXPECT_NE(last_message().find("no closing '}' for bnet 'X', starting (line 1"), std::string::npos);
}

TEST_F(NetFileReading, HostileTextNeverCrashes) {
    std::string deep = "bnet X { title = " + std::string(100000, '(') + "; };";
    EXPECT_EQ(read_text("deep.dne", deep), nullptr);
    EXPECT_NE(last_message().find("nested more than"), std::string::npos);
    std::string objects = "bnet X {";
    for (int i = 0; i < 5000; ++i) objects += " node A {";
    EXPECT_EQ(read_text("deep.dne", objects), nullptr);
    std::string garbage;
    for (int i = 0; i < 4096; ++i) garbage.push_back(static_cast<char>((i * 7919) % 256));
    EXPECT_EQ(read_text("garbage.dne", garbage), nullptr);
    EXPECT_EQ(read_text("huge.dne", "bnet X { node A { numstates = 99999999999999999999; }; };"), nullptr);
    EXPECT_EQ(read_text("huge.dne",
                        "bnet X { node A { numstates = 2000; }; node B { numstates = 2000; }; node C "
                        "{ numstates = 2000; parents = (A, B); probs = (FLAT); }; };"),
              nullptr);
    EXPECT_NE(last_message().find("too large"), std::string::npos);
    // Every prefix of a good file is refused cleanly.
    Net* net = rich_net(*core_of<Environment>(env));
    std::string text = write_text(net, "rich.dne");
    for (size_t cut = 0; cut + 3 < text.size(); cut += 7) {
        Net* part = read_text("part.dne", text.substr(0, cut));
        EXPECT_EQ(part, nullptr) << cut;
    }
    ClearErrors_ns(env, ERROR_ERR);
}

TEST_F(NetFileReading, ControlArgumentIsChecked) {
    stream_ns* s = NewMemoryStream_ns("a.dne", env, nullptr);
    SetStreamContents_ns(s, "bnet New {};", -1, 0);
    EXPECT_EQ(ReadNet_bn(s, 5), nullptr);
    EXPECT_EQ(last_message(),
              "argument 'control' is 5, but it should be NO_VISUAL_INFO (0), NO_WINDOW (16), "
              "MINIMIZED_WINDOW (48) or REGULAR_WINDOW (112)");
    EXPECT_NE(ReadNet_bn(s, MINIMIZED_WINDOW), nullptr);
    DeleteStream_ns(s);
    EXPECT_EQ(ReadNet_bn(nullptr, NO_WINDOW), nullptr);
}

}  // namespace
}  // namespace ravelo::testing
