/*
 * Expressions as C text. Arithmetic wraps at 32 bits without undefined behaviour, and what has side
 * effects runs from left to right as in P-code: where C would leave the order open, values wait in
 * temporaries.
 */
#include "expr/tlb.h"
#include "expr/tle_code.h"
#include "host/host.h"

#include <cstdint>
#include <cstdio>

#include "codegen/tlc.h"
#include "codegen/tlcc.h"
#include "expr/tle_c.h"
#include "expr/tlo.h"
#include "names/tlit.h"
#include "names/tliv.h"
#include <ostrum/eep.h>
#include <ostrum/sm.h>
#include <ostrum/tli.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* ---- What an expression does ---- */

/* Things that may not change places, and what else a statement has to know beforehand. */
enum : uint32_t {
    READS_LOCAL = 1,   /* a variable of the function itself */
    READS_MEMORY = 2,  /* anything that another function can change */
    CALLS = 4,         /* runs a function */
    WRITES = 8,        /* changes a variable */
    MAY_STOP = 16,     /* can end the run */
    IS_UNORDERED = 32, /* C would leave an order open that P-code has */
    IS_PREPARED = 64   /* needs a declaration before the statement */
};

static constexpr uint32_t ORDERED = READS_LOCAL | READS_MEMORY | CALLS | WRITES | MAY_STOP;
static constexpr uint32_t KEPT_BY_CALLS = CALLS | READS_MEMORY | MAY_STOP | WRITES;

static bool collide(uint32_t one, uint32_t other)
{
    one &= ORDERED;
    other &= ORDERED;
    if ((one & WRITES && other != 0) || (other & WRITES && one != 0)) return true;
    return (one & CALLS && other & KEPT_BY_CALLS) || (other & CALLS && one & KEPT_BY_CALLS);
}

/* What a sequence of values does, in which C keeps no order. */
struct SEQUENCE {
    uint32_t flags;
    uint32_t pending; /* of the values that a further one could collide with */
};

static void add_value(SEQUENCE *sequence, uint32_t flags)
{
    if (collide(sequence->pending, flags)) sequence->flags |= IS_UNORDERED;
    sequence->flags |= flags;
    sequence->pending |= flags;
}

static uint32_t scan(const TLC_STREAM *stream, const TLE_TERM *term);

static bool is_selection(const TLE_TERM *term)
{
    return term->kind == TLT_TOKEN_COLON || term->kind == TLT_TOKEN_ARROW;
}

static bool is_junction(const TLE_TERM *term)
{
    return term->kind == TLT_TOKEN_AND || term->kind == TLT_TOKEN_OR;
}

static bool is_in_frame(TLI_IDENTIFIER *identifier)
{
    TLI_SCOPE *scope = TLI_IdentifierScope(identifier);
    return scope != nullptr && TLI_ScopeType(scope) == TLI_FRAME_SCOPE;
}

/* The value of such an item lies in a variable that only its own function can change. */
static bool is_own_variable(TLI_IDENTIFIER *identifier)
{
    if (!is_in_frame(identifier)) return false;
    if (TLIT_IsArrayType(TLI_IdentifierType(identifier))) return false;
    return TLIV_ArgumentPassType(identifier) == TLIV_BY_VALUE;
}

bool TLE_IsOwnInC(const TLE_TERM *place)
{
    return place->kind == TLT_TOKEN_IDENTIFIER && place->left == nullptr &&
           place->identifier != nullptr && is_own_variable(place->identifier);
}

void TLE_NoteStoreInC(TLC_STREAM *stream, const TLE_TERM *place)
{
    if (place == nullptr || place->kind != TLT_TOKEN_IDENTIFIER) return;
    for (TLC_LOOP *loop = stream->text.loops; loop != nullptr; loop = loop->outer) {
        if (loop->variable == place->identifier) loop->is_changed = true;
    }
}

static uint32_t scan_identifier(const TLC_STREAM *stream, const TLE_TERM *term)
{
    if (term->identifier == nullptr) return 0;
    uint32_t flags = is_own_variable(term->identifier) ? READS_LOCAL : READS_MEMORY;
    int32_t kind = TLI_IdentifierClass(term->identifier);
    if (kind == TLI_CONSTANT || kind == TLI_TYPE) flags = 0;
    if (term->left == nullptr) return flags;
    if (TLC_StreamFlags(stream) & TLC_FLAG_CHECKS) flags |= MAY_STOP;
    return flags | scan(stream, term->left);
}

/* An array of unknown length is reached through a variable that holds where it starts. */
static uint32_t scan_start(TLI_IDENTIFIER *identifier)
{
    if (identifier == nullptr) return 0;
    bool is_pair = TLIT_IsArrayType(TLI_IdentifierType(identifier)) ||
                   TLI_IdentifierDimension(identifier, nullptr) == 0;
    if (!is_pair) return 0;
    return is_in_frame(identifier) ? READS_LOCAL : READS_MEMORY;
}

/* The way to a place: the variables that lead there, not what lies there. */
static uint32_t scan_place(const TLC_STREAM *stream, const TLE_TERM *term)
{
    if (term == nullptr) return 0;
    if (term->kind != TLT_TOKEN_IDENTIFIER) return scan(stream, term);
    uint32_t flags = scan_start(term->identifier);
    if (term->left == nullptr) return flags;
    if (TLC_StreamFlags(stream) & TLC_FLAG_CHECKS) flags |= MAY_STOP;
    return flags | scan(stream, term->left);
}

static bool is_by_reference(TLI_IDENTIFIER *formal)
{
    return formal != nullptr && TLIV_ArgumentPassType(formal) != TLIV_BY_VALUE;
}

