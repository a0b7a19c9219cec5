// The Net class: reading and writing, nodes by name, compiling, and the net-wide queries.
#include "binding.h"

namespace ravelo_py {

NetRef::~NetRef() {
    if (net) DeleteNet_bn(net);
    if (rand) DeleteRandomGen_ns(rand);
    clear_reports(env());
}

net_bn* NetRef::checked() const {
    if (!net) raise_error("net '" + name_at_deletion + "' has been deleted");
    return net;
}

void NetRef::remove() {
    if (!net) return;
    name_at_deletion = text_or_empty(GetNetName_bn(net));
    engine_call(env(), false, [&] { DeleteNet_bn(net); });
    net = nullptr;
    if (rand) DeleteRandomGen_ns(rand);
    rand = nullptr;
}

std::string path_text(py::handle path) {
    std::string text = py::module_::import("os").attr("fspath")(path).cast<std::string>();
    c_text(text);
    return text;
}

std::vector<Node> nodes_of(const std::shared_ptr<NetRef>& net, const nodelist_bn* list) {
    std::vector<Node> nodes;
    int length = LengthNodeList_bn(list);
    nodes.reserve(length > 0 ? length : 0);
    for (int i = 0; i < length; ++i) nodes.emplace_back(net, NthNode_bn(list, i));
    raise_reports(net->env());
    return nodes;
}

namespace {

// Wraps a net the engine just made; if the making left an error the net is deleted again.
Net adopt(const std::shared_ptr<Environ>& environ, net_bn* made) {
    Net net{std::make_shared<NetRef>(environ, made)};
    raise_reports(environ->get());
    if (!made) raise_error("the engine made no net and gave no reason");
    return net;
}

// Runs `use` on a stream that is deleted afterwards, whatever happens.
template <class Use>
auto with_stream(environ_ns* env, stream_ns* stream, Use&& use) {
    raise_reports(env);
    struct Closer {
        stream_ns* s;
        ~Closer() { DeleteStream_ns(s); }
    } closer{stream};
    return use(stream);
}

Net read_net(py::handle path) {
    auto environ = shared_environ();
    environ_ns* env = environ->get();
    std::string name = path_text(path);
    net_bn* made = with_stream(env, NewFileStream_ns(name.c_str(), env, nullptr), [&](stream_ns* s) {
        py::gil_scoped_release unlocked;
        return ReadNet_bn(s, NO_WINDOW);
    });
    return adopt(environ, made);
}

Net read_text(const std::string& text, const std::string& format) {
    auto environ = shared_environ();
    environ_ns* env = environ->get();
    std::string name = "net." + format;
    net_bn* made = with_stream(env, NewMemoryStream_ns(c_text(name), env, nullptr), [&](stream_ns* s) {
        SetStreamContents_ns(s, text.data(), static_cast<long>(text.size()), 1);
        py::gil_scoped_release unlocked;
        return ReadNet_bn(s, NO_WINDOW);
    });
    return adopt(environ, made);
}

void write_net(const Net& net, py::handle path) {
    net_bn* handle = net.ref->checked();
    environ_ns* env = net.ref->env();
    std::string name = path_text(path);
    with_stream(env, NewFileStream_ns(name.c_str(), env, nullptr), [&](stream_ns* s) {
        engine_call(env, true, [&] { WriteNet_bn(handle, s); });
        return 0;
    });
}

std::string write_text(const Net& net, const std::string& format) {
    net_bn* handle = net.ref->checked();
    environ_ns* env = net.ref->env();
    std::string name = "net." + format;
    return with_stream(env, NewMemoryStream_ns(c_text(name), env, nullptr), [&](stream_ns* s) {
        engine_call(env, true, [&] { WriteNet_bn(handle, s); });
        long length = 0;
        const char* text = GetStreamContents_ns(s, &length);
        raise_reports(env);
        return std::string(text ? text : "", text ? static_cast<size_t>(length) : 0);
    });
}

Node node_named(const Net& net, const std::string& name) {
    net_bn* handle = net.ref->checked();
    node_bn* node = GetNodeNamed_bn(c_text(name), handle);
    raise_reports(net.ref->env());
    if (!node) throw py::key_error("net '" + text_or_empty(GetNetName_bn(handle)) + "' has no node '" + name + "'");
    return Node(net.ref, node);
}

// A node given as a Node of this net or as a name.
node_bn* node_of(const Net& net, py::handle node) {
    if (py::isinstance<Node>(node)) {
        const Node& n = node.cast<const Node&>();
        if (n.net_ref() != net.ref) throw py::value_error("node '" + n.name() + "' belongs to another net");
        return n.handle();
    }
    return node_named(net, node.cast<std::string>()).handle();
}

std::vector<Node> net_nodes(const Net& net) {
    return nodes_of(net.ref, GetNetNodes2_bn(net.ref->checked(), nullptr));
}

int node_kind_code(const std::string& kind) {
    static const char* const kinds[] = {"nature", "constant", "decision", "utility", "disconnected", "adversary"};
    for (int i = 0; i < 6; ++i)
        if (kind == kinds[i]) return i + 1;
    throw py::value_error("node kind '" + kind +
                          "' is not one of nature, constant, decision, utility, disconnected, adversary");
}

// A node list of the net holding the given nodes, deleted with this object.
struct OwnedList {
    explicit OwnedList(nodelist_bn* made) : list(made) {}
    ~OwnedList() { DeleteNodeList_bn(list); }
    OwnedList(const OwnedList&) = delete;
    OwnedList& operator=(const OwnedList&) = delete;
    nodelist_bn* list;
};

std::unique_ptr<OwnedList> list_of(const Net& net, const std::vector<node_bn*>& nodes) {
    auto owned = std::make_unique<OwnedList>(NewNodeList2_bn(0, net.ref->checked()));
    for (node_bn* n : nodes) AddNodeToList_bn(n, owned->list, LAST_ENTRY);
    raise_reports(net.ref->env());
    return owned;
}

std::vector<node_bn*> handles_of(const Net& net, const py::object& nodes) {
    std::vector<node_bn*> handles;
    if (nodes.is_none()) {
        for (const Node& n : net_nodes(net)) handles.push_back(n.handle());
    } else {
        for (py::handle n : nodes) handles.push_back(node_of(net, n));
    }
    return handles;
}

Node add_node(const Net& net, const std::string& name, const py::object& states, const py::object& parents,
              const std::string& kind) {
    net_bn* handle = net.ref->checked();
    environ_ns* env = net.ref->env();
    int kind_code = node_kind_code(kind);
    std::vector<node_bn*> parent_handles;
    for (py::handle p : parents) parent_handles.push_back(node_of(net, p));
    int count = 0;
    std::string names;
    if (py::isinstance<py::int_>(states)) {
        count = states.cast<int>();
    } else {
        for (py::handle s : states) {
            if (count) names += ',';
            names += s.cast<std::string>();
            ++count;
        }
        if (count == 0) throw py::value_error("node '" + name + "' needs at least one state");
    }
    c_text(names);
    const char* checked_name = c_text(name);
    node_bn* node = engine_call(env, false, [&] { return NewNode_bn(checked_name, count, handle); });
    // A node made only in part is taken out again, so a failure leaves the net as it was.
    try {
        if (!names.empty()) engine_call(env, false, [&] { SetNodeStateNames_bn(node, names.c_str()); });
        if (kind_code != NATURE_NODE)
            engine_call(env, false, [&] { SetNodeKind_bn(node, static_cast<nodekind_bn>(kind_code)); });
        for (node_bn* p : parent_handles) engine_call(env, false, [&] { return AddLink_bn(p, node); });
    } catch (...) {
        DeleteNode_bn(node);
        clear_reports(env);
        throw;
    }
    return Node(net.ref, node);
}

py::dict most_probable_config(const Net& net, const py::object& nodes) {
    std::vector<node_bn*> handles = handles_of(net, nodes);
    auto list = list_of(net, handles);
    std::vector<state_bn> config(handles.size() + 1);
    engine_call(net.ref->env(), true, [&] { MostProbableConfig_bn(list->list, config.data(), 0); });
    py::dict result;
    for (size_t i = 0; i < handles.size(); ++i)
        result[py::str(text_or_empty(GetNodeName_bn(handles[i])))] = state_label(handles[i], config[i]);
    return result;
}

double joint_probability(const Net& net, const py::dict& states) {
    std::vector<node_bn*> handles;
    std::vector<state_bn> indices;
    for (auto [key, state] : states) {
        handles.push_back(node_of(net, key));
        indices.push_back(state_of(Node(net.ref, handles.back()), state));
    }
    auto list = list_of(net, handles);
    return engine_call(net.ref->env(), true, [&] { return JointProbability_bn(list->list, indices.data()); });
}

bool has_beliefs(node_bn* node) {
    int kind = GetNodeKind_bn(node);
    return (kind == NATURE_NODE || kind == DECISION_NODE) && GetNodeNumberStates_bn(node) > 0;
}

// The nodes' beliefs by name, read in one pass; None means every node that has beliefs.
py::dict beliefs_by_name(const Net& net, const py::object& nodes) {
    py::dict result;
    for (node_bn* n : handles_of(net, nodes)) {
        if (nodes.is_none() && !has_beliefs(n)) continue;
        Node node(net.ref, n);
        result[py::str(node.name())] = beliefs_of(node);
    }
    return result;
}

template <class Getter>
auto net_text(Getter get) {
    return [get](const Net& net) { return text_or_empty(get(net.ref->checked())); };
}

template <class Setter>
auto set_net_text(Setter set) {
    return [set](const Net& net, const std::string& text) {
        net_bn* handle = net.ref->checked();
        const char* checked_text = c_text(text);
        engine_call(net.ref->env(), false, [&] { set(handle, checked_text); });
    };
}

}  // namespace

void bind_net(py::module_& m) {
    py::class_<Net> net(m, "Net", "A belief or decision net: nodes joined by links, with their tables and findings.");
    net.def(py::init([](const std::string& name) {
                auto environ = shared_environ();
                return adopt(environ, NewNet_bn(c_text(name), environ->get()));
            }),
            py::arg("name"), "Makes an empty net; the name must be a legal name (letters, digits, '_').")
        .def_property("name", net_text(GetNetName_bn), set_net_text(SetNetName_bn), "The net's name.")
        .def_property("title", net_text(GetNetTitle_bn), set_net_text(SetNetTitle_bn), "The net's title ('' when none).")
        .def_property("comment", net_text(GetNetComment_bn), set_net_text(SetNetComment_bn),
                      "The net's comment ('' when none).")
        .def_property_readonly("file_name", net_text(GetNetFileName_bn), "The file the net was read from ('' when none).")
        .def_property_readonly("nodes", &net_nodes, "The nodes, in net order.")
        .def("__len__", [](const Net& net) { return net_nodes(net).size(); })
        .def("__iter__", [](const Net& net) { return py::iter(py::cast(net_nodes(net))); })
        .def("__contains__", [](const Net& net, const std::string& name) {
            node_bn* node = GetNodeNamed_bn(c_text(name), net.ref->checked());
            raise_reports(net.ref->env());
            return node != nullptr;
        })
        .def("__getitem__", &node_named, py::arg("name"), "The node of that name (KeyError when there is none).")
        .def("add_node", &add_node, py::arg("name"), py::arg("states"), py::arg("parents") = py::tuple(),
             py::arg("kind") = "nature",
             "Adds a node.  states: a list of state names, or a number of unnamed states (0 makes a\n"
             "continuous node).  parents: nodes or names, in order.  kind: 'nature', 'decision',\n"
             "'utility', 'constant'.  On failure the net is left as it was.")
        .def("remove_node", [](const Net& net, py::handle node) {
            node_bn* handle = node_of(net, node);
            engine_call(net.ref->env(), false, [&] { DeleteNode_bn(handle); });
        }, py::arg("node"), "Deletes a node (given as a Node or a name); its children lose that parent.")
        .def("add_link", [](const Net& net, py::handle parent, py::handle child) {
            node_bn* p = node_of(net, parent);
            node_bn* c = node_of(net, child);
            return engine_call(net.ref->env(), false, [&] { return AddLink_bn(p, c); });
        }, py::arg("parent"), py::arg("child"), "Adds a link; returns its index among the child's parents.")
        .def("compile", [](const Net& net, bool optimize) {
            net_bn* handle = net.ref->checked();
            engine_call(net.ref->env(), true, [&] { CompileNetWith_bn(handle, optimize ? "optimize" : ""); });
        }, py::arg("optimize") = false,
           "Compiles the net into a junction tree (optimize: search for an order of smaller tables).")
        .def("uncompile", [](const Net& net) {
            net_bn* handle = net.ref->checked();
            engine_call(net.ref->env(), false, [&] { UncompileNet_bn(handle); });
        }, "Discards the junction tree.")
        .def_property_readonly("compiled_size", [](const Net& net) {
            net_bn* handle = net.ref->checked();
            return engine_call(net.ref->env(), false, [&] { return SizeCompiledNet_bn(handle, 0); });
        }, "The total table size of the junction tree, sepsets included.")
        .def_property("auto_update", [](const Net& net) {
            net_bn* handle = net.ref->checked();
            return engine_call(net.ref->env(), false, [&] { return GetNetAutoUpdate_bn(handle); }) != 0;
        }, [](const Net& net, bool on) {
            net_bn* handle = net.ref->checked();
            engine_call(net.ref->env(), false, [&] { return SetNetAutoUpdate_bn(handle, on); });
        }, "Whether beliefs are brought up to date at once after each change of findings.")
        .def("retract", [](const Net& net) {
            net_bn* handle = net.ref->checked();
            engine_call(net.ref->env(), true, [&] { RetractNetFindings_bn(handle); });
        }, "Retracts every finding of the net.")
        .def("findings_probability", [](const Net& net) {
            net_bn* handle = net.ref->checked();
            return engine_call(net.ref->env(), true, [&] { return FindingsProbability_bn(handle); });
        }, "The probability of the current findings (the net must be compiled).")
        .def("expected_utility", [](const Net& net) {
            net_bn* handle = net.ref->checked();
            return engine_call(net.ref->env(), true, [&] { return GetNetExpectedUtility_bn(handle); });
        }, "The net's expected utility.")
        .def("mpe", &most_probable_config, py::arg("nodes") = py::none(),
             "The most probable configuration given the findings, as {node name: state}.")
        .def("joint_probability", &joint_probability, py::arg("states"),
             "The probability, given the findings, that the nodes are in the states ({node: state}).")
        .def("beliefs_dict", &beliefs_by_name, py::arg("nodes") = py::none(),
             "The beliefs of the nodes as {node name: numpy array}; None means every nature and\n"
             "decision node with states.")
        .def("write", &write_net, py::arg("path"), "Writes the net to a file in the format its extension names.")
        .def("dumps", &write_text, py::arg("format") = "dne",
             "The net as text in a format named by its extension ('dne', 'bif', 'xmlbif', 'net', 'uai').")
        .def("copy", [](const Net& net, const std::string& name) {
            net_bn* handle = net.ref->checked();
            return adopt(net.ref->environ, CopyNet_bn(handle, c_text(name), net.ref->env(), ""));
        }, py::arg("name"), "A copy of the net under a new name.")
        .def("delete", [](const Net& net) { net.ref->remove(); },
             "Deletes the net now; its Node objects then raise ravelo.Error when used.")
        .def_property_readonly("is_deleted", [](const Net& net) { return net.ref->net == nullptr; })
        .def("__enter__", [](const Net& net) { return net; })
        .def("__exit__", [](const Net& net, py::args) { net.ref->remove(); return false; })
        .def("__eq__", [](const Net& a, const py::object& b) {
            return py::isinstance<Net>(b) && a.ref == b.cast<const Net&>().ref;
        })
        .def("__hash__", [](const Net& net) { return std::hash<const void*>()(net.ref.get()); })
        .def("__repr__", [](const Net& net) {
            if (!net.ref->net) return "<ravelo.Net '" + net.ref->name_at_deletion + "' (deleted)>";
            size_t count = net_nodes(net).size();
            return "<ravelo.Net '" + text_or_empty(GetNetName_bn(net.ref->net)) + "' with " + std::to_string(count) +
                   (count == 1 ? " node>" : " nodes>");
        });

    auto node = py::reinterpret_borrow<py::class_<Node>>(m.attr("Node"));
    bind_cases(net, node);
    m.def("read", &read_net, py::arg("path"),
          "Reads a net from a file; the extension names the format (.dne, .bif, .xmlbif/.xml/.bifxml,\n"
          ".net, .uai, .xdsl).");
    m.def("loads", &read_text, py::arg("text"), py::arg("format") = "dne",
          "Reads a net from text in the format named by its extension ('dne', 'bif', ...).");
}

}  // namespace ravelo_py
