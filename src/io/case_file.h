// Case files: reading rows of cases for a net, one at a time or all at once,
// and writing a net's findings as one row.
#pragma once
#include <cstdio>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "io/case_source.h"
#include "io/case_table.h"

namespace ravelo {

// What the reader does with a value the net cannot take (a number out of a
// node's range, a number matching no state, an unknown state name).
enum class UnknownValues { Query, Skip, Add, Halt };
// Whether nodes named in a file but missing from the net are created.
enum class NewNodes { DontAdd, Query, AlwaysAdd, AlwaysQuietlyAdd };

// Asks the user one question: the message and the answers, separated by
// commas; returns the index of the answer chosen (anything else halts).
using CaseQuery = std::function<int(const std::string& message, const std::string& answers)>;

struct CaseReadOptions {
    double degree = 1.0;                       // multiplies each case's weight
    UnknownValues unknown = UnknownValues::Skip;
    NewNodes new_nodes = NewNodes::DontAdd;
    CaseQuery query;                           // asked under Query; none: Skip
    bool has_heading = true;                   // false: columns are X0, X1, ...
};

// One column's entry of a case, as read.
struct CaseSlot {
    int state = kUndefState;
    double value = std::numeric_limits<double>::quiet_NaN();  // UNDEF when none
    std::unique_ptr<FindingRecord> special;  // a non-simple finding
};

struct CaseRow {
    std::vector<CaseSlot> slots;  // one per kept column, in column order
    long id = -1;
    double weight = 1.0;
    long line = 0;
    long position = -1;  // offset of the row's first character in the file
};

// The position codes of reading one case.
constexpr long kNoMoreCases = -13;
constexpr long kNextCase = -14;
constexpr long kFirstCase = -15;

class CaseFileReader {
public:
    // Opens the file, checks its tag and reads its heading.
    CaseFileReader(const Stream& file, Net& net, CaseReadOptions options = {});
    ~CaseFileReader();
    CaseFileReader(const CaseFileReader&) = delete;
    CaseFileReader& operator=(const CaseFileReader&) = delete;

    // Reads the next good row into row; false at the end of the file or
    // after a halt.  Faulty rows are reported and passed over.
    bool next(CaseRow& row);
    // Continues reading at an offset returned as a row's position.
    void seek(long position);

    // The net position of the node each kept column names.
    const std::vector<int>& columns() const { return kept_nodes_; }
    bool halted() const { return halted_; }
    // Whether the net's nodes still have the states the reader took from
    // them (a reader kept between calls must not outlive a change).
    bool still_fits(const Net& net) const;
    long cases_read() const { return cases_read_; }
    double fraction_read() const;
    const std::string& file_name() const { return name_; }
    // Where reading goes on: the offset of the line after the last row read.
    long next_position() const { return source_.offset(); }

private:
    struct Column;
    struct Entry {
        std::string_view text;
        bool quoted = false;
        long start = 0;  // character position in the line, from 1
    };
    enum Situation { OutOfRange, NoStateForNumber, UnknownName, kSituations };
    enum Answer { AddOrExpand, Skip, Halt, NoAnswer };

    bool read_line(std::string_view& line);
    void split_entries(std::string_view line);
    void read_heading();
    void check_tag(std::string_view line);
    void add_new_nodes(const std::vector<std::string>& names);
    bool read_row(CaseRow& row);
    bool read_entry(Column& column, const Entry& entry, CaseSlot& slot);
    bool read_number(Column& column, const Entry& entry, CaseSlot& slot);
    bool read_state_name(Column& column, const Entry& entry, CaseSlot& slot);
    bool read_special(Column& column, const Entry& entry, CaseSlot& slot);
    Answer decide(Situation situation, bool can_add, const std::string& question);
    std::string place(const Entry& entry) const;
    void halt_reading();

    const Stream& file_;
    Net& net_;
    CaseReadOptions options_;
    std::string name_;
    bool c45_dialect_ = false;
    CaseSource source_;
    std::vector<Column> columns_;
    std::vector<int> kept_nodes_;
    std::vector<Entry> entries_;
    int id_column_ = -1, weight_column_ = -1;
    long line_number_ = 0;
    long line_position_ = 0;
    long cases_read_ = 0;
    long rows_seen_ = 0;
    bool halted_ = false;
    Answer sticky_[kSituations] = {NoAnswer, NoAnswer, NoAnswer};
    double next_progress_ = 0;
};

// Reads every case of the file, with the options given.
CaseTable read_case_file(const Stream& file, Net& net, const CaseReadOptions& options);

// The options the environment's settings give (its query callback and the
// policy it takes without one).
CaseReadOptions environment_read_options(Environment& env, double degree);

// Appends the current findings of nodes as one row to file, with the tag
// and heading first when the file is empty; returns the row's offset.
long write_findings_case(const std::vector<Node*>& nodes, Stream& file, long id, double weight);

// The entry delimiter a file takes: a comma for ".csv" files, else the
// environment's setting.
char case_delimiter_for(const Stream& file);

}  // namespace ravelo
