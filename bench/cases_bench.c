/* Times writing and reading case files through the public interface only.
 *
 *   cases_bench NET_FILE [NUM_CASES [DIRECTORY]]
 *
 * Writes NUM_CASES cases (default 1,000,000) of random states of every node
 * with WriteNetFindings_bn, once tab-delimited (".cas") and once with commas
 * (".csv"), then reads each file back case after case with
 * ReadNetFindings2_bn.  Reading enters the findings of one node only, so
 * that its time is that of the reader, which parses every column of every
 * row.  Writing times WriteNetFindings_bn alone: the entering of the
 * findings, timed in a loop of its own, is taken off.  Reports CPU seconds,
 * cases/s, MB/s of file text, and peak memory. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>

#include "ravelo/ravelo.h"

/* CPU time of the process: the machine may be shared, and the figures are
 * those of one core. */
static double now_s(void) {
    struct timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return (double)t.tv_sec + t.tv_nsec / 1e9;
}

static unsigned long long rng_state = 0x9E3779B97F4A7C15ULL;
static unsigned next_random(void) {
    rng_state ^= rng_state << 13;
    rng_state ^= rng_state >> 7;
    rng_state ^= rng_state << 17;
    return (unsigned)(rng_state >> 33);
}

static void check_reports(environ_ns* env, const char* what) {
    const report_ns* r = GetError_ns(env, ERROR_ERR, NULL);
    if (!r) return;
    fprintf(stderr, "%s failed: %s\n", what, ErrorMessage_ns(r));
    exit(1);
}

static double peak_mb(void) {
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024.0;
}

static double file_mb(const char* path) {
    struct stat st;
    return stat(path, &st) == 0 ? st.st_size / 1e6 : 0;
}

/* Enters random findings in every node, case after case, writing each case
 * when file is given. */
static void enter_cases(const nodelist_bn* nodes, stream_ns* file, long num_cases) {
    const int n = LengthNodeList_bn(nodes);
    for (long c = 0; c < num_cases; ++c) {
        for (int i = 0; i < n; ++i) {
            node_bn* node = NthNode_bn(nodes, i);
            RetractNodeFindings_bn(node);
            EnterFinding_bn(node, (state_bn)(next_random() % (unsigned)GetNodeNumberStates_bn(node)));
        }
        if (file) WriteNetFindings_bn(nodes, file, -1, -1);
    }
}

static void write_cases(environ_ns* env, net_bn* net, const char* path, long num_cases) {
    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    remove(path);
    /* The writing's time is that of the loop with it less that of the same
     * loop without (a clock read per call would cost as much as the call). */
    const unsigned long long seed = rng_state;
    double start = now_s();
    enter_cases(nodes, NULL, num_cases);
    const double entering = now_s() - start;
    rng_state = seed;
    stream_ns* file = NewFileStream_ns(path, env, NULL);
    start = now_s();
    enter_cases(nodes, file, num_cases);
    DeleteStream_ns(file);  /* flushes and closes */
    const double seconds = now_s() - start - entering;
    check_reports(env, "writing");
    RetractNetFindings_bn(net);
    printf("write %-28s %8.2f s  %9.0f cases/s  %7.1f MB/s  (%.1f MB)\n", path, seconds, num_cases / seconds,
           file_mb(path) / seconds, file_mb(path));
}

static void read_cases(environ_ns* env, net_bn* net, const char* path, long num_cases) {
    nodelist_bn* one = NewNodeList2_bn(0, net);
    AddNodeToList_bn(NthNode_bn(GetNetNodes2_bn(net, NULL), 0), one, LAST_ENTRY);
    stream_ns* file = NewFileStream_ns(path, env, NULL);
    const double start = now_s();
    long position = FIRST_CASE, read = 0;
    for (;;) {
        ReadNetFindings2_bn(&position, file, 0, one, NULL, NULL);
        if (position == NO_MORE_CASES) break;
        ++read;
        position = NEXT_CASE;
    }
    const double seconds = now_s() - start;
    check_reports(env, "reading");
    if (read != num_cases) {
        fprintf(stderr, "read %ld cases of %ld\n", read, num_cases);
        exit(1);
    }
    DeleteStream_ns(file);
    DeleteNodeList_bn(one);
    printf("read  %-28s %8.2f s  %9.0f cases/s  %7.1f MB/s\n", path, seconds, read / seconds,
           file_mb(path) / seconds);
}

int main(int argc, char** argv) {
    if (argc < 2) {
        fprintf(stderr, "usage: cases_bench NET_FILE [NUM_CASES [DIRECTORY]]\n");
        return 2;
    }
    const long num_cases = argc > 2 ? atol(argv[2]) : 1000000;
    const char* directory = argc > 3 ? argv[3] : "/tmp";
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    if (InitRavelo2_bn(env, mesg) < 0) return 1;
    stream_ns* in = NewFileStream_ns(argv[1], env, NULL);
    net_bn* net = ReadNet_bn(in, NO_VISUAL_INFO);
    check_reports(env, "reading the net");
    SetNetAutoUpdate_bn(net, 0);
    char tab_path[4096], csv_path[4096];
    snprintf(tab_path, sizeof tab_path, "%s/cases_bench.cas", directory);
    snprintf(csv_path, sizeof csv_path, "%s/cases_bench.csv", directory);
    write_cases(env, net, tab_path, num_cases);
    write_cases(env, net, csv_path, num_cases);
    const double before_reading = peak_mb();
    read_cases(env, net, tab_path, num_cases);
    read_cases(env, net, csv_path, num_cases);
    printf("peak memory %.1f MB (%.1f MB before reading)\n", peak_mb(), before_reading);
    remove(tab_path);
    remove(csv_path);
    CloseRavelo_bn(env, mesg);
    return 0;
}
