// The byte layout of module files: reading in place, appending to a build buffer, and the check of a
// whole file that reading relies on.
#include "module/kobr.h"

#include "module/kob.h"

#include <ostrum/ifc.h>
#include <ostrum/sh.h>
#include <ostrum/sm.h>
#include <ostrum/st.h>

#include <cstring>

enum { VERSION = 25 };
static constexpr char magic[4] = "KOB";

// Places in the header.
enum {
    HEADER_VERSION = 4,
    HEADER_NAME = 8,
    HEADER_TIMESTAMP = 40,
    HEADER_TOOL = 44,
    HEADER_TOOL_VERSION = 46,
    HEADER_FLAGS = 78,
    HEADER_CODE = 82,
    HEADER_CODE_SIZE = 86,
    HEADER_STATICS = 94,
    HEADER_STATIC_COUNT = 98,
    HEADER_STATIC_SIZE = 102,
    HEADER_SYMBOLS = 106,
    HEADER_SYMBOL_COUNT = 110,
    HEADER_FRAMES = 114,
    HEADER_FRAME_COUNT = 118,
    HEADER_CAPACITY = 126, // this and the next two: the writer's, in the order of the host
    HEADER_POSITION = 130,
    HEADER_FRAME_POSITION = 134,
    HEADER_SIZE = 162,
};

// Places in a symbol.
enum {
    SYMBOL_VALUE = 0,
    SYMBOL_TYPE = 4,
    SYMBOL_LENGTH = 6,
    SYMBOL_CLASS = 7,
    SYMBOL_NAME = 8,
};
static_assert((int)SYMBOL_NAME == (int)HEADER_NAME, "KOBR_Name serves both");

// Places in a frame and in an entry, both of which begin with their name.
enum {
    FRAME_CLASS = 32,
    FRAME_SIZE = 34,
    FRAME_LINE = 36,
    FRAME_ENTRY_COUNT = 38,
    ENTRY_TYPE = 32,
    ENTRY_FLAGS = 64,
    ENTRY_DIMENSION = 66,
    ENTRY_OFFSET = 68,
};

enum {
    BUFFER_STEP = 0x80000, // bytes by which puts alone let a build buffer grow
    STATIC_ENTRY = 4,      // bytes of a static offset
};

static int32_t get_signed(const uint8_t *record, int32_t offset)
{
    return (int16_t)IFC_Get16(record + offset);
}

static uint32_t get_word(const uint8_t *record, int32_t offset)
{
    return IFC_Get32(record + offset);
}

/** Stores a number in 16 bits; one out of range becomes the nearest end of it. */
static void put_signed(uint8_t *record, int32_t offset, int32_t value)
{
    if (value > INT16_MAX) value = INT16_MAX;
    if (value < INT16_MIN) value = INT16_MIN;
    IFC_Put16(record + offset, (uint16_t)value);
}

static void put_word(uint8_t *record, int32_t offset, uint32_t value)
{
    IFC_Put32(record + offset, value);
}

static uint32_t get_host(const uint8_t *module, int32_t offset)
{
    uint32_t value;
    memcpy(&value, module + offset, sizeof value);
    return value;
}

static void put_host(uint8_t *module, int32_t offset, uint32_t value)
{
    memcpy(module + offset, &value, sizeof value);
}

void KOBR_Initialise(void) {}

int32_t KOBR_GetKOBVersion(void)
{
    return VERSION;
}

int32_t KOBR_HeaderSize(void)
{
    return HEADER_SIZE;
}

uint8_t *KOBR_HeaderStart(uint8_t *module)
{
    return module;
}

int32_t KOBR_CheckModule(const uint8_t *module)
{
    if (memcmp(module, magic, sizeof magic) != 0) return KOB_NOT_KOB;
    uint32_t version = get_word(module, HEADER_VERSION);
    if (version < VERSION) return KOB_OUT_OF_DATE;
    return version > VERSION ? KOB_OLD_TOOL : KOB_SUCCESSFUL;
}

int32_t KOBR_SetUpModule(KOB_MODULE *handle, uint8_t *module)
{
    int32_t result = KOBR_CheckModule(module);
    if (result == KOB_SUCCESSFUL) handle->raw = module;
    return result;
}

