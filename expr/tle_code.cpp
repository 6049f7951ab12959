/*
 * Code for expressions: the walk of a finished tree, P-code for every term that is not an
 * operator, and the report of a term that cannot be generated.
 */
#include "expr/tle_code.h"
#include "host/host.h"

#include <cstdio>
#include <iterator>

#include "codegen/tlc.h"
#include <ostrum/eep.h>
#include <ostrum/sh.h>
#include <ostrum/tlb.h>
#include <ostrum/tlc.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

static constexpr int32_t WORD_SIZE = 4;
static constexpr int32_t LOAD_POINTER = 2; /* access of a pointer through an address */

/* Symbol classes of references with a field of 32 bits. */
static constexpr int32_t EXTERNAL = 1;
static constexpr int32_t VALUE_REF = 6;

/* ---- Reports ---- */

/* The place of a term in the source; empty if the term has none. */
static void describe_place(TLC_STREAM *stream, const TLE_TERM *term, char *text, size_t capacity)
{
    text[0] = '\0';
    if (term->line < 1) return;
    TLP_MODULE *module = TLC_Module(stream);
    std::snprintf(text, capacity, "%s, Line %d   %s", TLP_ModuleName(module), term->line,
                  TLP_GetSourceFromLineNumber(module, term->line));
}

void TLE_CodeError(TLC_STREAM *stream, TLE_TERM *term, const char *message)
{
    TLC_Error(stream, message);
    if (term == nullptr || stream->text.declarations != nullptr) return;
    char place[600];
    char title[640];
    describe_place(stream, term, place, sizeof place);
    bool has_place = place[0] != '\0';
    std::snprintf(title, sizeof title, has_place ? "CODE GENERATION ERROR\n%s" : "%s",
                  has_place ? place : "CODE GENERATION ERROR");
    TLE_PrintExpression(title, term, 0);
}

static int32_t report_uncoded(TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_CodeError(stream, term, "No code generated for term");
    return 0;
}

/* ---- Identifiers ---- */

int32_t TLE_OffsetCode(TLC_STREAM *stream, TLE_TERM *term)
{
    if (term->left == nullptr) return 0;
    int32_t subscript = 0;
    /* A subscript below 0 would read as one that is on the stack: let it be there. */
    if (TLE_Constant(term->left, &subscript) && subscript >= 0) return subscript;
    TLE_TermCode(stream, term->left, TLE_MODE_VALUE);
    return -1;
}

static int32_t identifier_value(TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *type = TLI_IdentifierType(term->identifier);
    if (!TLI_PushValue(stream, term->identifier, TLE_OffsetCode(stream, term))) return 0;
    if (TLIT_IsArrayType(type)) TLI_LoadValue(stream, TLIT_ArrayOf(type));
    return 1;
}

static int32_t identifier_address(TLC_STREAM *stream, TLE_TERM *term)
{
    bool is_element =
        term->left != nullptr && TLIT_IsArrayType(TLI_IdentifierType(term->identifier));
    int32_t subscript = TLE_OffsetCode(stream, term);
    return is_element ? TLI_PushValue(stream, term->identifier, subscript)
                      : TLI_PushAddress(stream, term->identifier, subscript);
}

/* Stack: pair -> elements, length. */
static void load_pair(TLC_STREAM *stream)
{
    TLC_PCode(stream, EEP_DUP);
    TLC_LoadValue(stream, WORD_SIZE, LOAD_POINTER);
    TLC_PCode(stream, EEP_EXCH);
    TLC_Literal(stream, WORD_SIZE);
    TLC_PCode(stream, EEP_ADD);
    TLC_PCode(stream, EEP_LW);
}

/* Stack: k, pair -> address of element k, length from there on. */
static void load_slice(TLC_STREAM *stream, TLI_IDENTIFIER *element)
{
    TLC_PCode(stream, EEP_DUP2);
    TLC_LoadValue(stream, WORD_SIZE, LOAD_POINTER);
    TLC_AddAddress(stream, TLIT_TypeSizeof(element, -1));
    TLC_PCode(stream, EEP_ROT3);
    TLC_Literal(stream, WORD_SIZE);
    TLC_PCode(stream, EEP_ADD);
    TLC_PCode(stream, EEP_LW);
    if (TLC_StreamFlags(stream) & TLC_FLAG_CHECKS) {
        TLC_PCode(stream, EEP_DUP2);
        TLC_PCode(stream, EEP_CHECK);
        TLC_PCode(stream, EEP_POP);
    }
    TLC_PCode(stream, EEP_EXCH);
    TLC_PCode(stream, EEP_SUB);
}

static int32_t pair_extent(TLC_STREAM *stream, TLE_TERM *term, TLI_IDENTIFIER *element)
{
    int32_t subscript = TLE_OffsetCode(stream, term);
    if (subscript > 0) TLC_Literal(stream, subscript);
    if (!TLI_PushAddress(stream, term->identifier, 0)) return 0;
    if (subscript == 0) {
        load_pair(stream);
    } else {
        load_slice(stream, element);
    }
    return 1;
}

