// A fuzz target for case files: the input read as a case file for a small
// net, one case at a time as findings, into a case set learned by counting,
// and by revising tables straight from the file.  Every read either works or
// reports, learned tables stay normalised, and each case read, written back
// as findings, reads back with the same findings.
//
// The first byte picks the file's name (dialect) and what happens to values
// the net cannot take; the rest is the file.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "net_round_trip.h"

namespace {

constexpr const char* kNet =
    "// ~->[DNET-1]->~\n"
    "bnet Fuzz {\n"
    "node A { discrete = TRUE; states = (yes, no); parents = (); probs = (0.3, 0.7); };\n"
    "node B { discrete = TRUE; states = (s1, s2, s3); levels = (1, 5, 9); parents = (A);\n"
    "         probs = ((0.2, 0.3, 0.5), (0.6, 0.2, 0.2)); };\n"
    "node C { discrete = FALSE; states = (low, high); levels = (0, 10, 20); parents = (B);\n"
    "         probs = ((0.5, 0.5), (0.1, 0.9), (0.7, 0.3)); };\n"
    "node N { discrete = TRUE; states = (NA, other); parents = (A); probs = ((0.5, 0.5), (0.4, 0.6)); };\n"
    "};\n";

constexpr const char* kNames[] = {"fuzz.cas", "fuzz.csv", "fuzz.data", "fuzz.test"};
constexpr int kMaxCases = 200;

[[noreturn]] void fault(const std::string& what) {
    std::fprintf(stderr, "%s\n", what.c_str());
    std::abort();
}

bool failed(environ_ns* env) { return GetError_ns(env, ERROR_ERR, nullptr) != nullptr; }

stream_ns* memory(environ_ns* env, const std::string& name, const char* text, size_t size) {
    stream_ns* stream = NewMemoryStream_ns(name.c_str(), env, nullptr);
    SetStreamContents_ns(stream, text, static_cast<long>(size), 1);
    return stream;
}

// The findings of one node as text, so that two reads compare simply.
std::string finding_of(node_bn* node) {
    state_bn finding = GetNodeFinding_bn(node);
    std::string text = std::to_string(finding);
    if (finding == LIKELIHOOD_FINDING || finding == NEGATIVE_FINDING) {
        const prob_bn* likelihood = GetNodeLikelihood_bn(node);
        for (int s = 0; likelihood && s < GetNodeNumberStates_bn(node); ++s) text += " " + std::to_string(likelihood[s]);
    }
    if (GetNodeType_bn(node) == CONTINUOUS_TYPE) text += " =" + std::to_string(GetNodeValueEntered_bn(node));
    return text;
}

std::string findings_of(const nodelist_bn* nodes) {
    std::string text;
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) text += finding_of(NthNode_bn(nodes, i)) + ";";
    return text;
}

// Every row of every node's table sums to one, is all zero, or is marked.
void check_tables(const nodelist_bn* nodes, const char* after) {
    for (int i = 0; i < LengthNodeList_bn(nodes); ++i) {
        node_bn* node = NthNode_bn(nodes, i);
        const nodelist_bn* parents = GetNodeParents_bn(node);
        int k = LengthNodeList_bn(parents), m = GetNodeNumberStates_bn(node);
        std::vector<state_bn> condition(static_cast<size_t>(k), 0);
        while (true) {
            const prob_bn* row = GetNodeProbs_bn(node, condition.data());
            if (!row) break;
            // A row holding the impossible (-1) or missing (-2) marker, as rows
            // of states added to read the file do, is left as it was.
            double sum = 0;
            bool marked = false, valid = true;
            for (int s = 0; s < m; ++s) {
                sum += row[s];
                marked = marked || row[s] == -1.0f || row[s] == -2.0f;
                valid = valid && std::isfinite(row[s]) && (row[s] >= 0 || row[s] == -1.0f || row[s] == -2.0f);
            }
            if (!valid || (!marked && sum != 0 && std::fabs(sum - 1) > 1e-3))
            {
                std::string entries;
                for (int s = 0; s < m; ++s) entries += " " + std::to_string(row[s]);
                fault(std::string("table of ") + GetNodeName_bn(node) + " not normalised after " + after + ":" + entries);
            }
            int p = k - 1;
            for (; p >= 0; --p) {
                if (++condition[static_cast<size_t>(p)] < GetNodeNumberStates_bn(NthNode_bn(parents, p))) break;
                condition[static_cast<size_t>(p)] = 0;
            }
            if (p < 0) break;
        }
    }
}

