#include "io/hugin.h"

#include <cctype>
#include <cstdio>

#include "base/numbers.h"
#include "base/text.h"
#include "base/tokenizer.h"

namespace ravelo {
namespace {

const TokenRules kHuginRules{"{}()=;|", false, '%'};
constexpr int kMaxDataDepth = 200;

// An attribute value: a string, a word, or a list (kept flat, with its words).
struct Attribute {
    std::string key;
    std::string text;                // the string or word, or the list's raw words
    std::vector<Token> items;        // a list's strings and words, in order
    bool is_list = false;
    bool is_string = false;
    int line = 0;

    // The value as the file wrote it, so that writing it back gives the same form.
    std::string literal() const {
        if (is_list) return "(" + text + ")";
        return is_string ? quoted(text) : text;
    }
};

bool is_word_char(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '+' || c == '-';
}

// True for a single word, quoted string or balanced list, the forms a kept value takes.
bool is_value_literal(std::string_view v) {
    int depth = 0, top_items = 0;
    for (size_t i = 0; i < v.size();) {
        char c = v[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            ++i;
            continue;
        }
        if (depth == 0) ++top_items;
        if (c == '(') {
            ++depth;
            ++i;
        } else if (c == ')') {
            if (--depth < 0) return false;
            ++i;
        } else if (c == '"') {
            for (++i; i < v.size() && v[i] != '"'; ++i)
                if (v[i] == '\\') ++i;
            if (i >= v.size()) return false;
            ++i;
        } else if (is_word_char(c)) {
            while (i < v.size() && is_word_char(v[i])) ++i;
        } else {
            return false;
        }
    }
    return depth == 0 && top_items == 1;
}

std::string value_text(const std::string& value) {
    return is_value_literal(value) ? value : quoted(value);
}

class HuginReader {
public:
    HuginReader(std::string_view text, const ReadPlace& place) : tokens_(text, kHuginRules, place.file), place_(place) {}

    ForeignNet read() {
        while (true) {
            Token t = tokens_.next();
            if (t.kind == Token::End) break;
            if (t.kind != Token::Word) fail(t, "a block");
            if (t.text == "net") net_block();
            else if (t.text == "class") class_block();
            else body_item(t);
        }
        for (Potential& p : pending_) place(p);
        return std::move(net_);
    }

private:
    struct Potential {
        std::vector<std::string> names;  // the node, then its parents
        std::vector<double> data;
        int line = 0;
    };

    [[noreturn]] void fail(const Token& t, const char* expected) {
        std::string found = t.kind == Token::End ? "the end of the file" : "'" + t.text + "'";
        read_failure(place_, t.line, format("expected %s but found %s", expected, found.c_str()));
    }
    void expect(char c) {
        Token t = tokens_.next();
        if (!t.is(c)) {
            char what[16];
            std::snprintf(what, sizeof what, "'%c'", c);
            fail(t, what);
        }
    }

    // "key = value ;" statements up to the closing brace.
    std::vector<Attribute> attributes() {
        std::vector<Attribute> out;
        expect('{');
        while (true) {
            Token key = tokens_.next();
            if (key.is('}')) break;
            if (key.kind != Token::Word) fail(key, "an attribute name or '}'");
            out.push_back(attribute(key));
        }
        return out;
    }

    // The "= value ;" after an attribute's key.
    Attribute attribute(const Token& key) {
        Attribute a;
        a.key = key.text;
        a.line = key.line;
        expect('=');
        if (tokens_.peek().is('(')) {
            a.is_list = true;
            list(a, 0);
        } else {
            Token v = tokens_.next();
            if (v.kind != Token::Word && v.kind != Token::String) fail(v, "a value");
            a.text = v.text;
            a.is_string = v.kind == Token::String;
        }
        expect(';');
        return a;
    }

    // A node, decision, utility or potential block, at the top level or inside a class.
    void body_item(const Token& t) {
        if (t.text == "potential") potential(t.line);
        else if (t.text == "instance")
            read_failure(place_, t.line, "instances of object-oriented classes can't be read");
        else node_block(t);
    }

