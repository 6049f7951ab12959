/*
 * WAVEFORM sections: lists of samples of one byte.
 */
#ifndef OSTRUM_TLDW_H
#define OSTRUM_TLDW_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Declares the block class of WAVEFORM sections; may be called any number of times. */
OSTRUM_API void TLDW_Initialise(void);

OSTRUM_END

#endif
