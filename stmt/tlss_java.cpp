/*
 * SWITCH and trees as Java text. Java has no jumps, so a tree is a loop over the number of the node
 * that is next.
 */
#include "host/host.h"
#include "stmt/tlss.h"

#include <cstdint>
#include <cstdio>

#include "stmt/tls_java.h"
#include <ostrum/tli.h>
#include <ostrum/tlit.h>

/* ---- Legs ---- */

static void write_case(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record,
                       const TLSS_CASE_VALUE *value)
{
    char name[TLCJ_NAME_CAPACITY];
    TLI_IDENTIFIER *type = record->expression_type;
    TLI_IDENTIFIER *named = TLIT_EnumGetValue(type, value->value);
    TLI_SCOPE *scope = named == nullptr ? nullptr : TLI_IdentifierScope(named);
    if (scope != nullptr && TLI_ScopeType(scope) == TLI_STATIC_SCOPE) {
        TLS_WriteJavaIndent(stream, block->indent);
        std::fprintf(stream->file, "case %s :\n", TLCJ_Name(stream, named, name));
    } else {
        TLS_WriteJavaIndent(stream, block->indent);
        std::fprintf(stream->file, "case %d :\n", value->value);
    }
}

/* Writes the block of a leg; tells whether control goes on behind the SWITCH. */
static bool write_leg_block(TLC_STREAM *stream, const TLS_BLOCK *block, TLS_BLOCK *body,
                            const char *end)
{
    TLS_SetOpen(stream, true);
    TLS_BlockCode(stream, body);
    if (!TLS_IsOpen(stream)) return false;
    std::fprintf(stream->file, "%*sbreak;\n%s", block->indent, "", end);
    return true;
}

/* Java takes no value behind case that the type of the selector has no room for. */
static bool is_too_narrow(const TLSS_SWITCH *record)
{
    if (record->expression->type == TLIT_CharType) return record->highest_case > UINT16_MAX;
    return record->expression->type == TLIT_ShortType && record->highest_case > INT16_MAX;
}

static void open_switch(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record)
{
    bool is_widened = is_too_narrow(record);
    std::fprintf(stream->file, "%*sswitch(%s", block->indent, "", is_widened ? "0 + " : "");
    bool has_brackets = is_widened && TLE_TermOperator(record->expression) != nullptr;
    if (has_brackets) HOST_PutText(stream->file, "(");
    TLE_ExpressionCode(stream, record->expression, TLE_MODE_VALUE);
    std::fprintf(stream->file, "%s)\n%*s{\n", has_brackets ? ")" : "", block->indent, "");
}

/* ---- SWITCH ---- */

static void write_switch(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record)
{
    bool is_open = record->default_block == nullptr;
    open_switch(stream, block, record);
    for (const TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next) {
        if (leg->values == nullptr || leg->block == nullptr) continue;
        for (const TLSS_CASE_VALUE *value = leg->values; value != nullptr; value = value->next)
            write_case(stream, block, record, value);
        is_open |= write_leg_block(stream, block, leg->block, "\n");
    }
    if (record->default_block != nullptr) {
        std::fprintf(stream->file, "%*sdefault :\n", block->indent, "");
        is_open |= write_leg_block(stream, block, record->default_block, "");
    }
    std::fprintf(stream->file, "%*s}\n", block->indent, "");
    TLS_SetOpen(stream, is_open);
}

/* ---- Trees ---- */

static void write_jump(TLC_STREAM *stream, int32_t indent, const TLSS_SWITCH *target)
{
    const TLI_IDENTIFIER *node = target == nullptr ? nullptr : target->node_identifier;
    bool is_own = node != nullptr && TLI_IdentifierScope(node) == TLCJ_State(stream)->frame;
    if (!is_own) {
        TLC_Error(stream, "GOTO into another tree not possible in 'Java'");
        return;
    }
    std::fprintf(stream->file, "%*stoll_node = %d;\n%*scontinue;\n", indent, "",
                 target->node_number, indent, "");
    TLS_SetOpen(stream, false);
}

