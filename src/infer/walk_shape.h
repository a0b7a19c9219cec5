// The shape of a walk over a table's entries (see table_walk.h), apart from
// the functions that make and follow it, so that the junction tree can keep
// walks it makes again and again.
#pragma once
#include <algorithm>
#include <cstddef>

namespace ravelo {

struct WalkDim {
    std::size_t count;
    std::size_t step;         // in the walked table
    std::size_t target_step;  // in the target table (0: not a target member)
    std::size_t second_step;  // in the second target, when there is one
    std::size_t third_step;   // in the third, when there is one
};

// At most one dimension per member of more than one state: a table over more
// than this many of them could not be allocated.  Kept in place, so that
// making a walk for each message allocates nothing.
constexpr std::size_t kMaxWalkDims = 64;
struct WalkDims {
    WalkDim at[kMaxWalkDims];
    std::size_t count = 0;
    // Copies only the dimensions in use: most walks have a few of the
    // kMaxWalkDims, and walks are copied into caches per message.
    WalkDims() = default;
    WalkDims(const WalkDims& o) : count(o.count) { std::copy(o.at, o.at + o.count, at); }
    WalkDims& operator=(const WalkDims& o) {
        count = o.count;
        std::copy(o.at, o.at + o.count, at);
        return *this;
    }
    std::size_t size() const { return count; }
    const WalkDim& operator[](std::size_t i) const { return at[i]; }
    const WalkDim& back() const { return at[count - 1]; }
};

// Dimensions run outermost first; neighbours contiguous in both tables are
// merged, and there are always at least two (padded with single steps).
struct TableWalk {
    std::size_t start = 0, target_start = 0, second_start = 0, third_start = 0;
    WalkDims dims;
    bool empty = false;  // some member has no states
};

}  // namespace ravelo
