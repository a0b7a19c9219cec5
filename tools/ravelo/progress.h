// A progress bar on standard error, drawn only when it is a terminal.
#pragma once

namespace ravelo_cli {

// Ends a progress bar's line so that a message starts on a fresh one; the bar is then redrawn
// by the next step.
void leave_progress_line();

class Progress {
public:
    explicit Progress(int steps);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Marks the start of the next step, named in the bar.
    void step(const char* name);
    // Wipes the bar, before the command's output.
    void finish();

private:
    void draw(const char* name) const;
    int steps_;
    int done_ = 0;
    bool shown_;
};

}  // namespace ravelo_cli