/* Stack: subscript -> number of elements from there on. */
static int32_t push_rest(TLC_STREAM *stream, TLI_IDENTIFIER *identifier)
{
    if (!TLI_PushDimension(stream, identifier)) return 0;
    TLC_PCode(stream, EEP_EXCH);
    TLC_PCode(stream, EEP_SUB);
    return 1;
}

static int32_t extent_at(TLC_STREAM *stream, TLI_IDENTIFIER *identifier, int32_t subscript)
{
    if (!TLI_PushAddress(stream, identifier, subscript)) return 0;
    int32_t dimension = TLI_IdentifierDimension(identifier, nullptr);
    if (dimension == 0) {
        TLC_Literal(stream, subscript);
        return push_rest(stream, identifier);
    }
    TLC_Literal(stream, dimension > 0 ? dimension - subscript : 1);
    return 1;
}

static int32_t identifier_extent(TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *identifier = term->identifier;
    TLI_IDENTIFIER *type = TLI_IdentifierType(identifier);
    if (TLIT_IsArrayType(type)) return pair_extent(stream, term, TLIT_ArrayOf(type));
    int32_t subscript = TLE_OffsetCode(stream, term);
    if (subscript >= 0) return extent_at(stream, identifier, subscript);
    TLC_PCode(stream, EEP_DUP);
    if (!TLI_PushAddress(stream, identifier, subscript)) return 0;
    TLC_PCode(stream, EEP_EXCH);
    return push_rest(stream, identifier);
}

static int32_t identifier_code(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (term->identifier == nullptr) return 0;
    switch (mode) {
    case TLE_MODE_VALUE:
        return identifier_value(stream, term);
    case TLE_MODE_ADDRESS:
        return identifier_address(stream, term);
    case TLE_MODE_EXTENT:
        return identifier_extent(stream, term);
    default:
        return 0;
    }
}

/* ---- Literals ---- */

static int32_t constant_string(TLC_STREAM *stream, const char *text)
{
    TLC_PCode(stream, EEP_LCA);
    TLC_String(stream, text);
    return 1;
}

/* An item that is found by name while the program runs. */
static int32_t find_item(TLC_STREAM *stream, const char *where, TLE_TERM *term, int32_t code)
{
    constant_string(stream, where);
    constant_string(stream, TLE_TermValue(term));
    TLC_PCode(stream, code);
    return 1;
}

static int32_t linked_item(TLC_STREAM *stream, int32_t code, int32_t symbol_class,
                           TLI_IDENTIFIER *type, TLE_TERM *term)
{
    TLC_PCode(stream, code);
    TLC_NameSymbol(stream, symbol_class, type, TLE_TermValue(term));
    return 1;
}

static int32_t pointer_literal(TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *target = TLIT_PointerAt(term->type);
    if (target == nullptr) return 0;
    const char *class_id = TLI_FindPragma(target, "CLSID");
    if (class_id != nullptr) return find_item(stream, class_id, term, EEP_FIND_COM);
    if (TLI_FindPragma(target, "RUNTIME_DEF") != nullptr) {
        return find_item(stream, TLI_IdentifierName(target), term, EEP_FIND_DATA);
    }
    return linked_item(stream, EEP_LCA, EXTERNAL, target, term);
}

static int32_t data_literal(TLC_STREAM *stream, TLE_TERM *term)
{
    TLI_IDENTIFIER *type = term->type;
    if (type == nullptr) return 0;
    int32_t subclass = TLIT_TypeSubclass(nullptr, type);
    if (subclass == TLIT_SUBCLASS_POINTER) return pointer_literal(stream, term);
    if (TLI_FindPragma(type, "RUNTIME_DEF") != nullptr) {
        return find_item(stream, TLI_IdentifierName(type), term, EEP_FIND_IMMEDIATE);
    }
    if (subclass == TLIT_SUBCLASS_DATA) return linked_item(stream, EEP_LCA, EXTERNAL, type, term);
    return linked_item(stream, EEP_LIT, VALUE_REF, type, term);
}

static int32_t address_code(TLC_STREAM *stream, TLE_TERM *term)
{
    TLC_PCode(stream, EEP_LCA);
    TLE_DataTerm(stream, term);
    return 1;
}

static int32_t literal_code(TLC_STREAM *stream, int32_t value)
{
    TLC_Literal(stream, value);
    return 1;
}

/* ---- Terms ---- */

/* A term that has a value and no address. */
static int32_t value_code(TLC_STREAM *stream, TLE_TERM *term)
{
    switch (term->kind) {
    case TLE_INDIRECT_CALL:
        return TLE_CallCode(stream, term, 0);
    case TLE_CALL:
        return TLE_CallCode(stream, term, 1);
    case TLE_ADDRESS:
        return address_code(stream, term);
    case TLE_BUILT_IN:
        return TLB_GenerateCode(stream, term);
    case TLT_TOKEN_NULL:
        return literal_code(stream, 0);
    case TLT_TOKEN_NUMBER:
        return literal_code(stream, term->value);
    case TLT_TOKEN_STRING:
        return constant_string(stream, TLE_TermValue(term));
    case TLT_TOKEN_DATA_LITERAL:
        return data_literal(stream, term);
    default:
        return 0;
    }
}

