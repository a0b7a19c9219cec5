// Streams: named sources and sinks of text, either a file on disk or a
// buffer in memory.  The name's extension chooses a net file's format.
#pragma once
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "base/environment.h"
#include "base/tags.h"

namespace ravelo {

class Stream : public Tagged {
public:
    Stream(Environment* owner, std::string stream_name, bool on_file)
        : Tagged(kStreamType), env(owner), name(std::move(stream_name)), is_file(on_file) {}

    Environment* env;
    std::string name;  // the file's path, or the memory stream's name
    bool is_file;
    std::string access;
    int file_number = 0;  // set when its file was first written

    // Cases are appended one row at a time through a file kept open (and
    // flushed before the file is read); the position after the last case
    // read lets reading continue with the next one.
    std::shared_ptr<std::FILE> case_appender;
    long case_file_end = 0;  // the appended file's length, buffered text included
    long next_case_position = -1;
    // Whether the heading this stream wrote has IDnum and NumCases columns
    // (-1: the stream wrote no heading, so they are not known).
    signed char heading_has_id = -1, heading_has_weight = -1;
    // The case reader left open by the last case read, so that reading case
    // after case streams through the file; dropped when the text changes.
    std::shared_ptr<void> case_reader;
    void flush_cases() const {
        if (case_appender) std::fflush(case_appender.get());
    }

    // The memory stream's text: owned, or borrowed from the caller.
    std::string owned;
    const char* borrowed = nullptr;
    long borrowed_length = 0;

    std::string_view contents() const {
        if (borrowed) return {borrowed, static_cast<size_t>(borrowed_length)};
        return owned;
    }
    void release();
};

// The whole text of a stream; a file that cannot be read is reported.
std::string read_stream_text(const Stream& stream);
// Replaces the stream's text (the file is rewritten); failures are reported.
void write_stream_text(Stream& stream, const std::string& text);

// The lower-case extension of a file name, without its dot ("" when none).
std::string extension_of(std::string_view name);
// The file name without folders and extension.
std::string base_name_of(std::string_view name);

}  // namespace ravelo
