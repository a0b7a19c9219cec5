/* The net model seen from a plain C program: a small net built through the
 * interface, its tables, refused calls read back by number and text, and
 * handles that outlive their objects. */

#include "ravelo/ravelo.h"
#include "check.h"

static void names_and_links(environ_ns* env) {
    net_bn* net = NewNet_bn("Links", env);
    EXPECT(NewNode_bn("abcdefghijabcdefghijabcdefghij", 2, net) != NULL);
    EXPECT(NewNode_bn("abcdefghijabcdefghijabcdefghijK", 2, net) == NULL);
    EXPECT_REPORT(3212, "'abcdefghijabcdefghijabcdefghijK' is not a legal name for a node");
    node_bn *a = NewNode_bn("a", 2, net), *b = NewNode_bn("b", 2, net);
    EXPECT(NewNode_bn("a", 2, net) == NULL);
    EXPECT_REPORT(3210, "can't add node a to net Links because it already has a node with that name");
    SetNodeStateName_bn(a, 0, "1x");
    EXPECT_REPORT(3259, "can't set the name of the 1st state of node 'a', because '1x' starts with "
                        "non-alphabetic character '1'");
    SetNodeStateName_bn(a, 5, "x");
    EXPECT_REPORT(3255, "can't change the name of state with index 5 of node a, because its state "
                        "indexes must be between 0 and 1");
    SetNodeStateTitle_bn(a, -1, "x");
    EXPECT_REPORT(3256, "can't set the title of state -1 of node a, because its state indexes must "
                        "be between 0 and 1");
    SetNodeStateComment_bn(a, 2, "x");
    EXPECT_REPORT(3257, "can't change the comment of state 2 of node a, because its state indexes "
                        "must be between 0 and 1");

    EXPECT(AddLink_bn(a, a) == -1);
    EXPECT_REPORT(3223, "can't connect node 'a' to node 'a', because that would result in a "
                        "directed cycle (with no time delays)");
    EXPECT(AddLink_bn(a, b) == 0);
    EXPECT(AddLink_bn(a, b) == -1);
    EXPECT_REPORT(3222, "can't connect node 'a' to node 'b', because they are already connected");
    SetNodeInputName_bn(b, 0, "a b");
    EXPECT_REPORT(3261, "can't change the name of link 0 of node b to 'a b', because that 'a b' "
                        "contains a space");
    SetNodeKind_bn(b, DISCONNECTED_NODE);
    EXPECT_REPORT(3241, "argument 'kind' passed for node_bn 'b' is DISCONNECTED_NODE, but link "
                        "disconnection should be done with SwitchNodeParent_bn or CopyNodes_bn");
    SetNodeKind_bn(b, (nodekind_bn)6);
    EXPECT_REPORT(3240, "argument 'kind' passed for node_bn 'b' is ADVERSARY_NODE, but that is not "
                        "supported yet");

    /* Disconnecting leaves a stand-in that may only be a parent. */
    SwitchNodeParent_bn(0, b, NULL);
    EXPECT(last_report(env) == NULL);
    node_bn* cut = NthNode_bn(GetNodeParents_bn(b), 0);
    EXPECT(GetNodeKind_bn(cut) == DISCONNECTED_NODE);
    node_bn* c = NewNode_bn("c", 2, net);
    EXPECT(AddLink_bn(cut, c) == -1);
    EXPECT_REPORT(3225, "passed node_bn 'a_1' for argument 'pred' is a DISCONNECTED_NODE, so a link "
                        "cannot be made from it to another node (use SwitchNodeParent_bn instead?)");
    EXPECT(AddLink_bn(c, cut) == -1);
    EXPECT_REPORT(3224, "passed node_bn 'a_1' for argument 'succ' is a DISCONNECTED_NODE, so a link "
                        "cannot be made to it from another node");
    SwitchNodeParent_bn(0, b, cut);
    EXPECT_REPORT(3225, "passed node_bn 'a_1' for argument 'newpred' is a DISCONNECTED_NODE, so a "
                        "link cannot be made from it to another node (pass NULL instead to "
                        "disconnect a link)");
    SwitchNodeParent_bn(0, b, a);
    EXPECT(last_report(env) == NULL && NthNode_bn(GetNodeParents_bn(b), 0) == a);

    AddNodeToList_bn(a, (nodelist_bn*)GetNetNodes2_bn(net, NULL), LAST_ENTRY);
    EXPECT_REPORT(5147, "you cannot pass a constant nodelist_bn to this function, since this "
                        "function may modify or delete it (duplicate it first?)");
    EXPECT(CopyNet_bn(net, "", env, NULL) == NULL);
    EXPECT_REPORT(5212, "empty string passed for name");
    DeleteNet_bn(net);
}

