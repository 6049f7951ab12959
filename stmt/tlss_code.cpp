/*
 * P-code and listing of SWITCH, NODE, SUBTREE, LEAF and GOTO. A statement computes its selector in
 * the start section, goes by the table in the dispatch section, and the blocks of its legs follow.
 */
#include "stmt/tlss.h"

#include <cstdio>

#include <ostrum/eep.h>
#include <ostrum/tlc.h>
#include <ostrum/tle.h>
#include <ostrum/tlp.h>

/* Where an entry of a table leads: to a section, or to a node by its name. */
struct ENTRY {
    TLC_PSECT *section; /* null if node is set */
    TLI_IDENTIFIER *node;
};

/* Entries of the table; 0 too where a faulty source leaves no room for one. */
static int32_t table_size(const TLSS_SWITCH *record)
{
    if (record->legs == nullptr) return 0;
    int64_t size = static_cast<int64_t>(record->highest_case) - record->lowest_case + 1;
    return size < 0 || size >= TLSS_TABLE_LIMIT ? 0 : static_cast<int32_t>(size);
}

bool TLSS_IsGenerable(const TLSS_SWITCH *record)
{
    bool is_bare_leaf = record->token == TLT_TOKEN_LEAF && !record->has_expression;
    return is_bare_leaf || TLS_Generable(&record->common, record->expression);
}

static void generate_selector(TLC_STREAM *stream, TLSS_SWITCH *record)
{
    record->start_section = TLS_OpenSection(stream, &record->common);
    if (record->has_expression) {
        TLE_ExpressionCode(stream, record->expression, 0);
    } else {
        TLC_Literal(stream, 0);
    }
}

static void generate_blocks(TLC_STREAM *stream, TLSS_SWITCH *record)
{
    for (TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next) {
        if (leg->block == nullptr) continue;
        leg->start = TLC_NewPSect(stream);
        TLS_BlockCode(stream, leg->block);
        leg->end = TLC_NewPSect(stream);
    }
    record->default_section = nullptr;
    if (record->default_block != nullptr) {
        record->default_section = TLC_NewPSect(stream);
        TLS_BlockCode(stream, record->default_block);
    }
    record->end_section = TLC_NewPSect(stream);
    if (record->default_section == nullptr) record->default_section = record->end_section;
}

static bool passes_control(TLS_BLOCK *block)
{
    const TLS_STATEMENT *last = TLS_LastStatement(block);
    return last == nullptr || (last->statement_class->flags & TLS_NO_PASS) == 0;
}

/* The blocks of the legs lead on behind the statement. */
static void close_blocks(TLC_STREAM *stream, const TLSS_SWITCH *record)
{
    for (TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next) {
        if (leg->block == nullptr || !passes_control(leg->block)) continue;
        TLC_SetPSect(stream, leg->end);
        TLS_Jump(stream, EEP_JUMP, record->end_section);
    }
}

static void enter_leg(const TLSS_SWITCH *record, const TLSS_CASE *leg, ENTRY *entries, int32_t size)
{
    TLI_IDENTIFIER *node = leg->target == nullptr ? nullptr : leg->target->node_identifier;
    if (leg->block == nullptr && node == nullptr) return;
    for (const TLSS_CASE_VALUE *value = leg->values; value != nullptr; value = value->next) {
        int32_t index = value->value - record->lowest_case;
        if (index < size) entries[index] = { .section = leg->start, .node = node };
    }
}

static void emit_table(TLC_STREAM *stream, const TLSS_SWITCH *record, int32_t size)
{
    ENTRY entries[TLSS_TABLE_LIMIT];
    for (int32_t i = 0; i < size; i++)
        entries[i] = { .section = record->default_section, .node = nullptr };
    for (const TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next)
        enter_leg(record, leg, entries, size);
    for (int32_t i = 0; i < size; i++) {
        if (entries[i].node != nullptr) {
            TLC_Label(stream, entries[i].node);
        } else {
            TLC_Jump(stream, entries[i].section);
        }
    }
}

static void generate_dispatch(TLC_STREAM *stream, const TLSS_SWITCH *record, int32_t size)
{
    TLC_SetPSect(stream, record->dispatch_section);
    if (size > 0 && record->lowest_case != 0) {
        TLC_Literal(stream, record->lowest_case);
        TLC_PCode(stream, EEP_SUB);
    }
    bool is_switch = record->token == TLT_TOKEN_SWITCH;
    TLC_PCode(stream, is_switch ? EEP_SWITCH : EEP_NODE);
    TLC_Code8(stream, size);
    if (is_switch) TLC_Jump(stream, record->default_section);
    emit_table(stream, record, size);
    TLC_SetPSect(stream, record->end_section);
}

void TLSS_SwitchCode(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *common)
{
    TLSS_SWITCH *record = TLSS_AsSwitch(common);
    if (!TLSS_IsGenerable(record)) return;
    int32_t size = table_size(record);
    generate_selector(stream, record);
    record->dispatch_section = TLC_NewPSect(stream);
    if (TLSS_IsNode(record) && size == 0) {
        TLC_PCode(stream, EEP_POP);
        return;
    }
    if (record->token == TLT_TOKEN_LEAF) {
        TLC_PCode(stream, EEP_RET);
        return;
    }
    generate_blocks(stream, record);
    close_blocks(stream, record);
    generate_dispatch(stream, record, size);
}

TLC_PSECT *TLSS_NodePSect(TLS_STATEMENT *record)
{
    const TLSS_SWITCH *node = TLSS_AsSwitch(record);
    return node == nullptr ? nullptr : node->start_section;
}

void TLSS_GotoCode(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *common)
{
    const auto *record = reinterpret_cast<TLSS_GOTO *>(common);
    if (record->target == nullptr || record->target->node_identifier == nullptr) return;
    TLS_OpenSection(stream, common);
    TLC_PCode(stream, EEP_JUMP);
    TLC_Label(stream, record->target->node_identifier);
}

/* ---- Listing ---- */

static FILE *listing(void)
{
    return TOLL_Output == nullptr ? stdout : TOLL_Output;
}

static void print_leg(const TLSS_CASE *leg, int32_t indent)
{
    std::fprintf(listing(), "%*sCASE", indent, "");
    const char *before = " ";
    for (const TLSS_CASE_VALUE *value = leg->values; value != nullptr; value = value->next) {
        std::fprintf(listing(), "%s%d", before, value->value);
        before = ",";
    }
    std::fputc('\n', listing());
    if (leg->block != nullptr) {
        TLS_PrintBlock("CASE BLOCK", leg->block, indent + 2);
    } else if (leg->goto_name != nullptr) {
        std::fprintf(listing(), "%*sgoto %s\n", indent, "", leg->goto_name);
    }
}

void TLSS_PrintSwitch(TLS_STATEMENT *common, int32_t indent)
{
    const TLSS_SWITCH *record = TLSS_AsSwitch(common);
    TLE_PrintExpression(TLT_TokenValue(record->token), record->expression, indent);
    for (const TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next)
        print_leg(leg, indent);
    if (record->default_block == nullptr) return;
    std::fprintf(listing(), "%*sDEFAULT\n", indent, "");
    TLS_PrintBlock("DEFAULT BLOCK", record->default_block, indent + 2);
}

void TLSS_PrintGoto(TLS_STATEMENT *common, int32_t indent)
{
    const char *name = reinterpret_cast<TLSS_GOTO *>(common)->name;
    if (name != nullptr) std::fprintf(listing(), "%*sGOTO %s\n", indent, "", name);
}
