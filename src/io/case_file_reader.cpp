#include <algorithm>
#include <cctype>
#include <cstring>
#include <new>

#include "base/failure.h"
#include "base/lexicon.h"
#include "base/numbers.h"
#include "base/progress.h"
#include "base/stream.h"
#include "base/text.h"
#include "io/case_file.h"
#include "io/case_findings.h"
#include "io/dne_syntax.h"
#include "net/names.h"
#include "net/ops.h"
#include "net/states.h"

namespace ravelo {

namespace {

constexpr const char* kAddAnswers = "Add State,Add All States,Skip Value,Skip All,Halt";
constexpr const char* kExpandAnswers = "Expand Bounds,Expand All,Skip Value,Skip All,Halt";
constexpr const char* kSkipAnswers = "Skip Value,Skip All,Halt";
constexpr long kProgressRows = 8192;

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

// Characters that end a plain entry ('/' only when a comment starts there),
// in ordinary files and in the dialect of ".data" files; and those that
// start a non-simple finding.
struct CharClasses {
    bool ends_plain[256] = {};
    bool ends_plain_c45[256] = {};
    bool starts_special[256] = {};
    CharClasses() {
        for (unsigned char c : std::string_view(",\t \r\f\v/")) ends_plain[c] = true;
        for (unsigned char c : std::string_view(",\t|/")) ends_plain_c45[c] = true;
        for (unsigned char c : std::string_view("<>[{(~")) starts_special[c] = true;
    }
};
const CharClasses kChars;

bool same_text(const std::string& a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < b.size(); ++i)
        if (a[i] != b[i]) return false;
    return true;
}
bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Hash of a state name for the per-column lookup: from its length and
// three of its characters, which tell a node's few states apart at a glance
// (clashes only cost a probe).
std::uint32_t name_hash(std::string_view s) {
    std::uint32_t h = static_cast<std::uint32_t>(s.size()) * 2654435761u;
    if (!s.empty())
        h ^= static_cast<unsigned char>(s.front()) * 16777619u ^ static_cast<unsigned char>(s.back()) * 40503u ^
             static_cast<std::uint32_t>(static_cast<unsigned char>(s[s.size() / 2])) << 11;
    return h ^ (h >> 13);
}

// An IDnum entry: a non-negative decimal integer, optionally ending in "." or ".0".
long read_id(std::string_view text) {
    if (text.empty()) return -1;
    long value = 0;
    size_t i = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        if (value > 100000000000000L) return -1;
        value = value * 10 + (text[i] - '0');
    }
    std::string_view rest = text.substr(i);
    if (i == 0 || !(rest.empty() || rest == "." || rest == ".0")) return -1;
    return value;
}

}  // namespace

// One heading column: what it holds, and for a node's column a hash of the
// node's state names into state indexes (0 for an empty slot, else state + 1).
struct CaseFileReader::Column {
    enum Kind { Ignored, Id, Weight, NodeColumn } kind = Ignored;
    Node* node = nullptr;
    int kept = -1;  // index among the kept columns
    bool numeric = false;
    bool made_here = false;  // a node this reader made, which takes its states from the file
    size_t indexed_states = 0, indexed_levels = 0;
    std::vector<int> table;
    std::uint32_t mask = 0;

    void index_states() {
        numeric = !node->levels.empty();
        indexed_states = node->states.size();
        indexed_levels = node->levels.size();
        size_t size = 8;
        while (size < 2 * node->states.size()) size *= 2;
        table.assign(size, 0);
        mask = static_cast<std::uint32_t>(size - 1);
        for (size_t s = 0; s < node->states.size(); ++s) {
            const std::string& name = node->states[s].name;
            if (name.empty()) continue;
            std::uint32_t h = name_hash(name) & mask;
            while (table[h]) h = (h + 1) & mask;
            table[h] = static_cast<int>(s) + 1;
        }
    }
    int state_named(std::string_view name) const {
        for (std::uint32_t h = name_hash(name) & mask; table[h]; h = (h + 1) & mask) {
            if (same_text(node->states[static_cast<size_t>(table[h] - 1)].name, name)) return table[h] - 1;
        }
        return kUndefState;
    }
};

CaseFileReader::CaseFileReader(const Stream& file, Net& net, CaseReadOptions options)
    : file_(file), net_(net), options_(std::move(options)), name_(file.name), source_(file) {
    const std::string extension = extension_of(name_);
    c45_dialect_ = extension == "data" || extension == "test" || extension == "all";
    read_heading();
}

