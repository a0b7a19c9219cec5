/*
 * Ravelo: belief networks and decision networks.
 *
 * The one public interface of the engine: plain C functions over opaque
 * handles.  Every function runs inside the engine's checking frame: a failing
 * call returns its neutral value (NULL, -1, UNDEF, or nothing) and leaves a
 * report that the caller reads with GetError_ns and the report accessors.
 * No failure ever leaves a function as an exception or a crash.
 *
 * Argument order: the object acted on first, its owner last, as in
 * NewNode_bn (name, num_states, net) and AddNodeToList_bn (node, list, index).
 */
#ifndef RAVELO_RAVELO_H
#define RAVELO_RAVELO_H

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#  if defined(RAVELO_BUILDING_SHARED)
#    define RAVELO_API __declspec(dllexport)
#  else
#    define RAVELO_API
#  endif
#else
#  define RAVELO_API __attribute__((visibility("default")))
#endif

/* ------------------------------------------------------------------------ */
/* Handle and value types                                                   */
/* ------------------------------------------------------------------------ */

typedef struct environ_ns  environ_ns;
typedef struct report_ns   report_ns;
typedef struct stream_ns   stream_ns;
typedef struct randgen_ns  randgen_ns;
typedef struct net_bn      net_bn;
typedef struct node_bn     node_bn;
typedef struct nodelist_bn nodelist_bn;
typedef struct caseset_cs  caseset_cs;

typedef int    state_bn;   /* a state index from 0; negative values are codes */
typedef float  prob_bn;    /* a probability */
typedef double util_bn;    /* a utility */
typedef double level_bn;   /* a discretisation threshold or state value */
typedef int    bool_ns;

#define MESG_LEN_ns 600    /* size of the message buffers of Init/Close */

/* Special state codes. */
#define UNDEF_STATE        (-3)
#define IMPOSS_STATE       (-4)
#define EVERY_STATE        (-5)
#define LIKELIHOOD_FINDING (-6)
#define NEGATIVE_FINDING   (-7)

/* Position codes for node lists. */
#define FIRST_ENTRY 0
#define LAST_ENTRY  (-10)

/* Case positions of ReadNetFindings2_bn. */
#define NO_MORE_CASES (-13)
#define NEXT_CASE     (-14)
#define FIRST_CASE    (-15)

/* What the case-file reader does with a value the net cannot take, when no
 * query callback is installed (SetCaseFileQueryCallback_ns). */
#define SKIP_UNKNOWN_VALUES    1  /* the value is read as missing, with a warning */
#define ADD_UNKNOWN_VALUES     2  /* the state is added or the range expanded */
#define HALT_ON_UNKNOWN_VALUES 3  /* reading stops, keeping what was read */

/* Asks the user about a value in a case file the net cannot take.  message
 * describes it; answers lists the possible answers separated by commas (such
 * as "Add State,Add All States,Skip Value,Skip All,Halt").  Returns the
 * 0-based index of the answer chosen; any other number halts the reading.
 * It must not call the interface. */
typedef int (*CaseFileQuery_ns)(const char* message, const char* answers, void* user_data);

/* Interface languages of the message-term lexicon. */
#define PLAIN_LANGUAGE_ns      0
#define PROCEDURAL_LANGUAGE_ns 1
#define CLASS_LANGUAGE_ns      2
#define OBJECT_LANGUAGE_ns     3
#define AUTOMATION_LANGUAGE_ns 4

/* Argument checking levels.  QueryCheck (-1) asks ArgumentChecking_ns for the
 * level without changing it, and is also what it returns on failure. */
typedef enum {
    QueryCheck = -1, NoCheck = 1, QuickCheck = 2, RegularCheck = 3, CompleteCheck = 4
} checking_ns;

/* Report severities, lowest first. */
typedef enum {
    NULL_ERR = 0,         /* "null-error" */
    FALSE_ALERT_ERR = 1,  /* "false alert" */
    REPORT_ERR = 2,       /* "report" */
    NOTICE_ERR = 3,       /* "notice" */
    WARNING_ERR = 4,      /* "warning" */
    ERROR_ERR = 5,        /* "error" */
    INTERNAL_ERR = 6      /* "internal error" */
} errseverity_ns;

/* Report condition categories: bit flags. */
typedef enum {
    OUT_OF_MEMORY_CND  = 0x08,
    USER_ABORTED_CND   = 0x20,
    FROM_WRAPPER_CND   = 0x40,
    FROM_DEVELOPER_CND = 0x80,
    INCONS_FINDING_CND = 0x200
} errcond_ns;

/* Listener events. */
typedef enum {
    CREATE_EVENT = 1, DUPLICATE_EVENT = 2, REMOVE_EVENT = 4
} eventtype_ns;

/* Node kinds: the codes stored in nets and files. */
typedef enum {
    NATURE_NODE = 1, CONSTANT_NODE = 2, DECISION_NODE = 3,
    UTILITY_NODE = 4, DISCONNECTED_NODE = 5, ADVERSARY_NODE = 6
} nodekind_bn;

/* Node types. */
typedef enum {
    CONTINUOUS_TYPE = 1, DISCRETE_TYPE = 2
} nodetype_bn;

/* Control values of ReadNet_bn. */
#define NO_VISUAL_INFO   0
#define NO_WINDOW        0x10
#define MINIMIZED_WINDOW 0x30
#define REGULAR_WINDOW   0x70

