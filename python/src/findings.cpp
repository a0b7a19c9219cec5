// Findings and beliefs of a node.  Assigning a finding replaces the node's previous one; when
// the engine refuses the new finding, the previous one is entered again.
#include <cmath>

#include "binding.h"

namespace ravelo_py {

namespace {

// What a node's finding was, enough to enter it again.
struct FindingSnapshot {
    state_bn state = UNDEF_STATE;
    double value = NAN;
    std::vector<prob_bn> likelihood;

    static FindingSnapshot of(node_bn* node, int count) {
        FindingSnapshot snap;
        snap.state = GetNodeFinding_bn(node);
        snap.value = GetNodeValueEntered_bn(node);
        if (snap.state == LIKELIHOOD_FINDING || snap.state == NEGATIVE_FINDING) {
            const prob_bn* l = GetNodeLikelihood_bn(node);
            if (l) snap.likelihood.assign(l, l + count);
        }
        return snap;
    }
    bool empty() const { return state == UNDEF_STATE && value != value; }
    void enter(node_bn* node) const {
        if (value == value) EnterNodeValue_bn(node, value);
        else if (state >= 0) EnterFinding_bn(node, state);
        else if (!likelihood.empty()) EnterNodeLikelihood_bn(node, likelihood.data());
    }
};

// Replaces the node's finding by what `enter` enters; restores the old one if that fails.
template <class Enter>
void replace_finding(const Node& node, Enter&& enter) {
    node_bn* handle = node.handle();
    environ_ns* env = node.env();
    FindingSnapshot before = FindingSnapshot::of(handle, node.num_states());
    raise_reports(env);
    try {
        engine_call(env, true, [&] {
            if (!before.empty()) RetractNodeFindings_bn(handle);
            enter(handle);
        });
    } catch (...) {
        {
            py::gil_scoped_release unlocked;
            RetractNodeFindings_bn(handle);
            before.enter(handle);
        }
        clear_reports(env);
        throw;
    }
}

void retract(const Node& node) {
    node_bn* handle = node.handle();
    engine_call(node.env(), true, [&] { RetractNodeFindings_bn(handle); });
}

py::object finding(const Node& node) {
    node_bn* handle = node.handle();
    state_bn state = GetNodeFinding_bn(handle);
    raise_reports(node.env());
    if (state < 0) return py::none();
    return py::str(state_label(handle, state));
}

void set_finding(const Node& node, const py::object& state) {
    if (state.is_none()) return retract(node);
    state_bn index = state_of(node, state);
    replace_finding(node, [&](node_bn* n) { EnterFinding_bn(n, index); });
}

py::array_t<double> likelihood(const Node& node) {
    node_bn* handle = node.handle();
    const prob_bn* values = GetNodeLikelihood_bn(handle);
    raise_reports(node.env());
    py::array_t<double> out(node.num_states());
    std::copy(values, values + out.size(), out.mutable_data());
    return out;
}

void set_likelihood(const Node& node, const py::object& values) {
    if (values.is_none()) return retract(node);
    auto vector = py::array_t<float, py::array::c_style | py::array::forcecast>::ensure(values);
    if (!vector || vector.ndim() != 1 || vector.size() != node.num_states())
        throw py::value_error("a likelihood for node '" + node.name() + "' needs one number per state (" +
                              std::to_string(node.num_states()) + ")");
    replace_finding(node, [&](node_bn* n) { EnterNodeLikelihood_bn(n, vector.data()); });
}

py::object value(const Node& node) {
    double v = GetNodeValueEntered_bn(node.handle());
    raise_reports(node.env());
    if (v != v) return py::none();
    return py::float_(v);
}

void set_value(const Node& node, const py::object& v) {
    if (v.is_none()) return retract(node);
    double number = v.cast<double>();
    replace_finding(node, [&](node_bn* n) { EnterNodeValue_bn(n, number); });
}

}  // namespace

py::array_t<double> beliefs_of(const Node& node) {
    node_bn* handle = node.handle();
    environ_ns* env = node.env();
    int count = GetNodeNumberStates_bn(handle);
    // Reading current beliefs is quick; only a pending update is worth letting other threads run.
    bool current = IsBeliefUpdated_bn(handle);
    const prob_bn* beliefs = engine_call(env, !current, [&] { return GetNodeBeliefs_bn(handle); });
    py::array_t<double> out(count);
    double* data = out.mutable_data();
    for (int i = 0; i < count; ++i) data[i] = beliefs[i];
    return out;
}

void bind_findings(py::class_<Node>& node) {
    node.def_property("finding", &finding, &set_finding,
                      "The state found (its name), or None.  Assign a state name or index to enter a\n"
                      "finding in place of any earlier one; assign None or del to retract it.")
        .def_property("likelihood", &likelihood, &set_likelihood,
                      "The likelihood vector of the node's finding (all 1 when none); assign one number\n"
                      "in [0, 1] per state to enter a likelihood finding.")
        .def_property("value", &value, &set_value, "The real value entered as a finding, or None; assign to enter one.")
        .def("enter_not", [](const Node& n, const py::object& state) {
            state_bn index = state_of(n, state);
            node_bn* handle = n.handle();
            engine_call(n.env(), true, [&] { EnterFindingNot_bn(handle, index); });
        }, py::arg("state"), "Enters the finding that the node is not in that state.")
        .def("retract", &retract, "Retracts the node's findings.")
        .def_property_readonly("beliefs", &beliefs_of,
                               "The node's beliefs given the findings, as a numpy array (the net must be compiled).")
        .def("expected_value", [](const Node& n) {
            node_bn* handle = n.handle();
            double sd = 0;
            double mean = engine_call(n.env(), true, [&] { return GetNodeExpectedValue_bn(handle, &sd); });
            return py::make_tuple(mean, sd);
        }, "The node's expected value and standard deviation, as (mean, std_dev).")
        .def_property_readonly("expected_utils", [](const Node& n) {
            node_bn* handle = n.handle();
            int count = n.num_states();
            const util_bn* utils = engine_call(n.env(), true, [&] { return GetNodeExpectedUtils_bn(handle); });
            return py::array_t<double>(count, utils);
        }, "The expected utility of each state of a decision node.");
}

}  // namespace ravelo_py
