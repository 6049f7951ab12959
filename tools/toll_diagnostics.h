#pragma once

#include <cstdint>
#include <string>

#include "toll_options.h"

/**
 * Starts writing diagnostics: from here on every message that the library raises is written to
 * standard error at that moment.
 *
 * @param format  text: the library's own message format; JSON: one object a line
 */
void start_diagnostics(TOLL_FORMAT format);

/**
 * Names the source that is being compiled; messages that belong to no statement are told of it.
 *
 * @param file  as the user named it
 */
void set_source_in_hand(const std::string &file);

/**
 * Notes where a source really lies, for the messages about it.
 *
 * @param name       as it stands in its statements
 * @param host_path  path that was opened
 */
void note_source_path(const char *name, const char *host_path);

/**
 * Raises a problem of the driver itself, about a file rather than a statement.
 *
 * @param file  as the user named it
 * @param text  what is wrong with it
 */
void report_problem(const std::string &file, const std::string &text);

/** Number of errors and fatal errors written so far, those of used modules included. */
int32_t error_count();
