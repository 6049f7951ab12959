/*
 * Conditionals and exceptions: records, and what the sources of the three targets share.
 */
#pragma once

#include "stmt/tls.h"

#include <ostrum/tlsc.h>

/*
 * IF, ELSEIF or WHEN, as the token says. An ELSEIF is the only statement of the else block of the
 * one before it. Such a chain nests by ownership, one level for each ELSEIF of the source, so that
 * everything walks it in a loop.
 */
struct TLSC_IF {
    TLS_STATEMENT common;
    int32_t token;
    TLE_TERM *condition;   /* owned; the exception's number of a WHEN; null after an error */
    TLS_BLOCK *then_block; /* owned; the handler of a WHEN */
    TLS_BLOCK *else_block; /* owned, or null; what a WHEN protects */
    TLSC_IF *chain_end;    /* of the first of a chain: the last one, which a further ELSE goes to */
};

/* RAISE. */
struct TLSC_RAISE {
    TLS_STATEMENT common;
    TLE_TERM *value;    /* owned; null after an error */
    TLE_TERM *argument; /* owned; null without one, or after an error */
    bool has_argument;  /* a comma stood behind the value */
};

/* Static tables of the kinds. */
extern const TLS_STATEMENT_CLASS TLSC_IfClass;
extern const TLS_STATEMENT_CLASS TLSC_RaiseClass;
extern const TLS_STATEMENT_CLASS TLSC_EndExceptionClass;

/* Entries of the classes. */
void TLSC_IfCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSC_RaiseCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSC_IfJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSC_RaiseJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLSC_EndExceptionJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);

/** @param record a statement record or null @return it as IF, ELSEIF or WHEN; null if it is none */
TLSC_IF *TLSC_AsIf(TLS_STATEMENT *record);

/**
 * The next one of a chain.
 * @param record IF, ELSEIF or WHEN
 * @return the IF, ELSEIF or WHEN that its else block consists of, and nothing else; or null
 */
TLSC_IF *TLSC_ChainNext(const TLSC_IF *record);
