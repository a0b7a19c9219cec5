#include "io/net_file.h"

#include "base/failure.h"
#include "io/bif.h"
#include "io/dne.h"
#include "io/foreign_limits.h"
#include "io/foreign_net.h"
#include "io/hugin.h"
#include "io/uai.h"
#include "io/xml_formats.h"

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
        case NetFormat::XmlBif: return read_xmlbif(text, place);
        case NetFormat::Hugin: return read_hugin(text, place);
        case NetFormat::Uai: return read_uai(text, place);
        case NetFormat::Xdsl: return read_xdsl(text, place);
        case NetFormat::Text: break;
    }
    RAVELO_ASSERT(false);
    return {};
}

std::string write_foreign(NetFormat format, const ForeignNet& net, const std::string& name) {
    switch (format) {
        case NetFormat::Bif: require_expressible(net, {"BIF", true, false}); return write_bif(net);
        case NetFormat::XmlBif: require_expressible(net, {"XMLBIF", true, true}); return write_xmlbif(net);
        case NetFormat::Hugin: require_expressible(net, {"Hugin .net", true, true}); return write_hugin(net);
        case NetFormat::Uai: require_expressible(net, {"UAI", false, false}); return write_uai(net);
        default: break;
    }
    fail(3404, "can't write net file '%s', because nets are not written in that format", name.c_str());
}

// Foreign formats have no way to say that a link is delayed; dropping the
// delay would write a different net, so such nets are only kept as text net files.
void refuse_time_delays(const Net& net, const std::string& name) {
    for (const Node* n : net.nodes.nodes)
        for (size_t k = 0; k < n->parents.nodes.size(); ++k)
            if (is_delayed_link(*n, k))
                fail(3410, "can't write >-net '%s' to file '%s', because the link from >-node '%s' to >-node '%s' "
                           "has a time delay, which that format can't express",
                     net.name.c_str(), name.c_str(), n->parents.nodes[k]->name.c_str(), n->name.c_str());
}

}  // namespace

Net* read_net(Environment& env, const Stream& stream, int control) {
    // The binary form is not read by this version.
    if (extension_of(stream.name) == "tarv") fail(3405, "file is corrupted or of unrecognized format (%d)", 1);
    std::string text = read_stream_text(stream);
    if (text.find_first_not_of(" \t\r\n") == std::string::npos)
        fail(3412, "couldn't read a net from file '%s', because it is empty", stream.name.c_str());
    ReadPlace place{stream.name};
    NetFormat format = format_of(stream.name);
    Net* net = nullptr;
    if (format == NetFormat::Text) {
        net = read_dne(env, text, place, control);
    } else {
        ForeignNet description = read_foreign(format, text, place);
        if (description.name.empty()) description.name = base_name_of(stream.name);
        net = build_net(env, description, place);
    }
    net->file_name = stream.name;
    return net;
}

void write_net(const Net& net, Stream& stream) {
    NetFormat format = format_of(stream.name);
    if (format == NetFormat::Text) {
        write_stream_text(stream, write_dne(net));
        return;
    }
    refuse_time_delays(net, stream.name);
    write_stream_text(stream, write_foreign(format, describe_net(net), stream.name));
}

}  // namespace ravelo