/* A node knows every value of its type; there is no way on from another. */
static void write_legs(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record)
{
    open_switch(stream, block, record);
    for (const TLSS_CASE *leg = record->legs; leg != nullptr; leg = leg->next) {
        if (leg->values == nullptr) continue;
        for (const TLSS_CASE_VALUE *value = leg->values; value != nullptr; value = value->next)
            write_case(stream, block, record, value);
        write_jump(stream, block->indent + 2, leg->target);
    }
    std::fprintf(stream->file, "%*sdefault :\n%*sthrow toll_lost();\n%*s}\n", block->indent, "",
                 block->indent + 2, "", block->indent, "");
    TLS_SetOpen(stream, false);
}

static void write_node(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record)
{
    TLE_TERM *expression = record->expression;
    if (record->token == TLT_TOKEN_LEAF) {
        TLS_WriteJavaReturn(stream, block, record->has_expression ? expression : nullptr);
    } else if (record->legs == nullptr) {
        TLS_WriteJavaExpression(stream, block, expression);
    } else {
        write_legs(stream, block, record);
    }
}

/* A node of a tree stands in a case of its own; control may come into it from the one before. */
static void write_labelled(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSS_SWITCH *record)
{
    FILE *file = stream->file;
    if (TLS_IsOpen(stream)) {
        std::fprintf(file, "%*stoll_node = %d;\n%*scontinue;\n", block->indent, "",
                     record->node_number, block->indent, "");
    }
    const char *name =
        record->node_identifier == nullptr ? "" : TLI_IdentifierName(record->node_identifier);
    std::fprintf(file, "\n// NODE_%s\n%*scase %d :\n", name, block->indent, "",
                 record->node_number);
    TLS_SetOpen(stream, true);
    if (TLSS_IsGenerable(record)) write_node(stream, block, record);
}

void TLSS_SwitchJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *common)
{
    const TLSS_SWITCH *record = TLSS_AsSwitch(common);
    if (record->token != TLT_TOKEN_SWITCH) {
        if (TLCJ_State(stream)->is_tree) write_labelled(stream, block, record);
    } else if (TLS_IsOpen(stream) && TLSS_IsGenerable(record) && record->legs != nullptr) {
        write_switch(stream, block, record);
    }
}

void TLSS_GotoJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *common)
{
    const auto *record = reinterpret_cast<TLSS_GOTO *>(common);
    if (TLS_IsOpen(stream)) write_jump(stream, block->indent, record->target);
}

/* Numbers the nodes from first on; gives the number behind the last. */
static int32_t number_nodes(TLS_STATEMENT *record, int32_t first)
{
    for (; record != nullptr; record = record->next) {
        TLSS_SWITCH *node = TLSS_AsSwitch(record);
        if (node != nullptr) node->node_number = first++;
    }
    return first;
}

static void write_loop(TLC_STREAM *stream, const TLS_BLOCK *root, TLS_BLOCK *body)
{
    FILE *file = stream->file;
    int32_t indent = body->statements != nullptr && body->indent > 0 ? body->indent : 2;
    std::fprintf(file, "%*sint toll_node = 1;\n%*sfor (;;) {\n%*sswitch(toll_node)\n%*s{\n", indent,
                 "", indent, "", indent, "", indent, "");
    TLS_SetOpen(stream, false);
    TLS_BlockCode(stream, body);
    for (TLS_STATEMENT *at = root->head->next; at != nullptr; at = at->next) {
        auto write = at->statement_class->java_code;
        if (write != nullptr) write(const_cast<TLS_BLOCK *>(root), stream, at);
    }
    if (TLS_IsOpen(stream)) TLS_WriteJavaEnd(stream, root, indent);
    std::fprintf(file, "%*s}\n%*s}\n", indent, "", indent, "");
}

void TLSS_WriteJavaTree(TLC_STREAM *stream, const TLS_BLOCK *root, TLS_BLOCK *body)
{
    int32_t next = number_nodes(body->statements, 1);
    next = number_nodes(root->head->next, next);
    if (next == 1) return;
    TLCJ_State(stream)->is_tree = true;
    write_loop(stream, root, body);
    TLCJ_State(stream)->is_tree = false;
    TLS_SetOpen(stream, false);
}
