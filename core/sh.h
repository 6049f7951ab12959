#pragma once

#include <ostrum/sh.h>

/**
 * Allocates like SH_Allocate, for sizes that were computed and may leave 32 bits.
 *
 * @param size  bytes wanted; a size that no block can have ends the process
 * @return      a zero-filled block, never null; the caller releases it with SH_Free
 */
void *SH_AllocateBytes(size_t size);

/**
 * Allocates like SH_AllocateBytes, but without the word behind the request: for records, and texts
 * whose terminator is part of the request.
 *
 * @param size  bytes wanted, above 0; a size that no block can have ends the process
 * @param tag   MODULE:THING; a note at the call, never read
 * @return      a zero-filled block, never null; the caller releases it with SH_Free
 */
void *SH_AllocateRecord(size_t size, const char *tag);

/**
 * Enlarges a block to at least twice what it has, keeps its bytes and zero-fills the rest. For
 * buffers that grow by doubling.
 *
 * @param block      the block, released by this; may be null
 * @param used       bytes of it to keep
 * @param capacity   in and out: its capacity in bytes
 * @param needed     bytes that must fit
 * @return           the new block; the old one if needed bytes fit already
 */
void *SH_Grow(void *block, size_t used, size_t *capacity, size_t needed);
