/*
 * Operations that tools need beyond those of the families: what a compilation reads.
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

OSTRUM_END

#endif
