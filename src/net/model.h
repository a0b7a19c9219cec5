// The net model: nets, nodes, their states, links and tables, and node lists.
// Plain data with the few invariants every layer relies on; the checked
// operations that change them live beside it in this folder.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base/environment.h"
#include "base/tags.h"
#include "base/text.h"

namespace ravelo {

class Net;
class Node;
struct JunctionTree;     // the compiled form of a net (inference layer)
struct ParsedEquation;   // a node's equation, parsed (equation layer)
class RandomGenerator;

constexpr int kUndefState = -3;
constexpr int kImpossState = -4;
constexpr int kEveryState = -5;
constexpr int kLikelihoodFinding = -6;
constexpr int kNegativeFinding = -7;

// Special CPT entries: an impossible parent condition, and a missing entry.
constexpr float kImpossibleProb = -1.0f;
constexpr float kMissingProb = -2.0f;

constexpr int kMaxNameLength = 30;

enum class NodeKind : int {
    Unknown = 0, Nature = 1, Constant = 2, Decision = 3, Utility = 4, Disconnected = 5,
    Adversary = 6
};
enum class NodeType : int { Unknown = 0, Continuous = 1, Discrete = 2 };
enum class Measure : int { Unknown = 0, Nominal, Proximal, Ordinal, Interval, Ratio };
enum class Chance : int { Unknown = 0, Determin, Chance, Invertable };

// An ordered list of nodes of one net, duplicates allowed.  Lists that belong
// to a net or node (parents, the net's nodes) are constant to callers.
struct NodeList : Tagged {
    explicit NodeList(Net* owner_net = nullptr, bool is_constant = false)
        : Tagged(kNodeListType), net(owner_net), constant(is_constant) {}
    Net* net;
    bool constant;
    std::vector<Node*> nodes;
};

struct StateInfo {
    std::string name;  // empty when the state is unnamed
    std::string title;
    std::string comment;
};

// Named values kept for the caller (net and node user fields).
struct UserFields {
    std::vector<std::pair<std::string, std::string>> fields;
    const std::string* find(const std::string& name) const;
    void set(const std::string& name, std::string value);
    bool remove(const std::string& name);
};

struct Listener {
    void* callback;  // NetListener_bn or NodeListener_bn
    void* object;
    int filter;
};

// A node's findings: a positive finding, or a likelihood vector (negative
// findings are stored as one), and a real value when one was entered.
struct FindingRecord {
    int state = kUndefState;
    std::vector<float> likelihood;  // empty: none
    double value = 0.0;
    bool has_value = false;
    mutable std::vector<float> view;  // the likelihood last handed to a caller
    bool empty() const { return state == kUndefState && likelihood.empty() && !has_value; }
};

class Node : public Tagged {
public:
    Node(Net* owner, std::string node_name);

    Net* net;
    std::string name, title, comment;
    NodeKind kind = NodeKind::Nature;
    NodeType type = NodeType::Discrete;
    Measure measure = Measure::Unknown;
    Chance chance = Chance::Chance;

    // States.  A continuous node has states only through its levels (the
    // thresholds bounding its intervals); a discrete node may attach one real
    // value per state as its levels.
    std::vector<StateInfo> states;
    std::vector<double> levels;
    int num_states() const { return static_cast<int>(states.size()); }
    bool is_discrete() const { return type == NodeType::Discrete; }
    bool is_discretized() const { return type == NodeType::Continuous && !levels.empty(); }
    bool has_states() const { return !states.empty(); }

    // Links: parents in order with their input names; children kept in step.
    NodeList parents;
    std::vector<std::string> input_names;
    NodeList children;
    // The time delay of each parent link, in parent order, as written (a
    // number or an equation); "" or "0" is no delay.  A cycle of links is
    // allowed only through a delayed link.  May be shorter than the parents.
    std::vector<std::string> delays;
    // How long the node's value persists along each dimension of the net;
    // empty when not given.
    std::vector<double> persistence;

    std::string equation;
    std::shared_ptr<ParsedEquation> parsed_equation;  // cache, rebuilt when stale
    bool equation_dirty = false;  // tables may no longer match the equation

