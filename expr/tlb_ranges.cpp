/*
 * Built-in functions of ranges: min and max of a type or of two values, and upb, the highest
 * subscript of an array.
 */
#include "expr/tlb.h"

#include <algorithm>

#include "expr/tle_code.h"
#include "names/tlit.h"
#include <ostrum/eep.h>
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlt.h>

static constexpr int32_t two_values = -1; // extra word of min and max of two values
static constexpr int32_t highest_char = 255;

// min and max: the extra word is the end of the type's range

static TLI_IDENTIFIER *check_pair(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *term)
{
    TLI_IDENTIFIER *type = TLB_ArgumentType(term, 0);
    term->extra = two_values;
    if (!TLIT_MatchType(module, statement, type, TLB_ArgumentType(term, 1))) return nullptr;
    return TLIT_IsEnumeration(type) || TLB_HasBase(type, TLIT_IntType) ? type : nullptr;
}

static TLI_IDENTIFIER *check_range(TLE_TERM *term, bool is_max)
{
    const TLE_TERM *argument = TLE_CallArgument(term, 0);
    TLI_IDENTIFIER *type = TLE_Type(argument);
    if (type == nullptr) type = TLE_ExpressionType(argument);
    if (TLIT_IsEnumeration(type)) {
        term->extra = is_max ? TLIT_EnumRange(type) - 1 : 0;
        return type;
    }
    if (type != nullptr && type == TLIT_CharType) {
        term->extra = is_max ? highest_char : 0;
        return TLIT_IntType;
    }
    if (!TLB_HasBase(type, TLIT_IntType)) return nullptr;
    term->extra = is_max ? INT32_MAX : INT32_MIN;
    return type;
}

static bool is_pair(const TLE_TERM *term)
{
    return term->left != nullptr && term->left->right != nullptr;
}

static TLI_IDENTIFIER *check_end(const TLB_BUILT_IN *record, TLP_MODULE *module,
                                 TLT_STATEMENT *statement, TLE_TERM *term)
{
    if (is_pair(term)) return check_pair(module, statement, term);
    return check_range(term, record == &TLB_Max);
}

static TLE_TERM *simplify_end(const TLB_BUILT_IN *record, TLP_MODULE *, TLE_TERM *term)
{
    if (!is_pair(term)) return TLE_ConstantTerm(term->use, term->type, term->extra);
    int32_t first = 0;
    int32_t second = 0;
    if (!TLE_Constant(TLE_CallArgument(term, 0), &first)) return nullptr;
    if (!TLE_Constant(TLE_CallArgument(term, 1), &second)) return nullptr;
    const int32_t end = record == &TLB_Max ? std::max(first, second) : std::min(first, second);
    return TLE_ConstantTerm(term->use, term->type, end);
}

/** Stack: two values -> the one that is wanted. */
static void select_value(TLC_STREAM *stream, int32_t test)
{
    TLC_PSECT *jump = TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_DUP2);
    TLC_PCode(stream, test);
    TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_EXCH);
    TLC_PSECT *end = TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_POP);
    TLC_SetPSect(stream, jump);
    TLC_PCode(stream, EEP_JNZ);
    TLC_Jump(stream, end);
    TLC_SetPSect(stream, end);
}

static int32_t end_code(const TLB_BUILT_IN *record, TLC_STREAM *stream, TLE_TERM *term)
{
    const int32_t has_first = TLB_ArgumentCode(stream, term, 0);
    const int32_t has_second = TLB_ArgumentCode(stream, term, 1);
    select_value(stream, record == &TLB_Max ? EEP_GTR : EEP_LESS);
    return has_first & has_second;
}

static int32_t end_text(const TLB_BUILT_IN *record, TLC_STREAM *stream, TLE_TERM *term)
{
    fprintf(TLC_CFile(stream), "%s(", record->name);
    const int32_t has_first = TLB_ArgumentCode(stream, term, 0);
    fputs(",", TLC_CFile(stream));
    const int32_t has_second = TLB_ArgumentCode(stream, term, 1);
    fputs(")", TLC_CFile(stream));
    return has_first & has_second;
}

