#include <cstdio>

#include "base/failure.h"
#include "base/numbers.h"
#include "base/stream.h"
#include "io/case_file.h"
#include "io/case_findings.h"

namespace ravelo {

namespace {

constexpr std::size_t kWriteBuffer = std::size_t(1) << 20;

// The file's size, opening it for appending on first use.
long open_for_cases(Stream& file) {
    if (!file.is_file) {
        if (file.borrowed) {
            file.owned.assign(file.borrowed, static_cast<size_t>(file.borrowed_length));
            file.borrowed = nullptr;
            file.borrowed_length = 0;
        }
        return static_cast<long>(file.owned.size());
    }
    if (!file.case_appender) {
        std::FILE* f = std::fopen(file.name.c_str(), "ab");
        if (!f) fail(3442, "couldn't open file '%s' for writing", file.name.c_str());
        std::setvbuf(f, nullptr, _IOFBF, kWriteBuffer);
        file.case_appender.reset(f, [](std::FILE* p) { std::fclose(p); });
        std::fseek(f, 0, SEEK_END);
        file.case_file_end = std::ftell(f);
    }
    return file.case_file_end;
}

void append(Stream& file, const std::string& text) {
    if (!file.is_file) {
        file.owned += text;
        return;
    }
    std::FILE* f = file.case_appender.get();
    if (std::fwrite(text.data(), 1, text.size(), f) != text.size())
        fail(3443, "disk error writing file '%s'", file.name.c_str());
    file.case_file_end += static_cast<long>(text.size());
}

}  // namespace

char case_delimiter_for(const Stream& file) {
    const std::string& name = file.name;
    const size_t dot = name.rfind('.');
    if (dot != std::string::npos && name.size() - dot == 4 && (name[dot + 1] | 0x20) == 'c' &&
        (name[dot + 2] | 0x20) == 's' && (name[dot + 3] | 0x20) == 'v')
        return ',';
    return static_cast<char>(file.env ? file.env->case_delimiter : '\t');
}

namespace {

// The line of one case, kept from call to call for its capacity.  It is
// fetched once per case: in a shared library every use of a thread_local
// name costs a lookup.
std::string& case_line() {
    thread_local std::string text;
    return text;
}

// The node's entry when its finding is one named state (the common case,
// kept free of the general entry writer's tests); false otherwise.
bool append_state_name(const Node& node, std::string& text) {
    const FindingRecord& f = node.finding;
    if (f.has_value || f.state < 0 || static_cast<size_t>(f.state) >= node.states.size()) return false;
    const std::string& name = node.states[static_cast<size_t>(f.state)].name;
    if (name.empty()) return false;
    text.append(name.data(), name.size());
    return true;
}

}  // namespace

long write_findings_case(const std::vector<Node*>& nodes, Stream& file, long id, double weight) {
    const char delimiter = case_delimiter_for(file);
    const int missing = file.env ? file.env->missing_data_char : '*';
    file.case_reader.reset();
    long position = open_for_cases(file);
    // A case must fill the columns of the heading already written, or its row would not read back.
    if (position != 0 && file.heading_has_id >= 0 && file.heading_has_id != (id >= 0))
        fail(5524, "can't write the case %s an IDnum, because the heading of the case file '%s' %s IDnum column",
             id >= 0 ? "with" : "without", file.name.c_str(), id >= 0 ? "has no" : "has an");
    if (position != 0 && file.heading_has_weight >= 0 && file.heading_has_weight != (weight >= 0))
        fail(5525, "can't write the case %s a NumCases entry, because the heading of the case file '%s' %s NumCases column",
             weight >= 0 ? "with" : "without", file.name.c_str(), weight >= 0 ? "has no" : "has a");
    std::string& text = case_line();
    text.clear();
    if (position == 0) {
        file.heading_has_id = id >= 0;
        file.heading_has_weight = weight >= 0;
        text = "// ~->[CASE-1]->~\r\n\r\n";
        if (id >= 0) (text += " IDnum") += delimiter;
        if (weight >= 0) (text += "NumCases") += delimiter;
        for (size_t k = 0; k < nodes.size(); ++k) {
            if (k) text += delimiter;
            text += nodes[k]->name;
        }
        text += "\n";
        position = static_cast<long>(text.size());
    }
    if (id >= 0) (text += std::to_string(id)) += delimiter;
    if (weight >= 0) (text += real_text(weight)) += delimiter;
    for (size_t k = 0; k < nodes.size(); ++k) {
        if (k) text += delimiter;
        const Node& node = *nodes[k];
        if (append_state_name(node, text)) continue;
        const size_t before = text.size();
        append_case_entry(node, text);
        if (text.size() == before && missing) text += static_cast<char>(missing);
    }
    text += "\n";
    append(file, text);
    return position;
}

}  // namespace ravelo
