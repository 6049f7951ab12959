/*
 * Built-in functions: the way from a term to the record of its function.
 */
#include "expr/tlb.h"

#include "expr/tle_code.h"
#include "frontend/tlt.h"
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>

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

void TLB_Initialise()
{
    TLI_Initialise();
}
