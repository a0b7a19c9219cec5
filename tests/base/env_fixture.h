// A bare environment, made current and ready for reports, for tests that work
// below the interface; everything it holds goes when the test ends.
#pragma once
#include <gtest/gtest.h>

#include "base/environment.h"
#include "base/report.h"

namespace ravelo {

class EnvTest : public ::testing::Test {
protected:
    void SetUp() override {
        env = create_environment();
        env->life_state = kLifeInitialized;
        set_current_environment(env);
    }
    void TearDown() override {
        drop_all_reports(*env);
        env->store.clear();
        retire_environment(*env);
        set_current_environment(nullptr);
    }
    Environment* env = nullptr;
};

}  // namespace ravelo
