/*
 * Conditionals and exceptions: IF, ELSEIF, ELSE and WHEN, which share a record; RAISE and
 * END_EXCEPTION.
 */
#include "stmt/tlsc.h"

#include <cstdio>

#include <ostrum/eep.h>
#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

/* Operand of END_EXCEPTION: at the end of a handler, or before it. */
static constexpr int32_t HANDLER_ENDS = 1;
static constexpr int32_t HANDLER_IS_LEFT = 0;

/* ---- IF, ELSEIF, ELSE, WHEN ---- */

static TLSC_IF *if_record(TLS_STATEMENT *record)
{
    return reinterpret_cast<TLSC_IF *>(record);
}

TLSC_IF *TLSC_AsIf(TLS_STATEMENT *record)
{
    bool is_if = record != nullptr && record->statement_class == &TLSC_IfClass;
    return is_if ? if_record(record) : nullptr;
}

TLSC_IF *TLSC_ChainNext(const TLSC_IF *record)
{
    const TLS_BLOCK *block = record->else_block;
    if (block == nullptr || block->statements != block->last) return nullptr;
    return TLSC_AsIf(block->statements);
}

void TLSC_IfStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    int32_t token = TLT_GetToken(statement, nullptr);
    TLS_STATEMENT *common = TLS_NewStatement("TLSC:IF", sizeof(TLSC_IF), &TLSC_IfClass, statement);
    TLSC_IF *record = if_record(common);
    record->token = token;
    record->chain_end = record;
    record->condition =
        TLE_ParseExpression(root->module, statement, TLE_USE_CONDITION, TLT_TOKEN_NONE);
    TLI_IDENTIFIER *wanted = token == TLT_TOKEN_WHEN ? TLIT_IntType : TLIT_BoolType;
    TLS_CheckType(root, statement, record->condition, wanted);
    TLS_Append(root, common);
    record->then_block = TLS_SubBlock(root);
}

void TLSC_ElseStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLSC_IF *record = TLSC_AsIf(TLS_LastStatement(root->current));
    TLT_GetToken(statement, nullptr);
    if (record == nullptr) {
        TLT_Error(statement, "Unmatched ELSE statement");
    } else if (record->chain_end->else_block != nullptr) {
        TLT_Error(statement, "Multiple ELSE statements");
    } else {
        record->chain_end->else_block = TLS_SubBlock(root);
    }
}

/*
 * The else block has the column of the whole chain, so that a statement of that column closes it
 * together with the block around it. It adds no depth: an ELSEIF is no deeper than its IF.
 */
static void add_to_chain(TLS_BLOCK *root, TLT_STATEMENT *statement, TLSC_IF *first)
{
    TLS_BLOCK *around = root->current;
    TLS_BLOCK *block = TLS_SubBlock(root);
    block->depth = around->depth;
    TLSC_IfStatement(root, statement);
    block->indent = around->indent;
    first->chain_end->else_block = block;
    first->chain_end = TLSC_AsIf(block->last);
}

void TLSC_ElseifStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLSC_IF *record = TLSC_AsIf(TLS_LastStatement(root->current));
    if (record == nullptr) {
        TLT_Error(statement, "Unmatched ELSEIF statement");
    } else if (record->chain_end->else_block != nullptr) {
        TLT_Error(statement, "Multiple ELSEIF statements");
    } else {
        add_to_chain(root, statement, record);
    }
}

static void print_own(const TLSC_IF *record, int32_t indent)
{
    TLE_PrintExpression(TLT_TokenValue(record->token), record->condition, indent);
    TLS_PrintBlock("THEN", record->then_block, indent + 2);
}

/* Records of a chain beyond this one are listed at its column: a long chain would be all spaces. */
static constexpr int32_t DEEPEST_OF_CHAIN = 100;

/* Each record of a chain stands inside the ELSE before it, 4 columns further in. */
static int32_t column_in_chain(int32_t indent, int32_t place)
{
    return indent + 4 * (place < DEEPEST_OF_CHAIN ? place : DEEPEST_OF_CHAIN);
}

static void print_if(TLS_STATEMENT *record, int32_t indent)
{
    int32_t place = 0;
    TLSC_IF *last = if_record(record);
    print_own(last, indent);
    for (TLSC_IF *at = TLSC_ChainNext(last); at != nullptr; at = TLSC_ChainNext(at)) {
        TLS_PrintOpening("ELSE", column_in_chain(indent, place++) + 2);
        print_own(at, column_in_chain(indent, place));
        last = at;
    }
    if (last->else_block != nullptr) {
        TLS_PrintBlock("ELSE", last->else_block, column_in_chain(indent, place) + 2);
    }
    while (place > 0)
        TLS_PrintClosing("ELSE", column_in_chain(indent, --place) + 2);
}

static void check_own(TLSC_IF *record)
{
    if (TLS_EmptyBlock(record->then_block) && TLS_EmptyBlock(record->else_block)) {
        TLT_Warning(record->common.statement, "Useless IF statement");
    }
    TLS_CheckBlock(record->then_block);
}

