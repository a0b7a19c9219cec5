#include "base/stream.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <memory>

#include <sys/stat.h>

#include "base/failure.h"
#include "base/file_replace.h"

namespace ravelo {

void Stream::release() {
    case_appender.reset();
    case_reader.reset();
    owned.clear();
    owned.shrink_to_fit();
    borrowed = nullptr;
    borrowed_length = 0;
    kill();
}

namespace {

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Editors on some systems start UTF-8 text with a byte-order mark; it is not part of the text.
std::string without_byte_order_mark(std::string text) {
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) text.erase(0, 3);
    return text;
}

}  // namespace

std::string read_stream_text(const Stream& stream) {
    if (!stream.is_file) return without_byte_order_mark(std::string(stream.contents()));
    stream.flush_cases();
    File file(std::fopen(stream.name.c_str(), "rb"));
    if (!file) fail(3440, "couldn't open file '%s' for reading", stream.name.c_str());
    struct stat info;
    if (fstat(fileno(file.get()), &info) == 0 && S_ISDIR(info.st_mode))
        fail(3411, "couldn't read file '%s', because it is a directory", stream.name.c_str());
    std::string text;
    char buffer[65536];
    size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) text.append(buffer, got);
    if (std::ferror(file.get()))
        fail(3441, "disk error reading file '%s'", stream.name.c_str());
    return without_byte_order_mark(std::move(text));
}

void write_stream_text(Stream& stream, const std::string& text) {
    stream.case_reader.reset();
    if (!stream.is_file) {
        stream.owned = text;
        stream.borrowed = nullptr;
        stream.borrowed_length = 0;
        return;
    }
    replace_file_text(stream.name, text, stream.file_number);
}

std::string extension_of(std::string_view name) {
    size_t slash = name.find_last_of("/\\");
    size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || (slash != std::string_view::npos && dot < slash))
        return {};
    std::string ext(name.substr(dot + 1));
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

std::string base_name_of(std::string_view name) {
    size_t slash = name.find_last_of("/\\");
    if (slash != std::string_view::npos) name.remove_prefix(slash + 1);
    size_t dot = name.rfind('.');
    if (dot != std::string_view::npos && dot > 0) name = name.substr(0, dot);
    return std::string(name);
}

}  // namespace ravelo
