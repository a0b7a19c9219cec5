/* The foundations seen from a plain C program: environment life, reports
 * with their numbers and texts, and stale handles. */
#include <stdio.h>
#include <string.h>

#include "ravelo/ravelo.h"

static int failures = 0;

#define EXPECT(cond)                                                      \
    do {                                                                  \
        if (!(cond)) {                                                    \
            fprintf(stderr, "%s:%d: expected %s\n", __FILE__, __LINE__, #cond); \
            ++failures;                                                   \
        }                                                                 \
    } while (0)

static const report_ns* last_report(environ_ns* env) {
    const report_ns* r = NULL, *last = NULL;
    while ((r = GetError_ns(env, NULL_ERR, r)) != NULL) last = r;
    return last;
}

int main(void) {
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    EXPECT(env != NULL);
    EXPECT(InitRavelo2_bn(env, mesg) == 0);
    EXPECT(strstr(mesg, "The file location of the executable running this program is:  ") != NULL);
    EXPECT(InitRavelo2_bn(env, mesg) == 0);
    EXPECT(strcmp(mesg, "Ravelo environment already initialized") == 0);
    EXPECT(GetRaveloVersion_bn(env, NULL) == 505);

    EXPECT(ArgumentChecking_ns((checking_ns)-1, env) == RegularCheck);
    EXPECT(ArgumentChecking_ns((checking_ns)7, env) == (checking_ns)-1);
    const report_ns* r = last_report(env);
    EXPECT(r && ErrorNumber_ns(r) == 5529);
    EXPECT(r && strcmp(ErrorMessage_ns(r),
                       "argument 'setting' is 7, but it should be -1 or between 1 and 4 inclusive") == 0);
    ClearErrors_ns(env, INTERNAL_ERR);
    EXPECT(GetError_ns(env, NULL_ERR, NULL) == NULL);

    net_bn* net = NewNet_bn("N", env);
    node_bn* a = NewNode_bn("A", 2, net);
    DeleteNode_bn(a);
    EXPECT(GetNodeName_bn(a) == NULL);
    r = last_report(env);
    EXPECT(r && ErrorNumber_ns(r) == 5184);
    EXPECT(r && strcmp(ErrorMessage_ns(r), "deleted node_bn passed") == 0);
    DeleteNet_bn(net);
    EXPECT(GetNetName_bn(net) == NULL);
    r = last_report(env);
    EXPECT(r && strcmp(ErrorMessage_ns(r), "deleted or damaged net_bn passed") == 0);

    EXPECT(CloseRavelo_bn(env, mesg) == 0);
    EXPECT(strcmp(mesg, "Leaving Ravelo.\n") == 0);
    if (failures) fprintf(stderr, "%d failed\n", failures);
    return failures ? 1 : 0;
}