/* A listener callback.  Its result: >= 0 accepted; -1001 out of range;
 * -1002 it raised an exception; -1003 a silent failure; other negatives fail. */
typedef int (*NetListener_bn) (const net_bn* net, eventtype_ns what, void* obj, void* info);
typedef int (*NodeListener_bn)(const node_bn* node, eventtype_ns what, void* obj, void* info);

/* ------------------------------------------------------------------------ */
/* Environment                                                              */
/* ------------------------------------------------------------------------ */

/* Creates an environment (the first one becomes the default); NULL on failure. */
RAVELO_API environ_ns* NewRaveloEnviron_ns (const char* license, environ_ns* reserved, const char* options);
/* Initialises env and writes a start-up message into mesg (MESG_LEN_ns chars); 0 on success, negative on failure. */
RAVELO_API int InitRavelo2_bn (environ_ns* env, char* mesg);
/* Closes env and frees every object in it, writing a farewell into mesg; 0 on success, negative on failure. */
RAVELO_API int CloseRavelo_bn (environ_ns* env, char* mesg);
/* Returns the version times 100 (505) and, if version is not NULL, the version text; 505 even on failure. */
RAVELO_API int GetRaveloVersion_bn (environ_ns* env, const char** version);
/* Sets the argument checking level (-1 only queries); returns the previous level, or -1 on failure. */
RAVELO_API checking_ns ArgumentChecking_ns (checking_ns setting, environ_ns* env);
/* Sets the memory usage limit in bytes (-1 only queries); returns the previous limit, or -1 on failure. */
RAVELO_API double LimitMemoryUsage_ns (double max_mem, environ_ns* env);
/* Selects the interface language of messages (0 to 4; -1 only queries); returns the previous one, or -1 on failure. */
RAVELO_API int SetLanguage_ns (int language, environ_ns* env);
/* Keeps a caller pointer in env under kind (0 is the usual kind). */
RAVELO_API void SetEnvironUserData_ns (environ_ns* env, int kind, void* data);
/* Returns the pointer kept under kind, or NULL. */
RAVELO_API void* GetEnvironUserData_ns (environ_ns* env, int kind);
/* Returns the engine's infinity value. */
RAVELO_API double GetInfinityDbl_ns (void);
/* Returns the engine's undefined value (a NaN); test it with x != x. */
RAVELO_API double GetUndefDbl_ns (void);

/* ------------------------------------------------------------------------ */
/* Errors                                                                   */
/* ------------------------------------------------------------------------ */

/* Makes a report from the caller, as the engine makes its own; returns it (NULL on failure). */
RAVELO_API report_ns* NewError_ns (int number, errseverity_ns severity, errcond_ns cond, const char* mesg, ...);
/* Returns the calling thread's next report in env of at least severity after 'after' (NULL starts), or NULL. */
RAVELO_API report_ns* GetError_ns (environ_ns* env, errseverity_ns severity, const report_ns* after);
/* Returns the report's number (positive), or 0 on failure. */
RAVELO_API int ErrorNumber_ns (const report_ns* error);
/* Returns the report's message text, or NULL on failure. */
RAVELO_API const char* ErrorMessage_ns (const report_ns* error);
/* Returns the report's severity, or NULL_ERR on failure. */
RAVELO_API errseverity_ns ErrorSeverity_ns (const report_ns* error);
/* Tells whether the report belongs to the condition category; 0 on failure. */
RAVELO_API bool_ns ErrorCategory_ns (errcond_ns cond, const report_ns* error);
/* Deletes one report. */
RAVELO_API void ClearError_ns (report_ns* error);
/* Deletes every report of env (of every thread) of at most the given severity, depth first through groups. */
RAVELO_API void ClearErrors_ns (environ_ns* env, errseverity_ns severity);
/* Provokes fault number test_num and recovers from it; 1 when a test ran, 0 for other numbers below 30, 3 from 30 up.
 *   1        a parameter report (5245), only at checking level 2 and above
 *   2        an internal assertion failure
 *   3        a floating-point division by zero (masked by the frame: the result is infinite, no report)
 *   4        an integer division by zero: detected and raised as a system fault before dividing
 *   6 to 13  reads and writes through null, invalid or misaligned pointers: the faulting access
 *            is detected before it is made and raised as a system fault
 *   14       the logarithm of zero, squared (masked: the result is infinite, no report)
 *   21       unbounded recursion: recursion runs until a depth guard raises a system fault
 *   23 to 27 overruns and underruns of stack buffers: the bounds check raises a system fault
 *   29       a loop that never ends: an iteration guard raises a system fault
 * Each system fault reaches the frame's guard, which reports "unhandled system-level error". */
RAVELO_API int TestFaultRecovery_ns (environ_ns* env, int test_num);

/* ------------------------------------------------------------------------ */
/* Random generators                                                        */
/* ------------------------------------------------------------------------ */

/* Creates a generator in env (owned by it, freed at the latest when env closes); NULL on failure.
 * seed is a decimal integer text (blanks and a sign allowed): s and -s give the same sequence, and the
 * magnitude is taken modulo 2^31; or a text from GetRandomGenState_ns, which recreates that generator.
 * options must be NULL or empty. */
RAVELO_API randgen_ns* NewRandomGenerator_ns (const char* seed, environ_ns* env, const char* options);
/* Deletes a generator. */
RAVELO_API void DeleteRandomGen_ns (randgen_ns* rand);
/* Fills results with num successive deviates: with options NULL or empty, uniform deviates in [0, 1)
 * of single-precision resolution; with options "integer", values of the generator's integer stream,
 * whole numbers in [0, 714025). */