static uint32_t scan_argument(const TLC_STREAM *stream, TLI_IDENTIFIER *formal,
                              const TLE_TERM *actual)
{
    if (actual == nullptr) return 0;
    return is_by_reference(formal) ? scan_place(stream, actual) : scan(stream, actual);
}

static uint32_t scan_call(const TLC_STREAM *stream, const TLE_TERM *term)
{
    bool is_built_in = term->kind == TLE_BUILT_IN;
    SEQUENCE sequence = { .flags = is_built_in ? 0u : static_cast<uint32_t>(CALLS), .pending = 0 };
    int32_t index = 0;
    for (const TLE_TERM *link = term->left; link != nullptr; link = link->right, ++index) {
        bool is_function = term->identifier != nullptr && !is_built_in;
        TLI_IDENTIFIER *formal =
            is_function ? TLIV_GetFunctionArgument(term->identifier, index) : nullptr;
        add_value(&sequence, scan_argument(stream, formal, link->left));
        /* An address lets the function change what lies there; so does an array behind the formals. */
        bool is_open = formal == nullptr && is_function;
        if (is_by_reference(formal) || is_open) sequence.flags |= WRITES;
    }
    return sequence.flags;
}

/* Items of one byte, of which a store keeps less than the value that it gives on. */
static bool is_narrow(TLI_IDENTIFIER *type)
{
    return type == TLIT_CharType || type == TLIT_ShortType ||
           TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_ENUMERATION;
}

static bool keeps_value(const TLC_STREAM *stream, const TLE_TERM *assignment)
{
    bool is_used = assignment != stream->text.statement;
    return is_used && assignment->left->type != nullptr && is_narrow(assignment->left->type);
}

static bool is_variable(const TLE_TERM *place)
{
    if (place->kind != TLT_TOKEN_IDENTIFIER || place->identifier == nullptr) return false;
    return TLIV_ArgumentPassType(place->identifier) == TLIV_BY_VALUE &&
           !TLIT_IsArrayType(TLI_IdentifierType(place->identifier));
}

/* Two variables are known apart; what is reached in another way is known by its type alone. */
static bool may_be_same(const TLE_TERM *one, const TLE_TERM *other)
{
    if (is_variable(one) && is_variable(other)) return one->identifier == other->identifier;
    return one->type == other->type;
}

static bool stores_into(const TLE_TERM *term, const TLE_TERM *place);

static bool an_argument_stores_into(const TLE_TERM *built_in, const TLE_TERM *place)
{
    for (const TLE_TERM *link = built_in->left; link != nullptr; link = link->right)
        if (stores_into(link->left, place)) return true;
    return false;
}

/*
 * Whether a value stores where its own assignment will, in a subscript too: C leaves the order of the
 * two stores open.
 */
static bool stores_into(const TLE_TERM *term, const TLE_TERM *place)
{
    while (term != nullptr) {
        if (term->kind == TLE_BUILT_IN) return an_argument_stores_into(term, place);
        bool is_operator = TLE_TermOperator(term) != nullptr;
        if (!is_operator && term->kind != TLT_TOKEN_IDENTIFIER) return false;
        bool is_store = term->kind == TLT_TOKEN_ASSIGN;
        if (is_store && term->left != nullptr && may_be_same(term->left, place)) return true;
        if (is_operator && !is_store && stores_into(term->right, place)) return true;
        term = is_store ? term->right : term->left;
    }
    return false;
}

static bool is_collision(const TLC_STREAM *stream, const TLE_TERM *assignment)
{
    return collide(scan(stream, assignment->right), scan_place(stream, assignment->left)) ||
           stores_into(assignment->right, assignment->left);
}

static uint32_t scan_assignment(const TLC_STREAM *stream, const TLE_TERM *term)
{
    uint32_t flags = scan(stream, term->right);
    uint32_t place = scan_place(stream, term->left);
    bool is_twice = term->left != nullptr && stores_into(term->right, term->left);
    if (collide(flags, place) || is_twice) flags |= IS_UNORDERED;
    if (keeps_value(stream, term)) flags |= IS_PREPARED;
    return flags | place | WRITES;
}

static uint32_t scan_operand(const TLC_STREAM *stream, const TLE_TERM *term)
{
    switch (term->kind) {
    case TLT_TOKEN_IDENTIFIER:
        return scan_identifier(stream, term);
    case TLT_TOKEN_DATA_LITERAL:
        return IS_PREPARED;
    case TLT_TOKEN_ASSIGN:
        return scan_assignment(stream, term);
    case TLE_CALL:
    case TLE_INDIRECT_CALL:
    case TLE_BUILT_IN:
        return scan_call(stream, term);
    default:
        return 0;
    }
}

static bool may_stop(const TLE_TERM *term)
{
    return term->kind == TLT_TOKEN_SLASH || term->kind == TLT_TOKEN_MOD;
}

static bool is_chained(const TLE_TERM *term)
{
    return TLE_TermOperator(term) != nullptr && term->kind != TLT_TOKEN_ASSIGN &&
           term->right != nullptr;
}

/* Goes down the left operands, from the last value to the first. */
static uint32_t scan(const TLC_STREAM *stream, const TLE_TERM *term)
{
    SEQUENCE sequence = {};
    for (; term != nullptr && is_chained(term); term = term->left) {
        uint32_t flags = scan(stream, term->right);
        if (may_stop(term)) flags |= MAY_STOP;
        if (is_selection(term)) flags |= READS_MEMORY;
        uint32_t pending = sequence.pending;
        add_value(&sequence, flags);
        /* AND and OR keep the order of their operands. */
        if (is_junction(term)) sequence.pending = pending;
    }
    if (term != nullptr) add_value(&sequence, scan_operand(stream, term));
    return sequence.flags;
}

/* ---- Preparation ---- */

