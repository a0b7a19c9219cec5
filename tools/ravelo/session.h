// An engine environment for one run of the program, and the way engine
// reports become messages on standard error and a failing exit.
#pragma once
#include <stdexcept>
#include <string>

#include "ravelo/ravelo.h"

namespace ravelo_cli {

// Exit codes: 0 success, 1 a runtime failure (a file or the engine), 2 a wrong command line.
constexpr int kRuntimeFailure = 1;
constexpr int kUsageFailure = 2;

// A failure already explained to the user; main() turns it into exit code 1.
struct CommandFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A command line that asks for something that does not exist; main() exits with 2.
struct UsageFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Prints "ravelo: MESSAGE" on standard error, on a line of its own even after a progress bar.
void complain(const std::string& message);
// Complains and throws UsageFailed.
[[noreturn]] void usage_failure(const std::string& message);

class Session {
public:
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    environ_ns* env() const { return env_; }
    // Reads a net from a file in the format its extension names, or from standard input ("-")
    // in the format 'format' names (an extension such as "bif"; the engine's own when empty).
    // Warns once when the reader changed names that are not legal in the engine.
    net_bn* read_net(const std::string& path, const std::string& format = "");
    // Writes a net to a file in the format its extension names, or to standard output ("-") in
    // the format 'format' names.
    void write_net(net_bn* net, const std::string& path, const std::string& format = "");
    // Throws CommandFailed with the engine's message if an error was reported.
    void check(const char* doing);
    // For a step the command can do without: the error reported since the last check (empty if
    // none), with warnings printed as check() prints them.
    std::string take_error(const char* doing);

private:
    environ_ns* env_ = nullptr;
};

// The extensions of the net formats the engine reads and writes, and whether one is known.
extern const char* const kReadFormats;
extern const char* const kWriteFormats;
bool is_format(const std::string& extension, bool for_writing);
std::string extension_of(const std::string& path);
// A usage failure listing the known extensions when 'path' (other than "-") has none of them.
void refuse_unknown_extension(const std::string& path, bool for_writing);

}  // namespace ravelo_cli
