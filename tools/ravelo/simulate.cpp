// "ravelo simulate NET -n N -o CASES": draws N random cases from the net,
// given any findings, and writes them as a case file.
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "findings.h"
#include "progress.h"
#include "session.h"

namespace ravelo_cli {
namespace {

constexpr int kProgressSteps = 100;
// Forward sampling gives up on a case after this many draws contradict the findings.
constexpr double kMaxTries = 1e6;

bool ends_with(const std::string& text, const char* tail) {
    const std::string t = tail;
    return text.size() >= t.size() && text.compare(text.size() - t.size(), t.size(), t) == 0;
}

int method_code(const std::string& method) {
    if (method == "tree") return 1;
    if (method == "forward") return FORWARD_SAMPLING;
    return 0;
}

// The nodes a case gives values for: the nature nodes with states.
nodelist_bn* simulated_nodes(Session& session, net_bn* net) {
    nodelist_bn* list = NewNodeList2_bn(0, net);
    const nodelist_bn* all = GetNetNodes2_bn(net, nullptr);
    for (int i = 0; i < LengthNodeList_bn(all); ++i) {
        node_bn* node = NthNode_bn(all, i);
        if (GetNodeKind_bn(node) == NATURE_NODE && GetNodeNumberStates_bn(node) > 0)
            AddNodeToList_bn(node, list, LAST_ENTRY);
    }
    session.check("listing the nodes");
    return list;
}

}  // namespace

int run_simulate(const SimulateOptions& o) {
    Session session;
    net_bn* net = session.read_net(o.net_file);
    SetNetAutoUpdate_bn(net, 0);
    const int method = method_code(o.method);
    if (method == 1 || (method == 0 && !o.findings.empty())) {
        CompileNet_bn(net);
        session.check("compiling");
    }
    for (const std::string& finding : o.findings) enter_finding_text(session, net, finding);
    nodelist_bn* nodes = simulated_nodes(session, net);
    const int count = LengthNodeList_bn(nodes);
    // Nodes the user gave findings keep them in every case and never go missing.
    std::vector<char> given(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) given[static_cast<size_t>(i)] = GetNodeFinding_bn(NthNode_bn(nodes, i)) != UNDEF_STATE;

    randgen_ns* gen = NewRandomGenerator_ns(o.seed.c_str(), session.env(), nullptr);
    session.check("making the random generator");
    SetNetRandomGen_bn(net, gen);
    if (ends_with(o.out_file, ".csv")) SetCaseFileDelimChar_ns(',', session.env());
    std::remove(o.out_file.c_str());  // the heading is written to a new, empty file
    stream_ns* out = NewFileStream_ns(o.out_file.c_str(), session.env(), nullptr);
    session.check("opening the case file");

    std::vector<double> chance(static_cast<size_t>(count));
    Progress progress(kProgressSteps);
    long shown = -1;
    for (long c = 0; c < o.cases; ++c) {
        if (c * kProgressSteps / o.cases != shown) {
            shown = c * kProgressSteps / o.cases;
            progress.step("simulating cases");
        }
        const int made = GenerateRandomCase_bn(nodes, method, kMaxTries);
        if (made == REJECTED_CASE_RESULT) {
            std::fprintf(stderr, "ravelo: the findings are too unlikely for forward sampling (%g draws rejected); "
                                 "try --method tree\n", kMaxTries);
            throw CommandFailed("rejected");
        }
        session.check("simulating a case");
        if (o.missing_percent > 0 && count > 0) GenerateRandomNumbers_ns(gen, chance.data(), count, nullptr);
        for (int i = 0; i < count; ++i)
            if (!given[static_cast<size_t>(i)] && chance[static_cast<size_t>(i)] * 100.0 < o.missing_percent)
                RetractNodeFindings_bn(NthNode_bn(nodes, i));
        WriteNetFindings_bn(nodes, out, -1, -1);
        session.check("writing the case file");
        for (int i = 0; i < count; ++i)
            if (!given[static_cast<size_t>(i)]) RetractNodeFindings_bn(NthNode_bn(nodes, i));
    }
    DeleteStream_ns(out);
    session.check("closing the case file");
    DeleteRandomGen_ns(gen);
    DeleteNodeList_bn(nodes);
    std::printf("%ld cases of %d nodes written to %s\n", o.cases, count, o.out_file.c_str());
    return 0;
}

Command add_simulate(CLI::App& program) {
    auto sim = std::make_shared<SimulateOptions>();
    CLI::App* simulate = program.add_subcommand("simulate", "Draw random cases from a net and write them as a case file");
    simulate->add_option("NET", sim->net_file, "Net file to read")->required();
    simulate->add_option("-n,--cases", sim->cases, "Number of cases to draw")->required()->check(CLI::PositiveNumber);
    simulate->add_option("-f,--finding", sim->findings, "A finding NODE=STATE every case keeps");
    simulate->add_option("--missing", sim->missing_percent, "Percentage of drawn values left out, as missing")
        ->check(CLI::Range(0.0, 100.0));
    simulate->add_option("--seed", sim->seed, "Seed of the random generator (an integer)");
    simulate->add_option("--method", sim->method,
                         "auto (the tree when findings are given), tree (exact through the compiled net) or "
                         "forward (parents first, rejecting draws that contradict the findings)")
        ->check(CLI::IsMember({"auto", "tree", "forward"}));
    simulate->add_option("-o,--output", sim->out_file, "Case file to write (\".csv\": commas between entries)")
        ->required();
    return {simulate, [sim] { return run_simulate(*sim); }};
}

}  // namespace ravelo_cli
