/*
 * Conditionals and exceptions: IF, ELSEIF and ELSE choose between blocks; WHEN names an exception,
 * its first block is the handler and its ELSE block what the handler protects; RAISE throws, and
 * END_EXCEPTION ends a handler early.
 */
#ifndef OSTRUM_TLSC_H
#define OSTRUM_TLSC_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Parses IF, WHEN, or the condition of an ELSEIF, and opens the block behind it. Reports "Type
 * mismatch - Expression should return %s".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSC_IfStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses ELSEIF behind an IF, WHEN or ELSEIF of its column. Reports "Unmatched ELSEIF statement"
 * and "Multiple ELSEIF statements".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSC_ElseifStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses ELSE behind an IF, WHEN or ELSEIF of its column, and opens its block. Reports "Unmatched
 * ELSE statement" and "Multiple ELSE statements".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSC_ElseStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses RAISE with a value and, behind a comma, an argument, both INT.
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSC_RaiseStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Parses END_EXCEPTION. Reports "END_EXCEPTION can only be used in an exception handler block".
 * @param root root block
 * @param statement the statement, nothing of it consumed
 */
OSTRUM_API void TLSC_EndExceptionStatement(TLS_BLOCK *root, TLT_STATEMENT *statement);

/**
 * Tells whether the current block lies in the handler of the nearest WHEN around it.
 * @param root root block
 * @return 1 in a handler; 0 in protected code, and where no WHEN is around
 */
OSTRUM_API int32_t TLSC_InAWhenBlock(TLS_BLOCK *root);

/** Has nothing to ready; may be called any number of times. */
OSTRUM_API void TLSC_Initialise(void);

OSTRUM_END

#endif
