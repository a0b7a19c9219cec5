#include "net/listeners.h"

#include <algorithm>

#include "base/failure.h"
#include "base/listener.h"
#include "ravelo/ravelo.h"

namespace ravelo {
namespace {

std::vector<Listener>& global_net_listeners() {
    static std::vector<Listener> listeners;
    return listeners;
}

std::vector<Listener>& global_node_listeners() {
    static std::vector<Listener> listeners;
    return listeners;
}

// Depth of global listener calls under way in this process.
int& globals_running() {
    static int depth = 0;
    return depth;
}

void add_to(std::vector<Listener>& list, void* callback, void* object, int filter) {
    auto it = std::find_if(list.begin(), list.end(), [&](const Listener& l) {
        return l.callback == callback && l.object == object;
    });
    if (it != list.end()) {
        if (filter == 0)
            list.erase(it);
        else
            it->filter = filter;
        return;
    }
    if (filter != 0) list.push_back(Listener{callback, object, filter});
}

void check_globals_quiet() {
    if (globals_running() > 0)
        fail(5260, "Adding or removing global listeners while executing them");
}

template <class Call>
void run_each(const std::vector<Listener>& list, int event, Call&& call, bool global) {
    // A callback may add listeners to its own object, so work on a copy.
    std::vector<Listener> copy = list;
    if (global) ++globals_running();
    for (const Listener& l : copy)
        if (l.filter & event) call(l);
    if (global) --globals_running();
}

}  // namespace

void add_net_listener(Net* net, void* callback, void* object, int filter) {
    if (!net) check_globals_quiet();
    add_to(net ? net->listeners : global_net_listeners(), callback, object, filter);
}

void add_node_listener(Node* node, void* callback, void* object, int filter) {
    if (!node) check_globals_quiet();
    add_to(node ? node->listeners : global_node_listeners(), callback, object, filter);
}

void notify_net(Net& net, int event, void* info) {
    auto call = [&](const Listener& l) {
        auto fn = reinterpret_cast<NetListener_bn>(l.callback);
        run_listener("Bnet", net.name, event, [&] {
            return fn(reinterpret_cast<const net_bn*>(&net), static_cast<eventtype_ns>(event),
                      l.object, info);
        });
    };
    run_each(net.listeners, event, call, false);
    run_each(global_net_listeners(), event, call, true);
}

void notify_node(Node& node, int event, void* info) {
    auto call = [&](const Listener& l) {
        auto fn = reinterpret_cast<NodeListener_bn>(l.callback);
        run_listener("Bnode", node.name, event, [&] {
            return fn(reinterpret_cast<const node_bn*>(&node), static_cast<eventtype_ns>(event),
                      l.object, info);
        });
    };
    run_each(node.listeners, event, call, false);
    run_each(global_node_listeners(), event, call, true);
}

void clear_global_listeners() {
    global_net_listeners().clear();
    global_node_listeners().clear();
}

}  // namespace ravelo
