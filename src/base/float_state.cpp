#include "base/float_state.h"

#if !(defined(__x86_64__) || defined(__i386__))
#include <cfenv>
#endif

namespace ravelo {

#if defined(__x86_64__) || defined(__i386__)
namespace {

constexpr std::uint32_t kSseFlags = 0x003F;     // pending exceptions
constexpr std::uint32_t kSseMasks = 0x1F80;     // all six exceptions masked
constexpr std::uint32_t kSseRounding = 0x6000;  // 00: to nearest
constexpr std::uint16_t kX87Wanted = 0x023F;    // masks, 53-bit precision, to nearest
constexpr std::uint16_t kX87Fields = 0x0F3F;    // the bits kX87Wanted decides

std::uint32_t read_mxcsr() {
    std::uint32_t v;
    asm volatile("stmxcsr %0" : "=m"(v));
    return v;
}
void write_mxcsr(std::uint32_t v) { asm volatile("ldmxcsr %0" : : "m"(v)); }
std::uint16_t read_x87_control() {
    std::uint16_t v;
    asm volatile("fnstcw %0" : "=m"(v));
    return v;
}
void write_x87_control(std::uint16_t v) { asm volatile("fldcw %0" : : "m"(v)); }
void clear_x87_exceptions() {
    std::uint16_t status;
    asm volatile("fnstsw %0" : "=m"(status));
    if (status & 0x3F) asm volatile("fnclex");
}

}  // namespace

void FloatState::enter() {
    saved_mxcsr_ = read_mxcsr() & ~kSseFlags;
    std::uint32_t wanted = (saved_mxcsr_ & ~kSseRounding) | kSseMasks;
    if (read_mxcsr() != wanted) write_mxcsr(wanted);
    saved_x87_control_ = read_x87_control();
    std::uint16_t x87 = static_cast<std::uint16_t>((saved_x87_control_ & ~kX87Fields) | kX87Wanted);
    clear_x87_exceptions();
    if (x87 != saved_x87_control_) write_x87_control(x87);
}

void FloatState::leave() {
    if (read_mxcsr() != saved_mxcsr_) write_mxcsr(saved_mxcsr_);
    clear_x87_exceptions();
    if (read_x87_control() != saved_x87_control_) write_x87_control(saved_x87_control_);
}

#else

void FloatState::enter() {
    std::feclearexcept(FE_ALL_EXCEPT);
    std::fegetenv(&saved_);
    std::fesetround(FE_TONEAREST);
#if defined(__GLIBC__)
    fedisableexcept(FE_ALL_EXCEPT);
#endif
}

void FloatState::leave() {
    std::feclearexcept(FE_ALL_EXCEPT);
    std::fesetenv(&saved_);
}

#endif

}  // namespace ravelo
