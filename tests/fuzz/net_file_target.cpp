// A fuzz target for one net-file reader, named by RAVELO_FUZZ_EXTENSION,
// with the write-and-read-back check inside.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "net_round_trip.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string fault = ravelo_fuzz::net_round_trip_fault(
        ravelo_fuzz::fuzz_environment(), {reinterpret_cast<const char*>(data), size}, RAVELO_FUZZ_EXTENSION);
    if (!fault.empty()) {
        std::fprintf(stderr, "%s\n", fault.c_str());
        std::abort();
    }
    return 0;
}
