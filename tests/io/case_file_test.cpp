// The case-file reader and writer: entry splitting, headings, every kind of
// entry, the policies for values the net cannot take, faulty and hostile
// files, and reading one case at a time through the interface.
#include <cstdio>
#include <fstream>
#include <random>

#include "base/progress.h"
#include "io/case_file.h"
#include "io/io_fixture.h"
#include "learn/caseset.h"

namespace ravelo::testing {
namespace {

constexpr const char* kNet =
    "// ~->[DNET-1]->~\n"
    "bnet Cases {\n"
    "node A { discrete = TRUE; states = (yes, no); probs = (0.3, 0.7); };\n"
    "node B { discrete = TRUE; states = (s1, s2); levels = (1, 5); probs = (0.5, 0.5); };\n"
    "node C { discrete = FALSE; states = (low, high); levels = (0, 10, 20); probs = (0.5, 0.5); };\n"
    "node N { discrete = TRUE; states = (NA, other); probs = (0.5, 0.5); };\n"
    "node U { discrete = TRUE; numstates = 2; probs = (0.5, 0.5); };\n"
    "};\n";

class CaseFileTest : public IoTest {
protected:
    void SetUp() override {
        IoTest::SetUp();
        net = read_ok("cases.dne", kNet);
        ClearErrors_ns(env, INTERNAL_ERR);
    }
    stream_ns* memory(const std::string& name, const std::string& text) {
        stream_ns* s = NewMemoryStream_ns(name.c_str(), env, nullptr);
        SetStreamContents_ns(s, text.c_str(), static_cast<long>(text.size()), 1);
        return s;
    }
    // Reads text as a case file of that name; reports land in messages().
    CaseTable read(const std::string& text, const std::string& name = "t.cas") {
        CaseTable table;
        ApiFrame::guard([&] { table = read_case_file(*core_of<Stream>(memory(name, text)), *net, options); });
        return table;
    }
    std::vector<std::string> messages() {
        std::vector<std::string> all;
        for (const report_ns* r = nullptr; (r = GetError_ns(env, NULL_ERR, r)) != nullptr;)
            all.push_back(ErrorMessage_ns(r));
        ClearErrors_ns(env, INTERNAL_ERR);
        return all;
    }
    int state(const CaseTable& t, size_t c, const std::string& node) {
        return t.states[t.cell(c, column(t, node))];
    }
    size_t column(const CaseTable& t, const std::string& node) {
        for (size_t k = 0; k < t.columns.size(); ++k)
            if (net->nodes.nodes[static_cast<size_t>(t.columns[k])]->name == node) return k;
        ADD_FAILURE() << "no column " << node;
        return 0;
    }
    Node& node(const std::string& name) { return *net->find(name); }

