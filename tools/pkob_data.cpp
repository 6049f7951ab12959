// Records of data sections. Which stands where is told by the module's symbols; every read is held to
// the end of the section.

#include "pkob.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <utility>

namespace
{

// Layouts of the records.

enum FIELD_KIND {
    FIELD_ZERO,   // a byte that is 0
    FIELD_ONE,    // a byte that is 1
    FIELD_BYTE,   // of words
    FIELD_OLD,    // quantity number of a converter's raw value
    FIELD_RESULT, // of what comes out of it
    FIELD_FUNCTION,
    FIELD_OWNER, // distance to the section's record
    FIELD_PIN,   // distance to the pin that a point stands on
    FIELD_VIEW,  // distance to any view
    FIELD_LINE,
    FIELD_SHORT,
    FIELD_LONG,
    FIELD_COUNT_OLD, // counts of the two quantities
    FIELD_COUNT_RESULT,
    FIELD_TERM,
};

struct FIELD {
    const char *name; // null ends a table
    FIELD_KIND kind;
    const PKOB_WORD *words;
};

constexpr PKOB_WORD view_words[] = { { 1, "Removable", "Fixed" },
                                     { 2, "Back", "Front" },
                                     { 0, nullptr, nullptr } };
constexpr PKOB_WORD sex_words[] = { { 1, "FEMALE", "MALE" }, { 0, nullptr, nullptr } };
constexpr PKOB_WORD converter_words[] = { { 1, "Invert", nullptr },
                                          { 2, "Reciprocal", nullptr },
                                          { 4, "SwapLowerBytes", nullptr },
                                          { 0, nullptr, nullptr } };
constexpr PKOB_WORD screen_words[] = { { 1, "Popup", "Fullscreen" }, { 0, nullptr, nullptr } };

constexpr FIELD connector_fields[] = {
    { "", FIELD_ONE, nullptr },          { "Name", FIELD_TERM, nullptr },
    { "Mnemonic", FIELD_TERM, nullptr }, { "Location", FIELD_TERM, nullptr },
    { "Cable", FIELD_SHORT, nullptr },   { "Helpscreen", FIELD_TERM, nullptr },
    { nullptr, FIELD_ZERO, nullptr }
};
constexpr FIELD view_fields[] = {
    { "Flags", FIELD_BYTE, view_words },   { "Name", FIELD_TERM, nullptr },
    { "Connector", FIELD_OWNER, nullptr }, { "Shell", FIELD_TERM, nullptr },
    { "Component", FIELD_TERM, nullptr },  { nullptr, FIELD_ZERO, nullptr }
};
constexpr FIELD view_with_help_fields[] = {
    { "Flags", FIELD_BYTE, view_words },   { "Name", FIELD_TERM, nullptr },
    { "Connector", FIELD_OWNER, nullptr }, { "Shell", FIELD_TERM, nullptr },
    { "Component", FIELD_TERM, nullptr },  { "Helpscreen", FIELD_TERM, nullptr },
    { nullptr, FIELD_ZERO, nullptr }
};
constexpr FIELD pin_fields[] = { { "", FIELD_ZERO, nullptr },
                                 { "Name", FIELD_TERM, nullptr },
                                 { "Connector", FIELD_OWNER, nullptr },
                                 { nullptr, FIELD_ZERO, nullptr } };
constexpr FIELD point_fields[] = {
    { "Sex", FIELD_BYTE, sex_words },    { "Name", FIELD_TERM, nullptr },
    { "Pin", FIELD_PIN, nullptr },       { "View", FIELD_VIEW, nullptr },
    { "Location", FIELD_TERM, nullptr }, { "SignalName", FIELD_TERM, nullptr },
    { "Line", FIELD_LINE, nullptr },     { nullptr, FIELD_ZERO, nullptr }
};
constexpr FIELD variable_fields[] = { { "", FIELD_ZERO, nullptr },
                                      { "Name", FIELD_TERM, nullptr },
                                      { "Location", FIELD_TERM, nullptr },
                                      { "Attributes", FIELD_SHORT, nullptr },
                                      { nullptr, FIELD_ZERO, nullptr } };
constexpr FIELD component_fields[] = {
    { "", FIELD_ZERO, nullptr },           { "Name", FIELD_TERM, nullptr },
    { "Parent", FIELD_TERM, nullptr },     { "Location", FIELD_TERM, nullptr },
    { "Helpscreen", FIELD_TERM, nullptr }, { nullptr, FIELD_ZERO, nullptr }
};
constexpr FIELD converter_fields[] = { { "Flags", FIELD_BYTE, converter_words },
                                       { "QuantityType", FIELD_RESULT, nullptr },
                                       { "OldType", FIELD_OLD, nullptr },
                                       { "Name", FIELD_TERM, nullptr },
                                       { "Next", FIELD_TERM, nullptr },
                                       { "Offset", FIELD_COUNT_RESULT, nullptr },
                                       { "Multiplier", FIELD_LONG, nullptr },
                                       { "Divisor", FIELD_LONG, nullptr },
                                       { "TransferLibrary", FIELD_TERM, nullptr },
                                       { "FuncId", FIELD_FUNCTION, nullptr },
                                       { "", FIELD_ZERO, nullptr },
                                       { nullptr, FIELD_ZERO, nullptr } };
constexpr FIELD state_fields[] = { { "Low", FIELD_COUNT_RESULT, nullptr },
                                   { "High", FIELD_COUNT_RESULT, nullptr },
                                   { "Text", FIELD_TERM, nullptr },
                                   { nullptr, FIELD_ZERO, nullptr } };
constexpr FIELD map_fields[] = { { "Input", FIELD_COUNT_OLD, nullptr },
                                 { "Output", FIELD_COUNT_RESULT, nullptr },
                                 { nullptr, FIELD_ZERO, nullptr } };

struct RECORD {
    int32_t type; // first byte
    const char *kind;
    const FIELD *fields;
};

enum { END_RECORD = 2 };

constexpr RECORD record_table[] = {
    { 1, "CONNECTOR", connector_fields },
    { 3, "VIEW", view_fields },
    { 4, "PIN", pin_fields },
    { 5, "POINT", point_fields },
    { 6, "COMPONENT", component_fields },
    { 7, "CONVERTER", converter_fields },
    { 10, "VIEW", view_with_help_fields },
    { 11, "VARLOC", variable_fields },
};

const RECORD *find_record(int32_t type)
{
    for (const RECORD &record : record_table)
        if (record.type == type) return &record;
    return nullptr;
}

// Places of the module that records are found by.

struct PLACE {
    int32_t address;
    const char *type;
    const char *name;
};

struct INDEX {
    const PKOB_MODULE *module;
    std::vector<PLACE> sections;
    std::vector<PLACE> items;         // symbols of what stands in sections
    std::vector<int32_t> limits;      // where a section or a function begins
    std::vector<int32_t> string_ends; // places of the zeros behind strings
};

bool is_before(const PLACE &a, const PLACE &b)
{
    if (a.address != b.address) return a.address < b.address;
    return strcmp(a.type, b.type) < 0;
}

bool is_one_of(const char *type, std::initializer_list<const char *> types)
{
    for (const char *one : types)
        if (strcmp(type, one) == 0) return true;
    return false;
}

/** Constants may have the same types; they stand ahead of the code list. */
int32_t first_address(const PKOB_MODULE &module)
{
    if (module.blocks.empty()) return 0;
    return module.blocks[module.first_code_block].address;
}

void index_symbol(INDEX *index, const PKOB_SYMBOL &symbol)
{
    PLACE place = { symbol.value, symbol.type, symbol.name };
    if (is_one_of(symbol.type, { "VIEW", "PIN", "POINT", "VARLOC" })) {
        index->items.push_back(place);
        return;
    }
    if (is_one_of(symbol.type, { "CONNECTOR", "HELPSCREEN", "COMPONENT", "CONVERTER", "WAVEFORM" }))
        index->sections.push_back(place);
    index->limits.push_back(symbol.value);
}

void index_strings(INDEX *index)
{
    for (const PKOB_BLOCK &block : index->module->blocks) {
        if (block.kind != PKOB_STRING_BLOCK) continue;
        for (int32_t at = block.address; at < block.address + block.size; at++)
            if (index->module->image[at] == 0) index->string_ends.push_back(at);
    }
}

INDEX make_index(const PKOB_MODULE &module)
{
    INDEX index = { &module, {}, {}, {}, {} };
    for (const PKOB_SYMBOL &symbol : module.symbols) {
        bool is_place = symbol.symbol_class == KOB_GLOBAL || symbol.symbol_class == KOB_LOCAL ||
                        symbol.symbol_class == KOB_ENTRY_POINT;
        if (!is_place || symbol.value < first_address(module)) continue;
        if (symbol.value < module.image_size) index_symbol(&index, symbol);
    }
    std::stable_sort(index.sections.begin(), index.sections.end(), is_before);
    std::stable_sort(index.items.begin(), index.items.end(), is_before);
    std::sort(index.limits.begin(), index.limits.end());
    index_strings(&index);
    return index;
}

/** Name of the item of a type at an address, or null. */
const char *find_item(const INDEX &index, int32_t address, const char *type)
{
    PLACE wanted = { address, type, nullptr };
    auto found = std::lower_bound(index.items.begin(), index.items.end(), wanted, is_before);
    bool is_it = found != index.items.end() && !is_before(wanted, *found);
    return is_it ? found->name : nullptr;
}

/** Length of the string at an address; -1 if there is no whole one. */
int32_t string_length(const INDEX &index, int32_t address)
{
    const PKOB_BLOCK *block = pkob_block_at(*index.module, address);
    if (block == nullptr || block->kind != PKOB_STRING_BLOCK) return -1;
    auto end = std::lower_bound(index.string_ends.begin(), index.string_ends.end(), address);
    if (end == index.string_ends.end() || *end >= block->address + block->size) return -1;
    return *end - address;
}

/** A name without that of the item it stands in. */
std::string_view short_name(std::string_view name, std::string_view owner)
{
    bool is_longer = name.size() > owner.size() + 1 && name[owner.size()] == '.';
    return is_longer && name.starts_with(owner) ? name.substr(owner.size() + 1) : name;
}

// Reading.

struct READER {
    const INDEX *index;
    int32_t at;
    int32_t limit;       // end of the section
    int32_t old_type;    // quantities of the converter
    int32_t result_type; //
    PKOB_ITEM *section;
    const PKOB_ITEM *pin;  // that points stand on
    PKOB_PROBLEM *problem; // its text is empty as long as there is none
};

bool is_sound(const READER &reader)
{
    return reader.problem->text.empty();
}

void fail(READER *reader, int32_t address, const std::string &text)
{
    if (!is_sound(*reader)) return;
    reader->problem->address = address;
    reader->problem->text = text;
}

/** Takes a big-endian number of 1, 2 or 4 bytes; 0 if the section ends before. */
uint32_t take(READER *reader, int32_t size)
{
    if (size > reader->limit - reader->at) fail(reader, reader->at, "the record is cut short");
    if (!is_sound(*reader)) return 0;
    uint32_t number = 0;
    for (int32_t i = 0; i < size; i++)
        number = number << 8 | reader->index->module->image[reader->at + i];
    reader->at += size;
    return number;
}

void take_fixed(READER *reader, uint32_t wanted)
{
    int32_t place = reader->at;
    if (take(reader, 1) != wanted) fail(reader, place, "the byte is not " + std::to_string(wanted));
}

/** Takes a distance of 2 bytes and gives where it leads; -1 for none. */
int32_t take_link(READER *reader)
{
    int32_t place = reader->at;
    int32_t distance = (int16_t)take(reader, 2);
    return distance == 0 ? -1 : place + distance;
}

void take_owner(READER *reader, const PKOB_ITEM *owner)
{
    int32_t place = reader->at;
    int32_t target = take_link(reader);
    if (owner == nullptr || target != owner->address)
        fail(reader, place, "the link does not lead to the item that this one stands in");
}

void take_view(READER *reader, PKOB_VALUE *value)
{
    int32_t place = reader->at;
    int32_t target = take_link(reader);
    if (target == -1) return;
    const char *name = find_item(*reader->index, target, "VIEW");
    if (name == nullptr) return fail(reader, place, "the link does not lead to a view");
    value->number = target;
    value->is_given = true;
    value->target = PKOB_NAMED;
    value->text = short_name(name, reader->section->symbol);
}

/** What stands at an address that a term leads to. */
void find_target(READER *reader, int32_t place, PKOB_VALUE *value)
{
    const PKOB_MODULE &module = *reader->index->module;
    const PKOB_BLOCK *block = pkob_block_at(module, value->number);
    const char *name = pkob_label_at(module, value->number);
    int32_t length = string_length(*reader->index, value->number);
    if (length >= 0) {
        value->target = PKOB_TEXT;
        value->text = { (const char *)module.image + value->number, (size_t)length };
    } else if (block == nullptr || block->kind == PKOB_STRING_BLOCK) {
        fail(reader, place, "the reference leads to no whole string");
    } else {
        value->target = name != nullptr ? PKOB_NAMED : PKOB_UNNAMED;
        value->text = name != nullptr ? name : "";
    }
}

void take_term(READER *reader, PKOB_VALUE *value)
{
    const PKOB_MODULE &module = *reader->index->module;
    int32_t place = reader->at;
    int32_t distance = (int32_t)take(reader, 4);
    if (!is_sound(*reader)) return;
    const char *symbol = pkob_reference_at(module, place);
    int64_t target = (int64_t)place + distance;
    value->is_given = symbol != nullptr || distance != 0;
    if (symbol != nullptr) {
        value->target = PKOB_NAMED;
        value->text = symbol;
        value->number = -1;
    } else if (target < 0 || target >= module.image_size) {
        fail(reader, place, "the reference leads out of the image");
    } else if (distance != 0) {
        value->number = (int32_t)target;
        find_target(reader, place, value);
    }
}

void take_quantity_type(READER *reader, PKOB_VALUE *value, int32_t *type)
{
    int32_t place = reader->at;
    value->kind = PKOB_QUANTITY_TYPE;
    value->number = (int32_t)take(reader, 1);
    if (value->number > EUC_GetMaxType())
        return fail(reader, place, "no quantity has number " + std::to_string(value->number));
    *type = value->number;
}

void take_count(READER *reader, PKOB_VALUE *value, int32_t quantity)
{
    value->kind = PKOB_QUANTITY;
    value->quantity = quantity;
    value->number = (int32_t)take(reader, 4);
}

PKOB_VALUE new_value(const char *name, PKOB_VALUE_KIND kind)
{
    return { .name = name,
             .kind = kind,
             .is_given = kind != PKOB_REFERENCE,
             .number = 0,
             .quantity = 0,
             .words = nullptr,
             .target = PKOB_NOTHING,
             .text = {} };
}

void take_line(READER *reader, PKOB_VALUE *value)
{
    value->kind = PKOB_LINE;
    value->number = (int32_t)take(reader, 2);
    value->is_given = value->number != 0xFFFF;
}

/** The number of a library's function: 255 is one only where there is a library. */
void take_function(READER *reader, PKOB_VALUE *value, const PKOB_ITEM &converter)
{
    value->number = (int32_t)take(reader, 1);
    value->is_given =
        value->number != 0xFF || pkob_find_value(converter, "TransferLibrary") != nullptr;
}

/** Reads a field that has a value. */
void take_value(READER *reader, const FIELD &field, PKOB_ITEM *item)
{
    bool is_reference = field.kind == FIELD_TERM || field.kind == FIELD_VIEW;
    PKOB_VALUE value = new_value(field.name, is_reference ? PKOB_REFERENCE : PKOB_NUMBER);
    if (field.kind == FIELD_BYTE) {
        value.kind = PKOB_WORDS;
        value.words = field.words;
        value.number = (int32_t)take(reader, 1);
    }
    if (field.kind == FIELD_OLD) take_quantity_type(reader, &value, &reader->old_type);
    if (field.kind == FIELD_RESULT) take_quantity_type(reader, &value, &reader->result_type);
    if (field.kind == FIELD_FUNCTION) take_function(reader, &value, *item);
    if (field.kind == FIELD_VIEW) take_view(reader, &value);
    if (field.kind == FIELD_LINE) take_line(reader, &value);
    if (field.kind == FIELD_SHORT) value.number = (int32_t)take(reader, 2);
    if (field.kind == FIELD_LONG) value.number = (int32_t)take(reader, 4);
    if (field.kind == FIELD_COUNT_OLD) take_count(reader, &value, reader->old_type);
    if (field.kind == FIELD_COUNT_RESULT) take_count(reader, &value, reader->result_type);
    if (field.kind == FIELD_TERM) take_term(reader, &value);
    if (is_sound(*reader)) item->values.push_back(value);
}

void take_field(READER *reader, const FIELD &field, PKOB_ITEM *item)
{
    switch (field.kind) {
    case FIELD_ZERO:
        return take_fixed(reader, 0);
    case FIELD_ONE:
        return take_fixed(reader, 1);
    case FIELD_OWNER:
        return take_owner(reader, reader->section);
    case FIELD_PIN:
        return take_owner(reader, reader->pin);
    default:
        return take_value(reader, field, item);
    }
}

void take_fields(READER *reader, const FIELD *fields, PKOB_ITEM *item)
{
    for (; fields->name != nullptr && is_sound(*reader); fields++)
        take_field(reader, *fields, item);
}

PKOB_ITEM new_item(const char *kind, int32_t address)
{
    return { .kind = kind,
             .symbol = {},
             .name = {},
             .address = address,
             .is_row = false,
             .is_whole = true,
             .values = {},
             .items = {},
             .samples = nullptr,
             .sample_count = 0 };
}

// Connectors and components: a record, those of its items, and an end.

void take_item(READER *reader)
{
    PKOB_ITEM *section = reader->section;
    int32_t place = reader->at;
    auto type = (int32_t)take(reader, 1);
    const RECORD *record = find_record(type);
    bool is_allowed =
        record != nullptr && is_one_of(record->kind, { "VIEW", "PIN", "POINT", "VARLOC" });
    if (strcmp(section->kind, "COMPONENT") == 0) is_allowed = is_allowed && type == 11;
    if (!is_allowed) return fail(reader, place, "no item here has type " + std::to_string(type));
    const char *symbol = find_item(*reader->index, place, record->kind);
    if (symbol == nullptr)
        return fail(reader, place, std::string("no symbol names this ") + record->kind);
    PKOB_ITEM item = new_item(record->kind, place);
    bool is_point = type == 5;
    item.symbol = symbol;
    take_fields(reader, record->fields, &item);
    if (!is_sound(*reader)) return;
    item.name = short_name(symbol, is_point ? reader->pin->symbol : section->symbol);
    (is_point ? section->items.back().items : section->items).push_back(std::move(item));
    if (!is_point) reader->pin = type == 4 ? &section->items.back() : nullptr;
}

void take_items(READER *reader)
{
    while (is_sound(*reader)) {
        bool is_end =
            reader->at < reader->limit && reader->index->module->image[reader->at] == END_RECORD;
        if (!is_end) {
            take_item(reader);
            continue;
        }
        take(reader, 1);
        return take_fixed(reader, 0);
    }
}

// Converters.

void take_rows(READER *reader, uint32_t count, const char *kind, const FIELD *fields)
{
    for (uint32_t i = 0; i < count && is_sound(*reader); i++) {
        PKOB_ITEM row = new_item(kind, reader->at);
        row.is_row = true;
        take_fields(reader, fields, &row);
        if (is_sound(*reader)) reader->section->items.push_back(std::move(row));
    }
}

void take_converter_rows(READER *reader)
{
    uint32_t states = take(reader, 2);
    uint32_t points = take(reader, 2);
    take_rows(reader, states, "STATE", state_fields);
    take_rows(reader, points, "MAP", map_fields);
    for (PKOB_ITEM &item : reader->section->items) // the text leads, as in source
        if (item.values.size() == 3)
            std::rotate(item.values.begin(), item.values.end() - 1, item.values.end());
}

void take_record(READER *reader)
{
    PKOB_ITEM *section = reader->section;
    int32_t place = reader->at;
    const RECORD *record = find_record((int32_t)take(reader, 1));
    if (record == nullptr || strcmp(record->kind, section->kind) != 0)
        return fail(reader, place, std::string("the record is no ") + section->kind);
    take_fields(reader, record->fields, section);
    return record->type == 7 ? take_converter_rows(reader) : take_items(reader);
}

void take_waveform(READER *reader)
{
    auto count = (int32_t)take(reader, 2);
    if (count > reader->limit - reader->at) fail(reader, reader->at, "the waveform is cut short");
    if (!is_sound(*reader)) return;
    reader->section->samples = reader->index->module->image + reader->at;
    reader->section->sample_count = count;
    reader->at += count;
}

// Help screens: words whose high 4 bits tell what follows.

enum HELP_CODE : uint32_t {
    HELP_END,
    HELP_TITLE,
    HELP_MESSAGE,
    HELP_PICTURE,
    HELP_LINK,
    HELP_POPUP,
    HELP_ITEM_HELP
};

void take_help_term(READER *reader, PKOB_ITEM *item, const char *name)
{
    PKOB_VALUE value = new_value(name, PKOB_REFERENCE);
    take_term(reader, &value);
    if (is_sound(*reader)) item->values.push_back(value);
}

/** A message or a picture, behind its code word. */
void take_help_item(READER *reader, uint32_t word, int32_t place, const PKOB_ITEM &help)
{
    bool is_message = word >> 28 == HELP_MESSAGE;
    PKOB_ITEM item = new_item(is_message ? "MESSAGE" : "PICTURE", place);
    take_help_term(reader, &item, is_message ? "Text" : "Picture");
    PKOB_VALUE flags = new_value("Flags", PKOB_NUMBER);
    flags.number = (int32_t)(word & 0xFFFFFFF);
    flags.is_given = flags.number != 0;
    item.values.push_back(flags);
    item.values.insert(item.values.end(), help.values.begin(), help.values.end());
    if (is_sound(*reader)) reader->section->items.push_back(std::move(item));
}

/** What stands ahead of the items: a popup or a title, then the link of a full screen. */
void take_help_start(READER *reader)
{
    PKOB_ITEM *screen = reader->section;
    PKOB_VALUE type = new_value("Type", PKOB_WORDS);
    auto next = [reader] {
        READER ahead = *reader;
        return reader->limit - reader->at < 4 ? 0 : take(&ahead, 4);
    };
    type.words = screen_words;
    type.number = next() == HELP_POPUP << 28 ? 1 : 0;
    screen->values.push_back(type);
    if (type.number == 1 || next() == HELP_TITLE << 28) {
        take(reader, 4);
        take_help_term(reader, screen, "Title");
    }
    if (type.number == 1 || next() != HELP_LINK << 28) return;
    take(reader, 4);
    take_help_term(reader, screen, "HelpScreen");
}

void take_help_screen(READER *reader)
{
    take_help_start(reader);
    PKOB_ITEM help = new_item("", 0); // for the next item
    while (is_sound(*reader)) {
        int32_t place = reader->at;
        // A screen whose END stands among its items has no word that ends it; fewer bytes are padding.
        if (reader->limit - place < 4 && help.values.empty()) return;
        uint32_t word = take(reader, 4);
        uint32_t code = word >> 28;
        if (!is_sound(*reader) || (word == 0 && help.values.empty())) return;
        if (code == HELP_MESSAGE || code == HELP_PICTURE) {
            take_help_item(reader, word, place, help);
            help.values.clear();
        } else if (word == HELP_ITEM_HELP << 28 && help.values.empty()) {
            take_help_term(reader, &help, "Help");
        } else {
            fail(reader, place, "the help screen has a wrong code word");
        }
    }
}

/** Reads a section that ends at limit at the latest. */
void read_section(const INDEX &index, const PLACE &place, int32_t limit, PKOB_DATA *data)
{
    PKOB_ITEM section = new_item(place.type, place.address);
    PKOB_PROBLEM problem = { place.name, place.address, "" };
    section.symbol = section.name = place.name;
    READER reader = { &index, place.address, limit, 0, 0, &section, nullptr, &problem };
    if (strcmp(place.type, "WAVEFORM") == 0) {
        take_waveform(&reader);
    } else if (strcmp(place.type, "HELPSCREEN") == 0) {
        take_help_screen(&reader);
    } else {
        take_record(&reader);
    }
    PLACE behind = { reader.at, "", "" };
    auto next = std::lower_bound(index.items.begin(), index.items.end(), behind, is_before);
    if (next != index.items.end() && next->address < limit)
        fail(&reader, next->address, "an item stands behind the end of the section");
    section.is_whole = is_sound(reader);
    if (!section.is_whole) data->problems.push_back(problem);
    data->sections.push_back(std::move(section));
}

} // namespace

