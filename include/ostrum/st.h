/*
 * Strings: zero-terminated bytes. Capacities are in bytes, the terminator counts; a capacity below 1
 * writes nothing and gives null. Truncation is silent.
 */
#ifndef OSTRUM_ST_H
#define OSTRUM_ST_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Sets up the character locale (C_Initialise), the first time that it is called. */
OSTRUM_API void ST_Initialise(void);

/**
 * Copies a string, cut to the capacity.
 *
 * @param dest  buffer of size bytes
 * @param size  capacity of dest in bytes
 * @param src   text to copy
 * @return      dest; null if size is below 1
 */
OSTRUM_API char *ST_Copy(char *dest, int32_t size, const char *src);

/**
 * Appends a string to the one in dest, cut to the capacity.
 *
 * @param dest  buffer of size bytes that holds a string
 * @param size  capacity of dest in bytes
 * @param src   text to append
 * @return      dest; null if size is below 1
 */
OSTRUM_API char *ST_Append(char *dest, int32_t size, const char *src);

/**
 * Joins strings into dest, cut to the capacity.
 *
 * @param dest  buffer of size bytes
 * @param size  capacity of dest in bytes
 * @param ...   source strings, const char *, closed by a null pointer
 * @return      dest; null if size is below 1
 */
OSTRUM_API char *ST_Concat(char *dest, int32_t size, ...);

/**
 * Copies a string in lower case of the character locale, cut to the capacity.
 *
 * @param dest  buffer of size bytes; may be src
 * @param size  capacity of dest in bytes
 * @param src   text to copy
 * @return      dest; null if size is below 1
 */
OSTRUM_API char *ST_Lower(char *dest, int32_t size, const char *src);

/**
 * Copies a string in upper case of the character locale, cut to the capacity.
 *
 * @param dest  buffer of size bytes; may be src
 * @param size  capacity of dest in bytes
 * @param src   text to copy
 * @return      dest; null if size is below 1
 */
OSTRUM_API char *ST_Upper(char *dest, int32_t size, const char *src);

/**
 * Copies a string into new storage.
 *
 * @param src  text to copy
 * @return     the copy; the caller releases it with ST_Free
 */
OSTRUM_API char *ST_Allocate(const char *src);

/**
 * Releases a string.
 *
 * @param text  from ST_Allocate or IST_GetString; null does nothing
 */
OSTRUM_API void ST_Free(char *text);

/**
 * Finds the first occurrence of a string, case-sensitive.
 *
 * @param text    where to look
 * @param wanted  what to look for
 * @return        its place in text; the terminator of text if wanted is empty; null if not there
 */
OSTRUM_API const char *ST_FindString(const char *text, const char *wanted);

/**
 * Tells whether a text begins with a prefix, ignoring case.
 *
 * @param text    the text
 * @param prefix  the prefix; an empty one fits every text
 * @return        1 or 0
 */
OSTRUM_API int32_t ST_StartsCI(const char *text, const char *prefix);

/**
 * Compares two strings as unsigned bytes in upper case.
 *
 * @param a  a string
 * @param b  a string
 * @return   -1, 0 or 1 as a is below, equal to or above b
 */
OSTRUM_API int32_t ST_CompareCI(const char *a, const char *b);

/**
 * Finds a key in a list, ignoring case.
 *
 * @param key   the key
 * @param list  strings closed by a null pointer
 * @return      index of the first entry that equals key; -1 if there is none
 */
OSTRUM_API int32_t ST_ListSearchCI(const char *key, const char *const *list);

/**
 * Matches a whole text against a pattern of `*`, `+` element, `?`, `[...]`, `[~...]` and `\` character.
 * An unclosed class runs to the end of the pattern; a trailing backslash stands for itself.
 *
 * @param pattern  the pattern
 * @param text     the text
 * @return         1 if the pattern matches, else 0
 */
OSTRUM_API int32_t ST_Match(const char *pattern, const char *text);

/**
 * The same as ST_Match, ignoring case.
 *
 * @param pattern  the pattern
 * @param text     the text
 * @return         1 if the pattern matches, else 0
 */
OSTRUM_API int32_t ST_MatchCI(const char *pattern, const char *text);

/**
 * Writes a number as text.
 *
 * @param buffer  at least 16 bytes
 * @param value   the number; formats 1 and 2 take it as unsigned
 * @param format  0 decimal, 1 octal, 2 hexadecimal
 * @return        buffer; null for another format
 */
OSTRUM_API char *ST_IntChar(char *buffer, int32_t value, int32_t format);

/**
 * Reads a number. It wraps at 32 bits without a report.
 *
 * @param text    the text
 * @param result  out: the number, 0 if there was no digit; left alone if the format is unknown
 * @param format  0 decimal, 1 octal, 2 hexadecimal, 3 chosen by the text's prefix
 * @return        the first character not consumed; null without a digit or with an unknown format
 */
OSTRUM_API const char *ST_CharInt(const char *text, int32_t *result, int32_t format);

/**
 * Reads a decimal number with an optional fraction of up to 9 digits, without exponent.
 *
 * @param text    the text
 * @param result  out: the number; left alone unless there was one
 * @return        the first character not consumed; null if the text is no number
 */
OSTRUM_API const char *ST_CharFloat(const char *text, double *result);

/**
 * Writes a string in quotes with its special characters escaped.
 *
 * @param stream  open for writing
 * @param text    the string
 */
OSTRUM_API void ST_PutString(FILE *stream, const char *text);

/**
 * Reads a string that ST_PutString wrote.
 *
 * @param stream  open for reading
 * @param buffer  size bytes; terminated in every case
 * @param size    capacity of buffer in bytes
 * @return        1; 0 if no quote came first, or the string did not fit or size is below 1
 */
OSTRUM_API int32_t ST_GetString(FILE *stream, char *buffer, int32_t size);

OSTRUM_END

#endif
