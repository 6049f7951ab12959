/*
 * WHILE and FOR as C text.
 */
#include "host/host.h"
#include "stmt/tlsl.h"

#include <cstdio>

#include "codegen/tlc.h"
#include "expr/tle.h"
#include "names/tlit.h"
#include "stmt/tls_text.h"
#include <ostrum/tlt.h>

void TLSL_WhileText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const auto *loop = reinterpret_cast<TLSL_WHILE *>(record);
    TLE_TERM *condition = loop->condition;
    if (!TLS_Generable(record, condition)) return;
    TLE_PrepareText(stream, block->indent, &condition, 1);
    TLS_WriteIndent(stream, block);
    HOST_PutText(TLC_CFile(stream), "while (");
    TLS_WriteCondition(stream, condition);
    HOST_PutText(TLC_CFile(stream), ")\n");
    TLS_OneBlockCCode(stream, loop->body);
}

/* ---- FOR ---- */

static void write_value(TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_ExpressionCode(stream, term, 0);
}

/*
 * The limit and the step of a loop are worked out once, and what is held against the limit is not
 * cut to the size of the variable. With literals, C's own loop does the same.
 */
static bool is_plain(const TLSL_FOR *loop)
{
    if (!TLSL_HasLiteralBounds(loop)) return false;
    if (!TLSL_IsNarrow(loop)) return !TLE_NeedsOrder(loop->variable);
    return TLE_IsOwnInC(loop->variable) && TLSL_HasLiteralStart(loop) && !loop->is_changed;
}

static void write_plain_head(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSL_FOR *loop)
{
    FILE *file = TLC_CFile(stream);
    TLS_WriteIndent(stream, block);
    HOST_PutText(file, "for (");
    write_value(stream, loop->variable);
    HOST_PutText(file, "=");
    write_value(stream, loop->start);
    std::fprintf(file, ";\n%*s     ", block->indent, "");
    write_value(stream, loop->variable);
    HOST_PutText(file, "<=");
    write_value(stream, loop->limit);
    std::fprintf(file, ";\n%*s     ", block->indent, "");
    write_value(stream, loop->variable);
    HOST_PutText(file, "+=");
    if (loop->step != nullptr) {
        write_value(stream, loop->step);
    } else {
        HOST_PutText(file, "1");
    }
    HOST_PutText(file, ")\n");
}

/* Stores the loop's value in its variable. */
static void write_store(TLC_STREAM *stream, const TLSL_FOR *loop, int32_t value)
{
    write_value(stream, loop->variable);
    bool is_byte = TLIT_IsEnumeration(loop->variable->type);
    std::fprintf(TLC_CFile(stream), is_byte ? "=toll_byte(toll_%d)" : "=toll_%d", value);
}

static void write_start(TLC_STREAM *stream, const TLSL_FOR *loop, int32_t limit)
{
    FILE *file = TLC_CFile(stream);
    std::fprintf(file, "for (toll_%d=", limit);
    write_value(stream, loop->limit);
    std::fprintf(file, ",toll_%d=", limit + 1);
    if (loop->step != nullptr) {
        write_value(stream, loop->step);
    } else {
        HOST_PutText(file, "1");
    }
    std::fprintf(file, ",toll_%d=", limit + 2);
    write_value(stream, loop->start);
    HOST_PutText(file, ",");
    write_store(stream, loop, limit + 2);
}

/* The variables of the loop: its limit, its step and its present value. */
static void write_full_head(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSL_FOR *loop,
                            int32_t limit)
{
    FILE *file = TLC_CFile(stream);
    TLS_WriteIndent(stream, block);
    write_start(stream, loop, limit);
    std::fprintf(file, ";\n%*s     toll_%d<=toll_%d;\n%*s     toll_%d=toll_int(0u+", block->indent,
                 "", limit + 2, limit, block->indent, "", limit + 2);
    write_value(stream, loop->variable);
    std::fprintf(file, "+toll_%d),", limit + 1);
    write_store(stream, loop, limit + 2);
    HOST_PutText(file, ")\n");
}

static void write_plain(TLS_BLOCK *block, TLC_STREAM *stream, const TLSL_FOR *loop)
{
    TLE_TERM *terms[] = { loop->variable, loop->start, loop->variable, loop->variable };
    TLE_PrepareText(stream, block->indent, terms, 4);
    write_plain_head(stream, block, loop);
    TLS_OneBlockCCode(stream, loop->body);
}

static void write_full(TLS_BLOCK *block, TLC_STREAM *stream, const TLSL_FOR *loop)
{
    int32_t limit = TLE_DeclareTemporaries(stream, block->indent, 3);
    TLE_TERM *terms[] = { loop->limit,    loop->step,     loop->start,
                          loop->variable, loop->variable, loop->variable };
    TLE_PrepareText(stream, block->indent, terms, 6);
    write_full_head(stream, block, loop, limit);
    TLS_OneBlockCCode(stream, loop->body);
}

/* Notes whether the body changes the variable while it is written. */
static void write_watched(TLS_BLOCK *block, TLC_STREAM *stream, TLSL_FOR *loop)
{
    TLC_LOOP watched = { .variable = loop->variable->identifier,
                         .is_changed = false,
                         .outer = stream->text.loops };
    stream->text.loops = &watched;
    write_plain(block, stream, loop);
    stream->text.loops = watched.outer;
    loop->is_changed = watched.is_changed;
}

/* What a body does shows when it has been written. The loop is then written over it: it is longer so. */
static void write_narrow(TLS_BLOCK *block, TLC_STREAM *stream, TLSL_FOR *loop)
{
    const TLC_TEXT before = stream->text;
    const int32_t errors = stream->text_errors;
    const long start = std::ftell(stream->file);
    write_watched(block, stream, loop);
    if (!loop->is_changed) return;
    if (start < 0 || std::fseek(stream->file, start, SEEK_SET) != 0) {
        TLC_Error(stream, "Output cannot be written anew");
        return;
    }
    FILE *scratch = stream->text.scratch;
    stream->text = before;
    stream->text.scratch = scratch;
    TLC_SetTextErrors(stream, errors);
    write_full(block, stream, loop);
}

void TLSL_ForCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    auto *loop = reinterpret_cast<TLSL_FOR *>(record);
    if (!TLSL_ForIsGenerable(loop)) return;
    TLE_NoteStoreInC(stream, loop->variable);
    if (!is_plain(loop)) {
        write_full(block, stream, loop);
    } else if (TLSL_IsNarrow(loop)) {
        write_narrow(block, stream, loop);
    } else {
        write_plain(block, stream, loop);
    }
}
