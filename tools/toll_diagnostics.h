#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "toll_options.h"

/**
 * Starts writing diagnostics: from here on every message that the library raises is written to
 * standard error at that moment, or kept for the one log that finish_diagnostics writes.
 *
 * @param format  form of the messages
 * @param color   whether text is marked with colours; forms for programs never are
 */
void start_diagnostics(TOLL_FORMAT format, TOLL_COLOR color);

/** Writes the log of all messages, if the format is one log. @param is_done all sources compiled */
void finish_diagnostics(bool is_done);

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

/** Takes the messages kept for the log out of this process, for another that writes it. */
std::vector<std::string> take_kept_messages();

/** Adds what take_kept_messages gave in the process of a source. */
void keep_messages(const std::vector<std::string> &messages);
