// A fuzz target driving a sequence of interface calls from the input bytes:
// findings, retractions, compiling, beliefs, and edits of links, states,
// tables and nodes on a small net.  Every call either works or reports;
// beliefs handed out always sum to one.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "net_round_trip.h"

namespace {

constexpr int kSlots = 4;

class Bytes {
public:
    Bytes(const uint8_t* data, size_t size) : data_(data), size_(size) {}
    bool empty() const { return at_ >= size_; }
    unsigned next() { return at_ < size_ ? data_[at_++] : 0; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t at_ = 0;
};

class Session {
public:
    explicit Session(environ_ns* env) : env_(env), net_(NewNet_bn("Calls", env)) {
        for (int i = 0; i < kSlots; ++i) renew(i);
        AddLink_bn(nodes_[0], nodes_[1]);
        AddLink_bn(nodes_[1], nodes_[2]);
        AddLink_bn(nodes_[0], nodes_[3]);
    }
    ~Session() { DeleteNet_bn(net_); }

    void step(Bytes& in) {
        unsigned op = in.next() % 16;
        node_bn* node = nodes_[in.next() % kSlots];
        node_bn* other = nodes_[in.next() % kSlots];
        int states = GetNodeNumberStates_bn(node);
        state_bn state = static_cast<state_bn>(in.next() % 4);
        switch (op) {
            case 0: EnterFinding_bn(node, state); break;
            case 1: EnterFindingNot_bn(node, state); break;
            case 2: {
                std::vector<prob_bn> likelihood(static_cast<size_t>(states > 0 ? states : 1));
                for (prob_bn& p : likelihood) p = static_cast<prob_bn>(in.next() % 5) / 4;
                EnterNodeLikelihood_bn(node, likelihood.data());
                break;
            }
            case 3: RetractNodeFindings_bn(node); break;
            case 4: RetractNetFindings_bn(net_); break;
            case 5: CompileNet_bn(net_); break;
            case 6: UncompileNet_bn(net_); break;
            case 7: check_beliefs(node); break;
            case 8: AddLink_bn(node, other); break;
            case 9: DeleteLink_bn(static_cast<int>(state), node); break;
            case 10: fill_table(node, in); break;
            case 11: DeleteNodeTables_bn(node); break;
            case 12: AddNodeStates_bn(node, -1, nullptr, 1, -1); break;
            case 13: RemoveNodeState_bn(node, state); break;
            case 14: FindingsProbability_bn(net_); break;
            case 15:
                DeleteNode_bn(node);
                for (int i = 0; i < kSlots; ++i)
                    if (nodes_[i] == node) renew(i);
                break;
        }
        ClearErrors_ns(env_, INTERNAL_ERR);
    }

private:
    void renew(int slot) {
        std::string name = "N" + std::to_string(slot) + "_" + std::to_string(made_++);
        nodes_[slot] = NewNode_bn(name.c_str(), 2, net_);
    }

    // Every row of the node's table, its entries drawn from the input.
    void fill_table(node_bn* node, Bytes& in) {
        const nodelist_bn* parents = GetNodeParents_bn(node);
        int k = LengthNodeList_bn(parents), m = GetNodeNumberStates_bn(node);
        if (k < 0 || m <= 0) return;
        std::vector<state_bn> condition(static_cast<size_t>(k), 0);
        std::vector<prob_bn> row(static_cast<size_t>(m));
        while (true) {
            float sum = 0;
            for (prob_bn& p : row) sum += p = static_cast<prob_bn>(in.next() % 4);
            for (prob_bn& p : row) p = sum > 0 ? p / sum : 1.0f / static_cast<float>(m);
            SetNodeProbs_bn(node, condition.data(), row.data());
            int p = k - 1;
            for (; p >= 0; --p) {
                if (++condition[static_cast<size_t>(p)] < GetNodeNumberStates_bn(NthNode_bn(parents, p))) break;
                condition[static_cast<size_t>(p)] = 0;
            }
            if (p < 0 || in.empty()) return;
        }
    }

    void check_beliefs(node_bn* node) {
        const prob_bn* beliefs = GetNodeBeliefs_bn(node);
        if (!beliefs || GetError_ns(env_, ERROR_ERR, nullptr)) return;
        double sum = 0;
        for (int s = 0; s < GetNodeNumberStates_bn(node); ++s) sum += beliefs[s];
        if (!(std::fabs(sum - 1) < 1e-3)) {
            std::fprintf(stderr, "beliefs of %s sum to %g\n", GetNodeName_bn(node), sum);
            std::abort();
        }
    }

    environ_ns* env_;
    net_bn* net_;
    node_bn* nodes_[kSlots] = {};
    int made_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    environ_ns* env = ravelo_fuzz::fuzz_environment();
    Bytes in(data, size);
    {
        Session session(env);
        for (int steps = 0; !in.empty() && steps < 256; ++steps) session.step(in);
    }
    ClearErrors_ns(env, INTERNAL_ERR);
    return 0;
}
