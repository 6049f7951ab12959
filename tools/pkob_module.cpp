// What pkob takes from a module: its records, and the blocks and instructions of its image.

#include "pkob.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

// Records.

static int32_t keep_offset(void *module, int32_t offset)
{
    ((PKOB_MODULE *)module)->static_offsets.push_back(offset);
    return 1;
}

static int32_t keep_symbol(void *module, KOB_SYMBOL *symbol, const char *name)
{
    ((PKOB_MODULE *)module)
        ->symbols.push_back({ .name = name,
                              .type = KOB_SymbolType(symbol),
                              .symbol_class = KOB_SymbolClass(symbol),
                              .value = KOB_SymbolValue(symbol) });
    return 1;
}

static int32_t keep_entry(void *frame, const char *name, KOBD_ENTRY *entry)
{
    ((PKOB_FRAME *)frame)
        ->entries.push_back({ .name = name,
                              .type = KOBD_EntryType(entry),
                              .flags = KOBD_EntryFlags(entry),
                              .dimension = KOBD_EntryDimension(entry),
                              .offset = KOBD_EntryOffset(entry) });
    return 1;
}

static int32_t keep_frame(void *module, const char *name, KOBD_FRAME *frame)
{
    std::vector<PKOB_FRAME> &frames = ((PKOB_MODULE *)module)->frames;
    frames.push_back({ .name = name,
                       .frame_class = KOBD_FrameClass(frame),
                       .size = KOBD_FrameSize(frame),
                       .line = KOBD_FrameLineNumber(frame),
                       .entries = {} });
    KOBD_AllEntries(frame, keep_entry, &frames.back());
    return 1;
}

void pkob_load(PKOB_MODULE *module)
{
    module->image = KOB_CodeAddress(module->handle);
    module->image_size = KOB_CodeSize(module->handle);
    KOB_AllStaticOffsets(module->handle, keep_offset, module);
    KOB_AllSymbols(module->handle, keep_symbol, module);
    KOBD_AllFrames(module->handle, keep_frame, module);
    pkob_find_blocks(module);
}

// Marks: places at which a block begins.

/** What a mark tells of the bytes behind it. Where several meet, the highest wins. */
enum MARK { MARK_NONE, MARK_END, MARK_REGION, MARK_CODE, MARK_DATA, MARK_STRINGS };

static bool is_address(const PKOB_MODULE &module, int32_t value)
{
    return value >= 0 && value < module.image_size;
}

static bool ends_with(const char *text, const char *ending)
{
    size_t length = strlen(text);
    size_t ending_length = strlen(ending);
    return length >= ending_length && strcmp(text + length - ending_length, ending) == 0;
}

/** The mark of a symbol that names a place in the image. */
static MARK mark_of(const PKOB_SYMBOL &symbol)
{
    switch (symbol.symbol_class) {
    case KOB_CODE_VAR_START:
        return MARK_DATA;
    case KOB_CODE_VAR_END:
        return MARK_END;
    case KOB_GLOBAL:
    case KOB_LOCAL:
    case KOB_ENTRY_POINT:
        break;
    default:
        return MARK_NONE;
    }
    if (strcmp(symbol.type, "START") == 0) return MARK_NONE;
    if (strcmp(symbol.type, "STRINGS") == 0) return MARK_STRINGS;
    if (strcmp(symbol.type, "CODE") != 0) return MARK_DATA;
    return ends_with(symbol.name, ".$CODE") ? MARK_REGION : MARK_CODE;
}

static bool is_reference(int32_t symbol_class)
{
    return symbol_class == KOB_EXTERNAL || symbol_class == KOB_VALUEREF ||
           symbol_class == KOB_EXTREF;
}

static bool is_lower(const PKOB_PLACE &a, const PKOB_PLACE &b)
{
    return a.address < b.address;
}

