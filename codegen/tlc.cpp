/*
 * Code streams and their program sections: making, choosing and deleting them. A compilation makes a
 * section for nearly every statement, so that sections, fix-ups and code lie in arenas.
 */
#include "codegen/tlc.h"
#include "codegen/tlcj.h"

#include "core/sh.h"
#include <cstdio>
#include <cstring>
#include <ostrum/eep.h>
#include <ostrum/kob.h>
#include <ostrum/sm.h>
#include <ostrum/st.h>
#include <ostrum/tli.h>
#include <ostrum/tlt.h>

// Chunks of an arena double up to the largest size, all that storage keeps for them included.
static constexpr size_t first_chunk_size = 8 * 1024;
static constexpr size_t largest_chunk_size = 512 * 1024;

// Most sections hold the code of one statement and end below this.
static constexpr uint32_t first_capacity = 32;

static constexpr int32_t c_name_size = 32;

// Flag names of the pragma TOLL_KOB_FLAG to module flags.
static HS_DOMAIN *flag_names;

// Faults in the text stream made last.
static int32_t last_text_errors;

struct TLC_CHUNK {
    TLC_CHUNK *next; // made before this one
    size_t size;     // bytes behind this record
};

// A chunk's record, and the word that storage keeps before a block of its size.
static constexpr size_t chunk_overhead = sizeof(TLC_CHUNK) + sizeof(uint64_t);

static_assert(sizeof(TLC_CHUNK) % 8 == 0, "what follows a chunk's record is aligned");

void TLC_Initialise()
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    HS_Initialise();
    EEP_Initialise();
    KOB_Initialise();
    flag_names = HS_NewDomain();
    HS_NewName(flag_names, "ALLOCATE_SPACE", 128);
}

void TLC_CleanUp()
{
    if (flag_names != nullptr) HS_DelDomain(flag_names);
    flag_names = nullptr;
}

uint32_t TLC_FlagValue(const char *name)
{
    intptr_t value = 0;
    if (flag_names != nullptr) HS_FindName(flag_names, name, &value);
    return static_cast<uint32_t>(value);
}

/** Puts a new chunk with room for size bytes at the head of the arena. */
static void add_chunk(TLC_ARENA *arena, size_t size)
{
    const size_t before = arena->chunks == nullptr ? 0 : arena->chunks->size;
    const size_t doubled = before == 0 ? first_chunk_size : (before + chunk_overhead) * 2;
    size_t room = (doubled < largest_chunk_size ? doubled : largest_chunk_size) - chunk_overhead;
    if (room < size) room = size;
    TLC_CHUNK *chunk =
        static_cast<TLC_CHUNK *>(SH_AllocateRecord(sizeof(TLC_CHUNK) + room, "TLC:CHUNK"));
    chunk->size = room;
    chunk->next = arena->chunks;
    arena->chunks = chunk;
    arena->top = reinterpret_cast<uint8_t *>(chunk + 1);
    arena->end = arena->top + room;
}

uint8_t *TLC_ArenaTake(TLC_ARENA *arena, size_t size, size_t align)
{
    const size_t pad = (align - reinterpret_cast<uintptr_t>(arena->top) % align) % align;
    const size_t room = static_cast<size_t>(arena->end - arena->top);
    if (room < pad + size) {
        add_chunk(arena, size);
    } else {
        arena->top += pad;
    }
    uint8_t *piece = arena->top;
    arena->top += size;
    return piece;
}

void TLC_ArenaDrop(TLC_ARENA *arena)
{
    while (arena->chunks != nullptr) {
        TLC_CHUNK *chunk = arena->chunks;
        arena->chunks = chunk->next;
        SH_Free(chunk);
    }
    arena->top = arena->end = nullptr;
}

void TLC_GrowPSect(TLC_STREAM *stream, TLC_PSECT *section, uint32_t count)
{
    if (count > INT32_MAX - section->size) SM_FatalError("TLC : Program section too large");
    const uint32_t needed = section->size + count;
    const uint32_t doubled = section->size == 0 ? needed : needed * 2;
    const uint32_t wanted = needed <= first_capacity ? first_capacity : doubled;
    TLC_ARENA *arena = &stream->code_buffers;
    const uint32_t more = wanted - section->capacity;
    const bool is_newest =
        section->code != nullptr && section->code + section->capacity == arena->top;
    if (is_newest && more <= static_cast<size_t>(arena->end - arena->top)) {
        arena->top += more;
    } else {
        uint8_t *code = TLC_ArenaTake(arena, wanted, 1);
        if (section->code != nullptr) std::memcpy(code, section->code, section->size);
        section->code = code;
    }
    section->capacity = wanted;
}

/** Gives back the room that a small section at the end of the buffers has not used. */
static void trim(TLC_STREAM *stream, TLC_PSECT *section)
{
    if (section == nullptr || section->capacity != first_capacity) return;
    if (section->code + section->capacity != stream->code_buffers.top) return;
    stream->code_buffers.top = section->code + section->size;
    section->capacity = section->size;
}

static void append_section(TLC_PSECT_LIST *list, TLC_PSECT *section)
{
    if (list->tail == nullptr) {
        list->head = section;
    } else {
        list->tail->next = section;
    }
    list->tail = section;
}

static TLC_PSECT *new_section(TLC_STREAM *stream, TLC_PSECT_LIST *list, uint8_t align)
{
    uint8_t *piece = TLC_ArenaTake(&stream->records, sizeof(TLC_PSECT), alignof(TLC_PSECT));
    TLC_PSECT *section = reinterpret_cast<TLC_PSECT *>(piece);
    section->last_code = TLC_NO_CODE;
    section->align = align;
    append_section(list, section);
    TLC_SetPSect(stream, section);
    return section;
}

