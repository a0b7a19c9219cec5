// Node definitions in text net files: declarations ("define" or "param")
// kept only for others to inherit from.  The reader keeps them on the net,
// outside its nodes, with their statements as written; the writer puts
// them back, and writes a node that inherited from one as inheriting again,
// with only the statements that differ from what it would inherit.
#include "io/dne_definitions.h"

#include <algorithm>

#include "base/text.h"
#include "io/dne_reader.h"
#include "io/dne_words.h"
#include "net/names.h"

namespace ravelo {

namespace {

bool is_flag_word(const std::string& w) { return w == "TRUE" || w == "FALSE"; }

}  // namespace

// Declared with "define" or "param", or as a node whose own statements say
// "isdefine = TRUE".
bool DneReader::is_definition(const Object& object) const {
    if (!object.declarer.empty()) return true;
    const Statement* flag = object.find("isdefine");
    if (!flag) return false;
    std::string w = word_of(flag->value);
    if (!is_flag_word(w)) failure(flag->line, format("illegal value '%s'", w.c_str()));
    return w == "TRUE";
}

void DneReader::keep_definition(const Object& object) {
    if (!name_problem(object.name.c_str()).empty())
        failure(object.line, format("'%s' is not a legal name for a %s", object.name.c_str(), "node"));
    if (definitions_.count(object.name) || net_.find(object.name))
        failure(object.line, format("duplicate %s name '%s'", "node", object.name.c_str()));
    NodeDefinition kept;
    kept.declarer = object.declarer.empty() ? "define" : object.declarer;
    kept.name = object.name;
    kept.base = object.base;
    for (const Statement& s : object.statements) {
        if (node_field_index(s.keyword) < 0) failure(s.line, format("unknown %s '%s'", "field", s.keyword.c_str()));
        // A table whose parentheses do not balance cannot be kept as text.
        if (s.fault == ParenFault::Unclosed) failure(s.line, "missing close parenthesis, starting");
        if (s.fault != ParenFault::None)
            failure(s.line, format("missing semicolon after `%s` statement", s.keyword.c_str()));
        if (s.keyword == "isdefine") {
            // A declaration word contradicted by its own flag.
            if (!is_flag_word(word_of(s.value)) || word_of(s.value) == "FALSE")
                failure(s.line, format("illegal value '%s'", word_of(s.value).c_str()));
            continue;  // the declaration word says it
        }
        kept.statements.emplace_back(s.keyword, value_text(s.value));
    }
    for (const Object& o : object.objects) {
        kept.objects += '\t';
        kept.objects += object_text(o, "\t");
    }
    definitions_[object.name] = &object;
    effective(object);  // its base must be known and its statements not repeated
    net_.definitions.push_back(std::move(kept));
}

namespace {

using StatementTexts = std::vector<std::pair<std::string, std::string>>;

// What a declaration inheriting from `name` receives: the definition's own
// statements after those of its bases, each overriding an inherited one.
StatementTexts inherited_statements(const Net& net, const std::string& name, int depth = 0) {
    const NodeDefinition* d = net.find_definition(name);
    if (!d || depth > static_cast<int>(net.definitions.size())) return {};
    StatementTexts out;
    if (!d->base.empty()) out = inherited_statements(net, d->base, depth + 1);
    for (const auto& own : d->statements) {
        std::erase_if(out, [&](const auto& i) { return i.first == own.first; });
        out.push_back(own);
    }
    return out;
}

bool defines_chain(const Net& net, const std::string& name) {
    const NodeDefinition* d = net.find_definition(name);
    for (size_t n = 0; d && n <= net.definitions.size(); ++n) {
        if (d->base.empty()) return true;
        d = net.find_definition(d->base);
    }
    return false;
}

// A written node's declaration cut into its header, one piece per field
// statement or nested object (each starts on a line indented once), and
// its closing line.
struct DeclarationPieces {
    std::string header, closing;
    std::vector<std::string> pieces;
};

DeclarationPieces cut_declaration(const std::string& text) {
    DeclarationPieces out;
    size_t open = text.find("{\n");
    out.header = text.substr(0, open + 2);
    size_t at = open + 2;
    while (at < text.size()) {
        size_t end = text.find('\n', at);
        end = end == std::string::npos ? text.size() : end + 1;
        std::string line = text.substr(at, end - at);
        bool starts_piece = line.size() > 1 && line[0] == '\t' && line[1] != '\t';
        if (starts_piece && line[1] == '}') out.closing += line;
        else if (starts_piece || out.pieces.empty()) out.pieces.push_back(line);
        else out.pieces.back() += line;
        at = end;
    }
    return out;
}

std::string keyword_of_piece(const std::string& piece) {
    size_t start = piece.find_first_not_of('\t');
    size_t end = piece.find_first_of(" =", start);
    return piece.substr(start, end - start);
}

}  // namespace

std::string definition_declaration(const NodeDefinition& d) {
    std::string out = "\n" + d.declarer + " node " + d.name;
    if (!d.base.empty()) out += " : " + d.base;
    out += " {\n";
    for (const auto& [keyword, value] : d.statements) out += "\t" + keyword + " = " + value + ";\n";
    return out + d.objects + "\t};\n";
}

std::string inheriting_declaration(const Net& net, const Node& node, const std::string& written) {
    if (node.inherits.empty() || !defines_chain(net, node.inherits)) return written;
    const StatementTexts inherited = inherited_statements(net, node.inherits);
    Object parsed = parse_net_file("bnet Written {" + written + "};", ReadPlace{node.name});
    if (parsed.objects.size() != 1) return written;
    const std::vector<Statement>& own = parsed.objects[0].statements;
    DeclarationPieces cut = cut_declaration(written);
    std::vector<size_t> statement_piece;  // the piece holding each parsed statement
    for (size_t p = 0; p < cut.pieces.size(); ++p)
        if (statement_piece.size() < own.size() && keyword_of_piece(cut.pieces[p]) == own[statement_piece.size()].keyword)
            statement_piece.push_back(p);
    if (statement_piece.size() != own.size()) return written;

    // Every inherited statement must be restated or equal to the node's own,
    // else reading would give the node something it does not have.
    std::vector<bool> keep(own.size(), true);
    for (const auto& statement : inherited) {
        const std::string& keyword = statement.first;
        auto same = std::find_if(own.begin(), own.end(), [&](const Statement& s) { return s.keyword == keyword; });
        if (same == own.end()) return written;
        if (value_text(same->value) == statement.second) keep[static_cast<size_t>(same - own.begin())] = false;
    }
    // Inherited statements are read before the node's own: one that needs an
    // own statement read first is written again.
    for (bool changed = true; changed;) {
        changed = false;
        for (size_t i = 0; i < own.size(); ++i)
            for (size_t j = 0; j < own.size() && !keep[i]; ++j)
                if (keep[j] && depends_on(own[i].keyword, own[j].keyword)) keep[i] = changed = true;
    }
    std::string out = cut.header;
    out.insert(out.rfind(" {\n"), " : " + node.inherits);
    for (size_t p = 0; p < cut.pieces.size(); ++p) {
        auto s = std::find(statement_piece.begin(), statement_piece.end(), p);
        if (s == statement_piece.end() || keep[static_cast<size_t>(s - statement_piece.begin())]) out += cut.pieces[p];
    }
    return out + cut.closing;
}

}  // namespace ravelo
