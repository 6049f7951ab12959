// Module handles: names, types and symbols above the raw layout, and the files themselves.
#include "module/kob.h"

#include "core/bf.h"
#include "module/kobd.h"
#include "module/kobr.h"

#include <ostrum/c.h>
#include <ostrum/quillreg.h>
#include <ostrum/sh.h>
#include <ostrum/sm.h>
#include <ostrum/st.h>
#include <ostrum/tid.h>
#include <ostrum/tim.h>

#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iterator>

enum {
    CLASS_IS_GLOBAL = 0x01,    // its name is entered among the globals when written
    CLASS_IS_REFERENCE = 0x02, // linking has to resolve it
    CLASS_READS_GLOBAL = 0x04, // its name is entered among the globals when read
    MODULE_HAD_ERRORS = 0x002, // the file is not to stay
    MODULE_HAS_REFERENCES = 0x010,
};

enum { FILE_WRITE = 1, FILE_MAP = 4, ACCESS_EXISTS = 4 }; // modes of BF_ and F_

enum { STATICS_FIRST = 256 }; // static offsets that the array has room for at first

static constexpr char start_type[] = "START";

struct KOB_CLASS_ROW {
    int32_t code;
    const char *name;
    uint32_t flags;
};

static constexpr KOB_CLASS_ROW classes[] = {
    { .code = KOB_GLOBAL, .name = "GLOBAL", .flags = 0xb5 },
    { .code = KOB_EXTERNAL, .name = "EXTERNAL", .flags = 0x0a },
    { .code = KOB_TYPE, .name = "TYPE", .flags = 0x00 },
    { .code = KOB_LOCAL, .name = "LOCAL", .flags = 0x85 },
    { .code = KOB_ENTRY_POINT, .name = "ENTRY_POINT", .flags = 0xf5 },
    { .code = KOB_VALUE, .name = "VALUE", .flags = 0x34 },
    { .code = KOB_VALUEREF, .name = "VALUEREF", .flags = 0x0a },
    { .code = KOB_CODE_VAR_START, .name = "CODE_VAR_START", .flags = 0xe0 },
    { .code = KOB_CODE_VAR_END, .name = "CODE_VAR_END", .flags = 0x60 },
    { .code = KOB_C_OVERLAY, .name = "C_OVERLAY", .flags = 0x64 },
    { .code = KOB_COUNTRY, .name = "COUNTRY", .flags = 0x00 },
    { .code = KOB_SOURCE, .name = "SOURCE", .flags = 0x20 },
    { .code = KOB_C_OVERLAY_REF, .name = "C_OVERLAY_REF", .flags = 0x0a },
    { .code = KOB_SYSCALL, .name = "SYSCALL", .flags = 0x20 },
    { .code = KOB_RTD_ENTRY_POINT, .name = "RTD_ENTRY_POINT", .flags = 0xf5 },
    { .code = KOB_PCODE_DEF, .name = "PCODE_DEF", .flags = 0x74 },
    { .code = KOB_EXTREF, .name = "EXTREF", .flags = 0x0a },
    { .code = KOB_DLLNAME, .name = "DLLNAME", .flags = 0x60 },
    { .code = KOB_MSGDEF, .name = "MSGDEF", .flags = 0x80 },
    { .code = KOB_MSGREF, .name = "MSGREF", .flags = 0x80 },
    { .code = KOB_EXTERNAL_PICTURE, .name = "EXTERNAL_PICTURE", .flags = 0x60 },
    { .code = KOB_CLSID, .name = "CLSID", .flags = 0x60 },
    { .code = KOB_COMCALL, .name = "COMCALL", .flags = 0x22 },
    { .code = KOB_COMCALL_DEF, .name = "COMCALL_DEF", .flags = 0x60 },
    { .code = KOB_RTIME_DATA_REF, .name = "RTIME_DATA_REF", .flags = 0x60 },
};

