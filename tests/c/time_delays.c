/* A small dynamic net seen from a plain C program: links with time delays
 * allow cycles through them, persistence must be positive, compiling waits
 * for the net to be expanded in time, and the net survives a write and read. */
#include <stdlib.h>

#include "ravelo/ravelo.h"
#include "check.h"

/* Rain follows itself from one step to the next; Wet follows Rain a step later. */
static const char* const kDynamic =
    "// ~->[DNET-1]->~\n\n"
    "bnet Dyn {\n"
    "node Rain { states = (yes, no); parents = (Rain); delays = (1); persist = (1, 2.5);\n"
    "    probs = ((0.7, 0.3), (0.2, 0.8)); };\n"
    "node Wet { states = (yes, no); parents = (Rain); delays = (1); probs = ((0.9, 0.1), (0.1, 0.9)); };\n"
    "node Umbrella { states = (yes, no); parents = (Wet); probs = ((0.8, 0.2), (0.3, 0.7)); };\n"
    "};\n";

static net_bn* read_text(environ_ns* env, const char* name, const char* text) {
    stream_ns* in = NewMemoryStream_ns(name, env, NULL);
    SetStreamContents_ns(in, text, -1, 1);
    net_bn* net = ReadNet_bn(in, NO_WINDOW);
    DeleteStream_ns(in);
    return net;
}

/* The net as text; the caller frees it. */
static char* write_text(net_bn* net, environ_ns* env) {
    stream_ns* out = NewMemoryStream_ns("copy.dne", env, NULL);
    WriteNet_bn(net, out);
    long length = 0;
    const char* text = GetStreamContents_ns(out, &length);
    char* copy = NULL;
    if (text) {
        copy = malloc((size_t)length + 1);
        memcpy(copy, text, (size_t)length);
        copy[length] = '\0';
    }
    DeleteStream_ns(out);
    return copy;
}

static void persistence_must_be_positive(environ_ns* env) {
    EXPECT(read_text(env, "bad.dne",
                     "// ~->[DNET-1]->~\n\nbnet Bad {\n"
                     "node Rain { states = (yes, no); persist = (0, 1); };\n};\n") == NULL);
    EXPECT_REPORT(3400, "invalid node persistance of zero, for node 'Rain', dimension 1 (line 4 of 'bad.dne')");
    EXPECT(read_text(env, "bad.dne",
                     "// ~->[DNET-1]->~\n\nbnet Bad {\n"
                     "node Rain { states = (yes, no); persist = (1, -0.5); };\n};\n") == NULL);
    EXPECT_REPORT(3400, "invalid node persistance -0.5 (negative not allowed), for node 'Rain', dimension 2 "
                  "(line 4 of 'bad.dne')");
}

int main(void) {
    environ_ns* env = open_environment();

    net_bn* net = read_text(env, "dyn.dne", kDynamic);
    EXPECT(net != NULL);
    if (!net) return 1;
    node_bn *rain = GetNodeNamed_bn("Rain", net), *wet = GetNodeNamed_bn("Wet", net);
    node_bn* umbrella = GetNodeNamed_bn("Umbrella", net);

    /* Wet -> Rain closes a cycle through the delayed link Rain -> Wet. */
    EXPECT(AddLink_bn(wet, rain) == 1);
    EXPECT(last_report(env) == NULL);
    /* Umbrella -> Wet would close Wet -> Umbrella -> Wet, with no delay on it. */
    EXPECT(AddLink_bn(umbrella, wet) == -1);
    EXPECT_REPORT(3223, "can't connect node 'Umbrella' to node 'Wet', because that would result in a directed "
                  "cycle (with no time delays)");
    /* Switching the parent of a delayed link keeps its delay, so that cycle is allowed. */
    SwitchNodeParent_bn(0, wet, umbrella);
    EXPECT(last_report(env) == NULL);
    EXPECT(NthNode_bn(GetNodeParents_bn(wet), 0) == umbrella);

    /* A node may follow itself in time, given a delay. */
    EXPECT(AddDelayedLink_bn(umbrella, umbrella, "1") == 1);
    EXPECT(last_report(env) == NULL);
    EXPECT(AddDelayedLink_bn(rain, umbrella, "-1") == -1);
    EXPECT_REPORT(3218, "can't connect node 'Rain' to node 'Umbrella', because the delay of the link from node 'Rain' "
                  "to node 'Umbrella' is negative (-1)");

    /* Delays through the interface: a cycle keeps the delay it needs, and none is negative. */
    EXPECT(strcmp(GetNodeInputDelay_bn(wet, 0), "1") == 0);
    SetNodeInputDelay_bn(wet, 0, "0");
    EXPECT_REPORT(3229, "can't remove the time delay of the link from node 'Umbrella' to node 'Wet', because that "
                  "would result in a directed cycle (with no time delays)");
    SetNodeInputDelay_bn(rain, 1, "-1");
    EXPECT_REPORT(3228, "can't change the time delay of link 1 of node 'Rain', because the delay of the link from "
                  "node 'Wet' to node 'Rain' is negative (-1)");
    EXPECT(GetNodeInputDelay_bn(rain, 2) == NULL);
    EXPECT_REPORT(5223, "argument 'link_index' is 2, but node 'Rain' has 2 parent links (numbered from 0)");
    SetNodeInputDelay_bn(rain, 1, "2");
    EXPECT(last_report(env) == NULL);
    EXPECT(strcmp(GetNodeInputDelay_bn(rain, 1), "2") == 0);

    persistence_must_be_positive(env);

    CompileNet_bn(net);
    EXPECT_REPORT(2072, "can't compile net 'Dyn', because it has time-delay links (node 'Rain'); expand it in time first");

    /* Written and read back, it is the same net, delays and all. */
    char* text = write_text(net, env);
    EXPECT(text && strstr(text, "delays = (1, 2);") && strstr(text, "persist = (1, 2.5);"));
    net_bn* again = text ? read_text(env, "copy.dne", text) : NULL;
    EXPECT(again != NULL);
    char* text_again = again ? write_text(again, env) : NULL;
    EXPECT(text && text_again && strcmp(text, text_again) == 0);
    EXPECT(again && GetNodeNamed_bn("Rain", again) &&
           LengthNodeList_bn(GetNodeParents_bn(GetNodeNamed_bn("Rain", again))) == 2);
    free(text);
    free(text_again);

    return finish(env);
}
