// Tables follow the shape of their node's relation along any axis, and
// probability vectors are checked before they enter a table.
#include "core_fixture.h"
#include "net/probcheck.h"
#include "net/reshape.h"
#include "net/states.h"
#include "net/structure.h"
#include "net/tables.h"

namespace ravelo {
namespace {

TEST(RemapAxis, MiddleAxisOfAThreeAxisTable) {
    // 2 x 3 x 2 table holding its own flat index.
    std::vector<int> t(12);
    for (int i = 0; i < 12; ++i) t[static_cast<size_t>(i)] = i;
    // Middle axis: keep old 2, add a new index, keep old 0.
    std::vector<int> out = remap_axis(t, 2, 2, {2, -1, 0}, -9);
    EXPECT_EQ(out, (std::vector<int>{4, 5, -9, -9, 0, 1, 10, 11, -9, -9, 6, 7}));
    EXPECT_TRUE(remap_axis(t, 2, 2, {}, -9).empty());
}

class ReshapeTest : public CoreTest {};

TEST_F(ReshapeTest, SwitchingAMiddleParentToOneOfOtherSizeRepeatsItsFirstRows) {
    Node *a = create_node(*net, "a", 2), *b = create_node(*net, "b", 2), *c = create_node(*net, "c", 2);
    Node *wide = create_node(*net, "wide", 3), *x = create_node(*net, "x", 1);
    connect(*a, *x);
    connect(*b, *x);
    connect(*c, *x);
    // Give each of the 8 rows its own experience, numbered by row.
    for (int r = 0; r < 8; ++r) {
        int ps[3] = {r / 4, (r / 2) % 2, r % 2};
        set_experience(*x, ps, r);
    }
    replace_parent(*x, 1, *wide);
    ASSERT_EQ(x->experience.size(), 12u);
    // Rows (a, wide, c): b's first state rows 0,1 (a=0) and 4,5 (a=1) repeat.
    EXPECT_EQ(x->experience, (std::vector<double>{0, 1, 0, 1, 0, 1, 4, 5, 4, 5, 4, 5}));
    EXPECT_TRUE(b->children.nodes.empty());
    EXPECT_EQ(wide->children.nodes.size(), 1u);
}

TEST_F(ReshapeTest, SingleLevelsAndTheirLimits) {
    Node* u = create_node(*net, "u", 0);
    double levels[3] = {0, 5, 10};
    set_levels(*u, 2, levels);
    u->func_reals = {2.0};
    EXPECT_EQ(failure_of([&] { set_level(*u, -1, 0); }),
              "couldn't change discretization threshold or state value of state -1 of node u, because state "
              "can't be negative");
    EXPECT_EQ(failure_of([&] { set_level(*u, 3, 0); }),
              "couldn't change discretization threshold or state value of state 3 of node u, because it "
              "doesn't have that many states");
    EXPECT_EQ(failure_of([&] { set_level(*u, 0, 3); }),
              "couldn't change discretization threshold or state value of state 0 of node u, because new level "
              "(3) is more than the lowest value of the node's continuous function table (2)");
    EXPECT_NE(failure_of([&] { set_level(*u, 1, 20); }), "");  // would pass the next threshold
    set_level(*u, 1, 4);
    EXPECT_EQ(u->levels[1], 4.0);
}

TEST_F(ReshapeTest, DiscretizingAFunctionTableWarnsOfValuesOutside) {
    Node *p = create_node(*net, "p", 3), *u = create_node(*net, "u", 0);
    connect(*p, *u);
    double levels[3] = {0, 5, 10};
    set_levels(*u, 2, levels);
    u->func_reals = {1.0, 7.5, 12.0};
    discretize_function_table(*u);
    EXPECT_EQ(u->func_states, (std::vector<int>{0, 1, kUndefState}));
    Report* r = next_report(*env, 0, nullptr);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->message, "some values of the deterministic table were outside the range of the discretization");
}

TEST_F(ReshapeTest, WholeTablesAreCheckedBeforeTheyReplace) {
    Node *p = create_node(*net, "p", 2), *c = create_node(*net, "c", 2);
    connect(*p, *c);
    set_whole_cpt(*c, {0.5f, 0.5f, kImpossibleProb, kImpossibleProb});
    EXPECT_EQ(failure_of([&] { set_whole_cpt(*c, {0.5f, 0.5f, 0.5f, 0.6f}); }),
              "couldn't change the CPT table of node 'c', because new row 1 sum of probabilities isn't 1 (100%)");
    EXPECT_EQ(failure_of([&] { set_whole_cpt(*c, {1.0f, 0.0f}); }),
              "couldn't change the CPT table of node 'c', because new table has too few probabilities");
    EXPECT_EQ(c->cpt[2], kImpossibleProb);
    EXPECT_EQ(failure_of([&] { set_whole_func_states(*c, {0, 2}); }),
              "couldn't change the function table of node 'c', because new entry 1 (2) isn't a state of the node");
    set_whole_func_states(*c, {1, kUndefState});
    EXPECT_EQ(c->func_states[0], 1);
}

std::string reason_of(std::initializer_list<float> v, int expected = -1) {
    std::vector<float> p(v);
    return prob_problem_reason(check_prob_vector(p.data(), static_cast<int>(p.size()), expected));
}

TEST(ProbCheck, ToleranceIsTwoMillionthsEitherSide) {
    // Accumulated in double over float entries: 0.999998 as float sums just inside.
    EXPECT_EQ(reason_of({0.5f, 0.499998f}), "okay");
    EXPECT_EQ(reason_of({0.5f, 0.4999979f}), "sum of probabilities isn't 1 (100%)");
    EXPECT_EQ(reason_of({0.5f, 0.5000015f}), "okay");
    // 0.500002f is a little above 0.500002, so this sum is out.
    EXPECT_EQ(reason_of({0.5f, 0.500002f}), "sum of probabilities isn't 1 (100%)");
    EXPECT_EQ(reason_of({0.5f, 0.5000025f}), "sum of probabilities isn't 1 (100%)");
}

TEST(ProbCheck, AllZeroIsNotABadSum) {
    unsigned flags = check_prob_vector(std::vector<float>{0, 0, 0}.data(), 3);
    EXPECT_EQ(flags, kProbAllZero);
    EXPECT_EQ(prob_problem_reason(flags), "all probabilities are 0 (and none are empty)");
    EXPECT_FALSE(flags & kProbRowRefused);
}

TEST(ProbCheck, ImpossibleMarkers) {
    EXPECT_EQ(reason_of({kImpossibleProb, kImpossibleProb}), "indicates an impossible condition");
    EXPECT_EQ(reason_of({kImpossibleProb, 0.0f}), "indicates an impossible condition");
    EXPECT_EQ(reason_of({kImpossibleProb, 0.5f}),
              "some probabilities indicate an impossible condition and some don't");
}

TEST(ProbCheck, MissingEntries) {
    // Any sum passes when an entry is missing; "some" only from the second one.
    EXPECT_EQ(reason_of({kMissingProb, 0.2f}), "has a missing probability");
    EXPECT_EQ(reason_of({kMissingProb, kMissingProb, 0.2f}), "has some missing probabilities");
    // A sum of exactly 1 withdraws "some missing" but keeps the plain flag.
    EXPECT_EQ(reason_of({kMissingProb, kMissingProb, 1.0f}), "has a missing probability");
}

TEST(ProbCheck, FragmentsJoinInTheirOrder) {
    EXPECT_EQ(reason_of({-0.5f, 1.5f}, 3),
              "has too few probabilities, has a negative probability, has a probability greater than 1, "
              "sum of probabilities isn't 1 (100%)");
    // Nothing non-negative adds up: all zero, which a negative entry hides.
    EXPECT_EQ(reason_of({-0.5f, 0.0f}), "has a negative probability");
    EXPECT_EQ(reason_of({0.5f, 0.5f, 0.0f}, 2), "has too many probabilities");
    unsigned flags = check_prob_vector(std::vector<float>{2.0f, -0.5f}.data(), 2, 3);
    EXPECT_EQ(prob_problem_reason(flags, true), "has too few probabilities");
}

TEST(ProbCheck, NotANumberCountsAsNegative) {
    float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(check_prob_vector(std::vector<float>{nan, 1.0f}.data(), 2) & kProbNegative);
}

}  // namespace
}  // namespace ravelo
