#include "io/net_file.h"

#include "base/failure.h"
#include "io/bif.h"
#include "io/dne.h"
#include "io/foreign_net.h"

namespace ravelo {

NetFormat format_of(const std::string& stream_name) {
    std::string ext = extension_of(stream_name);
    if (ext == "bif") return NetFormat::Bif;
    if (ext == "xml" || ext == "xmlbif" || ext == "bifxml") return NetFormat::XmlBif;
    if (ext == "net") return NetFormat::Hugin;
    if (ext == "uai") return NetFormat::Uai;
    if (ext == "xdsl") return NetFormat::Xdsl;
    return NetFormat::Text;
}

namespace {

ForeignNet read_foreign(NetFormat format, std::string_view text, const ReadPlace& place) {
    switch (format) {
        case NetFormat::Bif: return read_bif(text, place);
        default: break;
    }
    fail(3403, "reading net files of this kind ('%s') is not available",
         place.file.c_str());
}

std::string write_foreign(NetFormat format, const ForeignNet& net, const std::string& name) {
    switch (format) {
        case NetFormat::Bif: return write_bif(net);
        default: break;
    }
    fail(3404, "writing net files of this kind ('%s') is not available", name.c_str());
}

}  // namespace

Net* read_net(Environment& env, const Stream& stream, int control) {
    std::string text = read_stream_text(stream);
    ReadPlace place{stream.name};
    NetFormat format = format_of(stream.name);
    Net* net = format == NetFormat::Text ? read_dne(env, text, place, control)
                                         : build_net(env, read_foreign(format, text, place), place);
    net->file_name = stream.name;
    return net;
}

void write_net(const Net& net, Stream& stream) {
    NetFormat format = format_of(stream.name);
    if (format == NetFormat::Text) {
        write_stream_text(stream, write_dne(net));
        return;
    }
    write_stream_text(stream, write_foreign(format, describe_net(net), stream.name));
}

}  // namespace ravelo
