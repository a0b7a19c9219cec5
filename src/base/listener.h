// The guard around listener callbacks: the thread's current-function text
// becomes a callback marker (so the callback may call the interface again),
// and the callback's result is judged.
#pragma once
#include <functional>
#include <string>

namespace ravelo {

// Runs call() as a listener callback of a net (object_term "Bnet") or node
// ("Bnode") named object_name, for the event code.  Returns the callback's
// result when accepted (>= 0), otherwise the negative result after making the
// report the result calls for.
int run_listener(const char* object_term, const std::string& object_name, int event,
                 const std::function<int()>& call);

// "CREATE_EVENT", "DUPLICATE_EVENT", "REMOVE_EVENT" or "UNKNOWN_EVENT".
const char* event_name(int event);

}  // namespace ravelo
