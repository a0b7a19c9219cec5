// "ravelo test NET CASES --nodes A,B": scores how well the net predicts the
// test nodes from the other values of each case and prints the report.
#include <cstdio>
#include <memory>
#include <string>

#include "commands.h"
#include "json.h"
#include "progress.h"
#include "session.h"

namespace ravelo_cli {
namespace {

std::string json_scores(Session& session, tester_bn* tester, nodelist_bn* tested) {
    std::string out = "{";
    for (int i = 0; i < LengthNodeList_bn(tested); ++i) {
        node_bn* node = NthNode_bn(tested, i);
        const int states = GetNodeNumberStates_bn(node);
        std::string confusion;
        for (int actual = 0; actual < states; ++actual) {
            confusion += actual ? ", [" : "[";
            for (int predicted = 0; predicted < states; ++predicted)
                confusion += (predicted ? ", " : "") + json_number(GetTestConfusion_bn(tester, node, predicted, actual));
            confusion += "]";
        }
        const double log_loss = GetTestLogLoss_bn(tester, node);
        out += (i ? ", " : "") + json_quoted(GetNodeName_bn(node)) +
               ": {\"error_rate\": " + json_number(GetTestErrorRate_bn(tester, node)) +
               ", \"log_loss\": " + (log_loss > 1e300 ? std::string("\"INFINITY\"") : json_number(log_loss)) +
               ", \"quadratic_loss\": " + json_number(GetTestQuadraticLoss_bn(tester, node)) +
               ", \"confusion\": [" + confusion + "]}";
        session.check("reading the scores");
    }
    return out + "}";
}

}  // namespace

int run_test(const TestOptions& o) {
    Session session;
    Progress progress(3);
    progress.step("reading net");
    net_bn* net = session.read_net(o.net);
    nodelist_bn* tested = session.nodes_named(net, o.nodes, false);
    nodelist_bn* unobserved = o.unobserved.empty() ? nullptr : session.nodes_named(net, o.unobserved, false);
    progress.step("reading cases");
    caseset_cs* cases = session.read_cases(o.cases);
    progress.step("testing");
    tester_bn* tester = NewNetTester_bn(tested, unobserved, -1);
    session.check("making the tester");
    TestWithCaseset_bn(tester, cases);
    session.check("testing");
    if (o.format == "json") {
        std::printf("{\"nodes\": %s}\n", json_scores(session, tester, tested).c_str());
    } else {
        stream_ns* report = NewMemoryStream_ns("report", session.env(), nullptr);
        WriteTestReport_bn(tester, report);
        long length = 0;
        const char* text = GetStreamContents_ns(report, &length);
        session.check("writing the report");
        std::fwrite(text, 1, static_cast<size_t>(length), stdout);
        DeleteStream_ns(report);
    }
    DeleteNetTester_bn(tester);
    DeleteCaseset_cs(cases);
    return 0;
}

Command add_test(CLI::App& program) {
    auto o = std::make_shared<TestOptions>();
    CLI::App* test = program.add_subcommand("test", "Score how well a net predicts nodes of the cases in a case file");
    test->add_option("NET", o->net, "Net file to read")->required();
    test->add_option("CASES", o->cases, "Case file to test with")->required();
    test->add_option("--nodes", o->nodes, "Nodes to test, A,B,...")->required();
    test->add_option("--unobserved", o->unobserved, "Nodes never entered as findings, C,D,...");
    test->add_option("--format", o->format, "Output format: text (the report) or json")
        ->check(CLI::IsMember({"text", "json"}));
    return {test, [o] { return run_test(*o); }};
}

}  // namespace ravelo_cli