static consteval bool in_class_order()
{
    for (int32_t i = 0; i < (int32_t)std::size(classes); i++)
        if (classes[i].code != i) return false;
    return std::size(classes) == KOB_CLASS_COUNT;
}
static_assert(in_class_order(), "row i has class i");

static constexpr const char *tool_names[] = {
    "TOLL", "KOBLINK", "PKOB", "BKOB", "SCRIBE_BUILDER",
};

static constexpr const char *messages[] = {
    "Successful",
    "Not a KOB file",
    "KOB file out of date",
    "KOB Failure",
    "Symbol too long",
    "Illegal characters in symbol",
    "Name already declared",
    "Failed to open the module",
    "Failed to read the module code",
    "Using an old tool on a new KOB file",
};
static_assert(std::size(messages) == KOB_RESULT_COUNT, "one text for each result");

void KOB_Initialise(void)
{
    static bool is_done = false;
    if (is_done) return;
    is_done = true;
    C_Initialise();
    HS_Initialise();
    BF_Initialise();
    KOBD_Initialise();
    KOBR_Initialise();
}

// Handles.

static KOB_MODULE *new_handle(int32_t read_only)
{
    KOB_Initialise();
    auto *module = (KOB_MODULE *)SH_NameAllocate(sizeof(KOB_MODULE), "KOB:MODULE");
    module->read_only = read_only;
    module->globals = HS_NewDomain();
    module->types = HS_NewDomain();
    module->sources = HS_NewDomain();
    module->debug = KOBD_NewDebug(module);
    return module;
}

static void delete_symbols(KOB_SYMBOL_LIST *list)
{
    for (KOB_SYMBOL *symbol = list->head; symbol != nullptr;) {
        KOB_SYMBOL *next = symbol->next;
        if (symbol->owned) KOBR_DeleteSymbol(symbol->raw);
        SH_Free(symbol);
        symbol = next;
    }
}

static void delete_handle(KOB_MODULE *module)
{
    KOBD_DeleteDebug(module);
    delete_symbols(&module->symbols);
    delete_symbols(&module->code_variables);
    HS_DelDomain(module->globals);
    HS_DelDomain(module->types);
    HS_DelDomain(module->sources);
    SH_Free(module->static_offsets);
    if (!module->read_only) KOBR_DeleteModule(module->raw);
    SH_Free(module);
}

// Symbols.

static void append_symbol(KOB_SYMBOL_LIST *list, KOB_SYMBOL *symbol)
{
    if (list->tail == nullptr) {
        list->head = symbol;
    } else {
        list->tail->next = symbol;
    }
    list->tail = symbol;
}

/** True if a new code variable stands before one that is there: an END before its equals. */
static bool goes_before(const KOB_SYMBOL *symbol, const KOB_SYMBOL *other)
{
    int32_t value = KOB_SymbolValue(symbol);
    if (KOB_SymbolClass(symbol) == KOB_CODE_VAR_END) return KOB_SymbolValue(other) >= value;
    return KOB_SymbolValue(other) > value;
}

static void insert_code_variable(KOB_SYMBOL_LIST *list, KOB_SYMBOL *symbol)
{
    if (list->tail == nullptr || !goes_before(symbol, list->tail)) {
        append_symbol(list, symbol);
        return;
    }
    KOB_SYMBOL **link = &list->head;
    while (!goes_before(symbol, *link))
        link = &(*link)->next;
    symbol->next = *link;
    *link = symbol;
}

static bool is_code_variable(const KOB_SYMBOL *symbol)
{
    int32_t symbol_class = KOB_SymbolClass(symbol);
    return symbol_class == KOB_CODE_VAR_START || symbol_class == KOB_CODE_VAR_END;
}

static KOB_SYMBOL *new_symbol(uint8_t *raw, int32_t owned)
{
    auto *symbol = (KOB_SYMBOL *)SH_NameAllocate(sizeof(KOB_SYMBOL), "KOB:SYMBOL");
    symbol->raw = raw;
    symbol->owned = owned;
    return symbol;
}

