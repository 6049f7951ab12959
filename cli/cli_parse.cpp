/*
 * Command lines: fields and words, values, and the walk of a line down the tree.
 */
#include "cli/cli_parse.h"

#include "core/sh.h"
#include "core/st.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

// --- messages ---

/** Reports a fault, with the place in the line if there is a line. Gives false, for callers to pass on. */
static bool refuse(const CLI_PARSE *parse, const char *message)
{
    if (parse->line != nullptr) {
        const auto width = static_cast<int>(parse->cursor - parse->line);
        std::printf("%s\n%*s\n", parse->line, width, "^");
    }
    std::printf("** %s\n", message);
    return false;
}

static bool refuse_word(const CLI_PARSE *parse, const CLI_WORD_KIND &kind, bool is_ambiguous)
{
    char message[64];
    ST_Concat(message, sizeof message, kind.subject,
              is_ambiguous ? " is ambiguous" : " not recognised", nullptr);
    return refuse(parse, message);
}

// --- fields ---

void CLI_SkipBlanks(CLI_PARSE *parse)
{
    while (CLI_IsBlank(*parse->cursor))
        parse->cursor++;
}

/** Reads up to the closing quote, or the end of the line. A doubled quote stands for one. */
static CLI_FIELD read_quoted(CLI_PARSE *parse, char *buffer, int32_t size)
{
    const char quote = *parse->cursor++;
    int32_t length = 0;
    for (; *parse->cursor != 0; parse->cursor++) {
        if (*parse->cursor == quote && *++parse->cursor != quote) break;
        if (length >= size - 1) return CLI_STRING_TOO_LONG;
        buffer[length++] = *parse->cursor;
        buffer[length] = 0;
    }
    return CLI_FIELD_READ;
}

static bool ends_field(char c, const char *terminators)
{
    return std::strchr(terminators, c == '\t' ? ' ' : c) != nullptr;
}

/** Reads up to a terminator outside brackets, or the end of the line. */
static CLI_FIELD read_unquoted(CLI_PARSE *parse, char *buffer, int32_t size,
                               const char *terminators)
{
    int32_t depth = 0; // of brackets
    int32_t length = 0;
    for (; *parse->cursor != 0; parse->cursor++) {
        const char c = *parse->cursor;
        if (depth == 0 && ends_field(c, terminators)) break;
        if (length >= size - 1) return CLI_FIELD_TOO_LONG;
        if (std::strchr("([{", c) != nullptr) depth++;
        if (std::strchr(")]}", c) != nullptr && depth > 0) depth--;
        buffer[length++] = c;
        buffer[length] = 0;
    }
    return CLI_FIELD_READ;
}

CLI_FIELD CLI_ReadField(CLI_PARSE *parse, char *buffer, int32_t size, const char *terminators)
{
    buffer[0] = 0;
    const char c = *parse->cursor;
    if (c == '"' || c == '\'') return read_quoted(parse, buffer, size);
    return read_unquoted(parse, buffer, size, terminators);
}

/** Reads a field and reports one that does not fit. */
static bool take_field(CLI_PARSE *parse, char *buffer, int32_t size, const char *terminators)
{
    switch (CLI_ReadField(parse, buffer, size, terminators)) {
    case CLI_FIELD_TOO_LONG:
        return refuse(parse, "Field is too long");
    case CLI_STRING_TOO_LONG:
        return refuse(parse, "String is too long");
    default:
        return true;
    }
}

// --- lists of words ---

template <typename RECORD> static const void *next_of(const void *entry)
{
    return static_cast<const RECORD *>(entry)->next;
}

template <typename RECORD> static const char *name_of(const void *entry)
{
    return static_cast<const RECORD *>(entry)->name;
}

template <typename RECORD> static const char *help_of(const void *entry)
{
    return static_cast<const RECORD *>(entry)->help;
}

constexpr CLI_WORD_KIND CLI_COMMAND_WORDS = {
    .subject = "Command",
    .next = next_of<CLI_NODE>,
    .name = name_of<CLI_NODE>,
    .help = help_of<CLI_NODE>,
};