CaseFileReader::~CaseFileReader() = default;

bool CaseFileReader::still_fits(const Net& net) const {
    if (&net != &net_ || net.is_dead()) return false;
    return std::all_of(columns_.begin(), columns_.end(), [](const Column& c) {
        return !c.node || (!c.node->is_dead() && c.node->states.size() == c.indexed_states &&
                           c.node->levels.size() == c.indexed_levels);
    });
}

double CaseFileReader::fraction_read() const {
    return source_.size() > 0 ? static_cast<double>(source_.offset()) / static_cast<double>(source_.size()) : 1.0;
}

std::string CaseFileReader::place(const Entry& entry) const {
    return format("case %ld on line %ld (char %ld of file '%s')", rows_seen_, line_number_, entry.start,
                  name_.c_str());
}

bool CaseFileReader::read_line(std::string_view& line) {
    for (;;) {
        CaseSource::Got got = source_.next(line, line_position_);
        if (got == CaseSource::Got::End) return false;
        ++line_number_;
        if (got == CaseSource::Got::Line) return true;
        error_report(2284, "line %ld of case file '%s' is longer than %ld characters, so it is skipped",
                     line_number_, name_.c_str(), static_cast<long>(CaseSource::kMaxLineLength));
    }
}

// Splits a line into entries: quoted and bracketed entries whole, plain ones
// up to a delimiter; "//" and "/*" start comments.
void CaseFileReader::split_entries(std::string_view line) {
    entries_.clear();
    const size_t n = line.size();
    size_t i = 0;
    auto skip_blanks = [&] {
        while (i < n && is_blank(line[i])) ++i;
    };
    skip_blanks();
    while (i < n) {
        if (line[i] == '/' && i + 1 < n && line[i + 1] == '/') break;
        if (line[i] == '/' && i + 1 < n && line[i + 1] == '*') {
            size_t close = line.find("*/", i + 2);
            if (close == std::string_view::npos) {
                warning(2626, "multi-line comment found starting on a line which has case information");
                break;
            }
            i = close + 2;
            skip_blanks();
            continue;
        }
        if (c45_dialect_ && line[i] == '|') break;
        Entry e;
        e.start = static_cast<long>(i) + 1;
        const char c = line[i];
        const char open = c == '~' && i + 1 < n && (line[i + 1] == '{' || line[i + 1] == '(') ? line[i + 1] : c;
        const char close = open == '{' ? '}' : open == '(' ? ')' : open == '[' ? ']' : 0;
        if (c == '"') {
            size_t end = line.find('"', i + 1);
            if (end == std::string_view::npos) end = n;
            e.text = line.substr(i + 1, end - i - 1);
            e.quoted = true;
            i = end < n ? end + 1 : n;
        } else if (close) {
            size_t j = i + (c == '~' ? 2 : 1);
            int depth = 1;
            for (; j < n && depth > 0; ++j) {
                if (line[j] == open) ++depth;
                else if (line[j] == close) --depth;
            }
            e.text = line.substr(i, j - i);
            i = j;
        } else if (c != ',') {
            const bool* ends = c45_dialect_ ? kChars.ends_plain_c45 : kChars.ends_plain;
            size_t j = i;
            for (;; ++j) {
                while (j < n && !ends[static_cast<unsigned char>(line[j])]) ++j;
                if (j == n || line[j] != '/' || (j + 1 < n && (line[j + 1] == '/' || line[j + 1] == '*'))) break;
            }
            std::string_view text = line.substr(i, j - i);
            if (c45_dialect_) {
                while (!text.empty() && is_blank(text.back())) text.remove_suffix(1);
                if (!text.empty() && text.back() == '.') text.remove_suffix(1);
            }
            e.text = text;
            i = j;
        }
        entries_.push_back(e);
        skip_blanks();
        if (i < n && line[i] == ',') {
            ++i;
            skip_blanks();
            if (i == n) {
                Entry last;
                last.start = static_cast<long>(n) + 1;
                entries_.push_back(last);
            }
        }
    }
}

