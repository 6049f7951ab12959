/*
 * Statements as Java text: what the kinds of statement share.
 *
 * javac refuses a statement that control cannot reach, and a function that may end without its
 * result. Each writer leaves in the stream's notes whether control goes on behind its statement.
 */
#pragma once

#include "codegen/tlc.h"
#include "codegen/tlcj.h"
#include "expr/tle_java.h"
#include "stmt/tls.h"

/** Whether control can reach what is written next. */
inline bool TLS_IsOpen(TLC_STREAM *stream)
{
    return TLCJ_State(stream)->is_open;
}

/** Notes whether control can reach what is written next. */
inline void TLS_SetOpen(TLC_STREAM *stream, bool is_open)
{
    TLCJ_State(stream)->is_open = is_open;
}

/** Whether a statement is to be written: control reaches it, and its expression is sound. */
bool TLS_IsWritten(TLC_STREAM *stream, const TLS_STATEMENT *record, const TLE_TERM *expression);

/** Writes blanks up to a column. */
void TLS_WriteJavaIndent(TLC_STREAM *stream, int32_t indent);

/** Writes an expression as a statement of its own. */
void TLS_WriteJavaExpression(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *expression);

/** Writes a return from the function; expression is its value or null. */
void TLS_WriteJavaReturn(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *expression);

/** Writes the end of the function's run in a column: a return, or a stop where a result is missing. */
void TLS_WriteJavaEnd(TLC_STREAM *stream, const TLS_BLOCK *block, int32_t indent);

/** A number for a name of the function's own. */
int32_t TLS_NewJavaName(TLC_STREAM *stream);

/* Entries of the classes of simple statements. */
void TLS_FunctionJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLS_EndJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLS_ExpressionJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
void TLS_ReturnJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record);
