/*
 * What parsing, prompting, completion and the sources of lines ask of one another.
 */
#pragma once

#include "cli/cli.h"

enum {
    CLI_LINE_SIZE = 255,        // bytes of a command line with its terminator
    CLI_ANSWER_SIZE = 256,      // bytes of an answer to a prompt
    CLI_LIST_ANSWER_SIZE = 120, // bytes of the text of a list that was prompted for
};

// --- fields ---

/** A text under the parser. */
struct CLI_PARSE {
    const char *line;   // shown with messages; null for an answer to a prompt
    int32_t capacity;   // bytes that the text of a list may need, terminator included
    const char *cursor; // what has not been parsed yet
};

enum CLI_FIELD { CLI_FIELD_READ, CLI_FIELD_TOO_LONG, CLI_STRING_TOO_LONG };

constexpr const char *CLI_COMMAND_END = " /?";
constexpr const char *CLI_QUALIFIER_END = " /=";
constexpr const char *CLI_VALUE_END = " /";

inline bool CLI_IsBlank(char c)
{
    return c == ' ' || c == '\t';
}

/** Moves the cursor to the next character that is not blank. */
void CLI_SkipBlanks(CLI_PARSE *parse);

/**
 * Reads a field at the cursor, which ends up behind it, or at the first character without room.
 *
 * @param parse        the text
 * @param buffer       out: size bytes; the field without its quotes, cut to fit, terminated
 * @param size         capacity of buffer in bytes, at least 1
 * @param terminators  what ends a field without quotes, outside brackets; a blank ends it if ' ' does
 * @return             whether it fitted
 */
CLI_FIELD CLI_ReadField(CLI_PARSE *parse, char *buffer, int32_t size, const char *terminators);

// --- lists of words ---

/** Records in a list that have a name, seen alike. */
struct CLI_WORD_KIND {
    const char *subject; // what messages call them
    const void *(*next)(const void *entry);
    const char *(*name)(const void *entry);
    const char *(*help)(const void *entry);
};

extern const CLI_WORD_KIND CLI_COMMAND_WORDS;   // of CLI_NODE
extern const CLI_WORD_KIND CLI_QUALIFIER_WORDS; // of CLI_QUALIFIER
extern const CLI_WORD_KIND CLI_CHOICE_WORDS;    // of CLI_CHOICE

/**
 * Looks a word or an abbreviation of it up, ignoring case.
 *
 * @param kind          what the list holds
 * @param first         the first record; null for an empty list
 * @param word          the word
 * @param is_ambiguous  out: it abbreviates several names
 * @return              the record with that name, or with the only name that it abbreviates; else null
 */
void *CLI_FindWord(const CLI_WORD_KIND &kind, const void *first, const char *word,
                   bool *is_ambiguous);

// --- values ---

/**
 * Empties the text of a parameter, which gets its buffer at the first use.
 *
 * @param parameter  the parameter
 * @param capacity   bytes that the text of a list may need
 */
void CLI_EmptyText(CLI_PARAMETER *parameter, int32_t capacity);

/**
 * Checks the text of a parameter and sets its number. A fault is reported.
 *
 * @param parameter  the parameter, with its text
 * @param parse      where the text came from
 * @return           whether the text is a value
 */
bool CLI_CheckValue(CLI_PARAMETER *parameter, const CLI_PARSE *parse);

/**
 * Asks for the value of a parameter, until an answer is a value, empty, or the input ends. Nothing is
 * asked while a command file is read.
 *
 * @param parameter    the parameter; its text is the answer, or empty
 * @param slash        "/" for the value of a qualifier, else ""
 * @param name         of the parameter or qualifier
 * @param requirement  of the parameter or qualifier
 * @return             whether there is a value
 */
bool CLI_Prompt(CLI_PARAMETER *parameter, const char *slash, const char *name, int32_t requirement);

/** Gives the parameter that is being prompted for; null for none. */
const CLI_PARAMETER *CLI_PromptedParameter();

// --- lines ---

enum CLI_OUTCOME {
    CLI_COMMAND, // to be carried out
    CLI_NOTHING, // to be done: help was shown, or there was nothing on the line
    CLI_REFUSED, // and reported
};

/**
 * Parses a line.
 *
 * @param root       the tree
 * @param parse      the line; what is left of it stands at the cursor
 * @param is_strict  text behind the last parameter is a fault
 * @param node       out: the node to carry out, with its values; set for CLI_COMMAND only
 * @return           what came of it
 */
CLI_OUTCOME CLI_ParseLine(CLI_NODE *root, CLI_PARSE *parse, bool is_strict, CLI_NODE **node);

/**
 * Reads a line that is typed, from the client's reader or from standard input.
 *
 * @param prompt  shown in front of it
 * @param line    out: size bytes; the line, cut to fit
 * @param size    capacity of line in bytes, at most CLI_ANSWER_SIZE
 * @return        length of the line, at least size if it was cut; -1 at the end of the input
 */
int32_t CLI_ReadTyped(const char *prompt, char *line, int32_t size);

/** Tells whether lines come from a command file. */
bool CLI_InCommandFile();
