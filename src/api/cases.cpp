// Case files and case sets family.
#include <algorithm>
#include <cmath>
#include <mutex>

#include "api/handles.h"
#include "base/stream.h"
#include "base/text.h"
#include "infer/findings.h"
#include "infer/update.h"
#include "io/case_file.h"
#include "learn/caseset.h"

using namespace ravelo;

namespace {

caseset_cs* handle_of(CaseSet* c) { return reinterpret_cast<caseset_cs*>(c); }

CaseSet& checked_caseset(ApiFrame& frame, const caseset_cs* handle) {
    ApiFrame::check(handle, kCaseSetHandle);
    CaseSet* cases = core_of<CaseSet>(handle);
    frame.use(*cases->env);
    return *cases;
}

// A character argument as reports show it.
std::string char_text(int c) {
    if (c == '\t') return "a tab";
    if (c == ' ') return "a space";
    if (c > ' ' && c < 127) return format("'%c'", c);
    return format("character code %d", c);
}

// Restores the findings of a list's nodes unless the case was entered whole.
struct FindingsSnapshot {
    std::vector<std::pair<Node*, FindingRecord>> saved;
    bool keep = false;
    explicit FindingsSnapshot(const std::vector<Node*>& nodes) {
        for (Node* n : nodes) saved.emplace_back(n, n->finding);
    }
    ~FindingsSnapshot() {
        if (keep) return;
        for (auto& [node, finding] : saved) {
            node->finding = std::move(finding);
            findings_changed(*node);
        }
    }
};

void enter_slot(Node& node, const CaseSlot& slot) {
    if (slot.special) enter_likelihood(node, slot.special->likelihood.data());
    else if (!is_undef(slot.value)) enter_value(node, slot.value);
    else if (slot.state >= 0) enter_finding(node, slot.state);
}

// The stream's open reader when it can go on from where it is, else a new one.
CaseFileReader& reader_for(Stream& stream, Net& net, long wanted) {
    auto* kept = static_cast<CaseFileReader*>(stream.case_reader.get());
    const bool continues = kept && kept->still_fits(net) && !kept->halted() &&
                           (wanted == kNextCase || wanted == kept->next_position());
    if (!continues) {
        stream.case_reader.reset();
        auto reader = std::make_shared<CaseFileReader>(stream, net, environment_read_options(*stream.env, 1.0));
        if (wanted >= 0) reader->seek(wanted);
        else if (wanted == kNextCase && stream.next_case_position >= 0) reader->seek(stream.next_case_position);
        stream.case_reader = reader;
    }
    return *static_cast<CaseFileReader*>(stream.case_reader.get());
}

}  // namespace

int SetCaseFileDelimChar_ns(int newchar, environ_ns* env) {
    ApiFrame frame("SetCaseFileDelimChar_ns");
    return frame.run(-1, [&] {
        Environment& e = frame.environment(env);
        const int previous = e.case_delimiter;
        if (newchar == -1) return previous;
        if (newchar != '\t' && newchar != ' ' && newchar != ',')
            fail(5574, "argument 'newchar' should be %d (means query only), or a comma, space or tab (it is %s)", -1,
                 char_text(newchar).c_str());
        if (newchar != ',' && (e.missing_data_char == 0 || e.missing_data_char == ' '))
            fail(5575, "argument 'newchar' should be a comma (it is %s), unless the missing data symbol is not a "
                       "space or absent (it is %s)",
                 char_text(newchar).c_str(), e.missing_data_char ? "a space" : "absent");
        e.case_delimiter = newchar;
        return previous;
    });
}

int SetMissingDataChar_ns(int newchar, environ_ns* env) {
    ApiFrame frame("SetMissingDataChar_ns");
    return frame.run(-1, [&] {
        Environment& e = frame.environment(env);
        const int previous = e.missing_data_char;
        if (newchar == -1) return previous;
        if (newchar != 0 && newchar != ' ' && newchar != '*' && newchar != '?')
            fail(5576, "argument 'newchar' should be %d (means query only), 0 (means absent), or a space, *, ? or - "
                       "(it is %s)",
                 -1, char_text(newchar).c_str());
        if ((newchar == 0 || newchar == ' ') && e.case_delimiter != ',')
            fail(5577, "argument 'newchar' cannot be absent (0) or a space (it is %s), unless the delimeter is a "
                       "comma (it is %s)",
                 newchar ? "a space" : "0", char_text(e.case_delimiter).c_str());
        e.missing_data_char = newchar;
        return previous;
    });
}

void SetCaseFileQueryCallback_ns(CaseFileQuery_ns query, void* user_data, int unasked, environ_ns* env) {
    ApiFrame frame("SetCaseFileQueryCallback_ns");
    frame.run([&] {
        Environment& e = frame.environment(env);
        if (unasked < SKIP_UNKNOWN_VALUES || unasked > HALT_ON_UNKNOWN_VALUES)
            fail(5578, "argument 'unasked' should be SKIP_UNKNOWN_VALUES, ADD_UNKNOWN_VALUES or "
                       "HALT_ON_UNKNOWN_VALUES (it is %d)",
                 unasked);
        e.unknown_values_policy = unasked;
        e.case_query = nullptr;
        if (query)
            e.case_query = [query, user_data](const std::string& message, const std::string& answers) {
                return query(message.c_str(), answers.c_str(), user_data);
            };
    });
}

