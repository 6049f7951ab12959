/*
 * Simple statements as Java text: the head of a function, END, an expression, RETURN.
 */
#include "stmt/tls_java.h"
#include "host/host.h"

#include <cstdio>

#include "stmt/tlss.h"
#include <ostrum/tli.h>
#include <ostrum/tlit.h>
#include <ostrum/tliv.h>
#include <ostrum/tlp.h>

bool TLS_IsWritten(TLC_STREAM *stream, const TLS_STATEMENT *record, const TLE_TERM *expression)
{
    return TLS_IsOpen(stream) && TLS_Generable(record, expression);
}

int32_t TLS_NewJavaName(TLC_STREAM *stream)
{
    return ++TLCJ_State(stream)->names;
}

void TLS_WriteJavaIndent(TLC_STREAM *stream, int32_t indent)
{
    static constexpr char blanks[] = "                                ";
    static constexpr int32_t count = sizeof blanks - 1;
    for (; indent > count; indent -= count)
        HOST_PutText(stream->file, blanks);
    if (indent > 0) HOST_PutText(stream->file, blanks + count - indent);
}

/* ---- Expressions in statements ---- */

void TLS_WriteJavaExpression(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *expression)
{
    stream->text.statement = expression;
    TLS_WriteJavaIndent(stream, block->indent);
    TLE_JavaStatement(stream, expression);
    HOST_PutText(stream->file, ";\n");
    stream->text.statement = nullptr;
}

static TLI_IDENTIFIER *result_type(const TLS_BLOCK *block)
{
    TLI_IDENTIFIER *function = TLS_FunctionIdentifier(block->head);
    return function == nullptr ? TLIT_VoidType : TLI_IdentifierType(function);
}

void TLS_WriteJavaReturn(TLC_STREAM *stream, const TLS_BLOCK *block, TLE_TERM *expression)
{
    TLS_WriteJavaIndent(stream, block->indent);
    HOST_PutText(stream->file, "return ");
    if (expression != nullptr) TLE_JavaResult(stream, result_type(block), expression);
    HOST_PutText(stream->file, ";\n");
    TLS_SetOpen(stream, false);
}

void TLS_WriteJavaEnd(TLC_STREAM *stream, const TLS_BLOCK *block, int32_t indent)
{
    bool has_result = result_type(block) != TLIT_VoidType;
    std::fprintf(stream->file, has_result ? "%*sthrow toll_stop();\n" : "%*sreturn ;\n", indent,
                 "");
    TLS_SetOpen(stream, false);
}

void TLS_ExpressionJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    TLE_TERM *expression = reinterpret_cast<TLS_EXPRESSION *>(record)->expression;
    if (TLS_IsWritten(stream, record, expression)) {
        TLS_WriteJavaExpression(stream, block, expression);
    }
}

void TLS_ReturnJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    const auto *result = reinterpret_cast<TLS_RETURN *>(record);
    if (!TLS_IsOpen(stream)) return;
    if (result->has_value && !TLS_Generable(record, result->expression)) return;
    TLS_WriteJavaReturn(stream, block, result->has_value ? result->expression : nullptr);
}

/* ---- Functions ---- */

static TLS_FUNCTION *head_of(const TLS_BLOCK *block)
{
    bool is_head = block->head != nullptr && block->head->statement_class == &TLS_FunctionClass;
    return is_head ? reinterpret_cast<TLS_FUNCTION *>(block->head) : nullptr;
}

/* Statements in the column of BEGIN stand behind the head, in the root block. */
static void write_rest(TLC_STREAM *stream, const TLS_BLOCK *root)
{
    for (TLS_STATEMENT *at = root->head->next; at != nullptr; at = at->next) {
        auto write = at->statement_class->java_code;
        if (write != nullptr) write(const_cast<TLS_BLOCK *>(root), stream, at);
    }
}

