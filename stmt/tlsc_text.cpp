/*
 * IF, ELSEIF, WHEN and RAISE as C text.
 */
#include "host/host.h"
#include "stmt/tlsc.h"

#include <cstdio>

#include "codegen/tlc.h"
#include "stmt/tls_text.h"
#include <ostrum/tlt.h>

/* Compilers count nested brackets, so that only so many of a chain stand in one another. */
static constexpr int32_t deepest_chain = 32;

/* The next of a chain, if there is code for it. */
static const TLSC_IF *next_of(const TLSC_IF *record)
{
    const TLSC_IF *next = TLSC_ChainNext(record);
    return next != nullptr && TLS_Generable(&next->common, next->condition) ? next : nullptr;
}

static void write_branch(TLC_STREAM *stream, const TLSC_IF *record)
{
    HOST_PutText(TLC_CFile(stream), "if (");
    TLS_WriteCondition(stream, record->condition);
    HOST_PutText(TLC_CFile(stream), ")\n");
    TLS_OneBlockCCode(stream, record->then_block);
}

/* An ELSEIF that needs nothing declared before it can follow the else on its line. */
static bool is_joined(const TLC_STREAM *stream, const TLSC_IF *record, int32_t depth)
{
    return depth >= deepest_chain && !TLE_NeedsPreparation(stream, record->condition);
}

static void write_chain(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSC_IF *record)
{
    FILE *file = TLC_CFile(stream);
    int32_t indent = block->indent;
    int32_t depth = 0;
    bool is_on_line = false;
    for (const TLSC_IF *next; record != nullptr; record = next) {
        TLE_TERM *condition = record->condition;
        TLE_PrepareText(stream, indent, &condition, 1);
        if (!is_on_line) std::fprintf(file, "%*s", indent, "");
        write_branch(stream, record);
        next = next_of(record);
        if (record->else_block == nullptr) break;
        is_on_line = next != nullptr && is_joined(stream, next, depth);
        std::fprintf(file, is_on_line ? "%*selse " : "%*selse\n", indent, "");
        if (next == nullptr) {
            TLS_OneBlockCCode(stream, record->else_block);
        } else if (!is_on_line) {
            std::fprintf(file, "%*s{\n", indent, "");
            ++depth;
        }
    }
    for (; depth > 0; --depth)
        std::fprintf(file, "%*s}\n", indent, "");
}

void TLSC_IfCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const TLSC_IF *branch = TLSC_AsIf(record);
    if (!TLS_Generable(record, branch->condition)) return;
    if (branch->token == TLT_TOKEN_WHEN) {
        TLC_Error(stream, "WHEN statement cannot map onto 'C' code");
    } else {
        write_chain(stream, block, branch);
    }
}

void TLSC_RaiseCText(TLS_BLOCK *, TLC_STREAM *stream, TLS_STATEMENT *)
{
    TLC_Error(stream, "RAISE statement cannot be mapped on 'C' code");
}
