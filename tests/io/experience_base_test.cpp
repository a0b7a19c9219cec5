// The experience base of a net file: the prior count per cell that a
// node's experience table starts from when learning first touches it.
#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using ExperienceBase = IoTest;

std::string net_text(const std::string& c_fields) {
    return "// ~->[DNET-1]->~\n\nbnet T {\nnode A { states = (a0, a1); probs = (0.5, 0.5); };\n"
           "node C { states = (c0, c1, c2); parents = (A); probs = ((0.2, 0.3, 0.5), (0.6, 0.3, 0.1)); " +
           c_fields + " };\n};\n";
}

node_bn* node_named(Net* net, const char* name) { return GetNodeNamed_bn(name, handle_of(net)); }

TEST_F(ExperienceBase, CountingLearningStartsFromIt) {
    Net* net = read_ok("t.dne", net_text("ExperBase = 2.5;"));
    node_bn* a = node_named(net, "A");
    node_bn* c = node_named(net, "C");
    const nodelist_bn* all = GetNetNodes2_bn(handle_of(net), nullptr);
    // Two cases (a1, c0) and one (a1, c2) of weight 1.5.
    EnterFinding_bn(a, 1);
    EnterFinding_bn(c, 0);
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    ReviseCPTsByFindings_bn(all, 0, 1.0);
    RetractNodeFindings_bn(c);
    EnterFinding_bn(c, 2);
    ReviseCPTsByFindings_bn(all, 0, 1.5);
    EXPECT_EQ(error_count(), 0) << last_message();

    const double prior = 2.5, n = 3, seen[] = {2, 0, 1.5}, cases = 3.5, p[] = {0.6, 0.3, 0.1};
    const state_bn a1[] = {1};
    EXPECT_NEAR(GetNodeExperience_bn(c, a1), prior * n + cases, 1e-5);
    const prob_bn* learned = GetNodeProbs_bn(c, a1);
    for (int s = 0; s < 3; ++s)
        EXPECT_NEAR(learned[s], (prior * n * p[s] + seen[s]) / (prior * n + cases), 1e-6) << s;
    // The untouched row keeps its probabilities; the parent, without a base, starts from 1 per cell.
    const state_bn a0[] = {0};
    EXPECT_NEAR(GetNodeProbs_bn(c, a0)[0], 0.2, 1e-6);
    EXPECT_NEAR(GetNodeProbs_bn(a, nullptr)[1], (1 * 2 * 0.5 + 3.5) / (1 * 2 + 3.5), 1e-6);
}

TEST_F(ExperienceBase, RoundTripsThroughTheFile) {
    Net* net = read_ok("t.dne", net_text("numcases = (4, 7); ExperBase = 0.25;"));
    EXPECT_EQ(net->find("C")->prior_count, 0.25);
    EXPECT_TRUE(is_undef(net->find("A")->prior_count));
    const std::string text = write_text(net, "t.dne");
    EXPECT_NE(text.find("ExperBase = 0.25;"), std::string::npos) << text;
    // A node without one gets none written.
    EXPECT_EQ(text.find("ExperBase"), text.rfind("ExperBase"));
    Net* again = read_ok("u.dne", text);
    EXPECT_EQ(again->find("C")->prior_count, 0.25);
    EXPECT_EQ(again->find("C")->experience, (std::vector<double>{4, 7}));
    EXPECT_EQ(write_text(again, "u.dne"), text);

    // A table of equal entries names the same base; "@undef" none at all.
    EXPECT_EQ(read_ok("v.dne", net_text("ExperBase = (3, 3);"))->find("C")->prior_count, 3.0);
    EXPECT_TRUE(is_undef(read_ok("w.dne", net_text("ExperBase = @undef;"))->find("C")->prior_count));
}

TEST_F(ExperienceBase, FaultsRefuseTheNet) {
    const std::pair<const char*, const char*> cases[] = {
        {"ExperBase = -1;", "'-1' is less than zero"},
        {"ExperBase = many;", "illegal value 'many' in the experience base of node C"},
        {"ExperBase = (1, 2);", "the experience base of node C has differing entries (1 and 2)"},
        {"ExperBase = ();", "the experience base of node C is empty"},
    };
    for (const auto& [fields, message] : cases) {
        SCOPED_TRACE(fields);
        EXPECT_EQ(read_text("bad.dne", net_text(fields)), nullptr);
        EXPECT_NE(last_message().find(message), std::string::npos);
        EXPECT_EQ(core_of<Environment>(env)->nets.size(), 0u);
    }
}

}  // namespace
}  // namespace ravelo::testing
