#include "base/frame.h"

#include <mutex>

#include "base/text.h"
#include "base/thread_state.h"

namespace ravelo {

const HandleKind kEnvironHandle{kEnvironType, 5100, "NULL passed for >-Enviro", 5139,
                                "deleted or damaged >-Enviro passed", 0, nullptr};
const HandleKind kReportHandle{kReportType, 5110, "NULL passed for >-rept", 5150,
                               "deleted or damaged >-rept passed", 0, nullptr};
const HandleKind kStreamHandle{kStreamType, 5108, "NULL passed for >-FileSpec", 5148,
                               "deleted or damaged >-FileSpec passed", 0, nullptr};
const HandleKind kRandGenHandle{kRandGenType, 5109, "NULL passed for >-RandGen", 5149,
                                "deleted or damaged >-RandGen passed", 0, nullptr};

namespace {

// The process-wide interface lock; a lock without its tag is taken as absent.
struct ApiLock : Tagged {
    ApiLock() : Tagged(kLockType | kStaticBit) {}
    std::recursive_mutex mutex;
};

ApiLock& api_lock() {
    static ApiLock lock;
    return lock;
}

void lock_api() {
    ApiLock& l = api_lock();
    if (l.type_code() == kLockType) l.mutex.lock();
}

void unlock_api() {
    ApiLock& l = api_lock();
    if (l.type_code() == kLockType) l.mutex.unlock();
}

}  // namespace

std::string& current_function_text() {
    thread_local std::string text;
    return text;
}

bool is_callback_marker(const std::string& text) { return text.rfind("Callback", 0) == 0; }

ApiFrame::ApiFrame(const char* function) : function_(function) {
    lock_api();
    std::fegetenv(&saved_fenv_);
    std::feclearexcept(FE_ALL_EXCEPT);
    std::fesetround(FE_TONEAREST);
#if defined(__GLIBC__)
    fedisableexcept(FE_ALL_EXCEPT);
#endif
    saved_environment_ = current_environment();
    std::string& current = current_function_text();
    saved_function_ = current;
    if (current.empty()) {
        current = function;
    } else if (is_callback_marker(current)) {
        size_t colon = current.find(':');
        current = current.substr(0, colon == std::string::npos ? current.size() : colon + 1) + " " +
                  function;
    } else {
        std::string previous = current;
        make_report(nullptr, kReentryNumber, kError,
                    format("Thread is calling a >-Ravelo API function >-%s before the previous "
                           "one >-%s is finished.",
                           function, previous.c_str()));
        current = function;
    }
}

ApiFrame::~ApiFrame() {
    current_function_text() = saved_function_;
    set_current_environment(saved_environment_);
    std::feclearexcept(FE_ALL_EXCEPT);
    std::fesetenv(&saved_fenv_);
    unlock_api();
}

void ApiFrame::check(const void* handle, const HandleKind& kind, const char* argument) {
    std::string prefix = argument ? format("in argument '%s', ", argument) : std::string();
    if (!handle) fail_text(kind.null_number, prefix + kind.null_text);
    if (checking_level() < 2) return;
    std::uint16_t tag = tag_of(handle);
    if ((tag & kTypeMask) == kind.type) return;
    if (tag == kDeadTag && kind.deleted_number)
        fail_text(kind.deleted_number, prefix + kind.deleted_text);
    fail_text(kind.damaged_number, prefix + kind.damaged_text);
}

Environment& ApiFrame::environment(environ_ns* handle) {
    const void* env = handle ? static_cast<const void*>(handle) : default_environment();
    if (!env) fail_text(kEnvironHandle.null_number, kEnvironHandle.null_text);
    if (checking_level() >= 2) check(env, kEnvironHandle);
    Environment* e = core_of<Environment>(env);
    use(*e);
    return *e;
}

void ApiFrame::use(Environment& env) {
    set_current_environment(&env);
    if (checking_level() >= 2 && env.life_state != kLifeInitialized)
        fail(5101, "This function was called before Ravelo finished initialization, or while it "
                   "was closing");
}

void ApiFrame::absorb(std::exception_ptr failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const Failure&) {
        // Its report is made already.
    } catch (const std::bad_alloc&) {
        out_of_memory_report(5134, format("to finish function >-%s",
                                          current_function_text().c_str()));
    } catch (const std::exception& e) {
        make_report(nullptr, kUnhandledLibraryNumber, kInternalError,
                    format("unhandled standard library error: %s", e.what()));
    } catch (...) {
        make_report(nullptr, kUnhandledSystemNumber, kInternalError,
                    "unhandled system-level error");
    }
}

}  // namespace ravelo
