#include "session.h"

#include <sys/stat.h>

#include <cstdio>
#include <iostream>
#include <iterator>
#include <sstream>

#include "labels.h"
#include "progress.h"

namespace ravelo_cli {

const char* const kReadFormats = "dne, bif, xml, xmlbif, bifxml, net, uai, xdsl";
const char* const kWriteFormats = "dne, bif, xml, xmlbif, bifxml, net, uai";

std::string extension_of(const std::string& path) {
    size_t slash = path.find_last_of('/');
    size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
    return path.substr(dot + 1);
}

bool is_format(const std::string& extension, bool for_writing) {
    std::string list = std::string(", ") + (for_writing ? kWriteFormats : kReadFormats) + ",";
    return !extension.empty() && list.find(" " + extension + ",") != std::string::npos;
}

void complain(const std::string& message) {
    leave_progress_line();
    std::fprintf(stderr, "ravelo: %s\n", message.c_str());
}

void usage_failure(const std::string& message) {
    complain(message);
    throw UsageFailed(message);
}

Session::Session() {
    char mesg[MESG_LEN_ns];
    env_ = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
    if (!env_ || InitRavelo2_bn(env_, mesg) < 0) {
        complain(std::string("the engine could not start: ") + mesg);
        throw CommandFailed("the engine could not start");
    }
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
        complain(std::string(error ? "" : "warning while ") + doing + ": " + ErrorMessage_ns(report));
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

namespace {

// The stream's name carries the format the engine reads or writes.
std::string standard_stream_name(const char* which, const std::string& format, bool for_writing) {
    std::string extension = format.empty() ? "dne" : format;
    if (!is_format(extension, for_writing))
        usage_failure("unknown format '" + extension + "' (known: " +
                      (for_writing ? kWriteFormats : kReadFormats) + ")");
    return std::string(which) + "." + extension;
}

}  // namespace

void refuse_unknown_extension(const std::string& path, bool for_writing) {
    if (path == "-" || is_format(extension_of(path), for_writing)) return;
    usage_failure("can't tell the format of '" + path + "' from its extension; the known ones are " +
                  (for_writing ? kWriteFormats : kReadFormats) + " (or give - with --" +
                  (for_writing ? "to" : "from") + " FORMAT for standard " + (for_writing ? "output" : "input") +
                  ")");
}

namespace {

void refuse_directory(const std::string& path) {
    struct stat info;
    if (stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode)) {
        complain("'" + path + "' is a directory, not a net file");
        throw CommandFailed("directory");
    }
}

}  // namespace

net_bn* Session::read_net(const std::string& path, const std::string& format) {
    stream_ns* stream = nullptr;
    std::string shown = path;
    if (path == "-") {
        shown = standard_stream_name("stdin", format, false);
        std::string text((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
        stream = NewMemoryStream_ns(shown.c_str(), env_, nullptr);
        if (stream) SetStreamContents_ns(stream, text.data(), static_cast<long>(text.size()), 1);
    } else {
        refuse_unknown_extension(path, false);
        refuse_directory(path);
        stream = NewFileStream_ns(path.c_str(), env_, nullptr);
    }
    net_bn* net = stream ? ReadNet_bn(stream, NO_WINDOW) : nullptr;
    if (stream) DeleteStream_ns(stream);
    check("reading");
    if (!net) throw CommandFailed("no net read");
    if (extension_of(shown) != "dne") warn_if_names_changed(net, path);
    return net;
}

void Session::write_net(net_bn* net, const std::string& path, const std::string& format) {
    if (path == "-") {
        std::string name = standard_stream_name("stdout", format, true);
        stream_ns* stream = NewMemoryStream_ns(name.c_str(), env_, nullptr);
        if (stream) WriteNet_bn(net, stream);
        long length = 0;
        const char* contents = stream ? GetStreamContents_ns(stream, &length) : nullptr;
        std::string text = contents ? std::string(contents, static_cast<size_t>(length)) : std::string();
        if (stream) DeleteStream_ns(stream);
        check("writing");
        std::fwrite(text.data(), 1, text.size(), stdout);
        return;
    }
    refuse_unknown_extension(path, true);
    refuse_directory(path);
    stream_ns* stream = NewFileStream_ns(path.c_str(), env_, nullptr);
    if (stream) WriteNet_bn(net, stream);
    if (stream) DeleteStream_ns(stream);
    check("writing");
}

}  // namespace ravelo_cli