void CaseFileReader::check_tag(std::string_view line) {
    const std::string word = tag_word(line);
    if (word.empty()) return;
    if (word != "CASE") fail(2081, "not a %s file (it is a %s file)", "case", word.c_str());
    size_t dash = line.find('-', line.find("[") + 1);
    long version = 0;
    if (dash != std::string_view::npos) {
        size_t end = line.find(']', dash);
        auto number = read_integer(line.substr(dash + 1, end == std::string_view::npos ? 0 : end - dash - 1));
        version = number ? *number : 0;
    }
    if (version == 0) warning(2450, "case file doesn't indicate format version");
    else if (version > 2)
        warning(2082, "these cases were stored using a %s version of file format (%d). They may not read correctly",
                "newer", static_cast<int>(version));
}

void CaseFileReader::read_heading() {
    std::string_view line;
    bool first = true;
    std::vector<std::string> names;
    long heading_position = 0;
    while (read_line(line)) {
        if (first) {
            first = false;
            check_tag(line);
            if (!tag_word(line).empty()) continue;
        }
        split_entries(line);
        if (entries_.empty()) continue;
        heading_position = line_position_;
        for (const Entry& e : entries_) names.emplace_back(e.text);
        break;
    }
    if (!options_.has_heading) {
        const size_t width = names.size();
        names.clear();
        for (size_t k = 0; k < width; ++k) names.push_back("X" + std::to_string(k));
        source_.seek(heading_position);
        --line_number_;
    }
    std::vector<std::string> missing;
    std::vector<size_t> missing_columns;
    columns_.resize(names.size());
    for (size_t k = 0; k < names.size(); ++k) {
        std::string& name = names[k];
        Column& column = columns_[k];
        if (name == "IDnum") {
            if (id_column_ >= 0) fail(2274, "multiple IDnum columns in case file '%s'", name_.c_str());
            id_column_ = static_cast<int>(k);
            column.kind = Column::Id;
            continue;
        }
        if (name == "NumCases") {
            if (weight_column_ >= 0) fail(2275, "multiple NumCases columns in case file '%s'", name_.c_str());
            weight_column_ = static_cast<int>(k);
            column.kind = Column::Weight;
            continue;
        }
        if (!name.empty() && (name.back() == ')' || name.back() == ']')) {
            size_t open = name.rfind(name.back() == ')' ? '(' : '[');
            if (open != std::string::npos && open > 0 &&
                read_real(std::string_view(name).substr(open + 1, name.size() - open - 2)))
                name.erase(open);
        }
        Node* node = net_.find(name);
        if (!node) {
            missing.push_back(name);
            missing_columns.push_back(k);
            continue;
        }
        bool repeated = std::any_of(columns_.begin(), columns_.begin() + static_cast<long>(k),
                                    [&](const Column& c) { return c.node == node; });
        if (repeated) {
            warning(2277, "more than 1 column for variable '%s' in case file '%s' (only first column will be used)",
                    name.c_str(), name_.c_str());
            continue;
        }
        column.kind = Column::NodeColumn;
        column.node = node;
    }
    if (!missing.empty()) add_new_nodes(missing);
    for (size_t j = 0; j < missing_columns.size(); ++j) {
        Column& column = columns_[missing_columns[j]];
        Node* node = net_.find(missing[j]);
        if (node && std::none_of(columns_.begin(), columns_.end(), [&](const Column& c) { return c.node == node; })) {
            column.kind = Column::NodeColumn;
            column.node = node;
            column.made_here = true;
        }
    }
    for (Column& column : columns_) {
        if (column.kind != Column::NodeColumn) continue;
        column.kept = static_cast<int>(kept_nodes_.size());
        kept_nodes_.push_back(column.node->index);
        column.index_states();
    }
}

