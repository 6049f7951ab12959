/*
 * Simple statements as C and Java text: the head of a function, END, an expression, RETURN.
 */
#include "stmt/tls_text.h"
#include "host/host.h"

#include <cstdio>

#include "codegen/tlc.h"
#include "codegen/tlcc.h"
#include <ostrum/tle.h>
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlt.h>

void TLS_WriteIndent(TLC_STREAM *stream, const TLS_BLOCK *block)
{
    static constexpr char blanks[] =
        "                                                                ";
    static constexpr int32_t room = sizeof blanks - 1;
    FILE *file = TLC_CFile(stream);
    int32_t left = block->indent;
    for (; left > room; left -= room)
        std::fwrite(blanks, 1, room, file);
    if (left > 0) std::fwrite(blanks, 1, static_cast<size_t>(left), file);
}

/* ---- Expressions in statements ---- */

void TLS_WriteCondition(TLC_STREAM *stream, TLE_TERM *condition)
{
    /* A compiler takes a bare assignment for a comparison gone wrong. */
    bool is_doubtful = TLC_Target(stream) == TLC_TARGET_C && condition->kind == TLT_TOKEN_ASSIGN;
    if (is_doubtful) HOST_PutText(TLC_CFile(stream), "(");
    TLE_ExpressionCode(stream, condition, TLE_MODE_VALUE);
    if (is_doubtful) HOST_PutText(TLC_CFile(stream), ")");
}

void TLS_WriteExpression(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *expression)
{
    stream->text.statement = expression;
    TLE_PrepareText(stream, block->indent, &expression, 1);
    TLS_WriteIndent(stream, block);
    TLE_ExpressionCode(stream, expression, TLE_MODE_VALUE);
    HOST_PutText(TLC_CFile(stream), ";\n");
    stream->text.statement = nullptr;
}

void TLS_WriteReturn(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *expression)
{
    TLE_PrepareText(stream, block->indent, &expression, 1);
    TLS_WriteIndent(stream, block);
    HOST_PutText(TLC_CFile(stream), "return ");
    if (expression != nullptr && TLC_Target(stream) == TLC_TARGET_C) {
        TLI_IDENTIFIER *function = TLS_FunctionIdentifier(block->head);
        TLE_CValueAs(stream, function == nullptr ? nullptr : TLI_IdentifierType(function),
                     expression);
    } else if (expression != nullptr) {
        TLE_ExpressionCode(stream, expression, TLE_MODE_VALUE);
    }
    HOST_PutText(TLC_CFile(stream), ";\n");
}

void TLS_ExpressionText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    TLE_TERM *expression = reinterpret_cast<TLS_EXPRESSION *>(record)->expression;
    if (TLS_Generable(record, expression)) TLS_WriteExpression(stream, block, expression);
}

void TLS_ReturnText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const auto *result = reinterpret_cast<TLS_RETURN *>(record);
    if (result->has_value && !TLS_Generable(record, result->expression)) return;
    TLS_WriteReturn(stream, block, result->has_value ? result->expression : nullptr);
}

/* ---- Functions ---- */

static TLS_FUNCTION *head_of(const TLS_BLOCK *block)
{
    bool is_head = block->head != nullptr && block->head->statement_class == &TLS_FunctionClass;
    return is_head ? reinterpret_cast<TLS_FUNCTION *>(block->head) : nullptr;
}

/* Does control never pass beyond the statements in front of END? */
static bool is_left_before(const TLS_BLOCK *root, const TLS_STATEMENT *end)
{
    const TLS_STATEMENT *last = root->statements;
    for (const TLS_STATEMENT *at = last; at != nullptr && at != end; at = at->next)
        last = at;
    if (last == root->head) last = head_of(root)->body->last;
    return last != nullptr && (last->statement_class->flags & TLS_NO_PASS) != 0;
}

/* A function that has a result and runs off its end stops the program. */
static void close_function(TLC_STREAM *stream, const TLS_BLOCK *root, const TLS_STATEMENT *end)
{
    TLI_IDENTIFIER *function = head_of(root)->function;
    bool has_result = TLI_IdentifierType(function) != TLIT_VoidType;
    FILE *file = TLC_CFile(stream);
    if (has_result && !is_left_before(root, end)) {
        std::fprintf(file, "%*stoll_stop();\n", head_of(root)->body->indent, "");
    } else if (stream->text.follows_label) {
        HOST_PutText(file, "  ;\n");
    }
    HOST_PutText(file, "}\n");
}

static void declare_function(TLC_STREAM *stream, TLI_IDENTIFIER *function)
{
    if (TLIV_FunctionQualifiers(function) == 0) return;
    char name[TLCC_NAME_CAPACITY];
    std::fprintf(TLC_CFile(stream), "extern %s %s", TLCC_ResultName(function),
                 TLCC_Name(function, name));
    TLCC_WritePrototype(stream, function);
    HOST_PutText(TLC_CFile(stream), ";\n");
}

static void define_function(TLC_STREAM *stream, TLS_BLOCK *root)
{
    TLS_FUNCTION *head = head_of(root);
    TLI_IDENTIFIER *result = TLI_IdentifierType(head->function);
    stream->text.frame = TLIV_FunctionScope(head->function);
    stream->text.temporaries = 0;
    stream->text.follows_label = false;
    if (result != nullptr && TLI_FindPragma(result, "AUTO_GEN") != nullptr) {
        TLCC_WriteIdentifier(stream, result);
    }
    TLCC_WriteHead(stream, head->function);
    TLCC_WriteScopeIdentifiers(stream, TLIV_FunctionScope(head->function));
    TLS_BlockCode(stream, head->body);
    /* Statements in the column of BEGIN stand behind the head, and END closes the function. */
    if (root->last->statement_class != &TLS_EndClass) close_function(stream, root, nullptr);
}

void TLS_FunctionCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    if (TLC_GetPass(stream) == 1) {
        declare_function(stream, reinterpret_cast<TLS_FUNCTION *>(record)->function);
    } else {
        define_function(stream, block);
    }
}

/* An END in the column of a nested block ends the run of the function there. */
static void leave_function(TLC_STREAM *stream, const TLS_BLOCK *block)
{
    const TLS_FUNCTION *head = head_of(block);
    if (block == head->body) return;
    bool has_result = TLI_IdentifierType(head->function) != TLIT_VoidType;
    TLS_WriteIndent(stream, block);
    HOST_PutText(TLC_CFile(stream), has_result ? "toll_stop();\n" : "return ;\n");
}

void TLS_EndCText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    if (head_of(block) == nullptr || TLC_GetPass(stream) == 1) return;
    if (block->outer == nullptr) {
        close_function(stream, block, record);
    } else {
        leave_function(stream, block);
    }
}
