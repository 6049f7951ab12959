/*
 * Converters: a chain of steps from a raw reading to a quantity, each of a scale, named states, map
 * points or a function in a library. How they are applied is the run-time system's.
 */
#include "data/tldv.h"

#include "core/sh.h"

#include <iterator>

#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* Counts of states and of map points are 16 bits wide in the record. */
static constexpr int32_t LARGEST_COUNT = 0xFFFF;

static constexpr int32_t LARGEST_FUNCTION = 255;
static constexpr int32_t NO_FUNCTION = -1;

enum {
    OFFSET,
    NAME,
    NEXT,
    FLAGS,
    MULTIPLIER,
    DIVISOR,
    OLD_TYPE,
    QUANTITY_TYPE,
    TRANSFER_LIBRARY,
    FUNCTION_ID,
};

static constexpr TLD_ATTRIBUTE attributes[] = {
    { .code = OLD_TYPE, .word = "OldType", .type_name = "QUANTITY_TYPE" },
    { .code = QUANTITY_TYPE, .word = "QuantityType", .type_name = "QUANTITY_TYPE" },
    { .code = OFFSET, .word = "Offset", .type_name = "QUANTITY" },
    { .code = NAME, .word = "Name", .type_name = "MESSAGE" },
    { .code = NEXT, .word = "Next", .type_name = "CONVERTER" },
    { .code = FLAGS, .word = "Flags", .type_name = nullptr },
    { .code = MULTIPLIER, .word = "Multiplier", .type_name = "INT" },
    { .code = DIVISOR, .word = "Divisor", .type_name = "INT" },
    { .code = TRANSFER_LIBRARY, .word = "TransferLibrary", .type_name = "BINARY_DATA" },
    { .code = FUNCTION_ID, .word = "FuncId", .type_name = "INT" },
};

static constexpr TLD_ATTRIBUTE flag_words[] = {
    { .code = 0, .word = "NoInvert", .type_name = nullptr },
    { .code = 1, .word = "Invert", .type_name = nullptr },
    { .code = 2, .word = "Reciprocal", .type_name = nullptr },
    { .code = 4, .word = "SwapLowerBytes", .type_name = nullptr },
};

static TLDV_CONVERTER *converter_record(TLS_STATEMENT *item)
{
    return reinterpret_cast<TLDV_CONVERTER *>(item);
}

/* ---- Attributes ---- */

static void set_divisor(TLDV_CONVERTER *converter, TLT_STATEMENT *statement, int32_t divisor)
{
    if (divisor == 0) {
        TLT_Error(statement, "Cannot divide by zero");
    } else {
        converter->divisor = divisor;
    }
}

static void set_function(TLDV_CONVERTER *converter, TLT_STATEMENT *statement, int32_t id)
{
    if (id < 0 || id > LARGEST_FUNCTION) {
        TLT_Error(statement, "'FunctionID' must be 0-255");
    } else {
        converter->function_id = id;
    }
}

static void set_attribute(TLDV_CONVERTER *converter, TLT_STATEMENT *statement, int32_t code,
                          intptr_t value)
{
    const auto number = static_cast<int32_t>(value);
    switch (code) {
    case OFFSET:
        converter->offset = number;
        break;
    case NAME:
        TLD_SetTerm(statement, &converter->name, value);
        break;
    case NEXT:
        TLD_SetTerm(statement, &converter->next, value);
        break;
    case FLAGS:
        converter->flags |=
            TLD_GetEnumeratedValue(statement, flag_words, int32_t{ std::size(flag_words) });
        break;
    case MULTIPLIER:
        converter->multiplier = number;
        break;
    case DIVISOR:
        set_divisor(converter, statement, number);
        break;
    case OLD_TYPE:
        converter->old_type = number;
        break;
    case QUANTITY_TYPE:
        converter->quantity_type = number;
        break;
    case TRANSFER_LIBRARY:
        TLD_SetTerm(statement, &converter->transfer_library, value);
        break;
    case FUNCTION_ID:
        set_function(converter, statement, number);
        break;
    default: /* a message has told why there is none */
        break;
    }
}

static void take_attribute(void *user, TLS_BLOCK *block, TLT_STATEMENT *statement, const char *word)
{
    intptr_t value = 0;
    const int32_t code = TLD_FindAttribute(block, statement, word, attributes,
                                           int32_t{ std::size(attributes) }, &value);
    set_attribute(static_cast<TLDV_CONVERTER *>(user), statement, code, value);
}

