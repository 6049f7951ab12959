/*
 * Expressions as C and Java text: names, literals, and operators with the brackets that the
 * target's own priorities ask for.
 */
#include "expr/tle_c.h"
#include "host/host.h"

#include <cstdint>
#include <cstdio>

#include "codegen/tlc.h"
#include "codegen/tlcc.h"
#include "expr/tlb.h"
#include "expr/tle_java.h"
#include "names/tliv.h"
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

static bool is_c(TLC_STREAM *stream)
{
    return TLC_Target(stream) == TLC_TARGET_C;
}

/* ---- Operands ---- */

static TLI_IDENTIFIER *enumeration_value(const TLE_TERM *term)
{
    return TLIT_EnumGetValue(term->type, term->value);
}

bool TLE_IsNegativeLiteral(const TLE_TERM *term)
{
    return term->kind == TLT_TOKEN_NUMBER && term->value < 0 && enumeration_value(term) == nullptr;
}

/* C knows a value of a static scope by its full name. */
static void enumeration_text(TLC_STREAM *stream, TLI_IDENTIFIER *value)
{
    char name[TLCC_NAME_CAPACITY];
    HOST_PutText(TLC_CFile(stream), TLCC_Name(value, name));
}

static int32_t number_text(TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *value = enumeration_value(term);
    if (value != nullptr) {
        enumeration_text(stream, value);
    } else if (term->value == INT32_MIN) {
        /* C reads the digits first, and they are no int. */
        HOST_PutText(TLC_CFile(stream), "(-2147483647-1)");
    } else {
        TLC_Literal(stream, term->value);
    }
    return 1;
}

/* The number of elements that a subscript is held against; 0 for a subscript that needs no check. */
static int32_t checked_bound(TLC_STREAM *stream, const TLE_TERM *term)
{
    int32_t bound = TLI_IdentifierDimension(term->identifier, nullptr);
    int32_t subscript = 0;
    if (bound <= 0) return 0;
    if (TLE_Constant(term->left, &subscript)) {
        return subscript >= 0 && subscript < bound ? 0 : bound;
    }
    return TLC_StreamFlags(stream) & TLC_FLAG_CHECKS ? bound : 0;
}

static int32_t subscript_text(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term->left == nullptr) return 1;
    FILE *file = TLC_CFile(stream);
    int32_t bound = checked_bound(stream, term);
    HOST_PutText(file, bound > 0 ? "[toll_index(" : "[");
    int32_t done = TLE_TermCode(stream, term->left, TLE_MODE_VALUE);
    if (bound > 0) std::fprintf(file, ",%d)", bound);
    HOST_PutText(file, "]");
    return done;
}

/* A name with nothing behind it that stands for a whole array. */
static bool names_array(const TLE_TERM *term)
{
    return term->left == nullptr && term->identifier != nullptr &&
           (TLI_IdentifierFlags(term->identifier) & TLI_DIMENSIONED) != 0;
}

/*
 * How C reaches an identifier, as what stands before its name: a reference is a pointer there, to the
 * first element where it is to an array, and an array is by itself the address of its elements.
 */
static const char *c_reach(const TLE_TERM *term, int32_t mode)
{
    bool is_reference = TLIV_ArgumentPassType(term->identifier) != TLIV_BY_VALUE;
    bool is_dimensioned = (TLI_IdentifierFlags(term->identifier) & TLI_DIMENSIONED) != 0;
    if (is_reference && !is_dimensioned) return mode == TLE_MODE_VALUE ? "(*" : "";
    if (mode == TLE_MODE_VALUE) return "";
    bool is_address = names_array(term) && (is_reference || mode == TLE_MODE_EXTENT);
    return is_address ? "" : "&";
}

/* C has no functions inside others, and so no way to the variables of one that is around. */
static bool is_out_of_reach(const TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    int32_t kind = TLI_IdentifierClass(identifier);
    if (kind != TLI_VARIABLE && kind != TLI_ARGUMENT) return false;
    TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    bool has_frame = scope != nullptr && TLI_ScopeType(scope) == TLI_FRAME_SCOPE;
    return has_frame && stream->text.frame != nullptr && scope != stream->text.frame;
}

static int32_t identifier_text(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (term->identifier == nullptr || mode > TLE_MODE_EXTENT) return 0;
    char name[TLCC_NAME_CAPACITY];
    if (is_out_of_reach(stream, term->identifier)) {
        TLC_Error(stream, "Variable of an outer function not possible in 'C'");
    }
    FILE *file = TLC_CFile(stream);
    const char *reach = c_reach(term, mode);
    if (reach[0] != '\0') HOST_PutText(file, reach);
    HOST_PutText(file, TLCC_Name(term->identifier, name));
    if (reach[0] == '(') HOST_PutText(file, ")");
    return subscript_text(stream, term);
}

