/* Learning tables by EM and gradient ascent, and testing a net, from a case
 * file, seen from a plain C program through the public interface. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "ravelo/ravelo.h"
#include "check.h"

static environ_ns* env;

/* hidden -> x, hidden -> y; cases never show hidden. */
static net_bn* make_net(node_bn** nodes) {
    net_bn* net = NewNet_bn("survey", env);
    node_bn *hidden = NewNode_bn("hidden", 2, net), *x = NewNode_bn("x", 2, net), *y = NewNode_bn("y", 2, net);
    SetNodeStateNames_bn(x, "no, yes");
    SetNodeStateNames_bn(y, "no, yes");
    AddLink_bn(hidden, x);
    AddLink_bn(hidden, y);
    state_bn h[1];
    prob_bn ph[] = {0.5f, 0.5f}, px[2][2] = {{0.6f, 0.4f}, {0.3f, 0.7f}}, py[2][2] = {{0.8f, 0.2f}, {0.4f, 0.6f}};
    SetNodeProbs_bn(hidden, NULL, ph);
    for (h[0] = 0; h[0] < 2; ++h[0]) {
        SetNodeProbs_bn(x, h, px[h[0]]);
        SetNodeProbs_bn(y, h, py[h[0]]);
    }
    nodes[0] = hidden, nodes[1] = x, nodes[2] = y;
    return net;
}

/* Four kinds of case with multiplicities, one of them missing y. */
static caseset_cs* make_cases(void) {
    const char* text = "// ~->[CASE-1]->~\r\n\r\nNumCases\tx\ty\n30\tno\tno\n10\tno\tyes\n12\tyes\tno\n"
                       "28\tyes\tyes\n5\tyes\t*\n";
    FILE* f = fopen("learning_cases.cas", "w");
    fputs(text, f);
    fclose(f);
    caseset_cs* cases = NewCaseset_cs("survey", env);
    stream_ns* file = NewFileStream_ns("learning_cases.cas", env, NULL);
    AddFileToCaseset_cs(cases, file, 1.0, NULL);
    return cases;
}

static double rows[64];
static int row_count;

static int keep_rows(learner_bn* learner, const char* text, void* data) {
    (void)learner, (void)data;
    int i;
    double score;
    if (sscanf(text, " %d %lf", &i, &score) == 2 && row_count < 64) rows[row_count++] = score;
    return 0;
}

static void test_em_and_gradient(nodelist_bn* learned, caseset_cs* cases) {
    learner_bn* em = NewLearner_bn(EM_LEARNING, NULL, env);
    SetLearnerMaxIters_bn(em, 30);
    EXPECT(GetLearnerMaxIters_bn(em) == 30);
    SetLearnerMaxTol_bn(em, 1e-6);
    EXPECT(GetLearnerMaxTol_bn(em) == 1e-6);
    SetLearnerListener_bn(em, keep_rows, NULL);
    randgen_ns* rand = NewRandomGenerator_ns("3", env, NULL);
    SetLearnerRandomGen_bn(em, rand);
    row_count = 0;
    LearnCPTs_bn(em, learned, cases, 1.0);
    EXPECT(take_number(env) == 0);
    EXPECT(row_count > 2);
    for (int i = 1; i < row_count; ++i) EXPECT(rows[i] >= rows[i - 1] - 1e-4);
    const double em_score = rows[row_count - 1];
    /* x's marginal is learned from complete columns: 45 of 85 cases say yes. */
    node_bn* x = NthNode_bn(learned, 1);
    node_bn* hidden = NthNode_bn(learned, 0);
    CompileNet_bn(GetNodeNet_bn(x));
    EXPECT(fabs(GetNodeBeliefs_bn(x)[1] - 45.0 / 85.0) < 0.01);
    (void)hidden;

    learner_bn* gradient = NewLearner_bn(GRADIENT_DESCENT_LEARNING, NULL, env);
    SetLearnerListener_bn(gradient, keep_rows, NULL);
    row_count = 0;
    LearnCPTs_bn(gradient, learned, cases, 1.0);
    EXPECT(take_number(env) == 0);
    EXPECT(row_count >= 1 && rows[row_count - 1] >= em_score - 0.01 * fabs(em_score));
    DeleteLearner_bn(gradient);
    DeleteLearner_bn(em);
    DeleteRandomGen_ns(rand);
}

