/*
 * SWITCH, NODE, SUBTREE, LEAF and GOTO: records, and what the sources of this family share.
 */
#pragma once

#include "stmt/tls.h"

#include <ostrum/tlss.h>
#include <ostrum/tlt.h>

/* A jump table has fewer entries than this. */
enum { TLSS_TABLE_LIMIT = 256 };

/* One value of a leg. */
struct TLSS_CASE_VALUE {
    TLSS_CASE_VALUE *next; /* read before this one */
    char *name;            /* owned: text of the first token of the value */
    int32_t value;         /* 0 or more */
};

struct TLSS_SWITCH;

/* A leg. It goes to a block of its own in a SWITCH, and to a named node in a tree. */
struct TLSS_CASE {
    TLT_STATEMENT *statement;
    TLSS_CASE_VALUE *values; /* newest first */
    char *goto_name;         /* owned; null in a SWITCH, or after an error */
    TLSS_SWITCH *target;     /* found by the check; null after an error */
    TLS_BLOCK *block;        /* owned; null in a tree */
    TLC_PSECT *start;        /* of the block */
    TLC_PSECT *end;          /* behind the block */
    TLSS_CASE *next;
};

/* Values met so far in the legs of one record; open addressing, each place holds a value + 1. */
struct TLSS_VALUE_SET {
    uint32_t *places; /* owned; null until the first value */
    uint32_t capacity;
    uint32_t count;
};

/* SWITCH, NODE, SUBTREE or LEAF, as the token says. */
struct TLSS_SWITCH {
    TLS_STATEMENT common;
    int32_t token;
    char *node_name;                 /* owned; null in a SWITCH, or after an error */
    TLI_IDENTIFIER *node_identifier; /* its data is this record; null as the name, or if refused */
    TLE_TERM *expression;            /* owned; null after an error */
    TLI_IDENTIFIER *expression_type;
    TLSS_CASE *legs;
    TLSS_CASE **tail;         /* where the next leg is linked */
    bool has_expression;      /* something stood where an expression may */
    bool no_fall;             /* no edge to the statement behind */
    TLS_BLOCK *default_block; /* owned, or null */
    int32_t highest_case;     /* of all legs; 0 without any */
    int32_t lowest_case;      /* of all legs; 0x7FFFFFFF without any */
    TLSS_VALUE_SET values;
    /* Sections of the P-code */
    TLC_PSECT *start_section;    /* what a jump to the node reaches */
    TLC_PSECT *dispatch_section; /* holds the table */
    TLC_PSECT *end_section;      /* behind the statement */
    TLC_PSECT *default_section;  /* where a value without a leg goes */
    void *tree_node;             /* the client's handle */
    int32_t node_number;         /* in Java text, from 1 */
};

/* GOTO behind a node without legs. */
struct TLSS_GOTO {
    TLS_STATEMENT common;
    char *name; /* owned; null after an error */
    TLSS_SWITCH *owner;
    TLSS_SWITCH *target; /* found by the check; null after an error */
};

extern const TLS_STATEMENT_CLASS TLSS_SwitchClass;
extern const TLS_STATEMENT_CLASS TLSS_GotoClass;

/* The client's table, or null. */
extern const TLSS_CALLBACKS *TLSS_Callbacks;

/** The record as a SWITCH, NODE, SUBTREE or LEAF; null if it is none of them. */
inline TLSS_SWITCH *TLSS_AsSwitch(TLS_STATEMENT *record)
{
    const bool is_switch = record != nullptr && record->statement_class == &TLSS_SwitchClass;
    return is_switch ? reinterpret_cast<TLSS_SWITCH *>(record) : nullptr;
}

/** Whether the record is a NODE or a SUBTREE. */
inline bool TLSS_IsNode(const TLSS_SWITCH *record)
{
    return record->token == TLT_TOKEN_NODE || record->token == TLT_TOKEN_SUBTREE;
}

/** Whether code can be written for the record: see TLS_Generable. */
bool TLSS_IsGenerable(const TLSS_SWITCH *record);

/**
 * Adds a value to those met.
 * @param set the set
 * @param value 0 or more
 * @return false if it was there already
 */
bool TLSS_AddToSet(TLSS_VALUE_SET *set, int32_t value);

/* Entries of the two classes. */
void TLSS_CheckSwitch(TLS_BLOCK *block, TLS_STATEMENT *record);
void TLSS_CheckGoto(TLS_BLOCK *block, TLS_STATEMENT *record);
void TLSS_SwitchCode(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSS_GotoCode(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSS_SwitchCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSS_GotoCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSS_SwitchJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSS_GotoJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSS_PrintSwitch(TLS_STATEMENT *record, int32_t indent);
void TLSS_PrintGoto(TLS_STATEMENT *record, int32_t indent);
void *TLSS_SwitchTree(TLS_BLOCK *block, int32_t pass, void *context, TLS_STATEMENT *record);
void *TLSS_GotoTree(TLS_BLOCK *block, int32_t pass, void *context, TLS_STATEMENT *record);

/** Writes the statements of a tree as Java text. */
void TLSS_WriteJavaTree(TLC_STREAM *stream, const TLS_BLOCK *root, TLS_BLOCK *body);

/** Tree entry of the head of a function. */
void *TLSS_HeadTree(TLS_BLOCK *block, int32_t pass, void *context, TLS_STATEMENT *record);