RAVELO_API void GenerateRandomNumbers_ns (randgen_ns* rand, double* results, int num, const char* options);
/* Returns the generator's whole state (both streams and any cached normal deviate) as a text that
 * NewRandomGenerator_ns accepts as a seed; valid until the next call for rand. options must be NULL
 * or empty. NULL on failure. */
RAVELO_API const char* GetRandomGenState_ns (randgen_ns* rand, const char* options);

/* ------------------------------------------------------------------------ */
/* Nets                                                                     */
/* ------------------------------------------------------------------------ */

/* Creates an empty net; NULL on failure. */
RAVELO_API net_bn* NewNet_bn (const char* name, environ_ns* env);
/* Copies a net under a new name into env; options: "no_nodes", "no_links", "no_tables", "no_visual", "no_window". NULL on failure. */
RAVELO_API net_bn* CopyNet_bn (const net_bn* net, const char* new_name, environ_ns* new_env, const char* options);
/* Deletes a net with its nodes, tables and junction tree. */
RAVELO_API void DeleteNet_bn (net_bn* net);
/* Returns the nth net of env (from 0), or NULL past the end. */
RAVELO_API net_bn* GetNthNet_bn (int nth, environ_ns* env);
/* Returns the net's name, or NULL on failure. */
RAVELO_API const char* GetNetName_bn (const net_bn* net);
/* Renames the net. */
RAVELO_API void SetNetName_bn (net_bn* net, const char* name);
/* Returns the net's title (empty when none), or NULL on failure. */
RAVELO_API const char* GetNetTitle_bn (const net_bn* net);
/* Sets the net's title. */
RAVELO_API void SetNetTitle_bn (net_bn* net, const char* title);
/* Returns the net's comment (empty when none), or NULL on failure. */
RAVELO_API const char* GetNetComment_bn (const net_bn* net);
/* Sets the net's comment. */
RAVELO_API void SetNetComment_bn (net_bn* net, const char* comment);
/* Returns the net's nodes in net order as a constant list, or NULL on failure. */
RAVELO_API const nodelist_bn* GetNetNodes2_bn (const net_bn* net, const char* options);
/* Returns the node of that name, or NULL when there is none or on failure. */
RAVELO_API node_bn* GetNodeNamed_bn (const char* name, const net_bn* net);
/* Returns the file name the net was read from (empty when none), or NULL on failure. */
RAVELO_API const char* GetNetFileName_bn (const net_bn* net);
/* Returns the value of the net's user field 'name' and its length, or NULL when absent. */
RAVELO_API const char* GetNetUserField_bn (const net_bn* net, const char* name, int* length, int kind);
/* Gives index-th user field's name and value; *name is NULL past the end. */
RAVELO_API void GetNetNthUserField_bn (const net_bn* net, int index, const char** name, const char** value, int* length, int kind);
/* Sets (or with length -1 and NULL data removes) the net's user field 'name'. */
RAVELO_API void SetNetUserField_bn (net_bn* net, const char* name, const void* data, int length, int kind);
/* Returns the caller pointer kept in the net, or NULL. */
RAVELO_API void* GetNetUserData_bn (const net_bn* net, int kind);
/* Keeps a caller pointer in the net. */
RAVELO_API void SetNetUserData_bn (net_bn* net, int kind, void* data);
/* Adds a listener called on the net's events (filter: a set of eventtype_ns bits, -1 for all, 0 removes it); NULL net means every net. */
RAVELO_API void AddNetListener_bn (net_bn* net, NetListener_bn callback, void* obj, int filter);

/* ------------------------------------------------------------------------ */
/* Nodes and states                                                         */
/* ------------------------------------------------------------------------ */