/* ---- Items ---- */

static bool read_number(TLS_BLOCK *root, TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                        int32_t *number)
{
    intptr_t value = 0;
    if (!TLD_ExpectConstant(root, statement, type, &value, 0)) return false;
    *number = static_cast<int32_t>(value);
    return true;
}

/* A missing comma has its message and stops nothing. */
static void read_comma(TLT_STATEMENT *statement)
{
    TLT_Expect(statement, TLT_TOKEN_COMMA, nullptr);
}

static bool read_text(TLS_BLOCK *root, TLT_STATEMENT *statement, TLE_TERM **text)
{
    intptr_t value = 0;
    TLI_IDENTIFIER *type = TLIT_FindType(TLP_DataTypeDomain(root->module), "MESSAGE");
    if (!TLD_ExpectConstant(root, statement, type, &value, 1)) return false;
    *text = reinterpret_cast<TLE_TERM *>(value);
    return true;
}

static bool read_state(TLS_BLOCK *root, TLT_STATEMENT *statement, TLDV_STATE *state)
{
    if (!read_text(root, statement, &state->text)) return false;
    read_comma(statement);
    if (!read_number(root, statement, TLIT_QuantityType, &state->low)) return false;
    read_comma(statement);
    return read_number(root, statement, TLIT_QuantityType, &state->high);
}

static void append_state(TLDV_CONVERTER *converter, const TLDV_STATE &state)
{
    auto *record = static_cast<TLDV_STATE *>(SH_AllocateRecord(sizeof(TLDV_STATE), "TLDV:ENUM"));
    *record = state;
    if (converter->last_state == nullptr) {
        converter->states = record;
    } else {
        converter->last_state->next = record;
    }
    converter->last_state = record;
    converter->state_count++;
}

static void parse_state(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *item)
{
    TLDV_STATE state = { .text = nullptr, .next = nullptr, .low = 0, .high = 0 };
    TLT_GetToken(statement, nullptr);
    if (read_state(root, statement, &state)) {
        append_state(converter_record(item), state);
    } else {
        TLE_DelExpression(state.text);
    }
}

static void append_map(TLDV_CONVERTER *converter, int32_t input, int32_t output)
{
    auto *record = static_cast<TLDV_MAP *>(SH_AllocateRecord(sizeof(TLDV_MAP), "TLDV:POINT"));
    record->input = input;
    record->output = output;
    if (converter->last_map == nullptr) {
        converter->maps = record;
    } else {
        converter->last_map->next = record;
    }
    converter->last_map = record;
    converter->map_count++;
}

/* Points come in ascending order; two of the same input make a step. */
static bool read_input(TLS_BLOCK *root, TLT_STATEMENT *statement, TLDV_CONVERTER *converter)
{
    int32_t input = 0;
    TLI_IDENTIFIER *type = TLIT_GetQuantityType(converter->old_type);
    if (!read_number(root, statement, type, &input)) return false;
    read_comma(statement);
    if (input < converter->last_map_input) {
        TLT_Error(statement, "MAP point not in ascending order");
        return false;
    }
    converter->last_map_input = input;
    return true;
}

static void parse_map(TLS_BLOCK *root, TLT_STATEMENT *statement, TLS_STATEMENT *item)
{
    int32_t output = 0;
    TLDV_CONVERTER *converter = converter_record(item);
    TLT_GetToken(statement, nullptr);
    if (!read_input(root, statement, converter)) return;
    TLI_IDENTIFIER *type = TLIT_GetQuantityType(converter->quantity_type);
    if (!read_number(root, statement, type, &output)) return;
    append_map(converter, converter->last_map_input, output);
}

static constexpr TLD_ITEM_WORD item_words[] = {
    { .word = TLD_WORD_STATE, .parse = parse_state },
    { .word = TLD_WORD_MAP, .parse = parse_map },
};

static void parse_converter(TLS_BLOCK *root, TLT_STATEMENT *statement, void *context)
{
    TLD_ParseItem(root, statement, static_cast<TLS_STATEMENT *>(context), item_words,
                  int32_t{ std::size(item_words) }, take_attribute);
}

/* ---- The section ---- */

static void set_defaults(TLS_STATEMENT *item)
{
    TLDV_CONVERTER *converter = converter_record(item);
    converter->multiplier = 1;
    converter->divisor = 1;
    converter->function_id = NO_FUNCTION;
    converter->last_map_input = INT32_MIN;
}

