/*
 * Loops: WHILE tests at the top; FOR counts a variable up to a limit, and evaluates the limit and
 * the step once, before the first turn.
 */
#ifndef OSTRUM_TLSL_H
#define OSTRUM_TLSL_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Parses WHILE and opens its body. Reports "Type mismatch - Expression should return BOOL".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSL_WhileStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses FOR with FROM, TO and BY in any order, and opens its body, which is kept after an error
 * too. Reports "First parameter of FOR must be a variable", "FROM already seen", "TO already
 * seen", "BY already seen", "BY not allowed with ENUM values", "BY value must be positive",
 * "Illegal in a FOR statement", "FROM missing in FOR statement", "TO missing in FOR statement" and
 * "All arguments of FOR must have the same type".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSL_ForStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/** Has nothing to ready; may be called any number of times. */
OSTRUM_API void TLSL_Initialise(void);

OSTRUM_END

#endif
