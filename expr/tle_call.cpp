/*
 * Calls: the opening, each argument in the form that its formal asks for, and the call itself.
 */
#include "expr/tle_code.h"

#include <cstdio>

#include "names/tliv.h"
#include <ostrum/eep.h>
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
        return TLE_TermCode(stream, actual, TLE_MODE_ADDRESS);
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
        if (link->right != nullptr) std::fputs(",", TLC_CFile(stream));
        return;
    }
    if (!is_dispatch) return;
    TLC_PCode(stream, EEP_VARIANTARG);
    TLC_Code16(stream, TLIT_VariantType(link->type));
}

int32_t TLE_CallCode(TLC_STREAM *stream, TLE_TERM *term, int32_t direct)
{
    TLI_IDENTIFIER *function = term->identifier;
    if (function == nullptr) return 0;
    bool is_dispatch = TLI_FindPragma(function, "DISPID") != nullptr;
    int32_t done = 1;
    TLC_StartCall(stream, function, direct);
    int32_t index = 0;
    for (TLE_TERM *link = term->left; link != nullptr; link = link->right, ++index) {
        done &= argument_code(stream, TLIV_GetFunctionArgument(function, index), link);
        close_argument(stream, link, is_dispatch);
    }
    return TLC_Call(stream, function, direct) && done;
}
