/*
 * WHILE and FOR as Java text.
 */
#include "host/host.h"
#include "stmt/tlsl.h"

#include <cstdio>

#include "expr/tle.h"
#include "stmt/tls_java.h"
#include <ostrum/tlit.h>

/* No loop of TOLL is endless to javac, so that control always goes on behind it. */
static void write_body(TLC_STREAM *stream, TLS_BLOCK *body)
{
    TLS_OneBlockJCode(stream, body);
    TLS_SetOpen(stream, true);
}

void TLSL_WhileJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const auto *loop = reinterpret_cast<TLSL_WHILE *>(record);
    if (!TLS_IsWritten(stream, record, loop->condition)) return;
    bool is_constant = TLE_IsJavaConstant(loop->condition);
    std::fprintf(stream->file, "%*swhile (", block->indent, "");
    if (is_constant) {
        HOST_PutText(stream->file, "toll_truth(");
        TLE_ExpressionCode(stream, loop->condition, TLE_MODE_VALUE);
        HOST_PutText(stream->file, ")");
    } else {
        TLE_JavaCondition(stream, loop->condition);
    }
    HOST_PutText(stream->file, ")\n");
    write_body(stream, loop->body);
}

/* ---- FOR ---- */

static void write_value(TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_ExpressionCode(stream, term, TLE_MODE_VALUE);
}

/* Does a variable never leave the values from the start of the loop to its limit? */
static bool stays_within(TLC_STREAM *stream, const TLSL_FOR *loop)
{
    if (!TLSL_IsNarrow(loop)) return true;
    if (!TLE_IsOwnVariable(stream, loop->variable->identifier)) return false;
    return !TLCG_IsInSet(TLCJ_State(stream)->marked, loop) && TLSL_HasLiteralStart(loop);
}

/*
 * The limit and the step of a loop are worked out once, and what is held against the limit is not
 * cut to the size of the variable. With literals, Java's own loop does the same.
 */
static bool is_plain(TLC_STREAM *stream, const TLSL_FOR *loop)
{
    return TLSL_HasLiteralBounds(loop) && TLE_IsJavaVariable(loop->variable) &&
           stays_within(stream, loop);
}

static void write_plain(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSL_FOR *loop)
{
    FILE *file = stream->file;
    TLCJ_NoteStore(stream, loop->variable->identifier);
    std::fprintf(file, "%*sfor (", block->indent, "");
    write_value(stream, loop->variable);
    HOST_PutText(file, " = ");
    TLE_JavaAssigned(stream, loop->variable->type, loop->start);
    HOST_PutText(file, " ; ");
    write_value(stream, loop->variable);
    HOST_PutText(file, "<=");
    write_value(stream, loop->limit);
    HOST_PutText(file, " ; ");
    write_value(stream, loop->variable);
    if (loop->step == nullptr) {
        HOST_PutText(file, "++");
    } else {
        HOST_PutText(file, " += ");
        write_value(stream, loop->step);
    }
    HOST_PutText(file, ")\n");
}

/* Declares a word of the loop's own. */
static int32_t write_word(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *value)
{
    int32_t name = TLS_NewJavaName(stream);
    std::fprintf(stream->file, "%*sint toll_%d = ", block->indent, "", name);
    if (value != nullptr) {
        write_value(stream, value);
    } else {
        HOST_PutText(stream->file, "1");
    }
    HOST_PutText(stream->file, ";\n");
    return name;
}

/* The words of the loop: its limit, its step and its present value. */
static void write_full(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSL_FOR *loop)
{
    FILE *file = stream->file;
    int32_t limit = write_word(stream, block, loop->limit);
    int32_t step = write_word(stream, block, loop->step);
    int32_t value = write_word(stream, block, loop->start);
    char name[32];
    std::snprintf(name, sizeof name, "toll_%d", value);
    std::fprintf(file, "%*sfor (", block->indent, "");
    TLE_JavaStoreName(stream, loop->variable, name);
    std::fprintf(file, " ; %s<=toll_%d ; %s = ", name, limit, name);
    write_value(stream, loop->variable);
    std::fprintf(file, " + toll_%d, ", step);
    TLE_JavaStoreName(stream, loop->variable, name);
    HOST_PutText(file, ")\n");
}

/* A body that changes the variable comes up here, and the loop is then written anew. */
static void write_watched_body(TLC_STREAM *stream, const TLSL_FOR *loop)
{
    TLCJ_STATE *state = TLCJ_State(stream);
    TLCJ_LOOP watched = { .record = loop,
                          .variable = loop->variable->identifier,
                          .outer = state->loops };
    state->loops = &watched;
    write_body(stream, loop->body);
    state->loops = watched.outer;
}

void TLSL_ForJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const auto *loop = reinterpret_cast<TLSL_FOR *>(record);
    if (!TLS_IsOpen(stream) || !TLSL_ForIsGenerable(loop)) return;
    if (!is_plain(stream, loop)) {
        write_full(stream, block, loop);
        write_body(stream, loop->body);
    } else if (TLSL_IsNarrow(loop)) {
        write_plain(stream, block, loop);
        write_watched_body(stream, loop);
    } else {
        write_plain(stream, block, loop);
        write_body(stream, loop->body);
    }
}
