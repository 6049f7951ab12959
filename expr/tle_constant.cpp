/*
 * Constant evaluation: a folded expression against the type wanted of it, and the word that it
 * stands for: a number, a text, or the term itself where only a generator can tell the value.
 */
#include "expr/tle.h"

#include <cstdio>

#include "names/tlit.h"
#include "names/tliv.h"
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* Counts of a TIME, microseconds, in one of a CLOCK_TIME, milliseconds. */
static constexpr int32_t TIME_IN_CLOCK_TIME = 1000;

/* What one constant is evaluated for. */
struct CONSTANT_REQUEST {
    TLP_MODULE *module;
    TLT_STATEMENT *statement; /* null: nothing is reported */
    TLI_IDENTIFIER *wanted;
    TLI_IDENTIFIER *base; /* of the type wanted */
    int32_t quiet;
};

static int32_t refuse(const CONSTANT_REQUEST &request, const char *text)
{
    if (request.statement != nullptr) TLT_Error(request.statement, text);
    return 0;
}

static int32_t give(intptr_t value, intptr_t *out)
{
    *out = value;
    return 1;
}

static int32_t give_term(TLE_TERM *term, intptr_t *out)
{
    return give(reinterpret_cast<intptr_t>(term), out);
}

static bool is_function_type(TLI_IDENTIFIER *type)
{
    return TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_FUNCTION;
}

static bool is_function(TLI_IDENTIFIER *type)
{
    return type != nullptr && TLI_IdentifierClass(type) == TLI_FUNCTION;
}

/* Functions that differ are reported where they are matched, even without a statement. */
static bool matches(const CONSTANT_REQUEST &request, TLI_IDENTIFIER *type)
{
    if (request.statement == nullptr && is_function_type(request.wanted) && is_function(type)) {
        return TLIV_SameFunctions(TLIT_FunctionTypePrototype(request.wanted), type, 0) != 0;
    }
    return TLIT_MatchType(request.module, request.statement, request.wanted, type) != 0;
}

static int32_t word_value(const CONSTANT_REQUEST &request, TLE_TERM *term, intptr_t *out)
{
    if (term->kind == TLT_TOKEN_NUMBER) return give(term->value, out);
    return refuse(request, "WORD values can only be initialised with numbers");
}

static bool is_time(const TLI_IDENTIFIER *type)
{
    return type == TLIT_Time || type == TLIT_ClockTime;
}

/* The two times count in different units; multiplication wraps as it does at run time. */
static int32_t convert_time(TLE_TERM *term, TLI_IDENTIFIER *wanted)
{
    if (wanted == TLIT_ClockTime) return term->value / TIME_IN_CLOCK_TIME;
    return static_cast<int32_t>(static_cast<uint32_t>(term->value) * TIME_IN_CLOCK_TIME);
}

static int32_t number_value(const CONSTANT_REQUEST &request, TLE_TERM *term, intptr_t *out)
{
    if (matches(request, term->type)) return give(term->value, out);
    if (!is_time(request.wanted) || !is_time(term->type)) {
        return refuse(request, "Type mismatch in constant expression");
    }
    term->value = convert_time(term, request.wanted);
    term->type = request.wanted;
    return give(term->value, out);
}

static int32_t integer_value(const CONSTANT_REQUEST &request, TLE_TERM *term, intptr_t *out)
{
    if (term->kind == TLT_TOKEN_NUMBER) return number_value(request, term, out);
    if (term->kind != TLT_TOKEN_DATA_LITERAL) return refuse(request, "Not a compile-time constant");
    if (term->type != TLIT_DataType && !matches(request, term->type)) {
        return refuse(request, "Wrong type of DATA value");
    }
    term->type = request.wanted;
    return give_term(term, out);
}

static int32_t string_value(const CONSTANT_REQUEST &request, TLE_TERM *term, intptr_t *out)
{
    if (term->kind == TLT_TOKEN_STRING) {
        return give(reinterpret_cast<intptr_t>(TLE_TermValue(term)), out);
    }
    if (term->kind != TLT_TOKEN_NULL) return refuse(request, "Not a compile-time string constant");
    term->type = TLIT_StringType;
    return give(0, out);
}

