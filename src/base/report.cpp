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

std::mutex g_fatal_lock;
bool g_in_fatal = false;

std::string truncated(std::string text) {
    if (text.size() > static_cast<size_t>(kMaxMessageLength)) text.resize(kMaxMessageLength);
    return text;
}

// With no environment to hold it, the report is shown on the error stream.
Report* report_without_environment(int number, int severity, const std::string& message) {
    std::unique_lock<std::mutex> guard(g_fatal_lock, std::try_to_lock);
    Report* critical = &stock().critical;
    if (!guard.owns_lock() || g_in_fatal) return critical;
    g_in_fatal = true;
    std::fputc('\a', stderr);
    std::fprintf(stderr, "\n*********\n%s Error %d:\n%s\n*********\n", "Ravelo",
                 number < 0 ? -number : number, message.c_str());
    std::fflush(stderr);
    critical->message = message;
    (void)severity;
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

Report* throttled(Report* group, int severity, int limit) {
    int held = group->held;
    if (severity >= kError) return held >= limit ? &stock().errors : nullptr;
    if (severity == kWarning) return held >= limit * 3 / 4 ? &stock().warnings : nullptr;
    return held >= limit / 2 ? &stock().lesser : nullptr;
}

Report* root_of(Report* r) {
    while (r->group && r->group != r) r = r->group;
    return r;
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

Report* make_report(Environment* env, int number, int severity, const std::string& message,
                    int conditions) {
    if (!env) env = current_environment();
    int stored = number > 0 ? -number : number;
    int language = env && env->type_code() == kEnvironType ? env->language : kProceduralLanguage;
    std::string text = truncated(substitute_terms(message, language));
    if (!env || env->type_code() != kEnvironType || env->life_state < kLifeReportsAttach)
        return report_without_environment(stored, severity, text);

    Report* group = root_group(*env);
    if (Report* stock_report = throttled(group, severity, env->report_limit)) return stock_report;
    ++group->held;

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
    std::vector<Report*> roots;
    for (auto& [id, group] : env.report_groups) roots.push_back(group);
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
    for (auto& [id, group] : env.report_groups) {
        std::vector<Report*> all;
        collect(group, all);
        for (Report* r : all) r->kill();
        group->kill();
    }
    env.report_groups.clear();
}

}  // namespace ravelo
