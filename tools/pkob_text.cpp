// A module as text for a reader at a terminal. Bytes that are no printable ASCII come out escaped,
// so that no module can send the terminal anything.

#include "pkob.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>
#include <ctime>

enum {
    BYTES_PER_LINE = 16,
    BYTES_SHOWN = 5,      // of an instruction
    STRING_SHOWN = 40,    // characters of a string constant beside an instruction
    OVERVIEW_SOURCES = 5, // source files that the overview names
};

std::string pkob_escaped(std::string_view text)
{
    std::string result;
    for (char character : text) {
        auto c = (unsigned char)character;
        char hex[8];
        snprintf(hex, sizeof hex, "\\x%02x", c);
        if (c == '\\' || c == '"') {
            result += '\\';
            result += (char)c;
        } else if (c >= 0x20 && c < 0x7F) {
            result += (char)c;
        } else {
            result += hex;
        }
    }
    return result;
}

static std::string time_text(uint32_t timestamp)
{
    auto seconds = (time_t)timestamp;
    struct tm fields = {};
    if (gmtime_r(&seconds, &fields) == nullptr) return std::to_string(timestamp);
    char text[64];
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &fields);
    return text;
}

static std::string flags_text(uint32_t flags)
{
    char number[16];
    snprintf(number, sizeof number, "0x%04" PRIx32, flags);
    std::string text = number;
    const char *separator = ": ";
    for (uint32_t bit = 1; bit != 0; bit <<= 1) {
        const char *name = (flags & bit) != 0 ? pkob_flag_name(bit) : nullptr;
        if (name == nullptr) continue;
        text += separator;
        text += name;
        separator = ", ";
    }
    return text;
}

static void print_header(const PKOB_MODULE &module)
{
    const KOB_MODULE *handle = module.handle;
    printf("Header\n");
    printf("  name            %s\n", pkob_escaped(KOB_Name(handle)).c_str());
    printf("  format version  %" PRId32 "\n", KOBR_GetKOBVersion());
    printf("  made            %s\n", time_text(KOB_Timestamp(handle)).c_str());
    printf("  tool            %" PRId32 " %s %s\n", KOB_Tool(handle), KOB_ToolName(handle),
           pkob_escaped(KOB_ToolVersion(handle)).c_str());
    printf("  flags           %s\n", flags_text(KOB_Flags(handle)).c_str());
    printf("  module size     %" PRId32 "\n", KOB_ModuleSize(handle));
    printf("  code size       %" PRId32 "\n", KOB_CodeSize(handle));
    printf("  static size     %" PRIu32 "\n", (uint32_t)KOB_StaticSize(handle));
    printf("  static offsets  %zu\n", module.static_offsets.size());
    printf("  symbols         %zu\n", module.symbols.size());
    printf("  debug frames    %zu\n\n", module.frames.size());
}

/** "3 GLOBAL, 1 SOURCE": how many of each class there are; unknown ones are one class, the last. */
static std::string count_classes(std::vector<int32_t> classes, int32_t known,
                                 const char *(*class_name)(int32_t))
{
    for (int32_t &code : classes)
        if (code < 0 || code > known) code = known;
    std::sort(classes.begin(), classes.end());
    std::string text;
    for (size_t i = 0; i < classes.size();) {
        size_t next = i;
        while (next < classes.size() && classes[next] == classes[i])
            next++;
        text += i > 0 ? ", " : ": ";
        text += std::to_string(next - i) + " " + class_name(classes[i]);
        i = next;
    }
    return text;
}

static std::string symbol_counts(const PKOB_MODULE &module)
{
    std::vector<int32_t> classes;
    for (const PKOB_SYMBOL &symbol : module.symbols)
        classes.push_back(symbol.symbol_class);
    return count_classes(classes, KOB_CLASS_COUNT, KOB_ClassName);
}

static std::string frame_counts(const PKOB_MODULE &module)
{
    std::vector<int32_t> classes;
    for (const PKOB_FRAME &frame : module.frames)
        classes.push_back(frame.frame_class);
    return count_classes(classes, KOBD_CLASS_COUNT, KOBD_ClassName);
}

static void print_sources(const PKOB_MODULE &module)
{
    size_t count = 0;
    for (const PKOB_SYMBOL &symbol : module.symbols) {
        if (symbol.symbol_class != KOB_SOURCE) continue;
        if (count++ < OVERVIEW_SOURCES)
            printf("  source   %s\n", pkob_escaped(symbol.name).c_str());
    }
    if (count > OVERVIEW_SOURCES) printf("  sources  %zu in all\n", count);
}

