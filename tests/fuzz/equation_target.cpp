// A fuzz target for equations: the input's first byte picks a node and the
// way of converting, the rest is the node's equation; setting it and making
// its table must report what is wrong, never crash, and a failed conversion
// must leave the node's table as it was.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "net_round_trip.h"

namespace {

// Discrete, discretized and continuous parents, and one output of each kind.
struct EquationNet {
    net_bn* net;
    node_bn* outputs[3];
};

node_bn* make_node(net_bn* net, const char* name, int states, const char* names) {
    node_bn* node = NewNode_bn(name, states, net);
    if (names) SetNodeStateNames_bn(node, names);
    return node;
}

EquationNet build() {
    net_bn* net = NewNet_bn("Equations", ravelo_fuzz::fuzz_environment());
    node_bn* a = make_node(net, "A", 3, "a0, a1, a2");
    node_bn* b = make_node(net, "B", 2, "false, true");
    node_bn* x = make_node(net, "X", 0, nullptr);
    const level_bn x_levels[] = {0, 1, 10, 100};
    SetNodeLevels_bn(x, 3, x_levels);
    node_bn* out = make_node(net, "Out", 4, "o0, o1, o2, o3");
    node_bn* real = make_node(net, "Real", 0, nullptr);
    const level_bn real_levels[] = {-1e6, 0, 1, 1e6};
    SetNodeLevels_bn(real, 3, real_levels);
    node_bn* flag = make_node(net, "Flag", 2, "false, true");
    for (node_bn* parent : {a, b, x}) AddLink_bn(parent, out);
    for (node_bn* parent : {a, x}) AddLink_bn(parent, real);
    for (node_bn* parent : {a, b}) AddLink_bn(parent, flag);
    return {net, {out, real, flag}};
}

// Every entry of the node's table, row by row (empty when it has none).
std::vector<float> table_of(node_bn* node) {
    std::vector<float> out;
    if (!HasNodeTable_bn(node, nullptr)) return out;
    int m = GetNodeNumberStates_bn(node);
    const nodelist_bn* parents = GetNodeParents_bn(node);
    int k = LengthNodeList_bn(parents);
    std::vector<state_bn> condition(static_cast<size_t>(k), 0);
    while (true) {
        const prob_bn* row = GetNodeProbs_bn(node, condition.data());
        for (int s = 0; s < m; ++s) out.push_back(row ? row[s] : -1.0f);
        int p = k - 1;
        for (; p >= 0; --p) {
            if (++condition[static_cast<size_t>(p)] < GetNodeNumberStates_bn(NthNode_bn(parents, p))) break;
            condition[static_cast<size_t>(p)] = 0;
        }
        if (p < 0) return out;
    }
}

bool same_entries(const std::vector<float>& a, const std::vector<float>& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (!(a[i] == b[i] || (std::isnan(a[i]) && std::isnan(b[i])))) return false;
    return true;
}

bool has_error(environ_ns* env) { return GetError_ns(env, ERROR_ERR, nullptr) != nullptr; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    static EquationNet equations = build();
    environ_ns* env = ravelo_fuzz::fuzz_environment();
    node_bn* node = equations.outputs[data[0] % 3];
    std::string equation(reinterpret_cast<const char*>(data + 1), size - 1);
    SetNodeEquation_bn(node, equation.c_str());
    if (!has_error(env)) {
        std::vector<float> before = table_of(node);
        ClearErrors_ns(env, INTERNAL_ERR);
        EquationToTable_bn(node, 1 + (data[0] >> 2) % 4, (data[0] >> 4) & 1, (data[0] >> 5) & 1);
        if (has_error(env) && !same_entries(before, table_of(node))) {
            std::fprintf(stderr, "a failed conversion changed the table of the node\n");
            std::abort();
        }
    }
    ClearErrors_ns(env, INTERNAL_ERR);
    DeleteNodeTables_bn(node);
    ClearErrors_ns(env, INTERNAL_ERR);
    return 0;
}
