// Environment family.
#include <unistd.h>

#include <climits>
#include <cstring>

#include "api/handles.h"
#include "base/report.h"
#include "base/startup.h"
#include "base/thread_state.h"
#include "base/text.h"
#include "net/ops.h"

using namespace ravelo;

namespace {

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

// The environment named by a handle, or the default one for NULL.
Environment* named_environment(environ_ns* handle) {
    return handle ? core_of<Environment>(handle) : default_environment();
}

// Deletes everything env owns and takes it out of the table of environments.
void close_environment(Environment& env) {
    env.life_state = kLifeClosing;  // listeners of deleted nets may not use env any more
    while (!env.nets.empty()) delete_net(*static_cast<Net*>(env.nets.back()));
    drop_all_reports(env);
    env.default_generator = nullptr;
    env.user_data.clear();
    env.store.clear();
    env.life_state = 0;
    retire_environment(env);
}

}  // namespace

environ_ns* NewRaveloEnviron_ns(const char* license, environ_ns* reserved, const char* options) {
    ApiFrame frame("NewRaveloEnviron_ns");
    (void)license;
    (void)reserved;
    return frame.run<environ_ns*>(nullptr, [&]() -> environ_ns* {
        ApiFrame::check_no_options(options);
        Environment* env = create_environment();
        if (!env) internal_failure(__FILE__, __LINE__, "NumEnvs < MAX_NUM_ENVIROS");
        return handle_of(env);
    });
}

int InitRavelo2_bn(environ_ns* env_handle, char* mesg) {
    ApiFrame frame("InitRavelo2_bn");
    return frame.run(-1, [&]() -> int {
        Environment* env = named_environment(env_handle);
        if (!env) fail_text(kEnvironHandle.null_number, kEnvironHandle.null_text);
        ApiFrame::check(env, kEnvironHandle);
        set_current_environment(env);
        std::string text;
        int result = start_environment(*env, executable_location(), text);
        write_message(mesg, text);
        return result;
    });
}

int CloseRavelo_bn(environ_ns* env_handle, char* mesg) {
    ApiFrame frame("CloseRavelo_bn");
    return frame.run(-1, [&]() -> int {
        Environment* env = named_environment(env_handle);
        if (!env || tag_of(env) != kEnvironType) {
            write_message(mesg, format("Attempt to close %s with an ill formed environ_ns.\n",
                                       "Ravelo"));
            return -1;
        }
        // A listener callback runs inside a call that still uses env's objects.
        if (is_callback_marker(current_function_text())) {
            write_message(mesg, format("Not closing %s because user-claimed object won't close.\n",
                                       "Ravelo"));
            return -2;
        }
        set_current_environment(nullptr);
        close_environment(*env);
        write_message(mesg, format("Leaving %s.\n", "Ravelo"));
        return 0;
    });
}

int GetRaveloVersion_bn(environ_ns* env, const char** version) {
    ApiFrame frame("GetRaveloVersion_bn");
    if (version) *version = kVersionText;  // even when the environment is refused
    frame.run([&] {
        Environment& e = frame.environment(env);
        if (version) *version = e.version_text.c_str();
    });
    return kVersionNumber;
}

checking_ns ArgumentChecking_ns(checking_ns setting, environ_ns* env) {
    ApiFrame frame("ArgumentChecking_ns");
    return frame.run(QueryCheck, [&]() -> checking_ns {
        frame.environment(env);
        int previous = checking_level();
        int s = raw_enum(setting);
        if (s == QueryCheck) return static_cast<checking_ns>(previous);
        if (s < NoCheck || s > CompleteCheck)
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