/** The number of a type; a type met for the first time gets the next one and a symbol. */
static int32_t type_number(KOB_MODULE *module, const char *type_name)
{
    intptr_t number = 0;
    if (HS_FindName(module->types, type_name, &number)) return (int32_t)number;
    if (module->type_count >= KOB_TYPE_MAX) SM_FatalError("KOB : Too many types");
    number = module->type_count++;
    HS_NewName(module->types, type_name, number);
    KOB_SYMBOL *type = new_symbol(KOBR_NewSymbol(type_name, KOB_TYPE, 0, (int32_t)number), 1);
    module->type_table[number] = type;
    append_symbol(&module->symbols, type);
    return (int32_t)number;
}

/** Adds a symbol to its list, without a look at its name. */
static KOB_SYMBOL *add_symbol(KOB_MODULE *module, int32_t symbol_class, const char *name,
                              const char *type_name, int32_t value)
{
    int32_t type = type_number(module, type_name);
    KOB_SYMBOL *symbol = new_symbol(KOBR_NewSymbol(name, symbol_class, type, value), 1);
    symbol->type = module->type_table[type];
    if (is_code_variable(symbol)) {
        insert_code_variable(&module->code_variables, symbol);
    } else {
        append_symbol(&module->symbols, symbol);
    }
    return symbol;
}

int32_t KOB_Symbol(KOB_MODULE *module, int32_t symbol_class, const char *name,
                   const char *type_name, int32_t value)
{
    if (strnlen(name, KOBR_NAME_SIZE) >= KOBR_NAME_SIZE) return KOB_SYMBOL_TOO_LONG;
    if (KOB_BadSymbolName(name)) return KOB_BAD_CHARACTERS;
    KOB_SYMBOL *symbol = add_symbol(module, symbol_class, name, type_name, value);
    uint32_t flags = KOB_ClassFlags(symbol_class);
    if ((flags & CLASS_IS_GLOBAL) != 0) HS_NewName(module->globals, name, (intptr_t)symbol);
    if ((flags & CLASS_IS_REFERENCE) != 0) module->flags |= MODULE_HAS_REFERENCES;
    return KOB_SUCCESSFUL;
}

static bool is_symbol_character(unsigned char c)
{
    return isalnum(c) || (c != 0 && strchr("$_./-", c) != nullptr);
}

int32_t KOB_BadSymbolName(const char *name)
{
    if (isdigit((unsigned char)name[0])) return 1;
    for (; *name != 0; name++)
        if (!is_symbol_character((unsigned char)*name)) return 1;
    return 0;
}

KOB_SYMBOL *KOB_SetCountry(KOB_MODULE *module, const char *name)
{
    if (module->country == nullptr)
        module->country = add_symbol(module, KOB_COUNTRY, name, "COUNTRY_DEF", 0);
    return module->country;
}

// Reading.

/** Enters a type; 0 if its number has no place in the table. */
static int32_t load_type(KOB_MODULE *module, KOB_SYMBOL *symbol)
{
    uint32_t number = (uint32_t)KOB_SymbolValue(symbol);
    if (number >= KOB_TYPE_MAX) return 0;
    module->type_table[number] = symbol;
    HS_NewName(module->types, KOB_SymbolName(symbol), (intptr_t)symbol);
    return 1;
}

static void load_names(KOB_MODULE *module, KOB_SYMBOL *symbol)
{
    int32_t symbol_class = KOB_SymbolClass(symbol);
    const char *name = KOB_SymbolName(symbol);
    if ((KOB_ClassFlags(symbol_class) & CLASS_READS_GLOBAL) != 0)
        HS_NewName(module->globals, name, (intptr_t)symbol);
    if (strcmp(KOB_SymbolType(symbol), start_type) == 0) module->current_start = symbol;
    if (symbol_class == KOB_SOURCE && module->current_start != nullptr)
        HS_NewName(module->sources, KOB_SymbolName(module->current_start), (intptr_t)name);
    if (symbol_class == KOB_COUNTRY) module->country = symbol;
}

