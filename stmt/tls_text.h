/*
 * Statements as C and Java text: what the kinds of statement share.
 */
#pragma once

#include "expr/tle_c.h"
#include "stmt/tls.h"

/** Writes blanks up to the column of a block's statements. */
void TLS_WriteIndent(TLC_STREAM *stream, const TLS_BLOCK *block);

/** Writes a condition that stands between the brackets of a statement. */
void TLS_WriteCondition(TLC_STREAM *stream, TLE_TERM *condition);

/** Writes an expression as a statement of its own. */
void TLS_WriteExpression(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *expression);

/** Writes a return from the function; expression is its value or null. */
void TLS_WriteReturn(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *expression);

/* Entries of the classes of simple statements. */
void TLS_FunctionCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLS_EndCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLS_ExpressionText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLS_ReturnText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
