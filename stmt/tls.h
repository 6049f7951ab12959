/*
 * Blocks and simple statements: records, and what other folders need of them.
 */
#pragma once

#include <ostrum/tls.h>

/* Blocks inside a body that may stand in one another. */
enum { TLS_NESTING_LIMIT = 1000 };

/* Indent of a block that has not met a statement yet. */
enum { TLS_NO_INDENT = -1 };

/* Statements of one indentation. The root of a tree also knows which block is open. */
struct TLS_BLOCK {
    TLS_PARSER parser;
    void *parser_context;
    TLP_MODULE *module;
    TLS_STATEMENT *head; /* first statement of the whole tree */
    int32_t indent;      /* column of the statements, TLS_NO_INDENT until one arrives */
    int32_t section_type;
    TLS_BLOCK *outer;          /* null in the root */
    TLS_BLOCK *current;        /* root only: the block that is open now */
    TLS_STATEMENT *statements; /* first of the list */
    TLS_STATEMENT *last;       /* last of the list */
    int32_t depth;             /* blocks around this one */
};

/* Head of a function: a record of the first statement of its root block. */
struct TLS_FUNCTION {
    TLS_STATEMENT common;
    TLI_IDENTIFIER *function;
    TLS_BLOCK *body; /* owned */
};

/* An expression on a line of its own. */
struct TLS_EXPRESSION {
    TLS_STATEMENT common;
    TLE_TERM *expression; /* owned; null after an error */
};

/* RETURN. */
struct TLS_RETURN {
    TLS_STATEMENT common;
    TLE_TERM *expression; /* owned; null for a bare RETURN, or after an error */
    bool has_value;       /* something stood behind the keyword */
};

/* Static tables of the simple kinds. */
extern const TLS_STATEMENT_CLASS TLS_FunctionClass;
extern const TLS_STATEMENT_CLASS TLS_EndClass;
extern const TLS_STATEMENT_CLASS TLS_ExpressionClass;
extern const TLS_STATEMENT_CLASS TLS_ReturnClass;

/**
 * Allocates a statement record, zero-filled, and fills what all records begin with.
 * @param tag allocation tag of the kind
 * @param size bytes of the whole record
 * @param statement_class the kind's operations
 * @param statement source statement
 * @return the record; TLS_Append gives it an owner
 */
TLS_STATEMENT *TLS_NewStatement(const char *tag, int32_t size,
                                const TLS_STATEMENT_CLASS *statement_class,
                                TLT_STATEMENT *statement);

/**
 * Tells whether code can be written for an expression: it was parsed, and its statement is without
 * an error. Nothing is generated for a statement of which the expression failed.
 * @param record statement record that owns it
 * @param expression the expression or null
 */
bool TLS_Generable(const TLS_STATEMENT *record, const TLE_TERM *expression);

/**
 * Opens the program section in which a statement's code begins, and notes its source line there.
 * @param stream P-code stream
 * @param record statement record
 * @return the section, which is the current one
 */
TLC_PSECT *TLS_OpenSection(TLC_STREAM *stream, const TLS_STATEMENT *record);

/**
 * Adds a jump to the current section.
 * @param stream P-code stream
 * @param code operation code of the jump
 * @param target section whose start is jumped to
 */
void TLS_Jump(TLC_STREAM *stream, int32_t code, TLC_PSECT *target);

/** Lists the line before a block's statements. @param label the block's @param indent columns */
void TLS_PrintOpening(const char *label, int32_t indent);

/** Lists the line behind a block's statements. @param label the block's @param indent columns */
void TLS_PrintClosing(const char *label, int32_t indent);
