// Streams and net files family.
#include <cstring>

#include "api/handles.h"
#include "base/stream.h"
#include "io/net_file.h"

using namespace ravelo;

namespace {

stream_ns* handle_of(Stream* s) { return reinterpret_cast<stream_ns*>(s); }

Stream* new_stream(ApiFrame& frame, const char* name, environ_ns* env, const char* access,
                   bool on_file) {
    Environment& e = frame.environment(env);
    if (!name) fail(5104, on_file ? "NULL passed for file name" : "NULL passed for name");
    if (on_file && !*name) fail(5104, "empty string passed for file name");
    Stream* stream = e.store.make<Stream>(&e, name, on_file);
    stream->access = access ? access : "";
    return stream;
}

}  // namespace

stream_ns* NewFileStream_ns(const char* filename, environ_ns* env, const char* access) {
    ApiFrame frame("NewFileStream_ns");
    return frame.run<stream_ns*>(nullptr, [&] {
        return handle_of(new_stream(frame, filename, env, access, true));
    });
}

stream_ns* NewMemoryStream_ns(const char* name, environ_ns* env, const char* access) {
    ApiFrame frame("NewMemoryStream_ns");
    return frame.run<stream_ns*>(nullptr, [&] {
        return handle_of(new_stream(frame, name, env, access, false));
    });
}

void SetStreamContents_ns(stream_ns* stream, const char* buffer, long length, bool_ns copy) {
    ApiFrame frame("SetStreamContents_ns");
    frame.run([&] {
        Stream& s = checked_stream(frame, stream);
        s.case_reader.reset();
        if (s.is_file)
            fail(3444, "can't set the contents of stream '%s', because it is a file stream",
                 s.name.c_str());
        if (length < -1) fail(3445, "argument 'length' is %ld, but it must not be less than -1", length);
        if (!buffer && length > 0) fail(3446, "NULL passed for buffer, with length %ld", length);
        if (length == -1) length = buffer ? static_cast<long>(std::strlen(buffer)) : 0;
        if (copy || !buffer) {
            s.owned.assign(buffer ? buffer : "", static_cast<size_t>(length));
            s.borrowed = nullptr;
            s.borrowed_length = 0;
        } else {
            s.owned.clear();
            s.borrowed = buffer;
            s.borrowed_length = length;
        }
    });
}

const char* GetStreamContents_ns(stream_ns* stream, long* length) {
    ApiFrame frame("GetStreamContents_ns");
    return frame.run<const char*>(nullptr, [&]() -> const char* {
        Stream& s = checked_stream(frame, stream);
        // A file stream's contents are read into the stream, which keeps them.
        if (s.is_file) s.owned = read_stream_text(s);
        if (length) *length = static_cast<long>(s.contents().size());
        return s.borrowed ? s.borrowed : s.owned.c_str();
    });
}

void DeleteStream_ns(stream_ns* stream) {
    ApiFrame frame("DeleteStream_ns");
    frame.run([&] { checked_stream(frame, stream).release(); });
}

net_bn* ReadNet_bn(stream_ns* file, int control) {
    ApiFrame frame("ReadNet_bn");
    return frame.run<net_bn*>(nullptr, [&] {
        Stream& s = checked_stream(frame, file);
        if (control != NO_VISUAL_INFO && control != NO_WINDOW && control != MINIMIZED_WINDOW &&
            control != REGULAR_WINDOW)
            fail(5160, "argument 'control' is %d, but it should be NO_VISUAL_INFO (%d), NO_WINDOW "
                       "(%d), MINIMIZED_WINDOW (%d) or REGULAR_WINDOW (%d)",
                 control, NO_VISUAL_INFO, NO_WINDOW, MINIMIZED_WINDOW, REGULAR_WINDOW);
        return handle_of(read_net(*s.env, s, control));
    });
}

void WriteNet_bn(const net_bn* net, stream_ns* file) {
    ApiFrame frame("WriteNet_bn");
    frame.run([&] {
        const Net& n = checked_net(frame, net);
        Stream& s = checked_stream(frame, file);
        write_net(n, s);
    });
}
