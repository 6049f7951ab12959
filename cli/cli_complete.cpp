/*
 * Completion of partial lines. The walk is that of the parser, but it is silent and leaves the values
 * of the tree alone.
 */
#include "cli/cli_parse.h"

#include "core/f.h"
#include "core/ist.h"
#include "core/sh.h"
#include "core/st.h"

#include <cstring>

/** Who asked for completions, and how a text has to be written on the line. */
struct COMPLETER {
    CLI_COMPLETION_VISITOR visitor;
    void *context;
    int32_t count;
    int32_t start;        // in the line, of what a completion replaces
    bool is_literal;      // the line is a text as it is, without quotes and blanks at its end
    bool is_behind_quote; // another quote there would be one of a doubled quote
};

// --- offers ---

static bool needs_quotes(const char *text)
{
    return std::strpbrk(text, " \t/?()[]{}\"'") != nullptr;
}

static void append_escaped(IST_STRING *line, const char *text)
{
    for (; *text != 0; text++) {
        if (*text == '"') IST_AppendChar(line, '"');
        IST_AppendChar(line, *text);
    }
}

/** Gives a text as the parser reads it. One that goes on, as a directory does, keeps its quotes open. */
static char *make_text(const COMPLETER *completer, const char *lead, const char *text, bool goes_on)
{
    IST_STRING *line = IST_NewString();
    IST_Append(line, lead);
    const bool is_quoted = !completer->is_literal && needs_quotes(text);
    if (is_quoted && completer->is_behind_quote) IST_AppendChar(line, ' ');
    if (is_quoted) {
        IST_AppendChar(line, '"');
        append_escaped(line, text);
        if (!goes_on) IST_AppendChar(line, '"');
    } else {
        IST_Append(line, text);
    }
    return IST_GetString(line);
}

/** Hands a completion to the visitor: lead and value replace the word; all but start and text are given. */
static void offer(COMPLETER *completer, const char *lead, const char *value, bool goes_on,
                  CLI_COMPLETION completion)
{
    completer->count++;
    if (completer->visitor == nullptr) return;
    char *text = make_text(completer, lead, value, goes_on);
    completion.start = completer->start;
    completion.text = text;
    if (completer->is_literal) completion.ending = "";
    completer->visitor(completer->context, &completion);
    ST_Free(text);
}

static void offer_word(COMPLETER *completer, int32_t kind, const char *name, const char *ending,
                       const char *help)
{
    const char *lead = kind == CLI_COMPLETE_QUALIFIER ? "/" : "";
    offer(completer, lead, name, false,
          CLI_COMPLETION{ .kind = kind,
                          .start = 0,
                          .text = nullptr,
                          .ending = ending,
                          .name = name,
                          .help = help });
}

/** Offers the words of a list that a prefix fits. */
static void offer_words(COMPLETER *completer, int32_t kind, const CLI_WORD_KIND &words,
                        const void *first, const char *prefix)
{
    for (const void *entry = first; entry != nullptr; entry = words.next(entry)) {
        if (ST_StartsCI(words.name(entry), prefix))
            offer_word(completer, kind, words.name(entry), " ", words.help(entry));
    }
}

static void offer_qualifiers(COMPLETER *completer, const CLI_NODE *node, const char *prefix)
{
    const CLI_QUALIFIER *qualifier = node->qualifiers;
    for (; qualifier != nullptr; qualifier = qualifier->next) {
        const CLI_PARAMETER *value = qualifier->value.first;
        const char *ending = " ";
        if (value != nullptr) ending = value->requirement == CLI_MANDATORY ? "=" : "";
        if (ST_StartsCI(qualifier->name, prefix))
            offer_word(completer, CLI_COMPLETE_QUALIFIER, qualifier->name, ending, qualifier->help);
    }
    if (ST_StartsCI("HELP", prefix))
        offer_word(completer, CLI_COMPLETE_QUALIFIER, "HELP", "", "Help on the command");
}

// --- files ---

/** The files that a word may stand for. */
struct FILE_SEARCH {
    COMPLETER *completer;
    const char *before; // of the path in its field: the values of a list that stand in front
    char directory[F_PATH_SIZE];
    const char *prefix; // of the name
    int32_t wanted;     // CLI_COMPLETE_FILE or CLI_COMPLETE_DIRECTORY
};

