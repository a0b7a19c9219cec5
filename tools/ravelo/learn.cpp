// "ravelo learn NET CASES": learns the tables of a net's nodes from a case
// file by counting, EM or gradient ascent, prints the progress table, and
// writes the learned net.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "json.h"
#include "progress.h"
#include "session.h"

namespace ravelo_cli {
namespace {

int method_code(const std::string& method) {
    if (method == "count") return COUNTING_LEARNING;
    if (method == "em") return EM_LEARNING;
    return GRADIENT_DESCENT_LEARNING;
}

struct Rows {
    bool json;
    std::vector<std::string> texts;  // every piece, for the JSON form
};

int print_rows(learner_bn*, const char* text, void* data) {
    Rows& rows = *static_cast<Rows*>(data);
    if (rows.json) rows.texts.push_back(text);
    else std::fputs(text, stdout), std::fflush(stdout);
    return 0;
}

// The rows of the progress table as JSON objects.
std::string json_rows(const std::vector<std::string>& texts) {
    std::string out;
    for (const std::string& text : texts) {
        int iteration;
        double score, change;
        const int got = std::sscanf(text.c_str(), " %d %lf %lf", &iteration, &score, &change);
        if (got < 2) continue;
        out += out.empty() ? "" : ", ";
        out += "{\"iteration\": " + std::to_string(iteration) + ", \"log_likelihood\": " + json_number(score) +
               ", \"change_percent\": " + (got == 3 ? json_number(change) : std::string("null")) + "}";
    }
    return "[" + out + "]";
}

}  // namespace

int run_learn(const LearnOptions& o) {
    Session session;
    Progress progress(4);
    progress.step("reading net");
    net_bn* net = session.read_net(o.net);
    nodelist_bn* nodes = session.nodes_named(net, o.nodes, true);
    if (o.threads > 0) SetBatchThreads_ns(o.threads, session.env());
    progress.step("reading cases");
    caseset_cs* cases = session.read_cases(o.cases);
    if (o.fresh)
        for (int i = 0; i < LengthNodeList_bn(nodes); ++i) DeleteNodeTables_bn(NthNode_bn(nodes, i));
    progress.step("learning");
    learner_bn* learner = NewLearner_bn(method_code(o.method), nullptr, session.env());
    if (o.max_iters >= 0) SetLearnerMaxIters_bn(learner, o.max_iters);
    if (o.tolerance >= 0) SetLearnerMaxTol_bn(learner, o.tolerance);
    session.check("setting up the learner");
    Rows rows{o.format == "json", {}};
    SetLearnerListener_bn(learner, print_rows, &rows);
    LearnCPTs_bn(learner, nodes, cases, o.degree);
    session.check("learning");
    progress.step("writing");
    session.write_net(net, o.out);
    if (rows.json)
        std::printf("{\"method\": %s, \"nodes\": %d, \"iterations\": %s, \"output\": %s}\n",
                    json_quoted(o.method.c_str()).c_str(), LengthNodeList_bn(nodes), json_rows(rows.texts).c_str(),
                    json_quoted(o.out.c_str()).c_str());
    DeleteLearner_bn(learner);
    DeleteCaseset_cs(cases);
    DeleteNodeList_bn(nodes);
    return 0;
}

Command add_learn(CLI::App& program) {
    auto o = std::make_shared<LearnOptions>();
    CLI::App* learn = program.add_subcommand("learn", "Learn the tables of a net's nodes from a case file");
    learn->add_option("NET", o->net, "Net file to read")->required();
    learn->add_option("CASES", o->cases, "Case file to learn from")->required();
    learn->add_option("--method", o->method, "count, em or gradient")
        ->check(CLI::IsMember({"count", "em", "gradient"}));
    learn->add_option("--max-iters", o->max_iters, "Iteration limit of em and gradient (default 1000)")
        ->check(CLI::NonNegativeNumber);
    learn->add_option("--tol", o->tolerance, "Relative change of log likelihood that ends iterating (default 1e-5)")
        ->check(CLI::NonNegativeNumber);
    learn->add_option("--threads", o->threads, "Worker threads (default: RAVELO_THREADS, else the cores)")
        ->check(CLI::PositiveNumber);
    learn->add_option("--nodes", o->nodes, "Nodes to learn, A,B,... (default: every nature node)");
    learn->add_option("--degree", o->degree, "Weight of each case (default 1)")->check(CLI::NonNegativeNumber);
    learn->add_flag("--fresh", o->fresh, "Remove the nodes' tables and experience first");
    learn->add_option("-o,--output", o->out, "Net file to write")->required();
    learn->add_option("--format", o->format, "Output format: text or json")->check(CLI::IsMember({"text", "json"}));
    return {learn, [o] { return run_learn(*o); }};
}

}  // namespace ravelo_cli
