/* Compilation, elimination orders, findings and beliefs seen from a plain C
 * program through the public interface. */
#include <math.h>

#include "ravelo/ravelo.h"
#include "check.h"


static environ_ns* env;

static int near(double a, double b) { return fabs(a - b) < 1e-6; }

/* cloudy -> rain, cloudy -> sprinkler, rain & sprinkler -> wet */
static net_bn* make_net(node_bn** nodes) {
    net_bn* net = NewNet_bn("lawn", env);
    node_bn *cloudy = NewNode_bn("cloudy", 2, net), *rain = NewNode_bn("rain", 2, net);
    node_bn *sprinkler = NewNode_bn("sprinkler", 2, net), *wet = NewNode_bn("wet", 2, net);
    AddLink_bn(cloudy, rain);
    AddLink_bn(cloudy, sprinkler);
    AddLink_bn(rain, wet);
    AddLink_bn(sprinkler, wet);
    state_bn c[1], rs[2];
    prob_bn pc[] = {0.5f, 0.5f};
    SetNodeProbs_bn(cloudy, NULL, pc);
    prob_bn pr[2][2] = {{0.8f, 0.2f}, {0.2f, 0.8f}}, ps[2][2] = {{0.1f, 0.9f}, {0.5f, 0.5f}};
    for (c[0] = 0; c[0] < 2; ++c[0]) {
        SetNodeProbs_bn(rain, c, pr[c[0]]);
        SetNodeProbs_bn(sprinkler, c, ps[c[0]]);
    }
    prob_bn pw[4][2] = {{0.99f, 0.01f}, {0.9f, 0.1f}, {0.9f, 0.1f}, {0.0f, 1.0f}};
    for (rs[0] = 0; rs[0] < 2; ++rs[0])
        for (rs[1] = 0; rs[1] < 2; ++rs[1]) SetNodeProbs_bn(wet, rs, pw[rs[0] * 2 + rs[1]]);
    nodes[0] = cloudy, nodes[1] = rain, nodes[2] = sprinkler, nodes[3] = wet;
    return net;
}

/* P(wet = 0) by enumeration of the tables above. */
static double wet_true(void) {
    double total = 0;
    double pr[2][2] = {{0.8, 0.2}, {0.2, 0.8}}, ps[2][2] = {{0.1, 0.9}, {0.5, 0.5}};
    double pw[2][2] = {{0.99, 0.9}, {0.9, 0.0}};
    for (int c = 0; c < 2; ++c)
        for (int r = 0; r < 2; ++r)
            for (int s = 0; s < 2; ++s) total += 0.5 * pr[c][r] * ps[c][s] * pw[r][s];
    return total;
}

static void test_compile_and_sizes(net_bn* net) {
    EXPECT(SizeCompiledNet_bn(net, 0) == -1.0);
    EXPECT_REPORT(5610, "net_bn 'lawn' has no junction tree (it is not yet compiled)");
    CompileNet_bn(net);
    EXPECT(take_number(env) == 0);
    EXPECT(SizeCompiledNet_bn(net, 1) == -1.0);
    EXPECT_REPORT(5609, "argument 'method' is 1, but with this version of Ravelo it must be 0");
    /* Two cliques of 8 entries and a sepset of 4. */
    EXPECT(SizeCompiledNet_bn(net, 0) == 20.0);
    EXPECT(GetNetElimOrder_bn(net) != NULL);
    EXPECT(LengthNodeList_bn(GetNetElimOrder_bn(net)) == 4);
    /* Eliminating rain first gives one clique of all four nodes. */
    CompileNetWith_bn(net, "optimize");
    EXPECT(SizeCompiledNet_bn(net, 0) == 16.0);
    EXPECT(NthNode_bn(GetNetElimOrder_bn(net), 0) == GetNodeNamed_bn("rain", net));
    CompileNetWith_bn(net, "quickly");
    EXPECT(take_number(env) == 5611);
}

