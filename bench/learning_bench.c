/* Times EM learning and net testing over simulated cases, through the public
 * interface only.
 *
 *   learning_bench NET_FILE [CASES [MISSING_PERCENT [THREADS...]]]
 *   learning_bench --converge NET_FILE CASES MISSING_PERCENT TOLERANCE
 *
 * Cases are drawn from the net itself (fixed seed) and written to a case
 * file, with the given share of values blanked out.  The first form times one
 * EM iteration (from the progress row of iteration 0 to that of iteration 1)
 * on each number of threads, then testing on complete cases with 3 test
 * nodes; the second runs EM from uniform tables to the tolerance and reports
 * iterations, time and the final log likelihood. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "bench_common.h"
#include "ravelo/ravelo.h"

static unsigned long long rng_state = 0x2545F4914F6CDD1DULL;
static double uniform(void) { return next_uniform(&rng_state); }

static environ_ns* env;

static void check(const char* what) {
    const report_ns* r = GetError_ns(env, ERROR_ERR, NULL);
    if (!r) return;
    fprintf(stderr, "%s failed: %s\n", what, ErrorMessage_ns(r));
    exit(1);
}

/* Writes n cases drawn from the net, each value blanked with probability missing. */
static void write_cases(net_bn* net, const char* path, int n, double missing) {
    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    const int count = LengthNodeList_bn(nodes);
    nodelist_bn* all = DupNodeList_bn(nodes);
    FILE* f = fopen(path, "w");
    for (int i = 0; i < count; ++i) fprintf(f, "%s%s", i ? "\t" : "", GetNodeName_bn(NthNode_bn(nodes, i)));
    fputc('\n', f);
    for (int c = 0; c < n; ++c) {
        RetractNetFindings_bn(net);
        if (GenerateRandomCase_bn(all, FORWARD_SAMPLING, 1) != 0) check("simulating");
        for (int i = 0; i < count; ++i) {
            node_bn* node = NthNode_bn(nodes, i);
            const char* name = uniform() < missing ? "*" : GetNodeStateName_bn(node, GetNodeFinding_bn(node));
            fprintf(f, "%s%s", i ? "\t" : "", name);
        }
        fputc('\n', f);
    }
    RetractNetFindings_bn(net);
    fclose(f);
    DeleteNodeList_bn(all);
}

static double row_times[2];
static int rows_seen;
static double last_score;

static int time_rows(learner_bn* learner, const char* text, void* data) {
    (void)learner, (void)data;
    int i;
    double score;
    if (sscanf(text, " %d %lf", &i, &score) != 2) return 0;
    if (rows_seen < 2) row_times[rows_seen] = now_ms();
    ++rows_seen;
    last_score = score;
    return 0;
}

static caseset_cs* case_set(const char* path) {
    caseset_cs* cases = NewCaseset_cs("bench", env);
    AddFileToCaseset_cs(cases, NewFileStream_ns(path, env, NULL), 1.0, NULL);
    check("making the case set");
    return cases;
}

/* Learns every table by EM from the net's current tables; returns the time of the whole call. */
static double learn(net_bn* net, caseset_cs* cases, int max_iters, double tol) {
    learner_bn* learner = NewLearner_bn(EM_LEARNING, NULL, env);
    SetLearnerMaxIters_bn(learner, max_iters);
    SetLearnerMaxTol_bn(learner, tol);
    SetLearnerListener_bn(learner, time_rows, NULL);
    nodelist_bn* nodes = DupNodeList_bn(GetNetNodes2_bn(net, NULL));
    rows_seen = 0;
    const double t0 = now_ms();
    LearnCPTs_bn(learner, nodes, cases, 1.0);
    const double elapsed = now_ms() - t0;
    check("learning");
    DeleteNodeList_bn(nodes);
    DeleteLearner_bn(learner);
    return elapsed;
}

