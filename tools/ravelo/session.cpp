#include "session.h"

#include <cstdio>

namespace ravelo_cli {

Session::Session() {
    char mesg[MESG_LEN_ns];
    env_ = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
    if (!env_ || InitRavelo2_bn(env_, mesg) < 0) throw CommandFailed("the engine could not start");
}

Session::~Session() {
    char mesg[MESG_LEN_ns];
    CloseRavelo_bn(env_, mesg);
}

void Session::check(const char* doing) {
    std::string errors;
    const report_ns* report = nullptr;
    while ((report = GetError_ns(env_, WARNING_ERR, report)) != nullptr) {
        bool error = ErrorSeverity_ns(report) >= ERROR_ERR;
        std::fprintf(stderr, "ravelo: %s%s: %s\n", error ? "" : "warning while ", doing,
                     ErrorMessage_ns(report));
        if (error) errors = ErrorMessage_ns(report);
    }
    ClearErrors_ns(env_, ERROR_ERR);
    if (!errors.empty()) throw CommandFailed(errors);
}

std::string Session::take_error(const char* doing) {
    try {
        check(doing);
    } catch (const CommandFailed& failed) {
        return failed.what();
    }
    return {};
}

net_bn* Session::read_net(const std::string& path) {
    stream_ns* stream = NewFileStream_ns(path.c_str(), env_, nullptr);
    net_bn* net = stream ? ReadNet_bn(stream, NO_WINDOW) : nullptr;
    if (stream) DeleteStream_ns(stream);
    check("reading");
    if (!net) throw CommandFailed("no net read");
    return net;
}

void Session::write_net(net_bn* net, const std::string& path) {
    stream_ns* stream = NewFileStream_ns(path.c_str(), env_, nullptr);
    if (stream) WriteNet_bn(net, stream);
    if (stream) DeleteStream_ns(stream);
    check("writing");
}

}  // namespace ravelo_cli
