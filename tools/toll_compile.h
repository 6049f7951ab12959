#pragma once

#include "toll_options.h"

/**
 * Compiles the sources, with their messages on standard error and their listings on standard output.
 *
 * @param options  what is asked for, without conflict
 * @return         0 if all was done, warnings included; else 1
 */
int compile_all(const TOLL_OPTIONS &options);
