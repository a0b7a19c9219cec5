#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/environment.h"
#include "base/failure.h"
#include "base/random.h"
#include "base/report.h"
#include "base/startup.h"

namespace ravelo {
namespace {

class StartupTest : public ::testing::Test {
protected:
    void SetUp() override {
        env = create_environment();
        set_current_environment(env);
    }
    void TearDown() override {
        set_current_environment(nullptr);
        drop_all_reports(*env);
        env->store.clear();
        retire_environment(*env);
    }
    Environment* env = nullptr;
};

const std::string kOpening = std::string("Ravelo ") + kVersionText +
                             ", by Tolvek\nThe file location of the executable running this "
                             "program is:  /opt/app/run\n";

TEST_F(StartupTest, StepsBringTheEnvironmentToItsWorkingState) {
    std::string mesg;
    EXPECT_EQ(start_environment(*env, "/opt/app/run", mesg), 0);
    EXPECT_EQ(mesg, kOpening);
    EXPECT_EQ(env->life_state, kLifeInitialized);
    ASSERT_NE(env->default_generator, nullptr);
    RandomGenerator& g = default_generator(*env);
    EXPECT_EQ(env->default_generator, &g);
    EXPECT_TRUE(g.takes_env_lock);
    RandomGenerator seeded(nullptr, 3);
    EXPECT_EQ(g.uniform(), seeded.uniform());
    EXPECT_EQ(start_environment(*env, "/opt/app/run", mesg), 0);
    EXPECT_EQ(mesg, "Ravelo environment already initialized");
}

void failing_step(Environment&) { fail(2999, "could not set up the >-RandGen"); }

TEST_F(StartupTest, FailedStepLeavesItPartlyInitializedWithTheReason) {
    std::vector<StartupStep> steps(startup_steps().begin(), startup_steps().begin() + 3);
    steps.push_back({30, failing_step});
    std::string mesg;
    EXPECT_LT(run_startup(*env, steps, "/opt/app/run", mesg), 0);
    EXPECT_EQ(mesg, kOpening + "\nHad Error: could not set up the randgen_ns\n");
    EXPECT_EQ(env->life_state, kLifeErrorListReady);
    Report* kept = next_report(*env, kNullError, nullptr);  // reports attach from state 25
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(kept->number, -2999);
    EXPECT_LT(start_environment(*env, "/opt/app/run", mesg), 0);
    EXPECT_EQ(mesg, "Attempt to initialize Ravelo environment which is already partially initialized");
}

}  // namespace
}  // namespace ravelo