static char *join(const char *a, const char *b, const char *c, const char *d)
{
    IST_STRING *text = IST_NewString();
    IST_Append(text, a);
    IST_Append(text, b);
    IST_Append(text, c);
    IST_Append(text, d);
    return IST_GetString(text);
}

/** Behind a directory stands the separator that its path has already, the host's if it has none. */
static const char *separator_of(const char *directory)
{
    const bool has_other = std::strchr(directory, '\\') != nullptr;
    return has_other && std::strchr(directory, '/') == nullptr ? "\\" : "/";
}

static int32_t offer_file(void *context, const char *, const char *name, int32_t is_directory)
{
    const auto *search = static_cast<const FILE_SEARCH *>(context);
    const int32_t kind = is_directory ? CLI_COMPLETE_DIRECTORY : CLI_COMPLETE_FILE;
    if (kind != search->wanted || !ST_StartsCI(name, search->prefix)) return 0;
    if (std::strlen(search->directory) + std::strlen(name) >= F_PATH_SIZE) return 0;
    const bool goes_on = is_directory || search->before[0] != 0;
    char *value = join(search->before, search->directory, name,
                       is_directory ? separator_of(search->directory) : "");
    offer(search->completer, "", value, is_directory != 0,
          CLI_COMPLETION{ .kind = kind,
                          .start = 0,
                          .text = nullptr,
                          .ending = goes_on ? "" : " ",
                          .name = name,
                          .help = "" });
    ST_Free(value);
    return 0;
}

/** Offers the files of a pattern whose path starts so, then the directories. */
static void offer_files(COMPLETER *completer, const char *before, const char *path,
                        const char *pattern)
{
    size_t length = std::strlen(path);
    while (length > 0 && std::strchr("\\/:", path[length - 1]) == nullptr)
        length--;
    if (length >= F_PATH_SIZE) return;
    FILE_SEARCH search = { .completer = completer,
                           .before = before,
                           .directory = "",
                           .prefix = path + length,
                           .wanted = CLI_COMPLETE_FILE };
    ST_CopySpan(search.directory, F_PATH_SIZE, path, length);
    F_AllDirFiles(search.directory, pattern, offer_file, &search);
    search.wanted = CLI_COMPLETE_DIRECTORY;
    F_AllDirFiles(search.directory, "*", offer_file, &search);
}

/** Offers the files that the last value of a list may stand for. */
static void offer_files_of_list(COMPLETER *completer, const CLI_PARAMETER *parameter, char *text)
{
    char *path = std::strrchr(text, parameter->separator);
    path = path == nullptr || *path == 0 ? text : path + 1;
    while (*path == ' ')
        path++;
    char *before = ST_AllocateSpan(text, static_cast<size_t>(path - text));
    offer_files(completer, before, path, parameter->file_pattern);
    ST_Free(before);
}

/** Offers the values of a parameter that a text is the start of. */
static void offer_values(COMPLETER *completer, const CLI_PARAMETER *parameter, char *text)
{
    if (parameter->kind == CLI_KIND_CHOICE)
        offer_words(completer, CLI_COMPLETE_CHOICE, CLI_CHOICE_WORDS, parameter->choices, text);
    if (parameter->file_pattern == nullptr) return;
    if (parameter->kind == CLI_KIND_LIST)
        offer_files_of_list(completer, parameter, text);
    else
        offer_files(completer, "", text, parameter->file_pattern);
}

// --- the place that a line has come to ---

enum PLACE_KIND { PLACE_UNKNOWN, PLACE_COMMAND, PLACE_QUALIFIER, PLACE_VALUE };

struct PLACE {
    CLI_PARSE parse;
    const CLI_NODE *node;
    const CLI_PARAMETER *parameter; // of the place, or the next one of the node; null for none
    PLACE_KIND kind;
    const char *start; // of the word that the line ends in
    char *word;        // that word without its quotes
    int32_t size;      // bytes of word
};

enum COMPLETION_STEP { STEP_ON, STEP_END };

/** Reads a word; true if the line ends in it, which makes this its place. */
static bool ends_here(PLACE *place, PLACE_KIND kind, const char *terminators)
{
    CLI_ReadField(&place->parse, place->word, place->size, terminators);
    if (*place->parse.cursor != 0) return false;
    place->kind = kind;
    return true;
}