    // Tables, laid out row-major over parents (first slowest) then the node's
    // own states (fastest).  Empty vectors mean the node has no such table.
    std::vector<float> cpt;
    std::vector<int> func_states;      // discrete function table
    std::vector<double> func_reals;    // continuous function table
    std::vector<double> experience;
    // The prior count of every CPT cell (UNDEF stands for 1): the experience
    // a row starts from when learning first meets it, and what fading returns to.
    double prior_count = undef_value();
    // The table in count form (one double per CPT cell), kept between
    // learning calls so that learning and unlearning a case return the same
    // table; a row counts only while the CPT and experience still match it.
    std::vector<double> counts;

    FindingRecord finding;

    // Inference state owned by the compiled net.
    std::vector<float> beliefs;
    bool beliefs_current = false;
    int home_clique = -1;

    UserFields user_fields;
    // Net-file statements this version reads but does not act on, as written (keyword, value
    // text), so that writing the net back loses nothing.
    std::vector<std::pair<std::string, std::string>> kept_statements;
    std::map<int, void*> user_data;
    std::vector<Listener> listeners;
    double vis_x = 0, vis_y = 0;
    std::vector<double> position_rest;  // coordinates past the second, in a net of more dimensions
    bool has_position = false;
    std::string vis_style;
    double vis_pair[2] = {0, 0};          // handed out by the position query
    std::vector<float> derived_row;       // a CPT row derived from a function table

    std::uint64_t mark = 0;  // stamped by graph passes
    int index = -1;          // position in the net's node order
    std::string inherits;    // the definition its file declaration inherited from, or ""

    // Frees contents when the node is deleted; the tombstone stays.
    void release();
};

// A node declaration kept only for others to inherit from ("define" or
// "param" in net files).  It is not a node: no pass over the net's nodes
// meets it, and its statements stay as the file gave them.
struct NodeDefinition {
    std::string declarer;  // "define" or "param"
    std::string name;
    std::string base;      // the definition it inherits from, or ""
    std::vector<std::pair<std::string, std::string>> statements;  // keyword, value text
    std::string objects;   // nested objects ("visual", "user"), as written
};

struct NodeSet {
    std::string name;
    std::vector<Node*> members;
    std::string color;
};

class Net : public Tagged {
public:
    explicit Net(Environment* owner);

    Environment* env;
    std::string name, title, comment, file_name;
    NodeList nodes;  // the net's nodes in order; constant to callers
    std::unordered_map<std::string, Node*> by_name;
    NodeList* elim_order = nullptr;  // user-given elimination order, or none
    int auto_update = 1;
    std::vector<NodeSet> node_sets;
    UserFields user_fields;
    std::vector<std::pair<std::string, std::string>> kept_statements;  // as a node's
    std::map<int, void*> user_data;
    std::vector<Listener> listeners;
    std::string visual;  // editor display information, kept as text
    int dimensions = 2;  // of node positions and persistence
    NodeList copied_nodes;  // the nodes made by the last copy into this net
    std::vector<NodeDefinition> definitions;  // in declaration order, bases first

    // Compiled form, and how far belief updating has brought it.
    std::shared_ptr<JunctionTree> jtree;
    int junction_step = 0;
    double findings_probability = 1.0;

    std::recursive_mutex lock;

    // The generator drawing the net's random cases (owned by the caller, who
    // may delete it: its tombstone is checked before use), or NULL for the
    // environment's.
    RandomGenerator* random_gen = nullptr;

    Node* find(const std::string& node_name) const;
    const NodeDefinition* find_definition(const std::string& definition_name) const;
    void release();
};

// Number of rows of a node's tables (product of its parents' state counts),
// as a double so that huge tables can be refused before they are made.
double table_rows(const Node& node);
// The delay text of parent link k of node ("" when it has none), and
// whether that link carries a time delay.
const std::string& link_delay(const Node& node, std::size_t k);
bool is_delayed_link(const Node& node, std::size_t k);
// Whether a delay text stands for a time delay ("" and zero do not).
bool is_delay(const std::string& delay_text);
// Whether any link of the net carries a time delay; `where` receives the
// child of the first such link.
bool has_delayed_links(const Net& net, const Node** where = nullptr);

// Row index of a parent condition (one state per parent, in parent order).
std::size_t row_of(const Node& node, const int* parent_states);

}  // namespace ravelo
