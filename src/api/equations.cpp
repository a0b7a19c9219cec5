// Equations family: a node's equation text, and building its table from it.
#include "api/handles.h"
#include "base/random.h"
#include "eqn/to_table.h"

using namespace ravelo;

void SetNodeEquation_bn(node_bn* node, const char* eqn) {
    ApiFrame frame("SetNodeEquation_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        std::string text = eqn ? eqn : "";
        if (text == n.equation) return;
        n.equation = std::move(text);
        n.parsed_equation.reset();
        n.equation_dirty = !n.equation.empty();
    });
}

const char* GetNodeEquation_bn(const node_bn* node) {
    ApiFrame frame("GetNodeEquation_bn");
    return frame.run<const char*>(nullptr, [&] { return checked_node(frame, node).equation.c_str(); });
}

void EquationToTable_bn(node_bn* node, int num_samples, bool_ns samp_unc, bool_ns add_exist) {
    ApiFrame frame("EquationToTable_bn");
    frame.run([&] {
        Node& n = checked_node(frame, node);
        if (num_samples < 1) fail(2590, "argument 'num_samples' must be one or more (it is %d)", num_samples);
        if (samp_unc != 0 && samp_unc != 1) fail(2591, "argument 'samp_unc' must be 0 or 1 (it is %d)", static_cast<int>(samp_unc));
        if (add_exist != 0 && add_exist != 1) fail(2592, "argument 'add_exist' must be 0 or 1 (it is %d)", static_cast<int>(add_exist));
        equation_to_table(n, num_samples, samp_unc != 0, add_exist != 0, &default_generator(*n.net->env));
    });
}
