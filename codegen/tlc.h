/*
 * Code streams: records, and what the generator needs of them.
 */
#pragma once

#include <ostrum/extra.h>
#include <ostrum/hs.h>
#include <ostrum/tlc.h>

/* Kinds of fix-up. */
enum TLC_FIXUP_KIND : uint8_t {
    TLC_FIXUP_JUMP,   /* 16-bit displacement to a section */
    TLC_FIXUP_STRING, /* 32-bit displacement into the string section */
    TLC_FIXUP_SYMBOL, /* 32-bit displacement to an identifier's section, or a symbol */
    TLC_FIXUP_STATIC, /* 32-bit static offset, listed in the static offset table */
};

/* A place of a section to be patched or told to the module file after layout. */
struct TLC_FIXUP {
    TLC_FIXUP *next; /* made before this one */
    uint32_t offset; /* in the section */
    TLC_FIXUP_KIND kind;
    uint8_t symbol_class; /* of a symbol */
};

struct TLC_JUMP_FIXUP {
    TLC_FIXUP common;
    TLC_PSECT *target;    /* null until layout if node is set */
    TLI_IDENTIFIER *node; /* null for a jump to a section */
};

struct TLC_STRING_FIXUP {
    TLC_FIXUP common;
    uint32_t string_offset; /* in the string section */
};

struct TLC_SYMBOL_FIXUP {
    TLC_FIXUP common;
    TLI_IDENTIFIER *type;
    TLI_IDENTIFIER *identifier; /* null if the name was given */
    const char *name;           /* in the stream's arena; null if identifier gives it */
};

enum { TLC_SYMBOL_NAME_SIZE = 64 };

/* What no opcode and no small literal equals: nothing to fold with. */
enum { TLC_NO_CODE = -1 };

/* Bytes that an image may have: a module file is one block of less than 2 GB with its tables. */
enum : uint32_t { TLC_LARGEST_IMAGE = INT32_MAX - 1024 * 1024 };

/* Bit of TLC_PSECT.align. */
enum : uint8_t { TLC_EVEN = 1 };

/* A growing run of bytes with its fix-ups. All storage lies in the stream's arenas. */
struct TLC_PSECT {
    uint8_t *code;
    uint32_t size;
    uint32_t capacity;
    uint32_t address;  /* in the module image; set at layout */
    int16_t last_code; /* opcode or small literal at the end of code, or TLC_NO_CODE */
    uint8_t align;
    TLC_FIXUP *fixups;        /* newest first */
    TLT_STATEMENT *statement; /* first statement that opened the section, or null */
    TLC_PSECT *next;          /* in its list */
};

struct TLC_PSECT_LIST {
    TLC_PSECT *head;
    TLC_PSECT *tail;
};

/* Storage that is handed out in pieces and dropped whole. */
struct TLC_ARENA {
    struct TLC_CHUNK *chunks; /* newest first */
    uint8_t *top;             /* next free byte of the newest chunk */
    uint8_t *end;
};

/* A loop in C's own form whose variable has less than a word, while its body is written. */
struct TLC_LOOP {
    const TLI_IDENTIFIER *variable;
    bool is_changed; /* the body stores in the variable */
    TLC_LOOP *outer;
};

/* What the writers of C text note between one another. */
struct TLC_TEXT {
    TLC_LOOP *loops;           /* innermost first */
    const TLI_SCOPE *frame;    /* of the function being written; null for none */
    int32_t temporaries;       /* made so far in the function being written */
    int32_t indent;            /* of the statement being written */
    bool is_ordered;           /* its values must not change places */
    bool follows_label;        /* only a statement may stand next */
    const TLE_TERM *statement; /* the expression whose value nobody takes */
    int32_t stand_ins;         /* written in the place of values that could not be */
    FILE *scratch;             /* takes the text of a trial; null before the first */
    FILE *declarations;        /* during a trial: where its declarations go; null otherwise */
};

struct TLC_STREAM {
    TLC_PSECT *current; /* where code goes now */
    int32_t target;
    uint32_t flags; /* compile flags */
    TLP_MODULE *module;
    KOB_MODULE *object; /* set when the object code is generated */
    FILE *file;         /* of a text stream */
    HS_DOMAIN *strings; /* text of a string to its offset in the string section */
    TLC_PSECT_LIST code;
    TLC_PSECT_LIST constants;
    TLC_PSECT_LIST nonvolatiles;
    TLC_PSECT *string_section; /* first of the constants */
    uint32_t object_flags;     /* module flags gathered while generating */
    HS_DOMAIN *overlays;       /* overlays of the syscalls called */
    HS_DOMAIN *syscalls;       /* full names of the syscalls called */
    int32_t pass;
    int32_t text_errors; /* faults written as comments */
    TLC_TEXT text;
    struct TLCJ_STATE *java; /* notes of the writers of Java text; null before the first */
    TLC_ARENA records;       /* sections, fix-ups, names */
    TLC_ARENA code_buffers;
};

/**
 * Takes a piece of an arena, zero-filled unless the piece was given back before.
 * @param arena the arena
 * @param size bytes, above 0
 * @param align 1 or 8, bytes
 * @return the piece, which lives as long as the arena
 */
uint8_t *TLC_ArenaTake(TLC_ARENA *arena, size_t size, size_t align);

/** Frees all that was taken from an arena. */
void TLC_ArenaDrop(TLC_ARENA *arena);

/** Makes room for count more bytes in a section's buffer. */
void TLC_GrowPSect(TLC_STREAM *stream, TLC_PSECT *section, uint32_t count);

/**
 * Adds room to a section; every write to a section's code goes through this step.
 * @param stream P-code stream
 * @param section one of its sections
 * @param count bytes
 * @return the first of the new bytes, to be filled by the caller before the next call
 */
inline uint8_t *TLC_Extend(TLC_STREAM *stream, TLC_PSECT *section, uint32_t count)
{
    if (section->capacity - section->size < count) TLC_GrowPSect(stream, section, count);
    uint8_t *bytes = section->code + section->size;
    section->size += count;
    return bytes;
}

/**
 * The name that a symbol of an identifier has in the module file.
 * @param identifier what is named
 * @param buffer out: TLC_SYMBOL_NAME_SIZE bytes
 * @return the buffer
 */
const char *TLC_IdentifierSymbol(TLI_IDENTIFIER *identifier, char *buffer);

/** The value of a flag name of the pragma TOLL_KOB_FLAG; 0 for a name that is not known. */
uint32_t TLC_FlagValue(const char *name);

/** Sets how many faults the text has: what a further report of the same place must not raise. */
void TLC_SetTextErrors(TLC_STREAM *stream, int32_t count);

/**
 * Emits an opcode that folds neither with what stands before it nor with what comes behind: a symbol
 * marks its place, and the byte there has to stay.
 */
void TLC_PlainPCode(TLC_STREAM *stream, int32_t code);

/** Emits a 32-bit static offset, to be listed in the module's static offset table. */
void TLC_StaticOffset(TLC_STREAM *stream, int32_t offset);

/**
 * Emits zero bytes, for storage that starts at 0. Reports "Module too large".
 * @param stream P-code stream
 * @param count how many; below 1 emits nothing
 */
void TLC_Zeros(TLC_STREAM *stream, int32_t count);