// Reads every case of file as findings, writes each to a new file with its
// identifier and weight, then reads that file back expecting the same.
void check_findings(environ_ns* env, stream_ns* file, const nodelist_bn* nodes, const std::string& name) {
    std::vector<std::string> read;
    std::vector<long> ids;
    std::vector<double> weights;
    stream_ns* out = NewMemoryStream_ns(("again" + name.substr(name.find('.'))).c_str(), env, nullptr);
    // A first reading may add states, renumbering those of cases read before
    // it; the findings compared are those of a second reading.
    long position = FIRST_CASE;
    for (int c = 0; c < kMaxCases; ++c, position = NEXT_CASE) {
        ReadNetFindings2_bn(&position, file, false, nodes, nullptr, nullptr);
        if (failed(env) || position == NO_MORE_CASES) break;
    }
    ClearErrors_ns(env, INTERNAL_ERR);
    position = FIRST_CASE;
    for (int c = 0; c < kMaxCases; ++c) {
        long id = 0;
        double weight = 0;
        ReadNetFindings2_bn(&position, file, false, nodes, &id, &weight);
        if (failed(env) || position == NO_MORE_CASES) break;
        read.push_back(findings_of(nodes));
        ids.push_back(id);
        weights.push_back(weight);
        if (WriteNetFindings_bn(nodes, out, id, weight) < 0) {
            // A case with an IDnum or NumCases entry the heading written first lacks (or the reverse) is
            // refused rather than written as a row that would not read back.
            const report_ns* refusal = GetError_ns(env, ERROR_ERR, nullptr);
            const int number = refusal ? ErrorNumber_ns(refusal) : 0;
            if (number != 5524 && number != 5525) fault("case " + std::to_string(c) + " not written");
            DeleteStream_ns(out);
            ClearErrors_ns(env, INTERNAL_ERR);
            return;
        }
        position = NEXT_CASE;
    }
    ClearErrors_ns(env, INTERNAL_ERR);
    RetractNetFindings_bn(GetNodeNet_bn(NthNode_bn(nodes, 0)));
    position = FIRST_CASE;
    for (size_t c = 0; c < read.size(); ++c, position = NEXT_CASE) {
        long id = 0;
        double weight = 0;
        ReadNetFindings2_bn(&position, out, false, nodes, &id, &weight);
        long length = 0;
        const char* written = GetStreamContents_ns(out, &length);
        std::string context = "\n--- written ---\n" + std::string(written ? written : "", static_cast<size_t>(length));
        if (failed(env)) fault(std::string("written case does not read back: ") +
                               ErrorMessage_ns(GetError_ns(env, ERROR_ERR, nullptr)) + context);
        if (position == NO_MORE_CASES) fault("written case " + std::to_string(c) + " is missing" + context);
        if (findings_of(nodes) != read[c] || id != ids[c] || weight != weights[c])
            fault("case " + std::to_string(c) + " read back as " + findings_of(nodes) + " id " + std::to_string(id) +
                  " weight " + std::to_string(weight) + ", was " + read[c] + " id " + std::to_string(ids[c]) +
                  " weight " + std::to_string(weights[c]) + context);
    }
    DeleteStream_ns(out);
    ClearErrors_ns(env, INTERNAL_ERR);
}

void check_learning(environ_ns* env, stream_ns* file, const nodelist_bn* nodes) {
    caseset_cs* cases = NewCaseset_cs("fuzz", env);
    AddFileToCaseset_cs(cases, file, 1, nullptr);
    learner_bn* learner = NewLearner_bn(COUNTING_LEARNING, nullptr, env);
    LearnCPTs_bn(learner, nodes, cases, 1);
    check_tables(nodes, "counting a case set");
    DeleteLearner_bn(learner);
    DeleteCaseset_cs(cases);
    ClearErrors_ns(env, INTERNAL_ERR);
    ReviseCPTsByCaseFile_bn(file, nodes, 0, 1);
    check_tables(nodes, "revising by the case file");
    ClearErrors_ns(env, INTERNAL_ERR);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    environ_ns* env = ravelo_fuzz::fuzz_environment();
    const std::string name = kNames[data[0] % 4];
    const int unasked = (data[0] >> 2) % 3 + 1;
    SetCaseFileQueryCallback_ns(nullptr, nullptr, unasked, env);

    stream_ns* net_file = memory(env, "fuzz.dne", kNet, std::char_traits<char>::length(kNet));
    net_bn* net = ReadNet_bn(net_file, NO_WINDOW);
    DeleteStream_ns(net_file);
    if (!net) fault("the fuzzing net does not read");
    nodelist_bn* nodes = DupNodeList_bn(GetNetNodes2_bn(net, nullptr));
    stream_ns* file = memory(env, name, reinterpret_cast<const char*>(data + 1), size - 1);

    check_findings(env, file, nodes, name);
    // Reading may have added states or nodes; learn into the net as it now is.
    DeleteNodeList_bn(nodes);
    nodes = DupNodeList_bn(GetNetNodes2_bn(net, nullptr));
    check_learning(env, file, nodes);

    DeleteStream_ns(file);
    DeleteNodeList_bn(nodes);
    DeleteNet_bn(net);
    ClearErrors_ns(env, INTERNAL_ERR);
    return 0;
}
