// A fresh environment per test, with helpers to read nets from text and
// to see the last report made.
#pragma once
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>

#include "api/handles.h"
#include "base/stream.h"
#include "ravelo/ravelo.h"

namespace ravelo::testing {

// Test files; the real networks are kept once, in nets/.
inline std::string data_path(const std::string& file) {
    const char* dir = std::getenv("RAVELO_TEST_DATA");
    std::string root = std::string(dir ? dir : RAVELO_TEST_DATA) + "/";
    std::string net = root + "nets/" + file;
    return std::ifstream(net).good() ? net : root + file;
}

class IoTest : public ::testing::Test {
protected:
    void SetUp() override {
        env = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
        char mesg[MESG_LEN_ns];
        ASSERT_EQ(InitRavelo2_bn(env, mesg), 0);
    }
    void TearDown() override {
        char mesg[MESG_LEN_ns];
        CloseRavelo_bn(env, mesg);
    }

    // Reads a net from text, as if from a file of the given name.
    Net* read_text(const std::string& name, const std::string& text) {
        stream_ns* s = NewMemoryStream_ns(name.c_str(), env, nullptr);
        SetStreamContents_ns(s, text.c_str(), static_cast<long>(text.size()), 1);
        net_bn* net = ReadNet_bn(s, NO_VISUAL_INFO);
        DeleteStream_ns(s);
        return core_of<Net>(net);
    }
    Net* read_file(const std::string& path) {
        stream_ns* s = NewFileStream_ns(path.c_str(), env, nullptr);
        net_bn* net = ReadNet_bn(s, NO_VISUAL_INFO);
        DeleteStream_ns(s);
        return core_of<Net>(net);
    }
    // Reads a net that must be read: a refusal fails the test and ends it.
    Net* read_ok(const std::string& name, const std::string& text) { return must(read_text(name, text), name); }
    Net* file_ok(const std::string& path) { return must(read_file(path), path); }
    Net* must(Net* net, const std::string& name) {
        if (!net) {
            ADD_FAILURE() << name << " was not read: " << last_message();
            throw std::runtime_error("net not read");
        }
        return net;
    }
    // The net written as text, in the format the name selects.
    std::string write_text(const Net* net, const std::string& name) {
        stream_ns* s = NewMemoryStream_ns(name.c_str(), env, nullptr);
        WriteNet_bn(handle_of(const_cast<Net*>(net)), s);
        long length = 0;
        const char* text = GetStreamContents_ns(s, &length);
        std::string out = text ? std::string(text, static_cast<size_t>(length)) : std::string();
        DeleteStream_ns(s);
        return out;
    }
    // Message of the newest report, and clears them all.
    std::string last_message() {
        const report_ns* r = nullptr;
        const report_ns* last = nullptr;
        while ((r = GetError_ns(env, NULL_ERR, r)) != nullptr) last = r;
        std::string text = last ? ErrorMessage_ns(last) : "";
        ClearErrors_ns(env, ERROR_ERR);
        return text;
    }
    int error_count() {
        int n = 0;
        const report_ns* r = nullptr;
        while ((r = GetError_ns(env, ERROR_ERR, r)) != nullptr) ++n;
        return n;
    }

    environ_ns* env = nullptr;
};

inline const float* row_of_node(const Node& node, std::initializer_list<int> condition) {
    std::vector<int> states(condition);
    return &node.cpt[row_of(node, states.data()) * static_cast<size_t>(node.num_states())];
}

}  // namespace ravelo::testing
