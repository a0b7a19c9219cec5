/* Streams and net files seen from a plain C program: memory and file
 * streams, reading and writing nets, and the reports of bad arguments. */
#include <math.h>
#include <stdlib.h>

#include "ravelo/ravelo.h"
#include "check.h"

/* The newest report's message (empty when none), then every report is cleared. */
static const char* last_message(environ_ns* env) {
    static char text[1024];
    const report_ns* r = NULL, *last = NULL;
    while ((r = GetError_ns(env, NULL_ERR, r)) != NULL) last = r;
    snprintf(text, sizeof text, "%s", last ? ErrorMessage_ns(last) : "");
    ClearErrors_ns(env, ERROR_ERR);
    return text;
}

/* Definitions are kept apart from the nodes and written back as declared. */
static const char* const kDefinitions =
    "// ~->[DNET-1]->~\n\n"
    "bnet Defs {\n"
    "define node Switch { kind = NATURE; states = (off, on); probs = (0.5, 0.5); };\n"
    "param node Dimmer : Switch { states = (low, mid, high); probs = (0.2, 0.3, 0.5); };\n"
    "node Hall : Switch { title = \"hall\"; };\n"
    "node Lamp : Dimmer { parents = (Hall); probs = ((1, 0, 0), (0, 0.5, 0.5)); };\n"
    "};\n";

static void check_definitions(environ_ns* env) {
    stream_ns* in = NewMemoryStream_ns("defs.dne", env, NULL);
    SetStreamContents_ns(in, kDefinitions, -1, 1);
    net_bn* net = ReadNet_bn(in, NO_WINDOW);
    EXPECT(net != NULL);
    if (!net) return;
    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    EXPECT(LengthNodeList_bn(nodes) == 2);
    EXPECT(GetNodeNamed_bn("Switch", net) == NULL);
    EXPECT(NewNode_bn("Dimmer", 2, net) == NULL);
    EXPECT(strstr(last_message(env), "already has a node with that name") != NULL);

    stream_ns* out = NewMemoryStream_ns("defs2.dne", env, NULL);
    WriteNet_bn(net, out);
    const char* text = GetStreamContents_ns(out, NULL);
    EXPECT(text && strstr(text, "\ndefine node Switch {\n") != NULL);
    EXPECT(text && strstr(text, "\nparam node Dimmer : Switch {\n") != NULL);
    EXPECT(text && strstr(text, "\nnode Lamp : Dimmer {\n") != NULL);
    net_bn* again = ReadNet_bn(out, NO_WINDOW);
    EXPECT(again != NULL);
    node_bn* lamp = again ? GetNodeNamed_bn("Lamp", again) : NULL;
    EXPECT(lamp && GetNodeNumberStates_bn(lamp) == 3);
    EXPECT(lamp && strcmp(GetNodeStateName_bn(lamp, 2), "high") == 0);
    EXPECT(again && LengthNodeList_bn(GetNetNodes2_bn(again, NULL)) == 2);
    CompileNet_bn(again);
    const prob_bn* beliefs = lamp ? GetNodeBeliefs_bn(lamp) : NULL;
    EXPECT(beliefs && fabs(beliefs[0] - 0.5) < 1e-6 && fabs(beliefs[2] - 0.25) < 1e-6);
    EXPECT(strcmp(last_message(env), "") == 0);
    DeleteNet_bn(again);
    DeleteNet_bn(net);
    DeleteStream_ns(in);
    DeleteStream_ns(out);
}

static const char* const kNet =
    "// ~->[DNET-1]->~\n\n"
    "bnet Tiny {\n"
    "node Rain { states = (yes, no); probs = (0.2, 0.8); };\n"
    "node Wet { states = (yes, no); parents = (Rain); probs = ((0.9, 0.1), (0.1, 0.9)); "
    "evidence = yes; };\n"
    "};\n";

