#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
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
    bool outlines_trees = false;     // in words, not as graphs
    std::string tree;                // the one wanted; empty: all
    std::string graph_output;        // of --tree-graph; empty: standard output
    bool lists_dependencies = false; // of -MD
    std::string dependency_output;   // of -MF; empty: beside the output
    TOLL_FORMAT format = TOLL_FORMAT_TEXT;
    TOLL_COLOR color = TOLL_COLOR_AUTO;
    size_t jobs = 1; // sources compiled at a time
    std::vector<std::string> sources;
    std::string problem; // of the option last set, if it was wrong
};

enum TOLL_ARGUMENT { TOLL_ARGUMENT_NONE, TOLL_ARGUMENT_NEEDED, TOLL_ARGUMENT_OPTIONAL };

/** An option of the compiler, on a command line or as a qualifier. */
struct TOLL_OPTION {
    char letter; // 0: none
    const char *name;
    TOLL_ARGUMENT argument;
    const char *value;                  // the argument, as help calls it
    std::span<const char *const> words; // that the argument is one of; none: any text
    bool repeats;                       // each time it adds
    const char *meaning;
    bool (*set)(TOLL_OPTIONS *options, const char *value); // false: options->problem tells why
};

/** All options, in the order of the help. */
std::span<const TOLL_OPTION> option_rows();

/** What is wrong with the options together; null: nothing. */
const char *find_conflict(const TOLL_OPTIONS &options);
