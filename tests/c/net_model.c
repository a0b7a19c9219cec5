/* The net model seen from a plain C program: a small net built through the
 * interface, its tables, a refused link, and handles that outlive their objects. */
#include <stdio.h>
#include <string.h>

#include "ravelo/ravelo.h"

static int failures = 0;

#define EXPECT(cond)                                                          \
    do {                                                                      \
        if (!(cond)) {                                                        \
            fprintf(stderr, "%s:%d: expected %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                       \
        }                                                                     \
    } while (0)

static const report_ns* last_report(environ_ns* env) {
    const report_ns *r = NULL, *last = NULL;
    while ((r = GetError_ns(env, NULL_ERR, r)) != NULL) last = r;
    return last;
}

static int last_number(environ_ns* env) {
    const report_ns* r = last_report(env);
    int n = r ? ErrorNumber_ns(r) : 0;
    ClearErrors_ns(env, INTERNAL_ERR);
    return n;
}

int main(void) {
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    EXPECT(InitRavelo2_bn(env, mesg) == 0);

    net_bn* net = NewNet_bn("Asia", env);
    node_bn* smoke = NewNode_bn("Smoking", 2, net);
    node_bn* cancer = NewNode_bn("Cancer", 2, net);
    node_bn* xray = NewNode_bn("XRay", 2, net);
    SetNodeStateNames_bn(smoke, "no, yes");
    SetNodeStateNames_bn(cancer, "absent present");
    EXPECT(AddLink_bn(smoke, cancer) == 0);
    EXPECT(AddLink_bn(cancer, xray) == 0);
    EXPECT(AddLink_bn(xray, smoke) == -1);
    EXPECT(last_number(env) == 3223);

    prob_bn p_smoke[2] = {0.5f, 0.5f};
    SetNodeProbs_bn(smoke, NULL, p_smoke);
    state_bn yes[1] = {1};
    prob_bn p_cancer[2] = {0.9f, 0.1f};
    SetNodeProbs_bn(cancer, yes, p_cancer);
    EXPECT(last_report(env) == NULL);
    EXPECT(GetNodeProbs_bn(cancer, yes)[1] == 0.1f);
    prob_bn too_much[2] = {0.9f, 0.2f};
    SetNodeProbs_bn(cancer, yes, too_much);
    EXPECT(last_number(env) == 3072);
    EXPECT(GetNodeProbs_bn(cancer, yes)[1] == 0.1f);

    SetNodeKind_bn(xray, (nodekind_bn)99);
    EXPECT(last_number(env) == 3243);
    SetNodeKind_bn(xray, DECISION_NODE);
    EXPECT(GetNodeKind_bn(xray) == DECISION_NODE);

    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    EXPECT(LengthNodeList_bn(nodes) == 3);
    EXPECT(NthNode_bn(nodes, 1) == cancer);
    EXPECT(GetStateNamed_bn("present", cancer) == 1);

    /* Deleting Cancer leaves a disconnected stand-in as XRay's parent. */
    DeleteNode_bn(cancer);
    EXPECT(last_report(env) == NULL);
    node_bn* stand_in = NthNode_bn(GetNodeParents_bn(xray), 0);
    EXPECT(stand_in != NULL && GetNodeKind_bn(stand_in) == DISCONNECTED_NODE);
    EXPECT(strcmp(GetNodeName_bn(stand_in), "Cancer") == 0);
    EXPECT(GetNodeNumberStates_bn(cancer) == -1);
    EXPECT(last_number(env) == 5184);

    nodelist_bn* mine = DupNodeList_bn(nodes);
    DeleteNet_bn(net);
    EXPECT(GetNetName_bn(net) == NULL);
    EXPECT(last_number(env) == 5142);
    EXPECT(LengthNodeList_bn(mine) == 3); /* the caller's list outlives the net */
    DeleteNodeList_bn(mine);
    EXPECT(LengthNodeList_bn(mine) == -1);
    EXPECT(last_number(env) == 5146);

    EXPECT(CloseRavelo_bn(env, mesg) == 0);
    if (failures) fprintf(stderr, "%d failures\n", failures);
    return failures != 0;
}
