// Node tables through the interface: layout, setting rows, function and
// experience tables, and the refusals that leave a table as it was.
#include <cmath>
#include <vector>

#include "net_fixture.h"

namespace {

class TablesTest : public NetTest {};

TEST_F(TablesTest, RowLayoutFollowsParentOrder) {
    node_bn *a = node("a", 2), *b = node("b", 3), *c = node("c", 4);
    AddLink_bn(a, c);
    AddLink_bn(b, c);
    // Fill each row with a distinct, valid vector, then read one back.
    for (int s1 = 0; s1 < 2; ++s1)
        for (int s2 = 0; s2 < 3; ++s2) {
            state_bn ps[2] = {s1, s2};
            float row = static_cast<float>(s1 * 3 + s2);
            prob_bn probs[4] = {row / 10, 0, 0, 1 - row / 10};
            SetNodeProbs_bn(c, ps, probs);
        }
    ASSERT_TRUE(no_reports()) << last_message();
    state_bn cond[2] = {1, 2};
    const prob_bn* p = GetNodeProbs_bn(c, cond);
    ASSERT_NE(p, nullptr);
    EXPECT_FLOAT_EQ(p[0], 0.5f);  // row 5
    EXPECT_FLOAT_EQ(p[3], 0.5f);
    state_bn first[2] = {0, 0};
    EXPECT_EQ(GetNodeProbs_bn(c, first) + 20, p);  // entries 20 to 23 of one array
}

TEST_F(TablesTest, MixedImpossibleRowIsRefusedAndTheRowKept) {
    node_bn* a = node("a", 2);
    prob_bn good[2] = {0.3f, 0.7f};
    SetNodeProbs_bn(a, nullptr, good);
    prob_bn mixed[2] = {-1.0f, 1.0f};  // the impossible marker beside a positive entry
    SetNodeProbs_bn(a, nullptr, mixed);
    EXPECT_NE(take_message().find("some probabilities indicate an impossible condition and some don't"),
              std::string::npos);
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(a, nullptr)[0], 0.3f);
}

TEST_F(TablesTest, EveryStateSetsEveryMatchingRow) {
    node_bn *a = node("a", 2), *b = node("b", 2), *c = node("c", 2);
    AddLink_bn(a, c);
    AddLink_bn(b, c);
    state_bn every_a[2] = {EVERY_STATE, 1};
    prob_bn probs[2] = {0.25f, 0.75f};
    SetNodeProbs_bn(c, every_a, probs);
    state_bn s01[2] = {0, 1}, s11[2] = {1, 1}, s00[2] = {0, 0};
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, s01)[0], 0.25f);
    EXPECT_FLOAT_EQ(GetNodeProbs_bn(c, s11)[0], 0.25f);
    EXPECT_FALSE(GetNodeProbs_bn(c, s00)[0] >= 0);  // still missing
    bool_ns complete = 1;
    EXPECT_TRUE(HasNodeTable_bn(c, &complete));
    EXPECT_FALSE(complete);
}

TEST_F(TablesTest, ParentStatesAreChecked) {
    node_bn *a = node("a", 2), *c = node("c", 2);
    AddLink_bn(a, c);
    prob_bn probs[2] = {0.5f, 0.5f};
    SetNodeProbs_bn(c, nullptr, probs);
    EXPECT_EQ(take_message(), "NULL passed for the vector of node states");
    state_bn out[1] = {2};
    SetNodeProbs_bn(c, out, probs);
    EXPECT_EQ(take_number(), 3089);
    EXPECT_FALSE(HasNodeTable_bn(c, nullptr));  // nothing made by the refused call
}

TEST_F(TablesTest, NoImplicitCptOverAFunctionTable) {
    node_bn* a = node("a", 2);
    SetNodeFuncState_bn(a, nullptr, 1);
    EXPECT_TRUE(IsNodeDeterministic_bn(a));
    const prob_bn* derived = GetNodeProbs_bn(a, nullptr);
    ASSERT_NE(derived, nullptr);
    EXPECT_EQ(derived[0], 0.0f);
    EXPECT_EQ(derived[1], 1.0f);
    prob_bn probs[2] = {0.5f, 0.5f};
    SetNodeProbs_bn(a, nullptr, probs);
    EXPECT_EQ(last_number(), 3071);
    EXPECT_EQ(take_message(),
              "couldn't change a CPT table entry of node 'a', because it doesn't have a CPT table yet");
    DeleteNodeTables_bn(a);
    SetNodeProbs_bn(a, nullptr, probs);
    EXPECT_TRUE(no_reports());
    EXPECT_FALSE(IsNodeDeterministic_bn(a));
}

