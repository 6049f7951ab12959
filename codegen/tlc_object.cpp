/*
 * Object code: the sections of a finished stream get their addresses, fix-ups are applied once, and
 * bytes, static offsets and symbols go into the module file. References inside the image hold the
 * distance from the field to the target, so that nothing in it depends on where it is loaded.
 */
#include "codegen/tlc.h"
#include "core/ifc.h"

#include <cstdio>
#include <cstring>
#include <ostrum/eep.h>
#include <ostrum/kob.h>
#include <ostrum/st.h>
#include <ostrum/tli.h>
#include <ostrum/tlic.h>
#include <ostrum/tlp.h>
#include <ostrum/tls.h>

// Symbol classes of the module file.
enum {
    SYMBOL_GLOBAL = 0,
    SYMBOL_EXTERNAL = 1,
    SYMBOL_VALUE = 5,
    SYMBOL_CODE_VAR_START = 7,
    SYMBOL_CODE_VAR_END = 8,
    SYMBOL_SOURCE = 11,
    SYMBOL_OVERLAY_REF = 12,
    SYMBOL_SYSCALL = 13,
    SYMBOL_DLL_NAME = 17,
};

enum { NUMBER_DECIMAL = 0 }; // format of ST_CharInt

/** Every symbol of a module goes through here. */
static void add_symbol(TLC_STREAM *stream, int32_t symbol_class, const char *name,
                       const char *type_name, int32_t value)
{
    char message[160];
    const int32_t result = KOB_Symbol(stream->object, symbol_class, name, type_name, value);
    if (result == 0) return;
    std::snprintf(message, sizeof message, "Failed to create symbol '%s' : %s", name,
                  KOB_Message(result));
    TLC_Error(stream, message);
}

/** Adds a symbol named after the module and a suffix. */
static void add_module_symbol(TLC_STREAM *stream, int32_t symbol_class, const char *suffix,
                              const char *type_name, int32_t value)
{
    char name[TLC_SYMBOL_NAME_SIZE];
    ST_Concat(name, sizeof name, TLP_ModuleName(stream->module), suffix, nullptr);
    add_symbol(stream, symbol_class, name, type_name, value);
}

static int32_t add_overlay(void *context, const char *name, intptr_t)
{
    add_symbol(static_cast<TLC_STREAM *>(context), SYMBOL_OVERLAY_REF, name, "OVLY_ENTRY", 0);
    return 1;
}

static int32_t add_syscall(void *context, const char *name, intptr_t)
{
    TLC_STREAM *stream = static_cast<TLC_STREAM *>(context);
    const int32_t number = EEP_Syscall(TLP_SyscallData(stream->module), name);
    add_symbol(stream, SYMBOL_SYSCALL, name, "SYSCALL_DEF", number);
    return 1;
}

/** Adds the symbol of the library that a module's pragma names, written as name,number. */
static void add_library(TLC_STREAM *stream, TLP_MODULE *module)
{
    char name[TLC_SYMBOL_NAME_SIZE];
    TLI_DOMAIN *domain = TLP_ModuleDomain(module);
    if (domain == nullptr) return;
    TLI_IDENTIFIER *identifier = TLI_FindDomainIdentifier(domain, TLP_ModuleName(module));
    if (identifier == nullptr) return;
    const char *value = TLI_FindPragma(identifier, "DLL_NAME");
    if (value == nullptr) return;
    ST_Copy(name, sizeof name, value);
    int32_t number = 0;
    const char *comma = std::strchr(value, ',');
    if (comma != nullptr) ST_CharInt(comma + 1, &number, NUMBER_DECIMAL);
    char *end = std::strchr(name, ',');
    if (end != nullptr) *end = 0;
    add_symbol(stream, SYMBOL_DLL_NAME, name, "DLL_NAME", number);
}

static int32_t add_used_library(void *context, const char *, TLP_MODULE *module)
{
    add_library(static_cast<TLC_STREAM *>(context), module);
    return 1;
}

// The section laid last, and the address behind it.
struct LAYOUT {
    TLC_PSECT *last;
    uint64_t address; // may leave what the module file can hold
};

