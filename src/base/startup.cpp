#include "base/startup.h"

#include "base/frame.h"
#include "base/random.h"
#include "base/report.h"
#include "base/text.h"

namespace ravelo {
namespace {

void settle_settings(Environment& env) {
    if (env.version_text.empty()) env.version_text = kVersionText;
}

void attach_reports(Environment&) {}

void open_error_list(Environment& env) { drop_all_reports(env); }

void make_default_generator(Environment& env) { default_generator(env); }

void finish(Environment&) {}

}  // namespace

const std::vector<StartupStep>& startup_steps() {
    static const std::vector<StartupStep> steps{
        {10, settle_settings},
        {kLifeReportsAttach, attach_reports},
        {kLifeErrorListReady, open_error_list},
        {30, make_default_generator},
        {kLifeInitialized, finish},
    };
    return steps;
}

int start_environment(Environment& env, const std::string& executable, std::string& mesg) {
    if (env.life_state == kLifeInitialized) {
        mesg = format("%s environment already initialized", "Ravelo");
        return 0;
    }
    if (env.life_state != kLifeCreated) {
        mesg = format("Attempt to initialize %s environment which is already partially initialized",
                      "Ravelo");
        return -2;
    }
    return run_startup(env, startup_steps(), executable, mesg);
}

int run_startup(Environment& env, const std::vector<StartupStep>& steps,
                const std::string& executable, std::string& mesg) {
    mesg = format("%s %s, by %s\n", "Ravelo", env.version_text.c_str(), "Tolvek");
    mesg += format("The file location of the executable running this program is:  %s%s\n",
                   executable.c_str(), "");
    for (const StartupStep& step : steps) {
        try {
            step.run(env);
        } catch (...) {
            Report* stopped = ApiFrame::report_of(std::current_exception());
            mesg += format("\nHad Error: %s\n", stopped ? stopped->message.c_str() : "");
            return -1;
        }
        env.life_state = step.state;
    }
    return 0;
}

}  // namespace ravelo
