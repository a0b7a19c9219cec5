// The reader of text net files, in passes over the parsed file: declare
// the nodes with their states, resolve links, then read tables and findings.
#pragma once
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "io/dne.h"
#include "io/dne_syntax.h"
#include "io/linking.h"
#include "net/model.h"

namespace ravelo {

class DneReader {
public:
    DneReader(Net& net, const ReadPlace& place, bool visual, const DneReadOptions& options)
        : net_(net), place_(place), visual_(visual), options_(options) {}
    void read(const Object& bnet);

private:
    struct Declared {
        const Object* object;
        Node* node;
        std::vector<const Statement*> statements;  // inherited first, then its own
    };

    [[noreturn]] void failure(int line, const std::string& message) const;
    std::vector<const Statement*> effective(const Object& object, int depth = 0) const;
    void defer_dependents(std::vector<const Statement*>& statements, const Object& object) const;
    void check_first_pass(const Statement& own, const std::vector<const Statement*>& inherited) const;
    void refuse_definitions(const Object& object) const;
    int net_dimensions(const Object& bnet) const;
    void net_statements(const Object& bnet);
    void declare(const Object& object);
    bool is_definition(const Object& object) const;  // dne_definitions.cpp
    void keep_definition(const Object& object);
    Node* make_node(const Object& object, const std::vector<const Statement*>& statements);
    void node_fields(Node& node, const std::vector<const Statement*>& statements);
    void state_statement(Node& node, const Statement& s);  // states, their titles, comments, levels
    void node_objects(Node& node, const Object& object);
    void resolve_links(const Declared& d);
    Node* named_node(const std::string& name, int line) const;
    void node_sets(const Object& bnet);
    void elim_order(const Statement& s);

    // dne_delays.cpp
    std::vector<std::string> link_delays(const Declared& d, size_t parents) const;
    void check_delay(const Node& parent, const Node& child, const std::string& delay,
                     const std::vector<const Statement*>& statements) const;
    void read_persistence(Node& node, const Statement& s) const;
    void read_position(Node& node, const Statement& s) const;

    // dne_tables.cpp
    void tables(const Declared& d);
    void read_probs(Node& node, const Statement& s);
    void read_functable(Node& node, const Statement& s);
    void read_experience(Node& node, const Statement& s);
    void read_prior_count(Node& node, const Statement& s);
    void findings(const Declared& d);

    Net& net_;
    const ReadPlace& place_;
    bool visual_;
    DneReadOptions options_;
    int dimensions_ = 2;
    std::map<std::string, const Object*> definitions_;
    std::vector<Declared> declared_;
    std::optional<RefusedLink> first_refused_;  // the file is refused after every bad link is named
};

// Whether reading statement `later` needs statement `first` read before it.
bool depends_on(const std::string& later, const std::string& first);

// Text of a word or string value, and the words of keyword values.
std::string word_of(const Value& v);
bool is_true_word(const std::string& w);

}  // namespace ravelo
