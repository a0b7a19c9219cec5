/* Case files and case sets seen from a plain C program: the delimiter and
 * missing-data settings and their constraints, the reports of bad arguments,
 * reading cases one at a time, and case sets with their one-file limit. */
#include "ravelo/ravelo.h"
#include "check.h"

static net_bn* small_net(environ_ns* env) {
    net_bn* net = NewNet_bn("Small", env);
    node_bn* a = NewNode_bn("A", 2, net);
    node_bn* b = NewNode_bn("B", 3, net);
    SetNodeStateNames_bn(a, "yes, no");
    SetNodeStateNames_bn(b, "lo, mid, hi");
    return net;
}

static void check_settings(environ_ns* env) {
    EXPECT(SetCaseFileDelimChar_ns(-1, env) == '\t');
    EXPECT(SetMissingDataChar_ns(-1, env) == '*');
    EXPECT(SetCaseFileDelimChar_ns(';', env) == -1);
    EXPECT_REPORT(5574, "argument 'newchar' should be -1 (means query only), or a comma, space or tab (it is ';')");
    EXPECT(SetMissingDataChar_ns('-', env) == -1);
    EXPECT_REPORT(5576, "argument 'newchar' should be -1 (means query only), 0 (means absent), or a space, *, ? or - "
                        "(it is '-')");
    EXPECT(SetMissingDataChar_ns(' ', env) == -1);
    EXPECT_REPORT(5577, "argument 'newchar' cannot be absent (0) or a space (it is a space), unless the delimeter is "
                        "a comma (it is a tab)");
    EXPECT(SetCaseFileDelimChar_ns(',', env) == '\t');
    EXPECT(SetMissingDataChar_ns(' ', env) == '*');
    EXPECT(SetCaseFileDelimChar_ns('\t', env) == -1);
    EXPECT_REPORT(5575, "argument 'newchar' should be a comma (it is a tab), unless the missing data symbol is not a "
                        "space or absent (it is a space)");
    EXPECT(SetMissingDataChar_ns(0, env) == ' ');
    EXPECT(SetMissingDataChar_ns('?', env) == 0);
    EXPECT(SetCaseFileDelimChar_ns('\t', env) == ',');
    EXPECT(SetMissingDataChar_ns('*', env) == '?');
    EXPECT(count_reports(env) == 0);
}

static void check_reading_by_position(environ_ns* env) {
    net_bn* net = small_net(env);
    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    stream_ns* file = NewMemoryStream_ns("few.cas", env, NULL);
    const char* text = "A B\nyes hi\n";
    SetStreamContents_ns(file, text, -1, 1);
    long position = -2, id = 0;
    double freq = 0;
    ReadNetFindings2_bn(&position, file, 0, nodes, &id, &freq);
    EXPECT_REPORT(5643, "the case position argument is less than 0 (it is -2)");
    position = NO_MORE_CASES;
    ReadNetFindings2_bn(&position, file, 0, nodes, &id, &freq);
    EXPECT_REPORT(2358, "called with argument '*case_posn' being NO_MORE_CASES (to read file 'few.cas')");
    ReadNetFindings2_bn(NULL, file, 0, nodes, &id, &freq);
    EXPECT(GetNodeFinding_bn(GetNodeNamed_bn("B", net)) == 2);
    EXPECT(id == -1 && freq == 1);
    position = NEXT_CASE;
    ReadNetFindings2_bn(&position, file, 0, nodes, NULL, NULL);
    EXPECT(position == NO_MORE_CASES);
    EXPECT(count_reports(env) == 0);

    stream_ns* empty = NewMemoryStream_ns("empty.cas", env, NULL);
    SetStreamContents_ns(empty, "A B\n", -1, 1);
    ReadNetFindings2_bn(NULL, empty, 0, nodes, NULL, NULL);
    EXPECT_REPORT(2359, "file 'empty.cas' has no cases (and called with argument case_posn = NULL)");
    ReadNetFindings2_bn(NULL, NULL, 0, nodes, NULL, NULL);
    EXPECT_REPORT(5108, "NULL passed for stream_ns");

    EXPECT(WriteNetFindings_bn(nodes, file, -2, 1) == -1);
    EXPECT_REPORT(5522, "argument 'ID_num' is less than -1 (it is -2)");
    EXPECT(WriteNetFindings_bn(nodes, file, 1, -0.5) == -1);
    EXPECT_REPORT(5523, "argument 'freq' is less than 0 (it is -0.5)");
    EXPECT(WriteNetFindings_bn(NULL, file, 1, 1) == -1);
    EXPECT_REPORT(5106, "NULL passed for the nodelist_bn");
    DeleteStream_ns(empty);
    EXPECT(WriteNetFindings_bn(nodes, empty, 1, 1) == -1);
    EXPECT_REPORT(5148, "deleted or damaged stream_ns passed");
    DeleteNet_bn(net);
}

