// A fresh initialised environment per test, and the last report made in it.
#pragma once
#include <gtest/gtest.h>

#include <string>

#include "ravelo/ravelo.h"

class NetTest : public ::testing::Test {
protected:
    void SetUp() override {
        char mesg[MESG_LEN_ns];
        env = NewRaveloEnviron_ns(nullptr, nullptr, nullptr);
        ASSERT_NE(env, nullptr);
        ASSERT_EQ(InitRavelo2_bn(env, mesg), 0);
        net = NewNet_bn("Test", env);
        ASSERT_NE(net, nullptr);
    }
    void TearDown() override {
        char mesg[MESG_LEN_ns];
        CloseRavelo_bn(env, mesg);
    }

    const report_ns* last_report() const {
        const report_ns *r = nullptr, *last = nullptr;
        while ((r = GetError_ns(env, NULL_ERR, r)) != nullptr) last = r;
        return last;
    }
    int last_number() const {
        const report_ns* r = last_report();
        return r ? ErrorNumber_ns(r) : 0;
    }
    std::string last_message() const {
        const report_ns* r = last_report();
        return r ? ErrorMessage_ns(r) : std::string();
    }
    // The last report's message, then every report cleared.
    std::string take_message() {
        std::string m = last_message();
        ClearErrors_ns(env, INTERNAL_ERR);
        return m;
    }
    // The last report's number, then every report cleared.
    int take_number() {
        int n = last_number();
        ClearErrors_ns(env, INTERNAL_ERR);
        return n;
    }
    bool no_reports() const { return last_report() == nullptr; }

    node_bn* node(const char* name, int states) { return NewNode_bn(name, states, net); }

    environ_ns* env = nullptr;
    net_bn* net = nullptr;
};