/* Creates a nature node with num_states states (0 makes a continuous node); NULL on failure. */
RAVELO_API node_bn* NewNode_bn (const char* name, int num_states, net_bn* net);
/* Copies nodes (of one net) into new_net; returns the new nodes as a constant list, or NULL on failure. */
RAVELO_API const nodelist_bn* CopyNodes_bn (const nodelist_bn* nodes, net_bn* new_net, const char* options);
/* Deletes a node; its children lose that parent (it becomes a disconnected node in their place). */
RAVELO_API void DeleteNode_bn (node_bn* node);
/* Returns the node's net, or NULL on failure. */
RAVELO_API net_bn* GetNodeNet_bn (const node_bn* node);
/* Returns the node's name, or NULL on failure. */
RAVELO_API const char* GetNodeName_bn (const node_bn* node);
/* Renames the node. */
RAVELO_API void SetNodeName_bn (node_bn* node, const char* name);
/* Returns the node's kind, or 0 on failure. */
RAVELO_API nodekind_bn GetNodeKind_bn (const node_bn* node);
/* Sets the node's kind. */
RAVELO_API void SetNodeKind_bn (node_bn* node, nodekind_bn kind);
/* Returns the node's type, or 0 on failure. */
RAVELO_API nodetype_bn GetNodeType_bn (const node_bn* node);
/* Returns the node's number of states, or -1 on failure. */
RAVELO_API int GetNodeNumberStates_bn (const node_bn* node);
/* Returns the name of a state (empty when unnamed), or NULL on failure. */
RAVELO_API const char* GetNodeStateName_bn (const node_bn* node, state_bn state);
/* Names one state. */
RAVELO_API void SetNodeStateName_bn (node_bn* node, state_bn state, const char* state_name);
/* Names all states at once from a list separated by commas or white space (NULL removes the names). */
RAVELO_API void SetNodeStateNames_bn (node_bn* node, const char* state_names);
/* Returns a state's title (empty when none), or NULL on failure. */
RAVELO_API const char* GetNodeStateTitle_bn (const node_bn* node, state_bn state);
/* Sets a state's title. */
RAVELO_API void SetNodeStateTitle_bn (node_bn* node, state_bn state, const char* state_title);
/* Returns a state's comment (empty when none), or NULL on failure. */
RAVELO_API const char* GetNodeStateComment_bn (const node_bn* node, state_bn state);
/* Sets a state's comment. */
RAVELO_API void SetNodeStateComment_bn (node_bn* node, state_bn state, const char* state_comment);
/* Returns the index of the state with that name (or title), or UNDEF_STATE when there is none or on failure. */
RAVELO_API state_bn GetStateNamed_bn (const char* name, const node_bn* node);
/* Inserts num_states states before first_state (or at the end with LAST_ENTRY), tables filled with cpt_fill. */
RAVELO_API void AddNodeStates_bn (node_bn* node, state_bn first_state, const char* state_names, int num_states, double cpt_fill);
/* Removes one state, with its table entries. */
RAVELO_API void RemoveNodeState_bn (node_bn* node, state_bn state);
/* Reorders the states: new_order[i] is the old index of the state that becomes state i. */
RAVELO_API void ReorderNodeStates_bn (node_bn* node, const state_bn* new_order);
/* Returns the node's levels (thresholds or state values), or NULL when it has none or on failure. */
RAVELO_API const level_bn* GetNodeLevels_bn (const node_bn* node);
/* Sets the node's levels: num_states+1 thresholds for a continuous node, num_states values for a discrete one (-1 removes;
 * a continuous node keeps its thresholds while it has states: 0 removes both). */
RAVELO_API void SetNodeLevels_bn (node_bn* node, int num_states, const level_bn* levels);
/* Returns the node's title (empty when none), or NULL on failure. */
RAVELO_API const char* GetNodeTitle_bn (const node_bn* node);
/* Sets the node's title. */
RAVELO_API void SetNodeTitle_bn (node_bn* node, const char* title);
/* Returns the node's comment (empty when none), or NULL on failure. */
RAVELO_API const char* GetNodeComment_bn (const node_bn* node);
/* Sets the node's comment. */
RAVELO_API void SetNodeComment_bn (node_bn* node, const char* comment);
/* Returns the node's title, or its name when it has none; NULL on failure. */
RAVELO_API const char* GetNodeLabel_bn (const node_bn* node);
/* Returns the state's title, or its name when it has none; NULL on failure. */
RAVELO_API const char* GetNodeStateLabel_bn (const node_bn* node, state_bn state);
/* Returns the value of the node's user field 'name' and its length, or NULL when absent. */
RAVELO_API const char* GetNodeUserField_bn (const node_bn* node, const char* name, int* length, int kind);
/* Gives index-th user field's name and value; *name is NULL past the end. */
RAVELO_API void GetNodeNthUserField_bn (const node_bn* node, int index, const char** name, const char** value, int* length, int kind);
/* Sets (or with length -1 and NULL data removes) the node's user field 'name'. */
RAVELO_API void SetNodeUserField_bn (node_bn* node, const char* name, const void* data, int length, int kind);
/* Returns the caller pointer kept in the node, or NULL. */
RAVELO_API void* GetNodeUserData_bn (const node_bn* node, int kind);
/* Keeps a caller pointer in the node. */
RAVELO_API void SetNodeUserData_bn (node_bn* node, int kind, void* data);
/* Adds a listener called on the node's events (filter: eventtype_ns bits, -1 for all, 0 removes it); NULL node means every node. */
RAVELO_API void AddNodeListener_bn (node_bn* node, NodeListener_bn callback, void* obj, int filter);
/* Returns the node's position in the editor's drawing, or NULL on failure. */
RAVELO_API const double* GetNodeVisPosition_bn (const node_bn* node, void* vis, double* x, double* y);
/* Sets the node's position in the editor's drawing. */
RAVELO_API void SetNodeVisPosition_bn (node_bn* node, void* vis, double x, double y);

/* ------------------------------------------------------------------------ */
/* Links                                                                    */
/* ------------------------------------------------------------------------ */

/* Adds a link from parent to child; returns the link's index among the child's parents, or -1 on failure. */
RAVELO_API int AddLink_bn (node_bn* parent, node_bn* child);
/* Adds a link from parent to child carrying a time delay (a number or an equation; NULL, "" or "0"
 * for none), which lets it close a directed cycle; returns the link's index, or -1 on failure. */
RAVELO_API int AddDelayedLink_bn (node_bn* parent, node_bn* child, const char* delay);
/* Removes the link_index-th parent link of child. */
RAVELO_API void DeleteLink_bn (int link_index, node_bn* child);
/* Puts new_parent in place of the link_index-th parent of node (NULL disconnects the link). */
RAVELO_API void SwitchNodeParent_bn (int link_index, node_bn* node, node_bn* new_parent);
/* Returns the node's parents as a constant list, or NULL on failure. */
RAVELO_API const nodelist_bn* GetNodeParents_bn (const node_bn* node);
/* Returns the node's children as a constant list, or NULL on failure. */
RAVELO_API const nodelist_bn* GetNodeChildren_bn (const node_bn* node);
/* Returns the input name of a parent link (empty when none), or NULL on failure. */
RAVELO_API const char* GetNodeInputName_bn (const node_bn* node, int input_index);
/* Names a parent link. */
RAVELO_API void SetNodeInputName_bn (node_bn* node, int input_index, const char* name);
/* Returns the index of the input with that name, or -1 when there is none or on failure. */
RAVELO_API int GetInputNamed_bn (const char* name, const node_bn* node);
/* Returns the time delay of a parent link as written (a number or an equation; empty or "0" when
 * the link has none), or NULL on failure. */
