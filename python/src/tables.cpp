// Node tables as numpy arrays: the parents' axes first, in link order, and for a probability
// table the node's own states last.  Every entry written goes through the engine's checks; a
// table that fails part way is put back as it was.
#include "binding.h"

namespace ravelo_py {

namespace {

// The number of states of each parent, which fix the table's leading axes.
std::vector<py::ssize_t> parent_axes(const Node& node) {
    std::vector<py::ssize_t> axes;
    for (const Node& p : nodes_of(node.net_ref(), GetNodeParents_bn(node.handle()))) {
        int count = p.num_states();
        if (count <= 0)
            throw py::value_error("node '" + node.name() + "' has the continuous parent '" + p.name() +
                                  "', so its table has no array form");
        axes.push_back(count);
    }
    return axes;
}

// Calls visit(parent_states, row_index) for every parent condition in C order (last parent fastest).
template <class Visit>
void each_condition(const std::vector<py::ssize_t>& axes, Visit&& visit) {
    std::vector<state_bn> states(axes.size() + 1, 0);
    size_t rows = 1;
    for (py::ssize_t a : axes) rows *= static_cast<size_t>(a);
    for (size_t row = 0; row < rows; ++row) {
        visit(states.data(), row);
        for (size_t k = axes.size(); k-- > 0;) {
            if (++states[k] < axes[k]) break;
            states[k] = 0;
        }
    }
}

std::string shape_text(const std::vector<py::ssize_t>& shape) {
    std::string text = "(";
    for (size_t i = 0; i < shape.size(); ++i) text += (i ? ", " : "") + std::to_string(shape[i]);
    return text + (shape.size() == 1 ? ",)" : ")");
}

template <class T>
py::array_t<T, py::array::c_style | py::array::forcecast> shaped(const Node& node, const py::object& values,
                                                               const std::vector<py::ssize_t>& shape,
                                                               const char* what) {
    auto array = py::array_t<T, py::array::c_style | py::array::forcecast>::ensure(values);
    if (!array) throw py::value_error(std::string("the ") + what + " of node '" + node.name() + "' must be numeric");
    std::vector<py::ssize_t> given(array.shape(), array.shape() + array.ndim());
    if (given != shape)
        throw py::value_error(std::string("the ") + what + " of node '" + node.name() + "' must have shape " +
                              shape_text(shape) + ", not " + shape_text(given));
    return array;
}

bool has_table(const Node& node) {
    bool_ns has = HasNodeTable_bn(node.handle(), nullptr);
    raise_reports(node.env());
    return has != 0;
}

// Writes every row through the engine; when one is refused, the rows already written get their
// old entries back (or the tables go, if the node had none) and the refusal is raised.
template <class Write, class Restore>
void write_rows_or_restore(const Node& node, const std::vector<py::ssize_t>& axes, bool had_table, Write&& write,
                           Restore&& restore) {
    size_t written = 0;
    try {
        each_condition(axes, [&](const state_bn* states, size_t row) {
            engine_call(node.env(), false, [&] { write(states, row); });
            ++written;
        });
    } catch (...) {
        if (!had_table) DeleteNodeTables_bn(node.handle());
        else each_condition(axes, [&](const state_bn* states, size_t row) { if (row < written) restore(states, row); });
        clear_reports(node.env());
        throw;
    }
}

py::object cpt(const Node& node) {
    node_bn* handle = node.handle();
    if (!has_table(node)) return py::none();
    std::vector<py::ssize_t> shape = parent_axes(node);
    py::ssize_t count = node.num_states();
    if (count <= 0) throw py::value_error("node '" + node.name() + "' is continuous; its table is node.func");
    shape.push_back(count);
    py::array_t<double> table(shape);
    double* out = table.mutable_data();
    each_condition({shape.begin(), shape.end() - 1}, [&](const state_bn* states, size_t row) {
        const prob_bn* probs = GetNodeProbs_bn(handle, states);
        raise_reports(node.env());
        std::copy(probs, probs + count, out + row * count);
    });
    return table;
}

void set_cpt(const Node& node, const py::object& values) {
    node_bn* handle = node.handle();
    environ_ns* env = node.env();
    if (values.is_none()) {
        engine_call(env, false, [&] { DeleteNodeTables_bn(handle); });
        return;
    }
    std::vector<py::ssize_t> shape = parent_axes(node);
    py::ssize_t count = node.num_states();
    shape.push_back(count);
    auto table = shaped<float>(node, values, shape, "cpt");
    std::vector<py::ssize_t> axes(shape.begin(), shape.end() - 1);
    bool had_table = has_table(node);
    py::object before = cpt(node);
    write_rows_or_restore(node, axes, had_table,
        [&](const state_bn* states, size_t row) { SetNodeProbs_bn(handle, states, table.data() + row * count); },
        [&](const state_bn* states, size_t row) {
            auto old = before.cast<py::array_t<float, py::array::c_style | py::array::forcecast>>();
            SetNodeProbs_bn(handle, states, old.data() + row * count);
        });
}

// A function table: state indices for a discrete node, real values for a continuous one.
py::object func(const Node& node) {
    node_bn* handle = node.handle();
    if (!has_table(node)) return py::none();
    std::vector<py::ssize_t> axes = parent_axes(node);
    if (node.num_states() > 0) {
        py::array_t<int> table(axes);
        each_condition(axes, [&](const state_bn* states, size_t row) {
            table.mutable_data()[row] = GetNodeFuncState_bn(handle, states);
            raise_reports(node.env());
        });
        return table;
    }
    py::array_t<double> table(axes);
    each_condition(axes, [&](const state_bn* states, size_t row) {
        table.mutable_data()[row] = GetNodeFuncReal_bn(handle, states);
        raise_reports(node.env());
    });
    return table;
}

template <class T, class Set>
void write_func(const Node& node, const py::object& values, Set&& set) {
    node_bn* handle = node.handle();
    std::vector<py::ssize_t> axes = parent_axes(node);
    auto table = shaped<T>(node, values, axes, "function table");
    bool had_table = has_table(node);
    py::object before = func(node);
    write_rows_or_restore(node, axes, had_table,
        [&](const state_bn* states, size_t row) { set(handle, states, table.data()[row]); },
        [&](const state_bn* states, size_t row) {
            auto old = before.cast<py::array_t<T, py::array::c_style | py::array::forcecast>>();
            set(handle, states, old.data()[row]);
        });
}

void set_func(const Node& node, const py::object& values) {
    if (values.is_none()) {
        node_bn* handle = node.handle();
        engine_call(node.env(), false, [&] { DeleteNodeTables_bn(handle); });
    } else if (node.num_states() > 0) {
        write_func<int>(node, values, SetNodeFuncState_bn);
    } else {
        write_func<double>(node, values, SetNodeFuncReal_bn);
    }
}

}  // namespace

void bind_tables(py::class_<Node>& node) {
    node.def_property("cpt", &cpt, &set_cpt,
                      "The conditional probability table as a numpy array: one axis per parent, in order,\n"
                      "then the node's own states.  None when the node has no table; assigning None removes it.\n"
                      "Assigned tables are checked by the engine row by row; a refused table leaves the old one.")
        .def_property("func", &func, &set_func,
                      "The function table as a numpy array over the parents' axes: state indices for a\n"
                      "discrete node, values for a continuous or utility node.  None when there is no table.")
        .def_property_readonly("is_deterministic", [](const Node& n) {
            bool_ns yes = IsNodeDeterministic_bn(n.handle());
            raise_reports(n.env());
            return yes != 0;
        }, "Whether the node's relation to its parents is a function.");
}

}  // namespace ravelo_py
