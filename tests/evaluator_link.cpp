// Modules in memory: reading them from their files, and filling the references between them.
#include "evaluator.h"

#include <algorithm>
#include <cstring>

#include <ostrum.h>

namespace evaluator
{

namespace
{

struct Reference {
    size_t image;
    int32_t symbol_class;
    std::string name;
    std::string type;
    uint32_t field;
};

using Key = std::pair<std::string, std::string>; // name, type

struct Linking {
    Program *program;
    std::vector<Reference> references;
    std::map<Key, uint32_t> globals; // addresses
    std::map<Key, uint32_t> values;
    std::vector<std::map<Key, uint32_t>> locals; // addresses, by image
    std::set<std::string> names;                 // of all definitions
    std::vector<uint32_t> area_starts;
};

void write_word(uint8_t *bytes, uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        bytes[i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

bool is_function(int32_t symbol_class, const std::string &name, const std::string &type)
{
    const std::string region = ".$CODE";
    const bool names_region = name.size() >= region.size() &&
                              name.compare(name.size() - region.size(), region.size(), region) == 0;
    const bool defines =
        symbol_class == KOB_GLOBAL || symbol_class == KOB_ENTRY_POINT || symbol_class == KOB_LOCAL;
    return defines && type == "CODE" && !names_region;
}

void define(Linking *linking, int32_t symbol_class, const Key &key, uint32_t value)
{
    Image &image = linking->program->images.back();
    if (symbol_class == KOB_GLOBAL || symbol_class == KOB_ENTRY_POINT)
        linking->globals.emplace(key, image.base + value);
    if (symbol_class == KOB_LOCAL) linking->locals.back().emplace(key, image.base + value);
    if (symbol_class == KOB_VALUE) linking->values.emplace(key, value);
    if (is_function(symbol_class, key.first, key.second)) image.functions[value] = key.first;
    if (symbol_class == KOB_SYSCALL) image.syscalls[value] = key.first;
    if (symbol_class == KOB_CODE_VAR_START) linking->area_starts.push_back(value);
    if (symbol_class == KOB_CODE_VAR_END && !linking->area_starts.empty()) {
        image.non_volatile.emplace_back(linking->area_starts.back(), value);
        linking->area_starts.pop_back();
    }
    linking->names.insert(key.first);
}

int32_t add_symbol(void *context, KOB_SYMBOL *symbol, const char *name)
{
    auto *linking = static_cast<Linking *>(context);
    const int32_t symbol_class = KOB_SymbolClass(symbol);
    const auto value = static_cast<uint32_t>(KOB_SymbolValue(symbol));
    const Key key{ name, KOB_SymbolType(symbol) };
    const bool refers =
        symbol_class == KOB_EXTERNAL || symbol_class == KOB_VALUEREF || symbol_class == KOB_EXTREF;
    if (refers) {
        linking->references.push_back(
            { linking->program->images.size() - 1, symbol_class, key.first, key.second, value });
    } else {
        define(linking, symbol_class, key, value);
    }
    return 1;
}

int32_t relocate(void *context, int32_t offset)
{
    Program *program = static_cast<Linking *>(context)->program;
    Image &image = program->images.back();
    const auto at = static_cast<uint32_t>(offset);
    if (image.code.size() < 4 || at > image.code.size() - 4) {
        program->problems.push_back(image.name + ": static offset outside of the code");
        return 1;
    }
    write_word(&image.code[at], read_number(&image.code[at], 4) + image.static_base);
    return 1;
}

void read_module(Linking *linking, const std::string &file, uint32_t *next)
{
    KOB_MODULE *module = nullptr;
    if (KOB_OpenModule(&module, file.c_str()) != 0) {
        linking->program->problems.push_back(file + ": cannot be opened as a module");
        return;
    }
    Image &image = linking->program->images.emplace_back();
    linking->locals.emplace_back();
    linking->area_starts.clear();
    image.name = KOB_Name(module);
    image.code.resize(static_cast<uint32_t>(KOB_CodeSize(module)));
    if (!image.code.empty())
        KOB_ReadCode(module, image.code.data(), 0, static_cast<int32_t>(image.code.size()));
    image.owner.resize(image.code.size());
    constexpr uint32_t largest = 0x1000000;
    constexpr uint32_t gap = 0x10000; // keeps a wild address from reaching another item
    const auto static_size = static_cast<uint32_t>(KOB_StaticSize(module));
    image.base = *next;
    image.static_base = (image.base + static_cast<uint32_t>(image.code.size()) + gap) & ~0xFFU;
    image.statics.resize(std::min(static_size, largest));
    *next = (image.static_base + static_cast<uint32_t>(image.statics.size()) + gap) & ~0xFFU;
    KOB_AllStaticOffsets(module, relocate, linking);
    KOB_AllSymbols(module, add_symbol, linking);
    KOB_CloseModule(module, 0, 1);
}

std::optional<uint32_t> find_target(const Linking &linking, const Reference &reference)
{
    const Key key{ reference.name, reference.type };
    const auto &table = reference.symbol_class == KOB_VALUEREF ? linking.values : linking.globals;
    if (const auto at = table.find(key); at != table.end()) return at->second;
    if (reference.symbol_class == KOB_VALUEREF) return std::nullopt;
    const auto &locals = linking.locals[reference.image];
    if (const auto at = locals.find(key); at != locals.end()) return at->second;
    return std::nullopt;
}

void resolve_field(const Linking &linking, const Reference &reference)
{
    Program *program = linking.program;
    Image &image = program->images[reference.image];
    if (image.code.size() < 4 || reference.field > image.code.size() - 4) {
        program->problems.push_back(image.name +
                                    ": reference outside of the code: " + reference.name);
        return;
    }
    const std::optional<uint32_t> target = find_target(linking, reference);
    if (!target) {
        image.unresolved.insert(reference.field);
        return;
    }
    const uint32_t from = reference.symbol_class == KOB_VALUEREF ? 0 : image.base + reference.field;
    write_word(&image.code[reference.field], *target - from);
}

} // namespace

uint32_t read_number(const uint8_t *bytes, int size)
{
    uint32_t value = 0;
    for (int i = 0; i < size; ++i)
        value = value << 8 | bytes[i];
    return value;
}

int32_t signed_number(const uint8_t *bytes, int size)
{
    const auto value = static_cast<int32_t>(read_number(bytes, size) << (32 - 8 * size));
    return value >> (32 - 8 * size);
}

Program link(const std::vector<std::string> &files)
{
    KOB_Initialise();
    Program program;
    Linking linking{};
    linking.program = &program;
    uint32_t next = 0x10000000;
    for (const std::string &file : files)
        read_module(&linking, file, &next);
    for (const Reference &reference : linking.references) {
        if (reference.symbol_class == KOB_EXTREF) {
            if (reference.field > 0)
                program.images[reference.image].user_codes[reference.field - 1] = reference.name;
        } else {
            resolve_field(linking, reference);
        }
    }
    return program;
}

std::optional<std::pair<size_t, uint32_t>> find_code(const Program &program, uint32_t address)
{
    for (size_t i = 0; i < program.images.size(); ++i) {
        const Image &image = program.images[i];
        if (address >= image.base && address - image.base < image.code.size())
            return std::pair{ i, address - image.base };
    }
    return std::nullopt;
}

namespace
{

uint8_t *part_of(std::vector<uint8_t> *bytes, uint32_t base, uint32_t address, uint32_t size)
{
    if (address < base || address - base > bytes->size()) return nullptr;
    return size <= bytes->size() - (address - base) ? bytes->data() + (address - base) : nullptr;
}

bool is_non_volatile(const Image &image, uint32_t offset, uint32_t size)
{
    return std::any_of(image.non_volatile.begin(), image.non_volatile.end(), [&](auto &area) {
        return offset >= area.first && offset + size <= area.second;
    });
}

} // namespace

uint8_t *memory(Program *program, uint32_t address, uint32_t size, bool for_writing)
{
    if (address >= FRAME_BASE) return part_of(&program->frames, FRAME_BASE, address, size);
    if (address >= TEXT_BASE)
        return for_writing ? nullptr : part_of(&program->texts, TEXT_BASE, address, size);
    for (Image &image : program->images) {
        if (uint8_t *at = part_of(&image.statics, image.static_base, address, size)) return at;
        uint8_t *at = part_of(&image.code, image.base, address, size);
        if (at == nullptr) continue;
        const bool is_writable = is_non_volatile(image, address - image.base, size);
        return for_writing && !is_writable ? nullptr : at;
    }
    return nullptr;
}

std::optional<std::string> text_at(Program *program, uint32_t address)
{
    std::string text;
    while (const uint8_t *at = memory(program, address, 1, false)) {
        if (*at == 0) return text;
        text += static_cast<char>(*at);
        ++address;
    }
    return std::nullopt;
}

uint32_t place_text(Program *program, const std::string &text)
{
    const auto at = static_cast<uint32_t>(program->texts.size());
    program->texts.insert(program->texts.end(), text.begin(), text.end());
    program->texts.push_back(0);
    return TEXT_BASE + at;
}

} // namespace evaluator