PKOB_DATA pkob_read_data(const PKOB_MODULE &module)
{
    PKOB_DATA data;
    INDEX index = make_index(module);
    for (size_t i = 0; i < index.sections.size(); i++) {
        const PLACE &place = index.sections[i];
        auto limit = std::upper_bound(index.limits.begin(), index.limits.end(), place.address);
        int32_t end = limit == index.limits.end() ? module.image_size : *limit;
        if (i > 0 && index.sections[i - 1].address == place.address) {
            data.problems.push_back(
                { place.name, place.address, "another section stands at the same place" });
            continue;
        }
        read_section(index, place, end, &data);
    }
    return data;
}

const PKOB_VALUE *pkob_find_value(const PKOB_ITEM &item, const char *name)
{
    for (const PKOB_VALUE &value : item.values)
        if (strcmp(value.name, name) == 0) return value.is_given ? &value : nullptr;
    return nullptr;
}

// Values as text.

struct UNIT {
    int64_t magnitude; // of the count
    const char *text;
    int64_t multiplier;
};

/** Keeps the largest unit that the count has one of, or the smallest. */
static int32_t choose_unit(void *context, const char *text, int32_t multiplier)
{
    auto *unit = (UNIT *)context;
    if (unit->multiplier == 0 || unit->magnitude >= multiplier) {
        unit->text = text;
        unit->multiplier = multiplier;
    }
    return 1;
}