// Nodes the file names but the net lacks: reported, or made as the options say.
void CaseFileReader::add_new_nodes(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& n : names) {
        if (!list.empty()) list += ", ";
        list += n;
    }
    bool add = options_.new_nodes == NewNodes::AlwaysAdd || options_.new_nodes == NewNodes::AlwaysQuietlyAdd;
    if (options_.new_nodes == NewNodes::Query && options_.query) {
        std::string question = format("case file '%s' refers to these >-node-s not in >-net '%s':  %.400s",
                                      name_.c_str(), net_.name.c_str(), list.c_str());
        add = options_.query(substitute_terms(question, net_.env->language), "Add Them,Don't Add") == 0;
    }
    if (!add) {
        warning(2278, "case file '%s' referred to these >-node-s not in >-net '%s':  %.400s", name_.c_str(),
                net_.name.c_str(), list.c_str());
        return;
    }
    // New nodes go down a column of the drawing, starting a new column to
    // the right of everything when they pass the bottom.
    constexpr double kTop = 50, kStep = 60, kBottom = 700, kColumnWidth = 150;
    double x = kTop, y = kTop;
    for (Node* node : net_.nodes.nodes) x = std::max(x, node->vis_x + kColumnWidth);
    std::string added;
    try {
        for (const std::string& name : names) {
            if (!is_legal_name(name.c_str()) || net_.find(name)) continue;
            Node* node = create_node(net_, name, 0);
            node->type = NodeType::Discrete;
            node->vis_x = x;
            node->vis_y = y;
            node->has_position = true;
            y += kStep;
            if (y > kBottom) y = kTop, x += kColumnWidth;
            if (!added.empty()) added += ", ";
            added += name;
        }
    } catch (const std::bad_alloc&) {
        fail_out_of_memory(2276, format("to add all the >-node-s from file '%s'", name_.c_str()));
    }
    if (options_.new_nodes != NewNodes::AlwaysQuietlyAdd && !added.empty())
        notice(2279, "added these >-node-s to >-net '%s' from case file '%s':  %.400s", net_.name.c_str(),
               name_.c_str(), added.c_str());
}

CaseFileReader::Answer CaseFileReader::decide(Situation situation, bool can_add, const std::string& question) {
    Answer answer = sticky_[situation];
    if (answer != NoAnswer) return answer;
    switch (options_.unknown) {
        case UnknownValues::Skip: return Skip;
        case UnknownValues::Add: return AddOrExpand;
        case UnknownValues::Halt: return Halt;
        case UnknownValues::Query: break;
    }
    if (!options_.query) return Skip;
    const char* answers = !can_add ? kSkipAnswers : situation == OutOfRange ? kExpandAnswers : kAddAnswers;
    int choice = options_.query(question, answers);
    if (!can_add) choice += 2;
    switch (choice) {
        case 0: return AddOrExpand;
        case 1: return sticky_[situation] = AddOrExpand;
        case 2: return Skip;
        case 3: return sticky_[situation] = Skip;
        default: return Halt;
    }
}

void CaseFileReader::halt_reading() { halted_ = true; }

bool CaseFileReader::read_number(Column& column, const Entry& entry, CaseSlot& slot) {
    Node& node = *column.node;
    std::string_view text = entry.text;
    if (text[0] == '$') text.remove_prefix(1);
    auto number = text.empty() || !(std::isdigit(static_cast<unsigned char>(text[0])) || text[0] == '-' ||
                                    text[0] == '.')
                      ? std::nullopt
                      : read_real(text);
    if (!number) {
        error_report(2787, "illegal value '%.80s' for variable '%s', in %s", std::string(entry.text).c_str(),
                     node.name.c_str(), place(entry).c_str());
        return false;
    }
    const double x = *number;
    const char* name = node.name.c_str();
    if (node.type == NodeType::Continuous) {
        const double low = node.levels.front(), high = node.levels.back();
        const bool ascending = low <= high;
        const double bottom = ascending ? low : high, top = ascending ? high : low;
        if (x < bottom || x > top) {
            std::string question = format(
                "value %g for variable '%s' is out of bounds (as defined in node properties), in %s", x, name,
                place(entry).c_str());
            switch (decide(OutOfRange, true, question)) {
                case Skip:
                    warning(2456, "skipping value %g for variable '%s' because it is out of bounds (as defined in "
                                  "node properties), in %s",
                            x, name, place(entry).c_str());
                    slot.value = undef_value();
                    return true;
                case Halt:
                    error_report(2457, "%s", question.c_str());
                    halt_reading();
                    return false;
                default: break;
            }
            const bool below = x < bottom;
            const int threshold = (below == ascending) ? 0 : static_cast<int>(node.levels.size()) - 1;
            set_level(node, threshold, x);
            warning(2454, "range of variable '%s' expanded to include %g, to read %s", name, x, place(entry).c_str());
        }
        const int n = node.num_states();
        int s = 0;
        while (s < n - 1 && (ascending ? x >= node.levels[static_cast<size_t>(s) + 1]
                                       : x <= node.levels[static_cast<size_t>(s) + 1]))
            ++s;
        slot.state = s;
        slot.value = x;
        return true;
    }
    for (int s = 0; s < node.num_states(); ++s)
        if (node.levels[static_cast<size_t>(s)] == x) {
            slot.state = s;
            return true;
        }
    std::string question = format("value %g does not correspond to any state of variable '%s', in %s", x, name,
                                  place(entry).c_str());
    switch (decide(NoStateForNumber, true, question)) {
        case Skip:
            warning(2456, "skipping value %g for variable '%s' because it is not one of the possibilities, in %s", x,
                    name, place(entry).c_str());
            return true;
        case Halt:
            error_report(2458, "value %g is not one of the possibilities for variable '%s', in %s", x, name,
                         place(entry).c_str());
            halt_reading();
            return false;
        default: break;
    }
    const int added = node.num_states();
    if (std::any_of(node.states.begin(), node.states.end(), [](const StateInfo& s) { return !s.name.empty(); })) {
        warning(2459, ">-node '%s' is losing its state names because a state with no name (just called #%d) is "
                      "being added",
                name, added);
        set_state_names(node, nullptr);
    }
    add_states(node, kLastEntry, nullptr, 1, undef_value());
    set_level(node, added, x);
    column.index_states();
    warning(2455, "added state %d to variable '%s', with level %g, to read %s", added, name, x, place(entry).c_str());
    slot.state = added;
    return true;
}

