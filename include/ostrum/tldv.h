/*
 * CONVERTER sections: how the run-time system turns a raw reading into a quantity.
 */
#ifndef OSTRUM_TLDV_H
#define OSTRUM_TLDV_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Declares the block class of CONVERTER sections; may be called any number of times. */
OSTRUM_API void TLDV_Initialise(void);

OSTRUM_END

#endif
