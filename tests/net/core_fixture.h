// A bare initialised environment for tests of the net model's core
// operations, and the message of the failure an operation raises.
#pragma once
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/environment.h"
#include "base/failure.h"
#include "base/report.h"
#include "net/ops.h"

namespace ravelo {

class CoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        env = create_environment();
        env->life_state = kLifeInitialized;
        set_current_environment(env);
        net = create_net(*env, "N");
    }
    void TearDown() override {
        drop_all_reports(*env);
        env->store.clear();
        retire_environment(*env);
    }
    static std::string failure_of(const std::function<void()>& f) {
        try {
            f();
        } catch (const Failure& e) {
            return e.report->message;
        }
        return "";
    }
    Environment* env = nullptr;
    Net* net = nullptr;
};

}  // namespace ravelo