bool CaseFileReader::read_state_name(Column& column, const Entry& entry, CaseSlot& slot) {
    Node& node = *column.node;
    std::string_view text = entry.text;
    int state = column.state_named(text);
    if (state == kUndefState && text.size() > 1 && text[0] == '#') {
        auto k = read_integer(text.substr(1));
        if (k && *k >= 0 && *k < node.num_states()) state = static_cast<int>(*k);
    }
    if (state != kUndefState) {
        slot.state = state;
        return true;
    }
    const std::string value(text);
    const char* name = node.name.c_str();
    const bool can_add = node.is_discrete() && is_legal_name(value.c_str());
    std::string question = format("value '%.80s' is not one of the possible states of variable '%s', in %s",
                                  value.c_str(), name, place(entry).c_str());
    const bool fresh = can_add && column.made_here;
    switch (fresh ? AddOrExpand : decide(UnknownName, can_add, question)) {
        case Skip:
            warning(2460, "unknown value '%.80s' for variable '%s', appears in %s", value.c_str(), name,
                    place(entry).c_str());
            return true;
        case Halt:
            error_report(2461, "%s", question.c_str());
            halt_reading();
            return false;
        default: break;
    }
    if (!can_add) {
        error_report(2462, "unknown value '%.80s' for variable '%s', so case is skipped, in %s", value.c_str(), name,
                     place(entry).c_str());
        return false;
    }
    const bool quiet = fresh && options_.new_nodes == NewNodes::AlwaysQuietlyAdd;
    if (node.has_states() &&
        std::all_of(node.states.begin(), node.states.end(), [](const StateInfo& s) { return s.name.empty(); }))
        warning(2463, "trying to add named states (e.g. '%.80s') to >-node '%s' whose states were not named, so "
                      "perhaps some of the new names actually refer to existing states",
                value.c_str(), name);
    const int added = node.num_states();
    add_states(node, kLastEntry, value.c_str(), 1, undef_value());
    column.index_states();
    if (!quiet) warning(2464, "state '%.80s' added to variable '%s' to read %s", value.c_str(), name, place(entry).c_str());
    slot.state = added;
    return true;
}

bool CaseFileReader::read_special(Column& column, const Entry& entry, CaseSlot& slot) {
    std::string fault;
    auto finding = std::make_unique<FindingRecord>();
    if (!read_case_finding(*column.node, entry.text, *finding, fault)) {
        error_report(2465, "%s, in %s", fault.c_str(), place(entry).c_str());
        return false;
    }
    slot.special = std::move(finding);
    return true;
}

