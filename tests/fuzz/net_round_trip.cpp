#include "net_round_trip.h"

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace ravelo_fuzz {
namespace {

std::string newest_error(environ_ns* env) {
    const report_ns* last = nullptr;
    for (const report_ns* r = nullptr; (r = GetError_ns(env, ERROR_ERR, r));) last = r;
    return last ? ErrorMessage_ns(last) : "";
}

net_bn* read_text(environ_ns* env, std::string_view text, const std::string& name) {
    stream_ns* stream = NewMemoryStream_ns(name.c_str(), env, nullptr);
    SetStreamContents_ns(stream, text.data(), static_cast<long>(text.size()), 1);
    net_bn* net = ReadNet_bn(stream, REGULAR_WINDOW);
    DeleteStream_ns(stream);
    return net;
}

// The net as written to a stream of that name, or nothing when the writer refused.
std::optional<std::string> written(environ_ns* env, const net_bn* net, const std::string& name) {
    stream_ns* stream = NewMemoryStream_ns(name.c_str(), env, nullptr);
    WriteNet_bn(net, stream);
    std::optional<std::string> text;
    long length = 0;
    const char* contents = GetStreamContents_ns(stream, &length);
    if (newest_error(env).empty() && contents) text.emplace(contents, static_cast<size_t>(length));
    DeleteStream_ns(stream);
    return text;
}

std::string lost(const std::string& what, const std::string& report, const std::string& text) {
    return what + (report.empty() ? "" : ": " + report) + "\n--- written text ---\n" + text;
}

// Checks one write of net; "" when it was refused or read back (equal, for the own format).
std::string check_write(environ_ns* env, const net_bn* net, const std::string& extension) {
    const std::string name = "round_trip." + extension;
    std::optional<std::string> text = written(env, net, name);
    ClearErrors_ns(env, INTERNAL_ERR);
    if (!text) return "";
    net_bn* again = read_text(env, *text, name);
    if (!again) return lost("written ." + extension + " text does not read back", newest_error(env), *text);
    std::string fault;
    if (extension == "dne") {
        std::optional<std::string> second = written(env, again, name);
        if (!second) fault = lost("net read back is refused by the writer", newest_error(env), *text);
        else if (*second != *text) fault = lost("net read back differs", "", *text + "\n--- rewritten ---\n" + *second);
    }
    DeleteNet_bn(again);
    ClearErrors_ns(env, INTERNAL_ERR);
    return fault;
}

}  // namespace

std::string net_round_trip_fault(environ_ns* env, std::string_view text, const std::string& extension) {
    net_bn* net = read_text(env, text, "fuzz_input." + extension);
    ClearErrors_ns(env, INTERNAL_ERR);
    if (!net) return "";
    std::string fault = check_write(env, net, "dne");
    if (fault.empty() && extension != "dne") fault = check_write(env, net, extension);
    DeleteNet_bn(net);
    ClearErrors_ns(env, INTERNAL_ERR);
    return fault;
}

environ_ns* fuzz_environment() {
    static environ_ns* env = [] {
        char mesg[MESG_LEN_ns];
        environ_ns* opened = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
        if (!opened || InitRavelo2_bn(opened, mesg) < 0) {
            std::fprintf(stderr, "cannot open an environment: %s\n", mesg);
            std::abort();
        }
        return opened;
    }();
    return env;
}

}  // namespace ravelo_fuzz
