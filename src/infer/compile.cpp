#include "infer/compile.h"

#include "base/environment.h"
#include "base/failure.h"
#include "base/progress.h"
#include "base/report.h"
#include "infer/optimize_order.h"
#include "infer/order_check.h"
#include "infer/order_report.h"
#include "infer/triangulate.h"
#include "infer/update.h"
#include "net/ops.h"

namespace ravelo {
namespace {

constexpr int kHaltedNumber = 2074;

[[noreturn]] void fail_halted() { fail(kHaltedNumber, "compiling halted"); }

void check_for_compiling(const Net& net) {
    // A net whose links reach across time stands for a whole sequence of nets.
    const Node* delayed = nullptr;
    if (has_delayed_links(net, &delayed))
        fail(2072, "can't compile >-net '%s', because it has time-delay links (>-node '%s'); expand it in time "
                   "first",
             net.name.c_str(), delayed->name.c_str());
    for (const Node* n : net.nodes.nodes)
        if (takes_part_in_cliques(*n) && n->num_states() == 0)
            fail(2071, "can't compile >-net '%s', because %s", net.name.c_str(),
                 format(">-node '%s' is continuous without any discretization intervals",
                        n->name.c_str()).c_str());
}

bool missing_entries(const std::vector<float>& table) {
    for (float x : table)
        if (x == kMissingProb || x != x) return true;
    return false;
}

bool incomplete_utilities(const Node& n) {
    if (n.func_reals.empty()) return true;
    for (double x : n.func_reals)
        if (is_undef(x)) return true;
    return false;
}

void warn_incomplete_tables(const Net& net) {
    for (const Node* n : net.nodes.nodes) {
        if (n->kind == NodeKind::Nature && n->num_states() >= 2) {
            bool has_function = !n->func_states.empty();
            if (n->cpt.empty() && !has_function) {
                warning(2760, "some >-node(s) (e.g. %s) don't have conditional probability tables "
                              "(CPTs) (they will be taken as having uniform probabilities)",
                        n->name.c_str());
                return;
            }
            if (!has_function && missing_entries(n->cpt)) {
                warning(2070, "some >-node(s) (e.g. %s) don't have complete conditional "
                              "probability tables (CPTs) (missing entries will be taken as "
                              "uniform probabilities)",
                        n->name.c_str());
                return;
            }
        } else if (n->kind == NodeKind::Utility && incomplete_utilities(*n)) {
            warning(2360, "some >-utility_node(s) (e.g. %s) doesnt have a complete utility table "
                          "(missing entries will be considered zero)",
                    n->name.c_str());
            return;
        }
    }
}

bool has_decisions(const Net& net) {
    for (const Node* n : net.nodes.nodes)
        if (n->kind == NodeKind::Decision || n->kind == NodeKind::Utility) return true;
    return false;
}

void report_compiled(const Net& net, const JunctionTree& jt) {
    make_report(net.env, 0, kNotice, compiled_size_text(jt));
    make_report(net.env, 0, kNotice, elim_order_report(net, jt));
}

}  // namespace

std::vector<int> local_order(const Graph& g, const NodeList& order) {
    std::vector<int> out;
    for (const Node* n : order.nodes) {
        int v = n->index >= 0 && n->index < static_cast<int>(g.local_of.size()) ? g.local_of[n->index] : -1;
        if (v >= 0) out.push_back(v);
    }
    return out;
}

std::unique_ptr<JunctionTree> tree_for_order(Graph g, Net& net, const std::vector<int>& order) {
    auto jt = std::make_unique<JunctionTree>();
    jt->graph = std::move(g);
    Triangulation t = triangulate(jt->graph, order);
    std::vector<int> position(order.size());
    for (size_t i = 0; i < order.size(); ++i) position[static_cast<size_t>(order[i])] = static_cast<int>(i);
    build_junction_tree(*jt, net, std::move(t.cliques), position);
    return jt;
}

void check_table_memory(Net& net, const JunctionTree& jt, bool at_compile) {
    const double full = 4.0 * total_size(jt);
    // Tables are built at their full size, so an update needs room for that.
    const double bytes = at_compile ? 4.0 * size_with_findings(jt) : full;
    if (bytes > kMaxTableBytes) {
        if (!at_compile) fail_out_of_memory(2759, "to compile/update this >-net", bytes);
        warning(2758, "you will not be able to do belief updating with this >-net unless you "
                      "enter some findings first, since it would require %.4g GB",
                bytes / 1e9);
        return;
    }
    if (memory_limit_set() && bytes > memory_limit())
        fail_out_of_memory(3632, format("to compile/update >-net '%s' (see >-LimitMemoryUsage_ns)",
                                        net.name.c_str()), bytes);
    if (at_compile && full > bytes && full > kMaxTableBytes)
        warning(2493, "if all current findings are removed, updating will result in tables "
                      "requiring %.4g GB",
                full / 1e9);
}

void uncompile_net(Net& net) { discard_compiled(net); }

void compile_net(Net& net, const CompileOptions& options) {
    if (options.optimize) discard_compiled(net);
    if (tree_of(net)) {
        if (options.report) report_compiled(net, *net.jtree);
        if (!options.update) return;
        try {
            check_table_memory(net, *net.jtree, true);
        } catch (const Failure&) {
            discard_compiled(net);
            throw;
        }
        warn_incomplete_tables(net);
        return;
    }
    if (options.halt && options.halt(0.0)) fail_halted();
    check_for_compiling(net);
    if (options.optimize && has_decisions(net))
        fail(2007, "can't use optimizing compiler for >-net '%s' because it has a "
                   ">-decision_node(s)", net.name.c_str());
    check_stored_elim_order(net);
    Graph g = build_graph(net);
    std::vector<int> order;
    if (!net.elim_order || options.optimize) {
        std::vector<int> all(static_cast<size_t>(g.size()));
        for (int v = 0; v < g.size(); ++v) all[static_cast<size_t>(v)] = v;
        // Without a halt check of the caller's, the environment's progress listener serves.
        Progress search(net.env, "Finding Elimination Order");
        HaltCheck halt = options.halt;
        if (!halt) halt = [&search](double fraction) { return search.update(fraction); };
        order = options.optimize ? optimize_elim_order(g, net, all).order
                                 : find_elim_order(g, all, halt).order;
    } else {
        order = local_order(g, *net.elim_order);
    }
    if (options.halt && options.halt(1.0)) fail_halted();
    std::vector<Node*> order_nodes;
    for (int v : order) order_nodes.push_back(g.nodes[static_cast<size_t>(v)]);
    auto jt = tree_for_order(std::move(g), net, order);
    // A failed check leaves the net uncompiled with its order as it stood.
    if (options.update) check_table_memory(net, *jt, true);
    if (!net.elim_order || net.elim_order->nodes != order_nodes) set_elim_order(net, &order_nodes);
    if (options.report) report_compiled(net, *jt);
    net.jtree = std::move(jt);
    net.junction_step = kCompiled;
    net.findings_probability = 1.0;
    if (options.update) warn_incomplete_tables(net);
}

}  // namespace ravelo