constexpr CLI_WORD_KIND CLI_QUALIFIER_WORDS = {
    .subject = "Qualifier",
    .next = next_of<CLI_QUALIFIER>,
    .name = name_of<CLI_QUALIFIER>,
    .help = help_of<CLI_QUALIFIER>,
};

constexpr CLI_WORD_KIND CLI_CHOICE_WORDS = {
    .subject = "Choice Value",
    .next = next_of<CLI_CHOICE>,
    .name = name_of<CLI_CHOICE>,
    .help = help_of<CLI_CHOICE>,
};

void *CLI_FindWord(const CLI_WORD_KIND &kind, const void *first, const char *word,
                   bool *is_ambiguous)
{
    const size_t length = std::strlen(word);
    const void *found = nullptr;
    *is_ambiguous = false;
    for (const void *entry = first; entry != nullptr; entry = kind.next(entry)) {
        const char *name = kind.name(entry);
        if (!ST_StartsCI(name, word)) continue;
        *is_ambiguous = found != nullptr && name[length] != 0;
        found = entry;
        if (name[length] == 0) break;
    }
    return *is_ambiguous ? nullptr : const_cast<void *>(found); // the caller's list, given back
}

/** Looks a word up; null and a report if it is not one of the list. */
static void *take_word(const CLI_PARSE *parse, const CLI_WORD_KIND &kind, const void *first,
                       const char *word)
{
    bool is_ambiguous;
    void *entry = CLI_FindWord(kind, first, word, &is_ambiguous);
    if (entry == nullptr) refuse_word(parse, kind, is_ambiguous);
    return entry;
}

// --- values ---

void CLI_EmptyText(CLI_PARAMETER *parameter, int32_t capacity)
{
    if (parameter->kind == CLI_KIND_LIST && parameter->size < capacity) {
        SH_Free(parameter->text);
        parameter->text = nullptr;
        parameter->size = capacity;
    }
    if (parameter->text == nullptr) {
        parameter->size = std::max(parameter->size, 1);
        parameter->text = static_cast<char *>(SH_Allocate(parameter->size));
    }
    parameter->text[0] = 0;
}

static bool check_length(CLI_PARAMETER *parameter, const CLI_PARSE *parse)
{
    const auto length = static_cast<int64_t>(std::strlen(parameter->text));
    return length >= parameter->minimum_length ||
           refuse(parse, "Not enough characters in this field");
}

static bool check_number(CLI_PARAMETER *parameter, const CLI_PARSE *parse)
{
    int32_t number = 0;
    const char *end = ST_CharInt(parameter->text, &number, 0);
    if (end == nullptr || *end != 0) return refuse(parse, "Bad Number");
    if (number < parameter->lowest || number > parameter->highest)
        return refuse(parse, "Number out of range");
    parameter->number = number;
    return true;
}

static bool check_choice(CLI_PARAMETER *parameter, const CLI_PARSE *parse)
{
    const auto *choice = static_cast<const CLI_CHOICE *>(
        take_word(parse, CLI_CHOICE_WORDS, parameter->choices, parameter->text));
    if (choice == nullptr) return false;
    parameter->number = choice->value;
    return true;
}

bool CLI_CheckValue(CLI_PARAMETER *parameter, const CLI_PARSE *parse)
{
    switch (parameter->kind) {
    case CLI_KIND_INTEGER:
        return check_number(parameter, parse);
    case CLI_KIND_CHOICE:
        return check_choice(parameter, parse);
    default:
        return check_length(parameter, parse);
    }
}

/** Reads a field into a parameter. On failure the parameter is empty. */
static bool take_text(CLI_PARAMETER *parameter, CLI_PARSE *parse)
{
    CLI_EmptyText(parameter, parse->capacity);
    if (take_field(parse, parameter->text, parameter->size, CLI_VALUE_END)) return true;
    parameter->text[0] = 0;
    return false;
}

// --- the walk of a line ---