static COMPLETION_STEP pass_command(PLACE *place)
{
    bool is_ambiguous;
    if (ends_here(place, PLACE_COMMAND, CLI_COMMAND_END)) return STEP_END;
    place->node = static_cast<const CLI_NODE *>(
        CLI_FindWord(CLI_COMMAND_WORDS, place->node->children, place->word, &is_ambiguous));
    if (place->node == nullptr) return STEP_END;
    if (place->node->action != nullptr) place->parameter = place->node->parameters.first;
    return STEP_ON;
}

static COMPLETION_STEP pass_value(PLACE *place)
{
    if (ends_here(place, PLACE_VALUE, CLI_VALUE_END)) return STEP_END;
    place->parameter = place->parameter->next;
    return STEP_ON;
}

static COMPLETION_STEP pass_qualifier_value(PLACE *place, const CLI_PARAMETER *value)
{
    CLI_SkipBlanks(&place->parse);
    if (*place->parse.cursor != '=') return STEP_ON;
    if (value == nullptr) return STEP_END;
    place->start = ++place->parse.cursor;
    if (!ends_here(place, PLACE_VALUE, CLI_VALUE_END)) return STEP_ON;
    place->parameter = value;
    return STEP_END;
}

static COMPLETION_STEP pass_qualifier(PLACE *place)
{
    bool is_ambiguous;
    place->parse.cursor++; // the slash
    if (ends_here(place, PLACE_QUALIFIER, CLI_QUALIFIER_END)) return STEP_END;
    const auto *qualifier = static_cast<const CLI_QUALIFIER *>(
        CLI_FindWord(CLI_QUALIFIER_WORDS, place->node->qualifiers, place->word, &is_ambiguous));
    return qualifier == nullptr ? STEP_END : pass_qualifier_value(place, qualifier->value.first);
}

/** Passes what stands at the cursor, or ends there. */
static COMPLETION_STEP pass_step(PLACE *place)
{
    CLI_SkipBlanks(&place->parse);
    place->start = place->parse.cursor;
    if (*place->start == '?') return STEP_END;
    if (*place->start == '/') return pass_qualifier(place);
    if (place->node->children != nullptr) return pass_command(place);
    if (place->parameter != nullptr) return pass_value(place);
    ends_here(place, PLACE_QUALIFIER, ""); // only a qualifier may follow
    if (place->word[0] != 0) place->kind = PLACE_UNKNOWN;
    return STEP_END;
}

static void offer_at_place(COMPLETER *completer, const PLACE *place)
{
    switch (place->kind) {
    case PLACE_COMMAND:
        offer_words(completer, CLI_COMPLETE_COMMAND, CLI_COMMAND_WORDS, place->node->children,
                    place->word);
        break;
    case PLACE_QUALIFIER:
        offer_qualifiers(completer, place->node, place->word);
        break;
    case PLACE_VALUE:
        offer_values(completer, place->parameter, place->word);
        break;
    case PLACE_UNKNOWN:
        break;
    }
}

/** Completes a line of commands. Word has room for the whole of it. */
static void complete_line(COMPLETER *completer, const CLI_NODE *root, const char *line, char *word)
{
    PLACE place = { .parse = { .line = line, .capacity = 0, .cursor = line },
                    .node = root,
                    .parameter = root->action == nullptr ? nullptr : root->parameters.first,
                    .kind = PLACE_UNKNOWN,
                    .start = line,
                    .word = word,
                    .size = static_cast<int32_t>(std::strlen(line)) + 1 };
    while (pass_step(&place) == STEP_ON)
        ;
    completer->start = static_cast<int32_t>(place.start - line);
    completer->is_behind_quote = place.start > line && place.start[-1] == '"';
    offer_at_place(completer, &place);
}

int32_t CLI_Complete(const CLI_NODE *root, const char *line, CLI_COMPLETION_VISITOR visitor,
                     void *context)
{
    COMPLETER completer = { .visitor = visitor,
                            .context = context,
                            .count = 0,
                            .start = 0,
                            .is_literal = true,
                            .is_behind_quote = false };
    const CLI_PARAMETER *prompted = CLI_PromptedParameter();
    char *copy = ST_Allocate(line);
    if (prompted != nullptr) {
        offer_values(&completer, prompted, copy);
    } else if (line[0] == '@') {
        completer.start = 1;
        offer_files(&completer, "", line + 1, "*.com");
    } else if (line[0] != '!') {
        completer.is_literal = false;
        complete_line(&completer, root, line, copy);
    }
    ST_Free(copy);
    return completer.count;
}

void CLI_SetFilePattern(CLI_PARAMETER *parameter, const char *pattern)
{
    parameter->file_pattern = pattern;
}