/* A text stands for a MESSAGE, which is what its type becomes. */
static int32_t take_message(const CONSTANT_REQUEST &request, TLE_TERM *term)
{
    TLI_IDENTIFIER *message = TLIT_FindType(TLP_DataTypeDomain(request.module), "MESSAGE");
    if (request.wanted != TLIT_DataType && request.wanted != message) {
        return refuse(request, "Wrong type of DATA constant");
    }
    if (term->type != message && !request.quiet && request.statement != nullptr) {
        TLIT_EnglishStringWarning(request.module, request.statement);
    }
    term->type = message;
    return 1;
}

/* Gives a term that can stand for data the type that it stands for here; 0 if it cannot. */
static int32_t take_data(const CONSTANT_REQUEST &request, TLE_TERM *term)
{
    switch (term->kind) {
    case TLE_ADDRESS:
        return 1;
    case TLT_TOKEN_NULL:
        term->type = request.wanted;
        return 1;
    case TLT_TOKEN_STRING:
        return take_message(request, term);
    case TLT_TOKEN_DATA_LITERAL:
        if (term->type == TLIT_DataType) term->type = request.wanted;
        return 1;
    default:
        return refuse(request, "Not a compile-time DATA constant");
    }
}

static int32_t data_value(const CONSTANT_REQUEST &request, TLE_TERM *term, intptr_t *out)
{
    if (!take_data(request, term)) return 0;
    if (request.wanted == TLIT_DataType || matches(request, term->type)) {
        return give_term(term, out);
    }
    return refuse(request, "Wrong type of DATA constant");
}

static int32_t pointer_value(const CONSTANT_REQUEST &request, TLE_TERM *term, intptr_t *out)
{
    if (term->kind == TLT_TOKEN_NULL || term->kind == TLT_TOKEN_DATA_LITERAL)
        return give_term(term, out);
    bool fits = term->type == request.wanted || term->type == TLIT_PointerAt(request.wanted);
    if (term->identifier != nullptr && fits) return give_term(term, out);
    char text[128];
    std::snprintf(text, sizeof text, "Pointer '%s' points at the wrong type '%s'",
                  TLI_IdentifierName(request.wanted), TLI_IdentifierName(term->type));
    return refuse(request, text);
}

static int32_t array_value(const CONSTANT_REQUEST &request, TLE_TERM *term, intptr_t *out)
{
    bool fits = term->type == request.wanted || term->type == TLIT_ArrayOf(request.wanted);
    return fits ? give_term(term, out) : refuse(request, "Array of wrong type");
}

static int32_t unknown_value(const CONSTANT_REQUEST &request)
{
    if (request.statement != nullptr) {
        TLT_FatalError(request.statement, "Unrecognised base type");
    }
    return 0;
}

static bool is_data(const CONSTANT_REQUEST &request)
{
    return request.wanted == TLIT_DataType || request.base == TLIT_DataType ||
           is_function_type(request.wanted);
}

int32_t TLE_ConstantValue(TLP_MODULE *module, TLT_STATEMENT *statement, TLE_TERM *term,
                          TLI_IDENTIFIER *wanted, intptr_t *value, int32_t quiet)
{
    if (term == nullptr || wanted == nullptr) return 0;
    const CONSTANT_REQUEST request = {
        .module = module,
        .statement = statement,
        .wanted = wanted,
        .base = TLIT_TypeBaseType(statement, wanted),
        .quiet = quiet,
    };
    if (term->right != nullptr) return refuse(request, "Expression too complex");
    if (wanted == TLIT_WordType) return word_value(request, term, value);
    if (TLIT_MatchType(module, nullptr, request.base, TLIT_IntType)) {
        return integer_value(request, term, value);
    }
    if (request.base == TLIT_StringType) return string_value(request, term, value);
    if (is_data(request)) return data_value(request, term, value);
    if (request.base == TLIT_PtrType) return pointer_value(request, term, value);
    if (request.base == TLIT_ArrayType) return array_value(request, term, value);
    return unknown_value(request);
}

int32_t TLE_GetConstantValue(TLP_MODULE *module, TLE_TERM *term, intptr_t *value)
{
    return TLE_ConstantValue(module, nullptr, term, TLE_ExpressionType(term), value, 0);
}
