#include "base/environment.h"

#include <algorithm>
#include <atomic>

namespace ravelo {
namespace {

struct EnvironmentTable {
    std::vector<std::unique_ptr<Environment>> all;  // retired ones stay as tombstones
    std::vector<Environment*> live;
};

EnvironmentTable& table() {
    static EnvironmentTable t;
    return t;
}

thread_local Environment* t_current = nullptr;
std::atomic<int> g_checking{3};
double g_memory_limit = 1e12;
bool g_memory_limit_set = false;

}  // namespace

void ObjectStore::clear() {
    std::vector<std::shared_ptr<void>> doomed;
    {
        std::lock_guard<std::mutex> guard(mutex_);
        doomed.swap(objects_);
    }
    while (!doomed.empty()) doomed.pop_back();
}

Environment* create_environment() {
    EnvironmentTable& t = table();
    if (static_cast<int>(t.live.size()) >= kMaxEnvironments) return nullptr;
    t.all.push_back(std::make_unique<Environment>());
    Environment* env = t.all.back().get();
    env->version_text = kVersionText;
    t.live.push_back(env);
    return env;
}

Environment* default_environment() {
    EnvironmentTable& t = table();
    return t.live.empty() ? nullptr : t.live.front();
}

int number_of_environments() { return static_cast<int>(table().live.size()); }

void retire_environment(Environment& env) {
    EnvironmentTable& t = table();
    t.live.erase(std::remove(t.live.begin(), t.live.end(), &env), t.live.end());
    env.kill();
    if (t_current == &env) t_current = nullptr;
}

Environment* current_environment() {
    if (t_current && t_current->type_code() == kEnvironType) return t_current;
    return default_environment();
}

void set_current_environment(Environment* env) { t_current = env; }

int checking_level() { return g_checking.load(); }
void set_checking_level(int level) { g_checking.store(level); }
double memory_limit() { return g_memory_limit; }
void set_memory_limit(double bytes) {
    g_memory_limit = bytes;
    g_memory_limit_set = true;
}
bool memory_limit_set() { return g_memory_limit_set; }

}  // namespace ravelo
