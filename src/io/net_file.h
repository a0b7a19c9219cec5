// Reading and writing nets through streams, in the format the stream name's
// extension selects: the engine's own text format, or a foreign one.
#pragma once
#include <string>

#include "base/stream.h"
#include "net/model.h"

namespace ravelo {

enum class NetFormat { Text, Bif, XmlBif, Hugin, Uai, Xdsl };

NetFormat format_of(const std::string& stream_name);

// A new net read from the stream; nothing is left behind when it fails.
Net* read_net(Environment& env, const Stream& stream, int control);
void write_net(const Net& net, Stream& stream);

}  // namespace ravelo
