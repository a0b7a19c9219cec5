// The checking frame that wraps the body of every interface function: the
// API lock, floating-point state, re-entry guard, environment and handle
// checks, and the guard that turns every stray failure into a report.
#pragma once
#include <cfenv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <mutex>
#include <new>
#include <string>

#include "base/environment.h"
#include "base/failure.h"
#include "base/float_state.h"

struct environ_ns;

namespace ravelo {

// How a kind of handle is checked and named in reports.
struct HandleKind {
    std::uint16_t type;
    int null_number;
    const char* null_text;
    int damaged_number;
    const char* damaged_text;
    int deleted_number;       // 0: a dead handle is reported as damaged
    const char* deleted_text;
};

extern const HandleKind kEnvironHandle;
extern const HandleKind kReportHandle;
extern const HandleKind kStreamHandle;
extern const HandleKind kRandGenHandle;

// Report numbers of the frame itself.
constexpr int kReentryNumber = 5114;
constexpr int kCannotStartNumber = 5134;
constexpr int kCannotFinishNumber = 5135;
constexpr int kUnhandledLibraryNumber = 5990;
constexpr int kUnhandledSystemNumber = 5991;

// A block of memory held back so that running out of memory can still be
// reported.  A frame whose reserve cannot be restored refuses to start.
bool memory_reserve_ready();
void spend_memory_reserve();
// Where the reserve is taken from (operator new when NULL); lets tests
// stand in for an exhausted heap.
void set_memory_reserve_source(void* (*source)(std::size_t));

class ApiFrame {
public:
    explicit ApiFrame(const char* function);
    ~ApiFrame();
    ApiFrame(const ApiFrame&) = delete;
    ApiFrame& operator=(const ApiFrame&) = delete;

    // The environment argument: NULL means the default one; it must be initialised.
    Environment& environment(environ_ns* env);
    // Makes env the one this call's reports go to, and checks that it is initialised.
    void use(Environment& env);

    // Validates a handle by its tag.  Tags are read at every checking level:
    // the check costs one comparison and a stale handle must never reach the core.
    static void check(const void* handle, const HandleKind& kind, const char* argument = nullptr);
    // Refuses a non-empty options argument of a function that takes none yet.
    static void check_no_options(const char* options);

    // Runs body as the frame's own guard does: a failure becomes its report.
    // True when something was absorbed.
    template <class Body>
    static bool guard(Body&& body) {
        try {
            body();
            return false;
        } catch (...) {
            absorb(std::current_exception());
        }
        return true;
    }

    template <class R, class Body>
    R run(R failed, Body&& body) {
        try {
            return body();
        } catch (...) {
            absorb(std::current_exception());
        }
        return failed;
    }

    template <class Body>
    void run(Body&& body) {
        try {
            body();
        } catch (...) {
            absorb(std::current_exception());
        }
    }

    const char* function() const { return function_; }

    // Holds an object's own lock (a net's) until the frame ends; it is let go
    // before the interface lock.  Holding the same lock twice holds it once.
    void hold(std::recursive_mutex& lock);
    // How many distinct object locks one call may hold at once.
    static constexpr int kMaxHeldLocks = 8;

    // The report a failure stands for: the one a Failure carries, or one made
    // now for anything else.  NULL only if even that could not be made.
    static Report* report_of(std::exception_ptr failure);

private:
    static void absorb(std::exception_ptr failure) { report_of(failure); }

    const char* function_;
    std::string saved_function_;
    Environment* saved_environment_;
    FloatState float_state_;
    std::recursive_mutex* held_[kMaxHeldLocks] = {};
    int num_held_ = 0;
};

// The integer a caller passed for an enumeration argument.  C callers may
// pass any int, which C++ must not load as the enumeration type itself.
template <class E>
int raw_enum(const E& value) {
    static_assert(sizeof(E) == sizeof(int));
    int raw;
    std::memcpy(&raw, &value, sizeof raw);
    return raw;
}

template <class T>
T* core_of(const void* handle) {
    return static_cast<T*>(const_cast<void*>(handle));
}

}  // namespace ravelo