static void print_overview(const PKOB_MODULE &module)
{
    const KOB_MODULE *handle = module.handle;
    printf("%s\n", pkob_escaped(KOB_Name(handle)).c_str());
    printf("  file     %s, %" PRId32 " bytes\n", pkob_escaped(module.file_name).c_str(),
           KOB_ModuleSize(handle));
    printf("  made     %s by %s %s\n", time_text(KOB_Timestamp(handle)).c_str(),
           KOB_ToolName(handle), pkob_escaped(KOB_ToolVersion(handle)).c_str());
    printf("  flags    %s\n", flags_text(KOB_Flags(handle)).c_str());
    print_sources(module);
    const char *country = KOB_Country(module.handle);
    if (country != nullptr) printf("  country  %s\n", pkob_escaped(country).c_str());
    printf("  code     %" PRId32 " bytes\n", KOB_CodeSize(handle));
    printf("  statics  %" PRIu32 " bytes, %zu offsets\n", (uint32_t)KOB_StaticSize(handle),
           module.static_offsets.size());
    printf("  symbols  %zu%s\n", module.symbols.size(), symbol_counts(module).c_str());
    printf("  frames   %zu%s\n\n", module.frames.size(), frame_counts(module).c_str());
}

static void print_static_offsets(const PKOB_MODULE &module)
{
    printf("Static offsets\n");
    for (int32_t offset : module.static_offsets)
        printf("  %08" PRIx32 "\n", (uint32_t)offset);
    printf("\n");
}

static void print_symbols(const PKOB_MODULE &module, const PKOB_OPTIONS &options)
{
    printf("Symbols\n");
    for (const PKOB_SYMBOL &symbol : module.symbols) {
        if (!pkob_is_wanted(options, symbol.name)) continue;
        printf("  %08" PRIx32 "  %-16s %-16s %s\n", (uint32_t)symbol.value,
               KOB_ClassName(symbol.symbol_class), pkob_escaped(symbol.type).c_str(),
               pkob_escaped(symbol.name).c_str());
    }
    printf("\n");
}

static std::string entry_type_text(const PKOB_ENTRY &entry)
{
    std::string text = pkob_escaped(KOBD_TypeName(entry.type, entry.flags));
    return (entry.flags & KOBD_POINTER) != 0 ? text + " pointer" : text;
}

static void print_frames(const PKOB_MODULE &module)
{
    printf("Debug frames\n");
    for (const PKOB_FRAME &frame : module.frames) {
        printf("  %s %s, size %" PRId32 ", line %" PRId32 "\n", KOBD_ClassName(frame.frame_class),
               pkob_escaped(frame.name).c_str(), frame.size, frame.line);
        for (const PKOB_ENTRY &entry : frame.entries)
            printf("    %6" PRId32 "  %-24s dimension %-5" PRId32 " flags %04" PRIx32 "  %s\n",
                   entry.offset, pkob_escaped(entry.name).c_str(), entry.dimension,
                   (uint32_t)entry.flags & 0xFFFF, entry_type_text(entry).c_str());
    }
    printf("\n");
}

/** Lines of an address, up to 16 bytes and their characters. */
static void print_bytes(const PKOB_MODULE &module, int32_t address, int32_t size)
{
    for (int32_t done = 0; done < size; done += BYTES_PER_LINE) {
        int32_t count = std::min<int32_t>(size - done, BYTES_PER_LINE);
        const uint8_t *bytes = module.image + address + done;
        std::string characters;
        printf("  %08" PRIx32 " ", (uint32_t)(address + done));
        for (int32_t i = 0; i < count; i++) {
            printf(" %02x", bytes[i]);
            characters += bytes[i] >= 0x20 && bytes[i] < 0x7F ? (char)bytes[i] : '.';
        }
        printf("%*s  %s\n", 3 * (BYTES_PER_LINE - count), "", characters.c_str());
    }
}

static void print_string(const PKOB_MODULE &module, int32_t address)
{
    int32_t length = 0;
    const char *text = pkob_string_at(module, address, &length);
    if (text == nullptr) return;
    bool is_cut = length > STRING_SHOWN;
    printf(" \"%s\"%s", pkob_escaped({ text, (size_t)(is_cut ? STRING_SHOWN : length) }).c_str(),
           is_cut ? "..." : "");
}