long WriteNetFindings_bn(const nodelist_bn* nodes, stream_ns* file, long ID_num, double freq) {
    ApiFrame frame("WriteNetFindings_bn");
    return frame.run(-1L, [&] {
        NodeList& list = checked_list(frame, nodes);
        Stream& stream = checked_stream(frame, file);
        if (ID_num < -1) fail(5522, "argument 'ID_num' is less than -1 (it is %ld)", ID_num);
        if (!(freq >= 0) && freq != -1) fail(5523, "argument 'freq' is less than 0 (it is %g)", freq);
        return write_findings_case(list.nodes, stream, ID_num, freq);
    });
}

void ReadNetFindings2_bn(long* case_posn, stream_ns* file, bool_ns add, const nodelist_bn* nodes, long* ID_num,
                         double* freq) {
    ApiFrame frame("ReadNetFindings2_bn");
    frame.run([&] {
        NodeList& list = checked_list(frame, nodes);
        Stream& stream = checked_stream(frame, file);
        const long wanted = case_posn ? *case_posn : kFirstCase;
        if (wanted == kNoMoreCases)
            fail(2358, "called with argument '*case_posn' being NO_MORE_CASES (to read file '%s')",
                 stream.name.c_str());
        if (wanted < 0 && wanted != kFirstCase && wanted != kNextCase)
            fail(5643, "the case position argument is less than 0 (it is %g)", static_cast<double>(wanted));
        Net* net = list.net ? list.net : list.nodes.empty() ? nullptr : list.nodes.front()->net;
        if (!net) fail(5644, "argument 'nodes' holds no >-node-s, so there is no >-net to read case file '%s' for",
                       stream.name.c_str());
        CaseFileReader& reader = reader_for(stream, *net, wanted);
        CaseRow row;
        if (!reader.next(row)) {
            if (!case_posn)
                fail(2359, "file '%s' has no cases (and called with argument case_posn = NULL)", stream.name.c_str());
            *case_posn = kNoMoreCases;
            stream.next_case_position = reader.next_position();
            return;
        }
        FindingsSnapshot snapshot(list.nodes);
        const std::vector<int>& columns = reader.columns();
        for (Node* node : list.nodes) {
            auto column = std::find(columns.begin(), columns.end(), node->index);
            if (!add) retract_findings(*node);
            if (column != columns.end()) enter_slot(*node, row.slots[static_cast<size_t>(column - columns.begin())]);
        }
        if (net->auto_update && tree_of(*net)) update_beliefs(*net);
        snapshot.keep = true;
        stream.next_case_position = reader.next_position();
        if (case_posn) *case_posn = row.position;
        if (ID_num) *ID_num = row.id;
        if (freq) *freq = row.weight;
    });
}

caseset_cs* NewCaseset_cs(const char* name, environ_ns* env) {
    ApiFrame frame("NewCaseset_cs");
    return frame.run<caseset_cs*>(nullptr, [&] {
        Environment& e = frame.environment(env);
        return handle_of(e.store.make<CaseSet>(&e, name ? name : ""));
    });
}

void DeleteCaseset_cs(caseset_cs* cases) {
    ApiFrame frame("DeleteCaseset_cs");
    frame.run([&] {
        CaseSet& c = checked_caseset(frame, cases);
        c.files.clear();
        c.files.shrink_to_fit();
        c.kill();
    });
}

void AddFileToCaseset_cs(caseset_cs* cases, stream_ns* file, double degree, const char* options) {
    ApiFrame frame("AddFileToCaseset_cs");
    frame.run([&] {
        CaseSet& c = checked_caseset(frame, cases);
        Stream& stream = checked_stream(frame, file);
        ApiFrame::check_no_options(options);
        if (!std::isfinite(degree)) fail(5579, "argument 'degree' is not a finite number (it is %g)", degree);
        if (!c.files.empty())
            fail(3368, "with this version of >-Ravelo, you can only add 1 file to a >-Caseset, so can't add file '%s'",
                 stream.name.c_str());
        c.files.push_back({&stream, degree});
    });
}

void WriteCaseset_cs(const caseset_cs* cases, stream_ns* file, const char* options) {
    ApiFrame frame("WriteCaseset_cs");
    frame.run([&] {
        const CaseSet& c = checked_caseset(frame, cases);
        Stream& target = checked_stream(frame, file);
        ApiFrame::check_no_options(options);
        if (c.files.size() > 1)
            fail(2662, "this version of >-Ravelo can not write >-caseset_cs-s consisting of more than one file");
        std::string text;
        if (!c.files.empty()) {
            if (c.files.front().stream->is_dead())
                fail(2663, "the file of >-caseset_cs '%s' was deleted before its cases were written", c.name.c_str());
            text = read_stream_text(*c.files.front().stream);
        }
        target.case_appender.reset();
        write_stream_text(target, text);
    });
}