/* Writes a statement's expressions for the temporaries and items that they need, not for the text. */
static void try_text(TLC_STREAM *stream, TLE_TERM *const *terms, int32_t count)
{
    TLC_TEXT *text = &stream->text;
    int32_t first = text->temporaries;
    if (text->scratch == nullptr) text->scratch = std::tmpfile();
    if (text->scratch == nullptr) SM_FatalError("TLC : No room for a temporary file");
    std::rewind(text->scratch);
    text->declarations = stream->file;
    stream->file = text->scratch;
    for (int32_t i = 0; i < count; ++i) {
        if (terms[i] != nullptr) TLE_TermCode(stream, terms[i], TLE_MODE_VALUE);
    }
    stream->file = text->declarations;
    text->declarations = nullptr;
    text->temporaries = first;
}

void TLE_PrepareText(TLC_STREAM *stream, int32_t indent, TLE_TERM *const *terms, int32_t count)
{
    if (stream->target != TLC_TARGET_C) return;
    TLC_TEXT *text = &stream->text;
    uint32_t flags = 0;
    text->indent = indent;
    for (int32_t i = 0; i < count; ++i)
        if (terms[i] != nullptr) flags |= scan(stream, terms[i]);
    text->is_ordered = (flags & IS_UNORDERED) != 0;
    if (flags & (IS_UNORDERED | IS_PREPARED)) try_text(stream, terms, count);
    text->follows_label = false;
}

bool TLE_NeedsPreparation(const TLC_STREAM *stream, const TLE_TERM *term)
{
    return (scan(stream, term) & (IS_UNORDERED | IS_PREPARED)) != 0;
}

bool TLE_MayBeNull(const TLE_TERM *pointer)
{
    return TLIT_PointerType(pointer->type) && pointer->kind != TLT_TOKEN_DATA_LITERAL;
}

bool TLE_NeedsOrder(const TLE_TERM *place)
{
    return place->kind != TLT_TOKEN_IDENTIFIER || place->left != nullptr;
}

/* A label stands before a statement, and a declaration is none. */
static void begin_declaration(TLC_STREAM *stream)
{
    TLC_TEXT *text = &stream->text;
    if (text->follows_label) std::fprintf(text->declarations, "%*s;\n", text->indent, "");
    text->follows_label = false;
    std::fprintf(text->declarations, "%*s", text->indent, "");
}

static int32_t new_temporary(TLC_STREAM *stream, const char *type, const char *star)
{
    int32_t number = ++stream->text.temporaries;
    if (stream->text.declarations == nullptr) return number;
    begin_declaration(stream);
    std::fprintf(stream->text.declarations, "%s %stoll_%d;\n", type, star, number);
    return number;
}

int32_t TLE_DeclareTemporaries(TLC_STREAM *stream, int32_t indent, int32_t count)
{
    int32_t first = stream->text.temporaries + 1;
    stream->text.indent = indent;
    stream->text.declarations = stream->file;
    for (int32_t i = 0; i < count; ++i)
        new_temporary(stream, "INT", "");
    stream->text.declarations = nullptr;
    return first;
}

static const char *word_name(TLI_IDENTIFIER *type)
{
    bool is_small = type == nullptr || type == TLIT_CharType || type == TLIT_ShortType;
    return is_small ? "INT" : TLCC_TypeName(type);
}

/* The type of a temporary for a value: that which its text has in C. */
static const char *held_name(const TLE_TERM *term)
{
    return TLB_IsWordInC(term) ? "INT" : word_name(term->type);
}

/* Opens "toll_n=", behind which the value is written. */
static int32_t open_temporary(TLC_STREAM *stream, const char *type, const char *star)
{
    int32_t number = new_temporary(stream, type, star);
    std::fprintf(stream->file, "toll_%d=", number);
    return number;
}

void TLE_CDataLiteral(TLC_STREAM *stream, TLE_TERM *term)
{
    char name[TLCC_NAME_CAPACITY];
    if (stream->text.declarations != nullptr) {
        FILE *file = stream->file;
        begin_declaration(stream);
        stream->file = stream->text.declarations;
        TLCC_DeclareItem(stream, term);
        stream->file = file;
    }
    HOST_PutText(stream->file, TLCC_ItemName(term->type, TLE_TermValue(term), name));
}

/* ---- Forms of operators ---- */

/* How an operator is written. */
enum FORM : uint8_t {
    PLAIN,   /* between its operands */
    WRAP,    /* the same, as unsigned arithmetic */
    CALL,    /* as a function of toll.h */
    COMPARE, /* a function of toll.h gives the order of two texts, which is held against 0 */
    SIGNED   /* between its operands, each made an INT: C may keep enumerations unsigned */
};

/* Largest magnitude that a value can have; 2 to the 31 and beyond say nothing. */
static constexpr int64_t ANY_WORD = INT64_C(1) << 31;

static int64_t bound_of(const TLE_TERM *term, int32_t depth);

static int64_t product_bound(const TLE_TERM *term, int32_t depth)
{
    int64_t left = bound_of(term->left, depth + 1);
    int64_t right = bound_of(term->right, depth + 1);
    switch (term->extra & TLO_CODE_MASK) {
    case EEP_MUL:
        return left < ANY_WORD && right < ANY_WORD ? left * right : ANY_WORD;
    case EEP_DIV:
        return left;
    case EEP_REM:
        return left < right ? left : right;
    default:
        return ANY_WORD;
    }
}

