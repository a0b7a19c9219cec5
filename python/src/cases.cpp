// The engine's case operations that the Python case functions build on: drawing random cases,
// a net's own random generator, learning the entered findings by counting, and fading.
#include "binding.h"

namespace ravelo_py {

namespace {

// A node list of the given nodes, deleted with this object.
class NodeList {
public:
    NodeList(const Net& net, const std::vector<Node>& nodes) : list_(NewNodeList2_bn(0, net.ref->checked())) {
        for (const Node& n : nodes) {
            if (n.net_ref() != net.ref) {
                DeleteNodeList_bn(list_);
                throw py::value_error("node '" + n.name() + "' belongs to another net");
            }
            AddNodeToList_bn(n.handle(), list_, LAST_ENTRY);
        }
        try {
            raise_reports(net.ref->env());
        } catch (...) {
            DeleteNodeList_bn(list_);
            throw;
        }
    }
    ~NodeList() { DeleteNodeList_bn(list_); }
    NodeList(const NodeList&) = delete;
    NodeList& operator=(const NodeList&) = delete;
    const nodelist_bn* get() const { return list_; }

private:
    nodelist_bn* list_;
};

// The cases of a case-file text, as a case set; deleted with this object.
class CaseSet {
public:
    CaseSet(environ_ns* env, const std::string& text) {
        stream_ = NewMemoryStream_ns("cases.cas", env, nullptr);
        set_ = NewCaseset_cs("cases", env);
        try {
            raise_reports(env);
            SetStreamContents_ns(stream_, text.data(), static_cast<long>(text.size()), 1);
            engine_call(env, true, [&] { AddFileToCaseset_cs(set_, stream_, 1.0, nullptr); });
        } catch (...) {
            release();
            throw;
        }
    }
    ~CaseSet() { release(); }
    CaseSet(const CaseSet&) = delete;
    CaseSet& operator=(const CaseSet&) = delete;
    const caseset_cs* get() const { return set_; }

private:
    void release() {
        if (set_) DeleteCaseset_cs(set_);
        if (stream_) DeleteStream_ns(stream_);
        set_ = nullptr;
        stream_ = nullptr;
    }
    stream_ns* stream_ = nullptr;
    caseset_cs* set_ = nullptr;
};

// Deletes an engine object made for one call, whatever happens.
template <class T, void (*Delete)(T*)>
struct Owned {
    T* object;
    ~Owned() {
        if (object) Delete(object);
    }
};

void learn_cases(const Net& n, const std::vector<Node>& nodes, const std::string& text, int method, int max_iters,
                 double tol, double degree) {
    environ_ns* env = n.ref->env();
    NodeList list(n, nodes);
    CaseSet cases(env, text);
    Owned<learner_bn, DeleteLearner_bn> learner{
        engine_call(env, false, [&] { return NewLearner_bn(method, "", env); })};
    if (max_iters >= 0) engine_call(env, false, [&] { SetLearnerMaxIters_bn(learner.object, max_iters); });
    if (tol >= 0) engine_call(env, false, [&] { SetLearnerMaxTol_bn(learner.object, tol); });
    engine_call(env, true, [&] { LearnCPTs_bn(learner.object, list.get(), cases.get(), degree); });
}

// Per test node: (error rate, log loss, quadratic loss, confusion matrix [predicted, actual]).
py::dict test_cases(const Net& n, const std::vector<Node>& nodes, const std::string& text) {
    environ_ns* env = n.ref->env();
    NodeList list(n, nodes);
    CaseSet cases(env, text);
    Owned<tester_bn, DeleteNetTester_bn> tester{
        engine_call(env, false, [&] { return NewNetTester_bn(list.get(), nullptr, -1); })};
    engine_call(env, true, [&] { TestWithCaseset_bn(tester.object, cases.get()); });
    py::dict scores;
    for (const Node& node : nodes) {
        node_bn* h = node.handle();
        int count = node.num_states();
        py::array_t<double> confusion({count, count});
        for (int p = 0; p < count; ++p)
            for (int a = 0; a < count; ++a)
                confusion.mutable_at(p, a) = GetTestConfusion_bn(tester.object, h, p, a);
        double error = GetTestErrorRate_bn(tester.object, h);
        double log_loss = GetTestLogLoss_bn(tester.object, h);
        double quadratic = GetTestQuadraticLoss_bn(tester.object, h);
        raise_reports(env);
        scores[py::str(node.name())] = py::make_tuple(error, log_loss, quadratic, confusion);
    }
    return scores;
}

}  // namespace

void NetRef::use_random_seed(const py::object& seed) {
    randgen_ns* made = nullptr;
    if (!seed.is_none()) {
        std::string text = py::str(seed).cast<std::string>();
        made = engine_call(env(), false, [&] { return NewRandomGenerator_ns(c_text(text), env(), nullptr); });
    }
    engine_call(env(), false, [&] { SetNetRandomGen_bn(checked(), made); });
    if (rand) DeleteRandomGen_ns(rand);
    rand = made;
}

void bind_cases(py::class_<Net>& net, py::class_<Node>& node) {
    net.def("_generate_case", [](const Net& n, const std::vector<Node>& nodes, int method, double max_tries) {
            NodeList list(n, nodes);
            return engine_call(n.ref->env(), true, [&] { return GenerateRandomCase_bn(list.get(), method, max_tries); });
        }, py::arg("nodes"), py::arg("method") = 0, py::arg("max_tries") = 1000.0,
        "Draws one case given the findings and enters it as findings of the nodes; 0 when one was made.")
        .def("_use_random_seed", [](const Net& n, const py::object& seed) { n.ref->use_random_seed(seed); },
             py::arg("seed"), "Gives the net its own generator from a seed (None: the shared one again).")
        .def("_revise_by_findings", [](const Net& n, const std::vector<Node>& nodes, double degree) {
            NodeList list(n, nodes);
            engine_call(n.ref->env(), false, [&] { ReviseCPTsByFindings_bn(list.get(), 0, degree); });
        }, py::arg("nodes"), py::arg("degree"), "Learns the entered findings as one case of weight degree.")
        .def("_learn_cases", &learn_cases, py::arg("nodes"), py::arg("text"), py::arg("method"), py::arg("max_iters"),
             py::arg("tol"), py::arg("degree"), "Learns the nodes' tables from case-file text with a learner.")
        .def("_test_cases", &test_cases, py::arg("nodes"), py::arg("text"),
             "Tests the net's predictions of the nodes on case-file text.");
    node.def("fade", [](const Node& n, double degree) {
        node_bn* handle = n.handle();
        engine_call(n.env(), false, [&] { FadeCPTable_bn(handle, degree); });
    }, py::arg("degree"), "Moves the table toward its prior by degree (0 to 1); 1 forgets all that was learned.");
}

}  // namespace ravelo_py
