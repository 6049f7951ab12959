// pkob lists module files.

#include "pkob.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>
#include <getopt.h>

OSTRUM_VERSION_BLOCK("pkob", OSTRUM_VERSION, OSTRUM_VERSION, "MIT license");

enum { STATUS_DONE, STATUS_FAILED, STATUS_USAGE };

enum { // above every character that is an option
    OPTION_JSON = 256,
    OPTION_DATA,
    OPTION_SCREENS,
    OPTION_SVG,
    OPTION_HELP,
    OPTION_VERSION,
};

struct OPTION {
    int code; // of getopt_long; the letter where it is one
    const char *long_name;
    const char *value; // name of its value, in brackets if it may lack; null: it takes none
    uint32_t parts;    // that it asks for
    const char *meaning;
};

static constexpr OPTION option_table[] = {
    { .code = 'H',
      .long_name = "header",
      .value = nullptr,
      .parts = PKOB_HEADER,
      .meaning = "the header" },
    { .code = 't',
      .long_name = "static-offsets",
      .value = nullptr,
      .parts = PKOB_STATIC_OFFSETS,
      .meaning = "places in the code that refer to static data" },
    { .code = 'y',
      .long_name = "symbols",
      .value = nullptr,
      .parts = PKOB_SYMBOLS,
      .meaning = "the symbols with value, class and type" },
    { .code = 'f',
      .long_name = "frames",
      .value = nullptr,
      .parts = PKOB_FRAMES,
      .meaning = "the debug frames with their entries" },
    { .code = 'c',
      .long_name = "code",
      .value = nullptr,
      .parts = PKOB_CODE,
      .meaning = "the code as instructions, data sections as bytes" },
    { .code = 'x',
      .long_name = "image",
      .value = nullptr,
      .parts = PKOB_IMAGE,
      .meaning = "the whole image in hexadecimal" },
    { .code = 'a',
      .long_name = "all",
      .value = nullptr,
      .parts = PKOB_LISTING,
      .meaning = "all of these but the image" },
    { .code = 's',
      .long_name = "symbol",
      .value = "NAME",
      .parts = PKOB_SYMBOLS | PKOB_CODE,
      .meaning = "one symbol and what stands at its place; may be repeated" },
    { .code = OPTION_DATA,
      .long_name = "data",
      .value = "[NAME]",
      .parts = PKOB_DATA_SECTIONS,
      .meaning = "what the data sections hold, or one; may be repeated" },
    { .code = OPTION_SCREENS,
      .long_name = "help-screens",
      .value = nullptr,
      .parts = PKOB_HELP_SCREENS,
      .meaning = "the help screens as an operator reads them" },
    { .code = OPTION_SVG,
      .long_name = "svg",
      .value = "DIR",
      .parts = PKOB_DRAWINGS,
      .meaning = "writes waveforms and connectors as drawings to DIR" },
    { .code = OPTION_JSON,
      .long_name = "json",
      .value = nullptr,
      .parts = 0,
      .meaning = "JSON: the parts named, or all and the image; several files as one array" },
    { .code = OPTION_HELP,
      .long_name = "help",
      .value = nullptr,
      .parts = 0,
      .meaning = "this help" },
    { .code = OPTION_VERSION,
      .long_name = "version",
      .value = nullptr,
      .parts = 0,
      .meaning = "the version of pkob" },
};

/** The value of an option as --help names it. */
static std::string value_name(const OPTION &option)
{
    if (option.value == nullptr) return "";
    if (option.value[0] != '[') return "=" + std::string(option.value);
    return "[=" + std::string(option.value + 1);
}

static void print_help()
{
    printf("Usage: pkob [OPTION]... FILE.kob...\n"
           "Lists module files. Without options: an overview of each.\n\n");
    for (const OPTION &option : option_table) {
        std::string names = "--" + std::string(option.long_name) + value_name(option);
        if (option.code < OPTION_JSON) {
            printf("  -%c, %-18s %s\n", option.code, names.c_str(), option.meaning);
        } else {
            printf("      %-18s %s\n", names.c_str(), option.meaning);
        }
    }
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
    for (const OPTION &row : option_table) {
        int argument = row.value == nullptr  ? no_argument
                       : row.value[0] == '[' ? optional_argument
                                             : required_argument;
        long_options->push_back({ row.long_name, argument, nullptr, row.code });
        if (row.code >= OPTION_JSON) continue;
        *letters += (char)row.code;
        if (row.value != nullptr) *letters += ':';
    }
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
    bool is_letter = optopt > 0 && optopt < OPTION_JSON;
    return is_letter ? std::string("-") + (char)optopt : arguments[optind - 1];
}

static void set_option(PKOB_OPTIONS *options, int code)
{
    for (const OPTION &row : option_table)
        if (row.code == code) options->parts |= row.parts;
    if (code == 's') options->symbols.push_back(optarg);
    if (code == OPTION_DATA && optarg != nullptr) options->sections.push_back(optarg);
    if (code == OPTION_SVG) options->drawing_directory = optarg;
    if (code == OPTION_JSON) options->is_json = true;
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
        if (code == OPTION_HELP) {
            print_help();
            return STATUS_DONE;
        }
        if (code == OPTION_VERSION) {
            printf("pkob %s\n", OSTRUM_VERSION);
            return STATUS_DONE;
        }
        set_option(options, code);
    }
    if (optind >= count) return wrong_usage("no file given", "");
    if (options->is_json && (options->parts & PKOB_HELP_SCREENS) != 0)
        return wrong_usage("--help-screens is no JSON; --data shows the screens in it", "");
    if (options->parts == 0)
        options->parts = options->is_json ? PKOB_LISTING | PKOB_IMAGE : PKOB_OVERVIEW;
    return -1;
}

