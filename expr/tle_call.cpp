/*
 * Calls: the opening, each argument in the form that its formal asks for, and the call itself.
 */
#include "expr/tle_c.h"
#include "expr/tle_java.h"
#include "host/host.h"

#include <cstdio>
#include <iterator>

#include "names/tliv.h"
#include <ostrum/eep.h>
#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

static bool is_dimensioned(TLI_IDENTIFIER *identifier)
{
    return (TLI_IdentifierFlags(identifier) & TLI_DIMENSIONED) != 0;
}

/* A formal by VAR or CONST: the actual's address, with its length where the formal is an array. */
static int32_t reference_code(TLC_STREAM *stream, TLI_IDENTIFIER *formal, TLE_TERM *link)
{
    if (is_dimensioned(formal)) return TLE_TermCode(stream, link->left, TLE_MODE_EXTENT);
    bool is_pointer = link->extra == TLE_PASS_POINTER;
    bool is_c = TLC_Target(stream) == TLC_TARGET_C;
    if (is_c) TLE_NoteStoreInC(stream, link->left);
    if (is_pointer && is_c && TLE_MayBeNull(link->left)) {
        HOST_PutText(TLC_CFile(stream), "toll_pointer(");
        int32_t done = TLE_TermCode(stream, link->left, TLE_MODE_VALUE);
        HOST_PutText(TLC_CFile(stream), ")");
        return done;
    }
    return TLE_TermCode(stream, link->left, is_pointer ? TLE_MODE_VALUE : TLE_MODE_ADDRESS);
}

/* An array with no subscript of its own, beyond the formals. */
static bool is_extra_array(const TLE_TERM *link)
{
    if (link->extra == TLE_PASS_ARRAY) return true;
    const TLE_TERM *actual = link->left;
    return actual->kind == TLT_TOKEN_IDENTIFIER && actual->identifier != nullptr &&
           actual->left == nullptr && is_dimensioned(actual->identifier);
}

/* The type of what goes on the stack for an argument by value. */
static TLI_IDENTIFIER *value_type(TLI_IDENTIFIER *formal, const TLE_TERM *actual)
{
    if (formal != nullptr) return TLI_IdentifierType(formal);
    bool is_byte = TLIT_TypeBaseType(nullptr, actual->type) == TLIT_CharType;
    return is_byte ? TLIT_IntType : actual->type;
}

static bool is_text(TLC_STREAM *stream, TLI_IDENTIFIER *type)
{
    return type == TLIT_StringType ||
           TLIT_IsStringType(TLP_DataTypeDomain(TLC_Module(stream)), type);
}

static bool holds_characters(TLI_IDENTIFIER *type)
{
    return (TLIT_IsArrayType(type) ? TLIT_ArrayOf(type) : type) == TLIT_CharType;
}

/* A value that is passed by the address of what it stands in. */
static bool goes_by_address(TLC_STREAM *stream, TLI_IDENTIFIER *type, const TLE_TERM *actual)
{
    if (TLIT_IsArrayType(type)) return true;
    if (holds_characters(actual->type)) return is_text(stream, type);
    return TLIT_IsRecordType(actual->type) && TLIT_TypeBaseType(nullptr, type) == TLIT_PtrType;
}

static int32_t value_code(TLC_STREAM *stream, TLI_IDENTIFIER *formal, TLE_TERM *link)
{
    TLE_TERM *actual = link->left;
    bool is_array = formal == nullptr && is_extra_array(link);
    TLI_IDENTIFIER *type = value_type(formal, actual);
    if (is_array || goes_by_address(stream, type, actual)) {
        bool is_c_text = TLC_Target(stream) == TLC_TARGET_C && is_text(stream, type);
        if (is_c_text) HOST_PutText(TLC_CFile(stream), "(STRING) ");
        return TLE_TermCode(stream, actual, TLE_MODE_ADDRESS);
    }
    if (TLC_Target(stream) == TLC_TARGET_C) {
        return TLE_CStoredValue(stream, formal != nullptr ? type : nullptr, actual);
    }
    if (!TLE_TermCode(stream, actual, TLE_MODE_VALUE)) return 0;
    TLC_Argument(stream, TLIT_TypeSizeof(type, -1));
    return 1;
}

static int32_t argument_code(TLC_STREAM *stream, TLI_IDENTIFIER *formal, TLE_TERM *link)
{
    if (link->left == nullptr) return TLE_TermCode(stream, nullptr, TLE_MODE_VALUE);
    bool by_reference = formal != nullptr && TLIV_ArgumentPassType(formal) != TLIV_BY_VALUE;
    return by_reference ? reference_code(stream, formal, link) : value_code(stream, formal, link);
}

