#pragma once

#include <ostrum/st.h>

/**
 * Copies characters that need no terminator, cut to the capacity, and terminates the copy.
 *
 * @param dest    buffer of size bytes
 * @param size    capacity of dest in bytes
 * @param src     the characters
 * @param length  how many; they are copied whatever they are
 * @return        dest; null if size is below 1
 */
char *ST_CopySpan(char *dest, int32_t size, const char *src, size_t length);

/**
 * Copies characters that need no terminator into new storage and terminates the copy.
 *
 * @param src     the characters
 * @param length  how many
 * @return        the copy; the caller releases it with ST_Free
 */
char *ST_AllocateSpan(const char *src, size_t length);