static void put_mark(std::vector<uint8_t> *marks, int32_t address, MARK mark)
{
    uint8_t &at = (*marks)[(size_t)address];
    at = std::max(at, (uint8_t)mark);
}

static void mark_symbols(PKOB_MODULE *module, std::vector<uint8_t> *marks)
{
    for (const PKOB_SYMBOL &symbol : module->symbols) {
        MARK mark = mark_of(symbol);
        if (is_reference(symbol.symbol_class))
            module->references.push_back({ .address = symbol.value, .name = symbol.name });
        if (symbol.symbol_class == KOB_SYSCALL)
            module->syscalls.push_back({ .address = symbol.value, .name = symbol.name });
        if (mark == MARK_NONE || !is_address(*module, symbol.value)) continue;
        put_mark(marks, symbol.value, mark);
        module->labels.push_back({ .address = symbol.value, .name = symbol.name });
    }
    std::stable_sort(module->labels.begin(), module->labels.end(), is_lower);
    std::stable_sort(module->references.begin(), module->references.end(), is_lower);
    std::stable_sort(module->syscalls.begin(), module->syscalls.end(), is_lower);
}

/** First place of an address, or null. */
static const char *name_at(const std::vector<PKOB_PLACE> &places, int32_t address)
{
    PKOB_PLACE wanted = { .address = address, .name = nullptr };
    auto found = std::lower_bound(places.begin(), places.end(), wanted, is_lower);
    return found != places.end() && found->address == address ? found->name : nullptr;
}

const char *pkob_label_at(const PKOB_MODULE &module, int32_t address)
{
    return name_at(module.labels, address);
}

const char *pkob_reference_at(const PKOB_MODULE &module, int32_t address)
{
    return name_at(module.references, address);
}

// Instructions. Every read of the image is held to limit, which is at most its size.

/** Big-endian number of 1, 2 or 4 bytes, with sign. */
static int32_t number_at(const PKOB_MODULE &module, int32_t address, int32_t size)
{
    const uint8_t *bytes = module.image + address;
    if (size == 1) return (int8_t)bytes[0];
    if (size == 2) return (int16_t)(bytes[0] << 8 | bytes[1]);
    return (int32_t)((uint32_t)bytes[0] << 24 | (uint32_t)bytes[1] << 16 | (uint32_t)bytes[2] << 8 |
                     bytes[3]);
}

static int32_t whole_operand(const PKOB_MODULE &module, int32_t code, int32_t kind, int32_t address,
                             int32_t size)
{
    int32_t value = size == 0 ? 0 : number_at(module, address, size);
    bool has_sign = kind == EEP_KIND_JUMP || kind == EEP_KIND_REFERENCE || code == EEP_SLIT ||
                    code == EEP_MLIT || size == 4;
    if (has_sign) return value;
    return size == 1 ? (uint8_t)value : (uint16_t)value;
}

/** Where a distance from a place leads; -1 outside the image. */
static int32_t target_at(const PKOB_MODULE &module, int32_t address, int32_t distance)
{
    int64_t target = (int64_t)address + distance;
    return target >= 0 && target < module.image_size ? (int32_t)target : -1;
}

static void decode_operand(const PKOB_MODULE &module, PKOB_INSTRUCTION *instruction, int32_t kind)
{
    int32_t place = instruction->address + 1;
    int32_t code = instruction->code;
    instruction->operand = whole_operand(module, code, kind, place, instruction->operand_size);
    if (instruction->operand_size == 4 || code >= EEP_USER)
        instruction->name = name_at(module.references, place);
    if (instruction->name != nullptr) return; // the linker fills it
    if (kind == EEP_KIND_JUMP || kind == EEP_KIND_REFERENCE) {
        instruction->target = target_at(module, place, instruction->operand);
        if (kind == EEP_KIND_REFERENCE && instruction->target >= 0)
            instruction->name = pkob_label_at(module, instruction->target);
    }
    if (code == EEP_SYSCALL || code == EEP_SHORT_SYSCALL)
        instruction->name = name_at(module.syscalls, instruction->operand);
}