static void write_statements(TLC_STREAM *stream, const TLS_BLOCK *root)
{
    const TLS_FUNCTION *head = head_of(root);
    TLS_SetOpen(stream, true);
    if (root->section_type == TLP_SECTION_TREE) {
        TLSS_WriteJavaTree(stream, root, head->body);
    } else {
        TLS_BlockCode(stream, head->body);
        write_rest(stream, root);
    }
    bool has_result = result_type(root) != TLIT_VoidType;
    if (TLS_IsOpen(stream) && has_result) TLS_WriteJavaEnd(stream, root, head->body->indent);
}

/* The object with the variables is there for the functions inside as long as this one runs. */
static void write_framed(TLC_STREAM *stream, const TLS_BLOCK *root, TLI_IDENTIFIER *function)
{
    FILE *file = stream->file;
    char name[TLCJ_NAME_CAPACITY];
    TLCJ_OwnName(stream, function, name);
    std::fprintf(file, "  final toll_frame_%s toll_frame = new toll_frame_%s();\n", name, name);
    TLCJ_WriteArgumentCopies(stream, function);
    std::fprintf(file, "  final toll_frame_%s toll_outer = toll_top_%s;\n", name, name);
    std::fprintf(file, "  toll_top_%s = toll_frame;\n  try {\n", name);
    write_statements(stream, root);
    std::fprintf(file, "  }\n  finally {\n    toll_top_%s = toll_outer;\n  }\n", name);
}

static void write_plain(TLC_STREAM *stream, const TLS_BLOCK *root, TLI_IDENTIFIER *function)
{
    TLCJ_WriteArgumentCopies(stream, function);
    TLCJ_WriteScopeIdentifiers(stream, TLIV_FunctionScope(function));
    write_statements(stream, root);
}

static void write_function(TLC_STREAM *stream, const TLS_BLOCK *root)
{
    TLI_IDENTIFIER *function = head_of(root)->function;
    TLCJ_STATE *state = TLCJ_State(stream);
    state->names = 0;
    state->handler = nullptr;
    TLCJ_WriteHead(stream, function);
    if (state->has_frame) {
        write_framed(stream, root, function);
    } else {
        write_plain(stream, root, function);
    }
    HOST_PutText(stream->file, "}\n");
}

/*
 * Whether a variable is referred to shows while its function is being written. What stands before is
 * then written once more, over the first text, which is the shorter one.
 */
static void write_until_settled(TLC_STREAM *stream, const TLS_BLOCK *root)
{
    TLCJ_STATE *state = TLCJ_State(stream);
    long start = std::ftell(stream->file);
    int32_t errors = stream->text_errors;
    do {
        state->is_stale = false;
        write_function(stream, root);
        if (!state->is_stale) return;
        stream->text_errors = errors;
    } while (start >= 0 && std::fseek(stream->file, start, SEEK_SET) == 0);
    TLC_Error(stream, "Output cannot be written anew");
}

void TLS_FunctionJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *record)
{
    TLI_IDENTIFIER *function = reinterpret_cast<TLS_FUNCTION *>(record)->function;
    TLI_SCOPE *scope = TLIV_FunctionScope(function);
    TLCJ_STATE *state = TLCJ_State(stream);
    state->frame = scope;
    state->has_frame = TLCJ_HasFrame(scope);
    TLCJ_WriteLocalTypes(stream, scope);
    if (state->has_frame) TLCJ_WriteFrame(stream, function);
    write_until_settled(stream, block);
    TLCG_DropSet(&state->marked);
    state->frame = nullptr;
    state->has_frame = false;
    /* The head has written everything behind it, and no statement is written twice. */
    state->is_open = false;
}

void TLS_EndJavaText(TLS_BLOCK *block, TLC_STREAM *stream, TLS_STATEMENT *)
{
    const TLS_FUNCTION *head = head_of(block);
    if (head == nullptr || !TLS_IsOpen(stream)) return;
    /* An END in the column of a nested block ends the run of the function there. */
    bool is_nested = block->outer != nullptr && block != head->body;
    if (is_nested) TLS_WriteJavaEnd(stream, block, block->indent);
}