/** What loading symbols carries along. */
struct KOB_LOADING {
    KOB_MODULE *module;
    int32_t is_good;
};

static int32_t load_symbol(void *context, uint8_t *raw, const char *)
{
    auto *loading = (KOB_LOADING *)context;
    KOB_MODULE *module = loading->module;
    KOB_SYMBOL *symbol = new_symbol(raw, 0);
    append_symbol(is_code_variable(symbol) ? &module->code_variables : &module->symbols, symbol);
    if (KOB_SymbolClass(symbol) == KOB_TYPE) {
        loading->is_good &= load_type(module, symbol);
        return 1;
    }
    int32_t type = KOBR_SymbolType(raw);
    if (type < KOB_TYPE_MAX) symbol->type = module->type_table[type];
    load_names(module, symbol);
    return 1;
}

static int32_t load_static_offset(void *module, int32_t offset)
{
    KOB_StaticData((KOB_MODULE *)module, offset);
    return 1;
}

static bool load_module(KOB_MODULE *module)
{
    KOB_LOADING loading = { .module = module, .is_good = 1 };
    KOBR_AllSymbols(module->raw, load_symbol, &loading);
    KOBR_AllStaticOffsets(module->raw, load_static_offset, module);
    KOBD_ReadFrames(module, module->raw);
    return loading.is_good;
}

/** Parts of a path, none of them cut: the name starts behind the directory, a version mark ends it. */
struct KOB_PATH {
    int32_t directory; // lengths
    int32_t name;
    int32_t extension; // with its "."
};

static KOB_PATH split_path(const char *path)
{
    char directory[F_PATH_SIZE];
    F_ParseFilename(path, directory, nullptr, nullptr);
    KOB_PATH parts = { .directory = (int32_t)strlen(directory), .name = 0, .extension = 0 };
    const char *rest = path + parts.directory;
    int32_t length = (int32_t)strcspn(rest, ";");
    parts.name = length;
    for (int32_t i = 0; i < length; i++)
        if (rest[i] == '.') parts.name = i;
    parts.extension = length - parts.name;
    return parts;
}

/** Gives a path the extension of modules; false if it becomes longer than paths can be. */
static bool add_extension(char *path, const char *file_name, const KOB_PATH &parts)
{
    int32_t length =
        snprintf(path, F_PATH_SIZE, "%.*s.kob", parts.directory + parts.name, file_name);
    return length < F_PATH_SIZE;
}

/** Maps a file: as named, else with the extension of modules, else along KobInclude. */
static bool map_file(KOB_MODULE *module, const char *file_name)
{
    if (strnlen(file_name, F_PATH_SIZE) >= F_PATH_SIZE) return false;
    ST_Copy(module->file_name, F_PATH_SIZE, file_name);
    if (F_CheckAccess(file_name, ACCESS_EXISTS) != 0 &&
        !add_extension(module->file_name, file_name, split_path(file_name)))
        return false;
    if (BF_OpenFile(&module->file, module->file_name, FILE_MAP) != 0 &&
        QUILLREG_OpenBFContextFile(&module->file, "KobInclude", module->file_name, FILE_MAP) != 0)
        return false;
    void *address = nullptr;
    BF_GetMappedAddress(module->file, &address);
    module->mapped = (uint8_t *)address;
    module->is_open = 1;
    return true;
}

int32_t KOB_OpenModule(KOB_MODULE **module, const char *file_name)
{
    KOB_MODULE *opened = new_handle(1);
    bool is_good = map_file(opened, file_name) &&
                   KOBR_CheckFile(opened->mapped, BF_MappedSize(opened->file)) == KOB_SUCCESSFUL &&
                   KOBR_SetUpModule(opened, opened->mapped) == KOB_SUCCESSFUL &&
                   load_module(opened);
    if (!is_good) {
        KOB_CloseModule(opened, 0, 1);
        return KOB_OPEN_FAILED;
    }
    *module = opened;
    return KOB_SUCCESSFUL;
}

