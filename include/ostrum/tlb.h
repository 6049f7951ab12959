/*
 * Built-in functions: they look like calls, and each has its own check, folding and code.
 */
#ifndef OSTRUM_TLB_H
#define OSTRUM_TLB_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Enters the built-in functions in the language domain, once in a process. */
OSTRUM_API void TLB_Initialise(void);

/**
 * Checks the arguments of a built-in function.
 *
 * @param term  a term that names a built-in function, with its arguments
 * @return      the type of the result; null after an error on the statement
 */
OSTRUM_API TLI_IDENTIFIER *TLB_CheckArguments(TLP_MODULE *module, TLT_STATEMENT *statement,
                                              TLE_TERM *term);

/** A new term in place of the built-in function, which stays the caller's; null if it stays. */
OSTRUM_API TLE_TERM *TLB_Simplify(TLP_MODULE *module, TLE_TERM *term);

/** Generates the built-in function for the stream's target. 1; 0 if it could not be generated. */
OSTRUM_API int32_t TLB_GenerateCode(TLC_STREAM *stream, TLE_TERM *term);

OSTRUM_END

#endif