    void net_attribute(Attribute& a) {
        if (a.key == "name" || a.key == "label") (a.key == "name" ? net_.name : net_.title) = a.text;
        else net_.fields.emplace_back(a.key, a.literal());
    }

    // A class holds the attributes, nodes and potentials of one net; one without instances
    // of other classes reads as a plain net named by the class.
    void class_block() {
        Token name = tokens_.next();
        if (name.kind != Token::Word) fail(name, "a class name");
        net_.name = name.text;
        expect('{');
        while (true) {
            Token t = tokens_.next();
            if (t.is('}')) break;
            if (t.kind != Token::Word) fail(t, "an attribute, a node, a potential or '}'");
            if (!tokens_.peek().is('=')) {
                body_item(t);
                continue;
            }
            Attribute a = attribute(t);
            // The interface lists of a class name nodes it holds anyway.
            if (a.key != "inputs" && a.key != "outputs") net_attribute(a);
        }
    }

    void list(Attribute& a, int depth) {
        if (depth > kMaxDataDepth) read_failure(place_, tokens_.line(), "lists nested too deeply");
        expect('(');
        while (true) {
            const Token& t = tokens_.peek();
            if (t.is(')')) {
                tokens_.next();
                return;
            }
            if (t.is('(')) {
                list(a, depth + 1);
                continue;
            }
            Token item = tokens_.next();
            if (item.kind != Token::Word && item.kind != Token::String) fail(item, "a list item or ')'");
            if (!a.text.empty()) a.text += ' ';
            a.text += item.kind == Token::String ? quoted(item.text) : item.text;
            a.items.push_back(std::move(item));
        }
    }

    void net_block() {
        for (Attribute& a : attributes()) net_attribute(a);
    }

    void node_block(const Token& first) {
        ForeignNode node;
        node.line = first.line;
        Token t = first;
        if (t.text == "discrete") t = tokens_.next();
        if (t.text == "continuous") read_failure(place_, t.line, "continuous nodes can't be read");
        if (t.text == "decision") node.kind = NodeKind::Decision;
        else if (t.text == "utility") node.kind = NodeKind::Utility;
        else if (t.text != "node") read_failure(place_, t.line, format("unknown block '%s'", t.text.c_str()));
        Token name = tokens_.next();
        if (name.kind != Token::Word) fail(name, "a node name");
        node.name = name.text;
        if (find_node(net_, node.name) >= 0)
            read_failure(place_, name.line, format("more than one %s with the name '%s'", "node", node.name.c_str()));
        for (Attribute& a : attributes()) {
            if (a.key == "states") {
                for (const Token& s : a.items) node.states.push_back(s.text);
            } else if (a.key == "label") {
                node.title = a.text;
            } else if (a.key == "position") {
                std::optional<double> x, y;
                if (a.items.size() == 2) {
                    x = read_real(a.items[0].text);
                    y = read_real(a.items[1].text);
                }
                if (!x || !y) read_failure(place_, a.line, "position should be two numbers");
                node.has_position = true;
                node.x = *x;
                node.y = *y;
            } else {
                node.fields.emplace_back(a.key, a.literal());
            }
        }
        net_.nodes.push_back(std::move(node));
    }

    void potential(int line) {
        expect('(');
        std::vector<std::string> names;
        bool given = false;
        while (true) {
            Token t = tokens_.next();
            if (t.is(')')) break;
            if (t.is('|') && !given && !names.empty()) {
                given = true;
                continue;
            }
            if (t.kind != Token::Word) fail(t, "a node name");
            names.push_back(t.text);
        }
        if (names.empty()) read_failure(place_, line, "potential names no node");
        Potential p;
        p.line = line;
        for (Attribute& a : attributes()) {
            if (a.key != "data") continue;
            for (const Token& item : a.items) {
                auto x = read_real(item.text);
                if (!x) read_failure(place_, a.line, format("'%s' is not a number", item.text.c_str()));
                p.data.push_back(*x);
            }
        }
        p.names = std::move(names);
        pending_.push_back(std::move(p));
    }

