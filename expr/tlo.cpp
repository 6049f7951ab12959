/*
 * Operators: the types that they take and give, and their values for constants. The types tell
 * quantities apart: a sum keeps its quantity, a product can make another one of two.
 */
#include "expr/tlo.h"

#include <iterator>

#include "names/tli.h"
#include <ostrum/eep.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

// Questions about types

static bool is_integer(const TLE_TERM *term)
{
    return TLIT_IntegerType(term->type) != 0;
}

static bool has_int_base(const TLE_TERM *term)
{
    return term->type != nullptr && TLIT_TypeBaseType(nullptr, term->type) == TLIT_IntType;
}

static int32_t subclass_of(const TLE_TERM *term)
{
    return term->type == nullptr ? TLIT_SUBCLASS_SIMPLE : TLIT_TypeSubclass(nullptr, term->type);
}

/** The record that a pointer's value leads to; null for any other type. */
static TLI_IDENTIFIER *target_of(const TLE_TERM *term)
{
    return subclass_of(term) == TLIT_SUBCLASS_POINTER ? TLIT_PointerAt(term->type) : nullptr;
}

// Coercion

/** The rules of coercion, but for the one that decides alone for types of base INT. */
static bool can_coerce(TLP_MODULE *module, TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                       const TLE_TERM *term)
{
    if (term->kind == TLT_TOKEN_NULL && TLIT_PointerType(type)) return true;
    const int32_t subclass = TLIT_TypeSubclass(nullptr, type);
    if (term->kind == TLT_TOKEN_DATA_LITERAL) {
        if (subclass == TLIT_SUBCLASS_DATA && term->type == TLIT_DataType) return true;
        if (subclass == TLIT_SUBCLASS_POINTER) return true;
    }
    if (term->type != TLIT_StringType) return false;
    if (type != TLIT_FindType(TLP_DataTypeDomain(module), "MESSAGE")) return false;
    TLIT_EnglishStringWarning(module, statement);
    return true;
}

int32_t TLE_CoerceData(TLP_MODULE *module, TLT_STATEMENT *statement, TLI_IDENTIFIER *type,
                       TLE_TERM *term)
{
    if (term == nullptr || type == nullptr || term->type == type) return 0;
    if (!can_coerce(module, statement, type, term)) {
        const bool is_int = TLIT_TypeBaseType(nullptr, type) == TLIT_IntType;
        if (!is_int || term->type != TLIT_DataType) return 0;
    }
    term->type = type;
    return 1;
}

// Constants

/** Both operands of a dyadic term, if they are numbers. */
static bool get_constants(const TLE_TERM *term, int32_t *left, int32_t *right)
{
    return TLE_Constant(term->left, left) && TLE_Constant(term->right, right);
}

static TLE_TERM *number(const TLE_TERM *term, TLI_IDENTIFIER *type, int32_t value)
{
    return TLE_ConstantTerm(term->use, type, value);
}

