// Bringing an environment up, life state by life state, and writing the
// start-up message the caller asked for.
#pragma once
#include <string>
#include <vector>

#include "base/environment.h"

namespace ravelo {

// One step of initialisation: when run succeeds the environment reaches state.
struct StartupStep {
    int state;
    void (*run)(Environment& env);
};

// The steps every environment goes through, ending in state 40.
const std::vector<StartupStep>& startup_steps();

// Initialises env and writes the start-up message into mesg.  0 on success
// (or when env is initialised already); negative when a step failed, leaving
// env partly initialised, or when env already is.
int start_environment(Environment& env, const std::string& executable, std::string& mesg);
int run_startup(Environment& env, const std::vector<StartupStep>& steps,
                const std::string& executable, std::string& mesg);

}  // namespace ravelo
