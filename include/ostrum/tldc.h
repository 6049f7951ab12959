/*
 * CONNECTOR sections: connectors of a vehicle or of a test cable, their views, their pins with the
 * points on them, and where variables lie on them.
 */
#ifndef OSTRUM_TLDC_H
#define OSTRUM_TLDC_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Declares the block class of CONNECTOR sections; may be called any number of times. */
OSTRUM_API void TLDC_Initialise(void);

OSTRUM_END

#endif
