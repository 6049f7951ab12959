// The interactive tool: one tree of commands over everything that the library does.
#pragma once

#include <string>
#include <vector>

#include <ostrum.h>

/** What commands are about unless they name something else; SET changes it, COMPILE too. */
struct OSTRUM_SETTINGS {
    std::string module;  // path of the module in hand; empty: none
    std::string source;  // path of the source in hand; empty: none
    std::string include; // directories of used modules, separated by ';', before TollInclude
    std::string define;  // names for #IFDEF, separated by ','
};

extern OSTRUM_SETTINGS ostrum_settings;

/** Tells what is wrong with a command, which counts as failed from then on. */
void ostrum_complain(const std::string &problem);

struct TOLL_OPTIONS;

/** Adds what SET said to the options of a compilation; false if the names for #IFDEF cannot be used. */
bool ostrum_add_settings(TOLL_OPTIONS *options);

/** Paths that a command takes, in bytes with the terminator: what the library takes at most. */
constexpr int32_t ostrum_path_size = 120;

/** COMPILE, with the compiler's options as qualifiers. */
CLI_NODE *ostrum_add_compile(CLI_NODE *root);

/** LIST, with the options of pkob as qualifiers. */
CLI_NODE *ostrum_add_list(CLI_NODE *root);

/** SHOW and what can be shown. */
CLI_NODE *ostrum_add_show(CLI_NODE *root);

/** CONVERT: a quantity in all its units. */
CLI_NODE *ostrum_add_convert(CLI_NODE *root);

/** SEARCH: names in module files. */
CLI_NODE *ostrum_add_search(CLI_NODE *root);

/** SET and what can be set. */
CLI_NODE *ostrum_add_set(CLI_NODE *root);

/** The words of a list, cut at a separator; empty ones are left out. */
std::vector<std::string> ostrum_words(const std::string &list, char separator);

/**
 * Reads lines with editing, a history, and completion of commands, qualifiers and file names by Tab.
 * Does nothing unless the tool was built with such lines and standard input is a terminal.
 *
 * @param root  the tree of commands
 */
void ostrum_edit_lines(CLI_NODE *root);
