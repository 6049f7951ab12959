// A module as JSON. Texts are 8-bit in a module: each byte becomes the character of its number,
// escaped outside ASCII, so that the output is valid UTF-8 and loses nothing.

#include "pkob.h"

#include <cinttypes>

/** Separates the members of one object or array. */
struct LIST {
    bool is_started;
};

static void next_member(LIST *list)
{
    if (list->is_started) putchar(',');
    list->is_started = true;
}

static void print_text(const char *text)
{
    putchar('"');
    for (; *text != 0; text++) {
        auto c = (unsigned char)*text;
        if (c == '"' || c == '\\') {
            printf("\\%c", c);
        } else if (c >= 0x20 && c < 0x7F) {
            putchar(c);
        } else {
            printf("\\u%04x", c);
        }
    }
    putchar('"');
}

static void member(LIST *list, const char *name)
{
    next_member(list);
    printf("\"%s\":", name);
}

static void text_member(LIST *list, const char *name, const char *text)
{
    member(list, name);
    print_text(text);
}

static void number_member(LIST *list, const char *name, int64_t value)
{
    member(list, name);
    printf("%" PRId64, value);
}

static void bytes_member(LIST *list, const char *name, const uint8_t *bytes, int32_t size)
{
    member(list, name);
    putchar('"');
    for (int32_t i = 0; i < size; i++)
        printf("%02x", bytes[i]);
    putchar('"');
}

static void flags_member(LIST *list, uint32_t flags)
{
    number_member(list, "flags", flags);
    member(list, "flag_names");
    putchar('[');
    LIST names = {};
    for (uint32_t bit = 1; bit != 0; bit <<= 1) {
        const char *name = (flags & bit) != 0 ? pkob_flag_name(bit) : nullptr;
        if (name == nullptr) continue;
        next_member(&names);
        print_text(name);
    }
    putchar(']');
}

static void print_header(const PKOB_MODULE &module)
{
    const KOB_MODULE *handle = module.handle;
    LIST list = {};
    putchar('{');
    text_member(&list, "name", KOB_Name(handle));
    number_member(&list, "format_version", KOBR_GetKOBVersion());
    number_member(&list, "timestamp", KOB_Timestamp(handle));
    number_member(&list, "tool", KOB_Tool(handle));
    text_member(&list, "tool_name", KOB_ToolName(handle));
    text_member(&list, "tool_version", KOB_ToolVersion(handle));
    flags_member(&list, KOB_Flags(handle));
    number_member(&list, "module_size", KOB_ModuleSize(handle));
    number_member(&list, "code_size", KOB_CodeSize(handle));
    number_member(&list, "static_size", (uint32_t)KOB_StaticSize(handle));
    const char *country = KOB_Country(module.handle);
    if (country != nullptr) text_member(&list, "country", country);
    putchar('}');
}

static void print_static_offsets(const PKOB_MODULE &module)
{
    LIST list = {};
    putchar('[');
    for (int32_t offset : module.static_offsets) {
        next_member(&list);
        printf("%" PRIu32, (uint32_t)offset);
    }
    putchar(']');
}

static void print_symbol(const PKOB_SYMBOL &symbol)
{
    LIST list = {};
    putchar('{');
    text_member(&list, "name", symbol.name);
    number_member(&list, "class", symbol.symbol_class);
    text_member(&list, "class_name", KOB_ClassName(symbol.symbol_class));
    text_member(&list, "type", symbol.type);
    number_member(&list, "value", symbol.value);
    putchar('}');
}

static void print_symbols(const PKOB_MODULE &module, const PKOB_OPTIONS &options)
{
    LIST list = {};
    putchar('[');
    for (const PKOB_SYMBOL &symbol : module.symbols) {
        if (!pkob_is_wanted(options, symbol.name)) continue;
        next_member(&list);
        print_symbol(symbol);
    }
    putchar(']');
}

static void print_entry(const PKOB_ENTRY &entry)
{
    LIST list = {};
    putchar('{');
    text_member(&list, "name", entry.name);
    text_member(&list, "type", entry.type);
    number_member(&list, "flags", entry.flags & 0xFFFF);
    number_member(&list, "dimension", entry.dimension);
    number_member(&list, "offset", entry.offset);
    putchar('}');
}

