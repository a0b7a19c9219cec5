/* Times reading, compiling, the first update and evidence scenarios on a net
 * file, through the public interface only.
 *
 *   inference_bench NET_FILE [SCENARIOS [COMPILE_OPTIONS]]
 *
 * A scenario draws one complete joint sample by forward sampling (fixed
 * seed), enters hard findings for a random 10% of the nodes (at least one),
 * updates, reads every node's beliefs, and retracts; its time excludes the
 * sampling. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <time.h>

#include "bench_common.h"
#include "ravelo/ravelo.h"

static unsigned long long rng_state = 0x9E3779B97F4A7C15ULL;
static double uniform(void) { return next_uniform(&rng_state); }

static void fail_with_reports(environ_ns* env, const char* what) {
    const report_ns* r = GetError_ns(env, ERROR_ERR, NULL);
    fprintf(stderr, "%s failed: %s\n", what, r ? ErrorMessage_ns(r) : "(no report)");
    exit(1);
}

/* Nodes in an order where parents come first. */
static node_bn** topological(const nodelist_bn* nodes, int n) {
    node_bn** order = malloc(sizeof(node_bn*) * (size_t)n);
    char* placed = calloc((size_t)n, 1);
    int count = 0;
    while (count < n) {
        for (int i = 0; i < n; ++i) {
            if (placed[i]) continue;
            node_bn* node = NthNode_bn(nodes, i);
            const nodelist_bn* parents = GetNodeParents_bn(node);
            int ready = 1;
            for (int j = 0; j < LengthNodeList_bn(parents) && ready; ++j)
                ready = placed[IndexOfNodeInList_bn(NthNode_bn(parents, j), nodes, 0)];
            if (ready) {
                placed[i] = 1;
                order[count++] = node;
            }
        }
    }
    free(placed);
    return order;
}

static void forward_sample(const nodelist_bn* nodes, node_bn** order, int n, state_bn* sample) {
    state_bn parent_states[64];
    for (int k = 0; k < n; ++k) {
        node_bn* node = order[k];
        const nodelist_bn* parents = GetNodeParents_bn(node);
        int np = LengthNodeList_bn(parents);
        for (int j = 0; j < np && j < 64; ++j)
            parent_states[j] = sample[IndexOfNodeInList_bn(NthNode_bn(parents, j), nodes, 0)];
        const prob_bn* row = GetNodeProbs_bn(node, parent_states);
        int states = GetNodeNumberStates_bn(node);
        double u = uniform(), acc = 0;
        int s = states - 1;
        for (int i = 0; i < states; ++i) {
            acc += row[i];
            if (u < acc) { s = i; break; }
        }
        sample[IndexOfNodeInList_bn(node, nodes, 0)] = s;
    }
}

int main(int argc, char** argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: %s NET_FILE [SCENARIOS]\n", argv[0]);
        return 2;
    }
    int scenarios = argc > 2 ? atoi(argv[2]) : 200;
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    if (InitRavelo2_bn(env, mesg) < 0) fail_with_reports(env, "initialising");

    double t0 = now_ms();
    stream_ns* file = NewFileStream_ns(argv[1], env, NULL);
    net_bn* net = ReadNet_bn(file, NO_VISUAL_INFO);
    double read_ms = now_ms() - t0;
    if (!net) fail_with_reports(env, "reading");
    SetNetAutoUpdate_bn(net, 0);

    t0 = now_ms();
    if (argc > 3) CompileNetWith_bn(net, argv[3]);
    else CompileNet_bn(net);
    double compile_ms = now_ms() - t0;
    if (GetError_ns(env, ERROR_ERR, NULL)) fail_with_reports(env, "compiling");

    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    int n = LengthNodeList_bn(nodes);
    t0 = now_ms();
    for (int i = 0; i < n; ++i) GetNodeBeliefs_bn(NthNode_bn(nodes, i));
    double first_ms = now_ms() - t0;
    if (GetError_ns(env, ERROR_ERR, NULL)) fail_with_reports(env, "updating");

    node_bn** order = topological(nodes, n);
    state_bn* sample = malloc(sizeof(state_bn) * (size_t)n);
    int* chosen = malloc(sizeof(int) * (size_t)n);
    int count = n / 10 > 0 ? n / 10 : 1;
    double total_ms = 0, checksum = 0;
    for (int sc = 0; sc < scenarios; ++sc) {
        forward_sample(nodes, order, n, sample);
        for (int i = 0; i < n; ++i) chosen[i] = i;
        for (int i = 0; i < count; ++i) {  /* partial shuffle picks the observed nodes */
            int j = i + (int)(uniform() * (n - i));
            int tmp = chosen[i]; chosen[i] = chosen[j]; chosen[j] = tmp;
        }
        t0 = now_ms();
        for (int i = 0; i < count; ++i) EnterFinding_bn(NthNode_bn(nodes, chosen[i]), sample[chosen[i]]);
        for (int i = 0; i < n; ++i) checksum += GetNodeBeliefs_bn(NthNode_bn(nodes, i))[0];
        RetractNetFindings_bn(net);
        total_ms += now_ms() - t0;
    }
    if (GetError_ns(env, ERROR_ERR, NULL)) fail_with_reports(env, "scenarios");

    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    printf("%s: nodes %d, read %.3f ms, compile %.3f ms, first update %.3f ms, "
           "%d scenarios %.4f ms each, total table size %.0f, peak %.1f MiB (checksum %.6f)\n",
           argv[1], n, read_ms, compile_ms, first_ms, scenarios, scenarios ? total_ms / scenarios : 0.0,
           SizeCompiledNet_bn(net, 0), usage.ru_maxrss / 1024.0, checksum);
    free(order);
    free(sample);
    free(chosen);
    CloseRavelo_bn(env, mesg);
    return 0;
}
