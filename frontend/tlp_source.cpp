/*
 * Source files: finding and opening them, cutting them into physical lines and these into statements.
 * Files are read in large pieces. Lines come out of the piece as they stand, and only continued ones are
 * put together elsewhere.
 */
#include "frontend/tlp.h"

#include "core/f.h"
#include "core/sh.h"
#include "frontend/tlt.h"
#include "host/host.h"

#include <ostrum/quillreg.h>
#include <ostrum/st.h>
#include <string.h>

enum {
    LINE_LIMIT = 511,    // characters of a physical line; a longer one counts as several
    PIECE_SIZE = 0x8000, // bytes read at a time
    BASE_NAME_LIMIT = 31,
};

static constexpr char default_extension[] = "tl";
static constexpr char include_symbol[] = "TollInclude";

struct TLP_SOURCE {
    FILE *stream; // null once all was read, so that deep USES do not hold many files open
    TLT_SOURCE_NAME *name;
    int32_t line_count; // physical lines of finished statements
    TLP_SOURCE *below;
    size_t at, end; // of what is left of the piece
    char piece[PIECE_SIZE];
};

/** A physical line, without its white end. */
struct LINE {
    const char *text;
    size_t length;
};

/** The text of a continued statement. */
struct JOINED {
    char *text;
    size_t length, size;
};

static TLP_SOURCE_HOOK source_hook;
static void *source_hook_context;

void TLP_SetSourceHook(void *context, TLP_SOURCE_HOOK hook)
{
    source_hook_context = context;
    source_hook = hook;
}

static void close_stream(TLP_SOURCE *source)
{
    if (source->stream != nullptr) F_CloseFile(source->stream);
    source->stream = nullptr;
}

/** Moves what is left to the front and fills up behind it. Gives 0 after a read error. */
static int32_t fill_piece(TLP_SOURCE *source)
{
    size_t left = source->end - source->at;
    memmove(source->piece, source->piece + source->at, left);
    size_t count = fread(source->piece + left, 1, PIECE_SIZE - left, source->stream);
    source->at = 0;
    source->end = left + count;
    if (source->end == PIECE_SIZE) return 1;
    int32_t is_sound = ferror(source->stream) == 0;
    close_stream(source);
    return is_sound;
}

static void delete_source(TLP_SOURCE *source)
{
    close_stream(source);
    TLT_DropSourceName(source->name);
    SH_Free(source);
}

static void close_top(TLP_MODULE *module)
{
    TLP_SOURCE *source = module->files;
    module->files = source->below;
    delete_source(source);
}

void TLP_CloseFiles(TLP_MODULE *module)
{
    while (module->files != nullptr)
        close_top(module);
}

/** Opens a path, or gives null if it cannot be opened or read. */
static TLP_SOURCE *open_path(const char *path)
{
    FILE *stream = nullptr;
    if (F_OpenFile(&stream, path, 0) != 0) return nullptr;
    auto *source =
        static_cast<TLP_SOURCE *>(SH_NameAllocate(int32_t{ sizeof(TLP_SOURCE) }, "TLP:SOURCE"));
    source->stream = stream;
    if (fill_piece(source)) return source;
    delete_source(source);
    return nullptr;
}

/** Gives out the path under which the search list has the file; 0 if there is no list. */
static int32_t find_in_list(char *path, const char *name)
{
    char base[F_NAME_SIZE];
    char extension[F_NAME_SIZE];
    char short_name[F_PATH_SIZE];
    const char *directories = QUILLREG_GetSymbol(include_symbol);
    if (directories == nullptr) return 0;
    F_ParseFilename(name, nullptr, base, extension);
    F_MakeFilename(short_name, nullptr, base, extension);
    F_FindInDirectories(path, directories, short_name);
    return path[0] != 0;
}

static void call_hook(const char *name, const char *path)
{
    char host_path[HOST_PATH_SIZE];
    if (source_hook == nullptr) return;
    if (HOST_MakePath(host_path, path, HOST_LOOKED_UP))
        source_hook(source_hook_context, name, host_path);
}

/** Opens a file under one name, as it stands or through the search list. */
static TLP_SOURCE *open_name(const char *name, bool in_list)
{
    char path[F_PATH_SIZE];
    if (!in_list)
        ST_Copy(path, F_PATH_SIZE, name);
    else if (!find_in_list(path, name))
        return nullptr;
    TLP_SOURCE *source = open_path(path);
    if (source == nullptr) return nullptr;
    source->name = TLT_NewSourceName(name);
    call_hook(name, path);
    return source;
}

