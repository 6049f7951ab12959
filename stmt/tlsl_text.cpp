/*
 * WHILE and FOR as C text.
 */
#include "stmt/tlsl.h"

#include <cstdio>

#include "codegen/tlc.h"
#include "expr/tle.h"
#include "stmt/tls_text.h"
#include <ostrum/tlit.h>
#include <ostrum/tlt.h>

void TLSL_WhileText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const auto *loop = reinterpret_cast<TLSL_WHILE *>(record);
    TLE_TERM *condition = loop->condition;
    if (!TLS_Generable(record, condition)) return;
    TLE_PrepareText(stream, block->indent, &condition, 1);
    TLS_WriteIndent(stream, block);
    std::fputs("while (", TLC_CFile(stream));
    TLS_WriteCondition(stream, condition);
    std::fputs(")\n", TLC_CFile(stream));
    TLS_OneBlockCCode(stream, loop->body);
}

/* ---- FOR ---- */

static void write_value(TLC_STREAM *stream, TLE_TERM *term)
{
    TLE_ExpressionCode(stream, term, 0);
}

static bool is_enumeration(TLI_IDENTIFIER *type)
{
    return TLIT_TypeSubclass(nullptr, type) == TLIT_SUBCLASS_ENUMERATION;
}

/* The values that the variable of a loop can take without being cut. */
static int64_t highest_value(TLI_IDENTIFIER *type)
{
    if (type == TLIT_CharType || is_enumeration(type)) return UINT8_MAX;
    return type == TLIT_ShortType ? INT16_MAX : INT32_MAX;
}

static bool takes_start(const TLSL_FOR *loop)
{
    TLI_IDENTIFIER *type = loop->variable->type;
    int64_t highest = highest_value(type);
    int32_t start = 0;
    if (highest == INT32_MAX) return true;
    if (!TLE_Constant(loop->start, &start)) return false;
    return start <= highest && start >= (type == TLIT_ShortType ? INT16_MIN : 0);
}

/*
 * The limit and the step of a loop are worked out once, and what is held against the limit is not
 * cut to the size of the variable. With literals, C's own loop does the same.
 */
static bool is_plain(const TLSL_FOR *loop)
{
    int32_t limit = 0;
    int32_t step = 1;
    if (!TLE_Constant(loop->limit, &limit)) return false;
    if (loop->step != nullptr && !TLE_Constant(loop->step, &step)) return false;
    if (TLE_NeedsOrder(loop->variable) || !takes_start(loop)) return false;
    return static_cast<int64_t>(limit) + step <= highest_value(loop->variable->type);
}

static void write_plain(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSL_FOR *loop)
{
    FILE *file = TLC_CFile(stream);
    TLS_WriteIndent(stream, block);
    std::fputs("for (", file);
    write_value(stream, loop->variable);
    std::fputs("=", file);
    write_value(stream, loop->start);
    std::fprintf(file, ";\n%*s     ", block->indent, "");
    write_value(stream, loop->variable);
    std::fputs("<=", file);
    write_value(stream, loop->limit);
    std::fprintf(file, ";\n%*s     ", block->indent, "");
    write_value(stream, loop->variable);
    std::fputs("+=", file);
    if (loop->step != nullptr) {
        write_value(stream, loop->step);
    } else {
        std::fputs("1", file);
    }
    std::fputs(")\n", file);
}

/* Stores the loop's value in its variable. */
static void write_store(TLC_STREAM *stream, const TLSL_FOR *loop, int32_t value)
{
    write_value(stream, loop->variable);
    bool is_byte = is_enumeration(loop->variable->type);
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
        std::fputs("1", file);
    }
    std::fprintf(file, ",toll_%d=", limit + 2);
    write_value(stream, loop->start);
    std::fputs(",", file);
    write_store(stream, loop, limit + 2);
}

/* The variables of the loop: its limit, its step and its present value. */
static void write_full(TLC_STREAM *stream, const TLS_BLOCK *block, const TLSL_FOR *loop,
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
    std::fputs(")\n", file);
}

void TLSL_ForCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const auto *loop = reinterpret_cast<TLSL_FOR *>(record);
    if (!TLSL_ForIsGenerable(loop)) return;
    if (is_plain(loop)) {
        TLE_TERM *terms[] = { loop->variable, loop->start, loop->variable, loop->variable };
        TLE_PrepareText(stream, block->indent, terms, 4);
        write_plain(stream, block, loop);
    } else {
        int32_t limit = TLE_DeclareTemporaries(stream, block->indent, 3);
        TLE_TERM *terms[] = { loop->limit,    loop->step,     loop->start,
                              loop->variable, loop->variable, loop->variable };
        TLE_PrepareText(stream, block->indent, terms, 6);
        write_full(stream, block, loop, limit);
    }
    TLS_OneBlockCCode(stream, loop->body);
}
