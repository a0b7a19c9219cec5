// The text of a case file, handed out line by line from large buffered
// chunks, so that reading never holds the whole file.
#pragma once
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace ravelo {

class Stream;

class CaseSource {
public:
    enum class Got { Line, TooLong, End };
    // Lines longer than this are passed over (their text is not kept).
    static constexpr std::size_t kMaxLineLength = std::size_t(64) << 20;

    explicit CaseSource(const Stream& stream);
    ~CaseSource();
    CaseSource(const CaseSource&) = delete;
    CaseSource& operator=(const CaseSource&) = delete;

    // The next line without its line end; offset receives where it starts.
    Got next(std::string_view& line, long& offset);
    void seek(long offset);
    long offset() const { return base_ + static_cast<long>(begin_); }
    long size() const { return size_; }

private:
    bool refill();

    std::string name_;
    std::FILE* file_ = nullptr;
    std::vector<char> buffer_;
    const char* data_ = nullptr;
    std::size_t begin_ = 0, end_ = 0;
    long base_ = 0;  // file offset of data_[0]
    long size_ = 0;
    bool at_end_ = false;
};

}  // namespace ravelo
