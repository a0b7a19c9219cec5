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
        }, py::arg("nodes"), py::arg("degree"), "Learns the entered findings as one case of weight degree.");
    node.def("fade", [](const Node& n, double degree) {
        node_bn* handle = n.handle();
        engine_call(n.env(), false, [&] { FadeCPTable_bn(handle, degree); });
    }, py::arg("degree"), "Moves the table toward its prior by degree (0 to 1); 1 forgets all that was learned.");
}

}  // namespace ravelo_py
