/*
 * P-code of the operators. Each leaves one value, and all but the selections have code for a value
 * only.
 */
#include "expr/tlo.h"

#include "expr/tle_code.h"
#include "names/tli.h"
#include <ostrum/eep.h>
#include <ostrum/st.h>
#include <ostrum/tlc.h>
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

// Milliseconds of a CLOCK_TIME in microseconds of a TIME.
static constexpr int32_t time_factor = 1000;
static constexpr int32_t word_size = 4;

// Access of a store through an address on the stack.
static constexpr int32_t to_memory = 1;
static constexpr int32_t to_pointer = 2;

// Format of ST_CharInt.
static constexpr int32_t hexadecimal = 2;

static void value_code(TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_TermCode(stream, term, TLE_MODE_VALUE);
}

static void operand_values(TLC_STREAM *stream, TLE_TERM *term)
{
    value_code(stream, term->left);
    value_code(stream, term->right);
}

// Arithmetic

int32_t TLO_SumCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term, int32_t mode)
{
    if (mode != TLE_MODE_VALUE) return 0;
    if (term->left != nullptr) {
        operand_values(stream, term);
        TLC_PCode(stream, record->p_code);
        return 1;
    }
    value_code(stream, term->right);
    if (record->token == TLT_TOKEN_MINUS) TLC_PCode(stream, EEP_NEG);
    return 1;
}

int32_t TLO_ProductCode(TLC_STREAM *stream, const TLE_OPERATOR *, TLE_TERM *term, int32_t mode)
{
    if (mode != TLE_MODE_VALUE) return 0;
    const int32_t code = term->extra & TLO_CODE_MASK;
    operand_values(stream, term);
    if (code == EEP_SMUL || code == EEP_SDIV) TLC_Literal(stream, TLO_Scale(term->extra));
    TLC_PCode(stream, code);
    return 1;
}

static int32_t monadic_code(TLC_STREAM *stream, TLE_TERM *term, int32_t mode, int32_t code)
{
    if (mode != TLE_MODE_VALUE) return 0;
    value_code(stream, term->right);
    TLC_PCode(stream, code);
    return 1;
}

int32_t TLO_InvertCode(TLC_STREAM *stream, const TLE_OPERATOR *, TLE_TERM *term, int32_t mode)
{
    return monadic_code(stream, term, mode, EEP_INV);
}

int32_t TLO_NotCode(TLC_STREAM *stream, const TLE_OPERATOR *, TLE_TERM *term, int32_t mode)
{
    return monadic_code(stream, term, mode, EEP_NOT);
}

// Conditions

int32_t TLO_JunctionCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term,
                         int32_t mode)
{
    if (mode != TLE_MODE_VALUE) return 0;
    TLC_NewPSect(stream);
    value_code(stream, term->left);
    TLC_PCode(stream, EEP_DUP);
    TLC_PSECT *jump = TLC_NewPSect(stream);
    TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_POP);
    value_code(stream, term->right);
    TLC_PSECT *end = TLC_NewPSect(stream);
    TLC_SetPSect(stream, jump);
    TLC_PCode(stream, record->token == TLT_TOKEN_AND ? EEP_JZ : EEP_JNZ);
    TLC_Jump(stream, end);
    TLC_SetPSect(stream, end);
    return 1;
}

int32_t TLO_ComparisonCode(TLC_STREAM *stream, const TLE_OPERATOR *record, TLE_TERM *term,
                           int32_t mode)
{
    if (mode != TLE_MODE_VALUE) return 0;
    operand_values(stream, term);
    if (term->extra != 0) {
        TLC_PCode(stream, EEP_STRCMP);
        TLC_Code8(stream, record->p_code);
    } else {
        TLC_PCode(stream, record->p_code);
    }
    return 1;
}

// Assignment

// What a store needs to know.
struct STORE {
    TLC_STREAM *stream;
    TLE_TERM *target;
    TLE_TERM *source;
    int32_t size;   // of the target, or of one element if it is an array
    int32_t access; // TLC_StoreValue's
};

static void target_address(const STORE &store)
{
    TLE_TermCode(store.stream, store.target, TLE_MODE_ADDRESS);
}

static void store_value(const STORE &store)
{
    value_code(store.stream, store.source);
    target_address(store);
    TLC_StoreValue(store.stream, store.size, store.access);
}

static void store_record(const STORE &store)
{
    TLE_TermCode(store.stream, store.source, TLE_MODE_ADDRESS);
    target_address(store);
    TLC_Literal(store.stream, store.size);
    TLC_PCode(store.stream, EEP_COPYB);
}

static void store_address(const STORE &store)
{
    TLE_TermCode(store.stream, store.source, TLE_MODE_ADDRESS);
    target_address(store);
    TLC_StoreValue(store.stream, store.size, to_pointer);
}

static void store_time(const STORE &store, int32_t code)
{
    value_code(store.stream, store.source);
    TLC_Literal(store.stream, time_factor);
    TLC_PCode(store.stream, code);
    target_address(store);
    TLC_StoreValue(store.stream, store.size, store.access);
}