/** Opens a file as given or in lower case; as named first, then through the search list. */
static TLP_SOURCE *open_either_case(const char *name)
{
    char lower[F_PATH_SIZE];
    ST_Lower(lower, F_PATH_SIZE, name);
    bool differs = strcmp(name, lower) != 0;
    TLP_SOURCE *source = open_name(name, false);
    if (source == nullptr && differs) source = open_name(lower, false);
    if (source == nullptr) source = open_name(name, true);
    if (source == nullptr && differs) source = open_name(lower, true);
    return source;
}

/** Opens a file as named, else with the default extension. A path too long is never cut. */
static TLP_SOURCE *open_source(const char *name, const char *directory, const char *base)
{
    if (strlen(name) >= F_PATH_SIZE) return nullptr;
    TLP_SOURCE *source = open_either_case(name);
    if (source != nullptr) return source;
    char path[F_PATH_SIZE];
    if (strlen(directory) + strlen(base) + sizeof default_extension >= F_PATH_SIZE) return nullptr;
    F_MakeFilename(path, directory, base, default_extension);
    return open_either_case(path);
}

/** Names the module after its file. */
static void take_names(TLP_MODULE *module, const char *path, int32_t is_main)
{
    char base[F_NAME_SIZE];
    char extension[F_NAME_SIZE];
    char file[F_PATH_SIZE];
    F_ParseFilename(path, nullptr, base, extension);
    TLP_SetModuleName(module, base);
    if (!is_main) return;
    ST_Copy(module->file_name, TLP_NAME_SIZE, module->name);
    F_MakeFilename(file, nullptr, base, extension);
    ST_Copy(module->source_file, TLP_NAME_SIZE, file);
}

int32_t TLP_OpenFile(TLP_MODULE *module, const char *name, int32_t is_main)
{
    char directory[F_PATH_SIZE];
    char base[F_NAME_SIZE];
    F_ParseFilename(name, directory, base, nullptr);
    if (strlen(base) > BASE_NAME_LIMIT) {
        TLT_FatalError(nullptr, "File name too long");
        return TLP_STATUS_FATAL;
    }
    TLP_SOURCE *source = open_source(name, directory, base);
    if (source == nullptr) return TLP_STATUS_NOT_OPENED;
    take_names(module, source->name->text, is_main);
    source->below = module->files;
    module->files = source;
    return TLP_STATUS_SUCCESSFUL;
}

/** Length of the physical line at the front, and what it takes from the piece. */
static size_t measure_line(const char *text, size_t room, size_t *taken)
{
    size_t limit = room < LINE_LIMIT ? room : size_t{ LINE_LIMIT };
    const char *feed = static_cast<const char *>(memchr(text, '\n', limit));
    if (feed != nullptr) limit = static_cast<size_t>(feed - text) + 1;
    const char *carriage = static_cast<const char *>(memchr(text, '\r', limit));
    *taken = limit;
    if (carriage == nullptr) return limit;
    limit = static_cast<size_t>(carriage - text) + 1;
    *taken = limit < room && carriage[1] == '\n' ? limit + 1 : limit;
    return limit;
}

static bool is_white(char c)
{
    return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f';
}

/** Makes sure that a whole line stands in the piece, unless the file ends. */
static void prepare_line(TLP_MODULE *module, TLP_SOURCE *source)
{
    if (source->stream == nullptr || source->end - source->at > LINE_LIMIT) return;
    if (fill_piece(source)) return;
    TLT_FatalError(nullptr, "Source file cannot be read");
    module->status = TLP_STATUS_FATAL;
}

/** Reads the next physical line, up to its first zero byte. Gives 0 at the end of the file. */
static int32_t read_line(TLP_MODULE *module, LINE *line)
{
    TLP_SOURCE *source = module->files;
    size_t taken = 0;
    prepare_line(module, source);
    if (source->at == source->end) return 0;
    line->text = source->piece + source->at;
    line->length = measure_line(line->text, source->end - source->at, &taken);
    source->at += taken;
    const void *zero = memchr(line->text, 0, line->length);
    if (zero != nullptr)
        line->length = static_cast<size_t>(static_cast<const char *>(zero) - line->text);
    while (line->length > 0 && is_white(line->text[line->length - 1]))
        line->length--;
    return 1;
}

