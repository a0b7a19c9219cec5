// Progress of long actions (finding an elimination order, compiling,
// converting equations, reading many cases): each shows how far it is and
// polls a stop request through its environment's progress listener.
#pragma once
#include <functional>
#include <string>

namespace ravelo {

class Environment;

// Told the action's title and the fraction done; returns true to halt it.
using ProgressListener = std::function<bool(const std::string& title, double fraction)>;

void set_progress_listener(Environment& env, ProgressListener listener);

class Progress {
public:
    // The title may hold ">-" terms; they are put in the environment's language.
    Progress(Environment* env, const std::string& title);
    // Reports the fraction done; true when the listener asks the action to halt.
    bool update(double fraction);
    const std::string& title() const { return title_; }

private:
    Environment* env_;
    std::string title_;
};

}  // namespace ravelo