// Check of a file.

struct KOBR_CURSOR { // at <= size; bad stays
    const uint8_t *data;
    size_t size;
    size_t at;
    bool bad;
};

/** Steps over count bytes and gives where they start; null, and the cursor bad, if they leave it. */
static const uint8_t *take(KOBR_CURSOR *cursor, size_t count)
{
    if (cursor->bad || count > cursor->size - cursor->at) {
        cursor->bad = true;
        return nullptr;
    }
    const uint8_t *bytes = cursor->data + cursor->at;
    cursor->at += count;
    return bytes;
}

/** Marks the cursor bad if a text of at most size bytes has no end. */
static void expect_text(KOBR_CURSOR *cursor, const uint8_t *text, size_t size)
{
    if (memchr(text, 0, size) == nullptr) cursor->bad = true;
}

static void check_symbol(KOBR_CURSOR *cursor)
{
    const uint8_t *head = take(cursor, SYMBOL_NAME);
    if (head == nullptr) return;
    uint8_t length = head[SYMBOL_LENGTH];
    const uint8_t *name = length > SYMBOL_NAME ? take(cursor, length - SYMBOL_NAME) : nullptr;
    if (name == nullptr) {
        cursor->bad = true;
        return;
    }
    expect_text(cursor, name, length - SYMBOL_NAME);
}

static void check_entry(KOBR_CURSOR *cursor)
{
    const uint8_t *entry = take(cursor, KOBR_ENTRY_RECORD);
    if (entry == nullptr) return;
    expect_text(cursor, entry, KOBR_NAME_SIZE);
    expect_text(cursor, entry + ENTRY_TYPE, KOBR_NAME_SIZE);
}

static void check_frame(KOBR_CURSOR *cursor)
{
    const uint8_t *frame = take(cursor, KOBR_FRAME_RECORD);
    if (frame == nullptr) return;
    expect_text(cursor, frame, KOBR_NAME_SIZE);
    int32_t count = get_signed(frame, FRAME_ENTRY_COUNT);
    if (count < 0) cursor->bad = true;
    for (int32_t i = 0; i < count && !cursor->bad; i++)
        check_entry(cursor);
}

static void check_static_offset(KOBR_CURSOR *cursor)
{
    take(cursor, STATIC_ENTRY);
}

/** A table of the file: where the header tells of it, and the check of one record. */
struct KOBR_TABLE {
    int32_t offset_field;
    int32_t count_field;
    void (*check)(KOBR_CURSOR *cursor);
};

static constexpr KOBR_TABLE tables[] = {
    { .offset_field = HEADER_STATICS,
      .count_field = HEADER_STATIC_COUNT,
      .check = check_static_offset },
    { .offset_field = HEADER_SYMBOLS, .count_field = HEADER_SYMBOL_COUNT, .check = check_symbol },
    { .offset_field = HEADER_FRAMES, .count_field = HEADER_FRAME_COUNT, .check = check_frame },
};

/** Gives the bytes that a table covers; bad if it or one of its records leaves the file. */
static size_t check_table(KOBR_CURSOR *file, const KOBR_TABLE &table)
{
    uint32_t count = get_word(file->data, table.count_field);
    uint32_t start = get_word(file->data, table.offset_field);
    // The place of an empty table is given out too.
    if (start > file->size || (count != 0 && start < HEADER_SIZE)) file->bad = true;
    if (file->bad || count == 0) return 0;
    file->at = start;
    for (uint32_t i = 0; i < count && !file->bad; i++)
        table.check(file);
    return file->at - start;
}

/** Gives the bytes of the code; bad if it leaves the file. */
static size_t check_code(KOBR_CURSOR *file)
{
    uint32_t size = get_word(file->data, HEADER_CODE_SIZE);
    uint32_t start = get_word(file->data, HEADER_CODE);
    if (start > file->size || size > file->size - start) file->bad = true;
    if (size != 0 && start < HEADER_SIZE) file->bad = true;
    return size;
}

