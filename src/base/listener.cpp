#include "base/listener.h"

#include <exception>

#include "base/failure.h"
#include "base/text.h"
#include "base/thread_state.h"

namespace ravelo {

const char* event_name(int event) {
    switch (event) {
        case 1: return "CREATE_EVENT";
        case 2: return "DUPLICATE_EVENT";
        case 4: return "REMOVE_EVENT";
        default: return "UNKNOWN_EVENT";
    }
}

int run_listener(const char* object_term, const std::string& object_name, int event,
                 const std::function<int()>& call) {
    std::string& current = current_function_text();
    std::string saved = current;
    // A callback inside a callback is marked with the function actually running.
    std::string function = saved;
    if (is_callback_marker(saved) && saved.find(": ") != std::string::npos)
        function = saved.substr(saved.find(": ") + 2);
    current = format("Callback of %s: ", function.c_str());
    int result;
    std::string thrown;
    try {
        result = call();
    } catch (const Failure& f) {
        thrown = f.report ? f.report->message : std::string();
        clear_report(f.report);
        result = -1002;
    } catch (const std::exception& e) {
        thrown = e.what();
        result = -1002;
    } catch (...) {
        result = -1002;
    }
    current = saved;
    if (result >= 0 || result == -1003) return result;
    const char* name = object_name.c_str();
    const char* what = event_name(event);
    if (result == -1001)
        error_report(3637, "callback function for >-%s '%s' %s, returned an out-of-range (<-1000) value",
                     object_term, name, what);
    else if (result == -1002)
        error_report(3636, "callback function for >-%s '%s' %s, threw an exception.  %s", object_term,
                     name, what, thrown.c_str());
    else
        error_report(5173, "callback function for >-%s '%s' %s, returned negative (%d)", object_term,
                     name, what, result);
    return result;
}

}  // namespace ravelo
