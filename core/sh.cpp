/*
 * Storage: the one place where the library takes and gives back blocks, and the one place where it
 * runs out of them.
 */
#include "core/sh.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

// From here on the allocator's own zero pages are cheaper than clearing a block that was used before.
static constexpr size_t large_block = 65536;

[[noreturn]] static void end_exhausted()
{
    std::fputs("Storage exhausted\n", stderr);
    std::_Exit(1); // the exit list would need storage of its own
}

/** Bytes that a block for a request has: rounded up to words, and one word more. */
static size_t block_size(size_t size)
{
    return (size + 3) / 4 * 4 + 4;
}

void SH_Initialise() {}

void *SH_AllocateBytes(size_t size)
{
    if (size > SIZE_MAX / 2) end_exhausted();
    const size_t bytes = block_size(size);
    if (bytes >= large_block) {
        void *block = std::calloc(1, bytes);
        if (block == nullptr) end_exhausted();
        return block;
    }
    // calloc passes by the allocator's quickest lists
    void *block = std::malloc(bytes);
    if (block == nullptr) end_exhausted();
    return std::memset(block, 0, bytes);
}

void *SH_Grow(void *block, size_t used, size_t *capacity, size_t needed)
{
    if (block != nullptr && needed <= *capacity) return block;
    if (needed > SIZE_MAX / 4 || *capacity > SIZE_MAX / 4) end_exhausted();
    const size_t doubled = *capacity * 2;
    const size_t wanted = doubled > needed ? doubled : needed;
    char *grown = static_cast<char *>(std::realloc(block, block_size(wanted)));
    if (grown == nullptr) end_exhausted();
    std::memset(grown + used, 0, block_size(wanted) - used);
    *capacity = wanted;
    return grown;
}

void *SH_Allocate(int32_t size)
{
    if (size < 0) end_exhausted();
    return SH_AllocateBytes(static_cast<size_t>(size));
}

void *SH_NameAllocate(int32_t size, const char *)
{
    return SH_Allocate(size);
}

void *SH_WildAllocate(int32_t size, const char *tag)
{
    return SH_NameAllocate(size, tag);
}

void SH_Free(void *block)
{
    std::free(block);
}