void TLE_DataLiteralText(TLC_STREAM *stream, TLE_TERM *term)
{
    if (is_c(stream)) {
        TLE_CDataLiteral(stream, term);
    } else {
        TLE_JavaDataLiteral(stream, term);
    }
}

static int32_t address_text(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term->identifier == nullptr) {
        TLE_DataTerm(stream, term);
        return 1;
    }
    char name[TLCC_NAME_CAPACITY];
    HOST_PutText(TLC_CFile(stream), TLCC_Name(term->identifier, name));
    return 1;
}

/* The first argument of two, before anything that the second does. */
static int32_t built_in_text(TLC_STREAM *stream, TLE_TERM *term)
{
    if (!TLE_IsUnorderedCall(stream, term)) return TLB_GenerateCode(stream, term);
    FILE *file = TLC_CFile(stream);
    HOST_PutText(file, "(");
    TLE_TERM *first = term->left;
    int32_t number = TLE_OpenTemporary(stream, first->left->type, false);
    int32_t done = TLE_TermCode(stream, first->left, TLE_MODE_VALUE);
    std::fprintf(file, ",%s(toll_%d,", TLI_IdentifierName(term->identifier), number);
    done &= TLE_TermCode(stream, first->right->left, TLE_MODE_VALUE);
    HOST_PutText(file, "))");
    return done;
}

static int32_t value_text(TLC_STREAM *stream, TLE_TERM *term)
{
    switch (term->kind) {
    case TLE_INDIRECT_CALL:
        return TLE_CallCode(stream, term, 0);
    case TLE_CALL:
        return TLE_CallCode(stream, term, 1);
    case TLE_BUILT_IN:
        return built_in_text(stream, term);
    case TLT_TOKEN_NUMBER:
        return number_text(stream, term);
    case TLE_ADDRESS:
        return address_text(stream, term);
    case TLT_TOKEN_NULL:
    case TLT_TOKEN_STRING:
    case TLT_TOKEN_DATA_LITERAL:
        TLE_DataTerm(stream, term);
        return 1;
    default:
        return 0;
    }
}

int32_t TLE_OperandText(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (!is_c(stream)) return TLE_JavaOperand(stream, term, mode);
    if (term->kind == TLT_TOKEN_IDENTIFIER) return identifier_text(stream, term, mode);
    return mode == TLE_MODE_VALUE ? value_text(stream, term) : 0;
}

/* ---- Operators ---- */

struct TEXT_ROW {
    int32_t token;
    const char *c;
    const char *java;
    int32_t level; /* with two operands; a single operand makes it TLE_LEVEL_SIGN */
};

static constexpr TEXT_ROW text_rows[] = {
    { .token = TLT_TOKEN_ASSIGN, .c = "=", .java = "=", .level = TLE_LEVEL_ASSIGNMENT },
    { .token = TLT_TOKEN_PLUS, .c = "+", .java = "+", .level = TLE_LEVEL_SUM },
    { .token = TLT_TOKEN_MINUS, .c = "-", .java = "-", .level = TLE_LEVEL_SUM },
    { .token = TLT_TOKEN_STAR, .c = "*", .java = "*", .level = TLE_LEVEL_PRODUCT },
    { .token = TLT_TOKEN_SLASH, .c = "/", .java = "/", .level = TLE_LEVEL_PRODUCT },
    { .token = TLT_TOKEN_MOD, .c = "%", .java = "%", .level = TLE_LEVEL_PRODUCT },
    { .token = TLT_TOKEN_TILDE, .c = "~", .java = "~", .level = TLE_LEVEL_SIGN },
    { .token = TLT_TOKEN_AMPERSAND, .c = "&", .java = "&", .level = TLE_LEVEL_BIT_AND },
    { .token = TLT_TOKEN_BAR, .c = "|", .java = "|", .level = TLE_LEVEL_BIT_OR },
    { .token = TLT_TOKEN_CARET, .c = "^", .java = "^", .level = TLE_LEVEL_BIT_XOR },
    { .token = TLT_TOKEN_EQUAL, .c = "==", .java = "==", .level = TLE_LEVEL_EQUALITY },
    { .token = TLT_TOKEN_NOT_EQUAL, .c = "!=", .java = "!=", .level = TLE_LEVEL_EQUALITY },
    { .token = TLT_TOKEN_LESS, .c = "<", .java = "<", .level = TLE_LEVEL_RELATION },
    { .token = TLT_TOKEN_LESS_EQUAL, .c = "<=", .java = "<=", .level = TLE_LEVEL_RELATION },
    { .token = TLT_TOKEN_GREATER, .c = ">", .java = ">", .level = TLE_LEVEL_RELATION },
    { .token = TLT_TOKEN_GREATER_EQUAL, .c = ">=", .java = ">=", .level = TLE_LEVEL_RELATION },
    { .token = TLT_TOKEN_SHIFT_LEFT, .c = "<<", .java = "<<", .level = TLE_LEVEL_SHIFT },
    { .token = TLT_TOKEN_SHIFT_RIGHT, .c = ">>", .java = ">>", .level = TLE_LEVEL_SHIFT },
    { .token = TLT_TOKEN_AND, .c = " && ", .java = " && ", .level = TLE_LEVEL_AND },
    { .token = TLT_TOKEN_OR, .c = " || ", .java = " || ", .level = TLE_LEVEL_OR },
    { .token = TLT_TOKEN_NOT, .c = "!", .java = "!", .level = TLE_LEVEL_SIGN },
    { .token = TLT_TOKEN_COLON, .c = ".", .java = ".", .level = TLE_LEVEL_SELECTION },
    { .token = TLT_TOKEN_ARROW, .c = "->", .java = ".", .level = TLE_LEVEL_SELECTION },
};