static void test_learner_bad_input(nodelist_bn* learned, caseset_cs* cases) {
    EXPECT(NewLearner_bn(5, NULL, env) == NULL);
    EXPECT_REPORT(5632, "argument 'method' is out-of-range (5)");
    learner_bn* learner = NewLearner_bn(COUNTING_LEARNING, NULL, env);
    SetLearnerMaxIters_bn(learner, -2);
    EXPECT_REPORT(5636, "argument 'max_iters' is negative (-2)");
    EXPECT(GetLearnerMaxIters_bn(learner) == 1000);
    SetLearnerMaxTol_bn(learner, -0.5);
    EXPECT_REPORT(5637, "the tolerance argument is negative (-0.5)");
    EXPECT(GetLearnerMaxTol_bn(learner) == 1e-5);
    LearnCPTs_bn(learner, learned, cases, -1);
    EXPECT_REPORT(5638, "the degree argument is negative (-1)");
    LearnCPTs_bn(NULL, learned, cases, 1);
    EXPECT_REPORT(5116, "NULL passed for the learner_bn");
    DeleteLearner_bn(learner);
    SetLearnerMaxIters_bn(learner, 3);
    EXPECT_REPORT(5156, "deleted or damaged learner_bn passed");
    EXPECT(SetBatchThreads_ns(0, env) == -1);
    EXPECT_REPORT(5641, "argument 'threads' should be -1 (means query only) or at least 1 (it is 0)");
    const int threads = SetBatchThreads_ns(2, env);
    EXPECT(SetBatchThreads_ns(-1, env) == 2);
    SetBatchThreads_ns(threads, env);
}

static void test_tester(net_bn* net, node_bn** nodes, caseset_cs* cases) {
    nodelist_bn* tested = NewNodeList2_bn(0, net);
    AddNodeToList_bn(nodes[2], tested, LAST_ENTRY);
    EXPECT(NewNetTester_bn(tested, NULL, 0) == NULL);
    EXPECT_REPORT(5524, "argument 'tests' is 0, but with this version of Ravelo it must be -1");
    tester_bn* tester = NewNetTester_bn(tested, NULL, -1);
    TestWithCaseset_bn(tester, cases);
    EXPECT(take_number(env) == 0);
    /* Every case with y known counts, by its multiplicity. */
    double total = 0;
    for (int p = 0; p < 2; ++p)
        for (int a = 0; a < 2; ++a) total += GetTestConfusion_bn(tester, nodes[2], p, a);
    EXPECT(fabs(total - 80) < 1e-9);
    const double error_rate = GetTestErrorRate_bn(tester, nodes[2]);
    EXPECT(error_rate >= 0 && error_rate <= 1);
    EXPECT(GetTestLogLoss_bn(tester, nodes[2]) > 0);
    EXPECT(GetTestQuadraticLoss_bn(tester, nodes[2]) > 0);
    EXPECT(isnan(GetTestConfusion_bn(tester, nodes[2], 2, 0)));
    EXPECT_REPORT(5532, "passed state_bn (=2) for node_bn 'y' is out of bounds (it must be between 0 and 1 inclusive)");
    GetTestErrorRate_bn(tester, nodes[1]);
    EXPECT_REPORT(5634, "node 'x' was not one of the nodes tested (i.e. not in the test_nodes list passed to "
                        "NewNetTester_bn)");
    stream_ns* report = NewMemoryStream_ns("report", env, NULL);
    WriteTestReport_bn(tester, report);
    long length = 0;
    const char* text = GetStreamContents_ns(report, &length);
    EXPECT(text && strstr(text, "\nFor y:") && strstr(text, "\nConfusion:\n") && strstr(text, "Quality of Test"));
    TestWithCaseset_bn(NULL, cases);
    EXPECT_REPORT(5113, "argument 'test' is NULL (i.e. 0)");
    DeleteNetTester_bn(tester);
    TestWithCaseset_bn(tester, cases);
    EXPECT_REPORT(5153, "deleted or damaged tester_bn passed");
    DeleteStream_ns(report);
    DeleteNodeList_bn(tested);
}

int main(void) {
    env = open_environment();
    node_bn* nodes[3];
    net_bn* net = make_net(nodes);
    nodelist_bn* learned = NewNodeList2_bn(0, net);
    for (int i = 0; i < 3; ++i) AddNodeToList_bn(nodes[i], learned, LAST_ENTRY);
    caseset_cs* cases = make_cases();
    test_learner_bad_input(learned, cases);
    test_em_and_gradient(learned, cases);
    test_tester(net, nodes, cases);
    DeleteCaseset_cs(cases);
    remove("learning_cases.cas");
    return finish(env);
}
