#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace ravelo_cli {

constexpr int kBarWidth = 30;

namespace {
bool bar_on_line = false;  // a bar is drawn and its line not yet ended
}

void leave_progress_line() {
    if (!bar_on_line) return;
    std::fputc('\n', stderr);
    bar_on_line = false;
}

Progress::Progress(int steps) : steps_(steps), shown_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() { finish(); }

void Progress::finish() {
    if (!shown_ || !bar_on_line) return;
    std::fprintf(stderr, "\r%*s\r", kBarWidth + 40, "");
    std::fflush(stderr);
    bar_on_line = false;
}

void Progress::step(const char* name) {
    draw(name);
    ++done_;
}

void Progress::draw(const char* name) const {
    if (!shown_) return;
    int filled = steps_ > 0 ? done_ * kBarWidth / steps_ : kBarWidth;
    std::fprintf(stderr, "\r[");
    for (int i = 0; i < kBarWidth; ++i) std::fputc(i < filled ? '#' : ' ', stderr);
    std::fprintf(stderr, "] %-30.30s", name);
    std::fflush(stderr);
    bar_on_line = true;
}

}  // namespace ravelo_cli
