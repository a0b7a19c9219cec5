#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/failure.h"
#include "base/startup.h"
#include "env_fixture.h"

namespace ravelo {
namespace {

using StartupTest = EnvTest;

const std::string kOpening = std::string("Ravelo ") + kVersionText +
                             ", by Tolvek\nThe file location of the executable running this "
                             "program is:  /opt/app/run\n";

void failing_step(Environment&) { fail(2999, "could not set up the >-RandGen"); }

TEST_F(StartupTest, FailedStepLeavesItPartlyInitializedWithTheReason) {
    env->life_state = kLifeCreated;
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
