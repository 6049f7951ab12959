/*
 * Data terms: references to items of data, functions and arrays, written into a constant table, a
 * data record or a text.
 */
#include "codegen/tlcj.h"
#include "expr/tle_code.h"
#include "host/host.h"

#include <cstdio>

#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

/* Symbol classes of references with a field of 32 bits. */
static constexpr int32_t EXTERNAL = 1;  /* filled with the distance to what is named */
static constexpr int32_t VALUE_REF = 6; /* filled with the value of a symbol */

static void address_term(TLC_STREAM *stream, TLE_TERM *term)
{
    bool is_code = TLI_IdentifierClass(term->type) == TLI_FUNCTION ||
                   TLIT_TypeSubclass(nullptr, term->type) == TLIT_SUBCLASS_FUNCTION;
    if (!is_code && TLC_Target(stream) == TLC_TARGET_JAVA) {
        TLCJ_WriteItem(stream, term->identifier);
        return;
    }
    TLC_Symbol(stream, EXTERNAL, is_code ? TLIT_CodeType : term->type, term->identifier);
}

static void null_term(TLC_STREAM *stream)
{
    int32_t target = TLC_Target(stream);
    if (target == TLC_TARGET_PCODE) {
        TLC_Code32(stream, 0);
    } else {
        HOST_PutText(TLC_CFile(stream), target == TLC_TARGET_C ? "NULL" : "null");
    }
}

static void identifier_term(TLC_STREAM *stream, TLE_TERM *term)
{
    if (TLIT_TypeBaseType(nullptr, term->type) == TLIT_PtrType) {
        TLC_Symbol(stream, EXTERNAL, TLIT_PointerAt(term->type), term->identifier);
    } else {
        TLE_CodeError(stream, term, "Bad BaseType for Data term");
    }
}

static void data_literal_symbol(TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *type = term->type;
    const char *name = TLE_TermValue(term);
    if (TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_DATA) {
        TLC_NameSymbol(stream, EXTERNAL, type, name);
    } else if (TLIT_PointerType(type)) {
        TLC_NameSymbol(stream, EXTERNAL, TLIT_PointerAt(type), name);
    } else {
        TLC_NameSymbol(stream, VALUE_REF, type, name);
    }
}

static void data_literal_term(TLC_STREAM *stream, TLE_TERM *term)
{
    if (TLC_Target(stream) == TLC_TARGET_PCODE) {
        data_literal_symbol(stream, term);
    } else {
        TLE_DataLiteralText(stream, term);
    }
}

void TLE_DataTerm(TLC_STREAM *stream, TLE_TERM *term)
{
    switch (term == nullptr ? static_cast<int32_t>(TLT_TOKEN_NONE) : term->kind) {
    case TLE_ADDRESS:
        address_term(stream, term);
        break;
    case TLT_TOKEN_NULL:
        null_term(stream);
        break;
    case TLT_TOKEN_IDENTIFIER:
        identifier_term(stream, term);
        break;
    case TLT_TOKEN_STRING:
        TLC_String(stream, TLE_TermValue(term));
        break;
    case TLT_TOKEN_DATA_LITERAL:
        data_literal_term(stream, term);
        break;
    default:
        TLE_CodeError(stream, term, "Bad data term");
        break;
    }
}

void TLE_ArrayTerm(TLC_STREAM *stream, TLE_TERM *term)
{
    // An element by itself fits an array in a constant, but only a name has a place to refer to.
    if (term->identifier == nullptr) {
        TLE_CodeError(stream, term, "Bad data term");
        return;
    }
    TLI_IDENTIFIER *type = term->type;
    TLI_IDENTIFIER *element = TLIT_IsArrayType(type) ? TLIT_ArrayOf(type) : type;
    TLC_Symbol(stream, EXTERNAL, element, term->identifier);
    if (TLC_Target(stream) != TLC_TARGET_PCODE) return;
    TLC_Code32(stream, TLI_IdentifierDimension(term->identifier, nullptr));
}
