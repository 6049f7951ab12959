/*
 * Blocks: how a body is begun, how a statement finds its block by indentation, and what is done
 * with a finished tree of blocks.
 */
#include "stmt/tls.h"

#include <cstdio>

#include <ostrum/sh.h>
#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>
#include <ostrum/tlt.h>

/* Section types that can have a block class. */
static constexpr int32_t BLOCK_CLASS_COUNT = 10;

static const TLS_BLOCK_CLASS *block_classes[BLOCK_CLASS_COUNT];

static const TLS_BLOCK_CLASS *find_block_class(int32_t type)
{
    return type >= 0 && type < BLOCK_CLASS_COUNT ? block_classes[type] : nullptr;
}

void TLS_DeclareBlockClass(int32_t type, const TLS_BLOCK_CLASS *block_class)
{
    if (type >= 0 && type < BLOCK_CLASS_COUNT) block_classes[type] = block_class;
}

static TLS_BLOCK *new_block(TLP_MODULE *module, int32_t indent)
{
    auto *block = static_cast<TLS_BLOCK *>(SH_NameAllocate(sizeof(TLS_BLOCK), "TLS:BLOCK"));
    block->module = module;
    block->indent = indent;
    return block;
}

static void append(TLS_BLOCK *block, TLS_STATEMENT *record)
{
    if (block->last == nullptr) {
        block->statements = record;
    } else {
        block->last->next = record;
    }
    block->last = record;
}

TLS_BLOCK *TLS_Begin(TLP_MODULE *module, TLI_IDENTIFIER *function, TLT_STATEMENT *statement,
                     int32_t type)
{
    const TLS_BLOCK_CLASS *block_class = find_block_class(type);
    if (block_class == nullptr) return nullptr;
    TLS_BLOCK *block = block_class->begin(module, function, statement, type);
    if (block == nullptr) return nullptr;
    block->section_type = type;
    TLIV_SetFunctionBlock(function, block);
    return block;
}

TLS_BLOCK *TLS_NewBlock(TLP_MODULE *module, TLS_STATEMENT *head, int32_t type)
{
    const TLS_BLOCK_CLASS *block_class = find_block_class(type);
    TLS_BLOCK *root = new_block(module, 0);
    root->parser = block_class == nullptr ? nullptr : block_class->parser;
    root->parser_context = head;
    root->head = head;
    root->current = root;
    if (head != nullptr) append(root, head);
    return root;
}

TLS_BLOCK *TLS_SubBlock(TLS_BLOCK *root)
{
    TLS_BLOCK *outer = root->current;
    TLS_BLOCK *block = new_block(outer->module, TLS_NO_INDENT);
    block->parser = outer->parser;
    block->parser_context = outer->parser_context;
    block->head = outer->head;
    block->outer = outer;
    block->depth = outer->depth + 1;
    root->current = block;
    return block;
}

void TLS_SetParser(TLS_BLOCK *block, TLS_PARSER parser, void *context)
{
    block->parser = parser;
    block->parser_context = context;
}

/*
 * The outermost of the first run of blocks with the indent, from a block outwards; null if there is
 * none. What is walked over is closed, so the walks of a body cost no more than its blocks.
 */
static TLS_BLOCK *find_outward(TLS_BLOCK *block, int32_t indent)
{
    while (block != nullptr && block->indent != indent)
        block = block->outer;
    if (block == nullptr) return nullptr;
    while (block->outer != nullptr && block->outer->indent == indent)
        block = block->outer;
    return block;
}

/* The block that a statement of this indent belongs to; reports an indent that fits none. */
static TLS_BLOCK *place_statement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    int32_t indent = TLT_StatementIndent(statement);
    TLS_BLOCK *current = root->current;
    if (indent == current->indent) return current;
    if (current->outer == nullptr || indent > current->outer->indent) {
        if (current->indent == TLS_NO_INDENT) {
            current->indent = indent;
        } else {
            TLT_Error(statement, "New block in wrong place");
        }
        return current;
    }
    TLS_BLOCK *found = find_outward(current->outer, indent);
    if (found != nullptr) return found;
    TLT_Error(statement, "Indent does not match an outer block");
    return root;
}

/* The body stands inside the root, and the limit counts the blocks inside the body. */
static bool is_too_deep(const TLS_BLOCK *block)
{
    return block->depth > TLS_NESTING_LIMIT + 1;
}

void TLS_Statement(TLS_BLOCK *root, TLT_STATEMENT *statement)
{
    TLS_BLOCK *block = place_statement(root, statement);
    root->current = block;
    if (is_too_deep(block)) {
        TLT_Error(statement, "Blocks nested too deeply");
        return;
    }
    if (block->parser != nullptr) block->parser(root, statement, block->parser_context);
}