// Writing.

/** Present time, or the one that the environment names so that builds can be repeated. */
static uint32_t creation_time()
{
    const char *text = getenv("SOURCE_DATE_EPOCH");
    if (text == nullptr || !isdigit((unsigned char)text[0])) return (uint32_t)TIM_GetTime();
    char *end = nullptr;
    errno = 0;
    unsigned long long seconds = strtoull(text, &end, 10);
    if (errno != 0 || *end != 0) return (uint32_t)TIM_GetTime();
    return (uint32_t)seconds;
}

/** Makes the file and the build buffer; false if the file cannot be made. */
static bool make_file(KOB_MODULE *module, const char *file_name, int32_t tool,
                      const char *tool_version)
{
    if (strnlen(file_name, F_PATH_SIZE) >= F_PATH_SIZE) return false;
    KOB_PATH parts = split_path(file_name);
    if (parts.extension > 1) {
        int32_t length = parts.directory + parts.name + parts.extension;
        ST_Copy(module->file_name, length + 1, file_name);
    } else if (!add_extension(module->file_name, file_name, parts)) {
        return false;
    }
    if (BF_OpenFile(&module->file, module->file_name, FILE_WRITE) != 0) return false;
    module->is_open = 1;
    char name[F_PATH_SIZE];
    ST_Copy(name, parts.name + 1, file_name + parts.directory);
    module->raw = KOBR_NewModule(name, tool, tool_version, creation_time());
    return true;
}

/** The START symbol is "$" and a name, held to a name's size. */
static void start_name(char *name, const char *module_name)
{
    ST_Concat(name, KOBR_NAME_SIZE, "$", module_name, (const char *)nullptr);
}

static void add_start(KOB_MODULE *module, const char *module_name)
{
    char name[KOBR_NAME_SIZE];
    start_name(name, module_name);
    KOB_Symbol(module, KOB_GLOBAL, name, start_type, 0);
}

int32_t KOB_NewModule(KOB_MODULE **module, const char *file_name, int32_t tool,
                      const char *tool_version, int32_t with_start)
{
    KOB_MODULE *made = new_handle(0);
    if (!make_file(made, file_name, tool, tool_version)) {
        delete_handle(made);
        return KOB_OPEN_FAILED;
    }
    if (with_start) add_start(made, KOB_Name(made));
    *module = made;
    return KOB_SUCCESSFUL;
}

int32_t KOB_NewNameModule(KOB_MODULE **module, const char *file_name, int32_t tool,
                          const char *tool_version, const char *module_name)
{
    int32_t result = KOB_NewModule(module, file_name, tool, tool_version, 0);
    if (result == KOB_SUCCESSFUL) add_start(*module, module_name);
    return result;
}

int32_t KOB_Code(KOB_MODULE *module, const uint8_t *bytes, int32_t count)
{
    KOBR_Reserve(&module->raw, count);
    return KOBR_PutCode(&module->raw, bytes, count);
}

void KOB_SetStaticSize(KOB_MODULE *module, int32_t size)
{
    KOBR_SetStaticSize(module->raw, size);
}

static void grow_statics(KOB_MODULE *module)
{
    int32_t capacity = module->static_capacity == 0 ? STATICS_FIRST : 2 * module->static_capacity;
    auto *larger = (int32_t *)SH_NameAllocate(capacity * (int32_t)sizeof(int32_t), "KOB:STATICS");
    if (module->static_count != 0)
        memcpy(larger, module->static_offsets, (size_t)module->static_count * sizeof(int32_t));
    SH_Free(module->static_offsets);
    module->static_offsets = larger;
    module->static_capacity = capacity;
}

void KOB_StaticData(KOB_MODULE *module, int32_t offset)
{
    if (module->static_count == module->static_capacity) grow_statics(module);
    module->static_offsets[module->static_count++] = offset;
}

static void put_symbol(KOB_MODULE *module, const KOB_SYMBOL *symbol)
{
    KOBR_Reserve(&module->raw, KOBR_SYMBOL_RECORD_MAX);
    KOBR_PutSymbol(&module->raw, symbol->raw);
}

