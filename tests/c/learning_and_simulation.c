/* Simulating cases from a net and learning a second net's tables from them
 * by counting, seen from a plain C program through the public interface. */
#include <math.h>

#include "ravelo/ravelo.h"
#include "check.h"

static environ_ns* env;

/* weather -> umbrella, with tables to recover (fresh tables when learner). */
static net_bn* make_net(const char* name, int with_tables, node_bn** nodes) {
    net_bn* net = NewNet_bn(name, env);
    nodes[0] = NewNode_bn("weather", 2, net);
    nodes[1] = NewNode_bn("umbrella", 3, net);
    AddLink_bn(nodes[0], nodes[1]);
    if (with_tables) {
        prob_bn pw[] = {0.3f, 0.7f}, pu[2][3] = {{0.1f, 0.2f, 0.7f}, {0.6f, 0.3f, 0.1f}};
        SetNodeProbs_bn(nodes[0], NULL, pw);
        for (state_bn w = 0; w < 2; ++w) SetNodeProbs_bn(nodes[1], &w, pu[w]);
    }
    return net;
}

int main(void) {
    env = open_environment();
    node_bn *source[2], *learner[2];
    net_bn* net = make_net("source", 1, source);
    net_bn* fresh = make_net("learner", 0, learner);
    nodelist_bn *drawn = NewNodeList2_bn(0, net), *learning = NewNodeList2_bn(0, fresh);
    for (int i = 0; i < 2; ++i) {
        AddNodeToList_bn(source[i], drawn, LAST_ENTRY);
        AddNodeToList_bn(learner[i], learning, LAST_ENTRY);
    }
    randgen_ns* gen = NewRandomGenerator_ns("2024", env, NULL);
    SetNetRandomGen_bn(net, gen);
    CompileNet_bn(net);

    const int cases = 20000;
    for (int k = 0; k < cases; ++k) {
        EXPECT(GenerateRandomCase_bn(drawn, 0, 1) == 0);
        for (int i = 0; i < 2; ++i) EnterFinding_bn(learner[i], GetNodeFinding_bn(source[i]));
        ReviseCPTsByFindings_bn(learning, 0, 1.0);
        RetractNetFindings_bn(net);
        RetractNetFindings_bn(fresh);
    }
    EXPECT(count_reports(env) == 0);
    /* The learned tables recover the source's within sampling error. */
    for (state_bn w = 0; w < 2; ++w) {
        const prob_bn* want = GetNodeProbs_bn(source[1], &w);
        const prob_bn* got = GetNodeProbs_bn(learner[1], &w);
        for (int u = 0; u < 3; ++u) EXPECT(fabs(want[u] - got[u]) < 0.02);
    }
    EXPECT(fabs(GetNodeProbs_bn(learner[0], NULL)[0] - 0.3) < 0.015);
    EXPECT(fabs(GetNodeExperience_bn(learner[0], NULL) - (cases + 2)) < 1e-3);

    /* Fading all the way forgets it. */
    FadeCPTable_bn(learner[0], 1.0);
    EXPECT(GetNodeProbs_bn(learner[0], NULL)[0] == 0.5f);
    FadeCPTable_bn(learner[0], 2.0);
    EXPECT_REPORT(5516, "argument 'degree' is 2, but it should be within 0 to 1 inclusive");

    /* A finding of an impossible state: forward sampling gives up, junction-tree sampling reports the zero. */
    prob_bn certain[] = {1.0f, 0.0f};
    SetNodeProbs_bn(source[0], NULL, certain);
    SetNetAutoUpdate_bn(net, 0);
    EnterFinding_bn(source[0], 1);
    EXPECT(GenerateRandomCase_bn(drawn, FORWARD_SAMPLING, 100) == REJECTED_CASE_RESULT);
    EXPECT(count_reports(env) == 0);
    EXPECT(GenerateRandomCase_bn(drawn, 1, 1) == ERROR_CASE_RESULT);
    EXPECT(take_number(env) != 0);
    EXPECT(GetNodeFinding_bn(source[1]) == UNDEF_STATE);

    DeleteRandomGen_ns(gen);
    DeleteNodeList_bn(drawn);
    DeleteNodeList_bn(learning);
    return finish(env);
}