static void states_and_tables(environ_ns* env) {
    net_bn* net = NewNet_bn("Tables", env);
    node_bn* a = NewNode_bn("a", 2, net);
    prob_bn short_sum[2] = {0.5f, 0.4999979f};
    prob_bn just_enough[2] = {0.5f, 0.499998f};
    prob_bn zeros[2] = {0, 0};
    SetNodeProbs_bn(a, NULL, just_enough);
    EXPECT(last_report(env) == NULL);
    SetNodeProbs_bn(a, NULL, short_sum);
    EXPECT_REPORT(3072, "couldn't change a CPT table vector of node 'a', because new vector sum of "
                        "probabilities isn't 1 (100%)");
    EXPECT(GetNodeProbs_bn(a, NULL)[1] == 0.499998f);
    SetNodeProbs_bn(a, NULL, zeros); /* a row yet to be filled */
    EXPECT(last_report(env) == NULL && GetNodeProbs_bn(a, NULL)[0] == 0);
    SetNodeKind_bn(a, UTILITY_NODE);
    EXPECT_REPORT(3254, "can't make node 'a' discrete, because it is a utility node and has no "
                        "discretization thresholds defined");
    EXPECT(GetNodeKind_bn(a) == NATURE_NODE);

    node_bn* d = NewNode_bn("d", 3, net);
    prob_bn sure[3] = {1, 0, 0};
    SetNodeProbs_bn(d, NULL, sure);
    RemoveNodeState_bn(d, 0);
    EXPECT_REPORT(3088, "removing state 0 from node d creates a row in its CPT table having all "
                        "zeros (i.e. indicates impossible condition)");
    EXPECT(GetNodeNumberStates_bn(d) == 2);

    node_bn* c = NewNode_bn("c", 0, net);
    EXPECT(GetNodeType_bn(c) == CONTINUOUS_TYPE);
    AddNodeStates_bn(c, -1, NULL, 1, -1);
    EXPECT_REPORT(3252, "can't make node 'c' have 1 states, because it is a continuous node and no "
                        "discretization thresholds are defined");
    SetNodeStateTitle_bn(c, 0, "t");
    EXPECT_REPORT(3258, "can't set a state title of node c, because it is an undiscretized "
                        "continuous node with no states");
    level_bn levels[3] = {0, 1, 2};
    SetNodeLevels_bn(c, 2, levels);
    EXPECT(last_report(env) == NULL && GetNodeNumberStates_bn(c) == 2);
    SetNodeLevels_bn(c, 0, NULL);
    EXPECT_REPORT(3253, "can't remove the discretization thresholds of a continuous node (c), when "
                        "it still has states");
    EXPECT(GetNodeNumberStates_bn(c) == 2 && GetNodeLevels_bn(c)[2] == 2);
    DeleteNet_bn(net);
}

int main(void) {
    environ_ns* env = open_environment();

    net_bn* net = NewNet_bn("Asia", env);
    node_bn *smoke = NewNode_bn("Smoking", 2, net), *cancer = NewNode_bn("Cancer", 2, net);
    node_bn* xray = NewNode_bn("XRay", 2, net);
    SetNodeStateNames_bn(smoke, "no, yes");
    SetNodeStateNames_bn(cancer, "absent present");
    EXPECT(AddLink_bn(smoke, cancer) == 0);
    EXPECT(AddLink_bn(cancer, xray) == 0);
    EXPECT(AddLink_bn(xray, smoke) == -1);
    EXPECT(take_number(env) == 3223);

    prob_bn p_smoke[2] = {0.5f, 0.5f};
    SetNodeProbs_bn(smoke, NULL, p_smoke);
    state_bn yes[1] = {1};
    prob_bn p_cancer[2] = {0.9f, 0.1f};
    SetNodeProbs_bn(cancer, yes, p_cancer);
    EXPECT(last_report(env) == NULL);
    EXPECT(GetNodeProbs_bn(cancer, yes)[1] == 0.1f);
    prob_bn too_much[2] = {0.9f, 0.2f};
    SetNodeProbs_bn(cancer, yes, too_much);
    EXPECT(take_number(env) == 3072);
    EXPECT(GetNodeProbs_bn(cancer, yes)[1] == 0.1f);

    SetNodeKind_bn(xray, (nodekind_bn)99);
    EXPECT(take_number(env) == 3243);
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
    EXPECT(take_number(env) == 5184);

    nodelist_bn* mine = DupNodeList_bn(nodes);
    DeleteNet_bn(net);
    EXPECT(GetNetName_bn(net) == NULL);
    EXPECT(take_number(env) == 5142);
    EXPECT(LengthNodeList_bn(mine) == 3); /* the caller's list outlives the net */
    DeleteNodeList_bn(mine);
    EXPECT(LengthNodeList_bn(mine) == -1);
    EXPECT(take_number(env) == 5146);

    names_and_links(env);
    states_and_tables(env);

    return finish(env);
}
