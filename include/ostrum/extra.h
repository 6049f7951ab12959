/*
 * Operations that tools need beyond those of the families: what a compilation reads, what its text
 * targets could not express, and what a command interpreter wants at a terminal and in a script.
 */
#ifndef OSTRUM_EXTRA_H
#define OSTRUM_EXTRA_H

#include <ostrum/cli.h>

OSTRUM_BEGIN

/**
 * Called with each source file at the moment that it was opened.
 *
 * @param context    the word given to TLP_SetSourceHook
 * @param name       name of the file as messages show it
 * @param host_path  path by which the host knows it; valid during the call, as the name is
 */
typedef void (*TLP_SOURCE_HOOK)(void *context, const char *name, const char *host_path);

/**
 * Installs the hook that learns of each source file opened, for lists of dependencies.
 *
 * @param context  handed to the hook
 * @param hook     the hook; null for none
 */
OSTRUM_API void TLP_SetSourceHook(void *context, TLP_SOURCE_HOOK hook);

/**
 * Counts the faults that a stream wrote into C or Java text as comments, because the target cannot
 * express what the source says.
 *
 * @param stream  text stream; null asks for the text stream made last, whether or not it has been
 *                deleted since
 * @return        how many
 */
OSTRUM_API int32_t TLC_TextErrors(const TLC_STREAM *stream);

/**
 * Reads a line in place of standard input, with editing and a history for instance.
 *
 * @param context  the word given to CLI_SetLineReader
 * @param prompt   to be shown in front of the line; that of a command begins with a line end; valid
 *                 during the call
 * @param line     out: size bytes; the line without its line end, cut to fit, terminated
 * @param size     capacity of line in bytes
 * @return         length of the whole line, also of one that was cut; -1 at the end of the input
 */
typedef int32_t (*CLI_LINE_READER)(void *context, const char *prompt, char *line, int32_t size);

/**
 * Installs the function that reads what is typed: commands at the console and answers to prompts.
 *
 * @param context  handed to the reader
 * @param reader   the reader; null for standard input, as at the start
 */
OSTRUM_API void CLI_SetLineReader(void *context, CLI_LINE_READER reader);

/** What a completion is. */
enum {
    CLI_COMPLETE_COMMAND,
    CLI_COMPLETE_QUALIFIER,
    CLI_COMPLETE_CHOICE,
    CLI_COMPLETE_FILE,
    CLI_COMPLETE_DIRECTORY
};

/** One way to complete a line; its texts are valid while it is visited. */
typedef struct CLI_COMPLETION {
    int32_t kind;       /**< CLI_COMPLETE_COMMAND and its like */
    int32_t start;      /**< the text replaces the line from this byte on */
    const char *text;   /**< as the parser reads it, in quotes where it needs them */
    const char *ending; /**< follows the text if nothing else could: " ", "=" or nothing */
    const char *name;   /**< to show: the bare keyword or file name */
    const char *help;   /**< to show beside it; empty for a file */
} CLI_COMPLETION;

/**
 * Called for each completion.
 *
 * @param context     the word given to CLI_Complete
 * @param completion  the completion; stays the library's
 * @return            ignored
 */
typedef int32_t (*CLI_COMPLETION_VISITOR)(void *context, const CLI_COMPLETION *completion);

/**
 * Visits what a partial line can be completed to: the commands, qualifiers, choices or files that its
 * last word is the start of, in the order of the tree and of the files' names. Behind a blank it is
 * all that may stand there; qualifiers are offered where nothing else may, or behind their "/". While
 * a value is prompted for, the line is an answer and is completed as that value alone. Nothing is
 * printed, and the values of the tree stay as they are.
 *
 * @param root     the tree of commands
 * @param line     the line up to the cursor
 * @param visitor  called for each completion
 * @param context  handed to the visitor
 * @return         how many were visited
 */
OSTRUM_API int32_t CLI_Complete(const CLI_NODE *root, const char *line,
                                CLI_COMPLETION_VISITOR visitor, void *context);

/**
 * Says that a parameter names files, or is a list of their names, for CLI_Complete to offer them.
 *
 * @param parameter  from CLI_CharParameter or CLI_ListParameter
 * @param pattern    which files, with '*' and '?', such as "*.kob"; kept by the client; null for none
 */
OSTRUM_API void CLI_SetFilePattern(CLI_PARAMETER *parameter, const char *pattern);

/**
 * Says, from within an action, that its command failed. A command counts once.
 */
OSTRUM_API void CLI_FailCommand(void);

/**
 * Counts the commands that were refused, since their line was faulty or their file could not be opened,
 * and those that failed: the action said so, or Ctrl-C was pressed. Faulty arguments of the program
 * count as well.
 *
 * @return  how many since the process began
 */
OSTRUM_API int32_t CLI_FailedCommands(void);

OSTRUM_END

#endif