int32_t KOBR_CheckFile(const uint8_t *data, size_t size)
{
    if (size < HEADER_SIZE || size > INT32_MAX) return KOB_OPEN_FAILED;
    int32_t result = KOBR_CheckModule(data);
    if (result != KOB_SUCCESSFUL) return result;
    KOBR_CURSOR file = { .data = data, .size = size, .at = HEADER_SIZE, .bad = false };
    expect_text(&file, data + HEADER_NAME, KOBR_NAME_SIZE);
    expect_text(&file, data + HEADER_TOOL_VERSION, KOBR_NAME_SIZE);
    size_t total = HEADER_SIZE + check_code(&file);
    for (const KOBR_TABLE &table : tables)
        total += check_table(&file, table);
    return file.bad || total > size ? KOB_OPEN_FAILED : KOB_SUCCESSFUL;
}

// Reading.

uint32_t KOBR_Timestamp(const uint8_t *module)
{
    return get_word(module, HEADER_TIMESTAMP);
}

int32_t KOBR_Tool(const uint8_t *module)
{
    return get_signed(module, HEADER_TOOL);
}

const char *KOBR_ToolVersion(const uint8_t *module)
{
    return (const char *)module + HEADER_TOOL_VERSION;
}

uint32_t KOBR_Flags(const uint8_t *module)
{
    return get_word(module, HEADER_FLAGS);
}

uint8_t *KOBR_CodeStart(uint8_t *module)
{
    return module + get_word(module, HEADER_CODE);
}

int32_t KOBR_CodeSize(const uint8_t *module)
{
    return (int32_t)get_word(module, HEADER_CODE_SIZE);
}

void KOBR_ReadCode(const uint8_t *module, uint8_t *destination, int32_t offset, int32_t count)
{
    int32_t size = KOBR_CodeSize(module);
    if (offset < 0 || count <= 0 || offset > size || count > size - offset) return;
    memcpy(destination, module + get_word(module, HEADER_CODE) + offset, (size_t)count);
}

int32_t KOBR_StaticSize(const uint8_t *module)
{
    return (int32_t)get_word(module, HEADER_STATIC_SIZE);
}

void KOBR_AllStaticOffsets(const uint8_t *module, KOBR_OFFSET_VISITOR visitor, void *context)
{
    uint32_t count = get_word(module, HEADER_STATIC_COUNT);
    const uint8_t *entry = module + get_word(module, HEADER_STATICS);
    for (uint32_t i = 0; i < count; i++, entry += STATIC_ENTRY)
        visitor(context, (int32_t)get_word(entry, 0));
}

void KOBR_AllSymbols(uint8_t *module, KOBR_RECORD_VISITOR visitor, void *context)
{
    uint32_t count = get_word(module, HEADER_SYMBOL_COUNT);
    uint8_t *symbol = KOBR_SymbolTableStart(module);
    for (uint32_t i = 0; i < count; i++, symbol += symbol[SYMBOL_LENGTH])
        visitor(context, symbol, KOBR_SymbolName(symbol));
}

uint8_t *KOBR_FindSymbol(uint8_t *module, const char *name)
{
    uint32_t count = get_word(module, HEADER_SYMBOL_COUNT);
    uint8_t *symbol = KOBR_SymbolTableStart(module);
    for (uint32_t i = 0; i < count; i++, symbol += symbol[SYMBOL_LENGTH])
        if (strcmp(KOBR_SymbolName(symbol), name) == 0) return symbol;
    return nullptr;
}

uint8_t *KOBR_SymbolTableStart(uint8_t *module)
{
    return module + get_word(module, HEADER_SYMBOLS);
}

int32_t KOBR_SymbolTableSize(const uint8_t *module)
{
    uint32_t count = get_word(module, HEADER_SYMBOL_COUNT);
    const uint8_t *start = module + get_word(module, HEADER_SYMBOLS);
    const uint8_t *symbol = start;
    for (uint32_t i = 0; i < count; i++)
        symbol += symbol[SYMBOL_LENGTH];
    return (int32_t)(symbol - start);
}

const char *KOBR_Name(const uint8_t *record)
{
    return (const char *)record + HEADER_NAME;
}