static void print_operand(const PKOB_MODULE &module, const PKOB_INSTRUCTION &instruction)
{
    if (instruction.code == EEP_STRCMP) {
        printf(" %s", EEP_Mnemonic(module.codes, instruction.operand, nullptr, nullptr));
    } else if (instruction.target >= 0) {
        printf(" %08" PRIx32, (uint32_t)instruction.target);
    } else if (instruction.operand_size > 0 &&
               (instruction.name == nullptr || instruction.operand_size < 4)) {
        printf(" %" PRId32, instruction.operand);
    }
    if (instruction.name != nullptr) printf(" %s", pkob_escaped(instruction.name).c_str());
    if (instruction.code == EEP_LCA && instruction.target >= 0)
        print_string(module, instruction.target);
}

static void print_table(const PKOB_MODULE &module, const PKOB_INSTRUCTION &instruction)
{
    bool has_default = instruction.code == EEP_SWITCH;
    for (int32_t i = 0; i < instruction.table_size; i++) {
        int32_t target = pkob_table_target(module, instruction, i);
        printf("  %08" PRIx32 "  %02x %02x             ", (uint32_t)(instruction.table + 2 * i),
               module.image[instruction.table + 2 * i],
               module.image[instruction.table + 2 * i + 1]);
        if (has_default && i == 0) {
            printf("default %08" PRIx32 "\n", (uint32_t)target);
        } else {
            printf("%7" PRId32 " %08" PRIx32 "\n", has_default ? i - 1 : i, (uint32_t)target);
        }
    }
}

static void print_instruction(const PKOB_MODULE &module, const PKOB_INSTRUCTION &instruction)
{
    if (instruction.code < 0) {
        print_bytes(module, instruction.address, instruction.size);
        return;
    }
    int32_t size = 1 + instruction.operand_size;
    printf("  %08" PRIx32 " ", (uint32_t)instruction.address);
    for (int32_t i = 0; i < size; i++)
        printf(" %02x", module.image[instruction.address + i]);
    printf("%*s   %s", 3 * (BYTES_SHOWN - size), "", instruction.mnemonic);
    print_operand(module, instruction);
    printf("\n");
    print_table(module, instruction);
}

static void print_labels(const PKOB_MODULE &module, const PKOB_BLOCK &block, size_t *label)
{
    const std::vector<PKOB_PLACE> &labels = module.labels;
    while (*label < labels.size() && labels[*label].address < block.address)
        ++*label;
    size_t first = *label;
    for (; *label < labels.size() && labels[*label].address == block.address; ++*label)
        printf("%s:\n", pkob_escaped(labels[*label].name).c_str());
    if (*label == first) printf("%08" PRIx32 ":\n", (uint32_t)block.address);
}

static void print_block(const PKOB_MODULE &module, const PKOB_BLOCK &block)
{
    if (block.kind != PKOB_CODE_BLOCK) {
        print_bytes(module, block.address, block.size);
        return;
    }
    int32_t end = block.address + block.size;
    for (int32_t at = block.address; at < end;) {
        PKOB_INSTRUCTION instruction = pkob_decode(module, at, end);
        print_instruction(module, instruction);
        at += instruction.size;
    }
}

static void print_code(const PKOB_MODULE &module, const PKOB_OPTIONS &options)
{
    size_t label = 0;
    if (options.symbols.empty()) printf("Code\n");
    for (const PKOB_BLOCK &block : module.blocks) {
        if (!pkob_is_wanted_block(module, options, block)) continue;
        print_labels(module, block, &label);
        print_block(module, block);
    }
    printf("\n");
}

static void print_image(const PKOB_MODULE &module)
{
    printf("Image\n");
    print_bytes(module, 0, module.image_size);
    printf("\n");
}

void pkob_print_text(const PKOB_MODULE &module, const PKOB_DATA &data, const PKOB_OPTIONS &options)
{
    if ((options.parts & PKOB_OVERVIEW) != 0) print_overview(module);
    if ((options.parts & PKOB_HEADER) != 0) print_header(module);
    if ((options.parts & PKOB_STATIC_OFFSETS) != 0) print_static_offsets(module);
    if ((options.parts & PKOB_SYMBOLS) != 0) print_symbols(module, options);
    if ((options.parts & PKOB_FRAMES) != 0) print_frames(module);
    if ((options.parts & PKOB_CODE) != 0) print_code(module, options);
    if ((options.parts & PKOB_IMAGE) != 0) print_image(module);
    if ((options.parts & PKOB_DATA_SECTIONS) != 0) pkob_print_data(data);
    if ((options.parts & PKOB_HELP_SCREENS) != 0) pkob_print_screens(data);
}
