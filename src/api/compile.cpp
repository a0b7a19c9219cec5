// Compilation family.
#include <mutex>

#include "api/handles.h"
#include "api/option_words.h"
#include "infer/compile.h"
#include "infer/junction_tree.h"
#include "infer/update.h"

using namespace ravelo;

namespace {

CompileOptions compile_options(const char* text) {
    CompileOptions options;
    for (const std::string& word : option_words(text)) {
        if (word == "optimize") options.optimize = true;
        else if (word == "report") options.report = true;
        else fail(5611, "unknown compiling option '%s'", word.c_str());
    }
    return options;
}

}  // namespace

void CompileNet_bn(net_bn* net) {
    ApiFrame frame("CompileNet_bn");
    frame.run([&] {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        compile_net(n, CompileOptions{});
    });
}

void CompileNetWith_bn(net_bn* net, const char* options) {
    ApiFrame frame("CompileNetWith_bn");
    frame.run([&] {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        compile_net(n, compile_options(options));
    });
}

void UncompileNet_bn(net_bn* net) {
    ApiFrame frame("UncompileNet_bn");
    frame.run([&] {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        uncompile_net(n);
    });
}

double SizeCompiledNet_bn(net_bn* net, int method) {
    ApiFrame frame("SizeCompiledNet_bn");
    return frame.run<double>(-1.0, [&]() -> double {
        Net& n = checked_net(frame, net);
        std::lock_guard<std::recursive_mutex> hold(n.lock);
        if (method != 0)
            fail(5609, "argument 'method' is %d, but with this version of >-Ravelo it must be 0", method);
        const JunctionTree* jt = tree_of(n);
        if (!jt) fail(5610, ">-Bnet '%s' has no junction tree (it is not yet compiled)", n.name.c_str());
        return size_with_findings(*jt);
    });
}
