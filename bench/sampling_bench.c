/* Times drawing random cases and learning tables by counting, on a net file,
 * through the public interface only.
 *
 *   sampling_bench NET_FILE [CASES [OUT_FILE]]
 *
 * 1. draw: CASES cases of every node without findings (the automatic choice:
 *    forward sampling), retracted after each; then as many again, each also
 *    written as one line of state names to OUT_FILE (default /dev/null);
 * 2. count: CASES cases drawn as in 1, each learned into every node's table
 *    from its findings (the time of the draws taken off);
 * 3. tree: CASES / 5 cases drawn through the compiled junction tree with hard
 *    findings on 4 nodes (the last four of the net), for the other nodes.
 * Times are processor seconds. */
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <time.h>

#include "ravelo/ravelo.h"

/* Processor time of this process: the figures stay meaningful on a machine
 * shared with other work. */
static double now_s(void) {
    struct timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec / 1e9;
}

static void fail_with_reports(environ_ns* env, const char* what) {
    const report_ns* r = GetError_ns(env, ERROR_ERR, NULL);
    if (!r) return;
    fprintf(stderr, "%s failed: %s\n", what, ErrorMessage_ns(r));
    exit(1);
}

/* State names by node, read once. */
static const char*** state_names(node_bn* const* nodes, int n) {
    const char*** names = malloc(sizeof(const char**) * (size_t)n);
    for (int i = 0; i < n; ++i) {
        int states = GetNodeNumberStates_bn(nodes[i]);
        names[i] = malloc(sizeof(const char*) * (size_t)states);
        for (int s = 0; s < states; ++s) names[i][s] = GetNodeStateName_bn(nodes[i], s);
    }
    return names;
}

static void write_case(FILE* out, node_bn* const* nodes, const char*** names, int n) {
    for (int i = 0; i < n; ++i) {
        fputs(names[i][GetNodeFinding_bn(nodes[i])], out);
        putc(i + 1 < n ? '\t' : '\n', out);
    }
}

int main(int argc, char** argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: %s NET_FILE [CASES [OUT_FILE]]\n", argv[0]);
        return 2;
    }
    const int cases = argc > 2 ? atoi(argv[2]) : 1000000;
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    if (InitRavelo2_bn(env, mesg) < 0) return 1;
    net_bn* net = ReadNet_bn(NewFileStream_ns(argv[1], env, NULL), NO_VISUAL_INFO);
    if (!net) fail_with_reports(env, "reading");
    SetNetAutoUpdate_bn(net, 0);
    randgen_ns* gen = NewRandomGenerator_ns("1", env, NULL);
    SetNetRandomGen_bn(net, gen);
    const nodelist_bn* all = GetNetNodes2_bn(net, NULL);
    const int n = LengthNodeList_bn(all);
    node_bn** nodes = malloc(sizeof(node_bn*) * (size_t)n);
    for (int i = 0; i < n; ++i) nodes[i] = NthNode_bn(all, i);
    const char*** names = state_names(nodes, n);

    /* 1. Drawing alone, then drawing and writing. */
    double t0 = now_s();
    for (int k = 0; k < cases; ++k) {
        GenerateRandomCase_bn(all, 0, 1);
        RetractNetFindings_bn(net);
    }
    const double draw_s = now_s() - t0;
    FILE* out = fopen(argc > 3 ? argv[3] : "/dev/null", "w");
    if (!out) return 1;
    t0 = now_s();
    for (int k = 0; k < cases; ++k) {
        GenerateRandomCase_bn(all, 0, 1);
        write_case(out, nodes, names, n);
        RetractNetFindings_bn(net);
    }
    fclose(out);
    const double write_s = now_s() - t0;
    fail_with_reports(env, "drawing");

    /* 2. Counting learning from the findings of drawn cases (the draws' time taken off). */
    t0 = now_s();
    for (int k = 0; k < cases; ++k) {
        GenerateRandomCase_bn(all, 0, 1);
        ReviseCPTsByFindings_bn(all, 0, 1.0);
        RetractNetFindings_bn(net);
    }
    const double learn_s = now_s() - t0 - draw_s;
    fail_with_reports(env, "learning");

    /* 3. Junction-tree sampling with findings on 4 nodes. */
    CompileNet_bn(net);
    nodelist_bn* others = NewNodeList2_bn(0, net);
    for (int i = 0; i < n - 4; ++i) AddNodeToList_bn(nodes[i], others, LAST_ENTRY);
    for (int i = n - 4; i < n; ++i) EnterFinding_bn(nodes[i], 0);
    const int tree_cases = cases / 5;
    t0 = now_s();
    for (int k = 0; k < tree_cases; ++k) {
        GenerateRandomCase_bn(others, 1, 1);
        RetractNetFindings_bn(net);
        for (int i = n - 4; i < n; ++i) EnterFinding_bn(nodes[i], 0);
    }
    const double tree_s = now_s() - t0;
    fail_with_reports(env, "junction-tree sampling");

    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    printf("%s: %d nodes\n", argv[1], n);
    printf("  draw %d cases: %.3f s (%.0f cases/s)\n", cases, draw_s, cases / draw_s);
    printf("  draw and write %d cases: %.3f s (%.0f cases/s)\n", cases, write_s, cases / write_s);
    printf("  junction-tree sampling, findings on 4 nodes, %d cases: %.3f s (%.0f cases/s)\n", tree_cases, tree_s,
           tree_cases / tree_s);
    printf("  counting learning of every node from %d cases, one call per case: %.3f s\n", cases, learn_s);
    printf("  peak memory %.1f MiB\n", usage.ru_maxrss / 1024.0);
    DeleteNodeList_bn(others);
    DeleteRandomGen_ns(gen);
    for (int i = 0; i < n; ++i) free(names[i]);
    free(names);
    free(nodes);
    CloseRavelo_bn(env, mesg);
    return 0;
}