struct TEXT_TABLE {
    uint8_t row[TLT_TOKEN_COUNT]; /* place in text_rows, plus 1; 0 for a token without a row */
};

static consteval TEXT_TABLE index_rows()
{
    TEXT_TABLE table = {};
    uint8_t place = 0;
    for (const TEXT_ROW &row : text_rows)
        table.row[row.token] = ++place;
    return table;
}

static constexpr TEXT_TABLE text_table = index_rows();

/* The row of an operator term; null for any other. */
static const TEXT_ROW *find_row(const TLE_TERM *term)
{
    if (term->kind < 0 || term->kind >= TLT_TOKEN_COUNT || text_table.row[term->kind] == 0) {
        return nullptr;
    }
    return &text_rows[text_table.row[term->kind] - 1];
}

int32_t TLE_TextLevel(const TLE_TERM *term)
{
    const TEXT_ROW *row = find_row(term);
    if (row == nullptr && TLB_IsDifference(term)) return TLE_LEVEL_SUM;
    if (row == nullptr) return TLE_IsNegativeLiteral(term) ? TLE_LEVEL_SIGN : TLE_LEVEL_OPERAND;
    return term->left == nullptr ? static_cast<int32_t>(TLE_LEVEL_SIGN) : row->level;
}

/* Operands whose grouping a C compiler wants to see, though its priorities would give it. */
static bool is_doubtful(int32_t outer, int32_t inner)
{
    if (inner >= TLE_LEVEL_SIGN) return false;
    switch (outer) {
    case TLE_LEVEL_OR:
        return inner == TLE_LEVEL_AND;
    case TLE_LEVEL_EQUALITY:
    case TLE_LEVEL_RELATION:
        return inner <= TLE_LEVEL_RELATION;
    case TLE_LEVEL_BIT_OR:
    case TLE_LEVEL_BIT_XOR:
    case TLE_LEVEL_BIT_AND:
    case TLE_LEVEL_SHIFT:
        return inner != outer;
    default:
        return false;
    }
}

bool TLE_NeedsBrackets(int32_t outer_level, int32_t inner_level, bool is_right)
{
    if (inner_level == TLE_LEVEL_OPERAND) return false;
    /* Two signs in a row would be read as one operator. */
    if (inner_level == TLE_LEVEL_SIGN) {
        bool meets_sign = outer_level == TLE_LEVEL_SUM || outer_level == TLE_LEVEL_SIGN;
        return (is_right && meets_sign) || outer_level > TLE_LEVEL_SIGN;
    }
    if (inner_level != outer_level) {
        return inner_level < outer_level || is_doubtful(outer_level, inner_level);
    }
    /* A record of a record reads the same from either side. */
    if (outer_level == TLE_LEVEL_SELECTION) return false;
    bool groups_right = outer_level == TLE_LEVEL_ASSIGNMENT;
    return is_right != groups_right || is_doubtful(outer_level, inner_level);
}

const char *TLE_COperator(const TLE_TERM *term)
{
    const TEXT_ROW *row = find_row(term);
    return row == nullptr ? "" : row->c;
}

const char *TLE_JavaOperatorText(const TLE_TERM *term)
{
    const TEXT_ROW *row = find_row(term);
    return row == nullptr ? "" : row->java;
}

/* The field that a selection ends with. */
static const TLE_TERM *last_field(const TLE_TERM *term)
{
    while (TLE_TextLevel(term) == TLE_LEVEL_SELECTION && term->right != nullptr)
        term = term->right;
    return term;
}

/* In C the address of a field has its sign, but the extent of an array is the array itself. */
static bool has_address_sign(const TLE_TERM *term, int32_t mode)
{
    if (mode == TLE_MODE_VALUE || TLE_TextLevel(term) != TLE_LEVEL_SELECTION) return false;
    return mode != TLE_MODE_EXTENT || !names_array(last_field(term));
}

int32_t TLE_OperatorText(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (!is_c(stream)) return TLE_JavaOperator(stream, term, mode);
    if (has_address_sign(term, mode)) HOST_PutText(TLC_CFile(stream), "&");
    return TLE_COperatorText(stream, term, mode);
}
