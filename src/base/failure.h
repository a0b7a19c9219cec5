// The one path by which core code reports: make a report, and for failures
// that end the operation throw a Failure carrying it to the checking frame.
#pragma once
#include <string>

#include "base/report.h"

namespace ravelo {

// Thrown inside the core when an operation cannot go on; the report is made.
struct Failure {
    Report* report;
};

// A machine-level fault detected by the engine (stands for a hardware trap).
struct SystemFault {
    const char* what;
};

[[noreturn]] void fail(int number, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
[[noreturn]] void fail_text(int number, const std::string& message);
Report* error_report(int number, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
Report* warning(int number, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
Report* notice(int number, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

// "not enough memory <what>" or "... (<bytes> needed)"; bytes < 0 when unknown.
Report* out_of_memory_report(int number, const std::string& what, double bytes = -1);
[[noreturn]] void fail_out_of_memory(int number, const std::string& what, double bytes = -1);

constexpr int kAssertionNumber = 2600;

// Reports "<file>-<line> (<condition>)." as an internal error and throws.
[[noreturn]] void internal_failure(const char* file, int line, const char* condition);

#define RAVELO_ASSERT(cond) \
    ((cond) ? (void)0 : ::ravelo::internal_failure(__FILE__, __LINE__, #cond))

}  // namespace ravelo
