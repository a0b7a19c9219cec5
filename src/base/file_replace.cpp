#include "base/file_replace.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "base/failure.h"
#include "base/text.h"

namespace ravelo {
namespace {

namespace fs = std::filesystem;

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

std::atomic<int> last_file_number{0};

// Names tried for the new file beside the old one before giving up.
constexpr int kTemporaryNames = 100;

[[noreturn]] void cannot_open(const std::string& path, int file_number, bool exists) {
    if (file_number > 0) fail(3447, "couldn't re-open file # %d (%s) for writing", file_number, path.c_str());
    if (exists) fail(3442, "couldn't open file '%s' for writing", path.c_str());
    fail(3448, "couldn't create new file '%s'", path.c_str());
}

[[noreturn]] void disk_error(const std::string& path) {
    fail(3443, "disk error writing to file '%s' (is disk full or write protected?)", path.c_str());
}

// Writes and closes; false when any of it failed.
bool write_all(File file, const std::string& text) {
    bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
    written = std::fflush(file.get()) == 0 && written;
    return std::fclose(file.release()) == 0 && written;
}

// A file of a name no other file has, in the folder of target.
File new_file_beside(const fs::path& target, std::string& name) {
    for (int n = 0; n < kTemporaryNames; ++n) {
        name = target.string() + format(".%d~", n);
        File file(std::fopen(name.c_str(), "wbx"));
        if (file || errno != EEXIST) return file;
    }
    return nullptr;
}

}  // namespace

void replace_file_text(const std::string& path, const std::string& text, int& file_number) {
    std::error_code ec;
    fs::path target = path;
    // Writing through a link replaces the file it names, not the link.
    if (fs::is_symlink(target, ec)) {
        fs::path resolved = fs::weakly_canonical(target, ec);
        if (!ec) target = resolved;
    }
    fs::file_status status = fs::status(target, ec);
    const bool exists = fs::exists(status);
    // An existing file must accept writing as it is; devices and pipes are
    // written in place since they cannot be replaced.
    if (exists) {
        File probe(std::fopen(target.c_str(), "ab"));
        if (!probe) cannot_open(path, file_number, true);
        if (!fs::is_regular_file(status)) {
            if (!write_all(std::move(probe), text)) disk_error(path);
            if (file_number == 0) file_number = ++last_file_number;
            return;
        }
    }
    std::string temporary;
    File file = new_file_beside(target, temporary);
    if (!file) {
        // A folder that takes no new files: an existing file is written in place.
        if (!exists) cannot_open(path, file_number, false);
        file.reset(std::fopen(target.c_str(), "wb"));
        if (!file) cannot_open(path, file_number, true);
        if (!write_all(std::move(file), text)) disk_error(path);
    } else {
        bool written = write_all(std::move(file), text);
        if (written && exists) fs::permissions(temporary, status.permissions(), ec);
        if (written) fs::rename(temporary, target, ec);
        if (!written || ec) {
            fs::remove(temporary, ec);
            disk_error(path);
        }
    }
    if (file_number == 0) file_number = ++last_file_number;
}

}  // namespace ravelo
