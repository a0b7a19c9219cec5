// Shared pieces of the Python binding: the environment every wrapper keeps alive, the reference
// a net's wrappers share, and the translation of the engine's reports into Python exceptions.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <string>
#include <vector>

#include "ravelo/ravelo.h"

namespace py = pybind11;

namespace ravelo_py {

// The one engine environment of the module; closed when the module and every net are gone.
class Environ {
public:
    Environ();
    ~Environ();
    Environ(const Environ&) = delete;
    Environ& operator=(const Environ&) = delete;
    environ_ns* get() const { return env_; }

private:
    environ_ns* env_;
};

std::shared_ptr<Environ> shared_environ();

// Turns the calling thread's pending reports into Python: warnings go to the warnings module,
// and the first report of severity error or worse is raised as ravelo.Error.  Every pending
// report is cleared either way, so none leaks into the next call.
void raise_reports(environ_ns* env);

// Drops the calling thread's pending reports (after a failure already being raised).
void clear_reports(environ_ns* env);

// Raises ravelo.Error for a fault the binding itself detects (number 0).
[[noreturn]] void raise_error(const std::string& message);

// A net and its environment, shared by the net's wrapper and its nodes' wrappers.  The net is
// deleted when the last wrapper goes or when Python deletes it explicitly; after that every
// wrapper reports the deletion instead of touching the engine.
struct NetRef {
    std::shared_ptr<Environ> environ;
    net_bn* net = nullptr;
    randgen_ns* rand = nullptr;  // the net's own generator for random cases, if it was given a seed
    std::string name_at_deletion;

    NetRef(std::shared_ptr<Environ> e, net_bn* n) : environ(std::move(e)), net(n) {}
    ~NetRef();
    NetRef(const NetRef&) = delete;
    NetRef& operator=(const NetRef&) = delete;

    environ_ns* env() const { return environ->get(); }
    net_bn* checked() const;
    void remove();
    // Gives the net its own random generator made from seed, or the shared one again for None.
    void use_random_seed(const py::object& seed);
};

class Node {
public:
    Node(std::shared_ptr<NetRef> net, node_bn* node) : net_(std::move(net)), node_(node) {}
    node_bn* handle() const {
        net_->checked();
        return node_;
    }
    environ_ns* env() const { return net_->env(); }
    const std::shared_ptr<NetRef>& net_ref() const { return net_; }
    std::string name() const;
    int num_states() const;
    bool operator==(const Node& other) const { return node_ == other.node_; }
    size_t hash() const { return std::hash<const void*>()(node_); }

private:
    std::shared_ptr<NetRef> net_;
    node_bn* node_;
};

// Calls an engine function and raises its reports; `release` lets other Python threads run
// while a long call (compiling, updating, reading) holds the engine.
template <class F>
auto engine_call(environ_ns* env, bool release, F&& f) {
    using R = decltype(f());
    if constexpr (std::is_void_v<R>) {
        if (release) {
            py::gil_scoped_release unlocked;
            f();
        } else {
            f();
        }
        raise_reports(env);
    } else {
        R result;
        if (release) {
            py::gil_scoped_release unlocked;
            result = f();
        } else {
            result = f();
        }
        raise_reports(env);
        return result;
    }
}

// The Python Net object: a reference shared with the net's nodes.
struct Net {
    std::shared_ptr<NetRef> ref;
};

std::string text_or_empty(const char* text);
// Text handed to the engine as a C string; ValueError if a NUL would silently cut it short.
const char* c_text(const std::string& text);
// A path given as str or os.PathLike.
std::string path_text(py::handle path);
std::vector<Node> nodes_of(const std::shared_ptr<NetRef>& net, const nodelist_bn* list);
// A state given as an index, a name or title, or "#N"; ValueError when the node has none such.
state_bn state_of(const Node& node, py::handle state);
std::string state_label(node_bn* node, state_bn state);
// The node's beliefs as a new float64 array, updating the net first when needed.
py::array_t<double> beliefs_of(const Node& node);

void bind_net(py::module_& m);
void bind_node(py::module_& m);
void bind_tables(py::class_<Node>& node);
void bind_findings(py::class_<Node>& node);
void bind_cases(py::class_<Net>& net, py::class_<Node>& node);

}  // namespace ravelo_py
