/* Equations written to a net file and read back: the texts come back as
 * they were, and the tables built from them on the read net equal those
 * built on the original (and those computed here by hand). */
#include <math.h>

#include "ravelo/ravelo.h"
#include "check.h"


static const char* const kEquations[][2] = {
    {"Sum", "Sum (A, B) = A + B"},
    {"Wrap", "Wrap (B) = (B * 3 + 1) % 4"},
    {"T", "P (<T | A) = NormalDist (T, 10 * A + 5, 4)"},
    {"X", "P (X | A) = NoisySumTableDist (X, 4, 0,  0.1, 0, 0,  A, 0.5, 0.2, 0.1)"},
};
enum { kNumEquations = sizeof kEquations / sizeof kEquations[0] };

static net_bn* build(environ_ns* env) {
    net_bn* net = NewNet_bn("Eqs", env);
    node_bn *a = NewNode_bn("A", 2, net), *b = NewNode_bn("B", 3, net), *sum = NewNode_bn("Sum", 4, net);
    node_bn *wrap = NewNode_bn("Wrap", 4, net), *t = NewNode_bn("T", 0, net), *x = NewNode_bn("X", 4, net);
    const level_bn levels[] = {0, 5, 10, 20};
    SetNodeLevels_bn(t, 3, levels);
    AddLink_bn(a, sum);
    AddLink_bn(b, sum);
    AddLink_bn(b, wrap);
    AddLink_bn(a, t);
    AddLink_bn(a, x);
    for (int i = 0; i < kNumEquations; ++i)
        SetNodeEquation_bn(GetNodeNamed_bn(kEquations[i][0], net), kEquations[i][1]);
    return net;
}

static void convert_all(net_bn* net) {
    for (int i = 0; i < kNumEquations; ++i)
        EquationToTable_bn(GetNodeNamed_bn(kEquations[i][0], net), 1, 0, 0);
}

/* Every row of the node's table, one after the other, into out. */
static int table_of(net_bn* net, const char* name, prob_bn* out, int room) {
    node_bn* node = GetNodeNamed_bn(name, net);
    int m = GetNodeNumberStates_bn(node);
    int num_parents = LengthNodeList_bn(GetNodeParents_bn(node));
    state_bn states[2] = {0, 0};
    int rows = 1, n = 0;
    for (int p = 0; p < num_parents; ++p)
        rows *= GetNodeNumberStates_bn(NthNode_bn(GetNodeParents_bn(node), p));
    for (int r = 0; r < rows; ++r) {
        int rest = r;
        for (int p = num_parents - 1; p >= 0; --p) {
            int k = GetNodeNumberStates_bn(NthNode_bn(GetNodeParents_bn(node), p));
            states[p] = rest % k;
            rest /= k;
        }
        const prob_bn* row = GetNodeProbs_bn(node, states);
        if (!row || n + m > room) return -1;
        for (int s = 0; s < m; ++s) out[n++] = row[s];
    }
    return n;
}

static double normal_cdf(double x, double mean, double sd) {
    return 0.5 * erfc(-(x - mean) / (sd * sqrt(2.0)));
}

int main(void) {
    environ_ns* env = open_environment();
    net_bn* net = build(env);
    convert_all(net);
    EXPECT(GetError_ns(env, ERROR_ERR, NULL) == NULL);

    stream_ns* out = NewMemoryStream_ns("eqs.dne", env, NULL);
    WriteNet_bn(net, out);
    net_bn* again = ReadNet_bn(out, NO_WINDOW);
    EXPECT(again != NULL);
    if (!again) return 1;
    for (int i = 0; i < kNumEquations; ++i) {
        const char* text = GetNodeEquation_bn(GetNodeNamed_bn(kEquations[i][0], again));
        EXPECT(text && strcmp(text, kEquations[i][1]) == 0);
    }
    convert_all(again);
    EXPECT(GetError_ns(env, ERROR_ERR, NULL) == NULL);
    for (int i = 0; i < kNumEquations; ++i) {
        prob_bn first[64], second[64];
        int n1 = table_of(net, kEquations[i][0], first, 64);
        int n2 = table_of(again, kEquations[i][0], second, 64);
        EXPECT(n1 > 0 && n1 == n2);
        for (int k = 0; k < n1 && k < n2; ++k) EXPECT(first[k] == second[k]);
    }

    /* The tables themselves, computed independently. */
    prob_bn table[64];
    EXPECT(table_of(again, "Wrap", table, 64) == 12);
    for (int b = 0; b < 3; ++b)
        for (int s = 0; s < 4; ++s) EXPECT(table[b * 4 + s] == (s == (b * 3 + 1) % 4 ? 1.0f : 0.0f));
    EXPECT(table_of(again, "T", table, 64) == 6);
    for (int a = 0; a < 2; ++a) {
        double mean = 10 * a + 5, cuts[4] = {0, 5, 10, 20}, mass[3], total = 0;
        for (int s = 0; s < 3; ++s) total += mass[s] = normal_cdf(cuts[s + 1], mean, 4) - normal_cdf(cuts[s], mean, 4);
        for (int s = 0; s < 3; ++s) EXPECT(fabs(table[a * 3 + s] - mass[s] / total) < 1e-6);
    }
    EXPECT(table_of(again, "X", table, 64) == 8);
    /* Without A only the leak adds; with A its amounts add to the leak's. */
    const double without[4] = {0.9, 0.1, 0, 0};
    const double with[4] = {0.9 * 0.2, 0.9 * 0.5 + 0.1 * 0.2, 0.9 * 0.2 + 0.1 * 0.5, 0.9 * 0.1 + 0.1 * 0.2 + 0.1 * 0.1};
    for (int s = 0; s < 4; ++s) {
        EXPECT(fabs(table[s] - without[s]) < 1e-6);
        EXPECT(fabs(table[4 + s] - with[s]) < 1e-6);
    }

    DeleteStream_ns(out);
    DeleteNet_bn(again);
    DeleteNet_bn(net);
    return finish(env);
}
