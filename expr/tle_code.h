/*
 * Code for terms: what the generators of expressions share with one another.
 */
#pragma once

#include "expr/tle.h"

/* What TLE_ExpressionCode is asked to leave on the stack. */
enum {
    TLE_MODE_VALUE = 0,
    TLE_MODE_ADDRESS = 1,
    TLE_MODE_EXTENT = 2 /* the address and, above it, the number of elements from there on */
};

/* Buffer of TLC_CName. */
enum { TLE_C_NAME_CAPACITY = 32 };

/**
 * Writes code or text for a term, and reports a term that has none.
 * @param stream where to
 * @param term the term; null is reported
 * @param mode TLE_MODE_...
 * @return 1, or 0 after a report
 */
int32_t TLE_TermCode(TLC_STREAM *stream, TLE_TERM *term, int32_t mode);

/* Operators that hang to the left of one another: terms[0] is the outermost. */
struct TLE_CHAIN {
    TLE_TERM **terms; /* short_terms, or storage of the chain's own */
    int32_t count;    /* 1 or more */
    TLE_TERM *short_terms[8];
};

/**
 * The operator that a chain goes on to at the left of a term.
 * @param term operator term
 * @return its left operand if that is on the chain, else null
 */
TLE_TERM *TLE_ChainOperand(const TLE_TERM *term);

/** Collects the chain that an operator term heads; TLE_CloseChain gives back what it holds. */
void TLE_OpenChain(TLE_CHAIN *chain, TLE_TERM *term);

/** Gives back what a chain holds; the terms stay. */
void TLE_CloseChain(TLE_CHAIN *chain);

/**
 * Writes an operator term as C or Java text, with the brackets that the target needs.
 * @param stream C or Java stream
 * @param term operator term
 * @param mode TLE_MODE_...; in C the address of a field is written with its sign
 * @return 1, or 0 if an operand could not be written
 */
int32_t TLE_OperatorText(TLC_STREAM *stream, TLE_TERM *term, int32_t mode);

/**
 * Writes a term other than an operator as C or Java text.
 * @param stream C or Java stream
 * @param term the term
 * @param mode TLE_MODE_...
 * @return 1, or 0 if the term has no text in this mode
 */
int32_t TLE_OperandText(TLC_STREAM *stream, TLE_TERM *term, int32_t mode);

/**
 * Tells whether a number is written as digits behind a minus sign.
 * @param term any term
 */
bool TLE_IsNegativeLiteral(const TLE_TERM *term);

/** Writes the name under which a data literal is known to a C or Java text. */
void TLE_DataLiteralText(TLC_STREAM *stream, TLE_TERM *term);

/**
 * Writes a call: its opening, the arguments, and the call itself.
 * @param stream where to
 * @param term term of kind TLE_CALL or TLE_INDIRECT_CALL
 * @param direct 1 for a call by name, 0 for one through a value
 * @return 1, or 0 if an argument or the call failed
 */
int32_t TLE_CallCode(TLC_STREAM *stream, TLE_TERM *term, int32_t direct);

/**
 * Reports a fault of generation, and dumps the term with its place in the source.
 * @param stream where the report goes: a message on P-code, a comment on text
 * @param term the term or null
 * @param message what failed
 */
void TLE_CodeError(TLC_STREAM *stream, TLE_TERM *term, const char *message);
