/*
 * The running program: its path, the version block that it was built with, and the message box.
 *
 * The version block is a note in the program's image: the owner "Ostrum", type 1, and as its
 * content pairs of zero-terminated strings, a name and its text. OSTRUM_VERSION_BLOCK writes it.
 */
#include "host/host.h"

#include "core/sh.h"

#include <bit>
#include <cstring>
#include <elf.h>
#include <link.h>
#include <unistd.h>

static constexpr uint32_t version_note_type = 1;
static constexpr char note_owner[] = "Ostrum";
static constexpr size_t largest_path = 1 << 16; // bytes; the host's own limit is lower

#ifndef OSTRUM_VERSION
#define OSTRUM_VERSION "0.0.0" // a build that does not tell its version
#endif

char *HOST_ProgramPath()
{
    for (size_t size = 256; size <= largest_path; size *= 2) {
        char *path = static_cast<char *>(SH_AllocateBytes(size + 1));
        const ssize_t length = readlink("/proc/self/exe", path, size);
        if (length >= 0 && static_cast<size_t>(length) < size) return path;
        SH_Free(path);
        if (length < 0) return nullptr;
    }
    return nullptr;
}

// --- version block ---

/** The part of the image that is left to read, or a string of it. */
struct BLOCK {
    const char *start;
    size_t size;
};

/** Cuts so many bytes off a block, rounded up to the 4 bytes that notes are aligned to. */
static BLOCK take_aligned(BLOCK *block, size_t size)
{
    const size_t available = size < block->size ? size : block->size;
    const size_t aligned = (available + 3) / 4 * 4;
    const size_t taken = aligned < block->size ? aligned : block->size;
    const BLOCK part = { .start = block->start, .size = available };
    block->start += taken;
    block->size -= taken;
    return part;
}

/** Cuts a zero-terminated string off a block; null if there is none. */
static const char *take_string(BLOCK *block)
{
    const char *string = block->start;
    const void *end = std::memchr(string, 0, block->size);
    if (end == nullptr) return nullptr;
    const size_t size = static_cast<size_t>(static_cast<const char *>(end) - string) + 1;
    block->start += size;
    block->size -= size;
    return string;
}

/** Finds the version block among the notes of a segment; a null start if it is not there. */
static BLOCK find_note(BLOCK segment)
{
    while (segment.size >= sizeof(ElfW(Nhdr))) {
        ElfW(Nhdr) note;
        std::memcpy(&note, take_aligned(&segment, sizeof note).start, sizeof note);
        const BLOCK owner = take_aligned(&segment, note.n_namesz);
        const BLOCK content = take_aligned(&segment, note.n_descsz);
        if (note.n_type != version_note_type || owner.size != sizeof note_owner) continue;
        if (std::memcmp(owner.start, note_owner, sizeof note_owner) == 0) return content;
    }
    return BLOCK{};
}

/** Looks through the first image of the process, which is the program. */
static int find_version_block(dl_phdr_info *image, size_t, void *result)
{
    auto *block = static_cast<BLOCK *>(result);
    for (size_t i = 0; i < image->dlpi_phnum && block->start == nullptr; i++) {
        const ElfW(Phdr) &segment = image->dlpi_phdr[i];
        if (segment.p_type != PT_NOTE) continue;
        *block = find_note(
            BLOCK{ .start = std::bit_cast<const char *>(image->dlpi_addr + segment.p_vaddr),
                   .size = segment.p_memsz });
    }
    return 1; // the other images are libraries
}

const char *HOST_ProgramVersion(const char *name)
{
    BLOCK block = {};
    dl_iterate_phdr(find_version_block, &block);
    while (block.size > 0) {
        const char *found = take_string(&block);
        const char *text = found == nullptr ? nullptr : take_string(&block);
        if (text == nullptr) return nullptr;
        if (std::strcmp(found, name) == 0) return text;
    }
    return nullptr;
}

const char *HOST_LibraryVersion()
{
    return OSTRUM_VERSION;
}

// --- message box ---

int32_t HOST_MessageBox(const char *caption, const char *text)
{
    return fprintf(stderr, "%s: %s\n", caption, text) < 0 ? 0 : 1;
}
