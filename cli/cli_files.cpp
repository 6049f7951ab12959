/*
 * Where command lines come from: the console, command files and one stored command, in a stack. The
 * newest source is read first; at its end the one below goes on.
 */
#include "cli/cli_parse.h"

#include "core/f.h"
#include "core/ist.h"
#include "core/sh.h"
#include "core/sm.h"
#include "core/st.h"
#include "host/host.h"

#include <cstdio>
#include <cstring>

enum SOURCE_KIND { SOURCE_CONSOLE, SOURCE_FILE, SOURCE_STORED };

struct INPUT_SOURCE {
    SOURCE_KIND kind;
    FILE *file;                  // SOURCE_FILE
    HOST_FILE_IDENTITY identity; // of the file; zeros are no file's
    char name[80];               // of the file, as given, cut to fit
    char *command;               // SOURCE_STORED; owned
    bool is_quiet;               // SOURCE_FILE: lines are not echoed
    INPUT_SOURCE *previous;      // the source underneath
};

static constexpr const char *file_extension = ".com";
static constexpr char substitute = '\x1a'; // for a zero byte, which would hide the rest of its line

static INPUT_SOURCE *sources; // the top of the stack
static bool is_running;
static int32_t failed_commands;
static bool has_failed; // the command under way
static CLI_LINE_READER line_reader;
static void *line_reader_context;

// --- the stack ---

static INPUT_SOURCE *push_source(SOURCE_KIND kind)
{
    auto *source =
        static_cast<INPUT_SOURCE *>(SH_AllocateRecord(sizeof(INPUT_SOURCE), "CLI:INPUT_SOURCE"));
    source->kind = kind;
    source->previous = sources;
    sources = source;
    return source;
}

static void pop_source()
{
    INPUT_SOURCE *source = sources;
    sources = source->previous;
    if (source->file != nullptr) F_CloseFile(source->file);
    ST_Free(source->command);
    SH_Free(source);
}

bool CLI_HasSource()
{
    return sources != nullptr;
}

bool CLI_InCommandFile()
{
    return sources != nullptr && sources->kind == SOURCE_FILE;
}

// --- lines of text ---

static bool ends_line(const char *piece, int32_t length)
{
    return length > 0 && (piece[length - 1] == '\n' || piece[length - 1] == '\r');
}

/** Leaves the rest of a line unread; false if Ctrl-C ended that, as it may where no line ever ends. */
static bool skip_line(FILE *stream)
{
    char piece[CLI_ANSWER_SIZE];
    int32_t length;
    SM_ClearAbort();
    do {
        length = F_GetString(stream, piece, sizeof piece);
    } while (length > 0 && !ends_line(piece, length) && SM_Aborted() == 0);
    return SM_Aborted() == 0;
}

/**
 * Reads a line without its end; gives its length, size if it was cut, -1 at the end of the file or of
 * the user's patience.
 */
static int32_t read_text_line(FILE *stream, char *line, int32_t size)
{
    char piece[CLI_ANSWER_SIZE + 1];
    int32_t length = F_GetString(stream, piece, size + 1); // the line end takes a byte
    if (length < 0) return -1;
    const bool is_whole = ends_line(piece, length);
    if (is_whole) length--;
    for (int32_t i = 0; i < length; i++)
        if (piece[i] == 0) piece[i] = substitute;
    ST_CopySpan(line, size, piece, static_cast<size_t>(length));
    if (is_whole || length < size || skip_line(stream)) return length;
    failed_commands++; // whatever it was to be
    return -1;
}

int32_t CLI_ReadTyped(const char *prompt, char *line, int32_t size)
{
    line[0] = 0;
    if (line_reader != nullptr) {
        std::fflush(stdout);
        const int32_t length = line_reader(line_reader_context, prompt, line, size);
        line[size - 1] = 0;
        return length;
    }
    std::printf("%s", prompt);
    std::fflush(stdout);
    return read_text_line(stdin, line, size);
}

void CLI_SetLineReader(void *context, CLI_LINE_READER reader)
{
    line_reader_context = context;
    line_reader = reader;
}

