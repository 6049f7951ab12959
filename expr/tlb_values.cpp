/*
 * Built-in functions of values and their types: abs, cast, to_float and round.
 */
#include "expr/tlb.h"

#include <cstring>

#include "expr/tle_code.h"
#include "expr/tle_java.h"
#include "names/tlit.h"
#include <ostrum/eep.h>
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

static bool is_c(TLC_STREAM *stream)
{
    return TLC_Target(stream) == TLC_TARGET_C;
}

// abs: the extra word is 1 for a value that can be negative

static TLI_IDENTIFIER *check_abs(const TLB_BUILT_IN *, TLP_MODULE *, TLT_STATEMENT *,
                                 TLE_TERM *term)
{
    TLI_IDENTIFIER *type = TLB_ArgumentType(term, 0);
    term->extra = 0;
    if (TLIT_IsEnumeration(type)) return TLIT_IntType;
    if (!TLB_HasBase(type, TLIT_IntType)) return nullptr;
    term->extra = 1;
    return type;
}

/** The lowest number stays as it is, as it does when a program negates it. */
static int32_t magnitude(int32_t value)
{
    const auto bits = static_cast<uint32_t>(value);
    return static_cast<int32_t>(value < 0 ? 0 - bits : bits);
}

static TLE_TERM *simplify_abs(const TLB_BUILT_IN *, TLP_MODULE *, TLE_TERM *term)
{
    int32_t value = 0;
    if (!TLE_Constant(TLE_CallArgument(term, 0), &value)) return nullptr;
    return TLE_ConstantTerm(term->use, term->type, magnitude(value));
}

static void negate_if_negative(TLC_STREAM *stream)
{
    TLC_PSECT *jump = TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_DUP);
    TLC_NewPSect(stream);
    TLC_PCode(stream, EEP_NEG);
    TLC_PSECT *end = TLC_NewPSect(stream);
    TLC_SetPSect(stream, jump);
    TLC_PCode(stream, EEP_JNN);
    TLC_Jump(stream, end);
    TLC_SetPSect(stream, end);
}

static int32_t abs_code(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    const int32_t done = TLB_ArgumentCode(stream, term, 0);
    if (term->extra != 0) negate_if_negative(stream);
    return done;
}

/** An enumeration value that was not read from a byte can be negative, and stays so. */
static bool keeps_sign(TLE_TERM *term)
{
    const TLE_TERM *argument = TLE_CallArgument(term, 0);
    if (term->extra != 0 || argument == nullptr) return false;
    return argument->kind == TLE_BUILT_IN || argument->kind == TLT_TOKEN_ASSIGN;
}

static int32_t abs_text(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    const bool is_plain = keeps_sign(term);
    const char *word = is_c(stream) ? "((INT) (" : "(";
    fputs(is_plain ? word : "abs(", TLC_CFile(stream));
    const int32_t written = TLB_ArgumentCode(stream, term, 0);
    fputs(is_plain && is_c(stream) ? "))" : ")", TLC_CFile(stream));
    return written;
}

// cast: another type for the same word

static TLI_IDENTIFIER *cast_integer(TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                                    TLI_IDENTIFIER *wanted)
{
    if (!TLB_IsIntegerBased(type)) return nullptr;
    if (TLB_IsIntegerBased(wanted)) return wanted;
    TLT_Error(statement, "Second argument must be a INT-based TYPE");
    return nullptr;
}

static bool are_text_and_message(const TLP_MODULE *module, const TLI_IDENTIFIER *type,
                                 const TLI_IDENTIFIER *wanted)
{
    TLI_DOMAIN *data_types = TLP_DataTypeDomain(const_cast<TLP_MODULE *>(module));
    const TLI_IDENTIFIER *message = TLIT_FindType(data_types, "MESSAGE");
    return message != nullptr && ((type == TLIT_StringType && wanted == message) ||
                                  (type == message && wanted == TLIT_StringType));
}

static bool is_null_for(const TLE_TERM *value, TLI_IDENTIFIER *wanted)
{
    if (value->kind != TLT_TOKEN_NULL) return false;
    return wanted == TLIT_StringType || TLB_HasBase(wanted, TLIT_DataType);
}

static bool are_one_object(TLI_IDENTIFIER *type, TLI_IDENTIFIER *wanted)
{
    if (!TLIT_IsRecordType(type) || !TLIT_IsRecordType(wanted)) return false;
    const char *class_id = TLI_FindPragma(type, "CLSID");
    const char *wanted_id = TLI_FindPragma(wanted, "CLSID");
    return class_id != nullptr && wanted_id != nullptr && strcmp(class_id, wanted_id) == 0;
}

static TLI_IDENTIFIER *check_cast(const TLB_BUILT_IN *, TLP_MODULE *module,
                                  TLT_STATEMENT *statement, TLE_TERM *term)
{
    const TLE_TERM *value = TLE_CallArgument(term, 0);
    TLI_IDENTIFIER *wanted = TLE_Type(TLE_CallArgument(term, 1));
    if (value == nullptr || wanted == nullptr) return nullptr;
    TLI_IDENTIFIER *number_type = cast_integer(statement, value->type, wanted);
    if (number_type != nullptr) return number_type;
    const bool fits = are_text_and_message(module, value->type, wanted) ||
                      is_null_for(value, wanted) || are_one_object(value->type, wanted);
    return fits ? wanted : nullptr;
}