RAVELO_API const char* GetNodeInputDelay_bn (const node_bn* node, int input_index);
/* Sets the time delay of a parent link (NULL, "" or "0" for none).  A directed cycle is allowed
 * only through a delayed link, so a delay a cycle needs can't be removed. */
RAVELO_API void SetNodeInputDelay_bn (node_bn* node, int input_index, const char* delay);

/* ------------------------------------------------------------------------ */
/* Node lists                                                               */
/* ------------------------------------------------------------------------ */

/* Creates a list of length NULL entries for nodes of net; NULL on failure. */
RAVELO_API nodelist_bn* NewNodeList2_bn (int length, const net_bn* net);
/* Inserts node at index (LAST_ENTRY appends). */
RAVELO_API void AddNodeToList_bn (node_bn* node, nodelist_bn* nodes, int index);
/* Removes and returns the entry at index (LAST_ENTRY for the last), or NULL on failure. */
RAVELO_API node_bn* RemoveNthNode_bn (nodelist_bn* nodes, int index);
/* Returns the number of entries, or -1 on failure. */
RAVELO_API int LengthNodeList_bn (const nodelist_bn* nodes);
/* Returns the entry at index, or NULL on failure. */
RAVELO_API node_bn* NthNode_bn (const nodelist_bn* nodes, int index);
/* Replaces the entry at index. */
RAVELO_API void SetNthNode_bn (nodelist_bn* nodes, int index, node_bn* node);
/* Returns the index of the first entry equal to node at or after start_index, or -1. */
RAVELO_API int IndexOfNodeInList_bn (const node_bn* node, const nodelist_bn* nodes, int start_index);
/* Returns a new list (owned by the caller) with the same entries, or NULL on failure. */
RAVELO_API nodelist_bn* DupNodeList_bn (const nodelist_bn* nodes);
/* Empties the list. */
RAVELO_API void ClearNodeList_bn (nodelist_bn* nodes);
/* Deletes a list made by the caller. */
RAVELO_API void DeleteNodeList_bn (nodelist_bn* nodes);
/* Copies the states of src_nodes into dest_states in the order of dest_nodes (UNDEF_STATE where absent); returns dest_states, NULL on failure. */
RAVELO_API state_bn* MapStateList_bn (const state_bn* src_states, const nodelist_bn* src_nodes, state_bn* dest_states, const nodelist_bn* dest_nodes);

/* ------------------------------------------------------------------------ */
/* Node tables                                                              */
/* ------------------------------------------------------------------------ */

/* Returns the CPT row for a parent condition (one state per parent), or NULL on failure. */
RAVELO_API const prob_bn* GetNodeProbs_bn (const node_bn* node, const state_bn* parent_states);
/* Replaces the CPT row for a parent condition (EVERY_STATE entries set many rows); creates the CPT if absent,
 * except over a function table (delete that first). */
RAVELO_API void SetNodeProbs_bn (node_bn* node, const state_bn* parent_states, const prob_bn* probs);
/* Returns the function table's state for a parent condition, or UNDEF_STATE on failure. */
RAVELO_API state_bn GetNodeFuncState_bn (const node_bn* node, const state_bn* parent_states);
/* Sets the function table's state for a parent condition; creates the table if the node has no CPT. */
RAVELO_API void SetNodeFuncState_bn (node_bn* node, const state_bn* parent_states, state_bn state);
/* Returns the function table's real value for a parent condition, or UNDEF on failure. */
RAVELO_API double GetNodeFuncReal_bn (const node_bn* node, const state_bn* parent_states);
/* Sets the function table's real value for a parent condition; creates the table if the node has no CPT. */
RAVELO_API void SetNodeFuncReal_bn (node_bn* node, const state_bn* parent_states, double value);
/* Returns the experience for a parent condition, or -1 on failure (UNDEF when it has no experience table). */
RAVELO_API double GetNodeExperience_bn (const node_bn* node, const state_bn* parent_states);
/* Sets the experience for a parent condition; creates the experience table if absent. */
RAVELO_API void SetNodeExperience_bn (node_bn* node, const state_bn* parent_states, double experience);
/* Removes the node's CPT, function and experience tables. */
RAVELO_API void DeleteNodeTables_bn (node_bn* node);
/* Tells whether the node has a table; *complete (if not NULL) whether it has no missing entries; 0 on failure. */
RAVELO_API bool_ns HasNodeTable_bn (const node_bn* node, bool_ns* complete);
/* Tells whether the node's relation to its parents is a function; 0 on failure. */
RAVELO_API bool_ns IsNodeDeterministic_bn (const node_bn* node);

/* ------------------------------------------------------------------------ */
/* Streams and net files                                                    */
/* ------------------------------------------------------------------------ */