    // Potentials may come before the nodes they name, so they are placed once all are read.
    void place(Potential& p) {
        int index = find_node(net_, p.names[0]);
        if (index < 0) read_failure(place_, p.line, format("undefined >-node '%s'", p.names[0].c_str()));
        ForeignNode& node = net_.nodes[static_cast<size_t>(index)];
        if (!node.parents.empty() || node.table_line)
            read_failure(place_, p.line, format("more than one potential for '%s'", p.names[0].c_str()));
        node.parents.assign(p.names.begin() + 1, p.names.end());
        node.table_line = p.line;
        fill(static_cast<size_t>(index), p);
    }

    void fill(size_t index, const Potential& p) {
        ForeignNode& node = net_.nodes[index];
        if (p.data.empty()) return;
        if (node.kind == NodeKind::Utility) {
            node.utilities = p.data;
            return;
        }
        size_t size = table_size(net_, node, place_);
        if (p.data.size() != size)
            read_failure(place_, p.line, format("data of '%s' has %zu entries, but there should be %zu",
                                                node.name.c_str(), p.data.size(), size));
        node.cpt.assign(p.data.begin(), p.data.end());
    }

    Tokenizer tokens_;
    const ReadPlace& place_;
    ForeignNet net_;
    std::vector<Potential> pending_;
};

void write_numbers(std::string& out, const float* values, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (i) out += ' ';
        out += prob_text(values[i]);
    }
}

}  // namespace

ForeignNet read_hugin(std::string_view text, const ReadPlace& place) {
    return HuginReader(text, place).read();
}

std::string write_hugin(const ForeignNet& net) {
    std::string out = "net\n{\n";
    out += "  name = " + quoted(net.name) + ";\n";
    if (!net.title.empty()) out += "  label = " + quoted(net.title) + ";\n";
    for (const auto& [key, value] : net.fields) out += "  " + key + " = " + value_text(value) + ";\n";
    out += "}\n";
    for (const ForeignNode& node : net.nodes) {
        const char* word = node.kind == NodeKind::Decision ? "decision"
                           : node.kind == NodeKind::Utility ? "utility" : "node";
        out += '\n';
        out += word;
        out += ' ';
        out += node.name;
        out += "\n{\n";
        if (!node.title.empty()) out += "  label = " + quoted(node.title) + ";\n";
        if (node.has_position) out += "  position = (" + real_text(node.x) + " " + real_text(node.y) + ");\n";
        if (node.kind != NodeKind::Utility) {
            out += "  states = (";
            for (const std::string& s : node.states) {
                out += ' ';
                out += quoted(s);
            }
            out += " );\n";
        }
        for (const auto& [key, value] : node.fields) out += "  " + key + " = " + value_text(value) + ";\n";
        out += "}\n";
    }
    for (const ForeignNode& node : net.nodes) {
        if (node.parents.empty() && node.cpt.empty() && node.utilities.empty()) continue;
        out += "\npotential ( " + node.name;
        if (!node.parents.empty()) out += " |";
        for (const std::string& p : node.parents) out += " " + p;
        out += " )\n{\n";
        if (!node.cpt.empty()) {
            size_t m = node.states.size();
            out += "  data = (";
            for (size_t start = 0; start < node.cpt.size(); start += m) {
                out += start ? "\n          (" : "(";
                write_numbers(out, &node.cpt[start], m);
                out += ")";
            }
            out += ");\n";
        } else if (!node.utilities.empty()) {
            out += "  data = (";
            for (size_t i = 0; i < node.utilities.size(); ++i) {
                if (i) out += ' ';
                out += real_text(node.utilities[i]);
            }
            out += ");\n";
        }
        out += "}\n";
    }
    return out;
}

}  // namespace ravelo
