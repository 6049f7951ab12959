/*
 * Statements: making, resetting, taking apart into lines, and what is asked of them. A statement and its
 * text are one block, since a source file makes one of them for each line.
 */
#include "frontend/tlt.h"

#include "core/sh.h"

#include <ostrum/c.h>
#include <ostrum/hs.h>
#include <string.h>

enum {
    TAB_STOP = 8,
    LINE_SIZE = 512, // bytes of a physical line handed out, terminator included
};

/** Longest text of a statement, so that each place in it is a column of 32 bits. */
static constexpr size_t longest_text = INT32_MAX - 1;

void TLT_Initialise(void)
{
    static int32_t is_initialised;
    if (is_initialised) return;
    is_initialised = 1;
    C_Initialise();
    HS_Initialise();
}

void TLT_CleanUp(void)
{
    TLT_FreeScratch();
}

TLT_SOURCE_NAME *TLT_NewSourceName(const char *name)
{
    size_t size = strlen(name) + 1;
    auto *source = static_cast<TLT_SOURCE_NAME *>(SH_AllocateBytes(sizeof(TLT_SOURCE_NAME) + size));
    source->text = static_cast<char *>(memcpy(source + 1, name, size));
    source->users = 1;
    return source;
}

void TLT_DropSourceName(TLT_SOURCE_NAME *name)
{
    if (name == nullptr) return;
    name->users--;
    if (name->users == 0) SH_Free(name);
}

/** Length of the text once its tabs are spaces. A line feed counts as one column. */
static size_t expanded_length(const char *text, size_t length)
{
    size_t column = 0;
    for (size_t i = 0; i < length; i++)
        column = text[i] == '\t' ? (column / TAB_STOP + 1) * TAB_STOP : column + 1;
    return column;
}

/** Copies the text with spaces for tabs; out is zero-terminated already. */
static void expand_tabs(char *out, const char *text, size_t length)
{
    size_t column = 0;
    for (size_t i = 0; i < length; i++) {
        if (text[i] != '\t') {
            out[column++] = text[i];
            continue;
        }
        do
            out[column++] = ' ';
        while (column % TAB_STOP != 0);
    }
}

/** Makes the record with its chars and the position in the source; not yet reset. */
static TLT_STATEMENT *make_statement(const char *text, size_t length)
{
    bool has_tabs = memchr(text, '\t', length) != nullptr;
    if (length > longest_text / TAB_STOP) length = longest_text / TAB_STOP;
    size_t size = has_tabs ? expanded_length(text, length) : length;
    auto *statement = static_cast<TLT_STATEMENT *>(
        SH_AllocateRecord(sizeof(TLT_STATEMENT) + size + 1, "TLT:STATEMENT"));
    if (has_tabs)
        expand_tabs(TLT_Chars(statement), text, length);
    else
        memcpy(TLT_Chars(statement), text, length);
    return statement;
}

TLT_STATEMENT *TLT_NewSpanStatement(const char *text, size_t length, TLT_SOURCE_NAME *source,
                                    int32_t source_line_number, int32_t line_number)
{
    TLT_STATEMENT *statement = make_statement(text, length);
    statement->source = source;
    source->users++;
    statement->source_line_number = source_line_number;
    statement->line_number = line_number;
    statement->token_offset = TLT_NO_TEXT;
    TLT_ResetStatement(statement, 0);
    return statement;
}

TLT_STATEMENT *TLT_NewStatement(const char *text, const char *source_name,
                                int32_t source_line_number, int32_t line_number)
{
    TLT_SOURCE_NAME *source = TLT_NewSourceName(source_name);
    TLT_STATEMENT *statement =
        TLT_NewSpanStatement(text, strlen(text), source, source_line_number, line_number);
    TLT_DropSourceName(source);
    return statement;
}

TLT_EXTRA *TLT_Extra(TLT_STATEMENT *statement)
{
    if (statement->extra == nullptr)
        statement->extra =
            static_cast<TLT_EXTRA *>(SH_NameAllocate(int32_t{ sizeof(TLT_EXTRA) }, "TLT:EXTRA"));
    return statement->extra;
}

void TLT_DelStatement(TLT_STATEMENT *statement)
{
    if (statement == nullptr) return;
    TLT_FreeMessages(statement);
    TLT_DropSourceName(statement->source);
    if (statement->extra != nullptr) SH_Free(statement->extra->token_block);
    SH_Free(statement->extra);
    SH_Free(statement);
}

void TLT_ResetStatement(TLT_STATEMENT *statement, int32_t keep_messages)
{
    statement->token_code = TLT_TOKEN_NONE;
    statement->read_offset = 0;
    statement->error_level = TLT_LEVEL_OK;
    if (!keep_messages) TLT_FreeMessages(statement);
    TLT_SkipBlanks(statement);
}

/** Hands out a line that goes on, with the backslash that the reader took off. */
static void visit_continued(const char *line, size_t length, TLT_LINE_VISITOR visitor,
                            void *context)
{
    char buffer[LINE_SIZE];
    if (length > LINE_SIZE - 2) length = LINE_SIZE - 2;
    memcpy(buffer, line, length);
    buffer[length] = '\\';
    buffer[length + 1] = 0;
    visitor(context, buffer);
}

void TLT_SplitStatement(TLT_STATEMENT *statement, TLT_LINE_VISITOR visitor, void *context)
{
    const char *line = TLT_Chars(statement);
    for (const char *end = strchr(line, '\n'); end != nullptr; end = strchr(line, '\n')) {
        visit_continued(line, static_cast<size_t>(end - line), visitor, context);
        line = end + 1;
    }
    visitor(context, line);
}

const char *TLT_StatementChars(TLT_STATEMENT *statement)
{
    return TLT_Chars(statement);
}

const char *TLT_StatementModuleName(TLT_STATEMENT *statement)
{
    return statement->source->text;
}

int32_t TLT_StatementSourceLineNumber(TLT_STATEMENT *statement)
{
    return statement->source_line_number;
}

int32_t TLT_StatementLineNumber(TLT_STATEMENT *statement)
{
    return statement->line_number;
}

void TLT_SetStatementSourceLineNumber(TLT_STATEMENT *statement, int32_t source_line_number)
{
    statement->source_line_number = source_line_number;
}

void TLT_SetStatementLineNumber(TLT_STATEMENT *statement, int32_t line_number)
{
    statement->line_number = line_number;
}

int32_t TLT_StatementIndent(TLT_STATEMENT *statement)
{
    return static_cast<int32_t>(strspn(TLT_Chars(statement), " "));
}

int32_t TLT_StatementError(TLT_STATEMENT *statement)
{
    return statement->error_level;
}

const char *TLT_StatementReadPosition(TLT_STATEMENT *statement)
{
    return TLT_Chars(statement) + statement->token_start;
}
