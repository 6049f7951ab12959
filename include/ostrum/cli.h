/*
 * The command interpreter. A tool describes its commands once, as a tree of nodes with qualifiers and
 * parameters; the interpreter reads lines from the console, from command files and from the program's
 * arguments, matches them against the tree, prompts for what is missing, calls the action that the
 * tree names, and prints help from the same tree.
 *
 * The records of a tree are never freed: they live until the process ends. Names have at most 31
 * characters and are cut there. Names are copied; help texts are not, the client keeps them alive.
 */
#ifndef OSTRUM_CLI_H
#define OSTRUM_CLI_H

#include <ostrum/types.h>

OSTRUM_BEGIN

typedef struct CLI_NODE CLI_NODE;           /* a command, a group of commands, or the root */
typedef struct CLI_QUALIFIER CLI_QUALIFIER; /* an option: /NAME or /NAME=value */
typedef struct CLI_PARAMETER CLI_PARAMETER; /* a positional parameter, or a qualifier's value */
typedef struct CLI_CHOICE CLI_CHOICE;       /* a word that a choice parameter accepts */

/** What is done about a parameter or a qualifier that a command leaves out. */
enum {
    CLI_OPTIONAL,  /* nothing */
    CLI_MANDATORY, /* it is prompted for, and the command is refused without it */
    CLI_PROMPTED   /* it is prompted for, and may stay empty */
};

/**
 * Carries a command out.
 *
 * @param argument  the word given to CLI_Node
 */
typedef void (*CLI_ACTION)(intptr_t argument);

/**
 * Called for a value of a list parameter.
 *
 * @param context  the word given to CLI_AllListParameterValues
 * @param value    the value, at most 511 characters; the next one overwrites it
 * @return         ignored
 */
typedef int32_t (*CLI_VALUE_VISITOR)(void *context, const char *value);

/** Arguments as main has them; C lets those through only without const, C++ lets both through. */
#ifdef __cplusplus
typedef const char *const *CLI_ARGUMENTS;
#else
typedef char *const *CLI_ARGUMENTS;
#endif

/** Does nothing; the interpreter works from the start. */
OSTRUM_API void CLI_Initialise(void);

/**
 * Makes a command, a group of commands, or the root of a tree.
 *
 * @param parent    the group that it joins, behind its older commands; null for a root
 * @param name      the keyword, cut at 31 characters
 * @param action    carries the command out; null for a node that is only a prefix
 * @param argument  handed to the action
 * @param help      one line, kept by the client; null or empty shows as "<No Help>"
 * @return          the node, which stays the library's
 */
OSTRUM_API CLI_NODE *CLI_Node(CLI_NODE *parent, const char *name, CLI_ACTION action,
                              intptr_t argument, const char *help);

/**
 * Gives a node a qualifier.
 *
 * @param node            the node
 * @param name            the keyword, without its slash, cut at 31 characters
 * @param requirement     CLI_OPTIONAL, CLI_MANDATORY or CLI_PROMPTED
 * @param exclusion_mask  two qualifiers whose masks share a bit may not be given together
 * @param help            one line, kept by the client; null or empty shows as "<No Help>"
 * @return                the qualifier, which stays the library's; it takes a value once it is the
 *                        owner of a parameter
 */
OSTRUM_API CLI_QUALIFIER *CLI_Qualifier(CLI_NODE *node, const char *name, int32_t requirement,
                                        uint32_t exclusion_mask, const char *help);

/**
 * Makes a parameter that takes text.
 *
 * @param owner           a CLI_NODE, or a CLI_QUALIFIER of which the first parameter is the value
 * @param name            shown in help and prompts, cut at 31 characters
 * @param requirement     CLI_OPTIONAL, CLI_MANDATORY or CLI_PROMPTED
 * @param minimum_length  fewest characters accepted
 * @param size            bytes of the text with its terminator: the longest text is size - 1
 * @param help            one line, kept by the client; null or empty shows as "<No Help>"
 * @return                the parameter, which stays the library's
 */
OSTRUM_API CLI_PARAMETER *CLI_CharParameter(void *owner, const char *name, int32_t requirement,
                                            int32_t minimum_length, int32_t size, const char *help);

/**
 * Makes a parameter that takes a decimal number of 1 to 9 characters.
 *
 * @param owner        a CLI_NODE, or a CLI_QUALIFIER of which the first parameter is the value
 * @param name         shown in help and prompts, cut at 31 characters
 * @param requirement  CLI_OPTIONAL, CLI_MANDATORY or CLI_PROMPTED
 * @param lowest       lowest number accepted
 * @param highest      highest number accepted
 * @param help         one line, kept by the client; null or empty shows as "<No Help>"
 * @return             the parameter, which stays the library's
 */
OSTRUM_API CLI_PARAMETER *CLI_IntParameter(void *owner, const char *name, int32_t requirement,
                                           int32_t lowest, int32_t highest, const char *help);

