// The command line of toll: one table drives the parsing and the help.

#include "toll_options.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <getopt.h>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "toll_output.h"

namespace
{

constexpr int32_t max_define_count = 10; // slots for names that a module has

// Words of --target.
struct TARGET_WORD {
    const char *word;
    TOLL_TARGET target;
};

constexpr TARGET_WORD target_words[] = {
    { "kob", TOLL_TARGET_KOB },
    { "c", TOLL_TARGET_C },
    { "java", TOLL_TARGET_JAVA },
};

// Words of --diagnostics and --color, in the order of their enumerations.
constexpr const char *format_words[] = { "text", "json", "gcc", "sarif" };
constexpr const char *color_words[] = { "auto", "always", "never" };
static_assert(std::size(format_words) == TOLL_FORMAT_COUNT, "one word for each format");

enum OPTION_CODE {
    OPTION_PRIVATE_SYMBOLS = 256, // above every character that is an option
    OPTION_STRICT,
    OPTION_WARN_ASSIGNMENT,
    OPTION_NO_ERROR_LIMIT,
    OPTION_PROGRESS,
    OPTION_LIST_SECTIONS,
    OPTION_PRINT_SCOPES,
    OPTION_PRINT_BLOCKS,
    OPTION_TREE_GRAPH,
    OPTION_DIAGNOSTICS,
    OPTION_COLOR,
    OPTION_TARGET,
    OPTION_HELP,
    OPTION_VERSION,
};

/** A setter gives false after it has printed what is wrong with its value. */
struct OPTION {
    int code;              // of getopt_long; the letter where it is one
    const char *long_name; // null: only the letter
    int argument;          // no_argument, required_argument or optional_argument
    const char *synopsis;  // for the help
    const char *meaning;
    bool (*set)(TOLL_OPTIONS *options, const char *value);
};

// The arguments that getopt walks through, for an option that takes the next one by itself.
struct ARGUMENTS {
    int count;
    char **values;
} all_arguments;

/** Takes the argument behind the option in hand; null if there is none. */
const char *next_argument()
{
    return optind < all_arguments.count ? all_arguments.values[optind++] : nullptr;
}

bool wrong(const char *problem, const char *value)
{
    fprintf(stderr, "toll: %s '%s'; try 'toll --help'\n", problem, value);
    return false;
}

bool set_output(TOLL_OPTIONS *options, const char *value)
{
    if (*value == 0) return wrong("no output file in", "-o");
    options->output = value;
    return true;
}

bool add_target(TOLL_OPTIONS *options, const char *value)
{
    for (const TARGET_WORD &row : target_words) {
        if (strcmp(value, row.word) != 0) continue;
        options->targets |= row.target;
        return true;
    }
    return wrong("unknown target", value);
}

bool add_include_path(TOLL_OPTIONS *options, const char *value)
{
    // The search list that the directory becomes part of is cut at semicolons.
    if (*value == 0 || strchr(value, ';') != nullptr) return wrong("bad search directory", value);
    options->include_paths.emplace_back(value);
    return true;
}

bool add_define(TOLL_OPTIONS *options, const char *value)
{
    // The names travel as one text, cut at commas, with all up to an equals sign dropped.
    if (*value == 0 || strpbrk(value, "=,") != nullptr) return wrong("bad name to define", value);
    if (options->define_count == max_define_count) return wrong("too many names defined at", value);
    if (options->define_count++ > 0) options->defines += ',';
    options->defines += value;
    return true;
}

bool set_debug(TOLL_OPTIONS *options, const char *)
{
    options->compile_flags |= 0x20;
    return true;
}

bool set_line_codes(TOLL_OPTIONS *options, const char *)
{
    options->compile_flags |= 0x02;
    return true;
}

bool set_check_bounds(TOLL_OPTIONS *options, const char *)
{
    options->compile_flags |= 0x200;
    return true;
}

bool set_private_symbols(TOLL_OPTIONS *options, const char *)
{
    options->module_flags |= 0x0004;
    return true;
}

bool set_strict(TOLL_OPTIONS *options, const char *)
{
    options->module_flags |= 0x0400;
    return true;
}

bool set_warn_assignment(TOLL_OPTIONS *options, const char *)
{
    options->module_flags |= 0x4000;
    return true;
}

bool set_no_error_limit(TOLL_OPTIONS *options, const char *)
{
    options->module_flags |= 0x0800;
    return true;
}

bool set_progress(TOLL_OPTIONS *options, const char *)
{
    options->module_flags |= 0x0010;
    options->compile_flags |= 0x10;
    return true;
}

bool set_list_sections(TOLL_OPTIONS *options, const char *value)
{
    if (value != nullptr && strcmp(value, "full") != 0) return wrong("bad section listing", value);
    options->module_flags |= value != nullptr ? 0x3000 : 0x1000;
    return true;
}

bool set_print_scopes(TOLL_OPTIONS *options, const char *)
{
    options->print_scopes = true;
    return true;
}

bool set_print_blocks(TOLL_OPTIONS *options, const char *)
{
    options->compile_flags |= 0x08;
    return true;
}

bool set_check_only(TOLL_OPTIONS *options, const char *)
{
    options->check_only = true;
    return true;
}

bool set_tree_graph(TOLL_OPTIONS *options, const char *value)
{
    if (value != nullptr && *value == 0) return wrong("no output file in", "--tree-graph");
    options->draw_trees = true;
    options->graph_output = value != nullptr ? value : "";
    return true;
}

/** Place of a word among those of an option; -1 if it is none of them. */
int find_word(std::span<const char *const> words, const char *value)
{
    for (size_t at = 0; at < words.size(); at++) {
        if (strcmp(words[at], value) == 0) return static_cast<int>(at);
    }
    return -1;
}

bool set_diagnostics(TOLL_OPTIONS *options, const char *value)
{
    const int format = find_word(format_words, value);
    if (format < 0) return wrong("bad format of diagnostics", value);
    options->format = static_cast<TOLL_FORMAT>(format);
    return true;
}

bool set_color(TOLL_OPTIONS *options, const char *value)
{
    const int color = find_word(color_words, value);
    if (color < 0) return wrong("bad use of colour", value);
    options->color = static_cast<TOLL_COLOR>(color);
    return true;
}

/** -MD and -MF are one letter to getopt: what follows it comes here. */
bool set_dependencies(TOLL_OPTIONS *options, const char *value)
{
    if (strcmp(value, "D") == 0) {
        options->lists_dependencies = true;
        return true;
    }
    if (value[0] != 'F') return wrong("bad option", (std::string{ "-M" } + value).c_str());
    // -MFFILE, or the next argument.
    const char *file = value[1] != 0 ? value + 1 : next_argument();
    if (file == nullptr || *file == 0) return wrong("argument missing for", "-MF");
    options->dependency_output = file;
    return true;
}

bool set_jobs(TOLL_OPTIONS *options, const char *value)
{
    constexpr long most = 1024;
    char *end = nullptr;
    const long count = strtol(value, &end, 10);
    if (end == value || *end != 0 || count < 1 || count > most)
        return wrong("bad number of jobs", value);
    options->jobs = static_cast<size_t>(count);
    return true;
}

constexpr OPTION option_table[] = {
    { .code = 'o',
      .long_name = "output",
      .argument = required_argument,
      .synopsis = "-o, --output=FILE",
      .meaning = "output file or its directory; default: base name of the source + \".kob\"",
      .set = set_output },
    { .code = OPTION_TARGET,
      .long_name = "target",
      .argument = required_argument,
      .synopsis = "    --target=kob|c|java",
      .meaning = "write a module file (default), C or Java source; may be repeated for several",
      .set = add_target },
    { .code = 'I',
      .long_name = nullptr,
      .argument = required_argument,
      .synopsis = "-I DIR",
      .meaning = "search DIR for used modules, before TollInclude",
      .set = add_include_path },
    { .code = 'D',
      .long_name = nullptr,
      .argument = required_argument,
      .synopsis = "-D NAME",
      .meaning = "define NAME for #IFDEF; ten names at most",
      .set = add_define },
    { .code = 'g',
      .long_name = nullptr,
      .argument = no_argument,
      .synopsis = "-g",
      .meaning = "write debug frames",
      .set = set_debug },
    { .code = 'l',
      .long_name = "line-codes",
      .argument = no_argument,
      .synopsis = "-l, --line-codes",
      .meaning = "write LINE codes",
      .set = set_line_codes },
    { .code = 'b',
      .long_name = "check-bounds",
      .argument = no_argument,
      .synopsis = "-b, --check-bounds",
      .meaning = "write CHECK codes for array bounds",
      .set = set_check_bounds },
    { .code = OPTION_PRIVATE_SYMBOLS,
      .long_name = "private-symbols",
      .argument = no_argument,
      .synopsis = "    --private-symbols",
      .meaning = "write symbols for private functions too",
      .set = set_private_symbols },
    { .code = OPTION_STRICT,
      .long_name = "strict",
      .argument = no_argument,
      .synopsis = "    --strict",
      .meaning = "give every strict warning, every time",
      .set = set_strict },
    { .code = OPTION_WARN_ASSIGNMENT,
      .long_name = "warn-assignment",
      .argument = no_argument,
      .synopsis = "    --warn-assignment",
      .meaning = "report assignments that look like comparisons",
      .set = set_warn_assignment },
    { .code = OPTION_NO_ERROR_LIMIT,
      .long_name = "no-error-limit",
      .argument = no_argument,
      .synopsis = "    --no-error-limit",
      .meaning = "go on after 50 errors",
      .set = set_no_error_limit },
    { .code = OPTION_PROGRESS,
      .long_name = "progress",
      .argument = no_argument,
      .synopsis = "    --progress",
      .meaning = "tell what is being read and generated",
      .set = set_progress },
    { .code = OPTION_LIST_SECTIONS,
      .long_name = "list-sections",
      .argument = optional_argument,
      .synopsis = "    --list-sections[=full]",
      .meaning = "list the sections, with their statements if full",
      .set = set_list_sections },
    { .code = OPTION_PRINT_SCOPES,
      .long_name = "print-scopes",
      .argument = no_argument,
      .synopsis = "    --print-scopes",
      .meaning = "print the names declared in each scope",
      .set = set_print_scopes },
    { .code = OPTION_PRINT_BLOCKS,
      .long_name = "print-blocks",
      .argument = no_argument,
      .synopsis = "    --print-blocks",
      .meaning = "print the statements of each function generated",
      .set = set_print_blocks },
    { .code = 'n',
      .long_name = "no-output",
      .argument = no_argument,
      .synopsis = "-n, --no-output",
      .meaning = "check only",
      .set = set_check_only },
    { .code = OPTION_TREE_GRAPH,
      .long_name = "tree-graph",
      .argument = optional_argument,
      .synopsis = "    --tree-graph[=FILE]",
      .meaning = "write the trees of all sources as DOT graphs to FILE; default: standard output",
      .set = set_tree_graph },
    { .code = 'M',
      .long_name = nullptr,
      .argument = required_argument,
      .synopsis = "-MD [-MF FILE]",
      .meaning = "list every source read as a make dependency in FILE; default: output + \".d\"",
      .set = set_dependencies },
    { .code = 'j',
      .long_name = "jobs",
      .argument = required_argument,
      .synopsis = "-j, --jobs=N",
      .meaning = "compile N sources at a time",
      .set = set_jobs },
    { .code = OPTION_DIAGNOSTICS,
      .long_name = "diagnostics",
      .argument = required_argument,
      .synopsis = "    --diagnostics=FORMAT",
      .meaning = "form of the messages: text (default), gcc, json or sarif",
      .set = set_diagnostics },
    { .code = OPTION_COLOR,
      .long_name = "color",
      .argument = required_argument,
      .synopsis = "    --color=WHEN",
      .meaning = "mark severities with colours: auto (on a terminal; default), always or never",
      .set = set_color },
    { .code = OPTION_HELP,
      .long_name = "help",
      .argument = no_argument,
      .synopsis = "    --help",
      .meaning = "print this and exit",
      .set = nullptr },
    { .code = OPTION_VERSION,
      .long_name = "version",
      .argument = no_argument,
      .synopsis = "    --version",
      .meaning = "print the version and exit",
      .set = nullptr },
};

void print_help()
{
    printf("Usage: toll [OPTION]... FILE.tl...\n"
           "Compiles each TOLL source into a module file.\n\n");
    for (const OPTION &option : option_table) {
        printf("  %-26s %s\n", option.synopsis, option.meaning);
    }
    printf(
        "\n-I and -D may be repeated. Used modules are also looked for in the directories of\n"
        "TollInclude, separated by ';'.\n\n"
        "--target=c writes NAME.h and NAME.c, --target=java NAME.java; -o then gives NAME, and an\n"
        "extension of it is dropped.\n\n"
        "--tree-graph writes one digraph for each tree once every source has compiled, all into\n"
        "one file; with -n nothing else is written.\n\n"
        "--diagnostics=gcc gives FILE:LINE:COLUMN: SEVERITY: TEXT, json one object a line, sarif "
        "one\n"
        "log (SARIF 2.1.0) at the end, all on standard error. NO_COLOR in the environment refuses\n"
        "colours unless --color=always.\n\n"
        "Exit status: 0 compiled, warnings included; 1 errors in a source or an output that\n"
        "could not be written; 2 wrong usage.\n");
}

std::string short_options()
{
    std::string letters = ":"; // a missing argument is told apart from an unknown option
    for (const OPTION &option : option_table) {
        if (option.code >= 256) continue;
        letters += static_cast<char>(option.code);
        if (option.argument == required_argument) letters += ':';
    }
    return letters;
}

std::vector<struct option> long_options()
{
    std::vector<struct option> rows;
    for (const OPTION &option : option_table) {
        if (option.long_name != nullptr)
            rows.push_back({ option.long_name, option.argument, nullptr, option.code });
    }
    rows.push_back({ nullptr, 0, nullptr, 0 });
    return rows;
}

const OPTION *find_option(int code)
{
    for (const OPTION &option : option_table) {
        if (option.code == code) return &option;
    }
    return nullptr;
}

TOLL_USAGE wrong_option(int code, char **arguments)
{
    // getopt names a letter in optopt; a long option is the argument just passed.
    const std::string letter{ '-', static_cast<char>(optopt) };
    const bool is_letter = optopt > 0 && optopt < 256;
    const char *name = is_letter ? letter.c_str() : arguments[optind - 1];
    wrong(code == ':' ? "argument missing for" : "bad option", name);
    return TOLL_USAGE_WRONG;
}

/** What is wrong with the options together, if anything. */
const char *find_conflict(const TOLL_OPTIONS &options)
{
    const bool has_several = options.sources.size() > 1;
    if (options.sources.empty()) return "no source file";
    if (has_several && !options.output.empty() && !is_directory(options.output))
        return "-o goes with one source file, or names a directory";
    if (!options.dependency_output.empty() && !options.lists_dependencies)
        return "-MF goes with -MD";
    if (has_several && !options.dependency_output.empty()) return "-MF goes with one source file";
    return nullptr;
}

TOLL_USAGE check_options(const TOLL_OPTIONS &options)
{
    const char *conflict = find_conflict(options);
    if (conflict == nullptr) return TOLL_USAGE_COMPILE;
    fprintf(stderr, "toll: %s; try 'toll --help'\n", conflict);
    return TOLL_USAGE_WRONG;
}

} // namespace

TOLL_USAGE read_options(int argument_count, char **arguments, TOLL_OPTIONS *options)
{
    const std::string letters = short_options();
    const std::vector<struct option> names = long_options();
    opterr = 0;
    all_arguments = { argument_count, arguments };
    for (int code; (code = getopt_long(argument_count, arguments, letters.c_str(), names.data(),
                                       nullptr)) != -1;) {
        if (code == OPTION_HELP) {
            print_help();
            return TOLL_USAGE_ANSWERED;
        }
        if (code == OPTION_VERSION) {
            printf("toll %s\n", OSTRUM_VERSION);
            return TOLL_USAGE_ANSWERED;
        }
        const OPTION *option = find_option(code);
        if (option == nullptr) return wrong_option(code, arguments);
        if (!option->set(options, optarg)) return TOLL_USAGE_WRONG;
    }
    options->sources.assign(arguments + optind, arguments + argument_count);
    return check_options(*options);
}
