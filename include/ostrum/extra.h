/*
 * Operations that tools need beyond those of the families: what a compilation reads, what its text
 * targets could not express, and what a command interpreter wants at a terminal and in a script.
 */
#ifndef OSTRUM_EXTRA_H
#define OSTRUM_EXTRA_H

#include <ostrum/cli.h>
#include <ostrum/types.h>

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
 * Reads a line in place of standard input.
 *
 * @param context  the word given to CLI_SetLineReader
 * @param prompt   what the interpreter has printed in front of the line, for a reader that redraws it
 * @param buffer   out: the line, terminated, with or without its line end
 * @param size     capacity of buffer in bytes
 * @return         1; 0 at the end of the input
 */
typedef int32_t (*CLI_LINE_READER)(void *context, const char *prompt, char *buffer, int32_t size);

/**
 * Installs the function that reads the lines of the console, commands and answers to prompts alike.
 *
 * @param context  handed to the reader
 * @param reader   the reader; null for standard input
 */
OSTRUM_API void CLI_SetLineReader(void *context, CLI_LINE_READER reader);

/**
 * Called for a word by CLI_Complete.
 *
 * @param context  the word given to CLI_Complete
 * @param word     what could stand there, whole: a command, a qualifier with its slash, or a choice
 * @param help     its line of help
 * @return         ignored
 */
typedef int32_t (*CLI_COMPLETION)(void *context, const char *word, const char *help);

/**
 * Finds the words that could complete the end of an unfinished line of commands, ignoring case.
 * Prints nothing and leaves the values of the tree alone.
 *
 * @param root     the tree of commands
 * @param line     the line up to the cursor
 * @param start    out: place in line, in bytes, of the word that the completions replace; may be null
 * @param visitor  called for each word, in the tree's order; may be null
 * @param context  handed to the visitor
 * @return         number of words
 */
OSTRUM_API int32_t CLI_Complete(const CLI_NODE *root, const char *line, int32_t *start,
                                CLI_COMPLETION visitor, void *context);

/**
 * Called by an action that could not do its work: the command counts as failed, once, however often
 * this is called.
 */
OSTRUM_API void CLI_FailCommand(void);

/**
 * Counts the commands of this process that were refused, because of their text, a value that was not
 * given or a command file that could not be opened, and those that failed: aborted with Ctrl-C, or by
 * CLI_FailCommand.
 *
 * @return  how many
 */
OSTRUM_API int32_t CLI_FailedCommands(void);

OSTRUM_END

#endif
