#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

enum TOLL_FORMAT {
    TOLL_FORMAT_TEXT,  // the library's own form
    TOLL_FORMAT_JSON,  // one object a line
    TOLL_FORMAT_GCC,   // as C compilers do, for editors
    TOLL_FORMAT_SARIF, // one log of the whole call, for services
    TOLL_FORMAT_COUNT,
};

enum TOLL_COLOR { TOLL_COLOR_AUTO, TOLL_COLOR_ALWAYS, TOLL_COLOR_NEVER };

/** What a module is turned into; bits of a set. */
enum TOLL_TARGET : uint32_t {
    TOLL_TARGET_KOB = 1,  // module file
    TOLL_TARGET_C = 2,    // header and C file
    TOLL_TARGET_JAVA = 4, // Java class
};

/** What a command line of toll asks for. */
struct TOLL_OPTIONS {
    std::string output;                     // of -o; empty: derived from the source
    std::vector<std::string> include_paths; // of -I, in order
    std::string defines;                    // of -D, joined by commas
    int32_t define_count = 0;
    uint32_t module_flags = 0;  // flag word of TLP_ReadModule2
    uint32_t compile_flags = 0; // flag word of TLCG_GenerateKOBCode
    uint32_t targets = 0;       // of --target; 0: the module file
    bool print_scopes = false;
    bool check_only = false;
    bool draw_trees = false;
    std::string graph_output;        // of --tree-graph; empty: standard output
    bool lists_dependencies = false; // of -MD
    std::string dependency_output;   // of -MF; empty: beside the output
    TOLL_FORMAT format = TOLL_FORMAT_TEXT;
    TOLL_COLOR color = TOLL_COLOR_AUTO;
    size_t jobs = 1; // sources compiled at a time
    std::vector<std::string> sources;
};

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