/**
 * Makes a parameter that takes one of several words, which CLI_Choice adds.
 *
 * @param owner        a CLI_NODE, or a CLI_QUALIFIER of which the first parameter is the value
 * @param name         shown in help and prompts, cut at 31 characters
 * @param requirement  CLI_OPTIONAL, CLI_MANDATORY or CLI_PROMPTED
 * @param help         one line, kept by the client; null or empty shows as "<No Help>"
 * @return             the parameter, which stays the library's
 */
OSTRUM_API CLI_PARAMETER *CLI_ChoiceParameter(void *owner, const char *name, int32_t requirement,
                                              const char *help);

/**
 * Adds a word to a choice parameter, which from then on takes texts as long as it.
 *
 * @param parameter  from CLI_ChoiceParameter
 * @param name       the word, cut at 31 characters
 * @param value      what CLI_GetParameter gives for it
 * @param help       one line, kept by the client; null or empty shows as "<No Help>"
 * @return           the choice, which stays the library's
 */
OSTRUM_API CLI_CHOICE *CLI_Choice(CLI_PARAMETER *parameter, const char *name, int32_t value,
                                  const char *help);

/**
 * Makes a parameter that takes several values in one text.
 *
 * @param owner           a CLI_NODE, or a CLI_QUALIFIER of which the first parameter is the value
 * @param name            shown in help and prompts, cut at 31 characters
 * @param requirement     CLI_OPTIONAL, CLI_MANDATORY or CLI_PROMPTED
 * @param minimum_length  fewest characters accepted, of the whole text
 * @param separator       stands between two values
 * @param help            one line, kept by the client; null or empty shows as "<No Help>"
 * @return                the parameter, which stays the library's
 */
OSTRUM_API CLI_PARAMETER *CLI_ListParameter(void *owner, const char *name, int32_t requirement,
                                            int32_t minimum_length, char separator,
                                            const char *help);

/**
 * Takes the next parameter of the current command, in the order of their declaration. With none left
 * it ends the process through SM_FatalError: "CLI_GetParameter : Too many requests".
 *
 * @param value  out: the address of the text (character, list), valid until the node's next command
 *               is parsed, or the number (integer, choice); left alone if the result is 0; may be null
 * @return       1 if the parameter has a value, 0 if it was left empty
 */
OSTRUM_API int32_t CLI_GetParameter(intptr_t *value);

/**
 * Takes the next parameter of the current command and visits the values of its list, in their order.
 * Blanks in front of a value are skipped, those inside it and behind it are its own; empty values are
 * not visited. With no parameter left it ends the process through SM_FatalError:
 * "CLI_AllListParameterValues : Too many requests".
 *
 * @param visitor  called for each value
 * @param context  handed to the visitor
 * @return         0
 */
OSTRUM_API int32_t CLI_AllListParameterValues(CLI_VALUE_VISITOR visitor, void *context);

/**
 * Makes the next CLI_GetParameter start at the first parameter of the current command again.
 *
 * @return  the node of the current command; null before the first one
 */
OSTRUM_API CLI_NODE *CLI_ResetCommand(void);

/**
 * Tells whether the current command was given a qualifier.
 *
 * @param name   its whole name, without the slash, in its own case
 * @param value  out: its value as CLI_GetParameter gives it; left alone if it has none; may be null
 * @return       1 if it was given, else 0
 */
OSTRUM_API int32_t CLI_GetQualifier(const char *name, intptr_t *value);

/**
 * Reads commands and carries them out until the sources run out or CLI_Exit is called. The sources
 * are what CLI_ParseCommandLine and CLI_DoCommandFile left; without any it is the console. A faulty
 * command prints its message, and the next one is read.
 *
 * @param prompt  printed in front of each line
 * @param root    the tree of commands
 * @return        0
 */
OSTRUM_API int32_t CLI_DoCommands(const char *prompt, CLI_NODE *root);

/**
 * Opens a command file, which CLI_DoCommands then reads before it goes on with what it read until now.
 *
 * @param name   path of the file; tried with ".com" behind it as well
 * @param quiet  anything but 0: its lines are not echoed
 * @return       1; 0 if it cannot be opened or is being read already
 */
OSTRUM_API int32_t CLI_DoCommandFile(const char *name, int32_t quiet);

/**
 * Parses the arguments of the program, for CLI_GetParameter and CLI_GetQualifier to read. What stands
 * behind the parameters of the root becomes the only command that CLI_DoCommands carries out.
 *
 * @param count      number of arguments, the program's name among them
 * @param arguments  the arguments, from the program's name on
 * @param root       the tree of the arguments; null takes any
 * @return           1 to go on; 0 if the arguments were in error
 */
OSTRUM_API int32_t CLI_ParseCommandLine(int32_t count, CLI_ARGUMENTS arguments, CLI_NODE *root);

/** Makes CLI_DoCommands end after the current command. */
OSTRUM_API void CLI_Exit(void);

/**
 * Prints help to standard output: the page of a command, or the summary of a prefix, then the same of
 * what stands below it.
 *
 * @param node  the node; may be a root
 */
OSTRUM_API void CLI_Help(const CLI_NODE *node);

OSTRUM_END

#endif
