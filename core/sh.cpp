/*
 * Storage: the one place where the library takes and gives back blocks, and the one place where it
 * runs out of them.
 *
 * The compiler makes millions of records of a few dozen bytes. They are cut from regions and, once
 * freed, kept in lists by size, so that both take a few instructions. A word before each block
 * tells its list. Larger blocks come from the C library. Under a sanitizer every block does, so
 * that it sees each by itself.
 */
#include "core/sh.h"

#include "host/host.h"

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__)
static constexpr bool has_lists = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
static constexpr bool has_lists = false;
#else
static constexpr bool has_lists = true;
#endif
#else
static constexpr bool has_lists = true;
#endif

static constexpr size_t grain = 8;          // small sizes and all addresses are multiples of it
static constexpr size_t largest_fine = 512; // bytes; up to here a list for each multiple
static constexpr size_t largest_listed = 1 << 20; // from there on four lists for each doubling
static constexpr size_t fine_count = largest_fine / grain + 1;
static constexpr size_t list_count = fine_count + 4 * 11;
static constexpr size_t first_region_size = 1 << 16;
static constexpr size_t second_region_size = 1 << 21; // a process that needs it will need more
static constexpr size_t largest_region_size = 1 << 23;
static constexpr size_t page = 4096; // what a block mapped alone is rounded up to

/** The word before a block, and the block's link while it is free. */
struct HEADER {
    uint64_t list; // number of its list; 0 for a block of the C library; else bytes mapped for it
};

struct FREE_BLOCK {
    FREE_BLOCK *next;
};

static FREE_BLOCK *free_blocks[list_count];
static char *region_next; // what is left of the newest region, all zero
static size_t region_left;
static size_t region_size = first_region_size;

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

static HEADER *header_of(void *block)
{
    return static_cast<HEADER *>(block) - 1;
}

// --- blocks of the C library ---

static void *allocate_alone(size_t bytes)
{
    auto *header = static_cast<HEADER *>(std::calloc(1, bytes + sizeof(HEADER)));
    if (header == nullptr) end_exhausted();
    return header + 1;
}

// --- blocks of the lists ---

/** The list whose blocks hold so many bytes, 1 to largest_listed. */
static size_t list_of(size_t bytes)
{
    if (bytes <= largest_fine) return (bytes + grain - 1) / grain;
    const auto width = static_cast<size_t>(std::bit_width(bytes - 1)); // 10 to 20
    const size_t quarter = (bytes - 1) >> (width - 3);                 // 4 to 7
    return fine_count + (width - 10) * 4 + (quarter - 4);
}

/** Bytes of a list's blocks. */
static size_t size_of(size_t list)
{
    if (list < fine_count) return list * grain;
    const size_t width = (list - fine_count) / 4 + 10;
    const size_t quarter = (list - fine_count) % 4 + 4;
    return (quarter + 1) << (width - 3);
}

/** Takes a new region; what was left of the one before is given up. */
static void open_region()
{
    region_next = static_cast<char *>(HOST_MapStorage(region_size));
    if (region_next == nullptr) end_exhausted();
    region_left = region_size;
    if (region_size < second_region_size)
        region_size = second_region_size;
    else if (region_size < largest_region_size)
        region_size *= 2;
}

static void *cut_from_region(size_t list)
{
    const size_t bytes = size_of(list) + sizeof(HEADER);
    while (bytes > region_left)
        open_region();
    auto *header = reinterpret_cast<HEADER *>(region_next);
    region_next += bytes;
    region_left -= bytes;
    header->list = list;
    return header + 1;
}

static void *allocate_listed(size_t bytes)
{
    const size_t list = list_of(bytes);
    FREE_BLOCK *block = free_blocks[list];
    if (block == nullptr) return cut_from_region(list);
    free_blocks[list] = block->next;
    return std::memset(static_cast<void *>(block), 0, size_of(list));
}

// --- blocks mapped alone ---

static void *allocate_mapped(size_t bytes)
{
    const size_t size = (bytes + sizeof(HEADER) + page - 1) / page * page;
    auto *header = static_cast<HEADER *>(HOST_MapStorage(size));
    if (header == nullptr) end_exhausted();
    header->list = size;
    return header + 1;
}

static void *allocate(size_t bytes)
{
    if (!has_lists) return allocate_alone(bytes);
    return bytes <= largest_listed ? allocate_listed(bytes) : allocate_mapped(bytes);
}

// --- operations ---

void SH_Initialise() {}

void *SH_AllocateBytes(size_t size)
{
    if (size > SIZE_MAX / 2) end_exhausted();
    return allocate(block_size(size));
}

void *SH_Grow(void *block, size_t used, size_t *capacity, size_t needed)
{
    if (block != nullptr && needed <= *capacity) return block;
    if (needed > SIZE_MAX / 4 || *capacity > SIZE_MAX / 4) end_exhausted();
    const size_t doubled = *capacity * 2;
    const size_t wanted = doubled > needed ? doubled : needed;
    const size_t bytes = block_size(wanted);
    *capacity = wanted;
    void *grown = allocate(bytes);
    if (block != nullptr) std::memcpy(grown, block, used);
    SH_Free(block);
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
    if (block == nullptr) return;
    HEADER *header = header_of(block);
    const uint64_t list = header->list;
    if (list == 0) {
        std::free(header);
        return;
    }
    if (list >= list_count) {
        HOST_UnmapStorage(header, list);
        return;
    }
    auto *freed = static_cast<FREE_BLOCK *>(block);
    freed->next = free_blocks[list];
    free_blocks[list] = freed;
}
