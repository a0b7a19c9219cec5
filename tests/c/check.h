/* The little harness the plain C tests share: EXPECT counts failures and
 * names the line; last_report finds the thread's newest report. */
#ifndef RAVELO_TESTS_C_CHECK_H
#define RAVELO_TESTS_C_CHECK_H

#include <stdio.h>
#include <string.h>

#include "ravelo/ravelo.h"

static int failures = 0;

#define EXPECT(cond)                                                           \
    do {                                                                       \
        if (!(cond)) {                                                         \
            fprintf(stderr, "%s:%d: expected %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                        \
        }                                                                      \
    } while (0)

static inline const report_ns* last_report(environ_ns* env) {
    const report_ns *r = NULL, *last = NULL;
    while ((r = GetError_ns(env, NULL_ERR, r)) != NULL) last = r;
    return last;
}

/* The newest report has this number and text; every report is cleared after. */
static inline void expect_report(environ_ns* env, int number, const char* text, const char* file,
                                 int line) {
    const report_ns* r = last_report(env);
    if (!r || ErrorNumber_ns(r) != number || strcmp(ErrorMessage_ns(r), text) != 0) {
        fprintf(stderr, "%s:%d: expected report %d \"%s\", got %d \"%s\"\n", file, line, number,
                text, r ? ErrorNumber_ns(r) : 0, r ? ErrorMessage_ns(r) : "(none)");
        ++failures;
    }
    ClearErrors_ns(env, INTERNAL_ERR);
}

#endif