const char *KOBR_SymbolName(const uint8_t *symbol)
{
    return (const char *)symbol + SYMBOL_NAME;
}

int32_t KOBR_SymbolClass(const uint8_t *symbol)
{
    return symbol[SYMBOL_CLASS];
}

int32_t KOBR_SymbolType(const uint8_t *symbol)
{
    return IFC_Get16(symbol + SYMBOL_TYPE);
}

int32_t KOBR_SymbolValue(const uint8_t *symbol)
{
    return (int32_t)get_word(symbol, SYMBOL_VALUE);
}

/** Bytes of a frame with its entries. */
static int32_t whole_frame(const uint8_t *frame)
{
    return KOBR_FRAME_RECORD + KOBR_ENTRY_RECORD * get_signed(frame, FRAME_ENTRY_COUNT);
}

void KOBR_AllFrames(uint8_t *module, KOBR_RECORD_VISITOR visitor, void *context)
{
    uint32_t count = get_word(module, HEADER_FRAME_COUNT);
    uint8_t *frame = module + get_word(module, HEADER_FRAMES);
    for (uint32_t i = 0; i < count; i++, frame += whole_frame(frame))
        visitor(context, frame, KOBR_FrameName(frame));
}

const char *KOBR_FrameName(const uint8_t *frame)
{
    return (const char *)frame;
}

int32_t KOBR_FrameClass(const uint8_t *frame)
{
    return get_signed(frame, FRAME_CLASS);
}

int32_t KOBR_FrameSize(const uint8_t *frame)
{
    return get_signed(frame, FRAME_SIZE);
}

int32_t KOBR_FrameLineNumber(const uint8_t *frame)
{
    return get_signed(frame, FRAME_LINE);
}

void KOBR_AllEntries(uint8_t *frame, KOBR_RECORD_VISITOR visitor, void *context)
{
    int32_t count = get_signed(frame, FRAME_ENTRY_COUNT);
    uint8_t *entry = frame + KOBR_FRAME_RECORD;
    for (int32_t i = 0; i < count; i++, entry += KOBR_ENTRY_RECORD)
        visitor(context, entry, KOBR_EntryName(entry));
}

const char *KOBR_EntryName(const uint8_t *entry)
{
    return (const char *)entry;
}

const char *KOBR_EntryType(const uint8_t *entry)
{
    return (const char *)entry + ENTRY_TYPE;
}

int32_t KOBR_EntryFlags(const uint8_t *entry)
{
    return get_signed(entry, ENTRY_FLAGS);
}

int32_t KOBR_EntryDimension(const uint8_t *entry)
{
    return get_signed(entry, ENTRY_DIMENSION);
}

int32_t KOBR_EntryOffset(const uint8_t *entry)
{
    return get_signed(entry, ENTRY_OFFSET);
}

int32_t KOBR_ModuleSize(const uint8_t *module)
{
    uint32_t size = HEADER_SIZE + get_word(module, HEADER_CODE_SIZE);
    size += STATIC_ENTRY * get_word(module, HEADER_STATIC_COUNT);
    size += (uint32_t)KOBR_SymbolTableSize(module);
    const uint8_t *start = module + get_word(module, HEADER_FRAMES);
    const uint8_t *frame = start;
    for (uint32_t i = get_word(module, HEADER_FRAME_COUNT); i > 0; i--)
        frame += whole_frame(frame);
    return (int32_t)(size + (uint32_t)(frame - start));
}

// Building.

uint8_t *KOBR_NewModule(const char *name, int32_t tool, const char *tool_version,
                        uint32_t timestamp)
{
    auto *module = (uint8_t *)SH_NameAllocate(BUFFER_STEP, "KOBR:MODULE");
    memcpy(module, magic, sizeof magic);
    put_word(module, HEADER_VERSION, VERSION);
    ST_Copy((char *)module + HEADER_NAME, KOBR_NAME_SIZE, name);
    put_word(module, HEADER_TIMESTAMP, timestamp);
    put_signed(module, HEADER_TOOL, tool);
    ST_Copy((char *)module + HEADER_TOOL_VERSION, KOBR_NAME_SIZE, tool_version);
    put_host(module, HEADER_CAPACITY, BUFFER_STEP);
    put_host(module, HEADER_POSITION, HEADER_SIZE);
    return module;
}