static int32_t operand_code(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (term->kind == TLT_TOKEN_IDENTIFIER) return identifier_code(stream, term, mode);
    return mode == TLE_MODE_VALUE ? value_code(stream, term) : 0;
}

/* ---- Operators ---- */

static bool is_operator(const TLE_TERM *term)
{
    return TLE_TermOperator(term) != nullptr;
}

/*
 * A sum of many operands is a tree as deep as the sum is long, on its left side: the chain. Every
 * operator but the assignment emits its left operand first, and what it emits does not depend on
 * what stands before that. So a chain is generated from its far end in a loop, and each operator
 * finds its left operand, the term noted here, already emitted.
 */
static const TLE_TERM *emitted;

TLE_TERM *TLE_ChainOperand(const TLE_TERM *term)
{
    TLE_TERM *left = term->left;
    if (left == nullptr || term->kind == TLT_TOKEN_ASSIGN || !is_operator(left)) return nullptr;
    /* The address of a record is wanted here, which nothing but a selection has. */
    bool is_selection = left->kind == TLT_TOKEN_COLON || left->kind == TLT_TOKEN_ARROW;
    return term->kind != TLT_TOKEN_COLON || is_selection ? left : nullptr;
}

void TLE_OpenChain(TLE_CHAIN *chain, TLE_TERM *term)
{
    constexpr auto short_count = static_cast<int32_t>(std::size(TLE_CHAIN{}.short_terms));
    chain->count = 0;
    for (TLE_TERM *at = term; at != nullptr; at = TLE_ChainOperand(at))
        ++chain->count;
    chain->terms = chain->short_terms;
    if (chain->count > short_count) {
        int32_t size = chain->count * static_cast<int32_t>(sizeof(TLE_TERM *));
        chain->terms = static_cast<TLE_TERM **>(SH_NameAllocate(size, "TLE:CHAIN"));
    }
    TLE_TERM *at = term;
    for (int32_t i = 0; i < chain->count; ++i, at = TLE_ChainOperand(at))
        chain->terms[i] = at;
}

void TLE_CloseChain(TLE_CHAIN *chain)
{
    if (chain->terms != chain->short_terms) SH_Free(chain->terms);
}

static int32_t operator_code(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    const TLE_OPERATOR *record = TLE_TermOperator(term);
    // The list of a statement in error holds operators that never got their operands.
    const bool has_left = term->left != nullptr || record->monadic_priority != 0;
    if (term->right == nullptr || !has_left) return 0;
    return record->code(stream, record, term, mode);
}

static int32_t chain_code(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    TLE_CHAIN chain;
    TLE_OpenChain(&chain, term);
    int32_t done = 0;
    for (int32_t i = chain.count - 1; i >= 0; --i) {
        bool is_field_base = i > 0 && chain.terms[i - 1]->kind == TLT_TOKEN_COLON;
        emitted = i == chain.count - 1 ? nullptr : chain.terms[i + 1];
        done = operator_code(stream, chain.terms[i],
                             i == 0          ? mode
                             : is_field_base ? TLE_MODE_ADDRESS
                                             : TLE_MODE_VALUE);
        emitted = nullptr;
        if (!done && i > 0) report_uncoded(stream, chain.terms[i]);
    }
    TLE_CloseChain(&chain);
    return done;
}

/* ---- The walk ---- */

static int32_t any_code(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    bool is_pcode = TLC_Target(stream) == TLC_TARGET_PCODE;
    if (!is_operator(term)) {
        return is_pcode ? operand_code(stream, term, mode) : TLE_OperandText(stream, term, mode);
    }
    if (!is_pcode) return TLE_OperatorText(stream, term, mode);
    bool is_chain = TLE_ChainOperand(term) != nullptr;
    return is_chain ? chain_code(stream, term, mode) : operator_code(stream, term, mode);
}

int32_t TLE_TermCode(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    if (term == nullptr) {
        TLE_CodeError(stream, nullptr, "Null expression");
        return 0;
    }
    if (term == emitted) {
        emitted = nullptr;
        return 1;
    }
    const int32_t stand_ins = stream->text.stand_ins;
    const int32_t errors = stream->text_errors;
    if (any_code(stream, term, mode)) return 1;
    const int32_t counted = stream->text_errors;
    report_uncoded(stream, term);
    /* A place counts once, however many terms stand around it. */
    if (counted > errors) TLC_SetTextErrors(stream, counted);
    /* C wants something to stand where the innermost value is missing. */
    if (stream->target == TLC_TARGET_C && stream->text.stand_ins == stand_ins) {
        HOST_PutText(stream->file, "0");
        stream->text.stand_ins++;
    }
    return 0;
}

void TLE_ExpressionCode(TLC_STREAM *stream, TLE_TERM *term, int32_t mode)
{
    TLE_TermCode(stream, term, mode);
}