std::string pkob_quantity_text(int32_t quantity, int32_t count)
{
    UNIT unit = { count < 0 ? -(int64_t)count : count, nullptr, 0 };
    if (quantity == 0) return std::to_string(count);
    EUC_GetAllUnits(quantity, choose_unit, &unit);
    if (count == 0) unit.text = EUC_GetNaturalUnit(quantity, nullptr);
    std::string text = count < 0 ? "-" : "";
    text += std::to_string(unit.magnitude / unit.multiplier);
    int64_t rest = unit.magnitude % unit.multiplier;
    if (rest != 0) text += '.';
    while (rest != 0) {
        rest *= 10;
        text += (char)('0' + rest / unit.multiplier);
        rest %= unit.multiplier;
    }
    return text + (unit.text != nullptr ? unit.text : "");
}

std::vector<std::string> pkob_words(const PKOB_VALUE &value)
{
    std::vector<std::string> words;
    int32_t rest = value.number;
    for (const PKOB_WORD *word = value.words; word->bit != 0; word++) {
        const char *text = (value.number & word->bit) != 0 ? word->set : word->clear;
        if (text != nullptr) words.emplace_back(text);
        rest &= ~word->bit;
    }
    if (rest != 0) words.push_back(std::to_string(rest));
    return words;
}

std::string pkob_line_text(int32_t line)
{
    return line <= 128 ? std::to_string(line) : std::to_string(line - 128) + "H";
}

std::string pkob_utf8(std::string_view text)
{
    std::string result;
    for (char c : text) {
        auto byte = (unsigned char)c;
        if (byte < 0x80) {
            result += c;
        } else {
            result += (char)(0xC0 | byte >> 6);
            result += (char)(0x80 | (byte & 0x3F));
        }
    }
    return result;
}
