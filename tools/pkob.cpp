// pkob lists module files.

#include "pkob_list.h"

#include <cstring>
#include <getopt.h>

OSTRUM_VERSION_BLOCK("pkob", OSTRUM_VERSION, OSTRUM_VERSION, "MIT license");

enum { STATUS_DONE, STATUS_FAILED, STATUS_USAGE };

enum { // what getopt_long gives, above every letter
    CODE_HELP = 256,
    CODE_VERSION,
    CODE_FIRST_ROW, // of the table of options
};

/** An option's name and value as --help shows them. */
static std::string option_text(const PKOB_OPTION &option)
{
    std::string text = "--" + std::string(option.name);
    if (option.value == nullptr) return text;
    std::string value = "=" + std::string(option.value);
    return text + (option.is_value_optional ? "[" + value + "]" : value);
}

static void print_row(char letter, const std::string &option, const char *meaning)
{
    if (letter != 0) printf("  -%c, %-18s %s\n", letter, option.c_str(), meaning);
    if (letter == 0) printf("      %-18s %s\n", option.c_str(), meaning);
}

static void print_help()
{
    printf("Usage: pkob [OPTION]... FILE.kob...\n"
           "Lists module files. Without options: an overview of each.\n\n");
    for (const PKOB_OPTION &option : pkob_option_rows())
        print_row(option.letter, option_text(option), option.meaning);
    print_row(0, "--help", "this help");
    print_row(0, "--version", "the version of pkob");
    printf(
        "\nAddresses are offsets into the image. Bytes of names that are no printable ASCII are\n"
        "shown as \\xNN, in JSON as the character of that number.\n"
        "Status: 0 done, 1 a file cannot be read, lacks what was asked for or has damaged "
        "records,\n"
        "2 wrong usage.\n");
}

/** Gives getopt_long its two forms of the table. */
static void describe_options(std::string *letters, std::vector<option> *long_options)
{
    *letters = ":"; // wrong options are reported here
    for (const PKOB_OPTION &row : pkob_option_rows()) {
        int argument = row.value == nullptr    ? no_argument
                       : row.is_value_optional ? optional_argument
                                               : required_argument;
        int code = CODE_FIRST_ROW + (int)long_options->size();
        long_options->push_back({ row.name, argument, nullptr, code });
        if (row.letter == 0) continue;
        *letters += row.letter;
        if (row.value != nullptr) *letters += ':';
    }
    long_options->push_back({ "help", no_argument, nullptr, CODE_HELP });
    long_options->push_back({ "version", no_argument, nullptr, CODE_VERSION });
    long_options->push_back({ nullptr, 0, nullptr, 0 });
}

static int wrong_usage(const char *problem, const char *word)
{
    fprintf(stderr, "pkob: %s%s; try 'pkob --help'\n", problem, word);
    return STATUS_USAGE;
}

/** The option at fault: a letter, which may stand among others, or a whole word. */
static std::string wrong_word(char **arguments)
{
    bool is_letter = optopt > 0 && optopt < CODE_HELP;
    return is_letter ? std::string("-") + (char)optopt : arguments[optind - 1];
}

static void set_option(PKOB_OPTIONS *options, int code)
{
    int place = CODE_FIRST_ROW;
    for (const PKOB_OPTION &row : pkob_option_rows()) {
        if (code == place++ || (code == row.letter && code != 0))
            pkob_set_option(options, row, optarg);
    }
}

/** Reads the command line; -1 to go on, else the status to end with. */
static int read_options(PKOB_OPTIONS *options, int count, char **arguments)
{
    std::string letters;
    std::vector<option> long_options;
    describe_options(&letters, &long_options);
    opterr = 0;
    for (;;) {
        int code = getopt_long(count, arguments, letters.c_str(), long_options.data(), nullptr);
        if (code == -1) break;
        if (code == '?') return wrong_usage("wrong option ", wrong_word(arguments).c_str());
        if (code == ':') return wrong_usage("value missing for ", wrong_word(arguments).c_str());
        if (code == CODE_HELP) {
            print_help();
            return STATUS_DONE;
        }
        if (code == CODE_VERSION) {
            printf("pkob %s\n", OSTRUM_VERSION);
            return STATUS_DONE;
        }
        set_option(options, code);
    }
    if (optind >= count) return wrong_usage("no file given", "");
    const char *conflict = pkob_complete_options(options);
    return conflict == nullptr ? -1 : wrong_usage(conflict, "");
}

int main(int count, char **arguments)
{
    PKOB_OPTIONS options = {};
    int status = read_options(&options, count, arguments);
    if (status >= 0) return status;
    KOB_Initialise();
    EEP_Initialise();
    EUC_Initialise();
    status = pkob_list(options, { arguments + optind, arguments + count });
    if (fflush(stdout) == 0 && ferror(stdout) == 0) return status;
    fprintf(stderr, "pkob: standard output: cannot be written\n");
    return STATUS_FAILED;
}