static int32_t wrapped_sum(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

static int32_t wrapped_difference(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

static int32_t wrapped_product(int32_t a, int32_t b)
{
    return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

// Sums

static TLI_IDENTIFIER *check_sum(TLP_MODULE *, TLT_STATEMENT *, const TLE_OPERATOR *,
                                 TLE_TERM *term)
{
    const TLE_TERM *left = term->left;
    const TLE_TERM *right = term->right;
    if (left == nullptr) {
        if (is_integer(right)) return TLIT_IntType;
        return has_int_base(right) ? right->type : nullptr;
    }
    if (is_integer(left) && is_integer(right)) return TLIT_IntType;
    return left->type == right->type && has_int_base(left) ? left->type : nullptr;
}

static TLE_TERM *simplify_sum(const TLE_OPERATOR *record, TLE_TERM *term)
{
    int32_t left = 0;
    int32_t right = 0;
    if (!TLE_Constant(term->right, &right)) return nullptr;
    if (term->left != nullptr && !TLE_Constant(term->left, &left)) return nullptr;
    const bool is_plus = record->token == TLT_TOKEN_PLUS;
    const int32_t value = is_plus ? wrapped_sum(left, right) : wrapped_difference(left, right);
    return number(term, term->type, value);
}

// Products

// A product or quotient of two types: its code, the decimal digits of its scale, and its type. The
// scales follow from the counts: hundredths of an ohm, milliamps, millivolts; microseconds, millihertz.
struct PRODUCT_RULE {
    int32_t token;
    TLI_IDENTIFIER **left; // null: INT, CHAR, SHORT, QUANTITY
    TLI_IDENTIFIER **right;
    int32_t p_code;
    int32_t digits;
    TLI_IDENTIFIER **result;
};

static constexpr PRODUCT_RULE product_rules[] = {
    { TLT_TOKEN_STAR, &TLIT_Resistance, &TLIT_Current, EEP_SMUL, 2, &TLIT_Voltage },
    { TLT_TOKEN_STAR, &TLIT_Current, &TLIT_Resistance, EEP_SMUL, 2, &TLIT_Voltage },
    { TLT_TOKEN_SLASH, &TLIT_Voltage, &TLIT_Resistance, EEP_SDIV, 2, &TLIT_Current },
    { TLT_TOKEN_SLASH, &TLIT_Voltage, &TLIT_Current, EEP_SDIV, 2, &TLIT_Resistance },
    { TLT_TOKEN_SLASH, nullptr, &TLIT_Time, EEP_SDIV, 9, &TLIT_Frequency },
    { TLT_TOKEN_SLASH, nullptr, &TLIT_Frequency, EEP_SDIV, 9, &TLIT_Time },
};

static const PRODUCT_RULE *find_product_rule(int32_t token, const TLE_TERM *left,
                                             const TLE_TERM *right)
{
    for (const PRODUCT_RULE &rule : product_rules) {
        if (rule.token != token || *rule.right != right->type) continue;
        const bool fits = rule.left == nullptr ? is_integer(left) : *rule.left == left->type;
        if (fits) return &rule;
    }
    return nullptr;
}

static TLI_IDENTIFIER *quantity_product(const TLE_OPERATOR *record, TLE_TERM *term)
{
    const TLE_TERM *left = term->left;
    const TLE_TERM *right = term->right;
    const bool is_quotient = record->token == TLT_TOKEN_SLASH;
    if (record->token != TLT_TOKEN_STAR && !is_quotient) return nullptr;
    const PRODUCT_RULE *rule = find_product_rule(record->token, left, right);
    if (rule != nullptr) {
        term->extra = rule->p_code | rule->digits << TLO_SCALE_SHIFT;
        return *rule->result;
    }
    if (is_integer(left)) return right->type;
    if (is_integer(right)) return left->type;
    return is_quotient && left->type == right->type ? TLIT_IntType : nullptr;
}

static TLI_IDENTIFIER *check_product(TLP_MODULE *, TLT_STATEMENT *, const TLE_OPERATOR *record,
                                     TLE_TERM *term)
{
    term->extra = record->p_code;
    if (is_integer(term->left) && is_integer(term->right)) return TLIT_IntType;
    if (!has_int_base(term->left) || !has_int_base(term->right)) return nullptr;
    return quantity_product(record, term);
}

int32_t TLO_Scale(int32_t extra)
{
    int32_t scale = 1;
    for (int32_t digits = extra >> TLO_SCALE_SHIFT; digits > 0; digits--)
        scale *= 10;
    return scale;
}

/** 1 and the value, truncated toward zero, if it fits 32 bits. */
static int32_t truncate(double value, int32_t *result)
{
    if (!(value > -2147483649.0 && value < 2147483648.0)) return 0;
    *result = static_cast<int32_t>(value);
    return 1;
}

static int32_t fold_scaled(int32_t extra, int32_t a, int32_t b, int32_t *result)
{
    const double scale = TLO_Scale(extra);
    const double left = a;
    const double right = b;
    if ((extra & TLO_CODE_MASK) == EEP_SMUL) return truncate(left * right / scale, result);
    if (b == 0) return 0;
    return truncate(left / right * scale, result);
}

/** 1 and the quotient or remainder; 0 where the division has none that fits. */
static int32_t fold_division(int32_t code, int32_t a, int32_t b, int32_t *result)
{
    if (b == 0 || (a == INT32_MIN && b == -1)) return 0;
    *result = code == EEP_DIV ? a / b : a % b;
    return 1;
}

static int32_t fold_bits(int32_t code, int32_t a, int32_t b, int32_t *result)
{
    switch (code) {
    case EEP_AND:
        *result = a & b;
        return 1;
    case EEP_OR:
        *result = a | b;
        return 1;
    case EEP_XOR:
        *result = a ^ b;
        return 1;
    case EEP_SL:
        *result = static_cast<int32_t>(static_cast<uint32_t>(a) << (b & 31));
        return 1;
    case EEP_SR:
        *result = a >> (b & 31);
        return 1;
    default:
        return 0;
    }
}

static int32_t fold_product(int32_t extra, int32_t a, int32_t b, int32_t *result)
{
    const int32_t code = extra & TLO_CODE_MASK;
    switch (code) {
    case EEP_MUL:
        *result = wrapped_product(a, b);
        return 1;
    case EEP_DIV:
    case EEP_REM:
        return fold_division(code, a, b, result);
    case EEP_SMUL:
    case EEP_SDIV:
        return fold_scaled(extra, a, b, result);
    default:
        return fold_bits(code, a, b, result);
    }
}

static TLE_TERM *simplify_product(const TLE_OPERATOR *, TLE_TERM *term)
{
    int32_t left = 0;
    int32_t right = 0;
    int32_t value = 0;
    if (!get_constants(term, &left, &right)) return nullptr;
    if (!fold_product(term->extra, left, right, &value)) return nullptr;
    return number(term, term->type, value);
}

// Operators of one operand

static TLI_IDENTIFIER *check_invert(TLP_MODULE *, TLT_STATEMENT *statement, const TLE_OPERATOR *,
                                    TLE_TERM *term)
{
    if (term->right->type == TLIT_IntType) return TLIT_IntType;
    TLT_Error(statement, "Operand of '~' must be of type INT");
    return nullptr;
}

static TLE_TERM *simplify_invert(const TLE_OPERATOR *, TLE_TERM *term)
{
    int32_t value = 0;
    if (!TLE_Constant(term->right, &value)) return nullptr;
    return number(term, TLIT_IntType, ~value);
}

static TLI_IDENTIFIER *check_not(TLP_MODULE *, TLT_STATEMENT *statement, const TLE_OPERATOR *,
                                 TLE_TERM *term)
{
    if (term->right->type == TLIT_BoolType) return TLIT_BoolType;
    TLT_Error(statement, "Operand of NOT must be of type BOOL");
    return nullptr;
}

static TLE_TERM *simplify_not(const TLE_OPERATOR *, TLE_TERM *term)
{
    int32_t value = 0;
    if (!TLE_Constant(term->right, &value)) return nullptr;
    return number(term, TLIT_BoolType, value == 0);
}

// AND and OR

static TLI_IDENTIFIER *check_junction(TLP_MODULE *, TLT_STATEMENT *statement, const TLE_OPERATOR *,
                                      TLE_TERM *term)
{
    if (term->left->type == TLIT_BoolType && term->right->type == TLIT_BoolType)
        return TLIT_BoolType;
    TLT_Error(statement, "Operands must be of type BOOL");
    return nullptr;
}

static TLE_TERM *simplify_junction(const TLE_OPERATOR *record, TLE_TERM *term)
{
    int32_t left = 0;
    int32_t right = 0;
    if (!get_constants(term, &left, &right)) return nullptr;
    const bool is_and = record->token == TLT_TOKEN_AND;
    const bool value = is_and ? left != 0 && right != 0 : left != 0 || right != 0;
    return number(term, TLIT_BoolType, value);
}

// Comparisons

static TLI_IDENTIFIER *check_comparison(TLP_MODULE *module, TLT_STATEMENT *statement,
                                        const TLE_OPERATOR *record, TLE_TERM *term)
{
    const TLE_TERM *left = term->left;
    term->extra = 0;
    if (TLIT_MatchType(module, statement, left->type, term->right->type)) {
        const int32_t subclass = subclass_of(left);
        if (subclass == TLIT_SUBCLASS_RECORD)
            TLT_Error(statement, "Record comparison not supported");
        if (subclass == TLIT_SUBCLASS_ARRAY) TLT_Error(statement, "Array comparison not supported");
        term->extra = TLIT_IsStringType(TLP_DataTypeDomain(module), left->type);
        return TLIT_BoolType;
    }
    const bool is_equality =
        record->token == TLT_TOKEN_EQUAL || record->token == TLT_TOKEN_NOT_EQUAL;
    if (!is_equality) return nullptr;
    return TLE_CoerceData(module, statement, left->type, term->right) ? TLIT_BoolType : nullptr;
}

static bool compare(int32_t code, int32_t a, int32_t b)
{
    switch (code) {
    case EEP_EQ:
        return a == b;
    case EEP_NEQ:
        return a != b;
    case EEP_LESS:
        return a < b;
    case EEP_LE:
        return a <= b;
    case EEP_GTR:
        return a > b;
    default:
        return a >= b;
    }
}

static TLE_TERM *simplify_comparison(const TLE_OPERATOR *record, TLE_TERM *term)
{
    int32_t left = 0;
    int32_t right = 0;
    if (term->extra != 0 || !get_constants(term, &left, &right)) return nullptr;
    return number(term, TLIT_BoolType, compare(record->p_code, left, right));
}

// Assignment

static void check_place_of_assignment(TLP_MODULE *module, TLT_STATEMENT *statement, int32_t use)
{
    if (use == TLE_USE_STATEMENT) return;
    if (use == TLE_USE_CONSTANT) {
        TLT_Error(statement, "'=' not permitted in constant expression");
    } else if (TLP_GetPossUnintendAssignInfo(module)) {
        TLT_Information(statement, "Possible unintended assignment");
    }
}

static TLI_IDENTIFIER *store_as(TLE_TERM *term, int32_t mode, TLI_IDENTIFIER *type)
{
    term->extra = mode;
    return type;
}

/** Target and source have types that match. */
static TLI_IDENTIFIER *store_match(TLT_STATEMENT *statement, TLE_TERM *term)
{
    const int32_t subclass = subclass_of(term->left);
    if (subclass == TLIT_SUBCLASS_ARRAY) return store_as(term, TLO_STORE_ARRAY, TLIT_VoidType);
    if (subclass != TLIT_SUBCLASS_RECORD) return store_as(term, TLO_STORE_VALUE, term->left->type);
    TLT_Error(statement, "Record copying not supported");
    return store_as(term, TLO_STORE_RECORD, term->left->type);
}

/** Target and source have types that do not match; null if there is no other way to store it. */
static TLI_IDENTIFIER *store_other(TLE_TERM *term)
{
    TLI_IDENTIFIER *target = term->left->type;
    TLI_IDENTIFIER *source = term->right->type;
    const TLI_IDENTIFIER *record = target_of(term->left);
    if (record != nullptr && record == target_of(term->right))
        return store_as(term, TLO_STORE_VALUE, target);
    if (record != nullptr && record == source) return store_as(term, TLO_STORE_ADDRESS, target);
    if (subclass_of(term->left) == TLIT_SUBCLASS_ARRAY && source != nullptr &&
        TLIT_ArrayOf(target) == source) {
        if (term->right->identifier == nullptr) return store_as(term, TLO_STORE_VALUE, source);
        return store_as(term, TLO_STORE_ARRAY, TLIT_VoidType);
    }
    if (target == TLIT_ClockTime && source == TLIT_Time)
        return store_as(term, TLO_STORE_TIME_AS_CLOCK, target);
    if (target == TLIT_Time && source == TLIT_ClockTime)
        return store_as(term, TLO_STORE_CLOCK_AS_TIME, target);
    return nullptr;
}

static TLI_IDENTIFIER *check_assignment(TLP_MODULE *module, TLT_STATEMENT *statement,
                                        const TLE_OPERATOR *, TLE_TERM *term)
{
    TLE_TERM *left = term->left;
    check_place_of_assignment(module, statement, term->use);
    if (!TLE_CheckLHS(left)) {
        TLT_Error(statement, "Target of assignment is not a variable");
        return nullptr;
    }
    if (TLIT_MatchType(module, statement, left->type, term->right->type))
        return store_match(statement, term);
    if (TLE_CoerceData(module, statement, left->type, term->right))
        return store_as(term, TLO_STORE_VALUE, left->type);
    return store_other(term);
}

// Field selection

static TLI_IDENTIFIER *check_field(TLP_MODULE *, TLT_STATEMENT *statement, const TLE_OPERATOR *,
                                   TLE_TERM *term)
{
    if (term->left->identifier != nullptr && TLIT_IsRecordType(term->left->type))
        return term->right->type;
    TLT_Error(statement, "Record expected here");
    return nullptr;
}

static TLI_IDENTIFIER *check_pointer_field(TLP_MODULE *, TLT_STATEMENT *, const TLE_OPERATOR *,
                                           TLE_TERM *term)
{
    return subclass_of(term->left) == TLIT_SUBCLASS_POINTER ? term->right->type : nullptr;
}

// The table

static constexpr TLE_OPERATOR sum(int32_t token, int32_t p_code)
{
    return { .token = token,
             .monadic_priority = 13,
             .dyadic_priority = 11,
             .right_to_left = 0,
             .simplify = simplify_sum,
             .check = check_sum,
             .code = TLO_SumCode,
             .p_code = p_code };
}

static constexpr TLE_OPERATOR product(int32_t token, int32_t priority, int32_t p_code)
{
    return { .token = token,
             .monadic_priority = 0,
             .dyadic_priority = priority,
             .right_to_left = 0,
             .simplify = simplify_product,
             .check = check_product,
             .code = TLO_ProductCode,
             .p_code = p_code };
}

static constexpr TLE_OPERATOR comparison(int32_t token, int32_t priority, int32_t p_code)
{
    return { .token = token,
             .monadic_priority = 0,
             .dyadic_priority = priority,
             .right_to_left = 0,
             .simplify = simplify_comparison,
             .check = check_comparison,
             .code = TLO_ComparisonCode,
             .p_code = p_code };
}

static constexpr TLE_OPERATOR junction(int32_t token, int32_t priority)
{
    return { .token = token,
             .monadic_priority = 0,
             .dyadic_priority = priority,
             .right_to_left = 0,
             .simplify = simplify_junction,
             .check = check_junction,
             .code = TLO_JunctionCode,
             .p_code = 0 };
}

static constexpr TLE_OPERATOR records[] = {
    sum(TLT_TOKEN_PLUS, EEP_ADD),
    sum(TLT_TOKEN_MINUS, EEP_SUB),
    product(TLT_TOKEN_STAR, 12, EEP_MUL),
    product(TLT_TOKEN_SLASH, 12, EEP_DIV),
    product(TLT_TOKEN_MOD, 12, EEP_REM),
    { .token = TLT_TOKEN_TILDE,
      .monadic_priority = 13,
      .dyadic_priority = 0,
      .right_to_left = 0,
      .simplify = simplify_invert,
      .check = check_invert,
      .code = TLO_InvertCode,
      .p_code = 0 },
    product(TLT_TOKEN_AMPERSAND, 7, EEP_AND),
    product(TLT_TOKEN_BAR, 5, EEP_OR),
    product(TLT_TOKEN_CARET, 6, EEP_XOR),
    comparison(TLT_TOKEN_EQUAL, 8, EEP_EQ),
    comparison(TLT_TOKEN_NOT_EQUAL, 8, EEP_NEQ),
    comparison(TLT_TOKEN_LESS, 9, EEP_LESS),
    comparison(TLT_TOKEN_LESS_EQUAL, 9, EEP_LE),
    comparison(TLT_TOKEN_GREATER, 9, EEP_GTR),
    comparison(TLT_TOKEN_GREATER_EQUAL, 9, EEP_GE),
    product(TLT_TOKEN_SHIFT_LEFT, 10, EEP_SL),
    product(TLT_TOKEN_SHIFT_RIGHT, 10, EEP_SR),
    junction(TLT_TOKEN_AND, 4),
    junction(TLT_TOKEN_OR, 3),
    { .token = TLT_TOKEN_NOT,
      .monadic_priority = 13,
      .dyadic_priority = 0,
      .right_to_left = 0,
      .simplify = simplify_not,
      .check = check_not,
      .code = TLO_NotCode,
      .p_code = 0 },
    { .token = TLT_TOKEN_ASSIGN,
      .monadic_priority = 0,
      .dyadic_priority = 1,
      .right_to_left = 1,
      .simplify = nullptr,
      .check = check_assignment,
      .code = TLO_AssignmentCode,
      .p_code = 0 },
    { .token = TLT_TOKEN_COLON,
      .monadic_priority = 0,
      .dyadic_priority = 13,
      .right_to_left = 1,
      .simplify = nullptr,
      .check = check_field,
      .code = TLO_FieldCode,
      .p_code = 0 },
    { .token = TLT_TOKEN_ARROW,
      .monadic_priority = 0,
      .dyadic_priority = 12,
      .right_to_left = 0,
      .simplify = nullptr,
      .check = check_pointer_field,
      .code = TLO_PointerFieldCode,
      .p_code = 0 },
};
static_assert(std::size(records) == 23, "all operators");

void TLO_Initialise()
{
    static bool is_done;
    if (is_done) return;
    is_done = true;
    for (const TLE_OPERATOR &record : records)
        TLE_DeclareOperator(&record);
}
