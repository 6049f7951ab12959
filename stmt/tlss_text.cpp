/*
 * SWITCH, NODE, SUBTREE, LEAF and GOTO as C text.
 */
#include "host/host.h"
#include "stmt/tlss.h"

#include <cstdio>

#include "codegen/tlc.h"
#include "codegen/tlcc.h"
#include "stmt/tls_text.h"
#include <ostrum/tli.h>
#include <ostrum/tlit.h>

/* A compiler takes a truth value or a literal as a selector for an error: they are made words. */
static void write_selector(TLC_STREAM *stream, const TLSS_SWITCH *record)
{
    FILE *file = TLC_CFile(stream);
    TLE_TERM *expression = record->expression;
    const bool is_truth =
        TLE_TermOperator(expression) != nullptr && expression->type == TLIT_BoolType;
    const bool is_literal = expression->kind == TLT_TOKEN_NUMBER;
    HOST_PutText(file, "switch (");
    if (is_truth || is_literal) HOST_PutText(file, "toll_word(");
    TLS_WriteCondition(stream, expression);
    HOST_PutText(file, is_truth || is_literal ? "))\n" : ")\n");
}

static void write_value(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record,
                        const TLSS_CASE_VALUE *value)
{
    FILE *file = TLC_CFile(stream);
    char name[TLCC_NAME_CAPACITY];
    TLI_IDENTIFIER *type = record->expression_type;
    TLI_IDENTIFIER *named = TLIT_EnumGetValue(type, value->value);
    if (named != nullptr) {
        std::fprintf(file, "%*scase %s :\n", block->indent, "", TLCC_Name(named, name));
    } else {
        std::fprintf(file, "%*scase %d :\n", block->indent, "", value->value);
    }
}

static void write_body(TLC_STREAM *stream, TLS_BLOCK *body)
{
    stream->text.follows_label = true;
    TLS_BlockCode(stream, body);
    stream->text.follows_label = false;
}

static void write_target(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *target)
{
    if (target->node_identifier == nullptr) return;
    std::fprintf(TLC_CFile(stream), "%*sgoto NODE_%s;\n", block->indent + 2, "",
                 TLI_IdentifierName(target->node_identifier));
}

static void write_leg(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record,
                      const TLSS_CASE *leg)
{
    for (const TLSS_CASE_VALUE *value = leg->values; value != nullptr; value = value->next)
        write_value(stream, block, record, value);
    if (leg->block != nullptr) {
        write_body(stream, leg->block);
        std::fprintf(TLC_CFile(stream), "%*sbreak;\n\n", block->indent, "");
    } else if (leg->target != nullptr) {
        write_target(stream, block, leg->target);
    }
}

/* A node knows every value of its type; there is no way on from another. */
static void write_default(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record)
{
    FILE *file = TLC_CFile(stream);
    bool is_node = TLSS_IsNode(record);
    if (record->default_block == nullptr && !is_node) return;
    std::fprintf(file, "%*sdefault :\n", block->indent, "");
    if (is_node) {
        std::fprintf(file, "%*stoll_lost();\n", block->indent + 2, "");
        return;
    }
    write_body(stream, record->default_block);
    std::fprintf(file, "%*sbreak;\n", block->indent, "");
}

static void write_switch(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record)
{
    FILE *file = TLC_CFile(stream);
    TLS_WriteIndent(stream, block);
    write_selector(stream, record);
    std::fprintf(file, "%*s{\n", block->indent, "");
    for (const TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next)
        write_leg(stream, block, record, leg);
    write_default(stream, block, record);
    std::fprintf(file, "%*s}\n", block->indent, "");
}

void TLSS_SwitchCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *common)
{
    const TLSS_SWITCH *record = TLSS_AsSwitch(common);
    if (!TLSS_IsGenerable(record)) return;
    if (record->node_identifier != nullptr) {
        std::fprintf(TLC_CFile(stream), "\nNODE_%s :\n",
                     TLI_IdentifierName(record->node_identifier));
        stream->text.follows_label = true;
    }
    TLE_TERM *expression = record->expression;
    if (record->token == TLT_TOKEN_LEAF) {
        TLS_WriteReturn(stream, block, record->has_expression ? expression : nullptr);
    } else if (record->legs == nullptr) {
        TLS_WriteExpression(stream, block, expression);
    } else {
        TLE_PrepareText(stream, block->indent, &expression, 1);
        write_switch(stream, block, record);
    }
}

void TLSS_GotoCText(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *common)
{
    const auto *record = reinterpret_cast<TLSS_GOTO *>(common);
    bool has_node = record->target != nullptr && record->target->node_identifier != nullptr;
    if (!has_node) return;
    std::fprintf(TLC_CFile(stream), "  goto NODE_%s;\n", record->name);
}
