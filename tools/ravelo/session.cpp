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

caseset_cs* Session::read_cases(const std::string& path) {
    stream_ns* stream = NewFileStream_ns(path.c_str(), env_, nullptr);
    caseset_cs* cases = NewCaseset_cs(nullptr, env_);
    AddFileToCaseset_cs(cases, stream, 1.0, nullptr);
    check("reading cases");
    return cases;
}

nodelist_bn* Session::nodes_named(net_bn* net, const std::string& names, bool nature_when_empty) {
    nodelist_bn* list = NewNodeList2_bn(0, net);
    if (names.empty() && nature_when_empty) {
        const nodelist_bn* all = GetNetNodes2_bn(net, nullptr);
        for (int i = 0; i < LengthNodeList_bn(all); ++i)
            if (GetNodeKind_bn(NthNode_bn(all, i)) == NATURE_NODE) AddNodeToList_bn(NthNode_bn(all, i), list, LAST_ENTRY);
    }
    for (std::size_t start = 0; start < names.size();) {
        std::size_t comma = names.find(',', start);
        if (comma == std::string::npos) comma = names.size();
        const std::string name = names.substr(start, comma - start);
        node_bn* node = GetNodeNamed_bn(name.c_str(), net);
        check("finding the nodes");
        if (!node) {
            std::fprintf(stderr, "ravelo: the net has no node named '%s'\n", name.c_str());
            throw CommandFailed("unknown node");
        }
        AddNodeToList_bn(node, list, LAST_ENTRY);
        start = comma + 1;
    }
    return list;
}

}  // namespace ravelo_cli