static TLC_STREAM *new_stream(int32_t target, TLP_MODULE *module, uint32_t flags)
{
    TLC_STREAM *stream =
        static_cast<TLC_STREAM *>(SH_NameAllocate(sizeof(TLC_STREAM), "TLC:TLC_STREAM"));
    stream->target = target;
    stream->module = module;
    stream->flags = flags;
    return stream;
}

TLC_STREAM *TLC_NewStream(TLP_MODULE *module, uint32_t flags)
{
    TLC_STREAM *stream = new_stream(TLC_TARGET_PCODE, module, flags);
    stream->strings = HS_NewDomain();
    stream->overlays = HS_NewDomain();
    stream->syscalls = HS_NewDomain();
    stream->string_section = TLC_ConstantPSect(stream);
    return stream;
}

static TLC_STREAM *new_text_stream(int32_t target, FILE *file, TLP_MODULE *module, uint32_t flags)
{
    TLC_STREAM *stream = new_stream(target, module, flags);
    stream->file = file;
    stream->pass = 1;
    last_text_errors = 0;
    return stream;
}

TLC_STREAM *TLC_NewCStream(FILE *file, TLP_MODULE *module, uint32_t flags)
{
    return new_text_stream(TLC_TARGET_C, file, module, flags);
}

TLC_STREAM *TLC_NewJavaStream(FILE *file, TLP_MODULE *module, uint32_t flags)
{
    return new_text_stream(TLC_TARGET_JAVA, file, module, flags);
}

void TLC_DelStream(TLC_STREAM *stream)
{
    if (stream == nullptr) return;
    if (stream->target == TLC_TARGET_PCODE) {
        HS_DelDomain(stream->strings);
        HS_DelDomain(stream->overlays);
        HS_DelDomain(stream->syscalls);
        TLC_ArenaDrop(&stream->records);
        TLC_ArenaDrop(&stream->code_buffers);
    }
    if (stream->text.scratch != nullptr) std::fclose(stream->text.scratch);
    TLCJ_DropState(stream);
    SH_Free(stream);
}

TLC_PSECT *TLC_NewPSect(TLC_STREAM *stream)
{
    return new_section(stream, &stream->code, 0);
}

TLC_PSECT *TLC_EvenPSect(TLC_STREAM *stream)
{
    return new_section(stream, &stream->code, TLC_EVEN);
}

TLC_PSECT *TLC_ConstantPSect(TLC_STREAM *stream)
{
    return new_section(stream, &stream->constants, TLC_EVEN);
}

TLC_PSECT *TLC_NonVolPSect(TLC_STREAM *stream)
{
    return new_section(stream, &stream->nonvolatiles, TLC_EVEN);
}

void TLC_SetPSect(TLC_STREAM *stream, TLC_PSECT *section)
{
    if (stream->current != section) trim(stream, stream->current);
    stream->current = section;
}

void TLC_Align(TLC_STREAM *stream)
{
    if (stream->current->size % 2 != 0) TLC_Code8(stream, 0);
}

int32_t TLC_GetPass(const TLC_STREAM *stream)
{
    return stream->pass;
}

void TLC_NextPass(TLC_STREAM *stream)
{
    stream->pass++;
}

int32_t TLC_Target(const TLC_STREAM *stream)
{
    return stream->target;
}

TLP_MODULE *TLC_Module(const TLC_STREAM *stream)
{
    return stream->module;
}

uint32_t TLC_StreamFlags(const TLC_STREAM *stream)
{
    return stream->flags;
}

uint32_t TLC_StreamKobFlags(const TLC_STREAM *stream)
{
    return stream->object_flags;
}

FILE *TLC_CFile(const TLC_STREAM *stream)
{
    return stream->file;
}

void TLC_SetCFile(TLC_STREAM *stream, FILE *file)
{
    stream->file = file;
}

int32_t TLC_TextErrors(const TLC_STREAM *stream)
{
    return stream == nullptr ? last_text_errors : stream->text_errors;
}

char *TLC_CName(const char *name, char *buffer)
{
    ST_Copy(buffer, c_name_size, name);
    for (char *at = buffer; *at != 0; at++) {
        if (*at == '.') *at = '_';
    }
    return buffer;
}

void TLC_Error(TLC_STREAM *stream, const char *message)
{
    if (stream->target == TLC_TARGET_PCODE) {
        TLT_FatalError(nullptr, message);
        return;
    }
    // A trial tells nothing: its text is written again.
    if (stream->text.declarations != nullptr) return;
    std::fprintf(stream->file, "/*ERROR - %s */\n", message);
    TLC_SetTextErrors(stream, stream->text_errors + 1);
}

void TLC_SetTextErrors(TLC_STREAM *stream, int32_t count)
{
    stream->text_errors = count;
    last_text_errors = count;
}

const char *TLC_IdentifierSymbol(TLI_IDENTIFIER *identifier, char *buffer)
{
    const char *name = TLI_IdentifierName(identifier);
    if (TLI_FindPragma(identifier, "NOTAG") != nullptr) {
        return ST_Copy(buffer, TLC_SYMBOL_NAME_SIZE, name);
    }
    TLI_DOMAIN *domain = TLI_IdentifierDomain(identifier);
    const char *qualifier = domain == nullptr ? "" : TLI_DomainName(domain);
    return ST_Concat(buffer, TLC_SYMBOL_NAME_SIZE, qualifier, ".", name, nullptr);
}
