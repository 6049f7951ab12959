// Options of the lister, and the walk over the files.

#include "pkob_list.h"

#include <algorithm>
#include <cinttypes>
#include <cstring>

enum { STATUS_DONE, STATUS_FAILED };

static void add_symbol(PKOB_OPTIONS *options, const char *value)
{
    options->symbols.push_back(value);
}

static void add_section(PKOB_OPTIONS *options, const char *value)
{
    if (value != nullptr) options->sections.push_back(value);
}

static void set_directory(PKOB_OPTIONS *options, const char *value)
{
    options->drawing_directory = value;
}

static void set_json(PKOB_OPTIONS *options, const char *)
{
    options->is_json = true;
}

static constexpr PKOB_OPTION option_table[] = {
    { .letter = 'H',
      .name = "header",
      .value = nullptr,
      .is_value_optional = false,
      .parts = PKOB_HEADER,
      .meaning = "the header",
      .set = nullptr },
    { .letter = 't',
      .name = "static-offsets",
      .value = nullptr,
      .is_value_optional = false,
      .parts = PKOB_STATIC_OFFSETS,
      .meaning = "places in the code that refer to static data",
      .set = nullptr },
    { .letter = 'y',
      .name = "symbols",
      .value = nullptr,
      .is_value_optional = false,
      .parts = PKOB_SYMBOLS,
      .meaning = "the symbols with value, class and type",
      .set = nullptr },
    { .letter = 'f',
      .name = "frames",
      .value = nullptr,
      .is_value_optional = false,
      .parts = PKOB_FRAMES,
      .meaning = "the debug frames with their entries",
      .set = nullptr },
    { .letter = 'c',
      .name = "code",
      .value = nullptr,
      .is_value_optional = false,
      .parts = PKOB_CODE,
      .meaning = "the code as instructions, data sections as bytes",
      .set = nullptr },
    { .letter = 'x',
      .name = "image",
      .value = nullptr,
      .is_value_optional = false,
      .parts = PKOB_IMAGE,
      .meaning = "the whole image in hexadecimal",
      .set = nullptr },
    { .letter = 'a',
      .name = "all",
      .value = nullptr,
      .is_value_optional = false,
      .parts = PKOB_LISTING,
      .meaning = "all of these but the image",
      .set = nullptr },
    { .letter = 's',
      .name = "symbol",
      .value = "NAME",
      .is_value_optional = false,
      .parts = PKOB_SYMBOLS | PKOB_CODE,
      .meaning = "one symbol and what stands at its place; may be repeated",
      .set = add_symbol },
    { .letter = 0,
      .name = "data",
      .value = "NAME",
      .is_value_optional = true,
      .parts = PKOB_DATA_SECTIONS,
      .meaning = "what the data sections hold, or one; may be repeated",
      .set = add_section },
    { .letter = 0,
      .name = "help-screens",
      .value = nullptr,
      .is_value_optional = false,
      .parts = PKOB_HELP_SCREENS,
      .meaning = "the help screens as an operator reads them",
      .set = nullptr },
    { .letter = 0,
      .name = "svg",
      .value = "DIR",
      .is_value_optional = false,
      .parts = PKOB_DRAWINGS,
      .meaning = "writes waveforms and connectors as drawings to DIR",
      .set = set_directory },
    { .letter = 0,
      .name = "json",
      .value = nullptr,
      .is_value_optional = false,
      .parts = 0,
      .meaning = "JSON: the parts named, or all and the image; several files as one array",
      .set = set_json },
};

std::span<const PKOB_OPTION> pkob_option_rows()
{
    return option_table;
}

void pkob_set_option(PKOB_OPTIONS *options, const PKOB_OPTION &option, const char *value)
{
    options->parts |= option.parts;
    if (option.set != nullptr) option.set(options, value);
}

const char *pkob_complete_options(PKOB_OPTIONS *options)
{
    if (options->is_json && (options->parts & PKOB_HELP_SCREENS) != 0)
        return "--help-screens is no JSON; --data shows the screens in it";
    if (options->parts == 0)
        options->parts = options->is_json ? PKOB_LISTING | PKOB_IMAGE : PKOB_OVERVIEW;
    return nullptr;
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

static int complain(const PKOB_OPTIONS &options, const char *file_name, const char *problem,
                    const char *word)
{
    fflush(stdout);
    fprintf(stderr, "%s: %s: %s%s\n", options.program, file_name, problem, word);
    return STATUS_FAILED;
}

/** Complains of the symbols asked for that a module lacks. */
static int check_symbols(const PKOB_MODULE &module, const PKOB_OPTIONS &options)
{
    int status = STATUS_DONE;
    for (const char *wanted : options.symbols) {
        bool is_there = false;
        for (const PKOB_SYMBOL &symbol : module.symbols)
            is_there = is_there || pkob_is_named(symbol.name, wanted);
        if (options.parts == PKOB_FRAMES)
            for (const PKOB_FRAME &frame : module.frames)
                is_there = is_there || pkob_is_named(frame.name, wanted);
        if (!is_there) status = complain(options, module.file_name, "no symbol ", wanted);
    }
    return status;
}

/** Complains of the data sections asked for that a module lacks, and keeps the others. */
static int choose_sections(const PKOB_MODULE &module, const PKOB_OPTIONS &options, PKOB_DATA *data)
{
    int status = STATUS_DONE;
    if (options.sections.empty()) return status;
    auto is_wanted = [&options](std::string_view symbol) {
        return std::any_of(options.sections.begin(), options.sections.end(),
                           [symbol](const char *wanted) { return pkob_is_named(symbol, wanted); });
    };
    for (const char *wanted : options.sections) {
        auto has_name = [wanted](const PKOB_ITEM &section) {
            return pkob_is_named(section.symbol, wanted);
        };
        if (std::none_of(data->sections.begin(), data->sections.end(), has_name))
            status = complain(options, module.file_name, "no data section ", wanted);
    }
    std::erase_if(data->sections, [&](const PKOB_ITEM &item) { return !is_wanted(item.symbol); });
    std::erase_if(data->problems, [&](const PKOB_PROBLEM &at) { return !is_wanted(at.symbol); });
    return status;
}

/** Complains of records that are damaged. */
static int check_data(const PKOB_MODULE &module, const PKOB_OPTIONS &options, const PKOB_DATA &data)
{
    for (const PKOB_PROBLEM &problem : data.problems) {
        char place[32];
        snprintf(place, sizeof place, " at %08" PRIx32 ": ", (uint32_t)problem.address);
        complain(options, module.file_name, pkob_escaped(problem.symbol).c_str(),
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
    int status = check_data(module, options, data);
    if (options.drawing_directory == nullptr) return status;
    std::string problem = pkob_draw(module, data, options.drawing_directory);
    return problem.empty() ? status : complain(options, module.file_name, problem.c_str(), "");
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
        return complain(options, file_name, open_problem(file_name), "");
    int status = list_module(&module, options, listed);
    KOB_CloseModule(module.handle, 0, 1);
    return status;
}

int pkob_list(const PKOB_OPTIONS &options, const std::vector<const char *> &file_names)
{
    bool is_array = options.is_json && file_names.size() > 1;
    int status = STATUS_DONE;
    int listed = 0;
    if (is_array) printf("[");
    for (const char *file_name : file_names)
        if (list_file(file_name, options, &listed) != STATUS_DONE) status = STATUS_FAILED;
    if (is_array) printf("]");
    if (is_array || (options.is_json && listed > 0)) printf("\n");
    return status;
}
