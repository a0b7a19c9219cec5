/* A first program: make an environment, build a small net, print it, and
 * show the report that a bad call leaves. */
#include <stdio.h>

#include "ravelo/ravelo.h"

static void print_reports(environ_ns* env) {
    const report_ns* r = NULL;
    while ((r = GetError_ns(env, NULL_ERR, r)) != NULL)
        printf("report %d (%s): %s\n", ErrorNumber_ns(r),
               ErrorSeverity_ns(r) >= ERROR_ERR ? "error" : "warning", ErrorMessage_ns(r));
}

int main(void) {
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    if (InitRavelo2_bn(env, mesg) < 0) {
        fprintf(stderr, "%s\n", mesg);
        return 1;
    }
    printf("%s", mesg);

    net_bn* net = NewNet_bn("Weather", env);
    node_bn* rain = NewNode_bn("Rain", 2, net);
    node_bn* grass = NewNode_bn("WetGrass", 2, net);
    printf("net %s with nodes %s and %s\n", GetNetName_bn(net), GetNodeName_bn(rain),
           GetNodeName_bn(grass));

    /* A second node of the same name is refused with a report. */
    if (NewNode_bn("Rain", 2, net) == NULL) print_reports(env);

    CloseRavelo_bn(env, mesg);
    printf("%s", mesg);
    return 0;
}