/** Puts the areas; where one ends and the next begins at one place, neither end is put. */
static void put_code_variables(KOB_MODULE *module)
{
    for (const KOB_SYMBOL *symbol = module->code_variables.head; symbol != nullptr;
         symbol = symbol->next) {
        const KOB_SYMBOL *next = symbol->next;
        if (KOB_SymbolClass(symbol) == KOB_CODE_VAR_END && next != nullptr &&
            KOB_SymbolValue(next) == KOB_SymbolValue(symbol)) {
            symbol = next;
            continue;
        }
        put_symbol(module, symbol);
    }
}

static void lay_out(KOB_MODULE *module)
{
    for (int32_t i = 0; i < module->static_count; i++) {
        KOBR_Reserve(&module->raw, (int32_t)sizeof(int32_t));
        KOBR_PutStaticOffset(&module->raw, module->static_offsets[i]);
    }
    for (const KOB_SYMBOL *symbol = module->symbols.head; symbol != nullptr; symbol = symbol->next)
        put_symbol(module, symbol);
    put_code_variables(module);
    KOBD_WriteFrames(module, &module->raw);
    KOBR_SettleCapacity(module->raw);
}

static int32_t write_file(KOB_MODULE *module, uint32_t flags)
{
    lay_out(module);
    uint8_t *buffer = nullptr;
    int32_t size = 0;
    KOBR_CompleteModule(module->raw, module->flags | flags, &buffer, &size);
    bool is_written = BF_Write(module->file, buffer, size) == 0;
    bool is_closed = BF_CloseFile(module->file) == 0;
    if (!is_written || !is_closed) {
        F_DeleteFile(module->file_name);
        return KOB_FAILURE;
    }
    if ((flags & MODULE_HAD_ERRORS) != 0) F_DeleteFile(module->file_name);
    return KOB_SUCCESSFUL;
}

static int32_t unmap_file(KOB_MODULE *module)
{
    module->raw = nullptr;
    module->mapped = nullptr;
    return BF_UnmapFile(module->file);
}

int32_t KOB_CloseModule(KOB_MODULE *module, uint32_t flags, int32_t free)
{
    int32_t result = KOB_SUCCESSFUL;
    if (module->is_open) {
        module->is_open = 0;
        result = module->read_only ? unmap_file(module) : write_file(module, flags);
    }
    if (free) delete_handle(module);
    return result;
}

// Asking.

int32_t KOB_ReadCode(KOB_MODULE *module, uint8_t *destination, int32_t offset, int32_t count)
{
    int32_t size = KOB_CodeSize(module);
    if (offset < 0 || count < 0 || offset > size || count > size - offset) return KOB_READ_FAILED;
    KOBR_ReadCode(module->raw, destination, offset, count);
    return KOB_SUCCESSFUL;
}

KOB_SYMBOL *KOB_FindGlobal(KOB_MODULE *module, const char *name, const char *type_name)
{
    intptr_t value = 0;
    if (!HS_FindName(module->globals, name, &value)) return nullptr;
    auto *symbol = (KOB_SYMBOL *)value;
    return strcmp(KOB_SymbolType(symbol), type_name) == 0 ? symbol : nullptr;
}

static void visit_symbols(const KOB_SYMBOL_LIST *list, KOB_SYMBOL_VISITOR visitor, void *context)
{
    for (KOB_SYMBOL *symbol = list->head; symbol != nullptr; symbol = symbol->next)
        if (KOB_SymbolClass(symbol) != KOB_TYPE) visitor(context, symbol, KOB_SymbolName(symbol));
}

void KOB_AllSymbols(KOB_MODULE *module, KOB_SYMBOL_VISITOR visitor, void *context)
{
    visit_symbols(&module->symbols, visitor, context);
    visit_symbols(&module->code_variables, visitor, context);
}

