#include "base/faults.h"

#include <cmath>
#include <cstdint>
#include <cstring>

#include "base/failure.h"

namespace ravelo {
namespace {

constexpr std::uintptr_t kLowestValidAddress = 4096;
constexpr int kDepthGuard = 2000;
constexpr long kIterationGuard = 100000;

[[noreturn]] void raise(const char* what) { throw SystemFault{what}; }

// An access through p, refused the way the processor would refuse it.
template <class T>
void check_access(const void* p) {
    auto address = reinterpret_cast<std::uintptr_t>(p);
    if (address < kLowestValidAddress) raise("access violation");
    if (address % alignof(T) != 0) raise("misaligned access");
}

template <class T>
T read_through(const void* p) {
    check_access<T>(p);
    T value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

template <class T>
void write_through(void* p, T value) {
    check_access<T>(p);
    std::memcpy(p, &value, sizeof value);
}

// A stack buffer whose every access is bounds checked.
struct StackBuffer {
    char bytes[16] = {};
    char& at(long i) {
        if (i < 0 || i >= static_cast<long>(sizeof bytes)) raise("stack buffer overrun");
        return bytes[i];
    }
};

int recurse(int depth);
int (*volatile g_recurse)(int) = recurse;  // keeps the recursion a real call chain

int recurse(int depth) {
    if (depth >= kDepthGuard) raise("stack overflow");
    return g_recurse(depth + 1) + 1;
}

void access_fault(int test_num) {
    alignas(double) static unsigned char spare[32];
    void* null_pointer = nullptr;
    void* small_address = reinterpret_cast<void*>(static_cast<std::uintptr_t>(16));
    void* misaligned = spare + 1;
    switch (test_num) {
        case 6: (void)read_through<int>(null_pointer); break;
        case 7: write_through<int>(null_pointer, 1); break;
        case 8: (void)read_through<int>(small_address); break;
        case 9: write_through<int>(small_address, 1); break;
        case 10: (void)read_through<int>(misaligned); break;
        case 11: write_through<int>(misaligned, 1); break;
        case 12: (void)read_through<double>(misaligned); break;
        case 13: write_through<double>(misaligned, 1.0); break;
    }
}

void buffer_fault(int test_num) {
    StackBuffer buffer;
    switch (test_num) {
        case 23: buffer.at(16) = 'x'; break;                      // one past the end
        case 24: for (long i = 0; i < 64; ++i) buffer.at(i) = 'x'; break;  // far past the end
        case 25: buffer.at(-1) = 'x'; break;                      // before the start
        case 26: (void)buffer.at(16); break;                       // read past the end
        case 27: (void)buffer.at(-8); break;                       // read before the start
    }
}

}  // namespace

int fault_test_kind(int test_num) {
    if (test_num >= 30) return 3;
    switch (test_num) {
        case 1: case 2: case 3: case 4: case 6: case 7: case 8: case 9: case 10: case 11:
        case 12: case 13: case 14: case 21: case 23: case 24: case 25: case 26: case 27: case 29:
            return 1;
        default:
            return 0;
    }
}

void provoke_fault(int test_num) {
    volatile double zero = 0;
    volatile int int_zero = 0;
    switch (test_num) {
        case 1:
            fail(5245, "this is test # %d, an API param error generated deliberately to check recovery",
                 test_num);
        case 2:
            internal_failure(__FILE__, __LINE__,
                             "(\"assert deliberately fired to test error recovery\", 0)");
        case 3: {
            volatile double quotient = 1.0 / zero;
            RAVELO_ASSERT(std::isinf(quotient));
            return;
        }
        case 4:
            if (int_zero == 0) raise("integer division by zero");
            (void)(1 / int_zero);
            return;
        case 14: {
            volatile double log_zero = std::log(zero);
            volatile double squared = log_zero * log_zero;
            RAVELO_ASSERT(std::isinf(squared));
            return;
        }
        case 21:
            (void)recurse(0);
            return;
        case 29:
            for (long iterations = 0;; ++iterations)
                if (iterations >= kIterationGuard) raise("loop never ends");
        default:
            if (test_num >= 6 && test_num <= 13) access_fault(test_num);
            if (test_num >= 23 && test_num <= 27) buffer_fault(test_num);
    }
}

}  // namespace ravelo