/* Creates a stream on a file (access: NULL or "" for default, or mode words); NULL on failure. */
RAVELO_API stream_ns* NewFileStream_ns (const char* filename, environ_ns* env, const char* access);
/* Creates a stream in memory; NULL on failure. */
RAVELO_API stream_ns* NewMemoryStream_ns (const char* name, environ_ns* env, const char* access);
/* Sets a memory stream's contents (length -1: up to the terminating NUL); copy says whether the buffer is copied. */
RAVELO_API void SetStreamContents_ns (stream_ns* stream, const char* buffer, long length, bool_ns copy);
/* Returns a memory stream's contents and their length, or NULL on failure. */
RAVELO_API const char* GetStreamContents_ns (stream_ns* stream, long* length);
/* Deletes a stream (not its file). */
RAVELO_API void DeleteStream_ns (stream_ns* stream);
/* Reads a net from a stream (control: NO_VISUAL_INFO, NO_WINDOW, MINIMIZED_WINDOW or REGULAR_WINDOW); NULL on failure. */
RAVELO_API net_bn* ReadNet_bn (stream_ns* file, int control);
/* Writes a net to a stream, in the format its name's extension selects. */
RAVELO_API void WriteNet_bn (const net_bn* net, stream_ns* file);

/* ------------------------------------------------------------------------ */
/* Structure queries and elimination order                                  */
/* ------------------------------------------------------------------------ */

/* Puts into related_nodes the nodes in the named relation to node (e.g. "parents", "d_connected, union"). */
RAVELO_API void GetRelatedNodes_bn (nodelist_bn* related_nodes, const char* relation, node_bn* node);
/* Like GetRelatedNodes_bn, for every node of a list. */
RAVELO_API void GetRelatedNodesMult_bn (nodelist_bn* related_nodes, const char* relation, const nodelist_bn* nodes);
/* Tells whether related_node stands in the named relation to node. */
RAVELO_API bool_ns IsNodeRelated_bn (node_bn* related_node, const char* relation, node_bn* node);
/* Returns the net's user-given elimination order, or NULL when it has none. */
RAVELO_API const nodelist_bn* GetNetElimOrder_bn (const net_bn* net);
/* Gives the net an elimination order (the list is copied), or removes it when elim_order is NULL. */
RAVELO_API void SetNetElimOrder_bn (const nodelist_bn* elim_order, net_bn* net);

/* ------------------------------------------------------------------------ */
/* Compilation                                                              */
/* ------------------------------------------------------------------------ */

/* Compiles the net into a junction tree. */
RAVELO_API void CompileNet_bn (net_bn* net);
/* Compiles with options: "optimize" searches for an order of smaller total table size; "report" leaves notices
 * with the compiled size and the elimination order report (its "Max Required:" memory and time). */
RAVELO_API void CompileNetWith_bn (net_bn* net, const char* options);
/* Discards the net's junction tree (its elimination order stays). */
RAVELO_API void UncompileNet_bn (net_bn* net);
/* Returns the total compiled table size with current findings, sepsets included (method must be 0); -1 on failure. */
RAVELO_API double SizeCompiledNet_bn (net_bn* net, int method);

/* ------------------------------------------------------------------------ */
/* Reports                                                                  */
/* ------------------------------------------------------------------------ */

/* Returns a text of any length made of the named sections ("compiled": the compiled size and the
 * elimination order report); nodes and options are reserved and must be NULL.  The text stays
 * valid until the calling thread's next call of this function; NULL on failure. */
RAVELO_API const char* CreateCustomReport_bn (net_bn* net, const nodelist_bn* nodes, const char* sections, const char* options);

/* ------------------------------------------------------------------------ */
/* Findings                                                                 */
/* ------------------------------------------------------------------------ */

/* Enters the finding that node is in state. */
RAVELO_API void EnterFinding_bn (node_bn* node, state_bn state);
/* Enters the finding that node is not in state. */
RAVELO_API void EnterFindingNot_bn (node_bn* node, state_bn state);
/* Enters a real-valued finding. */
RAVELO_API void EnterNodeValue_bn (node_bn* node, double value);
/* Enters a likelihood vector (one entry per state, each in [0, 1]). */
RAVELO_API void EnterNodeLikelihood_bn (node_bn* node, const prob_bn* likelihood);
/* Enters a calibration vector: the probabilities the node's states should have. */
RAVELO_API void EnterNodeCalibration_bn (node_bn* node, const prob_bn* calibration);
/* Enters a Gaussian finding as a likelihood over the node's intervals. */
RAVELO_API void EnterGaussianFinding_bn (node_bn* node, double mean, double std_dev);
/* Enters the finding that the node's value lies in [low, high], as a likelihood over its intervals. */
RAVELO_API void EnterIntervalFinding_bn (node_bn* node, double low, double high);
/* Returns the node's finding: a state, UNDEF_STATE, LIKELIHOOD_FINDING, NEGATIVE_FINDING, or -1. */
RAVELO_API state_bn GetNodeFinding_bn (const node_bn* node);
/* Returns the node's likelihood vector (all 1 when it has no finding), or NULL on failure. */
RAVELO_API const prob_bn* GetNodeLikelihood_bn (const node_bn* node);
/* Returns the real value entered as a finding, or UNDEF when none. */
RAVELO_API double GetNodeValueEntered_bn (const node_bn* node);
/* Retracts the node's findings. */
RAVELO_API void RetractNodeFindings_bn (node_bn* node);
/* Retracts every finding of the net. */
RAVELO_API void RetractNetFindings_bn (net_bn* net);
/* Returns the state the node's findings and its parents' determine, or UNDEF_STATE. */
RAVELO_API state_bn CalcNodeState_bn (node_bn* node);
/* Returns the value the node's findings and its parents' determine, or UNDEF. */
RAVELO_API double CalcNodeValue_bn (node_bn* node);

