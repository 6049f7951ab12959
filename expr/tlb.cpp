/*
 * Built-in functions: the way from a term to the record of its function, and the questions about
 * arguments that several of them ask.
 */
#include "expr/tlb.h"

#include "expr/tle_code.h"
#include "frontend/tlt.h"
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>

// Dispatch

static const TLB_BUILT_IN *record_of(const TLE_TERM *term)
{
    if (term->identifier == nullptr) return nullptr;
    return static_cast<const TLB_BUILT_IN *>(TLIT_BifClass(term->identifier));
}

static bool has_right_count(const TLB_BUILT_IN *record, const TLE_TERM *term)
{
    int32_t count = 0;
    for (const TLE_TERM *link = term->left; link != nullptr; link = link->right)
        count++;
    return count >= record->minimum_arguments && count <= record->maximum_arguments;
}

TLI_IDENTIFIER *TLB_CheckArguments(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *term)
{
    const TLB_BUILT_IN *record = record_of(term);
    TLI_IDENTIFIER *type = nullptr;
    if (record != nullptr && has_right_count(record, term))
        type = record->check(record, module, statement, term);
    if (type == nullptr)
        TLT_RaiseFormatted(statement, TLT_LEVEL_ERROR,
                           "Incorrect arguments to built-in function '%s'",
                           TLI_IdentifierName(term->identifier));
    return type;
}

TLE_TERM *TLB_Simplify(TLP_MODULE *module, TLE_TERM *term)
{
    const TLB_BUILT_IN *record = record_of(term);
    if (record == nullptr || record->simplify == nullptr) return nullptr;
    return record->simplify(record, module, term);
}

/** The operation that writes a built-in function for a target; null if there is none. */
static auto writer_for(const TLB_BUILT_IN *record, int32_t target)
{
    if (target == TLC_TARGET_C) return record->c_text;
    return target == TLC_TARGET_JAVA ? record->java_text : record->p_code;
}

int32_t TLB_GenerateCode(TLC_STREAM *stream, TLE_TERM *term)
{
    const TLB_BUILT_IN *record = record_of(term);
    const auto write = record == nullptr ? nullptr : writer_for(record, TLC_Target(stream));
    if (write != nullptr) return write(record, stream, term);
    char message[96];
    snprintf(message, sizeof message, "No code generation for built-in-function '%s'",
             TLI_IdentifierName(term->identifier));
    TLC_Error(stream, message);
    return 0;
}

// Names

static void declare(const TLB_BUILT_IN *record)
{
    TLIT_BuiltInFunction(record->name, record);
}

void TLB_Initialise()
{
    static bool is_done;
    if (is_done) return;
    is_done = true;
    TLI_Initialise();
    static const TLB_BUILT_IN *const before_directions[] = { &TLB_Abs, &TLB_Cast, &TLB_Qty };
    static const TLB_BUILT_IN *const behind_directions[] = {
        &TLB_Cvt,  &TLB_Cvts,   &TLB_Min,     &TLB_Max,     &TLB_Upb,
        &TLB_Attr, &TLB_Create, &TLB_Release, &TLB_ToFloat, &TLB_Round,
    };
    for (const TLB_BUILT_IN *record : before_directions)
        declare(record);
    TLB_MakeDirections();
    for (const TLB_BUILT_IN *record : behind_directions)
        declare(record);
}

// Arguments

TLI_IDENTIFIER *TLB_ArgumentType(TLE_TERM *term, int32_t index)
{
    return TLE_ExpressionType(TLE_CallArgument(term, index));
}

bool TLB_HasBase(TLI_IDENTIFIER *type, const TLI_IDENTIFIER *base)
{
    return type != nullptr && TLIT_TypeBaseType(nullptr, type) == base;
}

bool TLB_IsIntegerBased(TLI_IDENTIFIER *type)
{
    return type != nullptr && TLIT_IntegerType(TLIT_TypeBaseType(nullptr, type));
}

int32_t TLB_ArgumentCode(TLC_STREAM *stream, TLE_TERM *term, int32_t index)
{
    return TLE_TermCode(stream, TLE_CallArgument(term, index), TLE_MODE_VALUE);
}

/** A cast or a member binds to what stands next to it. */
static bool needs_brackets(const TLE_TERM *argument)
{
    if (argument == nullptr) return false;
    if (argument->kind == TLT_TOKEN_COLON || argument->kind == TLT_TOKEN_ARROW) return false;
    return TLE_TermOperator(argument) != nullptr || argument->kind == TLT_TOKEN_DATA_LITERAL ||
           TLE_IsNegativeLiteral(argument) || TLB_IsDifference(argument);
}

int32_t TLB_TightArgument(TLC_STREAM *stream, TLE_TERM *term, int32_t index)
{
    TLE_TERM *argument = TLE_CallArgument(term, index);
    const bool has_brackets = needs_brackets(argument);
    if (has_brackets) fputs("(", TLC_CFile(stream));
    const int32_t written = TLE_TermCode(stream, argument, TLE_MODE_VALUE);
    if (has_brackets) fputs(")", TLC_CFile(stream));
    return written;
}

bool TLB_IsWordInC(const TLE_TERM *term)
{
    if (term->kind != TLE_BUILT_IN) return false;
    const TLB_BUILT_IN *record = record_of(term);
    return record == &TLB_Min || record == &TLB_Max;
}

bool TLB_IsJavaCall(const TLE_TERM *term)
{
    if (term->kind != TLE_BUILT_IN) return false;
    static const TLB_BUILT_IN *const calls[] = { &TLB_Cvt,  &TLB_Cvts,   &TLB_Min,    &TLB_Max,
                                                 &TLB_Attr, &TLB_Create, &TLB_Release };
    for (const TLB_BUILT_IN *record : calls)
        if (record == record_of(term)) return true;
    return false;
}

bool TLB_IsDifference(const TLE_TERM *term)
{
    return term->kind == TLE_BUILT_IN && record_of(term) == &TLB_Upb;
}
