#include "io/read_place.h"

#include "base/failure.h"

namespace ravelo {

constexpr int kReadNumber = 3400;

void read_failure(const ReadPlace& place, int line, const std::string& message) {
    fail(kReadNumber, "%s (line %d of '%s')", message.c_str(), line, place.file.c_str());
}

}  // namespace ravelo
