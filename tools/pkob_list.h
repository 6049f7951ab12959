// What can be asked of module files, by a command line or by commands.
#pragma once

#include "pkob.h"

#include <span>

/** An option of the lister. */
struct PKOB_OPTION {
    char letter; // 0: none
    const char *name;
    const char *value; // what its value is called; null: it takes none
    bool is_value_optional;
    uint32_t parts; // that it asks for
    const char *meaning;
    void (*set)(PKOB_OPTIONS *options, const char *value); // null: the parts are all
};

/** All options, in the order of the help. */
std::span<const PKOB_OPTION> pkob_option_rows();

/** Takes an option; its value, null if none was given, is kept by the caller. */
void pkob_set_option(PKOB_OPTIONS *options, const PKOB_OPTION &option, const char *value);

/** Completes options that have all been set; gives what is wrong with them together, or null. */
const char *pkob_complete_options(PKOB_OPTIONS *options);

/**
 * Lists module files on standard output, and what is wrong with them on standard error; several in
 * JSON are one array of those that could be listed.
 *
 * @return  0, or 1 if a file could not be listed, lacks what was asked for, or is damaged
 */
int pkob_list(const PKOB_OPTIONS &options, const std::vector<const char *> &file_names);