static void check_if(TLS_BLOCK *, TLS_STATEMENT *record)
{
    TLSC_IF *last = if_record(record);
    check_own(last);
    for (TLSC_IF *at = TLSC_ChainNext(last); at != nullptr; at = TLSC_ChainNext(at)) {
        check_own(at);
        last = at;
    }
    TLS_CheckBlock(last->else_block);
}

/* One record of a chain while the chain is generated. */
struct IF_SECTIONS {
    const TLSC_IF *record;
    TLC_PSECT *test;      /* the conditional jump */
    TLC_PSECT *behind;    /* behind the then block */
    TLC_PSECT *otherwise; /* the else block; null without one */
};

/* Everything up to the else block. */
static void open_if(TLC_STREAM *stream, const TLSC_IF *record, IF_SECTIONS *sections)
{
    sections->record = record;
    TLS_OpenSection(stream, &record->common);
    TLE_ExpressionCode(stream, record->condition, 0);
    sections->test = TLC_NewPSect(stream);
    TLC_NewPSect(stream);
    TLS_BlockCode(stream, record->then_block);
    sections->behind = TLC_NewPSect(stream);
    if (record->token == TLT_TOKEN_WHEN) {
        TLC_PCode(stream, EEP_END_EXCEPTION);
        TLC_Code8(stream, HANDLER_ENDS);
    }
    sections->otherwise = record->else_block == nullptr ? nullptr : TLC_NewPSect(stream);
}

/* Behind protected code: the value again, and the EXCEPTION that closes the stretch. */
static TLC_PSECT *close_when(TLC_STREAM *stream, const TLSC_IF *record, TLC_PSECT *section)
{
    TLC_PSECT *end = TLC_NewPSect(stream);
    TLC_SetPSect(stream, section);
    TLE_ExpressionCode(stream, record->condition, 0);
    TLS_Jump(stream, EEP_EXCEPTION, end);
    return end;
}

/* Everything behind the else block, and the jumps there. */
static void close_if(TLC_STREAM *stream, const IF_SECTIONS *sections)
{
    bool is_when = sections->record->token == TLT_TOKEN_WHEN;
    TLC_PSECT *end = TLC_NewPSect(stream);
    if (sections->otherwise != nullptr) {
        TLC_SetPSect(stream, sections->behind);
        TLS_Jump(stream, EEP_JUMP, end);
    }
    TLC_SetPSect(stream, sections->test);
    TLC_PSECT *target = sections->otherwise == nullptr ? end : sections->otherwise;
    TLS_Jump(stream, is_when ? EEP_EXCEPTION : EEP_JZ, target);
    if (is_when) end = close_when(stream, sections->record, end);
    TLC_SetPSect(stream, end);
}

/* The next of a chain that code can be written for. */
static const TLSC_IF *generable_next(const TLSC_IF *record)
{
    const TLSC_IF *next = TLSC_ChainNext(record);
    bool is_generable = next != nullptr && TLS_Generable(&next->common, next->condition);
    return is_generable ? next : nullptr;
}

static int32_t chain_length(const TLSC_IF *record)
{
    int32_t length = 1;
    while ((record = generable_next(record)) != nullptr)
        ++length;
    return length;
}

static void generate_chain(TLC_STREAM *stream, const TLSC_IF *record, IF_SECTIONS *sections)
{
    int32_t count = 0;
    const TLSC_IF *last = record;
    for (; record != nullptr; record = generable_next(record)) {
        open_if(stream, record, &sections[count++]);
        last = record;
    }
    TLS_BlockCode(stream, last->else_block);
    while (count > 0)
        close_if(stream, &sections[--count]);
}

static void generate_if(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const TLSC_IF *first = if_record(record);
    if (!TLS_Generable(record, first->condition)) return;
    int32_t length = chain_length(first);
    IF_SECTIONS single;
    if (length == 1) {
        generate_chain(stream, first, &single);
        return;
    }
    size_t size = static_cast<size_t>(length) * sizeof(IF_SECTIONS);
    auto *sections =
        static_cast<IF_SECTIONS *>(SH_NameAllocate(static_cast<int32_t>(size), "TLSC:SECTIONS"));
    generate_chain(stream, first, sections);
    SH_Free(sections);
}

/* Frees a record but its else block. */
static void delete_own(TLSC_IF *record)
{
    TLE_DelExpression(record->condition);
    TLS_DelBlock(record->then_block);
    SH_Free(record);
}

/* The else block of a chain holds its one record, and goes without a look into it. */
static void delete_if(TLS_STATEMENT *common)
{
    TLSC_IF *record = if_record(common);
    while (record != nullptr) {
        TLSC_IF *next = TLSC_ChainNext(record);
        TLS_BLOCK *block = record->else_block;
        delete_own(record);
        if (next == nullptr) {
            TLS_DelBlock(block);
        } else {
            SH_Free(block);
        }
        record = next;
    }
}

