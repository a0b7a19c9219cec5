// Random cases family.
#include <climits>

#include "api/handles.h"
#include "base/random.h"
#include "learn/random_case.h"

using namespace ravelo;

int GenerateRandomCase_bn(const nodelist_bn* nodes, int method, double maxtries) {
    ApiFrame frame("GenerateRandomCase_bn");
    return frame.run<int>(ERROR_CASE_RESULT, [&] {
        NodeList& list = checked_list(frame, nodes);
        for (const Node* n : list.nodes)
            if (!n || n->is_dead() || n->net != list.nodes.front()->net)
                fail(5146, "deleted or damaged >-Bnodes passed");
        if (method < 0 || method > 2)
            fail(5541, "argument 'method' should be 0, 1 or 2 with this version of %s (it is %d)", "Ravelo",
                 method);
        if (method == FORWARD_SAMPLING && !(maxtries >= 1.0 && maxtries <= static_cast<double>(INT_MAX)))
            fail(5525,
                 "argument 'maxtries' should be between 1 and INT_MAX inclusive (it is %g) when 'method' is "
                 "FORWARD_SAMPLING",
                 maxtries);
        if (list.nodes.empty()) return 0;
        Net& net = *list.nodes.front()->net;
        frame.use(*net.env);
        frame.hold(net.lock);
        return generate_random_case(list.nodes, method, maxtries);
    });
}

void SetNetRandomGen_bn(net_bn* net, randgen_ns* rand) {
    ApiFrame frame("SetNetRandomGen_bn");
    frame.run([&] {
        Net& n = checked_net(frame, net);
        RandomGenerator* g = nullptr;
        if (rand) {
            ApiFrame::check(rand, kRandGenHandle);
            g = core_of<RandomGenerator>(rand);
            if (g->env != n.env) fail(5150, "the >-RandGen passed belongs to another environment than the >-Bnet");
        }
        n.random_gen = g;
    });
}
