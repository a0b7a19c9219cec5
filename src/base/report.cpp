#include "base/report.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

#include "base/environment.h"
#include "base/lexicon.h"
#include "base/thread_state.h"

namespace ravelo {
namespace {

constexpr const char* kSeverityWords[] = {"null-error", "false alert", "report", "notice",
                                          "warning", "error", "internal error"};

struct StockReports {
    Report critical, errors, warnings, lesser;
    StockReports() {
        set(critical, 2600, kInternalError, "Critical failure");
        set(errors, 2601, kError, "too many error reports are held by this thread; "
                                  "clear some reports to receive further ones");
        set(warnings, 2602, kWarning, "too many reports are held by this thread, so this "
                                      "warning was dropped; clear some reports to receive further ones");
        set(lesser, 2603, kNotice, "too many reports are held by this thread, so this "
                                   "notice was dropped; clear some reports to receive further ones");
    }
    static void set(Report& r, int number, int severity, const char* message) {
        r.tag = kReportType | kStaticBit;
        r.number = -number;
        r.severity = severity;
        r.message = message;
        r.group = &r;
    }
};

StockReports& stock() {
    static StockReports s;
    return s;
}

// Guards every report tree and group table: worker threads of one interface
// call may report at the same time.
std::recursive_mutex g_reports;

std::recursive_mutex g_fatal_lock;
bool g_in_fatal = false;

thread_local long t_attempted = 0;
thread_local std::vector<Report*> t_open_groups;

std::string truncated(std::string text) {
    if (text.size() > static_cast<size_t>(kMaxMessageLength)) text.resize(kMaxMessageLength);
    return text;
}

// With no environment to hold it, the report is shown on the error stream.
Report* report_without_environment(int number, const std::string& message) {
    std::lock_guard<std::recursive_mutex> guard(g_fatal_lock);
    Report* critical = &stock().critical;
    if (g_in_fatal) return critical;
    g_in_fatal = true;
    std::fputc('\a', stderr);
    std::fprintf(stderr, "\n*********\n%s Error %d:\n%s\n*********\n", "Ravelo",
                 number < 0 ? -number : number, message.c_str());
    std::fflush(stderr);
    g_in_fatal = false;
    return critical;
}

Report* root_group(Environment& env) {
    auto id = std::this_thread::get_id();
    auto it = env.report_groups.find(id);
    if (it != env.report_groups.end()) return it->second;
    Report* group = env.store.make<Report>();
    group->env = &env;
    group->thread = id;
    group->group = group;
    group->message = "group";
    env.report_groups[id] = group;
    return group;
}

Report* root_of(Report* r) {
    while (r->group && r->group != r) r = r->group;
    return r;
}

// The innermost group the thread has open in env, else its root group.
Report* group_for(Environment& env) {
    for (auto it = t_open_groups.rbegin(); it != t_open_groups.rend(); ++it)
        if ((*it)->type_code() == kReportType && (*it)->env == &env) return *it;
    return root_group(env);
}

Report* throttled(Report* group, int severity, int limit) {
    int held = group->held;
    if (severity >= kError) return held >= limit ? &stock().errors : nullptr;
    if (severity == kWarning) return held >= limit * 3 / 4 ? &stock().warnings : nullptr;
    return held >= limit / 2 ? &stock().lesser : nullptr;
}

void forget_group_if_empty(Report* group) {
    if (group->group != group || !group->contents.empty()) return;
    Environment* env = group->env;
    if (env) {
        auto it = env->report_groups.find(group->thread);
        if (it != env->report_groups.end() && it->second == group) env->report_groups.erase(it);
    }
    group->kill();
}

void kill_tree(Report* r, Report* root) {
    for (Report* c : r->contents) kill_tree(c, root);
    r->contents.clear();
    r->contents.shrink_to_fit();
    r->message.clear();
    r->message.shrink_to_fit();
    r->kill();
    if (root->held > 0) --root->held;
}

void collect(Report* group, std::vector<Report*>& out) {
    for (Report* c : group->contents) {
        out.push_back(c);
        collect(c, out);
    }
}

}  // namespace

const char* severity_word(int severity) {
    return severity >= 0 && severity <= 6 ? kSeverityWords[severity] : "unknown severity";
}

Report* critical_report() { return &stock().critical; }

bool is_stock_report(const Report* r) {
    const StockReports& s = stock();
    return r == &s.critical || r == &s.errors || r == &s.warnings || r == &s.lesser;
}

long reports_attempted() { return t_attempted; }

Report* make_report(Environment* env, int number, int severity, const std::string& message,
                    int conditions) {
    ++t_attempted;
    if (!env) env = current_environment();
    int stored = number > 0 ? -number : number;
    bool usable = env && env->type_code() == kEnvironType;
    std::string text = truncated(substitute_terms(message, usable ? env->language : kProceduralLanguage));
    if (!usable || env->life_state < kLifeReportsAttach)
        return report_without_environment(stored, text);

    std::lock_guard<std::recursive_mutex> guard(g_reports);
    Report* group = group_for(*env);
    Report* root = root_of(group);
    if (Report* stock_report = throttled(root, severity, env->report_limit)) return stock_report;
    ++root->held;

    Report* r = env->store.make<Report>();
    r->env = env;
    r->thread = std::this_thread::get_id();
    r->number = stored;
    r->severity = severity;
    r->message = std::move(text);
    r->conditions = conditions;
    r->group = group;
    const std::string& fn = current_function_text();
    r->function = fn.substr(0, kMaxFunctionNameLength);
    group->contents.push_back(r);
    for (Report* g = group; severity > g->severity; g = g->group) {
        g->severity = severity;
        if (g->group == g) break;
    }
    return r;
}

void clear_report(Report* report) {
    std::lock_guard<std::recursive_mutex> guard(g_reports);
    if (!report || report->is_static() || report->type_code() != kReportType) return;
    Report* root = root_of(report);
    if (report == root) {
        while (!root->contents.empty()) clear_report(root->contents.back());
        forget_group_if_empty(root);
        return;
    }
    Report* parent = report->group;
    auto& siblings = parent->contents;
    siblings.erase(std::remove(siblings.begin(), siblings.end(), report), siblings.end());
    kill_tree(report, root);
    forget_group_if_empty(root);
}

void clear_reports(Environment& env, int severity) {
    std::lock_guard<std::recursive_mutex> guard(g_reports);
    std::vector<std::thread::id> threads;
    for (auto& [id, group] : env.report_groups) threads.push_back(id);
    for (std::thread::id id : threads) clear_reports(env, severity, id);
}

void clear_reports(Environment& env, int severity, std::thread::id thread) {
    std::lock_guard<std::recursive_mutex> guard(g_reports);
    std::vector<Report*> roots;
    auto found = env.report_groups.find(thread);
    if (found != env.report_groups.end()) roots.push_back(found->second);
    for (Report* root : roots) {
        std::vector<Report*> all;
        collect(root, all);
        // Deepest first, so a group is judged after what it contains.
        for (auto it = all.rbegin(); it != all.rend(); ++it)
            if ((*it)->type_code() == kReportType && (*it)->severity <= severity) clear_report(*it);
        forget_group_if_empty(root);
    }
}

Report* next_report(Environment& env, int severity, const Report* after) {
    std::lock_guard<std::recursive_mutex> guard(g_reports);
    auto it = env.report_groups.find(std::this_thread::get_id());
    if (it == env.report_groups.end()) return nullptr;
    std::vector<Report*> all;
    collect(it->second, all);
    bool past = after == nullptr;
    for (Report* r : all) {
        if (!past) {
            past = r == after;
            continue;
        }
        if (r->severity >= severity) return r;
    }
    return nullptr;
}

void drop_all_reports(Environment& env) {
    std::lock_guard<std::recursive_mutex> guard(g_reports);
    for (auto& [id, group] : env.report_groups) {
        std::vector<Report*> all;
        collect(group, all);
        for (Report* r : all) r->kill();
        group->kill();
    }
    env.report_groups.clear();
}

ReportGroup::ReportGroup(int number, int severity, const std::string& message)
    : report_(make_report(nullptr, number, severity, message)) {
    if (is_stock_report(report_)) return;
    t_open_groups.push_back(report_);
    open_ = true;
}

ReportGroup::~ReportGroup() {
    if (!open_) return;
    auto it = std::find(t_open_groups.begin(), t_open_groups.end(), report_);
    if (it != t_open_groups.end()) t_open_groups.erase(it);
}

}  // namespace ravelo
