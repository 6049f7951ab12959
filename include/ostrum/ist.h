/*
 * Growing strings.
 */
#ifndef OSTRUM_IST_H
#define OSTRUM_IST_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Makes an empty growing string.
 *
 * @return  the string; the caller gives it back through IST_GetString
 */
OSTRUM_API IST_STRING *IST_NewString(void);

/**
 * Appends a text.
 *
 * @param string  the growing string
 * @param text    the text, copied
 */
OSTRUM_API void IST_Append(IST_STRING *string, const char *text);

/**
 * Appends one character.
 *
 * @param string     the growing string
 * @param character  the character
 */
OSTRUM_API void IST_AppendChar(IST_STRING *string, char character);

/**
 * Gives the length of the text so far.
 *
 * @param string  the growing string
 * @return        characters, without the terminator
 */
OSTRUM_API int32_t IST_Length(IST_STRING *string);

/**
 * Ends a growing string and gives its text.
 *
 * @param string  the growing string; released
 * @return        the text; the caller releases it with ST_Free
 */
OSTRUM_API char *IST_GetString(IST_STRING *string);

OSTRUM_END

#endif
