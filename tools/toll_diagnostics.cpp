// Diagnostics of toll: text for people, as the library or as a C compiler forms it, and records for
// programs.

#include "toll_diagnostics.h"

#include <cstdlib>
#include <cstring>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <unistd.h>
#include <utility>

#include <ostrum.h>

#include "toll_sarif.h"

namespace
{

using nlohmann::ordered_json;

constexpr int32_t level_error = 3;
constexpr int32_t level_fatal = 4;

/** How each level of a message is called and coloured. */
struct LEVEL {
    const char *severity;
    const char *gcc;
    const char *color; // of a terminal: parameters of "select graphic rendition"
};

constexpr LEVEL levels[] = {
    { "information", "note", "1;36" },  { "information", "note", "1;36" },
    { "warning", "warning", "1;35" },   { "error", "error", "1;31" },
    { "fatal", "fatal error", "1;31" },
};

/** A message, its place worked out. */
struct MESSAGE {
    std::string file;
    TLT_STATEMENT *statement = nullptr; // null: the message is about the file
    int32_t line = 0;                   // physical, from 1
    int64_t column = 0;                 // bytes, from 1: where the statement was being read
    std::string source;                 // the physical line
    int32_t level = 0;
    const char *text = "";
};

struct DIAGNOSTICS {
    TOLL_FORMAT format;
    bool has_color;
    std::string source_in_hand;
    std::map<std::string, std::string> paths; // of sources, by the name in their statements
    std::vector<std::string> kept;            // for the log, one result each
    int32_t error_count;
} diagnostics;

std::string colored(const char *color, const std::string &text)
{
    if (!diagnostics.has_color) return text;
    return std::string{ "\033[" } + color + 'm' + text + "\033[0m";
}

void write_out(const std::string &text)
{
    fwrite(text.data(), 1, text.size(), stderr);
}

/** A message in the library's own form. */
std::string library_text(const MESSAGE &message)
{
    char *buffer = nullptr;
    size_t size = 0;
    FILE *stream = open_memstream(&buffer, &size);
    if (stream == nullptr) return "";
    const bool is_of_file = message.statement == nullptr && !message.file.empty();
    const std::string text = is_of_file ? message.file + ": " + message.text : message.text;
    TLT_PrintMessage(stream, message.statement, message.level, text.c_str());
    fclose(stream);
    std::string result(buffer, size);
    free(buffer);
    return result;
}

// Standard error has no buffer, and a message comes in many pieces: each is built first.

/** The severity is coloured: the last line up to its colon. */
void write_text(const MESSAGE &message)
{
    std::string text = library_text(message);
    const size_t last = text.find_last_not_of('\n');
    const size_t line_end = last == std::string::npos ? last : text.rfind('\n', last);
    const size_t start = line_end == std::string::npos ? 0 : line_end + 1;
    const size_t colon = text.find(" : ", start);
    if (colon != std::string::npos) {
        const std::string severity = text.substr(start, colon - start);
        text.replace(start, severity.size(), colored(levels[message.level].color, severity));
    }
    write_out(text);
}

void write_gcc(const MESSAGE &message)
{
    const LEVEL &level = levels[message.level];
    std::string place = message.file.empty() ? "toll:" : message.file + ':';
    if (message.statement != nullptr)
        place += std::to_string(message.line) + ':' + std::to_string(message.column) + ':';
    write_out(colored("1", place) + ' ' + colored(level.color, std::string{ level.gcc } + ':') +
              ' ' + message.text + '\n');
}

void write_json(const MESSAGE &message)
{
    ordered_json record;
    record["file"] = message.file;
    if (message.statement != nullptr) {
        record["line"] = message.line;
        record["column"] = message.column;
    }
    record["severity"] = levels[message.level].severity;
    record["text"] = message.text;
    if (message.statement != nullptr) record["source"] = message.source;
    // Sources are 8-bit text of any content; a byte that is no UTF-8 becomes U+FFFD.
    write_out(record.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + '\n');
}

void keep_sarif(const MESSAGE &message)
{
    const std::string before =
        message.source.substr(0, static_cast<size_t>(message.column > 0 ? message.column - 1 : 0));
    diagnostics.kept.push_back(sarif_result({ .level = message.level,
                                              .text = message.text,
                                              .file = message.file,
                                              .line = message.line,
                                              .before = before }));
}

constexpr void (*writers[])(const MESSAGE &message) = {
    write_text,
    write_json,
    write_gcc,
    keep_sarif,
};
static_assert(std::size(writers) == TOLL_FORMAT_COUNT, "one writer for each format");

/** Path to show for a source that statements call by this name. */
std::string shown_path(const char *name)
{
    const auto found = diagnostics.paths.find(name);
    return found == diagnostics.paths.end() ? name : found->second;
}

/** Works out the physical line that the read position falls on: a statement may go over several. */
void set_place(MESSAGE *message, TLT_STATEMENT *statement)
{
    const char *start = TLT_StatementChars(statement);
    const char *position = TLT_StatementReadPosition(statement);
    message->line = TLT_StatementSourceLineNumber(statement);
    for (const char *c = start; c < position; c++) {
        if (*c != '\n') continue;
        message->line++;
        start = c + 1;
    }
    message->column = position - start + 1;
    message->source.assign(start, strcspn(start, "\n"));
}

void handle_message(TLT_STATEMENT *statement, int32_t level, const char *text)
{
    if (level >= level_error) diagnostics.error_count++;
    MESSAGE message;
    message.statement = statement;
    message.level = level;
    message.text = text;
    if (statement != nullptr) {
        message.file = shown_path(TLT_StatementModuleName(statement));
        set_place(&message, statement);
    } else if (diagnostics.format != TOLL_FORMAT_TEXT) {
        message.file = diagnostics.source_in_hand;
    }
    writers[diagnostics.format](message);
}

/** A person who sets NO_COLOR wants none, whatever it says. */
bool wants_color(TOLL_COLOR color)
{
    if (color != TOLL_COLOR_AUTO) return color == TOLL_COLOR_ALWAYS;
    const char *refused = getenv("NO_COLOR");
    const char *terminal = getenv("TERM");
    if (refused != nullptr && *refused != 0) return false;
    return isatty(STDERR_FILENO) != 0 && terminal != nullptr && strcmp(terminal, "dumb") != 0;
}

} // namespace

void start_diagnostics(TOLL_FORMAT format, TOLL_COLOR color)
{
    diagnostics.format = format;
    diagnostics.has_color = wants_color(color);
    TLT_DefaultMessageHandler(handle_message);
}

void finish_diagnostics(bool is_done)
{
    if (diagnostics.format == TOLL_FORMAT_SARIF)
        write_out(sarif_log(take_kept_messages(), is_done));
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
    MESSAGE message;
    message.file = file;
    message.level = level_fatal;
    message.text = text.c_str();
    writers[diagnostics.format](message);
}

int32_t error_count()
{
    return diagnostics.error_count;
}

std::vector<std::string> take_kept_messages()
{
    return std::exchange(diagnostics.kept, {});
}

void keep_messages(const std::vector<std::string> &messages)
{
    diagnostics.kept.insert(diagnostics.kept.end(), messages.begin(), messages.end());
}