void KOB_AllStaticOffsets(KOB_MODULE *module, KOB_OFFSET_VISITOR visitor, void *context)
{
    for (int32_t i = 0; i < module->static_count; i++)
        visitor(context, module->static_offsets[i]);
}

int32_t KOB_TypeExists(KOB_MODULE *module, const char *type_name)
{
    return HS_FindName(module->types, type_name, nullptr);
}

const char *KOB_GetSourceFile(KOB_MODULE *module, const char *module_name)
{
    char name[KOBR_NAME_SIZE];
    start_name(name, module_name);
    intptr_t source = 0;
    HS_FindName(module->sources, name, &source);
    return (const char *)source;
}

const char *KOB_Country(KOB_MODULE *module)
{
    return module->country != nullptr ? KOB_SymbolName(module->country) : nullptr;
}

uint8_t *KOB_GetRawModule(KOB_MODULE *module)
{
    return module->mapped;
}

KOBD_DEBUG *KOB_DebugHandle(KOB_MODULE *module)
{
    return module->debug;
}

uint8_t *KOB_CodeAddress(KOB_MODULE *module)
{
    return KOBR_CodeStart(module->raw);
}

const char *KOB_ClassName(int32_t symbol_class)
{
    if (symbol_class < 0 || symbol_class >= KOB_CLASS_COUNT) return "<UNKNOWN CLASS>";
    return classes[symbol_class].name;
}

uint32_t KOB_ClassFlags(int32_t symbol_class)
{
    if (symbol_class < 0 || symbol_class >= KOB_CLASS_COUNT) return 0;
    return classes[symbol_class].flags;
}

const char *KOB_Message(int32_t result)
{
    if (result < 0 || result >= KOB_RESULT_COUNT) return "Invalid reply code";
    return messages[result];
}

const char *KOB_Name(const void *handle)
{
    return KOBR_Name(*(const uint8_t *const *)handle);
}

const char *KOB_SymbolName(const KOB_SYMBOL *symbol)
{
    return KOBR_SymbolName(symbol->raw);
}

int32_t KOB_SymbolClass(const KOB_SYMBOL *symbol)
{
    return KOBR_SymbolClass(symbol->raw);
}

const char *KOB_SymbolType(const KOB_SYMBOL *symbol)
{
    return symbol->type != nullptr ? KOB_SymbolName(symbol->type) : "";
}

int32_t KOB_SymbolValue(const KOB_SYMBOL *symbol)
{
    return KOBR_SymbolValue(symbol->raw);
}

uint32_t KOB_Timestamp(const KOB_MODULE *module)
{
    return KOBR_Timestamp(module->raw);
}

int32_t KOB_Tool(const KOB_MODULE *module)
{
    return KOBR_Tool(module->raw);
}

const char *KOB_ToolName(const KOB_MODULE *module)
{
    int32_t tool = KOB_Tool(module);
    if (tool >= 0 && tool < (int32_t)std::size(tool_names)) return tool_names[tool];
    const char *name = TID_ToolName(tool);
    return name != nullptr ? name : "<UNKNOWN TOOL>";
}

const char *KOB_ToolVersion(const KOB_MODULE *module)
{
    return KOBR_ToolVersion(module->raw);
}

uint32_t KOB_Flags(const KOB_MODULE *module)
{
    return KOBR_Flags(module->raw);
}

int32_t KOB_CodeSize(const KOB_MODULE *module)
{
    return KOBR_CodeSize(module->raw);
}

int32_t KOB_StaticSize(const KOB_MODULE *module)
{
    return KOBR_StaticSize(module->raw);
}

int32_t KOB_StaticOffsetSize(const KOB_MODULE *module)
{
    return module->static_count * (int32_t)sizeof(int32_t);
}

int32_t KOB_SymbolTableSize(const KOB_MODULE *module)
{
    return KOBR_SymbolTableSize(module->raw);
}

int32_t KOB_ModuleSize(const KOB_MODULE *module)
{
    return KOBR_ModuleSize(module->raw);
}
