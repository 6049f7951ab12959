#pragma once

#include <string>

#include "toll_options.h"

/**
 * Compiles the sources, with their messages on standard error and their listings on standard output.
 *
 * @param options  what is asked for, without conflict
 * @return         0 if all was done, warnings included; else 1; TLP_CleanUp is left to the caller
 */
int compile_all(const TOLL_OPTIONS &options);

/** Path of the module file that the last of the sources becomes; empty if that is none. */
std::string module_path(const TOLL_OPTIONS &options);