static int64_t bound_of(const TLE_TERM *term, int32_t depth)
{
    static constexpr int32_t deepest = 4;
    if (term == nullptr || depth > deepest) return term == nullptr ? 0 : ANY_WORD;
    switch (term->kind) {
    case TLT_TOKEN_NUMBER:
        return term->value < 0 ? -static_cast<int64_t>(term->value) : term->value;
    case TLT_TOKEN_IDENTIFIER:
        return term->type == TLIT_CharType ? 255 : ANY_WORD;
    case TLT_TOKEN_PLUS:
    case TLT_TOKEN_MINUS:
        return bound_of(term->left, depth + 1) + bound_of(term->right, depth + 1);
    case TLT_TOKEN_STAR:
    case TLT_TOKEN_SLASH:
    case TLT_TOKEN_MOD:
        return product_bound(term, depth);
    default:
        return ANY_WORD;
    }
}

static bool is_literal_between(const TLE_TERM *term, int32_t low, int32_t high)
{
    return term->kind == TLT_TOKEN_NUMBER && term->value >= low && term->value <= high;
}

static FORM product_form(const TLE_TERM *term)
{
    switch (term->extra & TLO_CODE_MASK) {
    case EEP_MUL:
        return bound_of(term, 0) < ANY_WORD ? PLAIN : WRAP;
    case EEP_DIV:
    case EEP_REM:
        return is_literal_between(term->right, 1, INT32_MAX) ? PLAIN : CALL;
    case EEP_SR:
        return is_literal_between(term->right, 0, 31) ? PLAIN : CALL;
    case EEP_SL:
    case EEP_SMUL:
    case EEP_SDIV:
        return CALL;
    default:
        return PLAIN;
    }
}

/* A byte that may be more than its type has room for. */
static bool is_wide(const TLE_TERM *term)
{
    return term->kind == TLE_BUILT_IN || term->kind == TLT_TOKEN_ASSIGN;
}

/* Do two enumeration values differ in sign in C, or can one lie below the first value? */
static bool is_signed_comparison(const TLE_TERM *term)
{
    const TLE_TERM *left = term->left;
    const TLE_TERM *right = term->right;
    if (left == nullptr || right == nullptr || !TLIT_IsEnumeration(left->type)) return false;
    const bool is_equality = term->kind == TLT_TOKEN_EQUAL || term->kind == TLT_TOKEN_NOT_EQUAL;
    if (is_equality) return TLB_IsWordInC(left) != TLB_IsWordInC(right);
    return is_wide(left) || is_wide(right);
}

static bool is_float(const TLE_TERM *term)
{
    return term != nullptr && TLB_HasBase(term->type, TLIT_FloatType);
}

static bool is_word(TLI_IDENTIFIER *type)
{
    return TLIT_TypeBaseType(nullptr, type) == TLIT_IntType || TLIT_IntegerType(type);
}

static bool is_pointer(const TLE_TERM *term)
{
    return term->type != nullptr && TLIT_PointerType(term->type);
}

/* A WORD beside a pointer, which are of two sizes in C. */
static bool is_mixed_comparison(const TLE_TERM *term)
{
    const TLE_TERM *left = term->left;
    const TLE_TERM *right = term->right;
    if (left == nullptr || right == nullptr) return false;
    if (left->type == nullptr || right->type == nullptr) return false;
    return (is_pointer(left) && is_word(right->type)) || (is_pointer(right) && is_word(left->type));
}

/* NULL is 0 in both; any other pointer is lost in a WORD. */
static void report_mixed_comparison(TLC_STREAM *stream, const TLE_TERM *term)
{
    const TLE_TERM *pointer = is_pointer(term->left) ? term->left : term->right;
    if (is_mixed_comparison(term) && pointer->kind != TLT_TOKEN_NULL) {
        TLC_Error(stream, "WORD cannot hold a pointer in 'C'");
    }
}

static FORM comparison_form(const TLE_TERM *term)
{
    if (is_mixed_comparison(term)) return SIGNED;
    if (term->extra != 0) return COMPARE;
    const bool has_float = is_float(term->left) || is_float(term->right);
    return has_float || is_signed_comparison(term) ? SIGNED : PLAIN;
}

/* Comparisons are those of words with a sign; FLOATs are no exception. */
static const char *signed_word(const TLE_TERM *operand)
{
    if (is_pointer(operand)) return "(INT) (intptr_t) (";
    return is_float(operand) ? "toll_word_of_float(" : "(INT) (";
}

static FORM form_of(const TLE_TERM *term)
{
    switch (term->kind) {
    case TLT_TOKEN_PLUS:
        if (term->left == nullptr) return PLAIN;
        return bound_of(term, 0) < ANY_WORD ? PLAIN : WRAP;
    case TLT_TOKEN_MINUS:
        return bound_of(term, 0) < ANY_WORD ? PLAIN : WRAP;
    case TLT_TOKEN_STAR:
    case TLT_TOKEN_SLASH:
    case TLT_TOKEN_MOD:
    case TLT_TOKEN_SHIFT_LEFT:
    case TLT_TOKEN_SHIFT_RIGHT:
        return product_form(term);
    case TLT_TOKEN_EQUAL:
    case TLT_TOKEN_NOT_EQUAL:
    case TLT_TOKEN_LESS:
    case TLT_TOKEN_LESS_EQUAL:
    case TLT_TOKEN_GREATER:
    case TLT_TOKEN_GREATER_EQUAL:
        return comparison_form(term);
    default:
        return PLAIN;
    }
}

static const char *function_of(const TLE_TERM *term)
{
    switch (term->extra & TLO_CODE_MASK) {
    case EEP_DIV:
        return "toll_div";
    case EEP_REM:
        return "toll_rem";
    case EEP_SL:
        return "toll_shift_left";
    case EEP_SR:
        return "toll_shift_right";
    case EEP_SMUL:
        return "toll_smul";
    default:
        return "toll_sdiv";
    }
}

/* Where an operand stands. */
struct C_PLACE {
    const TLE_TERM *outer; /* operator, null for none */
    bool is_right;
    bool is_unsigned; /* the operator computes with unsigned words */
    bool is_chained;  /* part of a chain that C works out in order, and so in order itself */
};

