#include "infer/findings.h"

#include "infer/compile.h"
#include "infer/update.h"
#include "net_fixture.h"

namespace ravelo {
namespace {

class FindingsTest : public NetTest {
protected:
    void SetUp() override {
        NetTest::SetUp();
        a = node("a", 3);
        b = node("b", 2, {a});
        a->states = {{"low"}, {"mid"}, {"high"}};
        a->cpt = {0.2f, 0.3f, 0.5f};
        b->cpt = {1.0f, 0.0f, 0.5f, 0.5f, 0.0f, 1.0f};
    }
    // Expects the entry to fail with that number and text, leaving the record as it was.
    template <class Entry>
    void expect_refused(Node* n, Entry entry, int number, const std::string& text) {
        FindingRecord before = n->finding;
        EXPECT_THROW(entry(), Failure);
        EXPECT_EQ(last_number(), number);
        EXPECT_EQ(last_message(), text);
        EXPECT_EQ(n->finding.state, before.state);
        EXPECT_EQ(n->finding.likelihood, before.likelihood);
    }
    Node *a = nullptr, *b = nullptr;
};

TEST_F(FindingsTest, CodesReadBackAsTheTableSays) {
    const std::pair<std::vector<float>, int> cases[] = {
        {{1, 1, 1}, kUndefState},          {{0, 0.4f, 0}, 1},
        {{0.5f, 0, 0.5f}, kNegativeFinding}, {{0.5f, 0.2f, 0.5f}, kLikelihoodFinding},
        {{0.3f, 0.3f, 0.3f}, kUndefState}};
    for (const auto& [likelihood, code] : cases) {
        enter_likelihood(*a, likelihood.data());
        EXPECT_EQ(finding_code(*a), code) << likelihood[1];
        if (likelihood[0] == 1) EXPECT_TRUE(a->finding.likelihood.empty());  // no finding at all
        if (code != kUndefState) retract_findings(*a);
    }
    EXPECT_EQ(likelihood_view(*a), std::vector<float>({0.3f, 0.3f, 0.3f}));
    retract_findings(*a);
    EXPECT_EQ(likelihood_view(*a), std::vector<float>({1, 1, 1}));
}

TEST_F(FindingsTest, NegativeFindingOnTwoStatesIsPositiveForTheOther) {
    enter_finding_not(*b, 0);
    EXPECT_EQ(b->finding.state, 1);
    EXPECT_EQ(finding_code(*b), 1);
    enter_finding_not(*a, 2);
    EXPECT_EQ(finding_code(*a), kNegativeFinding);
    enter_finding_not(*a, 0);  // combined with the first
    EXPECT_EQ(finding_code(*a), 1);
    Node* one = node("one", 1);
    expect_refused(one, [&] { enter_finding_not(*one, 0); }, 2327,
                   "can't enter a negative finding for node 'one', since it has only 1 state");
}

TEST_F(FindingsTest, RangeAndOwnFindingTests) {
    net->auto_update = 0;
    expect_refused(a, [&] { enter_finding(*a, 3); }, 3300,
                   "can't enter finding for node 'a', because new finding is too large (3, but states are numbered from 0 to 2)");
    expect_refused(a, [&] { enter_finding(*a, -2); }, 3301,
                   "can't enter finding for node 'a', because new finding is negative (-2), and is not UNDEF_STATE (-3)");
    enter_finding(*a, kUndefState);
    EXPECT_TRUE(a->finding.empty());
    enter_finding(*a, 1);
    enter_finding(*a, 1);  // the same again changes nothing
    expect_refused(a, [&] { enter_finding(*a, 2); }, 3310,
                   "can't enter finding for node 'a', because new finding 'high' contradicts previous finding 'mid' for this node");
    enter_finding(*a, 2, true);  // case data may replace
    EXPECT_EQ(a->finding.state, 2);
    retract_findings(*a);
    float no_high[] = {1, 1, 0};
    enter_likelihood(*a, no_high);
    expect_refused(a, [&] { enter_finding(*a, 2); }, 3313,
                   "can't enter finding for node 'a', because new finding 'high' contradicts previous negative or likelihood findings for this node");
    Node* c = node("c", 0);
    expect_refused(c, [&] { enter_finding(*c, 0); }, 3316,
                   "can't enter finding for node 'c', because the node is continuous without any discretization intervals defined");
}

TEST_F(FindingsTest, LikelihoodTests) {
    net->auto_update = 0;
    float zeros[] = {0, 0, 0};
    expect_refused(a, [&] { enter_likelihood(*a, zeros); }, 3303,
                   "can't enter negative or likelihood finding for node 'a', because it consists of all zeros");
    float negative[] = {0.5f, -0.5f, 1};
    expect_refused(a, [&] { enter_likelihood(*a, negative); }, 3318,
                   "can't enter negative or likelihood finding for node 'a', because it has a negative value (-0.5) at index 1");
    float big[] = {0.5f, 1.5f, 1};
    expect_refused(a, [&] { enter_likelihood(*a, big); }, 3317,
                   "can't enter negative or likelihood finding for node 'a', because it is greater than one (1.5) at index 1");
    b->kind = NodeKind::Decision;
    float half[] = {0.5f, 1};
    expect_refused(b, [&] { enter_likelihood(*b, half); }, 3304,
                   "can't enter negative or likelihood finding for node 'b', because negative or likelihood findings are not allowed for decision nodes");
    b->kind = NodeKind::Nature;
    enter_finding(*a, 0);
    float no_low[] = {0, 1, 1};
    expect_refused(a, [&] { enter_likelihood(*a, no_low); }, 3306,
                   "can't enter negative or likelihood finding for node 'a', because it is inconsistent with previous finding (low) for this node");
    retract_findings(*a);
    enter_likelihood(*a, no_low);
    float only_low[] = {1, 0, 0};
    expect_refused(a, [&] { enter_likelihood(*a, only_low); }, 3307,
                   "can't enter negative or likelihood finding for node 'a', because it is inconsistent with previous negative or likelihood findings for this node");
}

TEST_F(FindingsTest, ModelTestsUseCurrentBeliefsAndCalculatedStates) {
    compile_net(*net, {});
    // b = 0 rules out a = high (its row gives b=0 probability 0).
    enter_finding(*b, 0);
    expect_refused(a, [&] { enter_finding(*a, 2); }, 3302,
                   "can't enter finding for node 'a', because new finding 'high' is inconsistent with findings for other nodes, according to this model");
    float high_only[] = {0, 0, 1};
    expect_refused(a, [&] { enter_likelihood(*a, high_only); }, 3305,
                   "can't enter negative or likelihood finding for node 'a', because it is inconsistent with findings for other nodes, according to this model");
    // With automatic updating off the test is not made.
    net->auto_update = 0;
    enter_finding(*a, 2);
    EXPECT_EQ(a->finding.state, 2);
    retract_net_findings(*net);
    net->auto_update = 1;
    // A function of its parents: a = low makes b = 0.
    enter_finding(*a, 0);
    expect_refused(b, [&] { enter_finding(*b, 1); }, 3319,
                   "can't enter finding for node 'b', because new finding '1' contradicts state '0' calculated from the parent nodes of this node");
    EXPECT_EQ(calc_node_state(*b), 0);
}

TEST_F(FindingsTest, RealValuesMapToIntervals) {
    Node* x = node("x", 0);
    x->levels = {0.0, 1.0, 5.0, 10.0};
    x->states.resize(3);
    net->auto_update = 0;
    enter_value(*x, 3.0);
    EXPECT_EQ(x->finding.state, 1);
    EXPECT_EQ(calc_node_value(*x), 3.0);
    enter_value(*x, 3.0);
    expect_refused(x, [&] { enter_value(*x, 4.0); }, 3320,
                   "can't enter real value finding for node 'x', because new value 4 contradicts previously entered value 3");
    retract_findings(*x);
    EXPECT_FALSE(x->finding.has_value);
    enter_interval(*x, 0.5, 2.0);
    EXPECT_EQ(x->finding.likelihood, std::vector<float>({1, 1, 0}));
    retract_findings(*x);
    enter_gaussian(*x, 3.0, 1.0);
    ASSERT_EQ(x->finding.likelihood.size(), 3u);
    EXPECT_FLOAT_EQ(x->finding.likelihood[1], 1.0f);  // the interval holding the mean weighs most
    EXPECT_LT(x->finding.likelihood[2], 0.1f);
}

TEST_F(FindingsTest, CalibrationReachesTheGivenBeliefs) {
    compile_net(*net, {});
    float target[] = {0.5f, 0.25f, 0.25f};
    enter_calibration(*a, target);
    update_beliefs(*net);
    read_beliefs(*a);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(a->beliefs[static_cast<size_t>(i)], target[i], 1e-6);
}

}  // namespace
}  // namespace ravelo