/** The target's pair takes the address and length of the source; no elements are copied. */
static void store_array(const STORE &store)
{
    TLC_STREAM *stream = store.stream;
    TLE_TermCode(stream, store.source, TLE_MODE_EXTENT);
    target_address(store);
    TLC_Literal(stream, word_size);
    TLC_PCode(stream, EEP_ADD);
    TLC_StoreValue(stream, word_size, to_memory);
    TLC_PCode(stream, EEP_POP);
    target_address(store);
    TLC_StoreValue(stream, word_size, store.access);
}

static void store_by_mode(const STORE &store, int32_t store_mode)
{
    switch (store_mode) {
    case TLO_STORE_RECORD:
        store_record(store);
        break;
    case TLO_STORE_ADDRESS:
        store_address(store);
        break;
    case TLO_STORE_TIME_AS_CLOCK:
        store_time(store, EEP_DIV);
        break;
    case TLO_STORE_CLOCK_AS_TIME:
        store_time(store, EEP_MUL);
        break;
    case TLO_STORE_ARRAY:
        store_array(store);
        break;
    default:
        store_value(store);
    }
}

int32_t TLO_AssignmentCode(TLC_STREAM *stream, const TLE_OPERATOR *, TLE_TERM *term, int32_t mode)
{
    if (mode != TLE_MODE_VALUE) return 0;
    TLI_IDENTIFIER *type = term->left->type;
    if (TLIT_IsArrayType(type)) type = TLIT_ArrayOf(type);
    const STORE store = { .stream = stream,
                          .target = term->left,
                          .source = term->right,
                          .size = TLIT_TypeSizeof(type, -1),
                          .access = TLIT_PointerType(term->type) ? to_pointer : to_memory };
    store_by_mode(store, term->extra);
    return 1;
}

// Field selection

// One selection: the record's place is generated in left_mode, then the field.
struct SELECTION {
    TLC_STREAM *stream;
    TLE_TERM *term;
    int32_t left_mode;
};

static void record_code(const SELECTION &selection)
{
    TLE_TermCode(selection.stream, selection.term->left, selection.left_mode);
}

static int32_t record_and_field(const SELECTION &selection, int32_t field_mode)
{
    record_code(selection);
    TLE_TermCode(selection.stream, selection.term->right, field_mode);
    return 1;
}

static int32_t property_number(const char *text)
{
    int32_t value = 0;
    ST_CharInt(text, &value, hexadecimal);
    return value;
}

static int32_t property_code(const SELECTION &selection, const char *number, int32_t mode)
{
    if (mode == TLE_MODE_EXTENT) return 0;
    record_code(selection);
    TLC_PCode(selection.stream, mode == TLE_MODE_VALUE ? EEP_GET : EEP_PUT);
    TLC_Code16(selection.stream, property_number(number));
    return 1;
}

static int32_t attribute_code(const SELECTION &selection, int32_t mode)
{
    if (mode == TLE_MODE_ADDRESS) return 0;
    record_and_field(selection, TLE_MODE_ADDRESS);
    if (mode == TLE_MODE_EXTENT) return 1;
    TLI_IDENTIFIER *type = selection.term->right->type;
    if (type != nullptr && TLIT_TypeBaseType(nullptr, type) == TLIT_PtrType) return 1;
    TLC_PCode(selection.stream, EEP_FIELD_ATTR);
    TLC_Code16(selection.stream, 0);
    return 1;
}

static int32_t plain_field_code(const SELECTION &selection, int32_t mode)
{
    if (mode == TLE_MODE_EXTENT) return record_and_field(selection, TLE_MODE_EXTENT);
    record_and_field(selection, TLE_MODE_ADDRESS);
    if (mode == TLE_MODE_ADDRESS) return 1;
    TLI_IDENTIFIER *type = selection.term->type;
    TLI_LoadValue(selection.stream, TLIT_IsArrayType(type) ? TLIT_ArrayOf(type) : type);
    return 1;
}

static int32_t selection_code(const SELECTION &selection, int32_t mode)
{
    const TLI_IDENTIFIER *field = selection.term->right->identifier;
    if (field == nullptr || field->pragmas == nullptr) return plain_field_code(selection, mode);
    const char *property = TLI_FindPragma(field, "DISPID");
    if (property != nullptr) return property_code(selection, property, mode);
    if (TLI_FindPragma(field, "ATTR") != nullptr) return attribute_code(selection, mode);
    return plain_field_code(selection, mode);
}

int32_t TLO_FieldCode(TLC_STREAM *stream, const TLE_OPERATOR *, TLE_TERM *term, int32_t mode)
{
    return selection_code({ stream, term, TLE_MODE_ADDRESS }, mode);
}

int32_t TLO_PointerFieldCode(TLC_STREAM *stream, const TLE_OPERATOR *, TLE_TERM *term, int32_t mode)
{
    return selection_code({ stream, term, TLE_MODE_VALUE }, mode);
}