/** The walk down the tree. */
struct WALK {
    CLI_PARSE *parse;
    CLI_NODE *node;
    CLI_PARAMETER *next_parameter; // to be filled; null for none
    bool is_strict;
};

enum PARSE_STEP {
    STEP_ON,      // the walk goes on
    STEP_END,     // what is left is not for this walk
    STEP_HELPED,  // help was shown in place of a command
    STEP_REFUSED, // and reported
};

static PARSE_STEP on_or_refused(bool is_good)
{
    return is_good ? STEP_ON : STEP_REFUSED;
}

/** Makes a node the place of the walk. The values of a command are emptied. */
static void enter_node(WALK *walk, CLI_NODE *node)
{
    walk->node = node;
    if (node->action == nullptr) return;
    walk->next_parameter = node->parameters.first;
    for (CLI_QUALIFIER *qualifier = node->qualifiers; qualifier != nullptr;
         qualifier = qualifier->next) {
        qualifier->seen = 0;
        if (qualifier->value.first != nullptr)
            CLI_EmptyText(qualifier->value.first, walk->parse->capacity);
    }
    for (CLI_PARAMETER *parameter = node->parameters.first; parameter != nullptr;
         parameter = parameter->next)
        CLI_EmptyText(parameter, walk->parse->capacity);
}

static PARSE_STEP show_help(const WALK *walk)
{
    CLI_Help(walk->node);
    return STEP_HELPED;
}

static PARSE_STEP take_command(WALK *walk)
{
    char word[CLI_NAME_SIZE];
    if (!take_field(walk->parse, word, CLI_NAME_SIZE, CLI_COMMAND_END)) {
        refuse(walk->parse, "Format of subcommand not recognised");
        return STEP_REFUSED;
    }
    auto *child = static_cast<CLI_NODE *>(
        take_word(walk->parse, CLI_COMMAND_WORDS, walk->node->children, word));
    if (child == nullptr) return STEP_REFUSED;
    enter_node(walk, child);
    return STEP_ON;
}

/** An optional parameter whose field does not fit stays empty, and is checked like any other. */
static PARSE_STEP take_parameter(WALK *walk)
{
    CLI_PARAMETER *parameter = walk->next_parameter;
    walk->next_parameter = parameter->next;
    if (!take_text(parameter, walk->parse) && parameter->requirement == CLI_MANDATORY) {
        refuse(walk->parse, "Missing Parameter");
        return STEP_REFUSED;
    }
    return on_or_refused(CLI_CheckValue(parameter, walk->parse));
}

/** Reads what stands behind the name of a qualifier. */
static bool take_qualifier_value(CLI_PARAMETER *value, CLI_PARSE *parse)
{
    CLI_SkipBlanks(parse);
    const bool is_needed = value != nullptr && value->requirement == CLI_MANDATORY;
    if (*parse->cursor != '=')
        return !is_needed || refuse(parse, "This qualifier must have a value");
    if (value == nullptr) return refuse(parse, "Qualifier may not have a value");
    parse->cursor++;
    if (!take_text(value, parse)) return refuse(parse, "Missing qualifier value");
    return CLI_CheckValue(value, parse);
}

static PARSE_STEP take_qualifier(WALK *walk)
{
    char word[CLI_NAME_SIZE];
    walk->parse->cursor++; // the slash
    if (!take_field(walk->parse, word, CLI_NAME_SIZE, CLI_QUALIFIER_END)) return STEP_REFUSED;
    if (ST_CompareCI(word, "help") == 0) return show_help(walk);
    auto *qualifier = static_cast<CLI_QUALIFIER *>(
        take_word(walk->parse, CLI_QUALIFIER_WORDS, walk->node->qualifiers, word));
    if (qualifier == nullptr) return STEP_REFUSED;
    qualifier->seen = 1;
    return on_or_refused(take_qualifier_value(qualifier->value.first, walk->parse));
}