int main(void) {
    environ_ns* env = open_environment();

    /* A net read from memory, written back to memory, read again. */
    stream_ns* in = NewMemoryStream_ns("tiny.dne", env, NULL);
    SetStreamContents_ns(in, kNet, -1, 0);
    net_bn* net = ReadNet_bn(in, NO_WINDOW);
    EXPECT(net != NULL);
    EXPECT(net && strcmp(GetNetName_bn(net), "Tiny") == 0);
    stream_ns* out = NewMemoryStream_ns("copy.dne", env, NULL);
    WriteNet_bn(net, out);
    long length = 0;
    const char* text = GetStreamContents_ns(out, &length);
    EXPECT(text != NULL && length == (long)strlen(text));
    EXPECT(text && strncmp(text, "// ~->[DNET-1]->~\n\n", 19) == 0);
    EXPECT(text && strstr(text, "evidence = yes;") != NULL);
    net_bn* again = ReadNet_bn(out, NO_WINDOW);
    EXPECT(again != NULL);

    /* The finding stored in the file is entered: beliefs reflect it. */
    CompileNet_bn(again);
    node_bn* rain = GetNodeNamed_bn("Rain", again);
    const prob_bn* beliefs = rain ? GetNodeBeliefs_bn(rain) : NULL;
    EXPECT(beliefs && fabs(beliefs[0] - 0.18 / 0.26) < 1e-5);
    EXPECT(GetNodeFinding_bn(GetNodeNamed_bn("Wet", again)) == 0);
    EXPECT(strcmp(last_message(env), "") == 0);

    /* Through a file, in another format. */
    const char* path = "net_files_test.bif";
    stream_ns* file = NewFileStream_ns(path, env, NULL);
    WriteNet_bn(net, file);
    EXPECT(strcmp(last_message(env), "") == 0);
    net_bn* from_file = ReadNet_bn(file, NO_WINDOW);
    EXPECT(from_file != NULL);
    EXPECT(from_file && strcmp(GetNetFileName_bn(from_file), path) == 0);
    DeleteStream_ns(file);
    remove(path);

    /* Bad arguments are reported and change nothing. */
    EXPECT(NewFileStream_ns(NULL, env, NULL) == NULL);
    EXPECT(strcmp(last_message(env), "NULL passed for file name") == 0);
    SetStreamContents_ns(NULL, "x", 1, 1);
    EXPECT(strcmp(last_message(env), "NULL passed for stream_ns") == 0);
    stream_ns* missing = NewFileStream_ns("no/such/dir/net.dne", env, NULL);
    EXPECT(ReadNet_bn(missing, NO_WINDOW) == NULL);
    EXPECT(strcmp(last_message(env), "couldn't open file 'no/such/dir/net.dne' for reading") == 0);
    WriteNet_bn(net, missing);
    EXPECT(strcmp(last_message(env), "couldn't create new file 'no/such/dir/net.dne'") == 0);
    SetStreamContents_ns(missing, "x", 1, 1);
    EXPECT(strstr(last_message(env), "because it is a file stream") != NULL);
    SetStreamContents_ns(in, "x", -2, 1);
    EXPECT(strcmp(last_message(env), "argument 'length' is -2, but it must not be less than -1") == 0);
    WriteNet_bn(NULL, out);
    EXPECT(strcmp(last_message(env), "NULL passed for net_bn") == 0);
    DeleteStream_ns(missing);
    WriteNet_bn(net, missing);
    EXPECT(strcmp(last_message(env), "deleted or damaged stream_ns passed") == 0);

    /* A broken file leaves no net behind. */
    SetStreamContents_ns(in, "bnet Broken { node A { states = (a); probs = (2); }; };", -1, 1);
    EXPECT(ReadNet_bn(in, NO_WINDOW) == NULL);
    EXPECT(strstr(last_message(env), "has a probability greater than 1") != NULL);
    EXPECT(GetNthNet_bn(3, env) == NULL);
    EXPECT(GetNthNet_bn(2, env) == from_file);

    DeleteStream_ns(in);
    DeleteStream_ns(out);
    check_definitions(env);
    return finish(env);
}
