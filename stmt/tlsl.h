/*
 * Loops: records, and what the sources of the three targets share.
 */
#pragma once

#include "stmt/tls.h"

#include <ostrum/tlsl.h>

/* WHILE. */
struct TLSL_WHILE {
    TLS_STATEMENT common;
    TLE_TERM *condition; /* owned; null after an error */
    TLS_BLOCK *body;     /* owned */
};

/* FOR. Of the expressions, each is null until it has been seen, and after an error. */
struct TLSL_FOR {
    TLS_STATEMENT common;
    TLE_TERM *variable; /* owned */
    TLE_TERM *start;    /* owned */
    TLE_TERM *limit;    /* owned */
    TLE_TERM *step;     /* owned; null also stands for 1 */
    TLS_BLOCK *body;    /* owned */
    /* The body stores in the variable: found by the writer of C text, for a variable that has less than
       a word. */
    bool is_changed;
};

/* Static tables of the kinds. */
extern const TLS_STATEMENT_CLASS TLSL_WhileClass;
extern const TLS_STATEMENT_CLASS TLSL_ForClass;

/* Entries of the classes. */
void TLSL_WhileText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSL_ForCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSL_WhileJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSL_ForJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);

/** @param record FOR @return whether code can be written for it: see TLS_Generable */
bool TLSL_ForIsGenerable(const TLSL_FOR *record);

/** @param record FOR @return whether its variable has less than a word */
bool TLSL_IsNarrow(const TLSL_FOR *record);

/** @param record FOR @return whether it starts at a literal that its variable has room for */
bool TLSL_HasLiteralStart(const TLSL_FOR *record);

/**
 * Tells whether limit and step are literals, and the variable has room for what is held against the
 * limit last.
 * @param record FOR
 */
bool TLSL_HasLiteralBounds(const TLSL_FOR *record);