static constexpr C_PLACE FREE_PLACE = {
    .outer = nullptr, .is_right = false, .is_unsigned = false, .is_chained = false
};

static bool is_unordered_chain(const TLC_STREAM *stream, const TLE_TERM *term);
static bool is_split(const TLC_STREAM *stream, const TLE_TERM *assignment);

/* The level at which a term's text binds, which helpers and commas lift to that of a name. */
static int32_t text_level(const TLC_STREAM *stream, const TLE_TERM *term, const C_PLACE &place)
{
    if (TLE_TermOperator(term) == nullptr) return TLE_TextLevel(term);
    if (term->kind == TLT_TOKEN_ASSIGN) {
        return is_split(stream, term) ? TLE_LEVEL_OPERAND : TLE_LEVEL_ASSIGNMENT;
    }
    if (!place.is_chained && is_unordered_chain(stream, term)) return TLE_LEVEL_OPERAND;
    switch (form_of(term)) {
    case CALL:
        return TLE_LEVEL_OPERAND;
    case WRAP:
        if (!place.is_unsigned) return TLE_LEVEL_OPERAND;
        return term->left == nullptr ? static_cast<int32_t>(TLE_LEVEL_SUM) : TLE_TextLevel(term);
    default:
        return TLE_TextLevel(term);
    }
}

/* Nothing lies behind the address 0. Only an item that the text names is never there. */
static bool is_checked_pointer(const TLE_TERM *term)
{
    return term->kind == TLT_TOKEN_ARROW && term->left != nullptr && TLE_MayBeNull(term->left);
}

/* Signs of one operand of an unsigned kind have a 0 before them. */
static int32_t outer_level(const TLE_TERM *outer)
{
    bool is_wrap_sign = outer->left == nullptr && form_of(outer) == WRAP;
    return is_wrap_sign ? static_cast<int32_t>(TLE_LEVEL_SUM) : TLE_TextLevel(outer);
}

static bool wants_brackets(const TLC_STREAM *stream, const C_PLACE &place, const TLE_TERM *term)
{
    if (place.outer == nullptr) return false;
    /* Most operands are names. */
    bool is_operator = TLE_TermOperator(term) != nullptr;
    if (!is_operator && TLE_TextLevel(term) == TLE_LEVEL_OPERAND) return false;
    if (!place.is_right && is_checked_pointer(place.outer)) return false;
    FORM form = form_of(place.outer);
    /* Arguments of a function are apart from one another. */
    if (form == CALL || form == COMPARE || form == SIGNED) return false;
    int32_t level = text_level(stream, term, place);
    int32_t outer = outer_level(place.outer);
    /* Compilers take a NOT before a comparison for a slip. */
    bool is_comparison = outer == TLE_LEVEL_RELATION || outer == TLE_LEVEL_EQUALITY;
    if (is_comparison && term->kind == TLT_TOKEN_NOT) return true;
    /* The first factor of an unsigned product has an unsigned 1 before it. */
    bool is_signed_factor = form == WRAP && outer == TLE_LEVEL_PRODUCT && level == outer;
    if (is_signed_factor && !place.is_right && form_of(term) != WRAP) return true;
    /* The first term of an unsigned sum has "0u+" before it, and two signs in a row are another one. */
    bool is_sign = term->kind == TLT_TOKEN_PLUS && term->left == nullptr;
    if (is_sign && form == WRAP && !place.is_right) return true;
    return TLE_NeedsBrackets(outer, level, place.is_right);
}

/* ---- Operands ---- */

static int32_t write_term(TLC_STREAM *stream, TLE_TERM *term, const C_PLACE &place);

static int32_t write_bracketed(TLC_STREAM *stream, TLE_TERM *term, const C_PLACE &place)
{
    if (term == nullptr) return TLE_TermCode(stream, nullptr, TLE_MODE_VALUE);
    bool has_brackets = wants_brackets(stream, place, term);
    if (has_brackets) HOST_PutText(stream->file, "(");
    int32_t written = write_term(stream, term, place);
    if (has_brackets) HOST_PutText(stream->file, ")");
    return written;
}

/* ---- Operators between operands ---- */

/* What stands before the left operand of an operator. */
static void open_operator(TLC_STREAM *stream, const TLE_TERM *term, bool is_unsigned)
{
    FILE *file = stream->file;
    if (is_checked_pointer(term)) {
        std::fprintf(file, "((%s) toll_pointer(", TLCC_TypeName(term->left->type));
        return;
    }
    switch (form_of(term)) {
    case WRAP:
        if (!is_unsigned) HOST_PutText(file, "toll_int(");
        if (term->left != nullptr && TLE_TermOperator(term->left) != nullptr &&
            form_of(term->left) == WRAP) {
            break;
        }
        HOST_PutText(file, term->kind == TLT_TOKEN_STAR ? "1u*" : "0u");
        if (term->left != nullptr && term->kind != TLT_TOKEN_STAR) HOST_PutText(file, "+");
        break;
    case CALL:
        std::fprintf(file, "%s(", function_of(term));
        break;
    case COMPARE:
        HOST_PutText(file, "toll_compare(");
        break;
    case SIGNED:
        report_mixed_comparison(stream, term);
        HOST_PutText(file, signed_word(term->left));
        break;
    default:
        break;
    }
}

static int32_t close_call(TLC_STREAM *stream, TLE_TERM *term)
{
    HOST_PutText(stream->file, ",");
    int32_t written = write_bracketed(stream, term->right, FREE_PLACE);
    int32_t code = term->extra & TLO_CODE_MASK;
    bool is_scaled = form_of(term) == CALL && (code == EEP_SMUL || code == EEP_SDIV);
    if (is_scaled) std::fprintf(stream->file, ",%d", TLO_Scale(term->extra));
    HOST_PutText(stream->file, ")");
    if (form_of(term) == COMPARE) std::fprintf(stream->file, "%s0", TLE_COperator(term));
    return written;
}

