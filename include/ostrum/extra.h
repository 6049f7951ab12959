/*
 * Operations that tools need beyond those of the families: what a compilation reads, and what its text
 * targets could not express.
 */
#ifndef OSTRUM_EXTRA_H
#define OSTRUM_EXTRA_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Called with each source file at the moment that it was opened.
 *
 * @param context    the word given to TLP_SetSourceHook
 * @param name       name of the file as messages show it
 * @param host_path  path by which the host knows it; valid during the call, as the name is
 */
typedef void (*TLP_SOURCE_HOOK)(void *context, const char *name, const char *host_path);

/**
 * Installs the hook that learns of each source file opened, for lists of dependencies.
 *
 * @param context  handed to the hook
 * @param hook     the hook; null for none
 */
OSTRUM_API void TLP_SetSourceHook(void *context, TLP_SOURCE_HOOK hook);

/**
 * Counts the faults that a stream wrote into C or Java text as comments, because the target cannot
 * express what the source says.
 *
 * @param stream  text stream; null asks for the text stream made last, whether or not it has been
 *                deleted since
 * @return        how many
 */
OSTRUM_API int32_t TLC_TextErrors(const TLC_STREAM *stream);

OSTRUM_END

#endif