// upb: the extra word is the number of elements, 0 if only the running program knows it

static TLI_IDENTIFIER *check_upb(const TLB_BUILT_IN *, TLP_MODULE *, TLT_STATEMENT *,
                                 TLE_TERM *term)
{
    TLI_IDENTIFIER *array = TLE_TermIdentifier(TLE_CallArgument(term, 0));
    if (array == nullptr) return nullptr;
    term->extra = TLI_IdentifierDimension(array, nullptr);
    return term->extra >= 0 ? TLIT_IntType : nullptr;
}

static TLE_TERM *simplify_upb(const TLB_BUILT_IN *, TLP_MODULE *, TLE_TERM *term)
{
    if (term->extra < 1) return nullptr;
    return TLE_ConstantTerm(term->use, TLIT_IntType, term->extra - 1);
}

/** Does the run-time system hold the elements, and thus know how many there are? */
static bool is_run_time_data(TLI_IDENTIFIER *array)
{
    TLI_IDENTIFIER *element = TLI_IdentifierType(array);
    if (TLIT_IsArrayType(element)) element = TLIT_ArrayOf(element);
    switch (TLIT_TypeSubclass(nullptr, element)) {
    case TLIT_SUBCLASS_DATA:
        return TLI_FindPragma(element, "RUNTIME_DEF") != nullptr;
    case TLIT_SUBCLASS_POINTER:
        return TLI_FindPragma(TLIT_PointerAt(element), "RUNTIME_DEF") != nullptr;
    default:
        return false;
    }
}

static int32_t length_of_value(TLC_STREAM *stream, TLE_TERM *argument)
{
    const int32_t done = TLE_TermCode(stream, argument, TLE_MODE_EXTENT);
    if (is_run_time_data(TLE_TermIdentifier(argument))) {
        TLC_PCode(stream, EEP_UPB);
    } else {
        TLC_PCode(stream, EEP_EXCH);
        TLC_PCode(stream, EEP_POP);
    }
    return done;
}

static int32_t upb_code(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_TERM *array = TLE_CallArgument(term, 0);
    if (array == nullptr) return 0;
    const int32_t done = array->identifier != nullptr ? TLI_PushDimension(stream, array->identifier)
                                                      : length_of_value(stream, array);
    TLC_Literal(stream, 1);
    TLC_PCode(stream, EEP_SUB);
    return done;
}

/** C keeps no length with an array. */
static int32_t refuse_upb(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *)
{
    TLC_Error(stream, "Runtime 'upb' not possible in 'C'");
    return 0;
}

/** The array as a whole is asked for its length, whichever element the argument names. */
static int32_t upb_java(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    const TLE_TERM *array = TLE_CallArgument(term, 0);
    if (array == nullptr) return 0;
    TLE_TERM whole = *array;
    if (whole.kind == TLT_TOKEN_IDENTIFIER) whole.left = nullptr;
    const int32_t written = TLE_TermCode(stream, &whole, TLE_MODE_VALUE);
    fputs(".length() - 1", TLC_CFile(stream));
    return written;
}

// Records

constexpr TLB_BUILT_IN TLB_Min = {
    .name = "min",
    .minimum_arguments = 1,
    .maximum_arguments = 2,
    .check = check_end,
    .simplify = simplify_end,
    .p_code = end_code,
    .c_text = end_text,
    .java_text = end_text,
};

constexpr TLB_BUILT_IN TLB_Max = {
    .name = "max",
    .minimum_arguments = 1,
    .maximum_arguments = 2,
    .check = check_end,
    .simplify = simplify_end,
    .p_code = end_code,
    .c_text = end_text,
    .java_text = end_text,
};

constexpr TLB_BUILT_IN TLB_Upb = {
    .name = "upb",
    .minimum_arguments = 1,
    .maximum_arguments = 1,
    .check = check_upb,
    .simplify = simplify_upb,
    .p_code = upb_code,
    .c_text = refuse_upb,
    .java_text = upb_java,
};
