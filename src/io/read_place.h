// Where a reader is, so that every report names the file and line.
#pragma once
#include <string>

namespace ravelo {

struct ReadPlace {
    std::string file;  // the stream's name
};

// Reports a reading failure at a line of the file and ends the read.
[[noreturn]] void read_failure(const ReadPlace& place, int line, const std::string& message);

}  // namespace ravelo
