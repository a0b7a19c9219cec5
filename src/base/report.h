// Reports: the records every failure, warning and notice becomes.  Each
// thread keeps its reports of an environment in a root group; reports are
// throttled by how many the thread already holds.
#pragma once
#include <string>
#include <thread>
#include <vector>

#include "base/tags.h"

namespace ravelo {

class Environment;

enum Severity : int {
    kNullError = 0,
    kFalseAlert = 1,
    kReportSeverity = 2,
    kNotice = 3,
    kWarning = 4,
    kError = 5,
    kInternalError = 6,
};

constexpr int kOutOfMemoryCondition = 0x08;
constexpr int kMaxMessageLength = 511;
constexpr int kMaxFunctionNameLength = 100;

struct Report : Tagged {
    Report() : Tagged(kReportType) {}

    Environment* env = nullptr;
    std::thread::id thread;
    int number = 0;           // stored negative, shown positive
    int severity = kNullError;
    int display_result = 1;
    std::string message;
    int display = 4;          // not yet displayed
    int conditions = 0;
    Report* group = nullptr;  // a root group points to itself
    std::vector<Report*> contents;
    int fixed_status = -1;
    std::string function;     // the interface function during which it was made
    int held = 0;             // root groups only: live reports the thread holds
    std::string context;      // what was under way, e.g. "parsing expression"
    int position = -1;        // where in that text the fault was found, or -1
};

const char* severity_word(int severity);

// Makes a report in env (NULL: the thread's current or the default environment).
// May return a stock report when the thread holds too many.
Report* make_report(Environment* env, int number, int severity, const std::string& message,
                    int conditions = 0);

// Deletes a report and everything in it; an emptied root group goes too.
void clear_report(Report* report);
// Deletes the reports of env of at most the given severity, depth first,
// of every thread or only of the given one.
void clear_reports(Environment& env, int severity);
void clear_reports(Environment& env, int severity, std::thread::id thread);
// The calling thread's next live report of at least severity after 'after'.
Report* next_report(Environment& env, int severity, const Report* after);
// Frees every report of env, as its closing does.
void drop_all_reports(Environment& env);

bool is_stock_report(const Report* report);
Report* critical_report();
// The number of reports the calling thread has tried to make.
long reports_attempted();

// While it lives, the reports the thread makes in env go inside one report
// (for instance the reasons an operation gives up), whose severity rises to
// the highest of them.
class ReportGroup {
public:
    ReportGroup(int number, int severity, const std::string& message);
    ~ReportGroup();
    ReportGroup(const ReportGroup&) = delete;
    ReportGroup& operator=(const ReportGroup&) = delete;
    Report* report() const { return report_; }

private:
    Report* report_;
    bool open_ = false;
};

}  // namespace ravelo
