// Learners family, and the number of worker threads batch work uses.
#include "api/handles.h"
#include "base/random.h"
#include "learn/case_batch.h"
#include "learn/caseset.h"
#include "learn/counting.h"
#include "learn/learner.h"

using namespace ravelo;

namespace {

const HandleKind kLearnerHandle{kLearnerType, 5116, "NULL passed for the >-learner_bn", 5156,
                                "deleted or damaged >-learner_bn passed", 0, nullptr};

learner_bn* handle_of(Learner* l) { return reinterpret_cast<learner_bn*>(l); }

Learner& checked_learner(ApiFrame& frame, const learner_bn* handle) {
    ApiFrame::check(handle, kLearnerHandle);
    Learner* learner = core_of<Learner>(handle);
    frame.use(*learner->env);
    return *learner;
}

}  // namespace

learner_bn* NewLearner_bn(int method, const char* options, environ_ns* env) {
    ApiFrame frame("NewLearner_bn");
    return frame.run<learner_bn*>(nullptr, [&] {
        Environment& e = frame.environment(env);
        if (method < kCountingLearning || method > kGradientLearning)
            fail(5632, "argument 'method' is out-of-range (%d)", method);
        if (options && *options) fail(5630, "in argument 'options', '%.80s' is not recognized", options);
        return handle_of(e.store.make<Learner>(&e, method));
    });
}

void DeleteLearner_bn(learner_bn* learner) {
    ApiFrame frame("DeleteLearner_bn");
    frame.run([&] {
        Learner& l = checked_learner(frame, learner);
        l.kill();
        l.listener = nullptr;
    });
}

void SetLearnerMaxIters_bn(learner_bn* learner, int max_iters) {
    ApiFrame frame("SetLearnerMaxIters_bn");
    frame.run([&] {
        Learner& l = checked_learner(frame, learner);
        if (max_iters < 0) fail(5636, "argument 'max_iters' is negative (%d)", max_iters);
        l.max_iters = max_iters;
    });
}

int GetLearnerMaxIters_bn(const learner_bn* learner) {
    ApiFrame frame("GetLearnerMaxIters_bn");
    return frame.run<int>(-1, [&] { return checked_learner(frame, learner).max_iters; });
}

void SetLearnerMaxTol_bn(learner_bn* learner, double tol) {
    ApiFrame frame("SetLearnerMaxTol_bn");
    frame.run([&] {
        Learner& l = checked_learner(frame, learner);
        if (!(tol >= 0)) fail(5637, "the tolerance argument is negative (%g)", tol);
        l.tolerance = tol;
    });
}

double GetLearnerMaxTol_bn(const learner_bn* learner) {
    ApiFrame frame("GetLearnerMaxTol_bn");
    return frame.run<double>(undef_value(), [&] { return checked_learner(frame, learner).tolerance; });
}

void SetLearnerRandomGen_bn(learner_bn* learner, randgen_ns* rand) {
    ApiFrame frame("SetLearnerRandomGen_bn");
    frame.run([&] {
        Learner& l = checked_learner(frame, learner);
        if (rand) ApiFrame::check(rand, kRandGenHandle);
        l.random = rand ? core_of<RandomGenerator>(rand) : nullptr;
    });
}

void SetLearnerListener_bn(learner_bn* learner, LearnerListener_bn listener, void* data) {
    ApiFrame frame("SetLearnerListener_bn");
    frame.run([&] {
        Learner& l = checked_learner(frame, learner);
        if (!listener) {
            l.listener = nullptr;
            return;
        }
        l.listener = [&l, listener, data](const std::string& text) {
            return listener(handle_of(&l), text.c_str(), data) != 0;
        };
    });
}

void LearnCPTs_bn(learner_bn* learner, const nodelist_bn* nodes, const caseset_cs* cases, double degree) {
    ApiFrame frame("LearnCPTs_bn");
    frame.run([&] {
        Learner& l = checked_learner(frame, learner);
        NodeList& list = checked_list(frame, nodes);
        CaseSet& set = checked_caseset(frame, cases);
        if (!(degree >= 0)) fail(5638, "the degree argument is negative (%g)", degree);
        if (list.nodes.empty() || !list.net) fail(5639, "no (non-constant) >-node-s selected to learn from cases");
        if (l.random && l.random->is_dead()) fail(5640, "the >-randgen_ns of this >-learner_bn has been deleted");
        check_learnable(list.nodes);
        CaseTable table = load_caseset(set, *list.net);
        if (l.method == kCountingLearning || l.method == kCountingLearning2)
            learn_cases_by_counting(list.nodes, table, degree);
        else
            learn_tables(l, *list.net, list.nodes, table, degree);
    });
}

int SetBatchThreads_ns(int threads, environ_ns* env) {
    ApiFrame frame("SetBatchThreads_ns");
    return frame.run<int>(-1, [&] {
        frame.environment(env);
        if (threads != -1 && threads < 1)
            fail(5641, "argument 'threads' should be -1 (means query only) or at least 1 (it is %d)", threads);
        return set_batch_threads(threads);
    });
}
