/*
 * Arguments of calls against the parameters of the function.
 */
#include "expr/tle_parser.h"

#include "frontend/tlt.h"
#include "names/tli.h"
#include "names/tlit.h"
#include "names/tliv.h"
#include <ostrum/tlp.h>

// One argument against its parameter.
struct ARGUMENT_CHECK {
    TLP_MODULE *module;
    TLT_STATEMENT *statement;
    TLE_TERM *link; // of the argument
    TLI_IDENTIFIER *formal;
    int32_t pass_type;
};

static TLE_TERM *last_selected(TLE_TERM *term)
{
    while (term->kind == TLT_TOKEN_COLON || term->kind == TLT_TOKEN_ARROW) {
        if (term->right == nullptr) break;
        term = term->right;
    }
    return term;
}

/** Lets an array without a subscript stand for its first element; 0 if the term is something else. */
static int32_t take_first_element(TLE_TERM *actual)
{
    TLE_TERM *last = last_selected(actual);
    if (last->kind != TLT_TOKEN_IDENTIFIER || last->left != nullptr) return 0;
    if (last->identifier == nullptr) return 0;
    if ((TLI_IdentifierFlags(last->identifier) & TLI_DIMENSIONED) == 0) return 0;
    last->left = TLE_ConstantTerm(TLE_USE_VALUE, TLIT_IntType, 0);
    return 1;
}

static TLI_IDENTIFIER *element_or_self(TLI_IDENTIFIER *type)
{
    return TLIT_IsArrayType(type) ? TLIT_ArrayOf(type) : type;
}

// Shape of an argument that passes by its address

static bool has_address(TLE_TERM *actual)
{
    if (actual->kind == TLT_TOKEN_IDENTIFIER) return actual->identifier != nullptr;
    if (actual->kind != TLT_TOKEN_COLON && actual->kind != TLT_TOKEN_ARROW) return false;
    const TLE_TERM *base = TLE_BaseTerm(actual);
    return base != nullptr && base->identifier != nullptr;
}

/** A subscripted argument for an array passes the elements from there on. */
static void check_slice(const ARGUMENT_CHECK &check, const TLE_TERM *subscript)
{
    TLI_IDENTIFIER *range = nullptr;
    TLI_IdentifierDimension(check.formal, &range);
    if (subscript->type != range) {
        TLT_Error(check.statement, "Clash of array dimension type");
    } else if (TLIT_IsEnumeration(range)) {
        TLT_Error(check.statement, "Arrays indexed by ENUM cannot be sliced");
    }
}

static bool check_shape(const ARGUMENT_CHECK &check)
{
    if (check.pass_type == TLIV_BY_VALUE) return true;
    TLE_TERM *actual = check.link->left;
    if (!has_address(actual)) return false;
    if (check.pass_type == TLIV_BY_VAR && !TLE_CheckLHS(actual))
        TLT_Error(check.statement, "Only variables can be passed to a VAR argument");
    const TLE_TERM *last = last_selected(actual);
    const bool is_subscripted = last->kind == TLT_TOKEN_IDENTIFIER && last->left != nullptr;
    if (is_subscripted && (TLI_IdentifierFlags(check.formal) & TLI_DIMENSIONED) != 0)
        check_slice(check, last->left);
    return true;
}

// Types

static bool fits_by_reference(const ARGUMENT_CHECK &check, TLI_IDENTIFIER *wanted)
{
    TLI_IDENTIFIER *type = check.link->type;
    if (TLIT_MatchArgType(check.module, check.statement, wanted, type)) return true;
    return TLIT_IsArrayType(wanted) &&
           TLIT_MatchArgType(check.module, check.statement, TLIT_ArrayOf(wanted), type);
}

static bool points_at(TLI_IDENTIFIER *pointer, const TLI_IDENTIFIER *record)
{
    return pointer != nullptr && TLIT_TypeSubclass(nullptr, pointer) == TLIT_SUBCLASS_POINTER &&
           TLIT_PointerAt(pointer) == record;
}

static bool fits_by_value(const ARGUMENT_CHECK &check, TLI_IDENTIFIER *wanted)
{
    TLI_IDENTIFIER *type = check.link->type;
    if (TLIT_MatchType(check.module, check.statement, wanted, type)) return true;
    if (!TLIT_IsRecordType(type) || !points_at(wanted, type)) return false;
    check.link->extra = TLE_PASS_RECORD;
    return true;
}

static bool is_text_in_array(const ARGUMENT_CHECK &check, TLI_IDENTIFIER *wanted)
{
    if (check.pass_type != TLIV_BY_VALUE || !TLE_CheckLHS(check.link->left)) return false;
    if (element_or_self(check.link->type) != TLIT_CharType) return false;
    return TLIT_IsStringType(TLP_DataTypeDomain(check.module), wanted) != 0;
}

static bool fits(const ARGUMENT_CHECK &check)
{
    TLI_IDENTIFIER *wanted = check.formal->type;
    TLE_TERM *link = check.link;
    if (check.pass_type == TLIV_BY_VALUE) {
        if (fits_by_value(check, wanted)) return true;
    } else if (fits_by_reference(check, wanted)) {
        return check_shape(check);
    }
    if (TLE_CoerceData(check.module, check.statement, wanted, link->left)) {
        link->type = link->left->type;
        return check_shape(check);
    }
    if (check.pass_type != TLIV_BY_VALUE && points_at(link->type, wanted)) {
        link->extra = TLE_PASS_POINTER;
        return check_shape(check);
    }
    if (!is_text_in_array(check, wanted)) return false;
    take_first_element(link->left);
    return true;
}

static void check_argument(const ARGUMENT_CHECK &check)
{
    static constexpr const char *words[] = { "", "VAR ", "CONST " };
    if (fits(check)) return;
    TLT_RaiseFormatted(check.statement, TLT_LEVEL_ERROR,
                       "Argument mismatch : '%s' passed to '%s%s'", TLE_TypeText(check.link),
                       words[check.pass_type], TLI_IdentifierName(check.formal->type));
}

// Arguments beyond the declared ones

static void check_extra(TLT_STATEMENT *statement, TLI_IDENTIFIER *function, TLE_TERM *link)
{
    if (!TLIV_ExtraArgumentsAllowed(function)) TLT_Error(statement, "Too many arguments");
    if (TLIT_IsRecordType(link->type)) TLT_Error(statement, "Record passed as extra argument");
    if (take_first_element(link->left)) link->extra = TLE_PASS_ARRAY;
}

void TLE_CheckCall(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *call)
{
    int32_t count = 0;
    for (TLE_TERM *link = call->left; link != nullptr; link = link->right) {
        TLI_IDENTIFIER *formal = TLIV_GetFunctionArgument(call->identifier, count++);
        if (link->left == nullptr) continue;
        if (formal == nullptr) {
            check_extra(statement, call->identifier, link);
        } else {
            const int32_t pass_type = TLIV_ArgumentPassType(formal);
            check_argument({ module, statement, link, formal, pass_type });
        }
    }
    if (TLIV_GetFunctionArgument(call->identifier, count) != nullptr)
        TLT_Error(statement, "Not enough arguments");
}
