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

static void print_text(std::string_view text)
{
    putchar('"');
    for (char character : text) {
        auto c = (unsigned char)character;
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

static void text_member(LIST *list, const char *name, std::string_view text)
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

/** The name of a member: that of an attribute in small letters. */
static void value_member(LIST *list, const char *name)
{
    next_member(list);
    putchar('"');
    for (const char *at = name; *at != 0; at++)
        printf("%s%c", at > name && *at >= 'A' && *at <= 'Z' ? "_" : "",
               *at >= 'A' && *at <= 'Z' ? *at + 'a' - 'A' : *at);
    printf("\":");
}

static void print_reference(const PKOB_VALUE &value)
{
    LIST list = {};
    putchar('{');
    if (value.target == PKOB_TEXT) text_member(&list, "text", value.text);
    if (value.target == PKOB_NAMED) text_member(&list, "symbol", value.text);
    if (value.number >= 0) number_member(&list, "address", value.number);
    putchar('}');
}

static void print_words(const PKOB_VALUE &value)
{
    LIST list = {};
    putchar('[');
    for (const std::string &word : pkob_words(value)) {
        next_member(&list);
        print_text(word);
    }
    putchar(']');
}

static void print_quantity(const PKOB_VALUE &value)
{
    LIST list = {};
    putchar('{');
    text_member(&list, "quantity", EUC_QuantityName(value.quantity));
    number_member(&list, "count", value.number);
    text_member(&list, "text", pkob_quantity_text(value.quantity, value.number));
    putchar('}');
}

static void print_value(const PKOB_VALUE &value)
{
    if (!value.is_given) {
        printf("null");
        return;
    }
    switch (value.kind) {
    case PKOB_NUMBER:
        printf("%" PRId32, value.number);
        break;
    case PKOB_LINE:
        print_text(pkob_line_text(value.number));
        break;
    case PKOB_WORDS:
        print_words(value);
        break;
    case PKOB_QUANTITY_TYPE:
        print_text(EUC_QuantityName(value.number));
        break;
    case PKOB_QUANTITY:
        print_quantity(value);
        break;
    case PKOB_REFERENCE:
        print_reference(value);
        break;
    }
}

static void print_values(const PKOB_ITEM &item)
{
    LIST list = {};
    putchar('{');
    for (const PKOB_VALUE &value : item.values) {
        value_member(&list, value.name);
        print_value(value);
    }
    putchar('}');
}

static void print_samples(const PKOB_ITEM &item)
{
    LIST list = {};
    putchar('[');
    for (int32_t i = 0; i < item.sample_count; i++) {
        next_member(&list);
        printf("%d", item.samples[i]);
    }
    putchar(']');
}

/** An item without those that stand in it. */
static void print_item_members(LIST *list, const PKOB_ITEM &item)
{
    text_member(list, "kind", item.kind);
    if (!item.symbol.empty()) {
        text_member(list, "name", item.name);
        text_member(list, "symbol", item.symbol);
    }
    number_member(list, "address", item.address);
    if (!item.values.empty()) {
        member(list, "values");
        print_values(item);
    }
    if (item.samples == nullptr) return;
    member(list, "samples");
    print_samples(item);
}

/** Items stand in one another three deep at most. */
static void print_items(const std::vector<PKOB_ITEM> &items)
{
    LIST list = {};
    putchar('[');
    for (const PKOB_ITEM &item : items) {
        LIST members = {};
        next_member(&list);
        putchar('{');
        print_item_members(&members, item);
        if (!item.items.empty()) {
            member(&members, "items");
            print_items(item.items);
        }
        putchar('}');
    }
    putchar(']');
}

static void start_part(LIST *list, const char *name)
{
    next_member(list);
    printf("\n \"%s\":", name);
}

void pkob_print_json(const PKOB_MODULE &module, const PKOB_DATA &data, const PKOB_OPTIONS &options)
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
    if ((options.parts & PKOB_DATA_SECTIONS) != 0) {
        start_part(&list, "data");
        print_items(data.sections);
    }
    printf("}");
}