/** Adds the table of SWITCH and NODE; false if it does not end before limit. */
static bool decode_table(PKOB_INSTRUCTION *instruction, int32_t limit)
{
    if (instruction->code != EEP_SWITCH && instruction->code != EEP_NODE) return true;
    int32_t entries = instruction->operand + (instruction->code == EEP_SWITCH ? 1 : 0);
    instruction->table = instruction->address + 2;
    instruction->table_size = entries;
    instruction->size += 2 * entries;
    return instruction->size <= limit - instruction->address;
}

PKOB_INSTRUCTION pkob_decode(const PKOB_MODULE &module, int32_t address, int32_t limit)
{
    PKOB_INSTRUCTION instruction = { .address = address,
                                     .size = 1,
                                     .code = module.image[address],
                                     .mnemonic = nullptr,
                                     .operand_size = 0,
                                     .operand = 0,
                                     .target = -1,
                                     .name = nullptr,
                                     .table = 0,
                                     .table_size = 0 };
    int32_t kind = EEP_KIND_NONE;
    instruction.mnemonic =
        EEP_Mnemonic(module.codes, instruction.code, &kind, &instruction.operand_size);
    instruction.size += instruction.operand_size;
    bool is_whole = instruction.size <= limit - address;
    if (is_whole) {
        decode_operand(module, &instruction, kind);
        is_whole = decode_table(&instruction, limit);
    }
    if (is_whole) return instruction;
    return { .address = address,
             .size = limit - address,
             .code = -1,
             .mnemonic = nullptr,
             .operand_size = 0,
             .operand = 0,
             .target = -1,
             .name = nullptr,
             .table = 0,
             .table_size = 0 };
}

int32_t pkob_table_target(const PKOB_MODULE &module, const PKOB_INSTRUCTION &instruction, int32_t i)
{
    int32_t place = instruction.table + 2 * i;
    return place + number_at(module, place, 2);
}

// Blocks.

/** State of the search: each place is walked over once, so the work is that of the image's size. */
struct SEARCH {
    PKOB_MODULE *module;
    std::vector<uint8_t> marks;  // MARK of each byte
    std::vector<uint8_t> walked; // an instruction begins here
    std::vector<int32_t> starts; // still to be walked from
};

static void note_function(SEARCH *search, int32_t address)
{
    put_mark(&search->marks, address, MARK_CODE);
    search->starts.push_back(address);
}

static void walk_code(SEARCH *search, int32_t address)
{
    const PKOB_MODULE &module = *search->module;
    int32_t start = address;
    while (address < module.image_size && !search->walked[(size_t)address]) {
        if (search->marks[(size_t)address] >= MARK_DATA) return;
        search->walked[(size_t)address] = 1;
        PKOB_INSTRUCTION instruction = pkob_decode(module, address, module.image_size);
        if (instruction.code == EEP_ALLOC && address != start)
            put_mark(&search->marks, address, MARK_CODE);
        bool leads_to_function = instruction.code == EEP_CALL || instruction.code == EEP_FIND_SCOPE;
        if (leads_to_function && instruction.target >= 0) note_function(search, instruction.target);
        address += instruction.size;
    }
}

static PKOB_BLOCK_KIND kind_of(uint8_t mark)
{
    if (mark == MARK_STRINGS) return PKOB_STRING_BLOCK;
    return mark == MARK_REGION || mark == MARK_CODE ? PKOB_CODE_BLOCK : PKOB_DATA_BLOCK;
}

static void cut_blocks(PKOB_MODULE *module, const std::vector<uint8_t> &marks)
{
    for (int32_t at = 0; at < module->image_size; at++) {
        uint8_t mark = marks[(size_t)at];
        if (mark == MARK_NONE && at != 0) continue;
        if (!module->blocks.empty()) {
            PKOB_BLOCK &last = module->blocks.back();
            last.size = at - last.address;
        }
        module->blocks.push_back(
            { .address = at, .size = module->image_size - at, .kind = kind_of(mark) });
    }
}

