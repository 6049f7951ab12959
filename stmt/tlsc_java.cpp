/*
 * IF, ELSEIF, WHEN, RAISE and END_EXCEPTION as Java text.
 */
#include "host/host.h"
#include "stmt/tlsc.h"

#include <cstdio>

#include "stmt/tls_java.h"
#include <ostrum/tlt.h>

/* ---- IF ---- */

/* The next of a chain, if there is code for it. */
static const TLSC_IF *next_of(const TLSC_IF *record)
{
    const TLSC_IF *next = TLSC_ChainNext(record);
    if (next != nullptr && next->token == TLT_TOKEN_WHEN) return nullptr; /* a block of its own */
    return next != nullptr && TLS_Generable(&next->common, next->condition) ? next : nullptr;
}

/* Writes a block that control enters; tells whether it goes on behind it. */
static bool write_block(TLC_STREAM *stream, TLS_BLOCK *block)
{
    TLS_SetOpen(stream, true);
    TLS_OneBlockJCode(stream, block);
    return TLS_IsOpen(stream);
}

static void write_chain(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSC_IF *record)
{
    FILE *file = stream->file;
    const char *word = "if";
    bool is_open = false;
    for (const TLSC_IF *next; record != nullptr; record = next, word = "else if") {
        std::fprintf(file, "%*s%s (", block->indent, "", word);
        TLE_JavaCondition(stream, record->condition);
        HOST_PutText(file, ")\n");
        is_open |= write_block(stream, record->then_block);
        next = next_of(record);
        if (next != nullptr) continue;
        if (record->else_block == nullptr) {
            is_open = true;
            break;
        }
        std::fprintf(file, "%*selse\n", block->indent, "");
        is_open |= write_block(stream, record->else_block);
    }
    TLS_SetOpen(stream, is_open);
}

/* ---- WHEN ---- */

/* The number of the exception is worked out once, before the protected block. */
struct WHEN_TEXT {
    const TLSC_IF *record;
    int32_t indent;
    int32_t name;    /* number in the names of this statement */
    bool is_literal; /* the exception's number stands where it is needed */
};

static void write_number(TLC_STREAM *stream, const WHEN_TEXT &when)
{
    if (when.is_literal) return;
    std::fprintf(stream->file, "%*sint toll_%d = ", when.indent, "", when.name);
    TLE_ExpressionCode(stream, when.record->condition, TLE_MODE_VALUE);
    HOST_PutText(stream->file, ";\n");
}

static bool write_protected(TLC_STREAM *stream, const WHEN_TEXT &when)
{
    FILE *file = stream->file;
    bool is_left_early = TLCG_IsInSet(TLCJ_State(stream)->marked, when.record);
    if (is_left_early) std::fprintf(file, "%*stoll_when_%d:\n", when.indent, "", when.name);
    std::fprintf(file, "%*stry {\n", when.indent, "");
    bool is_open = true;
    if (when.record->else_block != nullptr) is_open = write_block(stream, when.record->else_block);
    std::fprintf(file, "%*s}\n", when.indent, "");
    return is_open;
}

/* A handler that is for another number passes the exception on. */
static bool write_handler(TLC_STREAM *stream, const WHEN_TEXT &when)
{
    FILE *file = stream->file;
    int32_t indent = when.indent;
    std::fprintf(file, "%*scatch(Raise toll_e%d)\n%*s{\n%*stoll_take(toll_e%d, ", indent, "",
                 when.name, indent, "", indent + 2, "", when.name);
    if (when.is_literal) {
        TLE_ExpressionCode(stream, when.record->condition, TLE_MODE_VALUE);
    } else {
        std::fprintf(file, "toll_%d", when.name);
    }
    HOST_PutText(file, ");\n");
    bool is_open = write_block(stream, when.record->then_block);
    std::fprintf(file, "%*s}\n", indent, "");
    return is_open;
}

/* P-code works the number out again when the protected block is over. */
static void write_second_number(TLC_STREAM *stream, const WHEN_TEXT &when)
{
    if (!TLS_IsOpen(stream) || !TLE_HasEffects(when.record->condition)) return;
    std::fprintf(stream->file, "%*stoll_drop(", when.indent, "");
    TLE_ExpressionCode(stream, when.record->condition, TLE_MODE_VALUE);
    HOST_PutText(stream->file, ");\n");
}

static void write_when(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSC_IF *record)
{
    TLCJ_STATE *state = TLCJ_State(stream);
    WHEN_TEXT when = { .record = record,
                       .indent = block->indent,
                       .name = TLS_NewJavaName(stream),
                       .is_literal = record->condition->kind == TLT_TOKEN_NUMBER };
    write_number(stream, when);
    bool is_open = write_protected(stream, when);
    const void *outer = state->handler;
    int32_t outer_name = state->handler_name;
    bool outer_is_left = state->is_left;
    state->handler = record;
    state->handler_name = when.name;
    state->is_left = false;
    is_open |= write_handler(stream, when);
    is_open |= state->is_left;
    state->handler = outer;
    state->handler_name = outer_name;
    state->is_left = outer_is_left;
    TLS_SetOpen(stream, is_open);
    write_second_number(stream, when);
}

void TLSC_IfJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const TLSC_IF *branch = TLSC_AsIf(record);
    if (!TLS_IsWritten(stream, record, branch->condition)) return;
    if (branch->token == TLT_TOKEN_WHEN) {
        write_when(stream, block, branch);
    } else {
        write_chain(stream, block, branch);
    }
}

/* ---- RAISE and END_EXCEPTION ---- */

void TLSC_RaiseJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const auto *raise = reinterpret_cast<TLSC_RAISE *>(record);
    if (!TLS_IsWritten(stream, record, raise->value)) return;
    if (raise->has_argument && raise->argument == nullptr) return;
    std::fprintf(stream->file, "%*sthrow new Raise(", block->indent, "");
    TLE_ExpressionCode(stream, raise->value, TLE_MODE_VALUE);
    HOST_PutText(stream->file, ", ");
    if (raise->argument != nullptr) {
        TLE_ExpressionCode(stream, raise->argument, TLE_MODE_VALUE);
    } else {
        HOST_PutText(stream->file, "0");
    }
    HOST_PutText(stream->file, ");\n");
    TLS_SetOpen(stream, false);
}

void TLSC_EndExceptionJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *)
{
    TLCJ_STATE *state = TLCJ_State(stream);
    if (!state->is_open || state->handler == nullptr) return;
    TLCJ_Mark(stream, state->handler);
    std::fprintf(stream->file, "%*sbreak toll_when_%d;\n", block->indent, "", state->handler_name);
    state->is_left = true;
    state->is_open = false;
}