static void test_elim_order(net_bn* net, node_bn** n) {
    nodelist_bn* order = NewNodeList2_bn(0, net);
    for (int i = 3; i >= 1; --i) AddNodeToList_bn(n[i], order, LAST_ENTRY);
    SetNetElimOrder_bn(order, net);
    EXPECT_REPORT(2290, "couldn't set the elimination order of net 'lawn', because new list is missing a node (named 'cloudy')");
    EXPECT(SizeCompiledNet_bn(net, 0) == 16.0); /* still compiled */
    AddNodeToList_bn(n[3], order, LAST_ENTRY);
    SetNetElimOrder_bn(order, net);
    EXPECT_REPORT(2290, "couldn't set the elimination order of net 'lawn', because new list contains a duplicate node (named 'wet')");
    nodelist_bn* holes = NewNodeList2_bn(4, net);
    SetNetElimOrder_bn(holes, net);
    EXPECT_REPORT(2290, "couldn't set the elimination order of net 'lawn', because new list contains a NULL");
    DeleteNodeList_bn(holes);
    RemoveNthNode_bn(order, LAST_ENTRY);
    AddNodeToList_bn(n[0], order, LAST_ENTRY);
    SetNetElimOrder_bn(order, net);
    EXPECT(take_number(env) == 0);
    EXPECT(SizeCompiledNet_bn(net, 0) == -1.0); /* a new order discards the tree */
    take_number(env);
    CompileNet_bn(net);
    SetNetElimOrder_bn(order, net);              /* the same order again */
    EXPECT(SizeCompiledNet_bn(net, 0) == 20.0);  /* ... changes nothing */
    const nodelist_bn* kept = GetNetElimOrder_bn(net);
    EXPECT(kept != order && LengthNodeList_bn(kept) == 4 && NthNode_bn(kept, 0) == n[3]);
    DeleteNodeList_bn(order);
}

static void test_beliefs(net_bn* net, node_bn** n) {
    const prob_bn* b = GetNodeBeliefs_bn(n[3]);
    EXPECT(b && near(b[0], wet_true()));
    EXPECT(IsBeliefUpdated_bn(n[3]));
    /* Auto-update on (the default): beliefs are brought up to date by the entry itself. */
    EnterFinding_bn(n[3], 0);
    EXPECT(IsBeliefUpdated_bn(n[3]));
    /* Off: they wait for the next query. */
    SetNetAutoUpdate_bn(net, 0);
    RetractNodeFindings_bn(n[3]);
    EXPECT(!IsBeliefUpdated_bn(n[3]));
    EnterFinding_bn(n[3], 0);
    EXPECT(!IsBeliefUpdated_bn(n[3]));
    SetNetAutoUpdate_bn(net, 1);
    EXPECT(GetNodeFinding_bn(n[3]) == 0);
    EXPECT(near(FindingsProbability_bn(net), wet_true()));
    /* Wet grass makes rain likelier. */
    EXPECT(GetNodeBeliefs_bn(n[1])[0] > 0.5f);
    state_bn both[] = {1, 1};
    nodelist_bn* pair = NewNodeList2_bn(0, net);
    AddNodeToList_bn(n[1], pair, LAST_ENTRY);
    AddNodeToList_bn(n[2], pair, LAST_ENTRY);
    EXPECT(near(JointProbability_bn(pair, both), 0.0)); /* both off: wet is impossible */
    state_bn config[2] = {-9, -9};
    MostProbableConfig_bn(pair, config, 0);
    EXPECT(config[0] >= 0 && config[1] >= 0 && !(config[0] == 1 && config[1] == 1));
    MostProbableConfig_bn(pair, config, 1);
    EXPECT(take_number(env) == 5616);
    DeleteNodeList_bn(pair);

    prob_bn lik[] = {0.5f, 0.5f};
    EnterNodeLikelihood_bn(n[0], NULL);
    EXPECT_REPORT(5514, "argument 'likelihood' is NULL, for node_bn cloudy");
    EnterNodeLikelihood_bn(n[0], lik);
    EXPECT(GetNodeFinding_bn(n[0]) == UNDEF_STATE);
    RetractNodeFindings_bn(n[3]);
    EXPECT(near(GetNodeBeliefs_bn(n[3])[0], wet_true()));
    EXPECT(GetNodeFinding_bn(n[3]) == UNDEF_STATE);
    EXPECT(GetNodeLikelihood_bn(n[3])[0] == 1.0f);

    /* Inconsistent findings: zeros, never stale beliefs. */
    EXPECT(SetNetAutoUpdate_bn(net, 0) == 1);
    EXPECT(GetNetAutoUpdate_bn(net) == 0);
    EnterFinding_bn(n[1], 1);
    EnterFinding_bn(n[2], 1);
    EnterFinding_bn(n[3], 0);
    b = GetNodeBeliefs_bn(n[0]);
    EXPECT(ErrorNumber_ns(last_report(env)) == 2078);
    EXPECT(b && b[0] == 0.0f && b[1] == 0.0f);
    EXPECT(FindingsProbability_bn(net) == -1.0);
    take_number(env);
    RetractNetFindings_bn(net);
    EXPECT(near(GetNodeBeliefs_bn(n[3])[0], wet_true()));

    node_bn* util = NewNode_bn("worth", 0, net);
    SetNodeKind_bn(util, UTILITY_NODE);
    take_number(env);
    nodelist_bn* with_util = DupNodeList_bn(GetNetNodes2_bn(net, NULL));
    SetNetElimOrder_bn(with_util, net);
    EXPECT_REPORT(2290, "couldn't set the elimination order of net 'lawn', because new list contains a utility node (named 'worth')");
    DeleteNodeList_bn(with_util);
    CompileNetWith_bn(net, "optimize");
    EXPECT_REPORT(2007, "can't use optimizing compiler for net 'lawn' because it has a decision node(s)");
    EXPECT(GetNodeFinding_bn(util) == UNDEF_STATE);
    EXPECT(take_number(env) == 5515);
    GetNodeBeliefs_bn(util);
    EXPECT_REPORT(2364, "'worth' is a utility node, but can only get beliefs of a nature node or decision node");
}