/* Gives every node a uniform table, so that EM starts far from the tables the cases came from. */
static void make_tables_uniform(net_bn* net) {
    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        const nodelist_bn* parents = GetNodeParents_bn(node);
        const int num_parents = LengthNodeList_bn(parents), n = GetNodeNumberStates_bn(node);
        state_bn* row = calloc((size_t)num_parents + 1, sizeof(state_bn));
        prob_bn* probs = malloc((size_t)n * sizeof(prob_bn));
        for (int s = 0; s < n; ++s) probs[s] = (prob_bn)(1.0 / n);
        for (;;) {
            SetNodeProbs_bn(node, row, probs);
            int p = num_parents - 1;
            while (p >= 0 && ++row[p] == GetNodeNumberStates_bn(NthNode_bn(parents, p))) row[p--] = 0;
            if (p < 0) break;
        }
        free(row);
        free(probs);
    }
    check("making the tables uniform");
}

static net_bn* read_net(const char* path) {
    net_bn* net = ReadNet_bn(NewFileStream_ns(path, env, NULL), NO_VISUAL_INFO);
    check("reading the net");
    SetNetAutoUpdate_bn(net, 0);
    return net;
}

int main(int argc, char** argv) {
    char mesg[MESG_LEN_ns];
    env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    InitRavelo2_bn(env, mesg);
    const int converge = argc > 1 && strcmp(argv[1], "--converge") == 0;
    if (argc < 2 + converge) {
        fprintf(stderr, "usage: %s [--converge] NET_FILE [CASES [MISSING_PERCENT [THREADS... | TOLERANCE]]]\n", argv[0]);
        return 2;
    }
    const char* net_file = argv[1 + converge];
    const int n = argc > 2 + converge ? atoi(argv[2 + converge]) : 100000;
    const double missing = argc > 3 + converge ? atof(argv[3 + converge]) / 100 : 0.2;
    net_bn* net = read_net(net_file);
    write_cases(net, "learning_bench_missing.cas", n, missing);

    if (converge) {
        const double tol = argc > 5 ? atof(argv[5]) : 1e-4;
        net_bn* fresh = read_net(net_file);
        make_tables_uniform(fresh);
        const double ms = learn(fresh, case_set("learning_bench_missing.cas"), 1000, tol);
        printf("%s: EM on %d cases, %.0f%% missing, to tolerance %g: %d iterations, %.1f s, log likelihood %.6g\n",
               net_file, n, 100 * missing, tol, rows_seen - 1, ms / 1000, last_score);
        CloseRavelo_bn(env, mesg);
        return 0;
    }

    caseset_cs* missing_cases = case_set("learning_bench_missing.cas");
    for (int a = 4; a < argc || a == 4; ++a) {
        const int threads = a < argc ? atoi(argv[a]) : 1;
        SetBatchThreads_ns(threads, env);
        learn(net, missing_cases, 1, 0);
        printf("%s: one EM iteration over %d cases with %.0f%% missing, %d thread(s): %.1f ms\n", net_file, n,
               100 * missing, threads, row_times[1] - row_times[0]);
    }

    write_cases(net, "learning_bench_complete.cas", n, 0.0);
    caseset_cs* complete = case_set("learning_bench_complete.cas");
    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    nodelist_bn* tested = NewNodeList2_bn(0, net);
    for (int i = 0; i < 3; ++i) AddNodeToList_bn(NthNode_bn(nodes, i * LengthNodeList_bn(nodes) / 3), tested, LAST_ENTRY);
    SetBatchThreads_ns(1, env);
    tester_bn* tester = NewNetTester_bn(tested, NULL, -1);
    const double t0 = now_ms();
    TestWithCaseset_bn(tester, complete);
    const double ms = now_ms() - t0;
    check("testing");
    printf("%s: testing %d complete cases with 3 test nodes on 1 thread: %.1f ms, %.0f cases/s (reading included)\n",
           net_file, n, ms, n / (ms / 1000));
    remove("learning_bench_missing.cas");
    remove("learning_bench_complete.cas");
    CloseRavelo_bn(env, mesg);
    return 0;
}
