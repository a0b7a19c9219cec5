#include "infer/table_memory.h"

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace ravelo {
namespace {

constexpr std::size_t kHugeFrom = std::size_t{8} << 20;  // bytes

template <class T>
void reserve(std::vector<T>& table, std::size_t n) {
    if (table.capacity() >= n) return;
    std::vector<T>().swap(table);
    table.reserve(n);
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    const std::size_t bytes = n * sizeof(T);
    if (bytes < kHugeFrom) return;
    const std::uintptr_t page = 4096;
    const std::uintptr_t begin = (reinterpret_cast<std::uintptr_t>(table.data()) + page - 1) & ~(page - 1);
    const std::uintptr_t end = (reinterpret_cast<std::uintptr_t>(table.data()) + bytes) & ~(page - 1);
    if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);  // only advice
#endif
}

}  // namespace

void fill_table(std::vector<float>& table, std::size_t n, float value) {
    reserve(table, n);
    table.assign(n, value);
}

void fill_table(std::vector<double>& table, std::size_t n, double value) {
    reserve(table, n);
    table.assign(n, value);
}

void copy_table(std::vector<float>& table, const std::vector<float>& source) {
    reserve(table, source.size());
    table.assign(source.begin(), source.end());
}

}  // namespace ravelo