uint8_t *KOBR_NewSymbol(const char *name, int32_t symbol_class, int32_t type, int32_t value)
{
    size_t length = strnlen(name, KOBR_SYMBOL_NAME_MAX);
    size_t size = (length + SYMBOL_NAME + 2) & ~(size_t)1; // terminator included, rounded up
    auto *symbol = (uint8_t *)SH_NameAllocate((int32_t)size, "KOBR:SYMBOL");
    put_word(symbol, SYMBOL_VALUE, (uint32_t)value);
    IFC_Put16(symbol + SYMBOL_TYPE, (uint16_t)type);
    symbol[SYMBOL_LENGTH] = (uint8_t)size;
    symbol[SYMBOL_CLASS] = (uint8_t)symbol_class;
    memcpy(symbol + SYMBOL_NAME, name, length);
    return symbol;
}

uint8_t *KOBR_NewFrame(const char *name, int32_t frame_class, int32_t size, int32_t line_number)
{
    auto *frame = (uint8_t *)SH_NameAllocate(KOBR_FRAME_RECORD, "KOBR:FRAME");
    ST_Copy((char *)frame, KOBR_NAME_SIZE, name);
    put_signed(frame, FRAME_CLASS, frame_class);
    put_signed(frame, FRAME_SIZE, size);
    put_signed(frame, FRAME_LINE, line_number);
    return frame;
}

uint8_t *KOBR_NewEntry(const char *name, const char *type_name, int32_t flags, int32_t dimension,
                       int32_t offset)
{
    auto *entry = (uint8_t *)SH_NameAllocate(KOBR_ENTRY_RECORD, "KOBR:ENTRY");
    ST_Copy((char *)entry, KOBR_NAME_SIZE, name);
    ST_Copy((char *)entry + ENTRY_TYPE, KOBR_NAME_SIZE, type_name);
    IFC_Put16(entry + ENTRY_FLAGS, (uint16_t)flags);
    put_signed(entry, ENTRY_DIMENSION, dimension);
    put_signed(entry, ENTRY_OFFSET, offset);
    return entry;
}

void KOBR_DeleteModule(uint8_t *module)
{
    SH_Free(module);
}

void KOBR_DeleteSymbol(uint8_t *symbol)
{
    SH_Free(symbol);
}

void KOBR_DeleteFrame(uint8_t *frame)
{
    SH_Free(frame);
}

void KOBR_DeleteEntry(uint8_t *entry)
{
    SH_Free(entry);
}

void KOBR_SetStaticSize(uint8_t *module, int32_t size)
{
    put_word(module, HEADER_STATIC_SIZE, (uint32_t)size);
}

/** Moves a module to a block that is a whole number of steps larger and holds at least needed. */
static void grow(uint8_t **module, int64_t needed)
{
    int64_t capacity = get_host(*module, HEADER_CAPACITY);
    int64_t steps = (needed - capacity + BUFFER_STEP - 1) / BUFFER_STEP;
    capacity += (steps > 0 ? steps : 1) * BUFFER_STEP;
    if (capacity > INT32_MAX - BUFFER_STEP) SM_FatalError("KOBR : Module too large");
    auto *larger = (uint8_t *)SH_NameAllocate((int32_t)capacity, "KOBR:MODULE");
    memcpy(larger, *module, get_host(*module, HEADER_POSITION));
    put_host(larger, HEADER_CAPACITY, (uint32_t)capacity);
    SH_Free(*module);
    *module = larger;
}

void KOBR_Reserve(uint8_t **module, int32_t count)
{
    int64_t capacity = get_host(*module, HEADER_CAPACITY);
    int64_t needed = (int64_t)get_host(*module, HEADER_POSITION) + count;
    if (needed < capacity) return;
    int64_t doubled = 2 * capacity;
    grow(module, doubled > needed && doubled < INT32_MAX / 2 ? doubled : needed);
}