struct Asked {
    int count;
    char last[400];
    int answer;
};

static int answer_query(const char* message, const char* answers, void* data) {
    struct Asked* asked = (struct Asked*)data;
    ++asked->count;
    snprintf(asked->last, sizeof asked->last, "%s [%s]", message, answers);
    return asked->answer;
}

/* The query the caller installs is asked about unknown values; without one
 * the reader does as told. */
static void check_unknown_values(environ_ns* env) {
    net_bn* net = small_net(env);
    const nodelist_bn* nodes = GetNetNodes2_bn(net, NULL);
    stream_ns* file = NewMemoryStream_ns("odd.cas", env, NULL);
    SetStreamContents_ns(file, "A B\nyes huge\n", -1, 1);
    struct Asked asked = {0, "", 1};
    SetCaseFileQueryCallback_ns(answer_query, &asked, SKIP_UNKNOWN_VALUES, env);
    ReadNetFindings2_bn(NULL, file, 0, nodes, NULL, NULL);
    EXPECT(asked.count == 1);
    EXPECT(strcmp(asked.last, "value 'huge' is not one of the possible states of variable 'B', in case 1 on line 2 "
                              "(char 5 of file 'odd.cas') [Add State,Add All States,Skip Value,Skip All,Halt]") == 0);
    EXPECT(GetNodeNumberStates_bn(GetNodeNamed_bn("B", net)) == 4);
    EXPECT(GetNodeFinding_bn(GetNodeNamed_bn("B", net)) == 3);
    EXPECT_REPORT(2464, "state 'huge' added to variable 'B' to read case 1 on line 2 (char 5 of file 'odd.cas')");

    SetStreamContents_ns(file, "A B\nyes vast\n", -1, 1);
    SetCaseFileQueryCallback_ns(NULL, NULL, HALT_ON_UNKNOWN_VALUES, env);
    long position = FIRST_CASE;
    ReadNetFindings2_bn(&position, file, 0, nodes, NULL, NULL);
    EXPECT(position == NO_MORE_CASES);
    EXPECT_REPORT(2461, "value 'vast' is not one of the possible states of variable 'B', in case 1 on line 2 (char 5 "
                        "of file 'odd.cas')");
    SetCaseFileQueryCallback_ns(NULL, NULL, 7, env);
    EXPECT_REPORT(5578, "argument 'unasked' should be SKIP_UNKNOWN_VALUES, ADD_UNKNOWN_VALUES or "
                        "HALT_ON_UNKNOWN_VALUES (it is 7)");
    SetCaseFileQueryCallback_ns(NULL, NULL, SKIP_UNKNOWN_VALUES, env);
    DeleteNet_bn(net);
}

static void check_case_sets(environ_ns* env) {
    caseset_cs* cases = NewCaseset_cs("set", env);
    stream_ns* one = NewMemoryStream_ns("one.cas", env, NULL);
    stream_ns* two = NewMemoryStream_ns("two.cas", env, NULL);
    AddFileToCaseset_cs(cases, one, 1, "fast");
    EXPECT_REPORT(5140, "argument 'options' must be empty or null (0) with this version of Ravelo, but it is:  fast");
    AddFileToCaseset_cs(cases, one, 1, "");
    EXPECT(count_reports(env) == 0);
    AddFileToCaseset_cs(cases, two, 1, NULL);
    EXPECT_REPORT(3368, "with this version of Ravelo, you can only add 1 file to a Caseset, so can't add file 'two.cas'");
    WriteCaseset_cs(cases, two, "x");
    EXPECT_REPORT(5140, "argument 'options' must be empty or null (0) with this version of Ravelo, but it is:  x");
    AddFileToCaseset_cs(NULL, one, 1, NULL);
    EXPECT_REPORT(5111, "NULL passed for the caseset_cs");
    DeleteCaseset_cs(cases);
    EXPECT(count_reports(env) == 0);
    WriteCaseset_cs(cases, two, NULL);
    EXPECT_REPORT(5151, "deleted or damaged caseset_cs passed");
}

int main(void) {
    environ_ns* env = open_environment();
    check_settings(env);
    check_reading_by_position(env);
    check_unknown_values(env);
    check_case_sets(env);
    return finish(env);
}
