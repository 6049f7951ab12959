/*
 * Built-in functions of quantities: qty, and the conversion of units by cvt and cvts.
 */
#include "expr/tlb.h"

#include "codegen/tlc.h"
#include "expr/tle.h"
#include <ostrum/eep.h>
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

// Bits of the operand of CVT; the extra word of cvt and cvts.
static constexpr int32_t backwards = 1;
static constexpr int32_t as_text = 16;

// qty: the extra word is the quantity's number

static TLI_IDENTIFIER *check_qty(const TLB_BUILT_IN *, TLP_MODULE *, TLT_STATEMENT *statement,
                                 TLE_TERM *term)
{
    term->extra = TLIT_GetQuantityIdentifier(TLE_Type(TLE_CallArgument(term, 0)));
    if (term->extra >= 0) return TLIT_FindType(nullptr, "QUANTITY_TYPE");
    TLT_Error(statement, "Argument must be a quantity type");
    return nullptr;
}

static TLE_TERM *simplify_qty(const TLB_BUILT_IN *, TLP_MODULE *, TLE_TERM *term)
{
    return TLE_ConstantTerm(term->use, term->type, term->extra);
}

// cvt and cvts

void TLB_MakeDirections()
{
    TLI_DOMAIN *language = TLIT_LanguageDomain();
    TLI_IDENTIFIER *type = TLIT_EnumerationType(nullptr, language, nullptr, "CVT_TYPE");
    TLIT_EnumerationValue(nullptr, language, nullptr, type, "FORWARDS");
    TLIT_EnumerationValue(nullptr, language, nullptr, type, "BACKWARDS");
}

static bool is_converter(TLP_MODULE *module, TLT_STATEMENT *statement, const TLI_IDENTIFIER *type)
{
    if (type == nullptr) return false;
    const TLI_DOMAIN *data_types = TLP_DataTypeDomain(module);
    if (data_types != nullptr && type == TLI_FindDomainIdentifier(data_types, "CONVERTER"))
        return true;
    return type == TLP_FindIdentifier(module, statement, "CONVERTER", TLI_TYPE);
}

/** The direction, 0 where none is given; false after the message that there is no such direction. */
static bool take_direction(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *direction,
                           int32_t *value)
{
    *value = 0;
    if (direction == nullptr) return true;
    intptr_t word = 0;
    TLI_IDENTIFIER *wanted = TLIT_FindType(nullptr, "CVT_TYPE");
    const int32_t is_constant = TLE_ConstantValue(module, statement, direction, wanted, &word, 0);
    // A data literal can stand for a value that is known later; a direction is wanted now.
    if (is_constant && direction->kind == TLT_TOKEN_NUMBER) {
        *value = static_cast<int32_t>(word) & backwards;
        return true;
    }
    TLT_Error(statement, "Bad argument to 'cvt'");
    return false;
}

static TLI_IDENTIFIER *check_cvt(const TLB_BUILT_IN *record, TLP_MODULE *module,
                                 TLT_STATEMENT *statement, TLE_TERM *term)
{
    if (!TLIT_IsQuantityType(TLB_ArgumentType(term, 0))) return nullptr;
    if (!is_converter(module, statement, TLB_ArgumentType(term, 1))) return nullptr;
    int32_t direction = 0;
    if (!take_direction(module, statement, TLE_CallArgument(term, 2), &direction)) return nullptr;
    term->extra = record == &TLB_Cvts ? direction | as_text : direction;
    if (record == &TLB_Cvts) return TLIT_StringType;
    return TLIT_FindType(TLP_DataTypeDomain(module), "QUANTITY");
}

static int32_t cvt_code(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    TLC_NewPSect(stream);
    const int32_t has_value = TLB_ArgumentCode(stream, term, 0);
    const int32_t has_converter = TLB_ArgumentCode(stream, term, 1);
    TLC_PCode(stream, EEP_CVT);
    TLC_Code8(stream, term->extra);
    return has_value & has_converter;
}

/* Java works the arguments out in P-code's order: the value, then the converter. */
static int32_t cvt_java(const TLB_BUILT_IN *record, TLC_STREAM *stream, TLE_TERM *term)
{
    fprintf(TLC_CFile(stream), "toll_%s(", record->name);
    const int32_t has_value = TLB_ArgumentCode(stream, term, 0);
    fputs(",", TLC_CFile(stream));
    const int32_t has_converter = TLB_ArgumentCode(stream, term, 1);
    fprintf(TLC_CFile(stream), ",%d)", term->extra & backwards);
    return has_value & has_converter;
}

// Records

constexpr TLB_BUILT_IN TLB_Qty = {
    .name = "qty",
    .minimum_arguments = 1,
    .maximum_arguments = 1,
    .check = check_qty,
    .simplify = simplify_qty,
    .p_code = nullptr,
    .c_text = nullptr,
    .java_text = nullptr,
};

constexpr TLB_BUILT_IN TLB_Cvt = {
    .name = "cvt",
    .minimum_arguments = 2,
    .maximum_arguments = 3,
    .check = check_cvt,
    .simplify = nullptr,
    .p_code = cvt_code,
    .c_text = nullptr,
    .java_text = cvt_java,
};

constexpr TLB_BUILT_IN TLB_Cvts = {
    .name = "cvts",
    .minimum_arguments = 2,
    .maximum_arguments = 3,
    .check = check_cvt,
    .simplify = nullptr,
    .p_code = cvt_code,
    .c_text = nullptr,
    .java_text = cvt_java,
};