static void lay_section(TLC_STREAM *stream, LAYOUT *layout, TLC_PSECT *section)
{
    const bool is_odd = layout->address % 2 != 0;
    if (is_odd && (section->align & TLC_EVEN) != 0) {
        *TLC_Extend(stream, layout->last, 1) = 0;
        layout->address++;
    }
    section->address = static_cast<uint32_t>(layout->address);
    layout->address += section->size;
    layout->last = section;
}

static void lay_list(TLC_STREAM *stream, LAYOUT *layout, const TLC_PSECT_LIST &list)
{
    for (TLC_PSECT *at = list.head; at != nullptr; at = at->next)
        lay_section(stream, layout, at);
}

/** False if the image is larger than a module file can be. */
static bool lay_out(TLC_STREAM *stream)
{
    LAYOUT layout = { .last = nullptr, .address = 0 };
    // An empty section behind the non-volatiles marks their end.
    if (stream->nonvolatiles.head != nullptr) TLC_NonVolPSect(stream);
    lay_list(stream, &layout, stream->constants);
    lay_list(stream, &layout, stream->nonvolatiles);
    lay_list(stream, &layout, stream->code);
    return layout.address <= TLC_LARGEST_IMAGE;
}

/** Section of the statement of a tree's node; null if the node has none. */
static TLC_PSECT *node_section(TLI_IDENTIFIER *node)
{
    TLS_STATEMENT *record = static_cast<TLS_STATEMENT *>(TLIC_NodeData(node));
    if (record == nullptr || record->statement_class->node_section == nullptr) return nullptr;
    return record->statement_class->node_section(record);
}

/** Distance from a fix-up's place to an address of the image. */
static int32_t distance(const TLC_PSECT *section, const TLC_FIXUP *fixup, uint32_t address)
{
    return static_cast<int32_t>(address - section->address - fixup->offset);
}

static void apply_jump(TLC_STREAM *stream, TLC_PSECT *section, TLC_JUMP_FIXUP *jump)
{
    if (jump->target == nullptr && jump->node != nullptr) jump->target = node_section(jump->node);
    if (jump->target == nullptr) {
        TLC_Error(stream, "Jump has no target");
        return;
    }
    const int32_t displacement = distance(section, &jump->common, jump->target->address);
    if (displacement < INT16_MIN || displacement > INT16_MAX) {
        TLC_Error(stream, "Jump out of range");
        return;
    }
    IFC_Store16(section->code + jump->common.offset, static_cast<uint32_t>(displacement));
}

static void apply_string(TLC_STREAM *stream, TLC_PSECT *section, const TLC_STRING_FIXUP *string)
{
    const uint32_t address = stream->string_section->address + string->string_offset;
    const int32_t displacement = distance(section, &string->common, address);
    IFC_Store32(section->code + string->common.offset, static_cast<uint32_t>(displacement));
}

/** Section that a reference leads to, if it lies in this image. */
static TLC_PSECT *internal_target(const TLC_SYMBOL_FIXUP *symbol)
{
    if (symbol->identifier == nullptr || symbol->common.symbol_class != SYMBOL_EXTERNAL) {
        return nullptr;
    }
    return TLI_IdentifierPSect(symbol->identifier);
}

static void apply_symbol(TLC_STREAM *stream, TLC_PSECT *section, const TLC_SYMBOL_FIXUP *symbol)
{
    char buffer[TLC_SYMBOL_NAME_SIZE];
    const TLC_FIXUP *fixup = &symbol->common;
    const TLC_PSECT *target = internal_target(symbol);
    if (target != nullptr) {
        const int32_t displacement = distance(section, fixup, target->address);
        IFC_Store32(section->code + fixup->offset, static_cast<uint32_t>(displacement));
        return;
    }
    const char *name = symbol->name;
    if (name == nullptr) name = TLC_IdentifierSymbol(symbol->identifier, buffer);
    add_symbol(stream, fixup->symbol_class, name, TLI_IdentifierName(symbol->type),
               static_cast<int32_t>(section->address + fixup->offset));
}

