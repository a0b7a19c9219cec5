#include "progress.h"

#include <unistd.h>

#include <cstdio>

namespace ravelo_cli {

constexpr int kBarWidth = 30;

Progress::Progress(int steps) : steps_(steps), shown_(isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    if (!shown_ || done_ == 0) return;
    std::fprintf(stderr, "\r%*s\r", kBarWidth + 40, "");
    std::fflush(stderr);
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
}

}  // namespace ravelo_cli
