// A bare initialised environment for tests of the net model's core
// operations, and the message of the failure an operation raises.
#pragma once
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/env_fixture.h"
#include "base/failure.h"
#include "net/ops.h"

namespace ravelo {

class CoreTest : public EnvTest {
protected:
    void SetUp() override {
        EnvTest::SetUp();
        net = create_net(*env, "N");
    }
    static std::string failure_of(const std::function<void()>& f) {
        try {
            f();
        } catch (const Failure& e) {
            return e.report->message;
        }
        return "";
    }
    Net* net = nullptr;
};

}  // namespace ravelo
