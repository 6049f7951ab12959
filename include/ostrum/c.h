/*
 * Character classes.
 */
#ifndef OSTRUM_C_H
#define OSTRUM_C_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Sets the character locale from the user's settings, the first time that it is called. */
OSTRUM_API void C_Initialise(void);

/**
 * Tells whether a byte is something else than white space: space, tab, line feed, form feed or
 * carriage return. Vertical tab is not white.
 *
 * @param c  the byte
 * @return   0 if it is white, else 1
 */
OSTRUM_API int32_t C_NotWhite(uint8_t c);

OSTRUM_END

#endif