const TLS_STATEMENT_CLASS TLSC_IfClass = {
    .flags = 0,
    .print = print_if,
    .check = check_if,
    .p_code = generate_if,
    .c_code = TLSC_IfCText,
    .java_code = TLSC_IfJavaText,
    .delete_statement = delete_if,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

/* ---- RAISE ---- */

static TLSC_RAISE *raise_record(TLS_STATEMENT *record)
{
    return reinterpret_cast<TLSC_RAISE *>(record);
}

static TLE_TERM *raise_operand(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLE_TERM *term = TLE_ParseExpression(root->module, statement, TLE_USE_VALUE, TLT_TOKEN_NONE);
    TLS_CheckType(root, statement, term, TLIT_IntType);
    return term;
}

void TLSC_RaiseStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLT_GetToken(statement, nullptr);
    TLS_STATEMENT *common =
        TLS_NewStatement("TLSC:RAISE", sizeof(TLSC_RAISE), &TLSC_RaiseClass, statement);
    TLSC_RAISE *record = raise_record(common);
    record->value = raise_operand(root, statement);
    record->has_argument = TLT_NextToken(statement, nullptr) == TLT_TOKEN_COMMA;
    if (record->has_argument) {
        TLT_GetToken(statement, nullptr);
        record->argument = raise_operand(root, statement);
    }
    TLS_Append(root, common);
}

static void print_raise(TLS_STATEMENT *record, int32_t indent)
{
    TLE_PrintExpression("RAISE", raise_record(record)->value, indent);
}

static bool raise_is_generable(const TLSC_RAISE *record)
{
    return TLS_Generable(&record->common, record->value) &&
           (!record->has_argument || record->argument != nullptr);
}

static void generate_raise(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *common)
{
    const TLSC_RAISE *record = raise_record(common);
    if (!raise_is_generable(record)) return;
    TLS_OpenSection(stream, common);
    TLE_ExpressionCode(stream, record->value, 0);
    if (record->has_argument) {
        TLE_ExpressionCode(stream, record->argument, 0);
    } else {
        TLC_Literal(stream, 0);
    }
    TLC_PCode(stream, EEP_RAISE);
}

static void delete_raise(TLS_STATEMENT *record)
{
    TLE_DelExpression(raise_record(record)->value);
    TLE_DelExpression(raise_record(record)->argument);
    SH_Free(record);
}

const TLS_STATEMENT_CLASS TLSC_RaiseClass = {
    .flags = 0,
    .print = print_raise,
    .check = nullptr,
    .p_code = generate_raise,
    .c_code = TLSC_RaiseCText,
    .java_code = TLSC_RaiseJavaText,
    .delete_statement = delete_raise,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

/* ---- END_EXCEPTION ---- */

/*
 * From the current block outwards, the block that the nearest WHEN around opened: its handler, or
 * what stands for its protected code. The WHEN is the last statement of the block outside. Null if
 * there is none.
 */
static const TLS_BLOCK *block_of_when(const TLS_BLOCK *root, const TLSC_IF **when)
{
    for (const TLS_BLOCK *block = root->current; block->outer != nullptr; block = block->outer) {
        *when = TLSC_AsIf(block->outer->last);
        if (*when != nullptr && (*when)->token == TLT_TOKEN_WHEN) return block;
    }
    return nullptr;
}

int32_t TLSC_InAWhenBlock(TLS_BLOCK *root)
{
    const TLSC_IF *when = nullptr;
    const TLS_BLOCK *block = block_of_when(root, &when);
    return block != nullptr && block == when->then_block;
}

void TLSC_EndExceptionStatement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLT_GetToken(statement, nullptr);
    if (!TLSC_InAWhenBlock(root)) {
        TLT_Error(statement, "END_EXCEPTION can only be used in an exception handler block");
        return;
    }
    TLS_Append(root, TLS_NewStatement("TLSC:EXRETURN", sizeof(TLS_STATEMENT),
                                      &TLSC_EndExceptionClass, statement));
}

static void print_end_exception(TLS_STATEMENT *, int32_t indent)
{
    std::printf("%*sEND_EXCEPTION", indent, "");
}

static void generate_end_exception(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    TLS_OpenSection(stream, record);
    TLC_PCode(stream, EEP_END_EXCEPTION);
    TLC_Code8(stream, HANDLER_IS_LEFT);
}

static void delete_end_exception(TLS_STATEMENT *record)
{
    SH_Free(record);
}

const TLS_STATEMENT_CLASS TLSC_EndExceptionClass = {
    .flags = 0,
    .print = print_end_exception,
    .check = nullptr,
    .p_code = generate_end_exception,
    .c_code = nullptr,
    .java_code = TLSC_EndExceptionJavaText,
    .delete_statement = delete_end_exception,
    .tree = nullptr,
    .node_section = nullptr,
    .tree_callbacks = nullptr,
};

void TLSC_Initialise(void)
{
    /* The classes are static tables. */
}