TEST_F(TablesTest, CptNeedsDiscreteVariables) {
    node_bn* x = node("x", 0);  // continuous, not discretised
    node_bn* c = node("c", 2);
    prob_bn probs[2] = {0.5f, 0.5f};
    SetNodeProbs_bn(x, nullptr, probs);
    EXPECT_EQ(take_message(),
              "can't give node 'x' a CPT table, because it is not a discrete or discretized variable");
    AddLink_bn(x, c);
    state_bn ps[1] = {0};
    SetNodeProbs_bn(c, ps, probs);
    EXPECT_EQ(last_number(), 3089);  // x has no states at all
    ClearErrors_ns(env, INTERNAL_ERR);
    SetNodeExperience_bn(c, ps, 1.0);
    EXPECT_NE(take_message().find("out of range"), std::string::npos);
}

TEST_F(TablesTest, TooLargeTableIsRefused) {
    node_bn* c = node("c", 2);
    for (int i = 0; i < 28; ++i) {
        std::string name = "p" + std::to_string(i);
        AddLink_bn(node(name.c_str(), 2), c);
    }
    std::vector<state_bn> ps(28, 0);
    prob_bn probs[2] = {0.5f, 0.5f};
    SetNodeProbs_bn(c, ps.data(), probs);
    EXPECT_EQ(take_message(),
              "can't create CPT table for node 'c', because the CPT table would be too large (5.36871e+08), "
              "due to too many parent nodes");
    EXPECT_FALSE(HasNodeTable_bn(c, nullptr));
}

TEST_F(TablesTest, DiscreteFunctionEntries) {
    node_bn *a = node("a", 2), *f = node("f", 3);
    SetNodeStateNames_bn(a, "lo hi");
    AddLink_bn(a, f);
    state_bn ps[1] = {1};
    SetNodeFuncState_bn(f, ps, 3);
    EXPECT_EQ(take_message(),
              "couldn't change an entry of the discrete function table of node 'f', because the new "
              "entry (3) is greater than the highest state (2).  New entry was for condition a=hi");
    SetNodeFuncState_bn(f, ps, -2);
    EXPECT_EQ(take_message(),
              "couldn't change an entry of the discrete function table of node 'f', because the new "
              "entry is negative (-2).  New entry was for condition a=hi");
    SetNodeFuncState_bn(f, ps, 2);
    EXPECT_EQ(GetNodeFuncState_bn(f, ps), 2);
    state_bn other[1] = {0};
    EXPECT_EQ(GetNodeFuncState_bn(f, other), UNDEF_STATE);
    bool_ns complete = 1;
    EXPECT_TRUE(HasNodeTable_bn(f, &complete));
    EXPECT_FALSE(complete);
}

TEST_F(TablesTest, ContinuousFunctionEntriesStayInRange) {
    node_bn* u = node("u", 0);
    level_bn levels[3] = {0, 10, 20};
    SetNodeLevels_bn(u, 2, levels);
    SetNodeFuncReal_bn(u, nullptr, 25.5);
    EXPECT_EQ(take_message(),
              "couldn't change an entry of the continuous function table of node 'u', because it is "
              "25.5, which is higher than the highest range (= 20).  New entry was for condition []");
    SetNodeFuncReal_bn(u, nullptr, 12.0);
    EXPECT_EQ(GetNodeFuncReal_bn(u, nullptr), 12.0);
    // Thresholds may no longer leave the table's values outside.
    level_bn narrower[3] = {13, 15, 20};
    SetNodeLevels_bn(u, 2, narrower);
    EXPECT_EQ(take_number(), 3269);
    EXPECT_EQ(GetNodeLevels_bn(u)[0], 0.0);
}

TEST_F(TablesTest, ExperienceEntries) {
    node_bn* a = node("a", 2);
    EXPECT_TRUE(std::isnan(GetNodeExperience_bn(a, nullptr)));
    SetNodeExperience_bn(a, nullptr, -1.0);
    EXPECT_EQ(take_message(),
              "couldn't change an experience quantity of node 'a', because the new value is negative (-1)");
    SetNodeExperience_bn(a, nullptr, 7.5);
    EXPECT_EQ(GetNodeExperience_bn(a, nullptr), 7.5);
    EXPECT_FALSE(HasNodeTable_bn(a, nullptr));  // experience alone is no relation
    DeleteNodeTables_bn(a);
    EXPECT_TRUE(std::isnan(GetNodeExperience_bn(a, nullptr)));
}

}  // namespace
