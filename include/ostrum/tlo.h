/*
 * The operators of the language.
 */
#ifndef OSTRUM_TLO_H
#define OSTRUM_TLO_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Declares the operators, once in a process; later calls do nothing. */
OSTRUM_API void TLO_Initialise(void);

OSTRUM_END

#endif
