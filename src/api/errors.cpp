// Errors family.
#include <cstdarg>

#include "api/handles.h"
#include "base/faults.h"
#include "base/report.h"
#include "base/text.h"

using namespace ravelo;

namespace {

Report& checked_report(const report_ns* handle) {
    ApiFrame::check(handle, kReportHandle);
    return *core_of<Report>(handle);
}

}  // namespace

report_ns* NewError_ns(int number, errseverity_ns severity, errcond_ns cond, const char* mesg, ...) {
    ApiFrame frame("NewError_ns");
    va_list args;
    va_start(args, mesg);
    report_ns* made = frame.run<report_ns*>(nullptr, [&]() -> report_ns* {
        Environment* env = current_environment();
        if (env) frame.use(*env);
        if (!mesg) fail(5511, "NULL passed for argument 'mesg'");
        int level = raw_enum(severity);
        if (level < NULL_ERR || level > INTERNAL_ERR)
            fail(5512, "argument 'severity' is %d, but it should be between %d and %d inclusive",
                 level, 0, 6);
        return handle_of(make_report(env, number, level, vformat(mesg, args), raw_enum(cond)));
    });
    va_end(args);
    return made;
}

report_ns* GetError_ns(environ_ns* env, errseverity_ns severity, const report_ns* after) {
    ApiFrame frame("GetError_ns");
    return frame.run<report_ns*>(nullptr, [&]() -> report_ns* {
        Environment& e = frame.environment(env);
        const Report* from = after ? &checked_report(after) : nullptr;
        return handle_of(next_report(e, raw_enum(severity), from));
    });
}

int ErrorNumber_ns(const report_ns* error) {
    ApiFrame frame("ErrorNumber_ns");
    return frame.run(0, [&] {
        int n = checked_report(error).number;
        return n < 0 ? -n : n;
    });
}

const char* ErrorMessage_ns(const report_ns* error) {
    ApiFrame frame("ErrorMessage_ns");
    return frame.run<const char*>(nullptr, [&] { return checked_report(error).message.c_str(); });
}

errseverity_ns ErrorSeverity_ns(const report_ns* error) {
    ApiFrame frame("ErrorSeverity_ns");
    return frame.run(NULL_ERR,
                     [&] { return static_cast<errseverity_ns>(checked_report(error).severity); });
}

bool_ns ErrorCategory_ns(errcond_ns cond, const report_ns* error) {
    ApiFrame frame("ErrorCategory_ns");
    return frame.run(0, [&]() -> bool_ns { return (checked_report(error).conditions & raw_enum(cond)) != 0; });
}

void ClearError_ns(report_ns* error) {
    ApiFrame frame("ClearError_ns");
    frame.run([&] { clear_report(&checked_report(error)); });
}

void ClearErrors_ns(environ_ns* env, errseverity_ns severity) {
    ApiFrame frame("ClearErrors_ns");
    frame.run([&] { clear_reports(frame.environment(env), raw_enum(severity)); });
}

int TestFaultRecovery_ns(environ_ns* env, int test_num) {
    ApiFrame frame("TestFaultRecovery_ns");
    return frame.run(-1, [&]() -> int {
        frame.environment(env);
        int kind = fault_test_kind(test_num);
        if (kind != 1) return kind;
        // The parameter report stands for argument checking, which level 1 turns off.
        if (test_num == 1 && checking_level() < QuickCheck) return 0;
        ApiFrame::guard([&] { provoke_fault(test_num); });
        return 1;
    });
}