static void test_relations(node_bn** n) {
    nodelist_bn* out = NewNodeList2_bn(0, GetNodeNet_bn(n[0]));
    GetRelatedNodes_bn(out, "children", n[0]);
    EXPECT(LengthNodeList_bn(out) == 2);
    GetRelatedNodes_bn(out, "parents, union", n[3]);
    EXPECT(LengthNodeList_bn(out) == 2);
    EXPECT(IsNodeRelated_bn(n[0], "ancestors", n[3]));
    EXPECT(!IsNodeRelated_bn(n[3], "ancestors", n[0]));
    GetRelatedNodes_bn(out, "cousins", n[0]);
    EXPECT_REPORT(5672, "invalid relation 'cousins' starting at character position 0");
    EXPECT(LengthNodeList_bn(out) == 2);
    GetRelatedNodes_bn((nodelist_bn*)GetNodeParents_bn(n[3]), "parents", n[3]);
    EXPECT(take_number(env) == 5147); /* a constant list */
    DeleteNodeList_bn(out);
}

/* A family of 10^5 entries: 400 KB of tables, above a 200 KB limit. */
static void test_memory_limit(void) {
    net_bn* net = NewNet_bn("wide", env);
    node_bn* child = NewNode_bn("child", 10, net);
    const char* names[] = {"p1", "p2", "p3", "p4"};
    for (int i = 0; i < 4; ++i) AddLink_bn(NewNode_bn(names[i], 10, net), child);
    double previous = LimitMemoryUsage_ns(200000, env);
    CompileNet_bn(net);
    EXPECT(ErrorNumber_ns(last_report(env)) == 3632);
    EXPECT(strstr(ErrorMessage_ns(last_report(env)), "to compile/update net 'wide' (see LimitMemoryUsage_ns)"));
    EXPECT(SizeCompiledNet_bn(net, 0) == -1.0);
    EXPECT(GetNetElimOrder_bn(net) == NULL);
    take_number(env);
    LimitMemoryUsage_ns(previous > 0 ? previous : 1e15, env);
    CompileNet_bn(net);
    EXPECT_REPORT(2760, "some node(s) (e.g. child) don't have conditional probability tables (CPTs) (they "
                        "will be taken as having uniform probabilities)"); /* only the first table warning */
    EXPECT(SizeCompiledNet_bn(net, 0) == 1e5);
    DeleteNet_bn(net);
}

int main(void) {
    env = open_environment();
    node_bn* n[4];
    net_bn* net = make_net(n);
    EXPECT(take_number(env) == 0);
    test_compile_and_sizes(net);
    test_elim_order(net, n);
    test_beliefs(net, n);
    test_relations(n);
    test_memory_limit();

    node_bn* gone = n[0];
    DeleteNode_bn(gone);
    EnterFinding_bn(gone, 0);
    EXPECT(take_number(env) == 5184);
    EXPECT(GetNodeBeliefs_bn(NULL) == NULL);
    EXPECT(take_number(env) == 5105);
    DeleteNet_bn(net);
    return finish(env);
}