static constexpr TLD_SECTION_KIND converter_kind = {
    .tag = "TLDV:CONVERTER",
    .size = sizeof(TLDV_CONVERTER),
    .statement_class = &TLDV_ConverterClass,
    .set_defaults = set_defaults,
};

static TLS_BLOCK *begin_converter(TLP_MODULE *module, TLI_IDENTIFIER *function,
                                  TLT_STATEMENT *statement, int32_t type)
{
    return TLD_BeginSection(converter_kind, module, function, statement, type);
}

static void check_converter(TLS_BLOCK *, TLS_STATEMENT *item)
{
    const TLDV_CONVERTER *converter = converter_record(item);
    if (converter->transfer_library != nullptr && converter->function_id < 0) {
        TLT_Error(item->statement, "Missing 'FunctionId'");
    }
    TLS_CheckBlock(converter->head.sub_block);
}

static void add_states(TLC_STREAM *stream, const TLDV_CONVERTER *converter)
{
    for (const TLDV_STATE *state = converter->states; state != nullptr; state = state->next) {
        TLC_Code32(stream, state->low);
        TLC_Code32(stream, state->high);
        TLD_DataTerm(stream, state->text);
    }
}

static void add_maps(TLC_STREAM *stream, const TLDV_CONVERTER *converter)
{
    for (const TLDV_MAP *map = converter->maps; map != nullptr; map = map->next) {
        TLC_Code32(stream, map->input);
        TLC_Code32(stream, map->output);
    }
}

static void add_fixed_part(TLC_STREAM *stream, const TLDV_CONVERTER *converter)
{
    TLC_Code8(stream, TLD_RECORD_CONVERTER);
    TLC_Code8(stream, converter->flags);
    TLC_Code8(stream, converter->quantity_type);
    TLC_Code8(stream, converter->old_type);
    TLD_DataTerm(stream, converter->name);
    TLD_DataTerm(stream, converter->next);
    TLC_Code32(stream, converter->offset);
    TLC_Code32(stream, converter->multiplier);
    TLC_Code32(stream, converter->divisor);
    TLD_DataTerm(stream, converter->transfer_library);
    TLC_Code8(stream, converter->function_id);
    TLC_Code8(stream, 0);
    TLC_Code16(stream, converter->state_count);
    TLC_Code16(stream, converter->map_count);
}

static void generate_converter(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    const TLDV_CONVERTER *converter = converter_record(item);
    if (converter->state_count > LARGEST_COUNT || converter->map_count > LARGEST_COUNT) {
        TLC_Error(stream, "Converter too large");
        return;
    }
    TLD_OpenRecord(stream, item);
    add_fixed_part(stream, converter);
    add_states(stream, converter);
    add_maps(stream, converter);
}

static void converter_java(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *item)
{
    TLD_JavaPlainItem(stream, "Converter", TLD_AsSection(item)->identifier);
}

static void delete_states(TLDV_STATE *state)
{
    while (state != nullptr) {
        TLDV_STATE *next = state->next;
        TLE_DelExpression(state->text);
        SH_Free(state);
        state = next;
    }
}

static void delete_maps(TLDV_MAP *map)
{
    while (map != nullptr) {
        TLDV_MAP *next = map->next;
        SH_Free(map);
        map = next;
    }
}

static void delete_converter(TLS_STATEMENT *item)
{
    TLDV_CONVERTER *converter = converter_record(item);
    TLE_DelExpression(converter->name);
    TLE_DelExpression(converter->next);
    TLE_DelExpression(converter->transfer_library);
    delete_states(converter->states);
    delete_maps(converter->maps);
    TLS_DelBlock(converter->head.sub_block);
    SH_Free(converter);
}

const TLS_STATEMENT_CLASS TLDV_ConverterClass = {
    .flags = 0,
    .print = nullptr,
    .check = check_converter,
    .p_code = generate_converter,
    .c_code = nullptr,
    .java_code = converter_java,
    .delete_statement = delete_converter,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

static const TLS_BLOCK_CLASS converter_block = {
    .begin = begin_converter,
    .parser = parse_converter,
};

void TLDV_Initialise(void)
{
    static bool is_initialised;
    if (is_initialised) return;
    is_initialised = true;
    TLS_DeclareBlockClass(TLP_SECTION_CONVERTER, &converter_block);
}
