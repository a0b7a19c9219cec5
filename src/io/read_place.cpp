#include "io/read_place.h"

#include "base/failure.h"

namespace ravelo {

constexpr int kReadNumber = 3400;
constexpr int kReadWarningNumber = 3401;

void read_failure(const ReadPlace& place, int line, const std::string& message) {
    fail(kReadNumber, "%s (line %d of '%s')", message.c_str(), line, place.file.c_str());
}

void read_warning(const ReadPlace& place, int line, const std::string& message) {
    warning(kReadWarningNumber, "%s (line %d of '%s')", message.c_str(), line,
            place.file.c_str());
}

}  // namespace ravelo