/** The code list begins at the lowest region mark; without one, all of the image is shown. */
static size_t find_code_list(const PKOB_MODULE &module)
{
    int32_t lowest = module.image_size;
    for (const PKOB_SYMBOL &symbol : module.symbols)
        if (mark_of(symbol) == MARK_REGION && is_address(module, symbol.value))
            lowest = std::min(lowest, symbol.value);
    for (size_t i = 0; i < module.blocks.size(); i++)
        if (module.blocks[i].address == lowest) return i;
    return 0;
}

void pkob_find_blocks(PKOB_MODULE *module)
{
    SEARCH search = { .module = module,
                      .marks = std::vector<uint8_t>((size_t)module->image_size),
                      .walked = std::vector<uint8_t>((size_t)module->image_size),
                      .starts = {} };
    mark_symbols(module, &search.marks);
    if (module->labels.empty() && module->image_size > 0)
        put_mark(&search.marks, 0, MARK_CODE); // nothing tells what it is
    for (int32_t at = 0; at < module->image_size; at++)
        if (kind_of(search.marks[(size_t)at]) == PKOB_CODE_BLOCK) search.starts.push_back(at);
    while (!search.starts.empty()) {
        int32_t start = search.starts.back();
        search.starts.pop_back();
        walk_code(&search, start);
    }
    cut_blocks(module, search.marks);
    module->first_code_block = find_code_list(*module);
}

const PKOB_BLOCK *pkob_block_at(const PKOB_MODULE &module, int32_t address)
{
    auto is_behind = [](int32_t at, const PKOB_BLOCK &block) { return at < block.address; };
    auto next = std::upper_bound(module.blocks.begin(), module.blocks.end(), address, is_behind);
    return next == module.blocks.begin() ? nullptr : &*(next - 1);
}

const char *pkob_string_at(const PKOB_MODULE &module, int32_t address, int32_t *length)
{
    const PKOB_BLOCK *block = pkob_block_at(module, address);
    if (block == nullptr || block->kind != PKOB_STRING_BLOCK) return nullptr;
    const char *text = (const char *)module.image + address;
    *length = (int32_t)strnlen(text, (size_t)(block->address + block->size - address));
    return text;
}

// What is asked for.

bool pkob_is_named(std::string_view name, std::string_view wanted)
{
    if (wanted.size() > name.size()) return false;
    const size_t before = name.size() - wanted.size();
    if (before > 0 && name[before - 1] != '.') return false;
    return strncasecmp(name.data() + before, wanted.data(), wanted.size()) == 0;
}

bool pkob_is_wanted(const PKOB_OPTIONS &options, const char *name)
{
    if (options.symbols.empty()) return true;
    for (const char *wanted : options.symbols)
        if (pkob_is_named(name, wanted)) return true;
    return false;
}

bool pkob_is_wanted_block(const PKOB_MODULE &module, const PKOB_OPTIONS &options,
                          const PKOB_BLOCK &block)
{
    if (options.symbols.empty())
        return block.address >= module.blocks[module.first_code_block].address;
    PKOB_PLACE wanted = { .address = block.address, .name = nullptr };
    auto range = std::equal_range(module.labels.begin(), module.labels.end(), wanted, is_lower);
    for (auto label = range.first; label != range.second; ++label)
        if (pkob_is_wanted(options, label->name)) return true;
    return false;
}

const char *pkob_flag_name(uint32_t flag)
{
    switch (flag) {
    case 0x001:
        return "warnings";
    case 0x002:
        return "errors";
    case 0x004:
        return "debug frames";
    case 0x010:
        return "unresolved references";
    case 0x040:
        return "trees";
    case 0x080:
        return "allocates space";
    default:
        return nullptr;
    }
}
