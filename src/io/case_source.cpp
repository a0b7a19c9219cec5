#include "io/case_source.h"

#include <cstring>

#include "base/failure.h"
#include "base/stream.h"

namespace ravelo {

namespace {
constexpr std::size_t kChunk = std::size_t(1) << 20;
}

CaseSource::CaseSource(const Stream& stream) : name_(stream.name) {
    if (!stream.is_file) {
        std::string_view text = stream.contents();
        data_ = text.data();
        end_ = text.size();
        size_ = static_cast<long>(text.size());
        at_end_ = true;
        return;
    }
    stream.flush_cases();
    file_ = std::fopen(stream.name.c_str(), "rb");
    if (!file_) fail(3440, "couldn't open file '%s' for reading", stream.name.c_str());
    if (std::fseek(file_, 0, SEEK_END) == 0) size_ = std::ftell(file_);
    std::fseek(file_, 0, SEEK_SET);
    buffer_.resize(kChunk);
    data_ = buffer_.data();
}

CaseSource::~CaseSource() {
    if (file_) std::fclose(file_);
}

// Moves the unread part to the front and reads more after it; false at the
// end of the file.
bool CaseSource::refill() {
    if (!file_ || at_end_) return false;
    if (begin_ > 0) {
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        base_ += static_cast<long>(begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    if (end_ == buffer_.size()) buffer_.resize(buffer_.size() * 2);
    data_ = buffer_.data();
    std::size_t got = std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, file_);
    if (got == 0) {
        if (std::ferror(file_)) fail(3441, "disk error reading file '%s'", name_.c_str());
        at_end_ = true;
        return false;
    }
    end_ += got;
    return true;
}

CaseSource::Got CaseSource::next(std::string_view& line, long& offset) {
    std::size_t searched = 0;  // bytes after begin_ known to hold no line end
    for (;;) {
        const char* start = data_ + begin_;
        const std::size_t available = end_ - begin_;
        const void* found = std::memchr(start + searched, '\n', available - searched);
        if (found) {
            const std::size_t length = static_cast<const char*>(found) - start;
            offset = base_ + static_cast<long>(begin_);
            begin_ += length + 1;
            line = {start, length};
            if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
            return length > kMaxLineLength ? Got::TooLong : Got::Line;
        }
        searched = available;
        if (available > kMaxLineLength) {
            // Drop the line's text as it streams past, up to its line end.
            offset = base_ + static_cast<long>(begin_);
            for (;;) {
                base_ += static_cast<long>(end_);
                begin_ = end_ = 0;
                if (!refill()) return Got::TooLong;
                if (const void* end = std::memchr(data_, '\n', end_)) {
                    begin_ = static_cast<const char*>(end) - data_ + 1;
                    return Got::TooLong;
                }
            }
        }
        if (!refill()) {
            if (available == 0) return Got::End;
            offset = base_ + static_cast<long>(begin_);
            line = {data_ + begin_, available};
            begin_ = end_;
            if (line.back() == '\r') line.remove_suffix(1);
            return Got::Line;
        }
    }
}

void CaseSource::seek(long offset) {
    if (offset < 0) offset = 0;
    if (!file_) {
        begin_ = static_cast<std::size_t>(offset < size_ ? offset : size_);
        return;
    }
    if (offset > size_) offset = size_;
    std::fseek(file_, offset, SEEK_SET);
    std::clearerr(file_);
    base_ = offset;
    begin_ = end_ = 0;
    at_end_ = false;
}

}  // namespace ravelo
