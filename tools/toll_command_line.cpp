// The command line of toll.

#include "toll_command_line.h"

#include <cstdio>
#include <getopt.h>
#include <string>
#include <vector>

namespace
{

// What getopt_long gives for a long option: the row of the table, above every letter.
constexpr int first_row = 256;
constexpr int code_help = 1000;
constexpr int code_version = 1001;

bool wrong(const std::string &problem)
{
    fprintf(stderr, "toll: %s; try 'toll --help'\n", problem.c_str());
    return false;
}

std::string synopsis(const TOLL_OPTION &option)
{
    std::string text = "    ";
    if (option.letter != 0) text = std::string{ '-' } + option.letter + ", ";
    text += std::string{ "--" } + option.name;
    if (option.argument == TOLL_ARGUMENT_NEEDED) text += std::string{ '=' } + option.value;
    if (option.argument == TOLL_ARGUMENT_OPTIONAL) text += std::string{ "[=" } + option.value + "]";
    return text;
}

void print_row(const char *option, const char *meaning)
{
    printf("  %-26s %s\n", option, meaning);
}

void print_help()
{
    printf("Usage: toll [OPTION]... FILE.tl...\n"
           "Compiles each TOLL source into a module file.\n\n");
    for (const TOLL_OPTION &option : option_rows())
        print_row(synopsis(option).c_str(), option.meaning);
    print_row("-MD [-MF FILE]", "the same as --dependencies, as C compilers have it");
    print_row("    --help", "print this and exit");
    print_row("    --version", "print the version and exit");
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
    std::string letters = ":M:"; // a missing argument is told apart from an unknown option
    for (const TOLL_OPTION &option : option_rows()) {
        if (option.letter == 0) continue;
        letters += option.letter;
        if (option.argument == TOLL_ARGUMENT_NEEDED) letters += ':';
    }
    return letters;
}

std::vector<struct option> long_options()
{
    constexpr int arguments[] = { no_argument, required_argument, optional_argument };
    std::vector<struct option> rows;
    for (const TOLL_OPTION &option : option_rows()) {
        const int code = first_row + static_cast<int>(rows.size());
        rows.push_back({ option.name, arguments[option.argument], nullptr, code });
    }
    rows.push_back({ "help", no_argument, nullptr, code_help });
    rows.push_back({ "version", no_argument, nullptr, code_version });
    rows.push_back({ nullptr, 0, nullptr, 0 });
    return rows;
}

const TOLL_OPTION *find_option(int code)
{
    for (const TOLL_OPTION &option : option_rows()) {
        if (option.letter == code) return &option;
    }
    const auto row = static_cast<size_t>(code - first_row);
    return code >= first_row && row < option_rows().size() ? &option_rows()[row] : nullptr;
}

bool wrong_option(int code, char **arguments)
{
    // getopt names a letter in optopt; a long option is the argument just passed.
    const std::string letter{ '-', static_cast<char>(optopt) };
    const bool is_letter = optopt > 0 && optopt < first_row;
    const std::string name = is_letter ? letter : arguments[optind - 1];
    return wrong((code == ':' ? "argument missing for '" : "bad option '") + name + "'");
}

/** -MD and -MF FILE: one letter to getopt, which gives what follows it in the same argument. */
bool set_dependencies(TOLL_OPTIONS *options, const std::string &value, const char *next)
{
    if (value == "D") {
        options->lists_dependencies = true;
        return true;
    }
    if (value[0] != 'F') return wrong("bad option '-M" + value + "'");
    if (value.size() == 1 && next != nullptr) optind++;
    options->dependency_output = value.size() > 1 ? value.substr(1) : next == nullptr ? "" : next;
    return !options->dependency_output.empty() || wrong("argument missing for '-MF'");
}

bool set_option(TOLL_OPTIONS *options, int code, int argument_count, char **arguments)
{
    if (code == 'M')
        return set_dependencies(options, optarg,
                                optind < argument_count ? arguments[optind] : nullptr);
    const TOLL_OPTION *option = find_option(code);
    if (option == nullptr) return wrong_option(code, arguments);
    return option->set(options, optarg) || wrong(options->problem);
}

} // namespace

TOLL_USAGE read_options(int argument_count, char **arguments, TOLL_OPTIONS *options)
{
    const std::string letters = short_options();
    const std::vector<struct option> names = long_options();
    opterr = 0;
    for (int code; (code = getopt_long(argument_count, arguments, letters.c_str(), names.data(),
                                       nullptr)) != -1;) {
        if (code == code_help) {
            print_help();
            return TOLL_USAGE_ANSWERED;
        }
        if (code == code_version) {
            printf("toll %s\n", OSTRUM_VERSION);
            return TOLL_USAGE_ANSWERED;
        }
        if (!set_option(options, code, argument_count, arguments)) return TOLL_USAGE_WRONG;
    }
    options->sources.assign(arguments + optind, arguments + argument_count);
    const char *conflict = find_conflict(*options);
    if (conflict == nullptr) return TOLL_USAGE_COMPILE;
    wrong(conflict);
    return TOLL_USAGE_WRONG;
}
