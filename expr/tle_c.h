/*
 * C text of expressions: what the statements and the other parts of expressions need of it.
 */
#pragma once

#include "expr/tle_code.h"

/* Groups of operators that bind alike in C and in Java, the loosest first. */
enum {
    TLE_LEVEL_ASSIGNMENT,
    TLE_LEVEL_OR,
    TLE_LEVEL_AND,
    TLE_LEVEL_BIT_OR,
    TLE_LEVEL_BIT_XOR,
    TLE_LEVEL_BIT_AND,
    TLE_LEVEL_EQUALITY,
    TLE_LEVEL_RELATION,
    TLE_LEVEL_SHIFT,
    TLE_LEVEL_SUM,
    TLE_LEVEL_PRODUCT,
    TLE_LEVEL_SIGN,
    TLE_LEVEL_SELECTION,
    TLE_LEVEL_OPERAND
};

/** The group that a term's operator belongs to; TLE_LEVEL_OPERAND for other terms. */
int32_t TLE_TextLevel(const TLE_TERM *term);

/** The text of an operator in C. */
const char *TLE_COperator(const TLE_TERM *term);

/**
 * Tells whether an operand needs brackets, for its meaning or because a compiler would warn.
 * @param outer group of the operator
 * @param inner group of the operand
 * @param is_right the operand stands on the right
 */
bool TLE_NeedsBrackets(int32_t outer, int32_t inner, bool is_right);

/** Writes an operator term as C text; the modes are those of TLE_TermCode. 1, or 0 if it has none. */
int32_t TLE_COperatorText(TLC_STREAM *stream, TLE_TERM *term, int32_t mode);

/** Writes the C name of the item that a data literal names, and sees that it is declared. */
void TLE_CDataLiteral(TLC_STREAM *stream, TLE_TERM *term);

/**
 * Writes a value where a value of another type is wanted, with the conversion that C asks for.
 * @param stream C stream
 * @param wanted the type wanted; null takes the value as it is
 * @param term the value
 * @return 1, or 0 if it could not be written
 */
int32_t TLE_CValueAs(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term);

/** The same for a value that is stored in an item of the type, which may be too small for all of it. */
int32_t TLE_CStoredValue(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term);

/** Tells whether C would leave open in which order the arguments of a call are worked out. */
bool TLE_IsUnorderedCall(const TLC_STREAM *stream, const TLE_TERM *term);

/**
 * Writes "toll_n=" for a new temporary, behind which its value is to be written.
 * @param stream C stream
 * @param type type of the value; null for a word
 * @param is_pointer the value is the address of an item of that type
 * @return n
 */
int32_t TLE_OpenTemporary(TLC_STREAM *stream, TLI_IDENTIFIER *type, bool is_pointer);

/** Tells whether TLE_PrepareText has lines to write for an expression. */
bool TLE_NeedsPreparation(const TLC_STREAM *stream, const TLE_TERM *term);

/** Tells whether a pointer can be null, and is to be checked before it is followed. */
bool TLE_MayBeNull(const TLE_TERM *pointer);

/** Tells whether a place is a variable that no other function can change. */
bool TLE_IsOwnInC(const TLE_TERM *place);

/** Tells the loops being written that something is stored in a place, or may be by who gets its address. */
void TLE_NoteStoreInC(TLC_STREAM *stream, const TLE_TERM *place);

/** Tells whether a place is reached through anything but names. */
bool TLE_NeedsOrder(const TLE_TERM *place);

/**
 * Declares words for a statement's own use, on a line each.
 * @param stream C stream
 * @param indent column of the lines
 * @param count how many
 * @return number of the first; the others follow
 */
int32_t TLE_DeclareTemporaries(TLC_STREAM *stream, int32_t indent, int32_t count);

/**
 * Called by a statement before it writes its expressions: declares on lines of their own what they
 * need. Does nothing on other targets.
 * @param stream stream of any target
 * @param indent column of those lines
 * @param terms the expressions in the order in which they are written, each once; null ones are skipped
 * @param count how many
 */
void TLE_PrepareText(TLC_STREAM *stream, int32_t indent, TLE_TERM *const *terms, int32_t count);