/** The same from the file beneath, where a BODY file goes on behind its header. */
static int32_t read_stacked_line(TLP_MODULE *module, LINE *line)
{
    while (module->files != nullptr) {
        if (read_line(module, line)) return 1;
        if (module->source_type != TLT_TOKEN_BODY || module->files->below == nullptr) return 0;
        close_top(module);
    }
    return 0;
}

static bool is_continued(const LINE *line)
{
    return line->length > 0 && line->text[line->length - 1] == '\\';
}

static void join_line(JOINED *joined, const LINE *line)
{
    size_t length = joined->length + line->length;
    joined->text =
        static_cast<char *>(SH_Grow(joined->text, joined->length, &joined->size, length + 1));
    memcpy(joined->text + joined->length, line->text, line->length);
    joined->length = length;
}

/**
 * Reads the lines of a continued statement into one, each backslash a line feed; line is the first one
 * and becomes the whole. Gives 0 if the file ends in between.
 */
static int32_t read_continued(TLP_MODULE *module, LINE *line, JOINED *joined, int32_t *line_count)
{
    while (is_continued(line)) {
        join_line(joined, line);
        joined->text[joined->length - 1] = '\n';
        if (!read_stacked_line(module, line)) return 0;
        ++*line_count;
    }
    join_line(joined, line);
    *line = { .text = joined->text, .length = joined->length };
    return 1;
}

static TLT_STATEMENT *make_statement(TLP_MODULE *module, const LINE *line)
{
    TLP_SOURCE *source = module->files;
    return TLT_NewSpanStatement(line->text, line->length, source->name, source->line_count + 1,
                                module->running_line + 1);
}

static TLT_STATEMENT *read_joined(TLP_MODULE *module, LINE *line, int32_t *line_count)
{
    if (!is_continued(line)) return make_statement(module, line);
    JOINED joined{};
    TLT_STATEMENT *statement = nullptr;
    if (read_continued(module, line, &joined, line_count)) statement = make_statement(module, line);
    SH_Free(joined.text);
    return statement;
}

/** Type of the section that the words begin; -1 after a message if they name none. */
static int32_t section_type(TLT_STATEMENT *statement, int32_t keyword, const char *type_word)
{
    if (keyword == TLT_TOKEN_FUNCTION) return TLP_SECTION_FUNCTION;
    if (keyword == TLT_TOKEN_TREE) return TLP_SECTION_TREE;
    int32_t type = TLP_FindSectionType(type_word);
    if (type < 0) TLT_Error(statement, "Unknown type after a DATA keyword");
    return type;
}

/** Starts the section of the body that the statement begins. */
static void begin_section(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    char text[TLT_TEXT_SIZE];
    char type_word[TLP_NAME_SIZE];
    char name[TLP_NAME_SIZE];
    int32_t keyword = TLT_GetToken(statement, nullptr);
    TLT_GetToken(statement, text);
    ST_Copy(type_word, TLP_NAME_SIZE, text);
    TLT_GetToken(statement, text);
    ST_Copy(name, TLP_NAME_SIZE, text);
    TLT_ResetStatement(statement, 0);
    TLP_SECTION *section = TLP_NewSection(section_type(statement, keyword, type_word), name);
    TLP_LinkSection(module, section);
    module->current_section = section;
    if ((module->flags & TLP_FLAG_SECTION_LINES) != 0) module->running_line = 0;
}

static bool begins_body(TLP_MODULE *module, TLT_STATEMENT *statement)
{
    if (!module->private_flag || module->open_functions != nullptr) return false;
    int32_t code = TLT_FirstKeyword(statement);
    return code == TLT_TOKEN_FUNCTION || code == TLT_TOKEN_TREE || code == TLT_TOKEN_DATA;
}

TLT_STATEMENT *TLP_ReadStatement(TLP_MODULE *module)
{
    LINE line{};
    int32_t line_count = 1;
    if (!read_stacked_line(module, &line)) return nullptr;
    TLT_STATEMENT *statement = read_joined(module, &line, &line_count);
    if (statement == nullptr) return nullptr;
    if (begins_body(module, statement)) begin_section(module, statement);
    module->running_line += line_count;
    module->files->line_count += line_count;
    return statement;
}
