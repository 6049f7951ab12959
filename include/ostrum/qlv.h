/*
 * Version records of the tools in the settings.
 */
#ifndef OSTRUM_QLV_H
#define OSTRUM_QLV_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Stores the running program's internal name, file version, product version and legal notice under its
 * version key in the user's settings. A program without version information stores nothing.
 */
OSTRUM_API void QLV_GetVersionInfo(void);

/**
 * Gives the stored file version of the running program, followed by '/' and the library's version if
 * the two differ.
 *
 * @return  the text in a static buffer of 20 bytes, valid until the next call
 */
OSTRUM_API const char *QLV_GetFileVersion(void);

OSTRUM_END

#endif