/* ------------------------------------------------------------------------ */
/* Beliefs and queries                                                      */
/* ------------------------------------------------------------------------ */

/* Returns the node's beliefs (owned by the node); all zeros after an error. */
RAVELO_API const prob_bn* GetNodeBeliefs_bn (node_bn* node);
/* Returns the node's expected value and its standard deviation through std_dev; UNDEF on failure. */
RAVELO_API double GetNodeExpectedValue_bn (node_bn* node, double* std_dev);
/* Returns the expected utility of each state of a decision node, or NULL on failure. */
RAVELO_API const util_bn* GetNodeExpectedUtils_bn (node_bn* node);
/* Returns the net's expected utility, or UNDEF on failure. */
RAVELO_API double GetNetExpectedUtility_bn (net_bn* net);
/* Tells whether the node's beliefs are current. */
RAVELO_API bool_ns IsBeliefUpdated_bn (const node_bn* node);
/* Returns the probability of the current findings, or -1 on failure. */
RAVELO_API double FindingsProbability_bn (net_bn* net);
/* Returns the probability that the nodes are in the given states given the findings, or -1 on failure. */
RAVELO_API double JointProbability_bn (const nodelist_bn* nodes, const state_bn* states);
/* Writes into config the most probable states of the nodes given the findings (nth must be 0). */
RAVELO_API void MostProbableConfig_bn (const nodelist_bn* nodes, state_bn* config, int nth);
/* Returns the net's auto-update setting, or -1 on failure. */
RAVELO_API int GetNetAutoUpdate_bn (const net_bn* net);
/* Sets whether beliefs are updated at once after each change of findings; returns the previous setting, or -1. */
RAVELO_API int SetNetAutoUpdate_bn (net_bn* net, int autoupdate);

/* ------------------------------------------------------------------------ */
/* Equations                                                                */
/* ------------------------------------------------------------------------ */

/* Stores an equation text for the node (NULL or "" removes it); it is parsed when used. */
RAVELO_API void SetNodeEquation_bn (node_bn* node, const char* eqn);
/* Returns the node's equation text (empty when none), or NULL on failure. */
RAVELO_API const char* GetNodeEquation_bn (const node_bn* node);

/* ------------------------------------------------------------------------ */
/* Equation to table                                                        */
/* ------------------------------------------------------------------------ */

/* Builds the node's table from its equation, with num_samples samples per cell for continuous parents. */
RAVELO_API void EquationToTable_bn (node_bn* node, int num_samples, bool_ns samp_unc, bool_ns add_exist);

/* ------------------------------------------------------------------------ */
/* Case files and case sets                                                 */
/* ------------------------------------------------------------------------ */

/* Sets the entry delimiter of case files written (tab, space or comma; -1 queries); returns the previous one, or -1. */
RAVELO_API int SetCaseFileDelimChar_ns (int newchar, environ_ns* env);
/* Sets the missing-data character written (0 for none, space, '*' or '?'; -1 queries); returns the previous one, or -1. */
RAVELO_API int SetMissingDataChar_ns (int newchar, environ_ns* env);
/* Installs the query asked about values a case file holds that the net cannot take (NULL removes it);
 * without one the reader does as unasked says (SKIP_UNKNOWN_VALUES, ADD_UNKNOWN_VALUES or HALT_ON_UNKNOWN_VALUES). */
RAVELO_API void SetCaseFileQueryCallback_ns (CaseFileQuery_ns query, void* user_data, int unasked, environ_ns* env);
/* Appends the findings of nodes to file as one case (ID_num and freq -1 for no such column);
 * returns the case's position in the file, or -1 on failure. */
RAVELO_API long WriteNetFindings_bn (const nodelist_bn* nodes, stream_ns* file, long ID_num, double freq);
/* Reads the case at *case_posn (FIRST_CASE, NEXT_CASE or a position; NULL: the first) and enters it as findings
 * of nodes, after retracting theirs unless add; *case_posn becomes the case's position, or NO_MORE_CASES. */
RAVELO_API void ReadNetFindings2_bn (long* case_posn, stream_ns* file, bool_ns add, const nodelist_bn* nodes,
                                     long* ID_num, double* freq);
/* Creates an empty case set; NULL on failure. */
RAVELO_API caseset_cs* NewCaseset_cs (const char* name, environ_ns* env);
/* Deletes a case set (its file stays). */
RAVELO_API void DeleteCaseset_cs (caseset_cs* cases);
/* Adds the cases of a file, each weighted by degree (one file per case set). */
RAVELO_API void AddFileToCaseset_cs (caseset_cs* cases, stream_ns* file, double degree, const char* options);
/* Writes the case set's cases to file. */
RAVELO_API void WriteCaseset_cs (const caseset_cs* cases, stream_ns* file, const char* options);

/* ------------------------------------------------------------------------ */
/* Counting learning                                                        */
/* ------------------------------------------------------------------------ */

/* Learns the findings now entered as one case of weight degree into the tables of the nature nodes of the list
 * whose own and parents' states are known; a negative degree unlearns a case learned before. updating must be 0. */