/* What stands behind the left operand. */
static int32_t close_operator(TLC_STREAM *stream, TLE_TERM *term, bool is_unsigned)
{
    FORM form = form_of(term);
    if (form == CALL || form == COMPARE) return close_call(stream, term);
    if (form == SIGNED) HOST_PutText(stream->file, ")");
    if (is_checked_pointer(term)) HOST_PutText(stream->file, "))");
    HOST_PutText(stream->file, TLE_COperator(term));
    if (form == SIGNED) HOST_PutText(stream->file, signed_word(term->right));
    C_PLACE place = {
        .outer = term, .is_right = true, .is_unsigned = form == WRAP, .is_chained = false
    };
    int32_t written = write_bracketed(stream, term->right, place);
    if (form == SIGNED || (form == WRAP && !is_unsigned)) HOST_PutText(stream->file, ")");
    return written;
}

/* The far end of the chain comes first; each operator then goes on behind its left operand. */
static int32_t write_nested(TLC_STREAM *stream, const TLE_CHAIN &chain, bool is_unsigned)
{
    int32_t last = chain.count - 1;
    C_PLACE place = {
        .outer = nullptr, .is_right = false, .is_unsigned = is_unsigned, .is_chained = true
    };
    for (int32_t i = 0; i <= last; ++i) {
        if (wants_brackets(stream, place, chain.terms[i])) HOST_PutText(stream->file, "(");
        open_operator(stream, chain.terms[i], place.is_unsigned);
        place.outer = chain.terms[i];
        place.is_unsigned = form_of(chain.terms[i]) == WRAP;
    }
    TLE_TERM *first = chain.terms[last]->left;
    int32_t written = first == nullptr ? 1 : write_bracketed(stream, first, place);
    for (int32_t i = last; i >= 0; --i) {
        place.outer = i == 0 ? nullptr : chain.terms[i - 1];
        place.is_unsigned = i == 0 ? is_unsigned : form_of(chain.terms[i - 1]) == WRAP;
        written &= close_operator(stream, chain.terms[i], place.is_unsigned);
        if (wants_brackets(stream, place, chain.terms[i])) HOST_PutText(stream->file, ")");
    }
    return written;
}

/* ---- Operators in order ---- */

/* Would C leave open in which order the values of this chain are worked out? */
static bool is_unordered_chain(const TLC_STREAM *stream, const TLE_TERM *term)
{
    if (!stream->text.is_ordered || term->left == nullptr || is_selection(term)) return false;
    SEQUENCE sequence = {};
    for (; is_chained(term) && !is_selection(term); term = term->left) {
        uint32_t flags = scan(stream, term->right) & ORDERED;
        if (may_stop(term)) flags |= MAY_STOP;
        uint32_t pending = sequence.pending;
        add_value(&sequence, flags);
        if (is_junction(term)) sequence.pending = pending;
        if (term->left == nullptr) return (sequence.flags & IS_UNORDERED) != 0;
    }
    add_value(&sequence, scan(stream, term) & ORDERED);
    return (sequence.flags & IS_UNORDERED) != 0;
}

/* One step: the operator on the value that waits in a temporary. */
static int32_t write_step(TLC_STREAM *stream, TLE_TERM *term, int32_t left)
{
    bool has_prefix = form_of(term) == WRAP;
    if (has_prefix) {
        bool is_product = term->kind == TLT_TOKEN_STAR;
        std::fprintf(stream->file, "toll_int(%s", is_product ? "1u*" : "0u+");
    } else {
        open_operator(stream, term, false);
    }
    std::fprintf(stream->file, "toll_%d", left);
    return close_operator(stream, term, false);
}

static int32_t write_ordered(TLC_STREAM *stream, const TLE_CHAIN &chain)
{
    int32_t last = 0;
    while (last + 1 < chain.count && !is_selection(chain.terms[last + 1]))
        ++last;
    if (chain.terms[last]->left == nullptr) --last;
    TLE_TERM *first = chain.terms[last]->left;
    const char *type = held_name(first);
    HOST_PutText(stream->file, "(");
    int32_t number = open_temporary(stream, type, "");
    int32_t written = write_bracketed(stream, first, FREE_PLACE);
    for (int32_t i = last; i >= 0; --i) {
        HOST_PutText(stream->file, ",");
        if (i == 0) break;
        const char *next = word_name(chain.terms[i]->type);
        int32_t target = next == type ? number : new_temporary(stream, next, "");
        std::fprintf(stream->file, "toll_%d=", target);
        written &= write_step(stream, chain.terms[i], number);
        number = target;
        type = next;
    }
    written &= write_step(stream, chain.terms[0], number);
    HOST_PutText(stream->file, ")");
    return written;
}

/* ---- Selections in order ---- */

/* What the subscript of a field does; the field itself is no value yet. */
static uint32_t scan_field(const TLC_STREAM *stream, const TLE_TERM *field)
{
    if (field == nullptr || field->left == nullptr) return 0;
    const bool is_checked = (TLC_StreamFlags(stream) & TLC_FLAG_CHECKS) != 0;
    return scan(stream, field->left) | (is_checked ? MAY_STOP : 0u);
}

/* The field that stands next on the way, which goes on to the right. */
static TLE_TERM *next_field(const TLE_TERM *selection)
{
    TLE_TERM *right = selection->right;
    return right != nullptr && is_selection(right) ? right->left : right;
}

