// Reports and caching family: texts made on request, of any length (engine reports are capped).
#include <mutex>
#include <string>

#include "api/handles.h"
#include "api/option_words.h"
#include "base/environment.h"
#include "base/failure.h"
#include "base/lexicon.h"
#include "infer/order_report.h"
#include "infer/update.h"

using namespace ravelo;

namespace {

// The text last returned on this thread; it stays valid until the thread's next call.
thread_local std::string last_report;

std::string section_text(const Net& net, const std::string& section) {
    if (section == "compiled") {
        const JunctionTree* jt = tree_of(net);
        if (!jt) fail(5610, ">-Bnet '%s' has no junction tree (it is not yet compiled)", net.name.c_str());
        return compiled_size_text(*jt) + elim_order_report(net, *jt);
    }
    fail(5690, "unknown report section '%s' (known: compiled)", section.c_str());
}

}  // namespace

const char* CreateCustomReport_bn(net_bn* net, const nodelist_bn* nodes, const char* sections,
                                  const char* options) {
    ApiFrame frame("CreateCustomReport_bn");
    return frame.run<const char*>(nullptr, [&]() -> const char* {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        if (nodes) fail(5691, "argument 'nodes' must be NULL: every report section covers the whole net");
        if (!sections) fail(5692, "argument 'sections' is NULL");
        if (options && *options) fail(5693, "unknown report option '%s'", options);
        std::string text;
        for (const std::string& section : option_words(sections)) text += section_text(n, section);
        last_report = substitute_terms(text, n.env->language);
        return last_report.c_str();
    });
}