static TLE_TERM *simplify_cast(const TLB_BUILT_IN *, TLP_MODULE *, TLE_TERM *term)
{
    const TLE_TERM *value = TLE_CallArgument(term, 0);
    int32_t number = 0;
    if (TLE_Constant(value, &number)) return TLE_ConstantTerm(term->use, term->type, number);
    if (value == nullptr || value->kind != TLT_TOKEN_STRING) return nullptr;
    TLE_TERM *text = TLE_NewTerm(TLT_TOKEN_STRING, term->use, "TLB:TLE_TERM(CastSimplify)");
    TLE_SetText(text, TLE_TermValue(value));
    text->type = term->type;
    return text;
}

static int32_t cast_code(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    TLC_NewPSect(stream);
    return TLB_ArgumentCode(stream, term, 0);
}

/** A cast changes no bit, so one to a narrow type is written as a cast to the whole word. */
static const char *cast_name(TLI_IDENTIFIER *type)
{
    const bool is_narrow = type == TLIT_CharType || type == TLIT_ShortType;
    return TLI_IdentifierName(is_narrow ? TLIT_IntType : type);
}

static int32_t cast_text(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    fprintf(TLC_CFile(stream), "((%s) (", cast_name(term->type));
    const int32_t written = TLB_ArgumentCode(stream, term, 0);
    fputs("))", TLC_CFile(stream));
    return written;
}

/** All that can be cast is of one type in Java. */
static int32_t cast_java(const TLB_BUILT_IN *, TLC_STREAM *stream, TLE_TERM *term)
{
    fputs("(", TLC_CFile(stream));
    const int32_t written = TLB_ArgumentCode(stream, term, 0);
    fputs(")", TLC_CFile(stream));
    return written;
}

// to_float and round

static TLI_IDENTIFIER *check_to_float(const TLB_BUILT_IN *, TLP_MODULE *, TLT_STATEMENT *,
                                      TLE_TERM *term)
{
    return TLB_HasBase(TLB_ArgumentType(term, 0), TLIT_IntType) ? TLIT_FloatType : nullptr;
}

static TLI_IDENTIFIER *check_round(const TLB_BUILT_IN *, TLP_MODULE *, TLT_STATEMENT *,
                                   TLE_TERM *term)
{
    return TLB_HasBase(TLB_ArgumentType(term, 0), TLIT_FloatType) ? TLIT_IntType : nullptr;
}

static int32_t conversion_code(const TLB_BUILT_IN *record, TLC_STREAM *stream, TLE_TERM *term)
{
    TLC_NewPSect(stream);
    const int32_t done = TLB_ArgumentCode(stream, term, 0);
    TLC_PCode(stream, record == &TLB_ToFloat ? EEP_FLOAT : EEP_FIX);
    return done;
}

static int32_t conversion_text(const TLB_BUILT_IN *record, TLC_STREAM *stream, TLE_TERM *term)
{
    FILE *file = TLC_CFile(stream);
    if (record == &TLB_Round && is_c(stream)) {
        /* C leaves open what becomes of a value beyond the word. */
        fputs("toll_round(", file);
        const int32_t written = TLB_ArgumentCode(stream, term, 0);
        fputs(")", file);
        return written;
    }
    fputs(record == &TLB_ToFloat ? "(float) " : "(int) ", file);
    /* Java makes no int of an object that holds a float. */
    const bool is_object =
        record == &TLB_Round && TLE_IsJavaItem(stream, TLE_CallArgument(term, 0));
    if (is_object) fputs("(float) ", file);
    return TLB_TightArgument(stream, term, 0);
}

// Records

constexpr TLB_BUILT_IN TLB_Abs = {
    .name = "abs",
    .minimum_arguments = 1,
    .maximum_arguments = 1,
    .check = check_abs,
    .simplify = simplify_abs,
    .p_code = abs_code,
    .c_text = abs_text,
    .java_text = abs_text,
};

constexpr TLB_BUILT_IN TLB_Cast = {
    .name = "cast",
    .minimum_arguments = 2,
    .maximum_arguments = 2,
    .check = check_cast,
    .simplify = simplify_cast,
    .p_code = cast_code,
    .c_text = cast_text,
    .java_text = cast_java,
};

constexpr TLB_BUILT_IN TLB_ToFloat = {
    .name = "to_float",
    .minimum_arguments = 1,
    .maximum_arguments = 1,
    .check = check_to_float,
    .simplify = nullptr,
    .p_code = conversion_code,
    .c_text = conversion_text,
    .java_text = conversion_text,
};

constexpr TLB_BUILT_IN TLB_Round = {
    .name = "round",
    .minimum_arguments = 1,
    .maximum_arguments = 1,
    .check = check_round,
    .simplify = nullptr,
    .p_code = conversion_code,
    .c_text = conversion_text,
    .java_text = conversion_text,
};
