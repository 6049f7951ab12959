/*
 * COMPONENT sections: parts of a vehicle, their place among one another, and where variables lie on
 * them.
 */
#ifndef OSTRUM_TLDM_H
#define OSTRUM_TLDM_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Declares the block class of COMPONENT sections; may be called any number of times. */
OSTRUM_API void TLDM_Initialise(void);

OSTRUM_END

#endif
