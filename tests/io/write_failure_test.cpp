// Writing nets to files that cannot take them: each failure has its own
// report, and a file already there is never left half written.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "io/io_fixture.h"
#include "net/ops.h"

namespace ravelo::testing {
namespace {

namespace fs = std::filesystem;

const char* const kTiny = "// ~->[DNET-1]->~\nbnet Tiny { node A { states = (a, b); probs = (0.25, 0.75); }; };\n";

class NetFileWriting : public IoTest {
protected:
    void SetUp() override {
        IoTest::SetUp();
        folder = fs::temp_directory_path() /
                 ("ravelo_" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "_" +
                  std::to_string(getpid()));
        fs::remove_all(folder);
        fs::create_directories(folder);
        net = read_ok("tiny.dne", kTiny);
    }
    void TearDown() override {
        fs::remove_all(folder);
        IoTest::TearDown();
    }

    // Writes the net to path through a new file stream; the last report's message.
    std::string write_to(const fs::path& path) {
        stream_ns* s = NewFileStream_ns(path.c_str(), env, nullptr);
        WriteNet_bn(handle_of(net), s);
        DeleteStream_ns(s);
        return last_message();
    }
    static std::string contents(const fs::path& path) {
        std::ifstream in(path);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    size_t files_in_folder() const {
        return static_cast<size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
    }

    fs::path folder;
    Net* net = nullptr;
};

TEST_F(NetFileWriting, AFileThatCannotBeMadeOrOpenedIsNamed) {
    fs::path missing = folder / "no_such_folder" / "net.dne";
    EXPECT_EQ(write_to(missing), "couldn't create new file '" + missing.string() + "'");
    // A path through a regular file fails even for a user whom permissions do not stop.
    std::ofstream(folder / "plain") << "text";
    fs::path under_file = folder / "plain" / "net.dne";
    EXPECT_EQ(write_to(under_file), "couldn't create new file '" + under_file.string() + "'");
    fs::create_directory(folder / "taken.dne");
    EXPECT_EQ(write_to(folder / "taken.dne"), "couldn't open file '" + (folder / "taken.dne").string() + "' for writing");
    EXPECT_EQ(files_in_folder(), 2u);  // nothing left behind
}

TEST_F(NetFileWriting, AStreamWhoseFileWentAwayCannotReopenIt) {
    fs::path inner = folder / "inner";
    fs::create_directory(inner);
    fs::path path = inner / "net.dne";
    stream_ns* s = NewFileStream_ns(path.c_str(), env, nullptr);
    WriteNet_bn(handle_of(net), s);
    EXPECT_EQ(last_message(), "");
    fs::remove_all(inner);
    WriteNet_bn(handle_of(net), s);
    std::string message = last_message();
    EXPECT_EQ(message.rfind("couldn't re-open file # ", 0), 0u) << message;
    EXPECT_NE(message.find(" (" + path.string() + ") for writing"), std::string::npos) << message;
    DeleteStream_ns(s);
}

TEST_F(NetFileWriting, RewritingReplacesTheFileWhole) {
    fs::path path = folder / "net.dne";
    std::ofstream(path) << std::string(100000, 'x');
    fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(write_to(path), "");
    EXPECT_EQ(contents(path).rfind("// ~->[DNET-1]->~", 0), 0u);
    EXPECT_EQ(contents(path).find('x'), std::string::npos);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(files_in_folder(), 1u);
    // Through a link, the file it names is written and the link stays.
    fs::create_symlink(path, folder / "link.dne");
    std::ofstream(path) << "old";
    EXPECT_EQ(write_to(folder / "link.dne"), "");
    EXPECT_TRUE(fs::is_symlink(folder / "link.dne"));
    EXPECT_EQ(contents(path).rfind("// ~->[DNET-1]->~", 0), 0u);
}

TEST_F(NetFileWriting, ARefusedWriteLeavesTheOldFile) {
    fs::path path = folder / "net.uai";
    std::ofstream(path) << "old contents";
    create_node(*net, "Untabled", 2);
    EXPECT_EQ(write_to(path), "can't write node 'Untabled' in UAI format, because it has no table, which that format "
                              "requires");
    EXPECT_EQ(contents(path), "old contents");
    EXPECT_EQ(files_in_folder(), 1u);
}

TEST_F(NetFileWriting, AFullDiskIsReported) {
    if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    EXPECT_EQ(write_to("/dev/full"), "disk error writing to file '/dev/full' (is disk full or write protected?)");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

}  // namespace
}  // namespace ravelo::testing