/* Would C leave open whether a subscript comes before the way to its field, as in a[f()]:b[g()]? */
static bool is_unordered_selection(const TLC_STREAM *stream, const TLE_TERM *term)
{
    if (!stream->text.is_ordered || !is_selection(term) || term->left == nullptr) return false;
    const bool is_followed = term->kind == TLT_TOKEN_ARROW;
    uint32_t way = is_followed ? scan(stream, term->left) : scan_place(stream, term->left);
    for (; term != nullptr && is_selection(term); term = term->right) {
        const uint32_t subscript = scan_field(stream, next_field(term));
        if (collide(way, subscript)) return true;
        way |= subscript;
        const TLE_TERM *right = term->right;
        if (right != nullptr && right->kind == TLT_TOKEN_ARROW) way |= READS_MEMORY;
    }
    return false;
}

/* Opens "toll_n=" for where a selection starts: a pointer's value, or a record's address. */
static int32_t open_step(TLC_STREAM *stream, const TLE_TERM *selection)
{
    const bool is_followed = selection->kind == TLT_TOKEN_ARROW;
    return open_temporary(stream, TLCC_TypeName(selection->left->type), is_followed ? "" : "*");
}

/* Writes the field that a selection leads to from the start in a temporary. */
static int32_t write_step_field(TLC_STREAM *stream, const TLE_TERM *selection, int32_t number)
{
    if (is_checked_pointer(selection)) {
        const char *type = TLCC_TypeName(selection->left->type);
        std::fprintf(stream->file, "((%s) toll_pointer(toll_%d))->", type, number);
    } else {
        std::fprintf(stream->file, "toll_%d->", number);
    }
    return TLE_TermCode(stream, next_field(selection), TLE_MODE_VALUE);
}

/* Writes "(*(toll_1=&a[f()],&toll_1->b[g()]))", in which each subscript has its turn. */
static int32_t write_selection_steps(TLC_STREAM *stream, const TLE_TERM *term)
{
    HOST_PutText(stream->file, "(*(");
    int32_t number = open_step(stream, term);
    const bool is_followed = term->kind == TLT_TOKEN_ARROW;
    int32_t written =
        TLE_TermCode(stream, term->left, is_followed ? TLE_MODE_VALUE : TLE_MODE_ADDRESS);
    for (; term->right != nullptr && is_selection(term->right); term = term->right) {
        HOST_PutText(stream->file, ",");
        const int32_t next = open_step(stream, term->right);
        if (term->right->kind != TLT_TOKEN_ARROW) HOST_PutText(stream->file, "&");
        written &= write_step_field(stream, term, number);
        number = next;
    }
    HOST_PutText(stream->file, ",&");
    written &= write_step_field(stream, term, number);
    HOST_PutText(stream->file, "))");
    return written;
}

/* An assignment or a selection in steps at the far end is an operand, more than its sign between two texts. */
static bool is_operand(const TLC_STREAM *stream, const TLE_TERM *end)
{
    return end->kind == TLT_TOKEN_ASSIGN || is_unordered_selection(stream, end);
}

/* The address of a record's field is written before the whole selection. */
static int32_t write_chain(TLC_STREAM *stream, TLE_TERM *term, bool is_unsigned)
{
    if (term->right == nullptr) return 0;
    if (is_unordered_selection(stream, term)) return write_selection_steps(stream, term);
    TLE_CHAIN chain;
    TLE_OpenChain(&chain, term);
    if (is_operand(stream, chain.terms[chain.count - 1])) --chain.count;
    int32_t written = is_unordered_chain(stream, term) ? write_ordered(stream, chain)
                                                       : write_nested(stream, chain, is_unsigned);
    TLE_CloseChain(&chain);
    return written;
}

/* ---- Conversions ---- */

/* Writes a literal as what an item of its narrow type keeps of it; false for any other term. */
static bool write_cut_literal(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, const TLE_TERM *term)
{
    if (term->kind != TLT_TOKEN_NUMBER) return false;
    bool is_byte =
        wanted == TLIT_CharType || TLIT_TypeSubclass(nullptr, wanted) == TLIT_SUBCLASS_ENUMERATION;
    int32_t kept = is_byte                    ? static_cast<uint8_t>(term->value)
                   : wanted == TLIT_ShortType ? static_cast<int16_t>(term->value)
                                              : term->value;
    if (kept == term->value) return false;
    TLC_Literal(stream, kept);
    return true;
}

/* The function of toll.h that makes one type's value out of another's; null if none is needed. */
static const char *conversion(TLI_IDENTIFIER *wanted, const TLE_TERM *term)
{
    if (wanted == nullptr || term->type == nullptr) return nullptr;
    if (wanted == TLIT_FloatType && is_word(term->type)) return "toll_float_of_word(";
    if (term->type == TLIT_FloatType && is_word(wanted)) return "toll_word_of_float(";
    return nullptr;
}

/* WORD takes everything of four bytes, and a pointer has more of them in C. */
static bool loses_pointer(TLI_IDENTIFIER *wanted, const TLE_TERM *term)
{
    if (wanted == nullptr || term->type == nullptr) return false;
    if (term->kind == TLT_TOKEN_DATA_LITERAL || term->kind == TLT_TOKEN_NULL) return false;
    return (is_word(wanted) && TLIT_PointerType(term->type)) ||
           (TLIT_PointerType(wanted) && is_word(term->type));
}

int32_t TLE_CStoredValue(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term)
{
    bool is_known = wanted != nullptr && term != nullptr;
    if (is_known && write_cut_literal(stream, wanted, term)) return 1;
    bool is_byte = is_known && is_wide(term) &&
                   TLIT_TypeSubclass(nullptr, wanted) == TLIT_SUBCLASS_ENUMERATION;
    if (is_byte) HOST_PutText(stream->file, "toll_byte(");
    int32_t written = TLE_CValueAs(stream, wanted, term);
    if (is_byte) HOST_PutText(stream->file, ")");
    return written;
}