// --- commands that fail ---

void CLI_FailCommand()
{
    has_failed = true;
}

int32_t CLI_FailedCommands()
{
    return failed_commands;
}

/** A line that does not fit is no command: what is cut off could change its meaning. */
static bool fits_line(const char *line, int32_t length)
{
    if (length < CLI_LINE_SIZE) return true;
    if (line[0] == '!') return false; // a comment, which nobody reads
    std::printf("** Too long (max %d chars)\n", CLI_LINE_SIZE - 1);
    failed_commands++;
    return false;
}

// --- reading from each kind of source; true if there is a line to obey ---

static bool read_console(const char *prompt, char *line)
{
    // The empty line in front is the prompt's, for a line reader to show or to leave out.
    IST_STRING *shown = IST_NewString();
    IST_AppendChar(shown, '\n');
    IST_Append(shown, prompt);
    char *text = IST_GetString(shown);
    const int32_t length = CLI_ReadTyped(text, line, CLI_LINE_SIZE);
    ST_Free(text);
    if (length >= 0) return fits_line(line, length);
    pop_source();
    return false;
}

static void end_file()
{
    if (!sources->is_quiet) std::printf("<< End of command file %s\n", sources->name);
    pop_source();
}

static bool read_file(const char *prompt, char *line)
{
    const int32_t length = read_text_line(sources->file, line, CLI_LINE_SIZE);
    if (length < 0) end_file();
    if (length <= 0) return false;
    if (!sources->is_quiet) std::printf("%s%s\n", prompt, line);
    return fits_line(line, length);
}

static bool read_stored(const char *prompt, char *line)
{
    const size_t length = std::strlen(sources->command);
    ST_Copy(line, CLI_LINE_SIZE, sources->command);
    std::printf("%s%s\n", prompt, line);
    pop_source();
    return fits_line(line, length < CLI_LINE_SIZE ? static_cast<int32_t>(length) : CLI_LINE_SIZE);
}

/** Reads the next line, whatever source it comes from; false if there is none. */
static bool next_line(const char *prompt, char *line)
{
    static constexpr bool (*const readers[])(const char *prompt, char *line) = {
        read_console, // SOURCE_CONSOLE
        read_file,    // SOURCE_FILE
        read_stored,  // SOURCE_STORED
    };
    while (sources != nullptr)
        if (readers[sources->kind](prompt, line)) return true;
    return false;
}

// --- command files ---

static bool is_same(const HOST_FILE_IDENTITY &one, const HOST_FILE_IDENTITY &other)
{
    return one.device == other.device && one.number == other.number;
}

static bool is_being_read(const HOST_FILE_IDENTITY &identity)
{
    const INPUT_SOURCE *source = sources;
    while (source != nullptr && !is_same(source->identity, identity))
        source = source->previous;
    return source != nullptr;
}

/** Opens a file, unless it is being read: it would read itself for ever. */
static FILE *open_file(const char *name, HOST_FILE_IDENTITY *identity)
{
    FILE *stream;
    if (F_OpenFile(&stream, name, 0) != 0) return nullptr;
    if (HOST_IdentifyStream(stream, identity) && !is_being_read(*identity)) return stream;
    F_CloseFile(stream);
    return nullptr;
}

int32_t CLI_DoCommandFile(const char *name, int32_t quiet)
{
    HOST_FILE_IDENTITY identity;
    char extended[F_PATH_SIZE + 5]; // one that is cut is still too long for a path
    ST_Concat(extended, sizeof extended, name, file_extension, nullptr);
    const char *opened = name;
    FILE *stream = open_file(opened, &identity);
    if (stream == nullptr) stream = open_file(opened = extended, &identity);
    if (stream == nullptr) return 0;
    INPUT_SOURCE *source = push_source(SOURCE_FILE);
    source->file = stream;
    source->identity = identity;
    source->is_quiet = quiet != 0;
    ST_Copy(source->name, sizeof source->name, name);
    if (!source->is_quiet) std::printf("<< Reading commands from %s\n", opened);
    return 1;
}

// --- obeying ---