    Net* net = nullptr;
    CaseReadOptions options;
};

using Messages = std::vector<std::string>;

TEST_F(CaseFileTest, CommasBlanksAndCommentsSplitEntries) {
    CaseTable t = read(
        "A,B,N\n"
        "yes,,other\n"         // two commas: the middle entry is missing
        "no, 5 ,\n"            // a final comma: one more, empty entry
        "  yes\t1  other // the rest is a comment\n"
        "// a comment line\n"
        "\n"
        "no /* inline */ 1 other\n");
    EXPECT_EQ(messages(), Messages{});
    ASSERT_EQ(t.num_cases(), 4u);
    EXPECT_EQ(state(t, 0, "B"), kUndefState);
    EXPECT_EQ(state(t, 1, "B"), 1);
    EXPECT_EQ(state(t, 1, "N"), kUndefState);
    EXPECT_EQ(state(t, 2, "N"), 1);
    EXPECT_EQ(state(t, 3, "A"), 1);
    EXPECT_EQ(t.lines[3], 7);

    read("A B\nyes 1 /* never closed\n");
    EXPECT_EQ(messages(), Messages{"multi-line comment found starting on a line which has case information"});
}

TEST_F(CaseFileTest, MissingMarksAndNotAvailable) {
    SetMissingDataChar_ns('?', env);
    CaseTable t = read("A\tN\n*\tNA\n?\tN/A\n\" \"\tother\n");
    EXPECT_EQ(messages(), Messages{});
    ASSERT_EQ(t.num_cases(), 3u);
    for (size_t c = 0; c < 3; ++c) EXPECT_EQ(state(t, c, "A"), kUndefState);
    EXPECT_EQ(state(t, 0, "N"), 0);  // "NA" is a state of N
    EXPECT_EQ(state(t, 1, "N"), kUndefState);
    t = read("A\nNA\n");
    EXPECT_EQ(state(t, 0, "A"), kUndefState);
}

TEST_F(CaseFileTest, DialectOfDataFilesKeepsSpacesInsideEntries) {
    options.unknown = UnknownValues::Skip;
    read("A,N\ntwo words, other.\n", "set.data");
    EXPECT_EQ(messages(), Messages{"unknown value 'two words' for variable 'A', appears in case 1 on line 2 (char 1 "
                                   "of file 'set.data')"});
    CaseTable t = read("A,N\nyes, other. | comment\n", "set.test");
    EXPECT_EQ(messages(), Messages{});
    EXPECT_EQ(state(t, 0, "N"), 1);
    read("A,N\ntwo words, other\n", "set.cas");
    EXPECT_EQ(messages(), Messages{"too many entries (the preceeding row only had 2, but this has more), in case 1 on "
                                   "line 2 (char 12 of file 'set.cas')"});
}

TEST_F(CaseFileTest, HeadingColumns) {
    CaseTable t = read(" IDnum\tNumCases\tA(3)\tGhost\tB[2.5]\tA\tOther\n"
                       "7.0\t2.5\tyes\tx\t5\tno\ty\n"
                       "8x\t1\tno\tx\t1\tyes\ty\n");
    EXPECT_EQ(messages(), (Messages{"more than 1 column for variable 'A' in case file 't.cas' (only first column will be used)",
                                    "case file 't.cas' referred to these nodes not in net 'Cases':  Ghost, Other"}));
    ASSERT_EQ(t.num_cases(), 2u);
    EXPECT_EQ(t.columns.size(), 2u);
    EXPECT_EQ(t.ids, (std::vector<long>{7, -1}));
    EXPECT_EQ(t.weights, (std::vector<double>{2.5, 1}));
    EXPECT_EQ(state(t, 0, "A"), 0);
    EXPECT_EQ(state(t, 1, "B"), 0);

    for (auto [heading, message] : {std::pair{"IDnum A IDnum\n", "multiple IDnum columns in case file 't.cas'"},
                                    {"NumCases A NumCases\n", "multiple NumCases columns in case file 't.cas'"}}) {
        read(heading);
        EXPECT_EQ(messages(), Messages{message});
    }
}

TEST_F(CaseFileTest, IdentifiersAndMultiplicities) {
    CaseTable t = read("IDnum NumCases A\n3 1 yes\n4. 2 no\n-5 0.5 no\n6.5 1 yes\n7 lots yes\n");
    EXPECT_EQ(messages(), Messages{"illegal number 'lots' for NumCases, in case 5 on line 6 (char 3 of file 't.cas')"});
    EXPECT_EQ(t.ids, (std::vector<long>{3, 4, -1, -1}));
    EXPECT_EQ(t.weights, (std::vector<double>{1, 2, 0.5, 1}));
    options.degree = 3;
    t = read("NumCases A\n2 yes\n");
    EXPECT_EQ(t.weights, std::vector<double>{6});
}

TEST_F(CaseFileTest, RowsOfTheWrongLength) {
    CaseTable t = read("A B N\nyes 1 other\nyes 1\nno 5 other NA\nno 5 other\n");
    EXPECT_EQ(messages(), (Messages{"too few entries (2, but preceeding row had 3), in case 2 on line 3 (char 6 of "
                                    "file 't.cas')",
                                    "too many entries (the preceeding row only had 3, but this has more), in case 3 on "
                                    "line 4 (char 12 of file 't.cas')"}));
    EXPECT_EQ(t.num_cases(), 2u);
}

TEST_F(CaseFileTest, NumbersForNodesWithLevels) {
    CaseTable t = read("B C\n5 $12.5\n1 0\n#0 20\n");
    EXPECT_EQ(messages(), Messages{});
    ASSERT_EQ(t.num_cases(), 3u);
    EXPECT_EQ(state(t, 0, "B"), 1);
    EXPECT_EQ(state(t, 0, "C"), 1);
    EXPECT_EQ(t.value(0, column(t, "C")), 12.5);
    EXPECT_EQ(state(t, 1, "C"), 0);
    EXPECT_EQ(state(t, 2, "B"), 0);
    EXPECT_EQ(state(t, 2, "C"), 1);
    EXPECT_TRUE(is_undef(t.value(0, column(t, "B"))));

    read("C\n+3\n");
    EXPECT_EQ(messages(), Messages{"illegal value '+3' for variable 'C', in case 1 on line 2 (char 1 of file 't.cas')"});
}

TEST_F(CaseFileTest, ValuesOutOfRangeFollowThePolicy) {
    const std::string file = "B C\n1 25\n2 5\n5 -1\n";
    options.unknown = UnknownValues::Skip;
    CaseTable t = read(file);
    EXPECT_EQ(messages(),
              (Messages{"skipping value 25 for variable 'C' because it is out of bounds (as defined in node properties), "
                        "in case 1 on line 2 (char 3 of file 't.cas')",
                        "skipping value 2 for variable 'B' because it is not one of the possibilities, in case 2 on line "
                        "3 (char 1 of file 't.cas')",
                        "skipping value -1 for variable 'C' because it is out of bounds (as defined in node "
                        "properties), in case 3 on line 4 (char 3 of file 't.cas')"}));
    ASSERT_EQ(t.num_cases(), 3u);
    EXPECT_EQ(state(t, 0, "C"), kUndefState);
    EXPECT_TRUE(is_undef(t.value(0, column(t, "C"))));
    EXPECT_EQ(node("C").levels, (std::vector<double>{0, 10, 20}));

    options.unknown = UnknownValues::Halt;
    t = read(file);
    EXPECT_EQ(messages(), Messages{"value 25 for variable 'C' is out of bounds (as defined in node properties), in "
                                   "case 1 on line 2 (char 3 of file 't.cas')"});
    EXPECT_EQ(t.num_cases(), 0u);
    t = read("B\n1\n2\n5\n");
    EXPECT_EQ(messages(), Messages{"value 2 is not one of the possibilities for variable 'B', in case 2 on line 3 "
                                   "(char 1 of file 't.cas')"});
    EXPECT_EQ(t.num_cases(), 1u);  // halting keeps what was read

    options.unknown = UnknownValues::Add;
    t = read(file);
    EXPECT_EQ(messages(),
              (Messages{"range of variable 'C' expanded to include 25, to read case 1 on line 2 (char 3 of file 't.cas')",
                        "node 'B' is losing its state names because a state with no name (just called #2) is being "
                        "added",
                        "added state 2 to variable 'B', with level 2, to read case 2 on line 3 (char 1 of file 't.cas')",
                        "range of variable 'C' expanded to include -1, to read case 3 on line 4 (char 3 of file "
                        "'t.cas')"}));
    EXPECT_EQ(node("C").levels, (std::vector<double>{-1, 10, 25}));
    EXPECT_EQ(node("B").levels, (std::vector<double>{1, 5, 2}));
    EXPECT_EQ(state(t, 1, "B"), 2);
    EXPECT_EQ(state(t, 0, "C"), 1);
}

TEST_F(CaseFileTest, UnknownStateNamesFollowThePolicy) {
    options.unknown = UnknownValues::Skip;
    CaseTable t = read("A\nmaybe\n#1\n#2\n");
    EXPECT_EQ(messages(), (Messages{"unknown value 'maybe' for variable 'A', appears in case 1 on line 2 (char 1 of "
                                    "file 't.cas')",
                                    "unknown value '#2' for variable 'A', appears in case 3 on line 4 (char 1 of file "
                                    "'t.cas')"}));
    EXPECT_EQ(state(t, 1, "A"), 1);

    options.unknown = UnknownValues::Add;
    t = read("A U\nmaybe #1\nmaybe u9\n#7 #0\n");
    EXPECT_EQ(messages(),
              (Messages{"state 'maybe' added to variable 'A' to read case 1 on line 2 (char 1 of file 't.cas')",
                        "trying to add named states (e.g. 'u9') to node 'U' whose states were not named, so perhaps "
                        "some of the new names actually refer to existing states",
                        "state 'u9' added to variable 'U' to read case 2 on line 3 (char 7 of file 't.cas')",
                        "unknown value '#7' for variable 'A', so case is skipped, in case 3 on line 4 (char 1 of file "
                        "'t.cas')"}));
    ASSERT_EQ(t.num_cases(), 2u);
    EXPECT_EQ(state(t, 1, "A"), 2);
    EXPECT_EQ(state(t, 1, "U"), 2);
    EXPECT_EQ(node("A").states.size(), 3u);
    EXPECT_EQ(node("A").cpt.size(), 3u);

    options.unknown = UnknownValues::Halt;
    t = read("A\nno\nnever\nyes\n");
    EXPECT_EQ(messages(), Messages{"value 'never' is not one of the possible states of variable 'A', in case 2 on line "
                                   "3 (char 1 of file 't.cas')"});
    EXPECT_EQ(t.num_cases(), 1u);
}

TEST_F(CaseFileTest, QueryAnswersEndingInAllHoldForTheRestOfTheFile) {
    std::vector<std::string> asked;
    std::vector<int> answers;
    options.unknown = UnknownValues::Query;
    options.query = [&](const std::string& message, const std::string& choices) {
        asked.push_back(message + " [" + choices + "]");
        int answer = answers.front();
        answers.erase(answers.begin());
        return answer;
    };
    answers = {3, 1};  // Skip All for names, Expand All for the range
    CaseTable t = read("A C\nx1 30\nx2 40\nno -5\n");
    EXPECT_EQ(asked, (Messages{"value 'x1' is not one of the possible states of variable 'A', in case 1 on line 2 (char "
                               "1 of file 't.cas') [Add State,Add All States,Skip Value,Skip All,Halt]",
                               "value 30 for variable 'C' is out of bounds (as defined in node properties), in case 1 "
                               "on line 2 (char 4 of file 't.cas') [Expand Bounds,Expand All,Skip Value,Skip All,Halt]"}));
    EXPECT_EQ(t.num_cases(), 3u);
    EXPECT_EQ(node("C").levels, (std::vector<double>{-5, 10, 40}));

    // Where nothing can be added only skipping or halting is offered; the
    // answers count from the first of those.
    asked.clear();
    answers = {0, 2};
    t = read("U\nbad-name\nbad-name\n");
    EXPECT_EQ(asked.size(), 2u);
    EXPECT_NE(asked[0].find("[Skip Value,Skip All,Halt]"), std::string::npos);
    EXPECT_EQ(t.num_cases(), 1u);
    messages();

    // Without a query the reader skips.
    options.query = nullptr;
    t = read("A\nx3\n");
    EXPECT_EQ(t.num_cases(), 1u);
    EXPECT_EQ(state(t, 0, "A"), kUndefState);
}

TEST_F(CaseFileTest, NonSimpleFindings) {
    CaseTable t = read("A\tB\tC\n~yes\t{0.2, 0.8}\t[11, 30]\n(yes, no)\t>=5\t<10\n~(yes)\t#1\t~{1, 0}\n");
    EXPECT_EQ(messages(), Messages{});
    ASSERT_EQ(t.num_cases(), 3u);
    auto likelihood = [&](size_t c, const std::string& name) {
        auto found = t.nonsimple.find(t.cell(c, column(t, name)));
        return found == t.nonsimple.end() ? std::vector<float>{} : found->second.likelihood;
    };
    EXPECT_EQ(likelihood(0, "A"), (std::vector<float>{0, 1}));
    EXPECT_EQ(likelihood(0, "B"), (std::vector<float>{0.2f, 0.8f}));
    EXPECT_EQ(likelihood(0, "C"), (std::vector<float>{0, 1}));
    EXPECT_EQ(likelihood(1, "A"), (std::vector<float>{1, 1}));
    EXPECT_EQ(likelihood(1, "B"), (std::vector<float>{0, 1}));
    EXPECT_EQ(likelihood(1, "C"), (std::vector<float>{1, 0}));
    EXPECT_EQ(likelihood(2, "A"), (std::vector<float>{0, 1}));
    EXPECT_EQ(likelihood(2, "C"), (std::vector<float>{0, 1}));

    for (auto [entry, fault] : {std::pair{"{0.5}", "likelihood '{0.5}' has 1 entries, but variable 'B' has 2 states"},
                                {"{2, 0}", "likelihood '{2, 0}' for variable 'B' has an entry that is not a number from 0 to 1"},
                                {"(s1, s9)", "'s9' in '(s1, s9)' is not a state of variable 'B'"},
                                {"~(s1, s2)", "finding '~(s1, s2)' leaves no possible state for variable 'B'"},
                                {"[5, 1]", "'[5, 1]' for variable 'B' is not a proper range of values"},
                                {"(s1", "'(s1' for variable 'B' is missing its closing ')'"}}) {
        t = read(std::string("B\n") + entry + "\n");
        EXPECT_EQ(messages(), Messages{std::string(fault) + ", in case 1 on line 2 (char 1 of file 't.cas')"});
        EXPECT_EQ(t.num_cases(), 0u);
    }
}

TEST_F(CaseFileTest, FormatTag) {
    read("// ~->[CASE-1]->~\r\n\r\nA\r\nyes\r\n");
    EXPECT_EQ(messages(), Messages{});
    read("// ~->[CASE-0]->~\nA\nyes\n");
    EXPECT_EQ(messages(), Messages{"case file doesn't indicate format version"});
    read("// ~->[CASE-3]->~\nA\nyes\n");
    EXPECT_EQ(messages(), Messages{"these cases were stored using a newer version of file format (3). They may not "
                                   "read correctly"});
    CaseTable t = read("// ~->[DNET-1]->~\nA\nyes\n");
    EXPECT_EQ(messages(), Messages{"not a case file (it is a DNET file)"});
    EXPECT_EQ(t.num_cases(), 0u);
}

TEST_F(CaseFileTest, NewNodesAreMadeAndPlacedInAGrid) {
    options.new_nodes = NewNodes::AlwaysAdd;
    std::string heading = "A", row = "yes";
    for (int k = 0; k < 14; ++k) {
        heading += " New" + std::to_string(k);
        row += " v" + std::to_string(k % 2);
    }
    CaseTable t = read(heading + " 9bad\n" + row + " x\n");
    Messages said = messages();
    ASSERT_FALSE(said.empty());
    EXPECT_EQ(said[0].rfind("added these nodes to net 'Cases' from case file 't.cas':  New0, New1,", 0), 0u);
    ASSERT_NE(net->find("New13"), nullptr);
    EXPECT_EQ(t.columns.size(), 15u);
    ASSERT_EQ(net->find("New13")->states.size(), 1u);
    EXPECT_EQ(net->find("New1")->states[0].name, "v1");
    // A column of 11 nodes (y from 50 to 650), then a new column.
    EXPECT_EQ(net->find("New10")->vis_y, 650);
    EXPECT_EQ(net->find("New11")->vis_y, 50);
    EXPECT_GT(net->find("New11")->vis_x, net->find("New10")->vis_x);
    EXPECT_EQ(net->find("9bad"), nullptr);
}

TEST_F(CaseFileTest, NewNodesOnlyWhenTheQuerySaysSo) {
    options.new_nodes = NewNodes::Query;
    std::string asked;
    int answer = 1;
    options.query = [&](const std::string& message, const std::string& answers) {
        asked = message + " [" + answers + "]";
        return answer;
    };
    read("A Extra\nyes x\n");
    EXPECT_EQ(asked, "case file 't.cas' refers to these nodes not in net 'Cases':  Extra [Add Them,Don't Add]");
    EXPECT_EQ(messages(), Messages{"case file 't.cas' referred to these nodes not in net 'Cases':  Extra"});
    EXPECT_EQ(net->find("Extra"), nullptr);
    answer = 0;
    options.new_nodes = NewNodes::Query;
    CaseTable t = read("A Extra\nyes x\n");
    ASSERT_NE(net->find("Extra"), nullptr);
    EXPECT_EQ(state(t, 0, "Extra"), 0);
}

TEST_F(CaseFileTest, FilesWithoutHeadingNameColumnsByNumber) {
    options.has_heading = false;
    options.new_nodes = NewNodes::AlwaysQuietlyAdd;
    CaseTable t = read("yes a\nno b\n");
    EXPECT_EQ(messages(), Messages{});
    ASSERT_EQ(t.num_cases(), 2u);
    ASSERT_NE(net->find("X1"), nullptr);
    EXPECT_EQ(net->find("X1")->states.size(), 2u);
    EXPECT_EQ(state(t, 1, "X1"), 1);
}

TEST_F(CaseFileTest, HostileFilesAreReportedNotFollowed) {
    std::mt19937 random(7);
    std::string junk = "A B\n";
    for (int i = 0; i < 20000; ++i) junk += static_cast<char>(random() & 0xFF);
    CaseTable t = read(junk);
    messages();
    EXPECT_LE(t.num_cases(), 20000u);

    t = read("A B\nyes 1\nno 5");  // last line without its line end
    EXPECT_EQ(t.num_cases(), 2u);

    const std::string path = ::testing::TempDir() + "long_line.cas";
    {
        std::ofstream out(path, std::ios::binary);
        out << "A B\nyes 1\n";
        std::string chunk(1 << 20, 'x');
        for (size_t written = 0; written <= CaseSource::kMaxLineLength; written += chunk.size()) out << chunk;
        out << "\nno 5\n";
    }
    stream_ns* file = NewFileStream_ns(path.c_str(), env, nullptr);
    ApiFrame::guard([&] { t = read_case_file(*core_of<Stream>(file), *net, options); });
    std::remove(path.c_str());
    EXPECT_EQ(messages(), Messages{"line 3 of case file '" + path + "' is longer than 67108864 characters, so it is skipped"});
    EXPECT_EQ(t.num_cases(), 2u);
    EXPECT_EQ(t.lines, (std::vector<long>{2, 4}));

    ApiFrame::guard([&] { t = read_case_file(*core_of<Stream>(file), *net, options); });
    EXPECT_EQ(messages(), Messages{"couldn't open file '" + path + "' for reading"});
}

TEST_F(CaseFileTest, HaltingKeepsTheCasesRead) {
    std::string text = "A\n";
    for (int i = 0; i < 20000; ++i) text += i % 2 ? "yes\n" : "no\n";
    int calls = 0;
    set_progress_listener(*core_of<Environment>(env), [&](const std::string& title, double) {
        EXPECT_EQ(title, "reading case file");
        return ++calls == 2;
    });
    CaseTable t = read(text);
    // Halted at the 16384th row, after 2 + 8192 * (3 + 4) of 70002 characters.
    EXPECT_EQ(messages(), Messages{"only 16383 cases were read before action was halted (82%)"});
    EXPECT_EQ(t.num_cases(), 16383u);
}

// Writing findings and reading them back one case at a time.
class CaseRoundTrip : public CaseFileTest {
protected:
    nodelist_bn* list(std::initializer_list<const char*> names) {
        nodelist_bn* l = NewNodeList2_bn(0, handle_of(net));
        for (const char* n : names) AddNodeToList_bn(handle_of(net->find(n)), l, LAST_ENTRY);
        return l;
    }
    std::string contents(stream_ns* s) {
        long length = 0;
        const char* text = GetStreamContents_ns(s, &length);
        return std::string(text, static_cast<size_t>(length));
    }
};

// Every row must fill the heading's columns, or the file would no longer read.
TEST_F(CaseRoundTrip, LaterCasesKeepTheColumnsOfTheHeading) {
    nodelist_bn* nodes = list({"A", "B"});
    stream_ns* file = NewMemoryStream_ns("out.cas", env, nullptr);
    EnterFinding_bn(handle_of(net->find("A")), 1);
    EXPECT_GT(WriteNetFindings_bn(nodes, file, -1, 3), 0);
    const std::string written = contents(file);
    EXPECT_EQ(WriteNetFindings_bn(nodes, file, 7, 3), -1);
    EXPECT_EQ(WriteNetFindings_bn(nodes, file, -1, -1), -1);
    EXPECT_EQ(messages(), (Messages{"can't write the case with an IDnum, because the heading of the case file 'out.cas' has no "
                                    "IDnum column",
                                    "can't write the case without a NumCases entry, because the heading of the case file "
                                    "'out.cas' has a NumCases column"}));
    EXPECT_EQ(contents(file), written);
    EXPECT_GT(WriteNetFindings_bn(nodes, file, -1, 1), 0);
    EXPECT_EQ(contents(file), written + "1\tno\t*\n");
}

TEST_F(CaseRoundTrip, FindingsWrittenReadBack) {
    nodelist_bn* nodes = list({"A", "B", "C", "U"});
    stream_ns* file = NewMemoryStream_ns("out.cas", env, nullptr);
    EnterFinding_bn(handle_of(net->find("A")), 1);
    EnterNodeValue_bn(handle_of(net->find("C")), 12.5);
    EnterFinding_bn(handle_of(net->find("U")), 1);
    const long first = WriteNetFindings_bn(nodes, file, 4, 2.5);
    RetractNetFindings_bn(handle_of(net));
    const prob_bn likelihood[] = {0.25f, 1};
    EnterNodeLikelihood_bn(handle_of(net->find("B")), likelihood);
    const long second = WriteNetFindings_bn(nodes, file, 5, 1);
    EXPECT_EQ(messages(), Messages{});
    EXPECT_EQ(contents(file), "// ~->[CASE-1]->~\r\n\r\n IDnum\tNumCases\tA\tB\tC\tU\n"
                              "4\t2.5\tno\t*\t12.5\t#1\n5\t1\t*\t{0.25, 1}\t*\t*\n");
    EXPECT_EQ(contents(file).substr(static_cast<size_t>(second), 2), "5\t");

    RetractNetFindings_bn(handle_of(net));
    long position = FIRST_CASE, id = 0;
    double freq = 0;
    ReadNetFindings2_bn(&position, file, false, nodes, &id, &freq);
    EXPECT_EQ(position, first);
    EXPECT_EQ(id, 4);
    EXPECT_EQ(freq, 2.5);
    EXPECT_EQ(GetNodeFinding_bn(handle_of(net->find("A"))), 1);
    EXPECT_EQ(GetNodeValueEntered_bn(handle_of(net->find("C"))), 12.5);
    position = NEXT_CASE;
    ReadNetFindings2_bn(&position, file, false, nodes, &id, &freq);
    EXPECT_EQ(position, second);
    EXPECT_EQ(GetNodeFinding_bn(handle_of(net->find("A"))), UNDEF_STATE);
    EXPECT_EQ(GetNodeLikelihood_bn(handle_of(net->find("B")))[0], 0.25f);
    position = NEXT_CASE;
    ReadNetFindings2_bn(&position, file, false, nodes, &id, &freq);
    EXPECT_EQ(position, NO_MORE_CASES);
    position = first;  // a position returned earlier
    ReadNetFindings2_bn(&position, file, false, nodes, nullptr, nullptr);
    EXPECT_EQ(GetNodeFinding_bn(handle_of(net->find("A"))), 1);
    EXPECT_EQ(messages(), Messages{});

    // add keeps the findings of nodes the case leaves missing
    EnterFinding_bn(handle_of(net->find("B")), 0);
    position = second;
    ReadNetFindings2_bn(&position, file, true, nodes, nullptr, nullptr);
    EXPECT_EQ(GetNodeFinding_bn(handle_of(net->find("A"))), 1);
}

TEST_F(CaseRoundTrip, CaseFilesWithCsvExtensionUseCommas) {
    nodelist_bn* nodes = list({"A", "B"});
    const std::string path = ::testing::TempDir() + "round.csv";
    std::remove(path.c_str());
    stream_ns* file = NewFileStream_ns(path.c_str(), env, nullptr);
    EnterFinding_bn(handle_of(net->find("A")), 0);
    WriteNetFindings_bn(nodes, file, -1, -1);
    WriteNetFindings_bn(nodes, file, -1, -1);
    EXPECT_EQ(contents(file), "// ~->[CASE-1]->~\r\n\r\nA,B\nyes,*\nyes,*\n");
    long position = FIRST_CASE, id = 0;
    double freq = 0;
    RetractNetFindings_bn(handle_of(net));
    ReadNetFindings2_bn(&position, file, false, nodes, &id, &freq);
    EXPECT_EQ(id, -1);
    EXPECT_EQ(freq, 1);
    EXPECT_EQ(GetNodeFinding_bn(handle_of(net->find("A"))), 0);
    DeleteStream_ns(file);
    std::remove(path.c_str());
}

TEST_F(CaseRoundTrip, CaseSetsReadTheirOneFile) {
    caseset_cs* cases = NewCaseset_cs("set", env);
    stream_ns* file = memory("set.cas", "NumCases A\n2 yes\n1 no\n");
    AddFileToCaseset_cs(cases, file, 0.5, nullptr);
    CaseTable t = load_caseset(*core_of<CaseSet>(cases), *net);
    EXPECT_EQ(t.weights, (std::vector<double>{1, 0.5}));
    AddFileToCaseset_cs(cases, memory("other.cas", ""), 1, nullptr);
    EXPECT_EQ(messages(), Messages{"with this version of Ravelo, you can only add 1 file to a Caseset, so can't add file "
                                   "'other.cas'"});
    stream_ns* copy = NewMemoryStream_ns("copy.cas", env, nullptr);
    WriteCaseset_cs(cases, copy, nullptr);
    EXPECT_EQ(contents(copy), "NumCases A\n2 yes\n1 no\n");
    DeleteStream_ns(file);
    EXPECT_TRUE(ApiFrame::guard([&] { load_caseset(*core_of<CaseSet>(cases), *net); }));
    EXPECT_EQ(messages(), Messages{"the file of caseset_cs 'set' was deleted before its cases were read"});
}

}  // namespace
}  // namespace ravelo::testing