RAVELO_API void ReviseCPTsByFindings_bn (const nodelist_bn* nodes, int updating, double degree);
/* Moves every row of the node's table toward its prior count by degree (0 to 1); 1 forgets all that was learned. */
RAVELO_API void FadeCPTable_bn (node_bn* node, double degree);

/* ------------------------------------------------------------------------ */
/* Random cases                                                             */
/* ------------------------------------------------------------------------ */

#define FORWARD_SAMPLING  2
/* Return values of GenerateRandomCase_bn besides 0 (a case was made). */
#define REJECTED_CASE_RESULT  (-13)
#define ERROR_CASE_RESULT     (-3)

/* Draws one case from the net's distribution given its findings and enters the drawn values as findings of the
 * listed nodes. method: 0 automatic, 1 junction-tree sampling (compiled net), FORWARD_SAMPLING (rejecting draws
 * that contradict the findings, at most maxtries attempts). Returns 0, REJECTED_CASE_RESULT or ERROR_CASE_RESULT. */
RAVELO_API int GenerateRandomCase_bn (const nodelist_bn* nodes, int method, double maxtries);
/* Gives the net its own generator for random cases (NULL: the environment's default one again). The caller
 * keeps ownership; deleting the generator while the net uses it makes later draws fail with a report. */
RAVELO_API void SetNetRandomGen_bn (net_bn* net, randgen_ns* rand);

/* ------------------------------------------------------------------------ */
/* Learners                                                                 */
/* ------------------------------------------------------------------------ */

typedef struct learner_bn learner_bn;

/* Learning methods of NewLearner_bn. */
#define COUNTING_LEARNING 1
#define EM_LEARNING       3
#define GRADIENT_DESCENT_LEARNING 4

/* Called with each piece of an iterative learner's progress table (heading, one row per iteration)
 * as it is made; a nonzero result stops learning, keeping the tables of the last finished iteration.
 * It must not call the interface. */
typedef int (*LearnerListener_bn)(learner_bn* learner, const char* text, void* data);

/* Creates a learner: method 1 or 2 counting, 3 EM, 4 gradient ascent (options must be empty); NULL on failure. */
RAVELO_API learner_bn* NewLearner_bn (int method, const char* options, environ_ns* env);
/* Deletes a learner. */
RAVELO_API void DeleteLearner_bn (learner_bn* learner);
/* Sets the iteration limit (>= 0; 1000 in a new learner). */
RAVELO_API void SetLearnerMaxIters_bn (learner_bn* learner, int max_iters);
/* Returns the iteration limit, or -1 on failure. */
RAVELO_API int GetLearnerMaxIters_bn (const learner_bn* learner);
/* Sets the relative change of log likelihood below which iterating stops (>= 0; 1e-5 in a new learner). */
RAVELO_API void SetLearnerMaxTol_bn (learner_bn* learner, double tol);
/* Returns the tolerance, or UNDEF on failure. */
RAVELO_API double GetLearnerMaxTol_bn (const learner_bn* learner);
/* Sets the generator that draws starting tables for learned nodes without experience (NULL: none). */
RAVELO_API void SetLearnerRandomGen_bn (learner_bn* learner, randgen_ns* rand);
/* Sets the listener that receives the progress table (NULL: none). */
RAVELO_API void SetLearnerListener_bn (learner_bn* learner, LearnerListener_bn listener, void* data);
/* Learns the tables of nodes from the cases, each weighted by degree times its multiplicity. */
RAVELO_API void LearnCPTs_bn (learner_bn* learner, const nodelist_bn* nodes, const caseset_cs* cases, double degree);

/* Sets how many worker threads learning and testing use (threads >= 1; -1 only queries); returns the
 * previous number, or -1 on failure.  It starts as the RAVELO_THREADS environment variable, else the
 * machine's cores.  Results do not depend on it. */
RAVELO_API int SetBatchThreads_ns (int threads, environ_ns* env);

/* ------------------------------------------------------------------------ */
/* Net testing                                                              */
/* ------------------------------------------------------------------------ */

typedef struct tester_bn tester_bn;

/* Creates a tester of test_nodes; unobs_nodes (or NULL) never receive findings; tests must be -1. */
RAVELO_API tester_bn* NewNetTester_bn (const nodelist_bn* test_nodes, const nodelist_bn* unobs_nodes, int tests);
/* Deletes a tester. */
RAVELO_API void DeleteNetTester_bn (tester_bn* test);
/* Runs every case of the case set through the net and adds to the tallies; may be called again. */
RAVELO_API void TestWithCaseset_bn (tester_bn* test, const caseset_cs* cases);
/* Returns the weighted number of cases with that predicted and actual state of the node, or UNDEF. */
RAVELO_API double GetTestConfusion_bn (tester_bn* test, node_bn* node, state_bn predicted, state_bn actual);
/* Returns the share of the node's tested cases whose predicted state was wrong, or UNDEF. */
RAVELO_API double GetTestErrorRate_bn (tester_bn* test, node_bn* node);
/* Returns the mean logarithmic loss of the node (INFINITY after a case of probability zero), or UNDEF. */
RAVELO_API double GetTestLogLoss_bn (tester_bn* test, node_bn* node);
/* Returns the mean quadratic loss of the node, or UNDEF. */
RAVELO_API double GetTestQuadraticLoss_bn (tester_bn* test, node_bn* node);
/* Replaces the stream's contents with the written report of every test node. */
RAVELO_API void WriteTestReport_bn (tester_bn* test, stream_ns* out);

#ifdef __cplusplus
}
#endif

#endif /* RAVELO_RAVELO_H */
