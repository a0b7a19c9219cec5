// The Node class: names, states, kind, links, equation and levels.
#include "binding.h"

namespace ravelo_py {

namespace {

const char* const kind_words[] = {"nature", "constant", "decision", "utility", "disconnected", "adversary"};

template <class Getter>
auto node_text(Getter get) {
    return [get](const Node& node) {
        node_bn* handle = node.handle();
        const char* text = get(handle);
        raise_reports(node.env());
        return text_or_empty(text);
    };
}

template <class Setter>
auto set_node_text(Setter set) {
    return [set](const Node& node, const std::string& text) {
        node_bn* handle = node.handle();
        const char* checked_text = c_text(text);
        engine_call(node.env(), false, [&] { set(handle, checked_text); });
    };
}

std::vector<std::string> state_names(const Node& node) {
    node_bn* handle = node.handle();
    int count = node.num_states();
    std::vector<std::string> names;
    for (int s = 0; s < count; ++s) names.push_back(state_label(handle, s));
    return names;
}

void set_state_names(const Node& node, const std::vector<std::string>& names) {
    node_bn* handle = node.handle();
    if (static_cast<int>(names.size()) != node.num_states())
        throw py::value_error("node '" + node.name() + "' has " + std::to_string(node.num_states()) + " states, not " +
                              std::to_string(names.size()));
    std::string joined;
    for (const std::string& n : names) joined += (joined.empty() ? "" : ",") + n;
    const char* checked_names = c_text(joined);
    engine_call(node.env(), false, [&] { SetNodeStateNames_bn(handle, checked_names); });
}

py::object levels(const Node& node) {
    node_bn* handle = node.handle();
    const level_bn* values = GetNodeLevels_bn(handle);
    raise_reports(node.env());
    if (!values) return py::none();
    int count = node.num_states();
    bool continuous = GetNodeType_bn(handle) == CONTINUOUS_TYPE;
    size_t length = static_cast<size_t>(count + (continuous ? 1 : 0));
    return py::array_t<double>(length, values);
}

void set_levels(const Node& node, const py::object& values) {
    node_bn* handle = node.handle();
    if (values.is_none()) {
        engine_call(node.env(), false, [&] { SetNodeLevels_bn(handle, -1, nullptr); });
        return;
    }
    auto array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(values);
    if (!array || array.ndim() != 1) throw py::value_error("levels must be a sequence of numbers");
    bool continuous = GetNodeType_bn(handle) == CONTINUOUS_TYPE;
    int count = static_cast<int>(array.size()) - (continuous ? 1 : 0);
    engine_call(node.env(), false, [&] { SetNodeLevels_bn(handle, count, array.data()); });
}

}  // namespace

std::string Node::name() const { return node_text(GetNodeName_bn)(*this); }

int Node::num_states() const {
    int count = GetNodeNumberStates_bn(handle());
    raise_reports(env());
    return count;
}

// Unnamed states are shown as "#N", which state_of accepts back.
std::string state_label(node_bn* node, state_bn state) {
    if (state == UNDEF_STATE) return "";
    const char* name = state >= 0 ? GetNodeStateName_bn(node, state) : nullptr;
    if (name && *name) return name;
    std::string label = "#";  // appended, as "#" + text trips a false GCC 12 warning
    label += std::to_string(state);
    return label;
}

state_bn state_of(const Node& node, py::handle state) {
    node_bn* handle = node.handle();
    int count = node.num_states();
    state_bn index = UNDEF_STATE;
    std::string shown;
    if (py::isinstance<py::int_>(state) && !py::isinstance<py::bool_>(state)) {
        index = state.cast<int>();
        shown = std::to_string(index);
        if (index < 0 || index >= count) index = UNDEF_STATE;
    } else if (py::isinstance<py::str>(state)) {
        shown = state.cast<std::string>();
        index = GetStateNamed_bn(c_text(shown), handle);
        raise_reports(node.env());
        if (index == UNDEF_STATE && shown.size() > 1 && shown[0] == '#') {
            try {
                size_t used = 0;
                int n = std::stoi(shown.substr(1), &used);
                if (used == shown.size() - 1 && n >= 0 && n < count) index = n;
            } catch (const std::exception&) {
            }
        }
    } else {
        throw py::type_error("a state is given by its name or its index, not by " +
                             py::str(py::type::of(state)).cast<std::string>());
    }
    if (index == UNDEF_STATE) throw py::value_error("node '" + node.name() + "' has no state '" + shown + "'");
    return index;
}

void bind_node(py::module_& m) {
    py::class_<Node> node(m, "Node", "A node of a net; it keeps its net alive.");
    node.def_property("name", node_text(GetNodeName_bn), set_node_text(SetNodeName_bn), "The node's name.")
        .def_property("title", node_text(GetNodeTitle_bn), set_node_text(SetNodeTitle_bn), "The node's title.")
        .def_property("comment", node_text(GetNodeComment_bn), set_node_text(SetNodeComment_bn), "The node's comment.")
        .def_property_readonly("label", node_text(GetNodeLabel_bn), "The title, or the name when there is none.")
        .def_property("kind", [](const Node& n) {
            int kind = GetNodeKind_bn(n.handle());
            raise_reports(n.env());
            return std::string(kind >= 1 && kind <= 6 ? kind_words[kind - 1] : "unknown");
        }, [](const Node& n, const std::string& kind) {
            node_bn* handle = n.handle();
            int code = 0;
            for (int i = 0; i < 6; ++i)
                if (kind == kind_words[i]) code = i + 1;
            if (!code) throw py::value_error("node kind '" + kind + "' is not one of nature, constant, decision, "
                                             "utility, disconnected, adversary");
            engine_call(n.env(), false, [&] { SetNodeKind_bn(handle, static_cast<nodekind_bn>(code)); });
        }, "'nature', 'decision', 'utility', 'constant', 'disconnected' or 'adversary'.")
        .def_property_readonly("type", [](const Node& n) {
            int type = GetNodeType_bn(n.handle());
            raise_reports(n.env());
            return std::string(type == CONTINUOUS_TYPE ? "continuous" : "discrete");
        }, "'discrete' or 'continuous'.")
        .def_property_readonly("num_states", &Node::num_states)
        .def_property("states", &state_names, &set_state_names,
                      "The state names, in order; unnamed states show as '#N'.")
        .def_property_readonly("parents", [](const Node& n) { return nodes_of(n.net_ref(), GetNodeParents_bn(n.handle())); },
                               "The parents, in link order (the order of the table's axes).")
        .def_property_readonly("children", [](const Node& n) { return nodes_of(n.net_ref(), GetNodeChildren_bn(n.handle())); })
        .def_property_readonly("net", [](const Node& n) { n.handle(); return Net{n.net_ref()}; })
        .def_property("equation", node_text(GetNodeEquation_bn), [](const Node& n, const py::object& eqn) {
            node_bn* handle = n.handle();
            std::string text = eqn.is_none() ? "" : eqn.cast<std::string>();
            const char* checked_text = c_text(text);
            engine_call(n.env(), false, [&] { SetNodeEquation_bn(handle, checked_text); });
        }, "The node's equation text ('' when none; None or '' removes it).")
        .def("equation_to_table", [](const Node& n, int num_samples, bool samp_unc, bool add_exist) {
            node_bn* handle = n.handle();
            engine_call(n.env(), true, [&] { EquationToTable_bn(handle, num_samples, samp_unc, add_exist); });
        }, py::arg("num_samples") = 1, py::arg("samp_unc") = true, py::arg("add_exist") = false,
           "Builds the node's table from its equation.")
        .def_property("levels", &levels, &set_levels,
                      "Thresholds of a continuous node (one more than its states) or values of a discrete one; None when none.")
        .def("delete", [](const Node& n) {
            node_bn* handle = n.handle();
            engine_call(n.env(), false, [&] { DeleteNode_bn(handle); });
        }, "Deletes the node from its net; this object then raises ravelo.Error when used.")
        .def("__eq__", [](const Node& a, const py::object& b) {
            return py::isinstance<Node>(b) && a == b.cast<const Node&>();
        })
        .def("__hash__", &Node::hash)
        .def("__repr__", [](const Node& n) {
            if (!n.net_ref()->net) return std::string("<ravelo.Node of deleted net '") + n.net_ref()->name_at_deletion + "'>";
            node_bn* handle = n.handle();
            const char* name = GetNodeName_bn(handle);
            if (!name) {
                clear_reports(n.env());
                return std::string("<ravelo.Node (deleted)>");
            }
            std::string shown = "<ravelo.Node '" + std::string(name) + "'";
            if (n.num_states() > 0) {
                shown += " (";
                auto names = state_names(n);
                for (size_t i = 0; i < names.size(); ++i) shown += (i ? ", " : "") + names[i];
                shown += ")";
            } else {
                shown += " continuous";
            }
            return shown + ">";
        });
    bind_tables(node);
    bind_findings(node);
}

}  // namespace ravelo_py
