/*
 * Messages: stored on their statement, told to the handler, counted; printed when someone asks.
 */
#include "frontend/tlt.h"

#include "core/sh.h"

#include <stdarg.h>
#include <string.h>

enum {
    MESSAGE_SIZE = 512,    // bytes of a message put together from parts
    LINE_LIMIT = 511,      // characters of a physical line that are printed
    PLACE_WIDTH = 12,      // of ", Line 1234 " behind the name of the source
    LATER_LINE_INDENT = 5, // of the second and later physical lines
};

static const char *const level_texts[] = {
    "OK", "-- INFORMATION", "?? WARNING", "** ERROR", "** FATAL ERROR **",
};
static_assert(sizeof level_texts / sizeof level_texts[0] == TLT_LEVEL_COUNT, "one text a level");

static int32_t counters[TLT_LEVEL_COUNT];
static TLT_MESSAGE_HANDLER message_handler;

static void store_message(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    size_t size = strlen(text) + 1;
    auto *message = static_cast<TLT_MESSAGE *>(SH_AllocateBytes(sizeof(TLT_MESSAGE) + size));
    message->text = static_cast<char *>(memcpy(message + 1, text, size));
    message->level = level;
    TLT_EXTRA *extra = TLT_Extra(statement);
    if (extra->messages == nullptr)
        extra->messages = message;
    else
        extra->last_message->next = message;
    extra->last_message = message;
    if (statement->error_level < level) statement->error_level = static_cast<uint8_t>(level);
}

static int32_t raise_message(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    if (statement != nullptr) store_message(statement, level, text);
    if (message_handler != nullptr) message_handler(statement, level, text);
    return ++counters[level];
}

int32_t TLT_Information(TLT_STATEMENT *statement, const char *text)
{
    return raise_message(statement, TLT_LEVEL_INFORMATION, text);
}

int32_t TLT_Warning(TLT_STATEMENT *statement, const char *text)
{
    return raise_message(statement, TLT_LEVEL_WARNING, text);
}

int32_t TLT_Error(TLT_STATEMENT *statement, const char *text)
{
    return raise_message(statement, TLT_LEVEL_ERROR, text);
}

int32_t TLT_FatalError(TLT_STATEMENT *statement, const char *text)
{
    return raise_message(statement, TLT_LEVEL_FATAL, text);
}

int32_t TLT_RaiseFormatted(TLT_STATEMENT *statement, int32_t level, const char *format, ...)
{
    char text[MESSAGE_SIZE];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return raise_message(statement, level, text);
}

void TLT_FreeMessages(TLT_STATEMENT *statement)
{
    if (statement->extra == nullptr) return;
    TLT_MESSAGE *message = statement->extra->messages;
    while (message != nullptr) {
        TLT_MESSAGE *next = message->next;
        SH_Free(message);
        message = next;
    }
    statement->extra->messages = nullptr;
}

void TLT_DefaultMessageHandler(TLT_MESSAGE_HANDLER handler)
{
    message_handler = handler;
}

void TLT_ResetCounters(void)
{
    memset(counters, 0, sizeof counters);
}

int32_t TLT_GetCounters(int32_t *information, int32_t *warnings, int32_t *errors)
{
    if (information != nullptr) *information = counters[TLT_LEVEL_INFORMATION];
    if (warnings != nullptr) *warnings = counters[TLT_LEVEL_WARNING];
    if (errors != nullptr) *errors = counters[TLT_LEVEL_ERROR];
    return counters[TLT_LEVEL_FATAL] == 0;
}

int32_t TLT_ErrorCount(void)
{
    return counters[TLT_LEVEL_ERROR];
}

void TLT_AllMessages(TLT_STATEMENT *statement, TLT_MESSAGE_VISITOR visitor, void *context)
{
    if (statement->extra == nullptr) return;
    for (TLT_MESSAGE *message = statement->extra->messages; message != nullptr;
         message = message->next)
        visitor(context, statement, message->level, message->text);
}

/** Prints one physical line, and the caret if its column falls into the line. */
static void print_line(FILE *stream, const char *line, size_t length, int32_t prefix,
                       const char *source_name, int64_t column)
{
    int32_t shown = length > LINE_LIMIT ? int32_t{ LINE_LIMIT } : static_cast<int32_t>(length);
    fprintf(stream, "%*s%.*s\n", prefix, "", shown, line);
    if (column < 0 || column > static_cast<int64_t>(length)) return;
    int64_t width = static_cast<int64_t>(strlen(source_name)) + column + PLACE_WIDTH;
    fprintf(stream, "%*s\n", static_cast<int32_t>(width), "^");
}

void TLT_PrintStatement(FILE *stream, TLT_STATEMENT *statement, int32_t column)
{
    const char *name = statement->source->text;
    fprintf(stream, "%s, Line %-4d ", name, statement->source_line_number);
    const char *line = TLT_Chars(statement);
    int64_t rest = column;
    int32_t prefix = 0;
    for (;;) {
        size_t length = strcspn(line, "\n");
        print_line(stream, line, length, prefix, name, rest);
        if (line[length] == 0) return;
        line += length + 1;
        rest -= static_cast<int64_t>(length) + 1;
        prefix = LATER_LINE_INDENT;
    }
}

void TLT_PrintMessage(FILE *stream, TLT_STATEMENT *statement, int32_t level, const char *text)
{
    if (statement != nullptr)
        TLT_PrintStatement(stream, statement, static_cast<int32_t>(statement->read_offset));
    bool is_known = level >= 0 && level < TLT_LEVEL_COUNT;
    fprintf(stream, "%s : %s\n\n", is_known ? level_texts[level] : level_texts[TLT_LEVEL_FATAL],
            text);
}
