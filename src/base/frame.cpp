#include "base/frame.h"

#include <atomic>
#include <memory>
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

constexpr std::size_t kReserveSize = 64 * 1024;

struct MemoryReserve {
    std::mutex mutex;
    std::atomic<void*> block{nullptr};
    void* (*source)(std::size_t) = nullptr;  // must give memory that operator delete frees
};

MemoryReserve& reserve() {
    static MemoryReserve r;
    return r;
}

void* take_from_heap(std::size_t size) { return ::operator new(size, std::nothrow); }

// The name a function goes by after the colon of a callback marker.
std::string inside_callback(const std::string& marker, const char* function) {
    size_t colon = marker.find(": ");
    return marker.substr(0, colon == std::string::npos ? marker.size() : colon + 2) + function;
}

}  // namespace

bool memory_reserve_ready() {
    MemoryReserve& r = reserve();
    if (r.block.load(std::memory_order_acquire)) return true;  // every call passes here
    std::lock_guard<std::mutex> guard(r.mutex);
    if (!r.block.load()) r.block.store((r.source ? r.source : take_from_heap)(kReserveSize));
    return r.block.load() != nullptr;
}

void spend_memory_reserve() {
    MemoryReserve& r = reserve();
    std::lock_guard<std::mutex> guard(r.mutex);
    ::operator delete(r.block.exchange(nullptr));
}

void set_memory_reserve_source(void* (*source)(std::size_t)) {
    MemoryReserve& r = reserve();
    std::lock_guard<std::mutex> guard(r.mutex);
    r.source = source;
}

std::string& current_function_text() {
    thread_local std::string text;
    return text;
}

bool is_callback_marker(const std::string& text) { return text.rfind("Callback", 0) == 0; }

ApiFrame::ApiFrame(const char* function) : function_(function) {
    lock_api();
    float_state_.enter();
    saved_environment_ = current_environment();
    std::string& current = current_function_text();
    saved_function_ = current;
    if (current.empty()) {
        current = function;
    } else if (is_callback_marker(current)) {
        current = inside_callback(current, function);
    } else {
        guard([&] {
            make_report(nullptr, kReentryNumber, kError,
                        format("Thread is calling a >-Ravelo API function >-%s before the "
                               "previous one >-%s is finished.",
                               function, current.c_str()));
        });
        current = function;
    }
}

ApiFrame::~ApiFrame() {
    while (num_held_ > 0) held_[--num_held_]->unlock();
    current_function_text() = saved_function_;
    set_current_environment(saved_environment_);
    float_state_.leave();
    unlock_api();
}

void ApiFrame::hold(std::recursive_mutex& lock) {
    for (int i = 0; i < num_held_; ++i)
        if (held_[i] == &lock) return;
    RAVELO_ASSERT(num_held_ < kMaxHeldLocks);
    lock.lock();
    held_[num_held_++] = &lock;
}

void ApiFrame::check(const void* handle, const HandleKind& kind, const char* argument) {
    std::string prefix = argument ? format("in argument '%s', ", argument) : std::string();
    if (!handle) fail_text(kind.null_number, prefix + kind.null_text);
    std::uint16_t tag = tag_of(handle);
    if ((tag & kTypeMask) == kind.type) return;
    if (tag == kDeadTag && kind.deleted_number)
        fail_text(kind.deleted_number, prefix + kind.deleted_text);
    fail_text(kind.damaged_number, prefix + kind.damaged_text);
}

void ApiFrame::check_no_options(const char* options) {
    if (options && *options)
        fail(5140,
             "argument 'options' must be empty or null (0) with this version of >-Ravelo, but it "
             "is:  %.80s",
             options);
}

Environment& ApiFrame::environment(environ_ns* handle) {
    const void* env = handle ? static_cast<const void*>(handle) : default_environment();
    if (!env) fail_text(kEnvironHandle.null_number, kEnvironHandle.null_text);
    check(env, kEnvironHandle);
    Environment* e = core_of<Environment>(env);
    use(*e);
    return *e;
}

void ApiFrame::use(Environment& env) {
    // Refused before it becomes the current one, so that the report goes
    // where the caller can still read it.
    if (env.life_state != kLifeInitialized)
        fail(5101, "This function was called before Ravelo finished initialization, or while it "
                   "was closing");
    set_current_environment(&env);
    if (!memory_reserve_ready())
        fail_out_of_memory(kCannotStartNumber, format("left to even start function >-%s", function_));
}

Report* ApiFrame::report_of(std::exception_ptr failure) {
    // Making the report may itself fail; nothing may leave the frame.
    try {
        try {
            std::rethrow_exception(failure);
        } catch (const Failure& f) {
            return f.report;
        } catch (const std::bad_alloc&) {
            spend_memory_reserve();
            std::string name = current_function_text();
            size_t colon = name.find(": ");
            if (is_callback_marker(name) && colon != std::string::npos) name = name.substr(colon + 2);
            return out_of_memory_report(kCannotFinishNumber,
                                        format("to finish function >-%s", name.c_str()));
        } catch (const std::exception& e) {
            return make_report(nullptr, kUnhandledLibraryNumber, kInternalError,
                               format("unhandled standard library error: %s", e.what()));
        } catch (...) {
            return make_report(nullptr, kUnhandledSystemNumber, kInternalError,
                               "unhandled system-level error");
        }
    } catch (...) {
        return nullptr;
    }
}

}  // namespace ravelo
