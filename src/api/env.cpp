// Environment family.
#include <unistd.h>

#include <climits>
#include <cstring>

#include "api/handles.h"
#include "base/report.h"
#include "base/text.h"
#include "net/ops.h"

using namespace ravelo;

namespace {

constexpr const char* kVersionText = "5.05 (Ravelo, C++20 engine)";

void write_message(char* mesg, const std::string& text) {
    if (!mesg) return;
    std::strncpy(mesg, text.c_str(), MESG_LEN_ns - 1);
    mesg[MESG_LEN_ns - 1] = '\0';
}

std::string executable_location() {
    char path[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", path, sizeof path - 1);
    if (n <= 0) return "(unknown)";
    path[n] = '\0';
    return path;
}

}  // namespace

environ_ns* NewRaveloEnviron_ns(const char* license, environ_ns* reserved, const char* options) {
    ApiFrame frame("NewRaveloEnviron_ns");
    (void)license;
    (void)reserved;
    return frame.run<environ_ns*>(nullptr, [&]() -> environ_ns* {
        if (options && *options)
            fail(5140,
                 "argument 'options' must be empty or null (0) with this version of >-Ravelo, but "
                 "it is:  %.80s",
                 options);
        Environment* env = create_environment();
        if (!env) internal_failure(__FILE__, __LINE__, "NumEnvs < MAX_NUM_ENVIROS");
        env->version_text = kVersionText;
        return handle_of(env);
    });
}

int InitRavelo2_bn(environ_ns* env_handle, char* mesg) {
    ApiFrame frame("InitRavelo2_bn");
    return frame.run(-1, [&]() -> int {
        Environment* env = env_handle ? core_of<Environment>(env_handle) : default_environment();
        if (!env) fail_text(5100, "NULL passed for >-Enviro");
        ApiFrame::check(env, kEnvironHandle);
        set_current_environment(env);
        if (env->life_state == kLifeInitialized) {
            write_message(mesg, format("%s environment already initialized", "Ravelo"));
            return 0;
        }
        if (env->life_state != kLifeCreated) {
            write_message(mesg, format("Attempt to initialize %s environment which is already "
                                       "partially initialized",
                                       "Ravelo"));
            return -2;
        }
        std::string banner = format("Ravelo %s\n", env->version_text.c_str());
        banner += format("The file location of the executable running this program is:  %s%s\n",
                         executable_location().c_str(), "");
        env->life_state = kLifeReportsAttach;
        env->life_state = kLifeErrorListReady;
        env->life_state = kLifeInitialized;
        write_message(mesg, banner);
        return 0;
    });
}

int CloseRavelo_bn(environ_ns* env_handle, char* mesg) {
    ApiFrame frame("CloseRavelo_bn");
    return frame.run(-1, [&]() -> int {
        Environment* env = env_handle ? core_of<Environment>(env_handle) : default_environment();
        if (!env || tag_of(env) != kEnvironType) {
            write_message(mesg, format("Attempt to close %s with an ill formed environ_ns.\n",
                                       "Ravelo"));
            return -1;
        }
        set_current_environment(nullptr);
        while (!env->nets.empty()) delete_net(*static_cast<Net*>(env->nets.back()));
        drop_all_reports(*env);
        env->store.clear();
        env->life_state = 0;
        retire_environment(*env);
        write_message(mesg, format("Leaving %s.\n", "Ravelo"));
        return 0;
    });
}

int GetRaveloVersion_bn(environ_ns* env, const char** version) {
    ApiFrame frame("GetRaveloVersion_bn");
    if (version) *version = kVersionText;
    frame.run([&] {
        Environment& e = frame.environment(env);
        if (version) *version = e.version_text.c_str();
    });
    return kVersionNumber;
}

checking_ns ArgumentChecking_ns(checking_ns setting, environ_ns* env) {
    ApiFrame frame("ArgumentChecking_ns");
    return frame.run(static_cast<checking_ns>(-1), [&]() -> checking_ns {
        frame.environment(env);
        int previous = checking_level();
        int s = static_cast<int>(setting);
        if (s == -1) return static_cast<checking_ns>(previous);
        if (s < 1 || s > 4)
            fail(5529, "argument 'setting' is %d, but it should be %d or between %d and %d inclusive",
                 s, -1, 1, 4);
        set_checking_level(s);
        return static_cast<checking_ns>(previous);
    });
}

double LimitMemoryUsage_ns(double max_mem, environ_ns* env) {
    ApiFrame frame("LimitMemoryUsage_ns");
    return frame.run(-1.0, [&]() -> double {
        frame.environment(env);
        double previous = memory_limit();
        if (max_mem == -1) return previous;
        if (!(max_mem >= 200000))
            fail(5620,
                 "argument 'max_mem' is %g bytes, but it must be %g or greater (or %g to just "
                 "query) with this version of >-Ravelo",
                 max_mem, 200000.0, -1.0);
        set_memory_limit(max_mem);
        return previous;
    });
}

int SetLanguage_ns(int language, environ_ns* env) {
    ApiFrame frame("SetLanguage_ns");
    return frame.run(-1, [&]() -> int {
        Environment& e = frame.environment(env);
        int previous = e.language;
        if (language == -1) return previous;
        if (language < 0 || language > 4)
            fail(5531, "argument 'language' is %d, but it should be %d or between %d and %d inclusive",
                 language, -1, 0, 4);
        e.language = language;
        return previous;
    });
}

void SetEnvironUserData_ns(environ_ns* env, int kind, void* data) {
    ApiFrame frame("SetEnvironUserData_ns");
    frame.run([&] { frame.environment(env).user_data[kind] = data; });
}

void* GetEnvironUserData_ns(environ_ns* env, int kind) {
    ApiFrame frame("GetEnvironUserData_ns");
    return frame.run<void*>(nullptr, [&]() -> void* {
        Environment& e = frame.environment(env);
        auto it = e.user_data.find(kind);
        return it == e.user_data.end() ? nullptr : it->second;
    });
}

double GetInfinityDbl_ns(void) { return infinity_value(); }
double GetUndefDbl_ns(void) { return undef_value(); }
