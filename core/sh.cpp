/*
 * Storage: the one place where the library takes and gives back blocks, and the one place where it
 * runs out of them.
 *
 * The compiler makes millions of records of a few dozen bytes, so that small blocks have nothing
 * around them: they stand in pages of blocks of one size, and the head of the page tells the size.
 * Middle blocks are cut from the same regions with a word before each, large ones are mapped alone.
 * Once freed, blocks are kept in lists by size, so that taking and giving back are a few
 * instructions. Small blocks lie on multiples of 16 and all others on odd multiples of 8, which is
 * how they are told apart. Under a sanitizer every block comes from the C library, so that it sees
 * each by itself.
 */
#include "core/sh.h"

#include "host/host.h"

#include <algorithm>
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

static constexpr size_t grain = 16;               // small blocks are multiples of it
static constexpr size_t largest_small = 512;      // bytes; up to here a list for each multiple
static constexpr size_t largest_middle = 1 << 20; // with its header; four lists for each doubling
static constexpr size_t small_count = largest_small / grain + 1;
static constexpr size_t list_count = small_count + 4 * 11;
static constexpr size_t first_region_size = 1 << 16;
static constexpr size_t second_region_size = 1 << 21; // a process that needs it will need more
static constexpr size_t largest_region_size = 1 << 23;
static constexpr size_t page = 4096; // what regions and blocks mapped alone are rounded up to

/** The word before a block that is not small. */
struct HEADER {
    uint64_t list; // number of its list; 0 for a block of the C library; else bytes mapped for it
};

/** Start of a page of small blocks; a cache line, so that blocks of that size are one each. */
struct alignas(64) PAGE_HEAD {
    uint64_t list; // of its blocks
};

struct FREE_BLOCK {
    FREE_BLOCK *next;
};

/** What is left of the newest page of a list, all zero. */
struct PAGE_REST {
    char *next;
    char *end;
};

static FREE_BLOCK *free_blocks[list_count];
static PAGE_REST rests[small_count];
static char *region_next; // what is left of the newest region, all zero: middle blocks from below,
static char *region_end;  // pages from above
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

// --- regions ---

/** Takes a new region; what was left of the one before is given up. */
static void open_region()
{
    region_next = static_cast<char *>(HOST_MapStorage(region_size));
    if (region_next == nullptr) end_exhausted();
    region_end = region_next + region_size;
    if (region_size < second_region_size)
        region_size = second_region_size;
    else if (region_size < largest_region_size)
        region_size *= 2;
}

static void need_region(size_t bytes)
{
    while (bytes > static_cast<size_t>(region_end - region_next))
        open_region();
}

static void *take_free(size_t list, size_t bytes)
{
    FREE_BLOCK *block = free_blocks[list];
    free_blocks[list] = block->next;
    return std::memset(static_cast<void *>(block), 0, bytes);
}

static void put_free(size_t list, void *block)
{
    auto *freed = static_cast<FREE_BLOCK *>(block);
    freed->next = free_blocks[list];
    free_blocks[list] = freed;
}

// --- small blocks ---

static void open_page(size_t list)
{
    need_region(page);
    region_end -= page;
    auto *head = reinterpret_cast<PAGE_HEAD *>(region_end);
    head->list = list;
    rests[list] = { .next = region_end + sizeof(PAGE_HEAD), .end = region_end + page };
}

static void *cut_from_page(size_t list)
{
    PAGE_REST *rest = &rests[list];
    const size_t bytes = list * grain;
    if (static_cast<size_t>(rest->end - rest->next) < bytes) open_page(list);
    char *block = rest->next;
    rest->next += bytes;
    return block;
}

static void *allocate_small(size_t bytes)
{
    const size_t list = (bytes + grain - 1) / grain;
    if (free_blocks[list] == nullptr) return cut_from_page(list);
    return take_free(list, list * grain);
}

static bool is_small(const void *block)
{
    return reinterpret_cast<uintptr_t>(block) % grain == 0;
}

static void free_small(void *block)
{
    const uintptr_t offset = reinterpret_cast<uintptr_t>(block) % page;
    const auto *head = reinterpret_cast<const PAGE_HEAD *>(static_cast<char *>(block) - offset);
    put_free(head->list, block);
}

// --- middle blocks ---

struct MIDDLE {
    size_t list;
    size_t size; // bytes of the list's blocks with their header
};

/** The list whose blocks take so many bytes with their header: above largest_small. */
static MIDDLE middle_for(size_t bytes)
{
    const size_t width = std::max<size_t>(std::bit_width(bytes - 1), 10); // 10 to 20
    const size_t quarter = (bytes - 1) >> (width - 3);                    // 4 to 7
    return { small_count + (width - 10) * 4 + (quarter - 4), (quarter + 1) << (width - 3) };
}

static void *allocate_middle(size_t bytes)
{
    const auto [list, size] = middle_for(bytes);
    if (free_blocks[list] != nullptr) return take_free(list, size - sizeof(HEADER));
    need_region(size);
    auto *header = reinterpret_cast<HEADER *>(region_next);
    region_next += size;
    header->list = list;
    return header + 1;
}

// --- blocks mapped alone ---

static void *allocate_mapped(size_t bytes)
{
    const size_t size = (bytes + page - 1) / page * page;
    auto *header = static_cast<HEADER *>(HOST_MapStorage(size));
    if (header == nullptr) end_exhausted();
    header->list = size;
    return header + 1;
}

static void *allocate(size_t bytes)
{
    if (!has_lists) return allocate_alone(bytes);
    if (bytes <= largest_small) return allocate_small(bytes);
    const size_t with_header = bytes + sizeof(HEADER);
    return with_header <= largest_middle ? allocate_middle(with_header)
                                         : allocate_mapped(with_header);
}

// --- operations ---

void SH_Initialise() {}

void *SH_AllocateBytes(size_t size)
{
    if (size > SIZE_MAX / 2) end_exhausted();
    return allocate(block_size(size));
}

void *SH_AllocateRecord(size_t size, const char *)
{
    if (size > SIZE_MAX / 2) end_exhausted();
    return allocate(size);
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

static void free_with_header(void *block)
{
    HEADER *header = header_of(block);
    if (header->list == 0)
        std::free(header);
    else if (header->list >= list_count)
        HOST_UnmapStorage(header, header->list);
    else
        put_free(header->list, block);
}

void SH_Free(void *block)
{
    if (block == nullptr) return;
    if (has_lists && is_small(block))
        free_small(block);
    else
        free_with_header(block);
}
