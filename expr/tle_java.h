/*
 * Java text of expressions: what the statements and declarations need of it.
 */
#pragma once

#include "expr/tle_code.h"

/** Writes an operator term as Java text; the modes are those of TLE_TermCode. 1, or 0 if it has none. */
int32_t TLE_JavaOperator(TLC_STREAM *stream, TLE_TERM *term, int32_t mode);

/** Writes any other term likewise. */
int32_t TLE_JavaOperand(TLC_STREAM *stream, TLE_TERM *term, int32_t mode);

/** Writes a call. */
int32_t TLE_JavaCall(TLC_STREAM *stream, TLE_TERM *term, int32_t direct);

/** Writes an expression as something that Java takes for true or false. */
int32_t TLE_JavaCondition(TLC_STREAM *stream, TLE_TERM *term);

/** Writes an expression as a statement of its own, without the semicolon. */
int32_t TLE_JavaStatement(TLC_STREAM *stream, TLE_TERM *term);

/**
 * Writes a value as it goes into an item of a type: in its Java type, and cut to its size.
 * @param stream Java stream
 * @param wanted the type of the item; null takes the value as it is
 * @param term the value
 * @return 1, or 0 if it could not be written
 */
int32_t TLE_JavaValueAs(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term);

/** The same behind "=", where Java itself takes a literal for a value of a narrow type. */
int32_t TLE_JavaAssigned(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term);

/** Writes the value that a function with this result gives: not cut. */
int32_t TLE_JavaResult(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term);

/**
 * Writes the store of a word that has a name of its own.
 * @param stream Java stream
 * @param place where to
 * @param name the word
 */
void TLE_JavaStoreName(TLC_STREAM *stream, TLE_TERM *place, const char *name);

/** Tells whether an item is a variable of the function being written, which no other can change. */
bool TLE_IsOwnVariable(TLC_STREAM *stream, TLI_IDENTIFIER *identifier);

/** Tells whether a place is a variable by itself, which Java's own operators can change. */
bool TLE_IsJavaVariable(const TLE_TERM *place);

/** Tells whether the text of a term asks a Vector or Items for its value. */
bool TLE_IsJavaItem(TLC_STREAM *stream, TLE_TERM *term);

/** Writes what finds the item that a data literal names. */
void TLE_JavaDataLiteral(TLC_STREAM *stream, TLE_TERM *term);

/** The text of an operator in Java. */
const char *TLE_JavaOperatorText(const TLE_TERM *term);

/** Tells whether working a term out calls or changes anything. */
bool TLE_HasEffects(const TLE_TERM *term);

/** Tells whether javac may take the text of a condition for a constant. */
bool TLE_IsJavaConstant(const TLE_TERM *term);
