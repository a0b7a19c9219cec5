// Net testing family.
#include <cmath>

#include "api/handles.h"
#include "base/stream.h"
#include "learn/caseset.h"
#include "learn/tester.h"

using namespace ravelo;

namespace {

tester_bn* handle_of(Tester* t) { return reinterpret_cast<tester_bn*>(t); }

// The tester's own messages for a bad handle differ from the other families'.
Tester& checked_tester(ApiFrame& frame, const tester_bn* handle) {
    if (!handle) fail(5113, "argument 'test' is NULL (i.e. 0)");
    if (tag_of(handle) != kTesterType) fail(5153, "deleted or damaged tester_bn passed");
    Tester* tester = core_of<Tester>(handle);
    frame.use(*tester->env);
    if (tester->net->is_dead()) fail(5154, "the >-net of this >-tester_bn has been deleted");
    frame.hold(tester->net->lock);
    return *tester;
}

template <class Score>
double node_score(const char* function, tester_bn* test, node_bn* node, Score&& score) {
    ApiFrame frame(function);
    return frame.run<double>(undef_value(), [&] {
        Tester& t = checked_tester(frame, test);
        Node& n = checked_node(frame, node);
        return score(t.tally_of(n), n);
    });
}

}  // namespace

tester_bn* NewNetTester_bn(const nodelist_bn* test_nodes, const nodelist_bn* unobs_nodes, int tests) {
    ApiFrame frame("NewNetTester_bn");
    return frame.run<tester_bn*>(nullptr, [&] {
        NodeList& tested = checked_list(frame, test_nodes, "test_nodes");
        NodeList* unobserved = unobs_nodes ? &checked_list(frame, unobs_nodes, "unobs_nodes") : nullptr;
        if (tests != -1) fail(5524, "argument 'tests' is %d, but with this version of >-Ravelo it must be -1", tests);
        if (tested.nodes.empty() || !tested.net) fail(5526, "argument 'test_nodes' is an empty list");
        for (const Node* n : tested.nodes)
            if (!n->has_states())
                fail(5527, "can't test >-node '%s', because it has no states (it is continuous without levels)",
                     n->name.c_str());
        if (unobserved && !unobserved->nodes.empty() && unobserved->net != tested.net)
            fail(5528, "arguments 'test_nodes' and 'unobs_nodes' hold >-node-s of different >-net-s");
        Net& net = *tested.net;
        Tester* t = net.env->store.make<Tester>(net.env, &net);
        t->test_nodes = tested.nodes;
        if (unobserved) t->unobserved = unobserved->nodes;
        for (const Node* n : t->test_nodes) t->tallies.emplace_back(n->num_states());
        return handle_of(t);
    });
}

void DeleteNetTester_bn(tester_bn* test) {
    ApiFrame frame("DeleteNetTester_bn");
    frame.run([&] {
        if (!test) fail(5113, "argument 'test' is NULL (i.e. 0)");
        if (tag_of(test) != kTesterType) fail(5153, "deleted or damaged tester_bn passed");
        Tester* t = core_of<Tester>(test);
        frame.use(*t->env);
        t->kill();
        t->tallies = {};
        t->test_nodes = {};
        t->unobserved = {};
    });
}

void TestWithCaseset_bn(tester_bn* test, const caseset_cs* cases) {
    ApiFrame frame("TestWithCaseset_bn");
    frame.run([&] {
        Tester& t = checked_tester(frame, test);
        CaseSet& set = checked_caseset(frame, cases);
        for (const Node* n : t.test_nodes)
            if (n->is_dead()) fail(5155, "a >-node to test has been deleted since >-NewNetTester_bn");
        test_with_cases(t, load_caseset(set, *t.net));
    });
}

double GetTestConfusion_bn(tester_bn* test, node_bn* node, state_bn predicted, state_bn actual) {
    return node_score("GetTestConfusion_bn", test, node, [&](const NodeTally& tally, const Node& n) {
        for (int s : {predicted, actual})
            if (s < 0 || s >= tally.states)
                fail(5532, "passed >-int_state (=%d) for >-Bnode '%s' is out of bounds (it must be between 0 "
                           "and %d inclusive)",
                     s, n.name.c_str(), tally.states - 1);
        return tally.confusion[static_cast<std::size_t>(actual * tally.states + predicted)];
    });
}

double GetTestErrorRate_bn(tester_bn* test, node_bn* node) {
    return node_score("GetTestErrorRate_bn", test, node,
                      [](const NodeTally& t, const Node&) { return t.errors / t.total; });
}

double GetTestLogLoss_bn(tester_bn* test, node_bn* node) {
    return node_score("GetTestLogLoss_bn", test, node, [](const NodeTally& t, const Node&) {
        return std::isinf(t.log_loss) ? t.log_loss : t.log_loss / t.total;
    });
}

double GetTestQuadraticLoss_bn(tester_bn* test, node_bn* node) {
    return node_score("GetTestQuadraticLoss_bn", test, node,
                      [](const NodeTally& t, const Node&) { return t.quadratic_loss / t.total; });
}

void WriteTestReport_bn(tester_bn* test, stream_ns* out) {
    ApiFrame frame("WriteTestReport_bn");
    frame.run([&] {
        Tester& t = checked_tester(frame, test);
        ApiFrame::check(out, kStreamHandle);
        write_stream_text(*core_of<Stream>(out), test_report(t));
    });
}
