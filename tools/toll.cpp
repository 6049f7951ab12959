// toll: compiles TOLL sources into module files.

#include <cstdio>

#include <ostrum.h>

#include "toll_command_line.h"
#include "toll_compile.h"

OSTRUM_VERSION_BLOCK("toll", OSTRUM_VERSION, OSTRUM_VERSION, "MIT license");

int main(int argument_count, char **arguments)
{
    TOLL_OPTIONS options;
    switch (read_options(argument_count, arguments, &options)) {
    case TOLL_USAGE_ANSWERED:
        return 0;
    case TOLL_USAGE_WRONG:
        return 2;
    case TOLL_USAGE_COMPILE:
        break;
    }
    const int status = compile_all(options);
    TLP_CleanUp();
    // Listings that could not be written are an output that could not be written.
    return fflush(stdout) == 0 ? status : 1;
}
