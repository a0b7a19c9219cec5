// The checking frame that wraps the body of every interface function: the
// API lock, floating-point state, re-entry guard, environment and handle
// checks, and the guard that turns every stray failure into a report.
#pragma once
#include <cfenv>
#include <cstdint>
#include <exception>
#include <new>
#include <string>

#include "base/environment.h"
#include "base/failure.h"

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
constexpr int kUnhandledLibraryNumber = 5990;
constexpr int kUnhandledSystemNumber = 5991;

class ApiFrame {
public:
    explicit ApiFrame(const char* function);
    ~ApiFrame();
    ApiFrame(const ApiFrame&) = delete;
    ApiFrame& operator=(const ApiFrame&) = delete;

    // Steps 4 and 5: NULL means the default environment; then it must be initialised.
    Environment& environment(environ_ns* env);
    // Makes env the one this call's reports go to, and checks that it is initialised.
    void use(Environment& env);

    // Validates a handle by its tag (at checking level 2 and above; NULL always).
    static void check(const void* handle, const HandleKind& kind, const char* argument = nullptr);

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

private:
    static void absorb(std::exception_ptr failure);

    const char* function_;
    std::string saved_function_;
    Environment* saved_environment_;
    std::fenv_t saved_fenv_;
};

template <class T>
T* core_of(const void* handle) {
    return static_cast<T*>(const_cast<void*>(handle));
}

}  // namespace ravelo
