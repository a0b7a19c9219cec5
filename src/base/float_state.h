// The floating-point state of an interface call: every exception masked
// (denormal included), 53-bit precision, round to nearest; the caller's
// state is put back on the way out.  Interface calls are frequent and short,
// so the registers are only written when they differ from what is wanted.
#pragma once
#include <cstdint>
#if !(defined(__x86_64__) || defined(__i386__))
#include <cfenv>
#endif

namespace ravelo {

class FloatState {
public:
    void enter();  // save the caller's state, clear pending exceptions, set the engine's
    void leave();  // clear pending exceptions, restore the caller's control state

private:
#if defined(__x86_64__) || defined(__i386__)
    std::uint32_t saved_mxcsr_ = 0;
    std::uint16_t saved_x87_control_ = 0;
#else
    std::fenv_t saved_{};
#endif
};

}  // namespace ravelo