static void execute(CLI_NODE *node)
{
    const bool has_outer_failed = has_failed; // of a command that reads commands itself
    has_failed = false;
    CLI_SetCommand(node);
    SM_ClearAbort();
    node->action(node->argument);
    const bool is_aborted = SM_Aborted() != 0;
    if (is_aborted) std::printf("** Aborted with ^C\n");
    if (is_aborted || has_failed) failed_commands++;
    has_failed = has_outer_failed;
}

static void obey_line(const char *line, CLI_NODE *root)
{
    CLI_PARSE parse = { .line = line, .capacity = CLI_LINE_SIZE, .cursor = line };
    CLI_NODE *node = nullptr;
    const CLI_OUTCOME outcome = CLI_ParseLine(root, &parse, true, &node);
    if (outcome == CLI_COMMAND) execute(node);
    if (outcome == CLI_REFUSED) failed_commands++;
}

static void obey_file(const char *name)
{
    if (CLI_DoCommandFile(name, 0)) return;
    std::printf("** Failed to open command file %s\n", name);
    failed_commands++;
}

int32_t CLI_DoCommands(const char *prompt, CLI_NODE *root)
{
    char line[CLI_LINE_SIZE];
    if (sources == nullptr) push_source(SOURCE_CONSOLE);
    is_running = true;
    while (is_running && next_line(prompt, line)) {
        if (line[0] == '@')
            obey_file(line + 1);
        else if (line[0] != 0 && line[0] != '!')
            obey_line(line, root);
    }
    return 0;
}

void CLI_Exit()
{
    is_running = false;
}

// --- the arguments of the program ---

/** Appends a text in quotes, so that it is read back as it is. */
static void append_quoted(IST_STRING *line, const char *text)
{
    IST_AppendChar(line, '"');
    for (; *text != 0; text++) {
        if (*text == '"') IST_AppendChar(line, '"');
        IST_AppendChar(line, *text);
    }
    IST_AppendChar(line, '"');
}

/** Appends an argument; the quotes that the shell took off come back, behind the name of a value. */
static void append_argument(IST_STRING *line, const char *argument)
{
    const char *value = std::strchr(argument, '=');
    if (std::strpbrk(argument, " \t") == nullptr) {
        IST_Append(line, argument);
    } else if (value == nullptr) {
        append_quoted(line, argument);
    } else {
        for (; argument <= value; argument++)
            IST_AppendChar(line, *argument);
        append_quoted(line, argument);
    }
    IST_AppendChar(line, ' ');
}

static char *join_arguments(int32_t count, CLI_ARGUMENTS arguments)
{
    IST_STRING *line = IST_NewString();
    for (int32_t i = 1; i < count; i++)
        append_argument(line, arguments[i]);
    return IST_GetString(line);
}

/** Makes a command the only source. */
static void store_command(const char *command)
{
    while (sources != nullptr)
        pop_source();
    push_source(SOURCE_STORED)->command = ST_Allocate(command);
}

static void do_nothing(intptr_t) {}

/** Parses the line of arguments; what is left of it is stored. */
static int32_t parse_arguments(const char *line, CLI_NODE *root)
{
    const auto capacity = static_cast<int32_t>(std::strlen(line)) + 1;
    CLI_PARSE parse = { .line = line, .capacity = capacity, .cursor = line };
    CLI_NODE *node = nullptr;
    const CLI_OUTCOME outcome = CLI_ParseLine(root, &parse, false, &node);
    if (outcome == CLI_REFUSED) failed_commands++;
    if (outcome != CLI_COMMAND) return 0;
    CLI_SetCommand(root);
    if (*parse.cursor != 0) store_command(parse.cursor);
    return 1;
}

int32_t CLI_ParseCommandLine(int32_t count, CLI_ARGUMENTS arguments, CLI_NODE *root)
{
    if (root == nullptr) return 1;
    if (root->action == nullptr) root->action = do_nothing; // so that it counts as a command
    char *line = join_arguments(count, arguments);
    const int32_t is_good = parse_arguments(line, root);
    ST_Free(line);
    return is_good;
}
