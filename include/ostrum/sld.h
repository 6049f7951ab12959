/*
 * Symbols from environment variables alone.
 */
#ifndef OSTRUM_SLD_H
#define OSTRUM_SLD_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Called for each entry of a value.
 *
 * @param user   the word given to SLD_AllSymbols
 * @param entry  the entry, valid during the call; may be empty
 * @return       ignored
 */
typedef int32_t (*SLD_VISITOR)(void *user, const char *entry);

/** Does nothing. */
OSTRUM_API void SLD_Initialise(void);

/**
 * Copies the value of an environment variable, cut to the capacity.
 *
 * @param variable  its name
 * @param buffer    size bytes
 * @param size      capacity of buffer in bytes
 * @return          0; -2 if it is not set
 */
OSTRUM_API int32_t SLD_GetSymbol(const char *variable, char *buffer, int32_t size);

/**
 * Visits the entries of an environment variable's value, which stand between ';' or ','.
 *
 * @param variable  its name
 * @param visitor   called for each entry, empty ones too
 * @param user      handed to the visitor
 * @return          0; -1 if it is not set
 */
OSTRUM_API int32_t SLD_AllSymbols(const char *variable, SLD_VISITOR visitor, void *user);

OSTRUM_END

#endif
