#include "io/bif.h"

#include <cstdio>
#include <unordered_map>

#include "base/numbers.h"
#include "base/text.h"
#include "base/tokenizer.h"

namespace ravelo {
namespace {

// "=" is not punctuation here: state names such as ">=7.5" contain it.
const TokenRules kBifRules{"{}()[];,|", true, 0};

// A "probability" block kept until every variable is known.
struct ProbabilityBlock {
    std::vector<std::string> variables;  // the node, then its parents
    struct Row {
        std::vector<std::string> condition;  // empty for "table" and "default"
        bool is_table = false, is_default = false;
        std::vector<double> values;
        int line = 0;
    };
    std::vector<Row> rows;
    int line = 0;
};

class BifReader {
public:
    BifReader(std::string_view text, const ReadPlace& place)
        : tokens_(text, kBifRules, place.file), place_(place) {}
    ForeignNet read();

private:
    Token word(const char* what);
    void expect(char punct, const char* where);
    bool accept(char punct);
    void network();
    void variable();
    void probability();
    std::pair<std::string, std::string> property();
    std::vector<double> values(const char* what);
    void fill(const ProbabilityBlock& block);

    Tokenizer tokens_;
    const ReadPlace& place_;
    ForeignNet net_;
    std::unordered_map<std::string, size_t> index_;
    std::vector<ProbabilityBlock> blocks_;
};

Token BifReader::word(const char* what) {
    Token t = tokens_.next();
    if (t.kind != Token::Word && t.kind != Token::String) {
        if (t.kind == Token::End) read_failure(place_, t.line, format("file ends where %s should be", what));
        read_failure(place_, t.line, format("expected %s but found '%s'", what, t.text.c_str()));
    }
    return t;
}

void BifReader::expect(char punct, const char* where) {
    Token t = tokens_.next();
    if (!t.is(punct)) {
        std::string found = t.kind == Token::End ? "the end of the file" : "'" + t.text + "'";
        read_failure(place_, t.line,
                     format("missing '%c' %s (found %s)", punct, where, found.c_str()));
    }
}

bool BifReader::accept(char punct) {
    if (!tokens_.peek().is(punct)) return false;
    tokens_.next();
    return true;
}

// "property" words up to ";": the first word names it, the rest is its value.
std::pair<std::string, std::string> BifReader::property() {
    std::string text = tokens_.raw_until(';');
    expect(';', "after property");
    size_t start = text.find_first_not_of(" \t\r\n");
    if (start == std::string::npos) return {"property", ""};
    text = text.substr(start, text.find_last_not_of(" \t\r\n") - start + 1);
    size_t space = text.find_first_of(" \t\r\n=");
    if (space == std::string::npos) return {text, ""};
    std::string key = text.substr(0, space);
    size_t value = text.find_first_not_of(" \t\r\n=", space);
    return {key, value == std::string::npos ? "" : text.substr(value)};
}

void BifReader::network() {
    net_.name = word("the network's name").text;
    expect('{', "to start the network block");
    while (!accept('}')) {
        Token t = word("'property' or '}'");
        if (t.text != "property") read_failure(place_, t.line, format("unknown word '%s' in network block", t.text.c_str()));
        net_.fields.push_back(property());
    }
}

void BifReader::variable() {
    ForeignNode node;
    node.line = tokens_.line();
    node.name = word("the variable's name").text;
    if (index_.count(node.name))
        read_failure(place_, node.line, format("more than one %s with the name '%s'", "variable", node.name.c_str()));
    expect('{', "to start the variable block");
    bool typed = false;
    while (!accept('}')) {
        Token t = word("'type', 'property' or '}'");
        if (t.text == "property") {
            auto field = property();
            if (field.first == "position") {
                auto numbers = field.second;
                double x = 0, y = 0;
                if (std::sscanf(numbers.c_str(), " ( %lf , %lf )", &x, &y) == 2) {
                    node.has_position = true;
                    node.x = x;
                    node.y = y;
                    continue;
                }
            }
            node.fields.push_back(field);
            continue;
        }
        if (t.text != "type") read_failure(place_, t.line, format("unknown word '%s' in variable block", t.text.c_str()));
        Token kind = word("'discrete'");
        if (kind.text != "discrete")
            read_failure(place_, kind.line, format("variable '%s' is of type '%s', but only discrete variables can be read", node.name.c_str(), kind.text.c_str()));
        expect('[', "before the number of states");
        Token count = word("the number of states");
        auto n = read_integer(count.text);
        if (!n || *n < 1) read_failure(place_, count.line, format("'%s' is not a number of states", count.text.c_str()));
        expect(']', "after the number of states");
        if (tokens_.peek().is_word("=")) tokens_.next();
        expect('{', "to start the list of states");
        while (!accept('}')) {
            node.states.push_back(word("a state name").text);
            accept(',');
        }
        if (static_cast<long>(node.states.size()) != *n)
            read_failure(place_, count.line, format("there are %ld states, but %zu names", *n, node.states.size()));
        expect(';', "after the type statement");
        typed = true;
    }
    if (!typed) read_failure(place_, node.line, format("variable '%s' has no type statement", node.name.c_str()));
    index_[node.name] = net_.nodes.size();
    net_.nodes.push_back(std::move(node));
}

std::vector<double> BifReader::values(const char* what) {
    std::vector<double> out;
    while (!accept(';')) {
        Token t = tokens_.next();
        if (t.kind != Token::Word) {
            std::string found = t.kind == Token::End ? "the end of the file" : "'" + t.text + "'";
            read_failure(place_, t.line, format("missing ';' after %s (found %s)", what, found.c_str()));
        }
        auto v = read_real(t.text);
        if (!v) read_failure(place_, t.line, format("'%s' is not a probability", t.text.c_str()));
        out.push_back(*v);
        accept(',');
    }
    return out;
}

void BifReader::probability() {
    ProbabilityBlock block;
    block.line = tokens_.line();
    expect('(', "to start the variables of a probability block");
    while (!accept(')')) {
        block.variables.push_back(word("a variable name").text);
        if (!accept('|')) accept(',');
    }
    if (block.variables.empty()) read_failure(place_, block.line, "probability block names no variable");
    expect('{', "to start the probability block");
    while (!accept('}')) {
        ProbabilityBlock::Row row;
        row.line = tokens_.line();
        if (accept('(')) {
            while (!accept(')')) {
                row.condition.push_back(word("a state name").text);
                accept(',');
            }
            row.values = values("a row of probabilities");
        } else {
            Token t = word("'table', 'default', '(' or '}'");
            if (t.text == "property") {
                property();
                continue;
            }
            row.is_table = t.text == "table";
            row.is_default = t.text == "default";
            if (!row.is_table && !row.is_default)
                read_failure(place_, t.line, format("unknown word '%s' in probability block", t.text.c_str()));
            row.values = values(t.text.c_str());
        }
        block.rows.push_back(std::move(row));
    }
    blocks_.push_back(std::move(block));
}

int state_index(const ForeignNode& node, const std::string& name) {
    for (size_t s = 0; s < node.states.size(); ++s)
        if (node.states[s] == name) return static_cast<int>(s);
    return -1;
}

void BifReader::fill(const ProbabilityBlock& block) {
    auto node_of = [&](const std::string& name) -> ForeignNode& {
        auto it = index_.find(name);
        if (it == index_.end()) read_failure(place_, block.line, format("undefined >-node '%s'", name.c_str()));
        return net_.nodes[it->second];
    };
    ForeignNode& node = node_of(block.variables[0]);
    if (!node.cpt.empty())
        read_failure(place_, block.line, format("more than one probability block for '%s'", node.name.c_str()));
    std::vector<const ForeignNode*> parents;
    for (size_t i = 1; i < block.variables.size(); ++i) {
        parents.push_back(&node_of(block.variables[i]));
        node.parents.push_back(block.variables[i]);
    }
    if (block.rows.empty()) return;  // links without a table
    size_t m = node.states.size();
    size_t size = table_size(net_, node, place_);
    std::vector<float> cpt(size, kMissingProb);
    for (const auto& row : block.rows) {
        if (row.is_table) {
            // Listed with the node's state slowest and the last parent fastest.
            if (row.values.size() != size)
                read_failure(place_, row.line, format("table has %zu entries, but there should be %zu", row.values.size(), size));
            size_t conditions = size / m;
            for (size_t s = 0; s < m; ++s)
                for (size_t c = 0; c < conditions; ++c)
                    cpt[c * m + s] = static_cast<float>(row.values[s * conditions + c]);
            continue;
        }
        if (row.values.size() != m)
            read_failure(place_, row.line, format("row has %zu entries, but there should be %zu, because '%s' has that many states", row.values.size(), m, node.name.c_str()));
        if (row.is_default) continue;
        if (row.condition.size() != parents.size())
            read_failure(place_, row.line, format("condition names %zu states, but '%s' has %zu parents", row.condition.size(), node.name.c_str(), parents.size()));
        size_t start = 0;
        for (size_t p = 0; p < parents.size(); ++p) {
            int s = state_index(*parents[p], row.condition[p]);
            if (s < 0) read_failure(place_, row.line, format("unknown state '%s' of >-node '%s'", row.condition[p].c_str(), parents[p]->name.c_str()));
            start = start * parents[p]->states.size() + static_cast<size_t>(s);
        }
        for (size_t s = 0; s < m; ++s) cpt[start * m + s] = static_cast<float>(row.values[s]);
    }
    // The default row stands for every condition no row gives, wherever it appears.
    for (const auto& row : block.rows)
        if (row.is_default)
            for (size_t start = 0; start < size; start += m)
                if (cpt[start] == kMissingProb)
                    for (size_t s = 0; s < m; ++s) cpt[start + s] = static_cast<float>(row.values[s]);
    node.cpt = std::move(cpt);
    node.table_line = block.line;
}

ForeignNet BifReader::read() {
    while (true) {
        Token t = tokens_.next();
        if (t.kind == Token::End) break;
        if (t.is_word("network")) network();
        else if (t.is_word("variable")) variable();
        else if (t.is_word("probability")) probability();
        else read_failure(place_, t.line, format("unknown block '%s' (expected 'network', 'variable' or 'probability')", t.text.c_str()));
        accept(';');
    }
    for (const ProbabilityBlock& block : blocks_) fill(block);
    return std::move(net_);
}

}  // namespace

ForeignNet read_bif(std::string_view text, const ReadPlace& place) {
    return BifReader(text, place).read();
}

}  // namespace ravelo
