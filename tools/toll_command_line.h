#pragma once

#include "toll_options.h"

enum TOLL_USAGE {
    TOLL_USAGE_COMPILE,  // the options are complete
    TOLL_USAGE_ANSWERED, // --help or --version was printed
    TOLL_USAGE_WRONG,    // one line of what is wrong was printed
};

/**
 * Reads the command line.
 *
 * @param argument_count  number of arguments, the program's name included
 * @param arguments       the arguments; reordered, options first
 * @param options         out: what they ask for
 * @return                what is left to do
 */
TOLL_USAGE read_options(int argument_count, char **arguments, TOLL_OPTIONS *options);