static void print_frame(const PKOB_FRAME &frame)
{
    LIST list = {};
    putchar('{');
    text_member(&list, "name", frame.name);
    number_member(&list, "class", frame.frame_class);
    text_member(&list, "class_name", KOBD_ClassName(frame.frame_class));
    number_member(&list, "size", frame.size);
    number_member(&list, "line", frame.line);
    member(&list, "entries");
    LIST entries = {};
    putchar('[');
    for (const PKOB_ENTRY &entry : frame.entries) {
        next_member(&entries);
        print_entry(entry);
    }
    printf("]}");
}

static void print_frames(const PKOB_MODULE &module)
{
    LIST list = {};
    putchar('[');
    for (const PKOB_FRAME &frame : module.frames) {
        next_member(&list);
        print_frame(frame);
    }
    putchar(']');
}

static void print_table(const PKOB_MODULE &module, const PKOB_INSTRUCTION &instruction)
{
    LIST list = {};
    putchar('[');
    for (int32_t i = instruction.code == EEP_SWITCH; i < instruction.table_size; i++) {
        next_member(&list);
        printf("%" PRId32, pkob_table_target(module, instruction, i));
    }
    putchar(']');
}

static void print_instruction(const PKOB_MODULE &module, const PKOB_INSTRUCTION &instruction)
{
    LIST list = {};
    putchar('{');
    number_member(&list, "address", instruction.address);
    bytes_member(&list, "bytes", module.image + instruction.address, instruction.size);
    if (instruction.code >= 0) text_member(&list, "mnemonic", instruction.mnemonic);
    if (instruction.operand_size > 0) number_member(&list, "operand", instruction.operand);
    if (instruction.target >= 0) number_member(&list, "target", instruction.target);
    if (instruction.name != nullptr) text_member(&list, "name", instruction.name);
    if (instruction.code == EEP_SWITCH)
        number_member(&list, "default", pkob_table_target(module, instruction, 0));
    if (instruction.code == EEP_SWITCH || instruction.code == EEP_NODE) {
        member(&list, "table");
        print_table(module, instruction);
    }
    putchar('}');
}

static void print_instructions(const PKOB_MODULE &module, const PKOB_BLOCK &block)
{
    int32_t end = block.address + block.size;
    LIST list = {};
    putchar('[');
    for (int32_t at = block.address; at < end;) {
        PKOB_INSTRUCTION instruction = pkob_decode(module, at, end);
        next_member(&list);
        print_instruction(module, instruction);
        at += instruction.size;
    }
    putchar(']');
}

static void print_block(const PKOB_MODULE &module, const PKOB_BLOCK &block)
{
    LIST list = {};
    putchar('{');
    number_member(&list, "address", block.address);
    const char *name = pkob_label_at(module, block.address);
    if (name != nullptr) text_member(&list, "name", name);
    if (block.kind == PKOB_CODE_BLOCK) {
        member(&list, "instructions");
        print_instructions(module, block);
    } else {
        bytes_member(&list, "bytes", module.image + block.address, block.size);
    }
    putchar('}');
}

static void print_code(const PKOB_MODULE &module, const PKOB_OPTIONS &options)
{
    LIST list = {};
    putchar('[');
    for (const PKOB_BLOCK &block : module.blocks) {
        if (!pkob_is_wanted_block(module, options, block)) continue;
        next_member(&list);
        print_block(module, block);
    }
    putchar(']');
}

static void start_part(LIST *list, const char *name)
{
    next_member(list);
    printf("\n \"%s\":", name);
}

void pkob_print_json(const PKOB_MODULE &module, const PKOB_OPTIONS &options)
{
    LIST list = {};
    putchar('{');
    text_member(&list, "file", module.file_name);
    if ((options.parts & PKOB_HEADER) != 0) {
        start_part(&list, "header");
        print_header(module);
    }
    if ((options.parts & PKOB_STATIC_OFFSETS) != 0) {
        start_part(&list, "static_offsets");
        print_static_offsets(module);
    }
    if ((options.parts & PKOB_SYMBOLS) != 0) {
        start_part(&list, "symbols");
        print_symbols(module, options);
    }
    if ((options.parts & PKOB_FRAMES) != 0) {
        start_part(&list, "frames");
        print_frames(module);
    }
    if ((options.parts & PKOB_CODE) != 0) {
        start_part(&list, "code");
        print_code(module, options);
    }
    if ((options.parts & PKOB_IMAGE) != 0) {
        next_member(&list);
        putchar('\n');
        putchar(' ');
        LIST image = {};
        bytes_member(&image, "image", module.image, module.image_size);
    }
    printf("}");
}
