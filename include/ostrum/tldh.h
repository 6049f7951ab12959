/*
 * HELPSCREEN sections: screenfuls of text and pictures for the operator.
 */
#ifndef OSTRUM_TLDH_H
#define OSTRUM_TLDH_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Declares the block class of HELPSCREEN sections; may be called any number of times. */
OSTRUM_API void TLDH_Initialise(void);

OSTRUM_END

#endif
