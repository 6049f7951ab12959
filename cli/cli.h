/*
 * The records of a command tree, and what the parts of the interpreter ask of one another.
 */
#pragma once

#include <ostrum/cli.h>
#include <ostrum/extra.h>

enum {
    CLI_NAME_SIZE = 32,       // bytes of a name with its terminator
    CLI_LIST_VALUE_SIZE = 512 // bytes of one value of a list with its terminator
};

enum CLI_KIND : int32_t { CLI_KIND_CHARACTER, CLI_KIND_INTEGER, CLI_KIND_CHOICE, CLI_KIND_LIST };

struct CLI_CHOICE {
    CLI_CHOICE *next; // in the parameter, in order of creation
    char name[CLI_NAME_SIZE];
    const char *help; // the client's, never empty
    int32_t value;
};

struct CLI_PARAMETER {
    CLI_KIND kind;
    char name[CLI_NAME_SIZE];
    const char *help;        // the client's, never empty
    int32_t requirement;     // CLI_OPTIONAL and its like
    int32_t minimum_length;  // fewest characters accepted
    int32_t size;            // bytes of the text with its terminator; 0 for a list until first used
    char *text;              // as typed, size bytes; null until first used; owned
    int32_t number;          // the integer, or the value of the choice
    CLI_CHOICE *choices;     // CLI_KIND_CHOICE
    CLI_CHOICE *last_choice; // end of choices
    char separator;          // CLI_KIND_LIST
    int32_t lowest, highest; // CLI_KIND_INTEGER
    const char *file_pattern; // the files that it names, the client's; null if it names none
    CLI_PARAMETER *next;      // of the same owner, in order of creation
};

/** What nodes and qualifiers begin with, so that either may own parameters. */
struct CLI_PARAMETER_LIST {
    CLI_PARAMETER *first, *last;
};

struct CLI_QUALIFIER {
    CLI_PARAMETER_LIST value; // only the first describes the value; empty: it takes none
    CLI_QUALIFIER *next;      // of the same node, in order of creation
    CLI_NODE *owner;
    char name[CLI_NAME_SIZE];
    const char *help;    // the client's, never empty
    int32_t requirement; // CLI_OPTIONAL and its like
    int32_t seen;        // 1: given on the current command
    uint32_t exclusion_mask;
};

struct CLI_NODE {
    CLI_PARAMETER_LIST parameters; // in order of creation
    CLI_NODE *next;                // sibling
    CLI_NODE *parent;              // null at a root
    char name[CLI_NAME_SIZE];
    const char *help; // the client's, never empty
    CLI_NODE *children, *last_child;
    CLI_QUALIFIER *qualifiers, *last_qualifier;
    CLI_ACTION action; // null: only a prefix
    intptr_t argument;
    CLI_NODE *older_root; // at a root: the one made before it
};

/**
 * Makes a command the current one; its values are read from the first parameter on.
 *
 * @param node  the node; null for none
 */
void CLI_SetCommand(CLI_NODE *node);

/**
 * Prints the help of a parameter, of several lines.
 *
 * @param parameter  the parameter
 * @param label      what its first line begins with, nine characters
 */
void CLI_ParameterHelp(const CLI_PARAMETER *parameter, const char *label);

/** Tells whether commands are being read: an input source is open. */
bool CLI_HasSource();