bool CaseFileReader::read_entry(Column& column, const Entry& entry, CaseSlot& slot) {
    std::string_view text = entry.text;
    static const double kUndef = undef_value();
    slot.state = kUndefState;
    slot.value = kUndef;
    if (slot.special) slot.special.reset();
    if (text.empty() || (text.size() == 1 && (text[0] == '?' || text[0] == '*' || text[0] == ' '))) return true;
    if (text == "NA" || text == "N/A") {
        slot.state = column.state_named(text);
        return true;
    }
    const char c = text[0];
    if (!entry.quoted && kChars.starts_special[static_cast<unsigned char>(c)]) return read_special(column, entry, slot);
    if (column.numeric && !is_letter(c) && c != '#' && c != '_') return read_number(column, entry, slot);
    return read_state_name(column, entry, slot);
}

// Reads one data row into row; false when the row is faulty (already reported).
bool CaseFileReader::read_row(CaseRow& row) {
    const int width = static_cast<int>(columns_.size());
    const int count = static_cast<int>(entries_.size());
    if (count > width) {
        error_report(2280, "too many entries (the preceeding row only had %d, but this has more), in %s", width,
                     place(entries_[static_cast<size_t>(width)]).c_str());
        return false;
    }
    if (count < width) {
        Entry end;
        end.start = entries_.back().start + static_cast<long>(entries_.back().text.size());
        error_report(2281, "too few entries (%d, but preceeding row had %d), in %s", count, width,
                     place(end).c_str());
        return false;
    }
    row.slots.resize(kept_nodes_.size());
    row.id = -1;
    row.weight = 1.0;
    row.line = line_number_;
    row.position = line_position_;
    for (int k = 0; k < width; ++k) {
        Column& column = columns_[static_cast<size_t>(k)];
        const Entry& entry = entries_[static_cast<size_t>(k)];
        switch (column.kind) {
            case Column::Ignored: break;
            case Column::Id: row.id = read_id(entry.text); break;
            case Column::Weight: {
                auto w = read_real(entry.text);
                if (!w) {
                    error_report(2282, "illegal number '%.80s' for NumCases, in %s", std::string(entry.text).c_str(),
                                 place(entry).c_str());
                    return false;
                }
                row.weight = *w;
                break;
            }
            case Column::NodeColumn:
                if (!read_entry(column, entry, row.slots[static_cast<size_t>(column.kept)])) return false;
                break;
        }
    }
    return true;
}

bool CaseFileReader::next(CaseRow& row) {
    std::string_view line;
    while (!halted_ && read_line(line)) {
        split_entries(line);
        if (entries_.empty()) continue;
        ++rows_seen_;
        if (rows_seen_ % kProgressRows == 0) {
            if (Progress(net_.env, "reading case file").update(fraction_read())) {
                warning(2466, "only %ld cases were read before action was halted (%2.0f%%)", cases_read_,
                        100.0 * fraction_read());
                halt_reading();
                return false;
            }
        }
        if (read_row(row)) {
            ++cases_read_;
            return true;
        }
    }
    return false;
}

void CaseFileReader::seek(long position) {
    source_.seek(position);
    halted_ = false;
}

CaseTable read_case_file(const Stream& file, Net& net, const CaseReadOptions& options) {
    CaseFileReader reader(file, net, options);
    CaseTable table;
    table.file_name = file.name;
    table.columns = reader.columns();
    const size_t width = table.columns.size();
    CaseRow row;
    while (reader.next(row)) {
        const size_t c = table.num_cases();
        table.weights.push_back(row.weight * options.degree);
        table.ids.push_back(row.id);
        table.lines.push_back(row.line);
        for (size_t k = 0; k < width; ++k) {
            CaseSlot& slot = row.slots[k];
            table.states.push_back(slot.state);
            if (!is_undef(slot.value) && table.values.empty()) table.values.assign(c * width + k, undef_value());
            if (!table.values.empty()) table.values.push_back(slot.value);
            if (slot.special) table.nonsimple.emplace(c * width + k, std::move(*slot.special));
            slot.special.reset();
        }
    }
    return table;
}

CaseReadOptions environment_read_options(Environment& env, double degree) {
    CaseReadOptions options;
    options.degree = degree;
    if (env.case_query) {
        options.unknown = UnknownValues::Query;
        options.query = env.case_query;
    } else {
        options.unknown = env.unknown_values_policy == 2   ? UnknownValues::Add
                          : env.unknown_values_policy == 3 ? UnknownValues::Halt
                                                           : UnknownValues::Skip;
    }
    return options;
}

CaseTable read_case_file(const Stream& file, Net& net, double degree) {
    return read_case_file(file, net, environment_read_options(*net.env, degree));
}

}  // namespace ravelo
