/*
 * Storage in large pieces, straight from the system.
 */
#include "host/host.h"

#include <sys/mman.h>

// A page of this size costs one fault where small ones cost hundreds.
static constexpr size_t large_page = 1 << 21;

static char *map(size_t size)
{
    void *storage = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return storage == MAP_FAILED ? nullptr : static_cast<char *>(storage);
}

void *HOST_MapStorage(size_t size)
{
    if (size < large_page) return map(size);
    // A large page needs its own alignment: map one more and give back what lies around.
    char *storage = map(size + large_page);
    if (storage == nullptr) return nullptr;
    const size_t before =
        (large_page - reinterpret_cast<uintptr_t>(storage) % large_page) % large_page;
    if (before > 0) munmap(storage, before);
    if (before < large_page) munmap(storage + before + size, large_page - before);
    madvise(storage + before, size, MADV_HUGEPAGE);
    return storage + before;
}

void HOST_UnmapStorage(void *storage, size_t size)
{
    munmap(storage, size);
}
