// Many threads using the interface at once: each its own net, or all one
// net, with listeners that call the interface again.  Every answer must be
// one a single thread gets; run under ThreadSanitizer (-DRAVELO_SANITIZE=thread)
// it must also report no race.
#include <algorithm>
#include <atomic>
#include <cmath>
#include <mutex>
#include <thread>
#include <vector>

#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

constexpr int kThreads = 8;
constexpr int kRounds = 40;

// Findings as (node, state) pairs, the beliefs of every node after them.
using Findings = std::vector<std::pair<const char*, int>>;
using Beliefs = std::vector<std::vector<float>>;

class Threads : public IoTest {
protected:
    net_bn* asia() {
        net_bn* net = handle_of(file_ok(data_path("asia.bif")));
        CompileNet_bn(net);
        return net;
    }
    // Beliefs after exactly these findings; empty when a call failed.
    static Beliefs beliefs_with(net_bn* net, const Findings& findings) {
        RetractNetFindings_bn(net);
        for (const auto& [name, state] : findings) EnterFinding_bn(GetNodeNamed_bn(name, net), state);
        Beliefs out;
        const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
        for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
            node_bn* node = NthNode_bn(nodes, i);
            const prob_bn* b = GetNodeBeliefs_bn(node);
            if (!b) return {};
            out.emplace_back(b, b + GetNodeNumberStates_bn(node));
        }
        return out;
    }
};

// Equal up to rounding: propagation in another order may differ in the last bits.
bool near(const Beliefs& a, const Beliefs& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (a[i].size() != b[i].size()) return false;
        for (size_t s = 0; s < a[i].size(); ++s)
            if (std::fabs(a[i][s] - b[i][s]) > 1e-5) return false;
    }
    return true;
}

const Findings kScenarios[] = {{}, {{"xray", 0}}, {{"smoke", 1}, {"dysp", 0}}, {{"asia", 0}, {"xray", 1}, {"bronc", 0}}};

int count_removal(const node_bn* node, eventtype_ns what, void* obj, void*) {
    // Called inside an interface call: calling again must work on this thread.
    bool answers = GetNodeName_bn(node) && LengthNodeList_bn(GetNetNodes2_bn(GetNodeNet_bn(node), nullptr)) > 0;
    if (what == REMOVE_EVENT && answers) ++*static_cast<int*>(obj);
    return 0;
}

TEST_F(Threads, EachOnItsOwnNetAnswersAsOneThreadDoes) {
    net_bn* reference_net = asia();
    std::vector<Beliefs> reference;
    for (const Findings& f : kScenarios) reference.push_back(beliefs_with(reference_net, f));
    std::vector<net_bn*> nets;
    for (int t = 0; t < kThreads; ++t) nets.push_back(asia());
    std::atomic<int> mismatches{0};
    std::vector<int> events(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int round = 0; round < kRounds; ++round) {
                size_t s = static_cast<size_t>(round + t) % std::size(kScenarios);
                if (!near(beliefs_with(nets[t], kScenarios[s]), reference[s])) ++mismatches;
                // A node made and removed (which uncompiles the net): its listener hears the removal.
                node_bn* scratch = NewNode_bn("Scratch", 2, nets[t]);
                AddNodeListener_bn(scratch, count_removal, &events[t], -1);
                DeleteNode_bn(scratch);
                CompileNet_bn(nets[t]);
            }
        });
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(mismatches, 0);
    for (int t = 0; t < kThreads; ++t) EXPECT_EQ(events[t], kRounds) << "thread " << t;
    EXPECT_EQ(error_count(), 0) << last_message();
}

// Three threads each own one node's finding (none or state 0), two compile
// and uncompile, three ask the probability of the findings: every answer
// must be that of one of the eight finding combinations.  Belief vectors are
// handed out as pointers into the net, valid until the net next changes, so
// the threads that read them or change the net take the caller's own lock
// for that; the probability comes back by value and is asked without it.
TEST_F(Threads, SharingOneNetEveryAnswerIsOneOfAConsistentState) {
    net_bn* net = asia();
    const char* owned[] = {"smoke", "xray", "asia"};
    std::vector<Beliefs> combinations;
    std::vector<double> probabilities;
    for (int mask = 0; mask < 8; ++mask) {
        Findings f;
        for (int i = 0; i < 3; ++i)
            if (mask & (1 << i)) f.emplace_back(owned[i], 0);
        combinations.push_back(beliefs_with(net, f));
        probabilities.push_back(FindingsProbability_bn(net));
    }
    RetractNetFindings_bn(net);
    const nodelist_bn* nodes = GetNetNodes2_bn(net, nullptr);
    const int node_count = LengthNodeList_bn(nodes);
    auto one_of = [](const auto& candidates, auto&& same) {
        return std::any_of(std::begin(candidates), std::end(candidates), same);
    };
    std::mutex pointers;
    std::atomic<int> inconsistent{0}, answered{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int round = 0; round < kRounds * 4; ++round) {
                if (t < 3) {
                    std::lock_guard<std::mutex> hold(pointers);
                    node_bn* mine = GetNodeNamed_bn(owned[t], net);
                    if (round % 2 == 0) EnterFinding_bn(mine, 0);
                    else RetractNodeFindings_bn(mine);
                } else if (t < 5) {
                    std::lock_guard<std::mutex> hold(pointers);
                    if (round % 8 == 0) (t == 3 ? UncompileNet_bn : CompileNet_bn)(net);
                    int index = (round * 7 + t) % node_count;
                    ClearErrors_ns(env, INTERNAL_ERR);
                    const prob_bn* b = GetNodeBeliefs_bn(NthNode_bn(nodes, index));
                    if (!b || GetError_ns(env, ERROR_ERR, nullptr)) continue;  // uncompiled: a report, not an answer
                    bool ok = one_of(combinations, [&](const Beliefs& c) {
                        const std::vector<float>& expected = c[static_cast<size_t>(index)];
                        for (size_t s = 0; s < expected.size(); ++s)
                            if (std::fabs(expected[s] - b[s]) > 1e-5) return false;
                        return true;
                    });
                    inconsistent += !ok;
                    ++answered;
                } else {
                    double p = FindingsProbability_bn(net);
                    if (p < 0) continue;  // asked while uncompiled: a report, not an answer
                    inconsistent += !one_of(probabilities, [&](double q) { return std::fabs(p - q) < 1e-6; });
                    ++answered;
                }
            }
            ClearErrors_ns(env, INTERNAL_ERR);
        });
    for (std::thread& t : threads) t.join();
    EXPECT_EQ(inconsistent, 0);
    EXPECT_GT(answered, 0);
    // Each owner ended on a retraction: the net is back to no findings.
    CompileNet_bn(net);
    EXPECT_TRUE(near(beliefs_with(net, {}), combinations[0]));
}

}  // namespace
}  // namespace ravelo::testing
