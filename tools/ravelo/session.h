// An engine environment for one run of the program, and the way engine
// reports become messages on standard error and a failing exit.
#pragma once
#include <stdexcept>
#include <string>

#include "ravelo/ravelo.h"

namespace ravelo_cli {

// A failure already explained to the user; main() turns it into exit code 1.
struct CommandFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Session {
public:
    Session();
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    environ_ns* env() const { return env_; }
    // Reads a net from a file, in the format its extension names.
    net_bn* read_net(const std::string& path);
    void write_net(net_bn* net, const std::string& path);
    // A case set of one case file (its stream lives as long as the session).
    caseset_cs* read_cases(const std::string& path);
    // The nodes of net named in a comma-separated list; when the list is
    // empty, every nature node (if nature_when_empty) or none.
    nodelist_bn* nodes_named(net_bn* net, const std::string& names, bool nature_when_empty);
    // Throws CommandFailed with the engine's message if an error was reported.
    void check(const char* doing);
    // For a step the command can do without: the error reported since the last check (empty if
    // none), with warnings printed as check() prints them.
    std::string take_error(const char* doing);

private:
    environ_ns* env_ = nullptr;
};

}  // namespace ravelo_cli
