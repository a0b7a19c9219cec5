#include "base/failure.h"

#include <cstdarg>
#include <cstring>

#include "base/text.h"

namespace ravelo {
namespace {

Report* make_formatted(int number, int severity, const char* fmt, va_list args) {
    return make_report(nullptr, number, severity, vformat(fmt, args));
}

std::string base_name(const char* path) {
    const char* slash = std::strrchr(path, '/');
    const char* backslash = std::strrchr(slash ? slash : path, '\\');
    std::string name = backslash ? backslash + 1 : slash ? slash + 1 : path;
    size_t dot = name.rfind('.');
    if (dot != std::string::npos) name.resize(dot);
    return name;
}

}  // namespace

void fail(int number, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    Report* r = make_formatted(number, kError, fmt, args);
    va_end(args);
    throw Failure{r};
}

void fail_text(int number, const std::string& message) {
    throw Failure{make_report(nullptr, number, kError, message)};
}

Report* error_report(int number, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    Report* r = make_formatted(number, kError, fmt, args);
    va_end(args);
    return r;
}

Report* warning(int number, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    Report* r = make_formatted(number, kWarning, fmt, args);
    va_end(args);
    return r;
}

Report* notice(int number, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    Report* r = make_formatted(number, kNotice, fmt, args);
    va_end(args);
    return r;
}

Report* out_of_memory_report(int number, const std::string& what, double bytes) {
    std::string text = bytes < 0 ? format("not enough memory %s", what.c_str())
                                 : format("not enough memory %s (%s needed)", what.c_str(),
                                          format("%.4g bytes", bytes).c_str());
    return make_report(nullptr, number, kError, text, kOutOfMemoryCondition);
}

void fail_out_of_memory(int number, const std::string& what, double bytes) {
    throw Failure{out_of_memory_report(number, what, bytes)};
}

void internal_failure(const char* file, int line, const char* condition) {
    // A check that fails while its own report is being made must not recurse.
    thread_local bool reporting = false;
    if (reporting) throw Failure{critical_report()};
    reporting = true;
    Report* r;
    try {
        r = make_report(nullptr, kAssertionNumber, kInternalError,
                        format("%s-%d (%s).", base_name(file).c_str(), line, condition));
    } catch (...) {
        reporting = false;
        throw;
    }
    reporting = false;
    throw Failure{r};
}

}  // namespace ravelo