/** Why a file does not open: what its first bytes say, or that it is damaged. */
static const char *open_problem(const char *file_name)
{
    if (strlen(file_name) > 119) return "The path has more than 119 characters";
    FILE *file = fopen(file_name, "rb");
    if (file == nullptr) return KOB_Message(KOB_OPEN_FAILED);
    std::vector<uint8_t> header((size_t)KOBR_HeaderSize());
    size_t size = fread(header.data(), 1, header.size(), file);
    bool is_unreadable = ferror(file) != 0;
    fclose(file);
    if (is_unreadable) return KOB_Message(KOB_OPEN_FAILED);
    int32_t result = KOBR_CheckModule(header.data());
    if (result != KOB_SUCCESSFUL) return KOB_Message(result);
    return size < header.size() ? "The module is cut short" : "The module is damaged";
}

static int complain(const char *file_name, const char *problem, const char *word)
{
    fflush(stdout);
    fprintf(stderr, "pkob: %s: %s%s\n", file_name, problem, word);
    return STATUS_FAILED;
}

/** Complains of the symbols asked for that a module lacks. */
static int check_symbols(const PKOB_MODULE &module, const PKOB_OPTIONS &options)
{
    int status = STATUS_DONE;
    for (const char *wanted : options.symbols) {
        bool is_there = false;
        for (const PKOB_SYMBOL &symbol : module.symbols)
            is_there = is_there || strcmp(symbol.name, wanted) == 0;
        if (!is_there) status = complain(module.file_name, "no symbol ", wanted);
    }
    return status;
}

/** Complains of the data sections asked for that a module lacks, and keeps the others. */
static int choose_sections(const PKOB_MODULE &module, const PKOB_OPTIONS &options, PKOB_DATA *data)
{
    int status = STATUS_DONE;
    if (options.sections.empty()) return status;
    auto is_wanted = [&options](std::string_view name) {
        return std::find(options.sections.begin(), options.sections.end(), name) !=
               options.sections.end();
    };
    for (const char *wanted : options.sections) {
        auto has_name = [wanted](const PKOB_ITEM &section) { return section.symbol == wanted; };
        if (std::none_of(data->sections.begin(), data->sections.end(), has_name))
            status = complain(module.file_name, "no data section ", wanted);
    }
    std::erase_if(data->sections, [&](const PKOB_ITEM &item) { return !is_wanted(item.symbol); });
    std::erase_if(data->problems, [&](const PKOB_PROBLEM &at) { return !is_wanted(at.symbol); });
    return status;
}

/** Complains of records that are damaged. */
static int check_data(const PKOB_MODULE &module, const PKOB_DATA &data)
{
    for (const PKOB_PROBLEM &problem : data.problems) {
        char place[32];
        snprintf(place, sizeof place, " at %08" PRIx32 ": ", (uint32_t)problem.address);
        complain(module.file_name, pkob_escaped(problem.symbol).c_str(),
                 (place + problem.text).c_str());
    }
    return data.problems.empty() ? STATUS_DONE : STATUS_FAILED;
}

/** Lists what has been read of a module, as the next after those that count tells. */
static int show_module(const PKOB_MODULE &module, const PKOB_OPTIONS &options, int *listed)
{
    const uint32_t data_parts = PKOB_DATA_SECTIONS | PKOB_HELP_SCREENS | PKOB_DRAWINGS;
    PKOB_DATA data = {};
    if ((options.parts & data_parts) != 0) data = pkob_read_data(module);
    if (choose_sections(module, options, &data) != STATUS_DONE) return STATUS_FAILED;
    if (options.is_json && *listed > 0) printf(",\n");
    (options.is_json ? pkob_print_json : pkob_print_text)(module, data, options);
    ++*listed;
    int status = check_data(module, data);
    if (options.drawing_directory == nullptr) return status;
    std::string problem = pkob_draw(module, data, options.drawing_directory);
    return problem.empty() ? status : complain(module.file_name, problem.c_str(), "");
}

static int list_module(PKOB_MODULE *module, const PKOB_OPTIONS &options, int *listed)
{
    module->codes = EEP_NewModule();
    pkob_load(module);
    int status = check_symbols(*module, options);
    if (status == STATUS_DONE) status = show_module(*module, options, listed);
    EEP_DelModule(module->codes);
    return status;
}

static int list_file(const char *file_name, const PKOB_OPTIONS &options, int *listed)
{
    PKOB_MODULE module = {};
    module.file_name = file_name;
    if (KOB_OpenModule(&module.handle, file_name) != KOB_SUCCESSFUL)
        return complain(file_name, open_problem(file_name), "");
    int status = list_module(&module, options, listed);
    KOB_CloseModule(module.handle, 0, 1);
    return status;
}

/** Lists all files; in JSON several are one array, of those that could be listed. */
static int list_files(const PKOB_OPTIONS &options, int count, char **file_names)
{
    bool is_array = options.is_json && count > 1;
    int status = STATUS_DONE;
    int listed = 0;
    if (is_array) printf("[");
    for (int i = 0; i < count; i++)
        if (list_file(file_names[i], options, &listed) != STATUS_DONE) status = STATUS_FAILED;
    if (is_array) printf("]");
    if (is_array || (options.is_json && listed > 0)) printf("\n");
    return status;
}

int main(int count, char **arguments)
{
    PKOB_OPTIONS options = {};
    int status = read_options(&options, count, arguments);
    if (status >= 0) return status;
    KOB_Initialise();
    EEP_Initialise();
    EUC_Initialise();
    status = list_files(options, count - optind, arguments + optind);
    if (fflush(stdout) != 0 || ferror(stdout) != 0)
        return complain("standard output", "cannot be written", "");
    return status;
}
