/* The little harness the plain C tests share: EXPECT counts failures and
 * names the line; last_report finds the thread's newest report, and
 * EXPECT_REPORT checks it (in the environment named env) and clears them all. */
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
#define EXPECT_REPORT(number, text) expect_report(env, number, text, __FILE__, __LINE__)

/* The newest report's number (0 when none); every report is cleared after. */
static inline int take_number(environ_ns* env) {
    const report_ns* r = last_report(env);
    int number = r ? ErrorNumber_ns(r) : 0;
    ClearErrors_ns(env, INTERNAL_ERR);
    return number;
}

/* A new environment, initialised. */
static inline environ_ns* open_environment(void) {
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    EXPECT(env != NULL && InitRavelo2_bn(env, mesg) == 0);
    return env;
}

/* Closes the environment; the program's exit status. */
static inline int finish(environ_ns* env) {
    char mesg[MESG_LEN_ns];
    EXPECT(CloseRavelo_bn(env, mesg) == 0);
    if (failures) fprintf(stderr, "%d failed\n", failures);
    return failures != 0;
}

static inline int count_reports(environ_ns* env) {
    int n = 0;
    for (const report_ns* r = NULL; (r = GetError_ns(env, NULL_ERR, r)) != NULL;) ++n;
    return n;
}

#endif