/* What stands between arguments: a comma in a text, the variant type of each in a dispatch call. */
static void close_argument(TLC_STREAM *stream, const TLE_TERM *link, bool is_dispatch)
{
    if (TLC_Target(stream) != TLC_TARGET_PCODE) {
        if (link->right != nullptr) HOST_PutText(TLC_CFile(stream), ",");
        return;
    }
    if (!is_dispatch) return;
    TLC_PCode(stream, EEP_VARIANTARG);
    TLC_Code16(stream, TLIT_VariantType(link->type));
}

/* Links of a call with what stands for them in C: the number of a temporary, 0 for none. */
struct HELD_ARGUMENTS {
    int32_t *numbers;
    int32_t short_numbers[16];
};

static int32_t count_links(const TLE_TERM *term)
{
    int32_t count = 0;
    for (const TLE_TERM *link = term->left; link != nullptr; link = link->right)
        ++count;
    return count;
}

/* Opens the temporary of an argument, of the type that goes to the function. */
static int32_t open_argument(TLC_STREAM *stream, TLI_IDENTIFIER *formal, const TLE_TERM *link)
{
    bool by_reference = formal != nullptr && TLIV_ArgumentPassType(formal) != TLIV_BY_VALUE;
    if (by_reference) return TLE_OpenTemporary(stream, TLI_IdentifierType(formal), true);
    if (formal != nullptr) return TLE_OpenTemporary(stream, TLI_IdentifierType(formal), false);
    return TLE_OpenTemporary(stream, link->left->type, is_extra_array(link));
}

/* Writes all arguments but the last into temporaries, one after the other. */
static int32_t hold_arguments(TLC_STREAM *stream, TLE_TERM *term, HELD_ARGUMENTS *held)
{
    constexpr int32_t short_count = std::size(HELD_ARGUMENTS{}.short_numbers);
    int32_t count = count_links(term);
    int32_t done = 1;
    held->numbers = held->short_numbers;
    if (count > short_count) {
        int32_t size = count * static_cast<int32_t>(sizeof(int32_t));
        held->numbers = static_cast<int32_t *>(SH_NameAllocate(size, "TLE:HELD"));
    }
    HOST_PutText(TLC_CFile(stream), "(");
    TLE_TERM *link = term->left;
    for (int32_t i = 0; i < count - 1; ++i, link = link->right) {
        TLI_IDENTIFIER *formal = TLIV_GetFunctionArgument(term->identifier, i);
        held->numbers[i] = open_argument(stream, formal, link);
        done &= argument_code(stream, formal, link);
        HOST_PutText(TLC_CFile(stream), ",");
    }
    held->numbers[count - 1] = 0;
    return done;
}

/* A syscall that takes any arguments is told how many come. */
static void write_count(TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *function = term->identifier;
    if (TLC_Target(stream) != TLC_TARGET_C || !TLIV_ExtraArgumentsAllowed(function)) return;
    if (TLIV_GetFunctionArgument(function, 0) != nullptr) return;
    std::fprintf(TLC_CFile(stream), "%d%s", count_links(term), term->left != nullptr ? "," : "");
}

static int32_t write_call(TLC_STREAM *stream, TLE_TERM *term, int32_t direct,
                          const HELD_ARGUMENTS *held)
{
    TLI_IDENTIFIER *function = term->identifier;
    bool is_dispatch = TLI_FindPragma(function, "DISPID") != nullptr;
    int32_t done = 1;
    TLC_StartCall(stream, function, direct);
    write_count(stream, term);
    int32_t index = 0;
    for (TLE_TERM *link = term->left; link != nullptr; link = link->right, ++index) {
        if (held != nullptr && held->numbers[index] != 0) {
            std::fprintf(TLC_CFile(stream), "toll_%d", held->numbers[index]);
        } else {
            done &= argument_code(stream, TLIV_GetFunctionArgument(function, index), link);
        }
        close_argument(stream, link, is_dispatch);
    }
    return TLC_Call(stream, function, direct) && done;
}

int32_t TLE_CallCode(TLC_STREAM *stream, TLE_TERM *term, int32_t direct)
{
    if (term->identifier == nullptr) return 0;
    if (TLC_Target(stream) == TLC_TARGET_JAVA) return TLE_JavaCall(stream, term, direct);
    if (!TLE_IsUnorderedCall(stream, term)) return write_call(stream, term, direct, nullptr);
    HELD_ARGUMENTS held;
    int32_t done = hold_arguments(stream, term, &held);
    done &= write_call(stream, term, direct, &held);
    HOST_PutText(TLC_CFile(stream), ")");
    if (held.numbers != held.short_numbers) SH_Free(held.numbers);
    return done;
}
