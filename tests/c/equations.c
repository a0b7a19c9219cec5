/* Node equations seen from a plain C program: storing the text, building
 * a table from it, and the reports of conversions that cannot be made. */
#include <math.h>

#include "ravelo/ravelo.h"
#include "check.h"

int main(void) {
    environ_ns* env = open_environment();
    net_bn* net = NewNet_bn("N", env);
    node_bn* x = NewNode_bn("X", 3, net);

    EXPECT(strcmp(GetNodeEquation_bn(x), "") == 0);
    EquationToTable_bn(x, 1, 0, 0);
    EXPECT_REPORT(2542, "node 'X' doesnt have a defining equation");

    SetNodeEquation_bn(x, "X () = 2");
    EXPECT(strcmp(GetNodeEquation_bn(x), "X () = 2") == 0);
    EquationToTable_bn(x, 0, 0, 0);
    EXPECT_REPORT(2590, "argument 'num_samples' must be one or more (it is 0)");
    EquationToTable_bn(x, 5, 3, 0);
    EXPECT_REPORT(2591, "argument 'samp_unc' must be 0 or 1 (it is 3)");
    EquationToTable_bn(x, 5, 0, 0);
    EXPECT(GetError_ns(env, NULL_ERR, NULL) == NULL);

    SetNodeEquation_bn(x, "X () = 2.5");
    EquationToTable_bn(x, 1, 0, 0);
    EXPECT_REPORT(2551, "since X is discrete, its equation should return a state number, which is an "
                             "integer, but it is returning 2.5 with input (none)");
    SetNodeEquation_bn(x, "X () = 1 +* 2");
    EquationToTable_bn(x, 1, 0, 0);
    EXPECT_REPORT(2543, "problem with equation of node 'X':  character '*' unexpected");
    SetNodeEquation_bn(x, "P (X) = X == 7");
    EquationToTable_bn(x, 1, 0, 0);
    EXPECT_REPORT(2558, "in equation of node X, for 1 out of 1 parent settings (i.e. conditions), no "
                             "nonzero probability was discovered by sampling, so they were given uniform "
                             "distributions");

    EXPECT(strcmp(GetNodeEquation_bn(x), "P (X) = X == 7") == 0);  /* never changed by conversion */

    /* A table from an equation over named links and discrete parents. */
    node_bn *a = NewNode_bn("A", 2, net), *b = NewNode_bn("B", 3, net), *sum = NewNode_bn("Sum", 4, net);
    SetNodeStateNames_bn(b, "b0,b1,b2");
    EXPECT(AddLink_bn(a, sum) == 0);
    EXPECT(AddLink_bn(b, sum) == 1);
    SetNodeInputName_bn(sum, 1, "second");
    SetNodeEquation_bn(sum, "Sum (A, second) = A + second");
    EquationToTable_bn(sum, 1, 0, 0);
    EXPECT(GetError_ns(env, NULL_ERR, NULL) == NULL);
    state_bn cond[2] = {1, 2};
    EXPECT(GetNodeFuncState_bn(sum, cond) == 3);
    const prob_bn* probs = GetNodeProbs_bn(sum, cond);
    EXPECT(probs && probs[3] == 1.0f && probs[0] == 0.0f);

    node_bn* count = NewNode_bn("Count", 3, net);
    EXPECT(AddLink_bn(b, count) == 0);
    SetNodeEquation_bn(count, "P (Count | B) = B == b0 ? (Count == 0 ? 1 : 0) : PoissonDist (Count, B)");
    EquationToTable_bn(count, 1, 0, 0);
    EXPECT(GetError_ns(env, NULL_ERR, NULL) == NULL);
    state_bn b1[1] = {1};
    probs = GetNodeProbs_bn(count, b1);
    /* Poisson with mean 1 over 0, 1, 2, normalised: 1 : 1 : 1/2. */
    EXPECT(probs && fabs(probs[0] - 0.4) < 1e-6 && fabs(probs[2] - 0.2) < 1e-6);
    state_bn b0[1] = {0};
    probs = GetNodeProbs_bn(count, b0);
    EXPECT(probs && probs[0] == 1.0f);

    /* A continuous parent is sampled inside its intervals. */
    node_bn* t = NewNode_bn("T", 0, net);
    level_bn levels[3] = {0, 10, 20};
    SetNodeLevels_bn(t, 2, levels);
    node_bn* hot = NewNode_bn("Hot", 2, net);
    SetNodeStateNames_bn(hot, "false,true");
    EXPECT(AddLink_bn(t, hot) == 0);
    SetNodeEquation_bn(hot, "Hot (T) = T >= 10");
    EquationToTable_bn(hot, 20, 0, 0);
    EXPECT(GetError_ns(env, NULL_ERR, NULL) == NULL);
    state_bn t1[1] = {1};
    probs = GetNodeProbs_bn(hot, t1);
    EXPECT(probs && probs[1] == 1.0f);
    SetNodeEquation_bn(NULL, "X () = 1");
    EXPECT(last_report(env) != NULL);
    ClearErrors_ns(env, INTERNAL_ERR);
    DeleteNode_bn(x);
    EXPECT(GetNodeEquation_bn(x) == NULL);
    EXPECT_REPORT(5184, "deleted node_bn passed");

    return finish(env);
}