static void apply_fixup(TLC_STREAM *stream, TLC_PSECT *section, TLC_FIXUP *fixup)
{
    switch (fixup->kind) {
    case TLC_FIXUP_JUMP:
        apply_jump(stream, section, reinterpret_cast<TLC_JUMP_FIXUP *>(fixup));
        break;
    case TLC_FIXUP_STRING:
        apply_string(stream, section, reinterpret_cast<const TLC_STRING_FIXUP *>(fixup));
        break;
    case TLC_FIXUP_SYMBOL:
        apply_symbol(stream, section, reinterpret_cast<const TLC_SYMBOL_FIXUP *>(fixup));
        break;
    case TLC_FIXUP_STATIC:
        KOB_StaticData(stream->object, static_cast<int32_t>(section->address + fixup->offset));
        break;
    }
}

static void generate_section(TLC_STREAM *stream, TLC_PSECT *section)
{
    for (TLC_FIXUP *fixup = section->fixups; fixup != nullptr; fixup = fixup->next) {
        apply_fixup(stream, section, fixup);
    }
    if (section->size == 0) return;
    KOB_Code(stream->object, section->code, static_cast<int32_t>(section->size));
}

static void generate_list(TLC_STREAM *stream, const TLC_PSECT_LIST &list)
{
    for (TLC_PSECT *at = list.head; at != nullptr; at = at->next)
        generate_section(stream, at);
}

static int32_t address_of(const TLC_PSECT *section)
{
    return static_cast<int32_t>(section->address);
}

static void add_constant_symbols(TLC_STREAM *stream)
{
    const TLC_PSECT *strings = stream->string_section;
    if (strings->size != 0) {
        add_module_symbol(stream, SYMBOL_GLOBAL, ".STRINGS", "STRINGS", address_of(strings));
    }
    const TLC_PSECT *constants = strings->next;
    if (constants != nullptr) {
        add_module_symbol(stream, SYMBOL_GLOBAL, ".CONSTANTS", "CONSTANTS", address_of(constants));
    }
}

static void add_nonvolatile_symbols(TLC_STREAM *stream)
{
    const TLC_PSECT_LIST &list = stream->nonvolatiles;
    if (list.head == nullptr) return;
    add_module_symbol(stream, SYMBOL_CODE_VAR_START, ".$NONVOLSTART", "CODE",
                      address_of(list.head));
    add_module_symbol(stream, SYMBOL_CODE_VAR_END, ".$NONVOLEND", "CODE", address_of(list.tail));
}

/** The symbol of the whole code is named after the source file, not after the module. */
static void add_code_symbol(TLC_STREAM *stream)
{
    char name[TLC_SYMBOL_NAME_SIZE];
    if (stream->code.head == nullptr) return;
    ST_Lower(name, sizeof name, TLP_ModuleSourceFile(stream->module));
    char *point = std::strchr(name, '.');
    if (point != nullptr) *point = 0;
    ST_Append(name, sizeof name, ".$CODE");
    add_symbol(stream, SYMBOL_GLOBAL, name, "CODE", address_of(stream->code.head));
}

void TLC_GenerateObjectCode(TLC_STREAM *stream, KOB_MODULE *object)
{
    stream->object = object;
    add_symbol(stream, SYMBOL_SOURCE, TLP_ModuleSourceFile(stream->module), "CODE", 0);
    HS_AllNames(stream->overlays, add_overlay, stream);
    add_library(stream, stream->module);
    TLP_AllUsesModules(stream->module, add_used_library, stream);
    HS_AllNames(stream->syscalls, add_syscall, stream);
    if (!lay_out(stream)) {
        TLC_Error(stream, "Module too large");
        return;
    }
    generate_list(stream, stream->constants);
    generate_list(stream, stream->nonvolatiles);
    generate_list(stream, stream->code);
    add_constant_symbols(stream);
    add_nonvolatile_symbols(stream);
    add_code_symbol(stream);
}

void TLC_GlobalValue(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    char suffix[TLC_SYMBOL_NAME_SIZE];
    intptr_t value = 0;
    if (!TLIC_ConstantValue(stream->module, identifier, 0, &value)) return;
    ST_Concat(suffix, sizeof suffix, ".", TLI_IdentifierName(identifier), nullptr);
    add_module_symbol(stream, SYMBOL_VALUE, suffix,
                      TLI_IdentifierName(TLI_IdentifierType(identifier)),
                      static_cast<int32_t>(value));
}
