// Node tables family.
#include "api/node_args.h"
#include "base/text.h"
#include "net/tables.h"

using namespace ravelo;

const prob_bn* GetNodeProbs_bn(const node_bn* node, const state_bn* parent_states) {
    ApiFrame frame("GetNodeProbs_bn");
    return frame.run<const prob_bn*>(nullptr, [&]() -> const prob_bn* {
        Node& n = checked_node(frame, node);
        const float* row = cpt_row(n, checked_parent_states(n, parent_states));
        if (!row)
            fail(3093, "can't get the >-CPTable of >-node '%s', because it doesn't have one",
                 n.name.c_str());
        return row;
    });
}

void SetNodeProbs_bn(node_bn* node, const state_bn* parent_states, const prob_bn* probs) {
    ApiFrame frame("SetNodeProbs_bn");
    frame.run([&] {
        Node& n = checked_connected_node(frame, node);
        const int* ps = checked_parent_states(n, parent_states);
        if (!probs) fail(5224, "NULL passed for the vector of >-probab-s");
        set_cpt_rows(n, ps, probs, checking_level() >= 2);
    });
}

state_bn GetNodeFuncState_bn(const node_bn* node, const state_bn* parent_states) {
    ApiFrame frame("GetNodeFuncState_bn");
    return frame.run<state_bn>(UNDEF_STATE, [&] {
        Node& n = checked_node(frame, node);
        const size_t r = condition_row(n, checked_parent_states(n, parent_states));
        if (n.func_states.empty())
            fail(3094, "can't get an entry of the discrete >-functable of >-node '%s', because it "
                       "doesn't have a >-functable",
                 n.name.c_str());
        return n.func_states[r];
    });
}

void SetNodeFuncState_bn(node_bn* node, const state_bn* parent_states, state_bn state) {
    ApiFrame frame("SetNodeFuncState_bn");
    frame.run([&] {
        Node& n = checked_connected_node(frame, node);
        set_func_state(n, checked_parent_states(n, parent_states), state);
    });
}

double GetNodeFuncReal_bn(const node_bn* node, const state_bn* parent_states) {
    ApiFrame frame("GetNodeFuncReal_bn");
    return frame.run(undef_value(), [&] {
        Node& n = checked_node(frame, node);
        const size_t r = condition_row(n, checked_parent_states(n, parent_states));
        if (n.func_reals.empty())
            fail(3095, "can't get an entry of the continuous >-functable of >-node '%s', because it "
                       "doesn't have a >-functable",
                 n.name.c_str());
        return n.func_reals[r];
    });
}

void SetNodeFuncReal_bn(node_bn* node, const state_bn* parent_states, double value) {
    ApiFrame frame("SetNodeFuncReal_bn");
    frame.run([&] {
        Node& n = checked_connected_node(frame, node);
        set_func_real(n, checked_parent_states(n, parent_states), value);
    });
}

double GetNodeExperience_bn(const node_bn* node, const state_bn* parent_states) {
    ApiFrame frame("GetNodeExperience_bn");
    return frame.run(-1.0, [&] {
        Node& n = checked_node(frame, node);
        const size_t r = condition_row(n, checked_parent_states(n, parent_states));
        return n.experience.empty() ? undef_value() : n.experience[r];
    });
}

void SetNodeExperience_bn(node_bn* node, const state_bn* parent_states, double experience) {
    ApiFrame frame("SetNodeExperience_bn");
    frame.run([&] {
        Node& n = checked_connected_node(frame, node);
        set_experience(n, checked_parent_states(n, parent_states), experience);
    });
}

void DeleteNodeTables_bn(node_bn* node) {
    ApiFrame frame("DeleteNodeTables_bn");
    frame.run([&] { delete_tables(checked_node(frame, node)); });
}

bool_ns HasNodeTable_bn(const node_bn* node, bool_ns* complete) {
    ApiFrame frame("HasNodeTable_bn");
    if (complete) *complete = 0;
    return frame.run<bool_ns>(0, [&] {
        Node& n = checked_node(frame, node);
        if (complete) *complete = table_complete(n);
        return static_cast<bool_ns>(has_table(n));
    });
}

bool_ns IsNodeDeterministic_bn(const node_bn* node) {
    ApiFrame frame("IsNodeDeterministic_bn");
    return frame.run<bool_ns>(0, [&] { return static_cast<bool_ns>(is_deterministic(checked_node(frame, node))); });
}