/** Takes what stands at the cursor, which is not blank. */
static PARSE_STEP take_step(WALK *walk)
{
    if (*walk->parse->cursor == '?') return show_help(walk);
    if (*walk->parse->cursor == '/') return take_qualifier(walk);
    if (walk->node->children != nullptr) return take_command(walk);
    if (walk->next_parameter != nullptr) return take_parameter(walk);
    if (!walk->is_strict) return STEP_END;
    refuse(walk->parse, "Extra parameters supplied");
    return STEP_REFUSED;
}

static PARSE_STEP walk_line(WALK *walk)
{
    PARSE_STEP step = STEP_ON;
    while (step == STEP_ON) {
        CLI_SkipBlanks(walk->parse);
        step = *walk->parse->cursor == 0 ? STEP_END : take_step(walk);
    }
    return step;
}

// --- what the line left out ---

/** Where the user can be asked, being asked was enough of a message. */
static bool refuse_missing(const CLI_PARSE *parse, bool was_asked)
{
    if (CLI_InCommandFile() || !was_asked) refuse(parse, "Mandatory parameters missing");
    return false;
}

static bool complete_parameters(const WALK *walk)
{
    for (CLI_PARAMETER *parameter = walk->next_parameter; parameter != nullptr;
         parameter = parameter->next) {
        if (parameter->requirement == CLI_OPTIONAL) continue;
        if (CLI_Prompt(parameter, "", parameter->name, parameter->requirement)) continue;
        if (parameter->requirement == CLI_MANDATORY) return refuse_missing(walk->parse, true);
    }
    return true;
}

/** A qualifier without a value cannot be asked for: a mandatory one is missing then. */
static bool complete_qualifier(const WALK *walk, CLI_QUALIFIER *qualifier)
{
    const bool is_mandatory = qualifier->requirement == CLI_MANDATORY;
    CLI_PARAMETER *value = qualifier->value.first;
    if (value == nullptr) return !is_mandatory || refuse_missing(walk->parse, false);
    qualifier->seen = 1;
    if (CLI_Prompt(value, "/", qualifier->name, qualifier->requirement)) return true;
    return !is_mandatory || refuse_missing(walk->parse, true);
}

static bool complete_qualifiers(const WALK *walk)
{
    for (CLI_QUALIFIER *qualifier = walk->node->qualifiers; qualifier != nullptr;
         qualifier = qualifier->next) {
        if (qualifier->seen || qualifier->requirement == CLI_OPTIONAL) continue;
        if (!complete_qualifier(walk, qualifier)) return false;
    }
    return true;
}

static bool check_exclusions(const CLI_NODE *node)
{
    for (const CLI_QUALIFIER *one = node->qualifiers; one != nullptr; one = one->next) {
        for (const CLI_QUALIFIER *other = node->qualifiers; other != nullptr; other = other->next) {
            if (one == other || !one->seen || !other->seen) continue;
            if ((one->exclusion_mask & other->exclusion_mask) == 0) continue;
            std::printf("** %c%s cannot be specified with %c%s\n", '/', other->name, '/',
                        one->name);
            return false;
        }
    }
    return true;
}

static CLI_OUTCOME finish_line(const WALK *walk, const CLI_NODE *root)
{
    if (walk->node->action == nullptr) {
        if (walk->node == root) return CLI_NOTHING;
        refuse(walk->parse, "Incomplete command");
        return CLI_REFUSED;
    }
    const bool is_complete =
        complete_parameters(walk) && complete_qualifiers(walk) && check_exclusions(walk->node);
    return is_complete ? CLI_COMMAND : CLI_REFUSED;
}

CLI_OUTCOME CLI_ParseLine(CLI_NODE *root, CLI_PARSE *parse, bool is_strict, CLI_NODE **node)
{
    WALK walk = { .parse = parse, .node = root, .next_parameter = nullptr, .is_strict = is_strict };
    enter_node(&walk, root);
    const PARSE_STEP step = walk_line(&walk);
    if (step == STEP_HELPED) return CLI_NOTHING;
    if (step == STEP_REFUSED) return CLI_REFUSED;
    const CLI_OUTCOME outcome = finish_line(&walk, root);
    if (outcome == CLI_COMMAND) *node = walk.node;
    return outcome;
}