void TLS_Append(TLS_BLOCK *root, TLS_STATEMENT *record)
{
    append(root->current, record);
}

TLS_STATEMENT *TLS_LastStatement(TLS_BLOCK *block)
{
    return block->last;
}

TLS_STATEMENT *TLS_Owner(TLS_BLOCK *root, const TLS_STATEMENT_CLASS *statement_class)
{
    TLS_BLOCK *outer = root->current->outer;
    if (outer == nullptr || outer->last == nullptr) return nullptr;
    if (statement_class == nullptr) return outer->last;
    return outer->last->statement_class == statement_class ? outer->last : nullptr;
}

int32_t TLS_EmptyBlock(TLS_BLOCK *block)
{
    return block == nullptr || block->statements == nullptr;
}

int32_t TLS_CheckType(TLS_BLOCK *root, TLT_STATEMENT *statement, TLE_TERM *expression,
                      TLI_IDENTIFIER *type)
{
    if (TLIT_MatchType(root->module, statement, type, TLE_ExpressionType(expression))) return 1;
    char text[128];
    std::snprintf(text, sizeof text, "Type mismatch - Expression should return %s",
                  TLI_IdentifierName(type));
    TLT_Error(statement, text);
    return 0;
}

void TLS_CheckUnreachable(TLS_STATEMENT *record)
{
    if (record == nullptr || record->next == nullptr) return;
    TLT_Warning(record->next->statement, "Unreachable code");
}

void TLS_CheckBlock(TLS_BLOCK *block)
{
    if (block == nullptr) return;
    for (TLS_STATEMENT *record = block->statements; record != nullptr; record = record->next) {
        if (record->statement_class->check != nullptr) {
            record->statement_class->check(block, record);
        }
    }
}

/* Where the class record keeps the operation for each target of a stream. */
static constexpr TLS_CODE TLS_STATEMENT_CLASS::*code_entries[] = {
    &TLS_STATEMENT_CLASS::p_code,
    &TLS_STATEMENT_CLASS::c_code,
    &TLS_STATEMENT_CLASS::java_code,
};

void TLS_BlockCode(TLC_STREAM *stream, TLS_BLOCK *block)
{
    if (block == nullptr) return;
    TLS_CODE TLS_STATEMENT_CLASS::*entry = code_entries[TLC_Target(stream)];
    for (TLS_STATEMENT *record = block->statements; record != nullptr; record = record->next) {
        TLS_CODE code = record->statement_class->*entry;
        if (code != nullptr) code(block, stream, record);
    }
}

void TLS_OneBlockCCode(TLC_STREAM *stream, TLS_BLOCK *block)
{
    FILE *file = TLC_CFile(stream);
    int32_t indent = block == nullptr || block->outer == nullptr ? 0 : block->outer->indent;
    std::fprintf(file, "%*s{\n", indent, "");
    TLS_BlockCode(stream, block);
    std::fprintf(file, "%*s}\n", indent, "");
}

void TLS_OneBlockJCode(TLC_STREAM *stream, TLS_BLOCK *block)
{
    TLS_OneBlockCCode(stream, block);
}

void TLS_PrintOpening(const char *label, int32_t indent)
{
    FILE *listing = TOLL_Output == nullptr ? stdout : TOLL_Output;
    std::fprintf(listing, "%*s%s\n", indent, "", label);
}

void TLS_PrintClosing(const char *label, int32_t indent)
{
    std::printf("%*sEND %s\n", indent, "", label);
}

void TLS_PrintBlock(const char *label, TLS_BLOCK *block, int32_t indent)
{
    TLS_PrintOpening(label, indent);
    TLS_STATEMENT *record = block == nullptr ? nullptr : block->statements;
    for (; record != nullptr; record = record->next) {
        if (record->statement_class->print != nullptr) {
            record->statement_class->print(record, indent + 2);
        }
    }
    TLS_PrintClosing(label, indent);
}

void TLS_DelBlock(TLS_BLOCK *block)
{
    if (block == nullptr) return;
    TLS_STATEMENT *record = block->statements;
    while (record != nullptr) {
        TLS_STATEMENT *next = record->next;
        if (record->statement_class->delete_statement != nullptr) {
            record->statement_class->delete_statement(record);
        }
        record = next;
    }
    SH_Free(block);
}

TLP_MODULE *TLS_BlockModule(TLS_BLOCK *block)
{
    return block->module;
}

int32_t TLS_GetBlockSectionType(TLS_BLOCK *block)
{
    return block->section_type;
}
