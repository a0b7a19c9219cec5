// The promise every net-file reader and writer keeps: a net read is written
// in the engine's own format so that it reads back the same, and in the
// format it came from so that it reads back or is refused with a report.
#pragma once
#include <string>
#include <string_view>

#include "ravelo/ravelo.h"

namespace ravelo_fuzz {

// "" when the net read from text (in the format the extension names) kept
// through every write, else what was lost, with the texts involved.  Text
// that does not read as a net keeps trivially.
std::string net_round_trip_fault(environ_ns* env, std::string_view text, const std::string& extension);

// An environment for a whole fuzzing run, opened on first use.
environ_ns* fuzz_environment();

}  // namespace ravelo_fuzz
