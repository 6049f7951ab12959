#pragma once

#include <ostrum/c.h>

/**
 * Tells whether a byte is white space; what C_NotWhite denies, for scanners' inner loops.
 *
 * @param c  the byte
 * @return   true for space, tab, line feed, form feed and carriage return
 */
inline bool C_IsWhite(uint8_t c)
{
    return c == ' ' || (c <= '\r' && c >= '\t' && c != '\v');
}
