/*
 * Storage. Every block comes back zero-filled, and an allocation either succeeds or ends the process.
 */
#ifndef OSTRUM_SH_H
#define OSTRUM_SH_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Does nothing; storage works from the start. */
OSTRUM_API void SH_Initialise(void);

/**
 * Allocates a zero-filled block: the request rounded up to 4 bytes plus one word of 4 bytes. Ends the
 * process with status 1 and one line on standard error when storage is exhausted.
 *
 * @param size  bytes wanted, 0 or more; a size below 0 counts as exhausted storage
 * @return      the block, never null; the caller releases it with SH_Free
 */
OSTRUM_API void *SH_Allocate(int32_t size);

/**
 * The same as SH_Allocate, with a note of what the block is for.
 *
 * @param size  bytes wanted, 0 or more
 * @param tag   MODULE:THING; a note at the call, never read
 * @return      the block, never null; the caller releases it with SH_Free
 */
OSTRUM_API void *SH_NameAllocate(int32_t size, const char *tag);

/**
 * The same as SH_NameAllocate.
 *
 * @param size  bytes wanted, 0 or more
 * @param tag   MODULE:THING; a note at the call, never read
 * @return      the block, never null; the caller releases it with SH_Free
 */
OSTRUM_API void *SH_WildAllocate(int32_t size, const char *tag);

/**
 * Releases a block.
 *
 * @param block  from one of the allocating operations; null does nothing
 */
OSTRUM_API void SH_Free(void *block);

OSTRUM_END

#endif
