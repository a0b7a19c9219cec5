// What every text reader shares: a UTF-8 byte-order mark is not part of the text, and a file with
// nothing in it, or a directory, is reported as such rather than read as an empty net.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "io/io_fixture.h"

namespace ravelo::testing {
namespace {

using TextFiles = IoTest;

const char* const kByteOrderMark = "\xEF\xBB\xBF";

std::string file_text(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> node_names(const Net& net) {
    std::vector<std::string> names;
    for (const Node* n : net.nodes.nodes) names.push_back(n->name);
    return names;
}

const char* const kSmallDne = "bnet Small { node A { kind = NATURE; states = (yes, no); probs = (0.3, 0.7); }; };\n";

TEST_F(TextFiles, EveryReaderTakesAByteOrderMark) {
    const std::vector<std::string> files = {"asia.bif", "alarm.bifxml", "alarm.net", "asia.uai", "benefits.xdsl"};
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        std::string text = file_text(data_path(file));
        ASSERT_FALSE(text.empty());
        Net* plain = read_ok(file, text);
        Net* marked = read_ok(file, kByteOrderMark + text);
        EXPECT_EQ(node_names(*plain), node_names(*marked));
        EXPECT_EQ(plain->nodes.nodes.back()->cpt, marked->nodes.nodes.back()->cpt);
    }
    Net* dne = read_ok("small.dne", std::string(kByteOrderMark) + kSmallDne);
    EXPECT_EQ(node_names(*dne), std::vector<std::string>{"A"});
}

TEST_F(TextFiles, AByteOrderMarkInAFileOnDiskIsSkippedToo) {
    std::string path = ::testing::TempDir() + "marked_" + std::to_string(getpid()) + ".dne";
    std::ofstream(path, std::ios::binary) << kByteOrderMark << kSmallDne;
    Net* net = file_ok(path);
    EXPECT_EQ(net->nodes.nodes.size(), 1u);
    std::remove(path.c_str());
}

TEST_F(TextFiles, AnEmptyFileIsReportedAsEmpty) {
    for (const char* name : {"e.dne", "e.bif", "e.xml", "e.net", "e.uai", "e.xdsl"}) {
        for (const std::string& text : {std::string(), std::string(" \n\t\r\n"), std::string(kByteOrderMark)}) {
            SCOPED_TRACE(std::string(name) + " holding '" + text + "'");
            EXPECT_EQ(read_text(name, text), nullptr);
            EXPECT_EQ(last_message(), "couldn't read a net from file '" + std::string(name) + "', because it is empty");
        }
    }
}

TEST_F(TextFiles, ADirectoryIsNamedAsOne) {
    std::string dir = ::testing::TempDir() + "folder_" + std::to_string(getpid()) + ".dne";
    std::filesystem::create_directory(dir);
    EXPECT_EQ(read_file(dir), nullptr);
    EXPECT_EQ(last_message(), "couldn't read file '" + dir + "', because it is a directory");
    std::filesystem::remove(dir);
}

}  // namespace
}  // namespace ravelo::testing