void KOBR_SettleCapacity(uint8_t *module)
{
    uint32_t settled = (get_host(module, HEADER_POSITION) / BUFFER_STEP + 1) * BUFFER_STEP;
    // A block that is full to the last byte stays told as full.
    if (settled < get_host(module, HEADER_CAPACITY)) put_host(module, HEADER_CAPACITY, settled);
}

static void append(uint8_t **module, const uint8_t *bytes, int32_t count)
{
    uint32_t position = get_host(*module, HEADER_POSITION);
    int64_t needed = (int64_t)position + count;
    if (needed >= get_host(*module, HEADER_CAPACITY)) grow(module, needed);
    memcpy(*module + position, bytes, (size_t)count);
    put_host(*module, HEADER_POSITION, (uint32_t)needed);
}

int32_t KOBR_PutCode(uint8_t **module, const uint8_t *bytes, int32_t count)
{
    uint32_t size = get_word(*module, HEADER_CODE_SIZE);
    if (count <= 0) return (int32_t)size;
    if (size == 0) put_word(*module, HEADER_CODE, get_host(*module, HEADER_POSITION));
    append(module, bytes, count);
    put_word(*module, HEADER_CODE_SIZE, size + (uint32_t)count);
    return (int32_t)size;
}

/**
 * Appends a record to a table. The first one makes the code size even without moving the position:
 * the file then ends in a spare byte.
 */
static void append_record(uint8_t **module, const KOBR_TABLE &table, const uint8_t *record,
                          int32_t size)
{
    uint32_t count = get_word(*module, table.count_field);
    if (count == 0) {
        uint32_t code_size = get_word(*module, HEADER_CODE_SIZE);
        put_word(*module, HEADER_CODE_SIZE, code_size + code_size % 2);
        put_word(*module, table.offset_field, get_host(*module, HEADER_POSITION));
    }
    append(module, record, size);
    put_word(*module, table.count_field, count + 1);
}

enum { STATIC_TABLE, SYMBOL_TABLE, FRAME_TABLE };

void KOBR_PutStaticOffset(uint8_t **module, int32_t offset)
{
    uint8_t entry[STATIC_ENTRY];
    put_word(entry, 0, (uint32_t)offset);
    append_record(module, tables[STATIC_TABLE], entry, STATIC_ENTRY);
}

void KOBR_PutSymbol(uint8_t **module, const uint8_t *symbol)
{
    append_record(module, tables[SYMBOL_TABLE], symbol, symbol[SYMBOL_LENGTH]);
}

void KOBR_PutFrame(uint8_t **module, const uint8_t *frame)
{
    put_host(*module, HEADER_FRAME_POSITION, get_host(*module, HEADER_POSITION));
    append_record(module, tables[FRAME_TABLE], frame, KOBR_FRAME_RECORD);
}

void KOBR_PutEntry(uint8_t **module, const uint8_t *entry)
{
    if (get_word(*module, HEADER_FRAME_COUNT) == 0) return;
    uint32_t frame = get_host(*module, HEADER_FRAME_POSITION);
    int32_t count = get_signed(*module + frame, FRAME_ENTRY_COUNT);
    if (count == INT16_MAX) return;
    append(module, entry, KOBR_ENTRY_RECORD);
    put_signed(*module + frame, FRAME_ENTRY_COUNT, count + 1);
}

int32_t KOBR_CompleteModule(uint8_t *module, uint32_t flags, uint8_t **buffer, int32_t *size)
{
    put_word(module, HEADER_FLAGS, flags);
    int32_t module_size = KOBR_ModuleSize(module);
    if (buffer != nullptr) *buffer = module;
    if (size != nullptr) *size = module_size;
    return module_size;
}

uint8_t *KOBR_ResetModule(uint8_t *module)
{
    put_word(module, HEADER_FLAGS, 0);
    put_word(module, HEADER_CODE, 0);
    put_word(module, HEADER_CODE_SIZE, 0);
    memset(module + HEADER_STATICS, 0, HEADER_POSITION - HEADER_STATICS);
    put_host(module, HEADER_POSITION, HEADER_SIZE);
    return module;
}
