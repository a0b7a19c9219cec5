#include "infer/relations.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "base/failure.h"
#include "base/mark.h"

namespace ravelo {
namespace {

constexpr int kRelationTextNumber = 5670;

void read_word(RelationRequest& r, std::string word, size_t start, int& relations, int& list_ops) {
    struct Option { const char* word; ListOp op; };
    static const Option ops[] = {{"append", ListOp::Append}, {"union", ListOp::Union},
                                 {"intersection", ListOp::Intersection}, {"subtract", ListOp::Subtract}};
    for (const Option& o : ops)
        if (word == o.word) {
            r.op = o.op;
            ++list_ops;
            return;
        }
    if (word == "remove_duplicates") { r.remove_duplicates = true; return; }
    if (word == "exclude_self") { r.exclude_self = true; return; }
    if (word == "include_evidence_nodes") { r.include_evidence = true; return; }
    std::string stem = word == "children" ? "child" : word;
    if (stem != "child" && !stem.empty() && stem.back() == 's') stem.pop_back();
    struct Named { const char* word; Relation relation; };
    static const Named names[] = {{"parent", Relation::Parent}, {"child", Relation::Child},
                                  {"ancestor", Relation::Ancestor}, {"descendent", Relation::Descendent},
                                  {"connected", Relation::Connected}, {"d_connected", Relation::DConnected},
                                  {"markov_blanket", Relation::MarkovBlanket}};
    for (const Named& n : names)
        if (stem == n.word) {
            r.relation = n.relation;
            ++relations;
            return;
        }
    fail(kRelationTextNumber + 2, "invalid relation '%s' starting at character position %d", word.c_str(),
         static_cast<int>(start));
}

bool word_char(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

bool has_evidence(const Node* n) { return !n->finding.empty(); }

class Gatherer {
public:
    explicit Gatherer(std::vector<Node*>& out) : out_(out), seen_(fresh_mark()) {}
    bool add(Node* n) {
        if (n->mark == seen_) return false;
        n->mark = seen_;
        out_.push_back(n);
        return true;
    }
    bool has(const Node* n) const { return n->mark == seen_; }

private:
    std::vector<Node*>& out_;
    std::uint64_t seen_;
};

void walk(Node* from, bool upward, bool both, std::vector<Node*>& out) {
    Gatherer g(out);
    std::vector<Node*> stack{from};
    g.add(from);
    while (!stack.empty()) {
        Node* n = stack.back();
        stack.pop_back();
        if (upward || both)
            for (Node* p : n->parents.nodes)
                if (g.add(p)) stack.push_back(p);
        if (!upward || both)
            for (Node* c : n->children.nodes)
                if (g.add(c)) stack.push_back(c);
    }
}

// The reachable algorithm: active trails from 'from' given the nodes with findings.
void d_connected(Node* from, bool include_evidence, std::vector<Node*>& out) {
    Net& net = *from->net;
    const size_t n = net.nodes.nodes.size();
    std::vector<char> evidence_ancestor(n, 0);
    std::vector<Node*> stack;
    for (Node* x : net.nodes.nodes)
        if (has_evidence(x)) stack.push_back(x);
    while (!stack.empty()) {
        Node* x = stack.back();
        stack.pop_back();
        if (evidence_ancestor[x->index]) continue;
        evidence_ancestor[x->index] = 1;
        for (Node* p : x->parents.nodes) stack.push_back(p);
    }
    std::vector<char> visited_up(n, 0), visited_down(n, 0), reached(n, 0);
    std::vector<std::pair<Node*, bool>> work{{from, true}};  // true: arrived from a child
    while (!work.empty()) {
        auto [y, up] = work.back();
        work.pop_back();
        auto& visited = up ? visited_up : visited_down;
        if (visited[y->index]) continue;
        visited[y->index] = 1;
        bool observed = has_evidence(y);
        if ((!observed || include_evidence) && !reached[y->index]) {
            reached[y->index] = 1;
            out.push_back(y);
        }
        if (up && !observed) {
            for (Node* p : y->parents.nodes) work.push_back({p, true});
            for (Node* c : y->children.nodes) work.push_back({c, false});
        } else if (!up) {
            if (!observed)
                for (Node* c : y->children.nodes) work.push_back({c, false});
            if (evidence_ancestor[y->index])
                for (Node* p : y->parents.nodes) work.push_back({p, true});
        }
    }
}

void relation_of(const RelationRequest& r, Node* node, std::vector<Node*>& out) {
    switch (r.relation) {
        case Relation::Parent: out = node->parents.nodes; break;
        case Relation::Child: out = node->children.nodes; break;
        case Relation::Ancestor: walk(node, true, false, out); break;
        case Relation::Descendent: walk(node, false, false, out); break;
        case Relation::Connected: walk(node, true, true, out); break;
        case Relation::DConnected: d_connected(node, r.include_evidence, out); break;
        case Relation::MarkovBlanket: {
            out = node->parents.nodes;
            for (Node* c : node->children.nodes) {
                out.push_back(c);
                for (Node* p : c->parents.nodes) out.push_back(p);
            }
            out.erase(std::remove(out.begin(), out.end(), node), out.end());
            break;
        }
        case Relation::None: break;
    }
    bool self_stays = r.relation == Relation::Connected || r.relation == Relation::DConnected;
    if (!self_stays || r.exclude_self) out.erase(std::remove(out.begin(), out.end(), node), out.end());
}

}  // namespace

RelationRequest parse_relation(const char* text) {
    RelationRequest r;
    int relations = 0, list_ops = 0;
    const size_t length = std::strlen(text);
    for (size_t i = 0; i < length;) {
        char c = text[i];
        if (c == ',' || std::isspace(static_cast<unsigned char>(c))) {
            ++i;
            continue;
        }
        if (!word_char(c))
            fail(kRelationTextNumber + 1, "unexpected character '%c' at position %d in relation string", c,
                 static_cast<int>(i));
        size_t start = i;
        while (i < length && word_char(text[i])) ++i;
        if (i - start > static_cast<size_t>(kMaxNameLength))
            fail(kRelationTextNumber, "relation token too long, starting %.30s", text + start);
        read_word(r, std::string(text + start, i - start), start, relations, list_ops);
    }
    if (relations > 1) fail(kRelationTextNumber + 3, "more than one relation specified");
    if (relations == 0) fail(kRelationTextNumber + 4, "no relation specified");
    if (list_ops > 1)
        fail(kRelationTextNumber + 5, "cannot choose more than one option from: 'append', 'union', "
                                      "'intersection' and 'subtract'");
    return r;
}

std::vector<Node*> related_nodes_of(const RelationRequest& request, const std::vector<Node*>& from) {
    std::vector<Node*> result, one;
    if (from.empty()) return result;
    std::vector<char> taken(from.front()->net->nodes.nodes.size(), 0);
    for (Node* node : from) {
        one.clear();
        relation_of(request, node, one);
        for (Node* n : one)
            if (!taken[n->index]) {
                taken[n->index] = 1;
                result.push_back(n);
            }
    }
    return result;
}

void combine_into(std::vector<Node*>& out, const std::vector<Node*>& result, const RelationRequest& r) {
    std::uint64_t in_result = fresh_mark();
    for (Node* n : result) n->mark = in_result;
    switch (r.op) {
        case ListOp::Replace: out = result; break;
        case ListOp::Append: out.insert(out.end(), result.begin(), result.end()); break;
        case ListOp::Union: {
            std::uint64_t in_out = fresh_mark();
            for (Node* n : out) n->mark = in_out;
            for (Node* n : result)
                if (n->mark != in_out) {
                    n->mark = in_out;
                    out.push_back(n);
                }
            break;
        }
        case ListOp::Intersection:
            out.erase(std::remove_if(out.begin(), out.end(), [&](Node* n) { return n->mark != in_result; }), out.end());
            break;
        case ListOp::Subtract:
            out.erase(std::remove_if(out.begin(), out.end(), [&](Node* n) { return n->mark == in_result; }), out.end());
            break;
    }
    if (r.remove_duplicates) {
        std::uint64_t seen = fresh_mark();
        out.erase(std::remove_if(out.begin(), out.end(), [&](Node* n) {
                      if (n->mark == seen) return true;
                      n->mark = seen;
                      return false;
                  }), out.end());
    }
}

}  // namespace ravelo
