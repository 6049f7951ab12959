// Diagnostics of toll, as text and as JSON.

#include "toll_diagnostics.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include <ostrum.h>

namespace
{

using nlohmann::ordered_json;

constexpr int32_t level_error = 3;
constexpr int32_t level_fatal = 4;
constexpr const char *severities[] = { "information", "information", "warning", "error", "fatal" };

struct DIAGNOSTICS {
    TOLL_FORMAT format;
    std::string source_in_hand;
    std::map<std::string, std::string> paths; // of sources, by the name in their statements
    int32_t error_count;
} diagnostics;

void write_text(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    // Built in memory first: standard error has no buffer, and a message comes in many pieces.
    char *buffer = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&buffer, &size);
    if (stream == nullptr) return;
    TLT_PrintMessage(stream, statement, level, text);
    fclose(stream);
    fwrite(buffer, 1, size, stderr);
    free(buffer);
}

/** Path to show for a source that statements call by this name. */
std::string shown_path(const char *name)
{
    const auto found = diagnostics.paths.find(name);
    return found == diagnostics.paths.end() ? name : found->second;
}

/** Adds the place: physical line and column from 1, at the statement's read position. */
void add_place(ordered_json *record, TLT_STATEMENT *statement)
{
    const char *line_start = TLT_StatementChars(statement);
    const char *position = TLT_StatementReadPosition(statement);
    int32_t line = TLT_StatementSourceLineNumber(statement);
    for (const char *c = line_start; c < position; c++) {
        if (*c != '\n') continue;
        line++;
        line_start = c + 1;
    }
    (*record)["line"] = line;
    (*record)["column"] = position - line_start + 1;
}

/** The physical line that the read position falls on. */
std::string source_line(TLT_STATEMENT *statement)
{
    const char *start = TLT_StatementChars(statement);
    const char *position = TLT_StatementReadPosition(statement);
    for (const char *c = start; c < position; c++) {
        if (*c == '\n') start = c + 1;
    }
    return { start, strcspn(start, "\n") };
}

void write_json_line(const ordered_json &record)
{
    // Sources are 8-bit text of any content; a byte that is no UTF-8 becomes U+FFFD.
    const std::string line =
        record.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + '\n';
    fwrite(line.data(), 1, line.size(), stderr);
}

void write_json(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    ordered_json record;
    record["file"] = statement != nullptr ? shown_path(TLT_StatementModuleName(statement))
                                          : diagnostics.source_in_hand;
    if (statement != nullptr) add_place(&record, statement);
    record["severity"] = severities[level];
    record["text"] = text;
    if (statement != nullptr) record["source"] = source_line(statement);
    write_json_line(record);
}

constexpr void (*writers[])(TLT_STATEMENT *statement, int32_t level, const char *text) = {
    write_text,
    write_json,
};
static_assert(std::size(writers) == TOLL_FORMAT_COUNT, "one writer for each format");

void handle_message(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    if (level >= level_error) diagnostics.error_count++;
    writers[diagnostics.format](statement, level, text);
}

} // namespace

void start_diagnostics(TOLL_FORMAT format)
{
    diagnostics.format = format;
    TLT_DefaultMessageHandler(handle_message);
}

void set_source_in_hand(const std::string &file)
{
    diagnostics.source_in_hand = file;
    diagnostics.paths.clear();
}

void note_source_path(const char *name, const char *host_path)
{
    if (diagnostics.source_in_hand != name) diagnostics.paths.emplace(name, host_path);
}

void report_problem(const std::string &file, const std::string &text)
{
    diagnostics.error_count++;
    if (diagnostics.format == TOLL_FORMAT_TEXT) {
        write_text(nullptr, level_fatal, (file + ": " + text).c_str());
        return;
    }
    ordered_json record;
    record["file"] = file;
    record["severity"] = severities[level_fatal];
    record["text"] = text;
    write_json_line(record);
}

int32_t error_count()
{
    return diagnostics.error_count;
}