int32_t TLE_CValueAs(TLC_STREAM *stream, TLI_IDENTIFIER *wanted, TLE_TERM *term)
{
    if (term == nullptr) return TLE_TermCode(stream, nullptr, TLE_MODE_VALUE);
    if (loses_pointer(wanted, term)) {
        TLC_Error(stream, "WORD cannot hold a pointer in 'C'");
        HOST_PutText(stream->file, "0");
        return 1;
    }
    if (term->kind == TLT_TOKEN_NULL && wanted != nullptr && is_word(wanted)) {
        HOST_PutText(stream->file, "0");
        return 1;
    }
    const char *function = conversion(wanted, term);
    if (function == nullptr) return TLE_TermCode(stream, term, TLE_MODE_VALUE);
    HOST_PutText(stream->file, function);
    int32_t written = TLE_TermCode(stream, term, TLE_MODE_VALUE);
    HOST_PutText(stream->file, ")");
    return written;
}

/* ---- Assignment ---- */

static bool is_split(const TLC_STREAM *stream, const TLE_TERM *assignment)
{
    if (assignment->left == nullptr || assignment->right == nullptr) return false;
    return keeps_value(stream, assignment) ||
           (stream->text.is_ordered && is_collision(stream, assignment));
}

/* The text of what is stored. */
static int32_t write_source(TLC_STREAM *stream, TLE_TERM *term)
{
    FILE *file = stream->file;
    TLE_TERM *source = term->right;
    int32_t written = 1;
    switch (term->extra) {
    case TLO_STORE_TIME_AS_CLOCK:
    case TLO_STORE_CLOCK_AS_TIME: {
        bool is_clock = term->extra == TLO_STORE_TIME_AS_CLOCK;
        HOST_PutText(file, is_clock ? "toll_clock_of_time(" : "toll_time_of_clock(");
        written = TLE_TermCode(stream, source, TLE_MODE_VALUE);
        HOST_PutText(file, ")");
        return written;
    }
    case TLO_STORE_ADDRESS:
        return TLE_TermCode(stream, source, TLE_MODE_ADDRESS);
    case TLO_STORE_ARRAY:
        return TLE_TermCode(stream, source, TLE_MODE_EXTENT);
    default:
        return TLE_CStoredValue(stream, term->left->type, source);
    }
}

static int32_t write_target(TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_NoteStoreInC(stream, term->left);
    int32_t written = TLE_TermCode(stream, term->left, TLE_MODE_VALUE);
    HOST_PutText(stream->file, "=");
    return written;
}

/* The value first, then the place; the value as it was before the store, if somebody wants it. */
static int32_t write_split(TLC_STREAM *stream, TLE_TERM *term)
{
    FILE *file = stream->file;
    bool is_kept = keeps_value(stream, term);
    bool is_array = term->extra == TLO_STORE_ARRAY;
    TLI_IDENTIFIER *type = is_kept ? term->right->type : term->left->type;
    HOST_PutText(file, "(");
    int32_t number = open_temporary(stream, word_name(type), is_array ? "*" : "");
    int32_t written =
        is_kept ? TLE_TermCode(stream, term->right, TLE_MODE_VALUE) : write_source(stream, term);
    HOST_PutText(file, ",");
    written &= write_target(stream, term);
    bool is_byte =
        is_kept && TLIT_TypeSubclass(nullptr, term->left->type) == TLIT_SUBCLASS_ENUMERATION;
    std::fprintf(file, is_byte ? "toll_byte(toll_%d)" : "toll_%d", number);
    if (is_kept) std::fprintf(file, ",toll_%d", number);
    HOST_PutText(file, ")");
    return written;
}

static int32_t write_assignment(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term->left == nullptr || term->right == nullptr) return 0;
    if (is_split(stream, term)) return write_split(stream, term);
    int32_t written = write_target(stream, term);
    return written & write_source(stream, term);
}

/* ---- Terms ---- */

static int32_t write_term(TLC_STREAM *stream, TLE_TERM *term, const C_PLACE &place)
{
    if (TLE_TermOperator(term) == nullptr || term->kind == TLT_TOKEN_ASSIGN) {
        return TLE_TermCode(stream, term, TLE_MODE_VALUE);
    }
    return write_chain(stream, term, place.is_unsigned);
}

int32_t TLE_COperatorText(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (term->kind == TLT_TOKEN_ASSIGN) {
        return mode == TLE_MODE_VALUE ? write_assignment(stream, term) : 0;
    }
    if (mode != TLE_MODE_VALUE && !is_selection(term)) return 0;
    return write_chain(stream, term, false);
}

/* ---- Calls ---- */

bool TLE_IsUnorderedCall(const TLC_STREAM *stream, const TLE_TERM *term)
{
    if (stream->target != TLC_TARGET_C || !stream->text.is_ordered) return false;
    SEQUENCE sequence = {};
    int32_t index = 0;
    for (const TLE_TERM *link = term->left; link != nullptr; link = link->right, ++index) {
        TLI_IDENTIFIER *formal = term->kind == TLE_BUILT_IN
                                     ? nullptr
                                     : TLIV_GetFunctionArgument(term->identifier, index);
        add_value(&sequence, scan_argument(stream, formal, link->left) & ORDERED);
    }
    return (sequence.flags & IS_UNORDERED) != 0;
}

int32_t TLE_OpenTemporary(TLC_STREAM *stream, TLI_IDENTIFIER *type, bool is_pointer)
{
    const char *name = is_pointer ? TLCC_TypeName(type) : word_name(type);
    return open_temporary(stream, name, is_pointer ? "*" : "");
}
