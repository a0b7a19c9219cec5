// The engine environment: owner of every object made in it, holder of the
// reports of its threads, and the process-wide settings beside it.
#pragma once
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "base/tags.h"

namespace ravelo {

struct Report;

constexpr int kMaxEnvironments = 100;
constexpr int kLifeCreated = 1;
constexpr int kLifeReportsAttach = 25;
constexpr int kLifeErrorListReady = 27;
constexpr int kLifeClosing = 30;
constexpr int kLifeInitialized = 40;
constexpr int kVersionNumber = 505;
constexpr const char* kVersionText = "5.05 (C++20, 64-bit)";

// Owns the storage of every handle object of an environment.  A deleted
// object keeps its storage (its tag dead, its contents released) until the
// environment closes, so a stale handle is caught by its tag.
class ObjectStore {
public:
    template <class T, class... Args>
    T* make(Args&&... args) {
        auto object = std::make_shared<T>(std::forward<Args>(args)...);
        std::lock_guard<std::mutex> guard(mutex_);
        objects_.push_back(object);
        return object.get();
    }
    void clear();  // frees everything, newest first
    size_t size() const {
        std::lock_guard<std::mutex> guard(mutex_);
        return objects_.size();
    }

private:
    mutable std::mutex mutex_;  // worker threads of one call may make reports at once
    std::vector<std::shared_ptr<void>> objects_;
};

class Environment : public Tagged {
public:
    Environment() : Tagged(kEnvironType) {}

    int life_state = kLifeCreated;
    std::string version_text;
    int report_limit = 1000;  // L of report throttling
    int language = 1;         // the procedural interface's words
    std::map<int, void*> user_data;
    std::recursive_mutex lock;  // taken by draws from the default generator
    std::map<std::thread::id, Report*> report_groups;
    std::vector<Tagged*> nets;  // live nets in creation order
    Tagged* default_generator = nullptr;
    int case_delimiter = '\t';
    int missing_data_char = '*';
    // Asked by the case-file reader about values the net cannot take: given
    // the question and its comma-separated answers, returns the answer's
    // index.  Without one, the reader takes unknown_values_policy.
    std::function<int(const std::string&, const std::string&)> case_query;
    int unknown_values_policy = 1;  // 1 skip, 2 add or expand, 3 halt
    // Told the title and fraction done of long actions; true halts them.
    std::function<bool(const std::string&, double)> progress_listener;
    ObjectStore store;
};

// The table of environments.
Environment* create_environment();      // NULL when the table is full
Environment* default_environment();     // the first live one, or NULL
int number_of_environments();
void retire_environment(Environment& env);  // after closing: dead tag, out of the table

// The environment that reports of the calling thread go to when none is named.
Environment* current_environment();
void set_current_environment(Environment* env);

// Process-wide settings.
int checking_level();
void set_checking_level(int level);
double memory_limit();
void set_memory_limit(double bytes);
bool memory_limit_set();

}  // namespace ravelo
