/* What the benchmark programs share: a monotonic clock and a small,
 * reproducible uniform generator. */
#ifndef RAVELO_BENCH_COMMON_H
#define RAVELO_BENCH_COMMON_H

#include <time.h>

static inline double now_ms(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return t.tv_sec * 1e3 + t.tv_nsec / 1e6;
}

/* xorshift64: the next uniform deviate in [0, 1) from *state (never 0). */
static inline double next_uniform(unsigned long long* state) {
    *state ^= *state << 13;
    *state ^= *state >> 7;
    *state ^= *state << 17;
    return (*state >> 11) * (1.0 / 9007199254740992.0);
}

#endif
