/* The whole road in one program: start the engine, build a net, give it tables, compile it,
 * enter a finding, read beliefs, and free everything.
 *
 * Build it against an installed engine with
 *   cc quickstart.c $(pkg-config --cflags --libs ravelo)                 */
#include <stdio.h>

#include "ravelo/ravelo.h"

/* Prints every report left so far and tells whether one of them was an error. */
static int had_error(environ_ns* env) {
    int errors = 0;
    const report_ns* r = NULL;
    while ((r = GetError_ns(env, WARNING_ERR, r)) != NULL) {
        int error = ErrorSeverity_ns(r) >= ERROR_ERR;
        fprintf(stderr, "%s %d: %s\n", error ? "error" : "warning", ErrorNumber_ns(r), ErrorMessage_ns(r));
        errors += error;
    }
    ClearErrors_ns(env, ERROR_ERR);
    return errors > 0;
}

int main(void) {
    char mesg[MESG_LEN_ns];
    environ_ns* env = NewRaveloEnviron_ns(NULL, NULL, NULL);
    if (InitRavelo2_bn(env, mesg) < 0) {
        fprintf(stderr, "%s\n", mesg);
        return 1;
    }

    /* Rain causes wet grass; so does the sprinkler, now and then. */
    net_bn* net = NewNet_bn("Weather", env);
    node_bn* rain = NewNode_bn("Rain", 2, net);
    node_bn* grass = NewNode_bn("WetGrass", 2, net);
    SetNodeStateNames_bn(rain, "yes, no");
    SetNodeStateNames_bn(grass, "wet, dry");
    AddLink_bn(rain, grass);

    static const prob_bn rain_prior[] = {0.2f, 0.8f};
    static const prob_bn wet_if_rain[] = {0.9f, 0.1f};
    static const prob_bn wet_if_no_rain[] = {0.1f, 0.9f};
    state_bn condition[1];
    SetNodeProbs_bn(rain, NULL, rain_prior);
    condition[0] = 0; /* Rain = yes */
    SetNodeProbs_bn(grass, condition, wet_if_rain);
    condition[0] = 1; /* Rain = no */
    SetNodeProbs_bn(grass, condition, wet_if_no_rain);

    CompileNet_bn(net);
    EnterFinding_bn(grass, GetStateNamed_bn("wet", grass));
    const prob_bn* beliefs = GetNodeBeliefs_bn(rain);
    if (had_error(env)) {
        CloseRavelo_bn(env, mesg);
        return 1;
    }
    printf("P(Rain = yes | WetGrass = wet) = %.4f\n", beliefs[0]);
    printf("probability of the finding = %.4f\n", FindingsProbability_bn(net));

    /* A call the engine refuses returns its neutral value, leaves a report and changes nothing. */
    if (NewNode_bn("Rain", 2, net) == NULL) {
        const report_ns* refusal = GetError_ns(env, ERROR_ERR, NULL);
        printf("refused: %s\n", refusal ? ErrorMessage_ns(refusal) : "(no report)");
        ClearErrors_ns(env, ERROR_ERR);
    }

    DeleteNet_bn(net);
    CloseRavelo_bn(env, mesg);
    return 0;
}
