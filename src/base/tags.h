// Object tags: every object that crosses the interface begins with one, so a
// handle can be validated before it is used.
#pragma once
#include <cstdint>

namespace ravelo {

constexpr std::uint16_t kStaticBit = 0x2000;   // lives in fixed storage, never freed
constexpr std::uint16_t kTypeMask = 0x0FFF;
constexpr std::uint16_t kDeadTag = 2 | kStaticBit;  // a destroyed object's tag

enum TypeCode : std::uint16_t {
    kLockType = 13,
    kReportType = 14,
    kEnvironType = 31,
    kNetType = 40,
    kNodeType = 41,
    kNodeListType = 42,
    kStreamType = 43,
    kRandGenType = 44,
    kCaseSetType = 45,
    kLearnerType = 46,
    kTesterType = 47,
};

// First base (and so first bytes) of every handle object.  Handle classes
// have no virtual functions, so the tag sits at offset 0.
struct Tagged {
    std::uint16_t tag;
    explicit Tagged(std::uint16_t t) : tag(t) {}
    std::uint16_t type_code() const { return tag & kTypeMask; }
    bool is_static() const { return (tag & kStaticBit) != 0; }
    bool is_dead() const { return tag == kDeadTag; }
    void kill() { tag = kDeadTag; }
};

// Reads the tag at the start of an arbitrary handle.
inline std::uint16_t tag_of(const void* handle) { return *static_cast<const std::uint16_t*>(handle); }

}  // namespace ravelo
