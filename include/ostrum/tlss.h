/*
 * SWITCH and its legs, and trees: functions whose body is a graph of named nodes. A client can walk
 * the graph of a tree without running it: it sets a table of callbacks, runs TLS_BlockTree on the
 * root block of the tree with pass 0 and then with pass 1, and is told the nodes and the edges.
 */
#ifndef OSTRUM_TLSS_H
#define OSTRUM_TLSS_H

#include <ostrum/tls.h>

OSTRUM_BEGIN

/** Passes of TLS_BlockTree. */
enum {
    TLSS_PASS_NODES = 0, /**< tells the nodes */
    TLSS_PASS_EDGES = 1  /**< tells the edges, after all nodes */
};

/**
 * What a client hears of the graph of a tree. A handle is the client's own pointer for a node; the
 * library keeps the last one for each node and hands it back. A null handle ends the walk. The
 * statement, the identifier and the expression are the module's.
 */
struct TLSS_CALLBACKS {
    /** A LEAF; node is null if its name was refused, expression if it returns nothing. */
    void *(*new_leaf)(void *context, TLT_STATEMENT *statement, TLI_IDENTIFIER *node,
                      TLE_TERM *expression);
    /** A NODE, SUBTREE or SWITCH. */
    void *(*new_node)(void *context, TLT_STATEMENT *statement, TLI_IDENTIFIER *node,
                      TLE_TERM *expression);
    /** An edge; value_name is the value as the source has it, empty where none was written. */
    void (*link)(void *context, void *from, int32_t value, void *to, const char *value_name);
    /** A SUBTREE has got all its edges; the answer takes the place of its handle. */
    void *(*subtree)(void *context, void *handle, const char *node_name);
};

/**
 * Parses SWITCH, NODE, SUBTREE or LEAF. Reports "No expression for SWITCH or NODE", "Illegal type
 * for SWITCH", "SWITCH condition must be INT or ENUM", "No value supplied with LEAF statement".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSS_SwitchStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses a leg of the last statement. Reports "CASE not part of a SWITCH statement", "CASE values
 * must be in range 0 and 0x7FFFFFFF", "Multiple CASE value", "Unconnected Leg".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSS_CaseStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses DEFAULT. Reports "DEFAULT not part of a SWITCH statement", "SWITCH statement already has a
 * DEFAULT".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSS_DefaultStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses BREAK, which cuts the edge from a node to the statement behind it. Reports "Unconnected
 * Leg" every time, "BREAK not part of a NODE statement", "BREAK not permitted with CASE's".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSS_BreakStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses GOTO. Reports "GOTO only permitted after a NODE".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSS_GotoStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * @param record a statement record, or null
 * @return the section that a jump to a SWITCH, NODE, SUBTREE or LEAF reaches, valid once its P-code
 *         was generated; null for any other statement
 */
OSTRUM_API TLC_PSECT *TLSS_NodePSect(TLS_STATEMENT *record);

/**
 * Sets what is told of trees; one table serves the whole process.
 * @param callbacks the table, borrowed until another is set; null for none. An entry may be null:
 *        nodes then have no handle, and edges are not told
 */
OSTRUM_API void TLSS_SetCallbacks(const TLSS_CALLBACKS *callbacks);

/**
 * Runs the tree operation of each statement of a block, in order, up to one that gives nothing. The
 * root block of a tree leads on to its body.
 * @param pass TLSS_PASS_NODES, then TLSS_PASS_EDGES
 * @param context handed to the callbacks
 * @param block a block or null
 * @return the block after a finished run of TLSS_PASS_NODES, else null
 */
OSTRUM_API TLS_BLOCK *TLS_BlockTree(int32_t pass, void *context, TLS_BLOCK *block);

/**
 * @param context handed to the callbacks
 * @param block the block that holds the statement
 * @param record a statement record, or null
 * @return the client's handle of the statement, null if it has none
 */
OSTRUM_API void *TLS_StatementNode(void *context, TLS_BLOCK *block, TLS_STATEMENT *record);

/**
 * @param context handed to the callbacks
 * @param block a block or null
 * @return the handle of the first statement of the block that has one, or null
 */
OSTRUM_API void *TLS_BlockNode(void *context, TLS_BLOCK *block);

/** Nothing to do; here so that every family can be initialised alike. */
OSTRUM_API void TLSS_Initialise(void);

OSTRUM_END

#endif
