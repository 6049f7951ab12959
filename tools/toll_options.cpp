// Options of a compilation: one table drives the command line, its help and the command of the
// interactive tool.

#include "toll_options.h"

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <span>
#include <string>
#include <vector>

#include "output_files.h"

namespace
{

constexpr int32_t max_define_count = 10; // slots for names that a module has

// Words of --target, --diagnostics and --color, in the order of their enumerations.
constexpr const char *target_words[] = { "kob", "c", "java" };
constexpr TOLL_TARGET targets[] = { TOLL_TARGET_KOB, TOLL_TARGET_C, TOLL_TARGET_JAVA };
static_assert(std::size(target_words) == std::size(targets), "one word for each target");
constexpr const char *list_words[] = { "full" };
constexpr const char *format_words[] = { "text", "json", "gcc", "sarif" };
constexpr const char *color_words[] = { "auto", "always", "never" };
static_assert(std::size(format_words) == TOLL_FORMAT_COUNT, "one word for each format");

bool wrong(TOLL_OPTIONS *options, const char *problem, const char *value)
{
    options->problem = std::string{ problem } + " '" + value + "'";
    return false;
}

/** Place of a word among those of an option; -1 if it is none of them. */
int find_word(std::span<const char *const> words, const char *value)
{
    for (size_t at = 0; at < words.size(); at++) {
        if (strcmp(words[at], value) == 0) return static_cast<int>(at);
    }
    return -1;
}

bool set_output(TOLL_OPTIONS *options, const char *value)
{
    if (*value == 0) return wrong(options, "no output file in", "-o");
    options->output = value;
    return true;
}

bool add_target(TOLL_OPTIONS *options, const char *value)
{
    const int target = find_word(target_words, value);
    if (target < 0) return wrong(options, "unknown target", value);
    options->targets |= targets[target];
    return true;
}

bool add_include_path(TOLL_OPTIONS *options, const char *value)
{
    // The search list that the directory becomes part of is cut at semicolons.
    if (*value == 0 || strchr(value, ';') != nullptr)
        return wrong(options, "bad search directory", value);
    options->include_paths.emplace_back(value);
    return true;
}

bool add_define(TOLL_OPTIONS *options, const char *value)
{
    // The names travel as one text, cut at commas, with all up to an equals sign dropped.
    if (*value == 0 || strpbrk(value, "=,") != nullptr)
        return wrong(options, "bad name to define", value);
    if (options->define_count == max_define_count)
        return wrong(options, "too many names defined at", value);
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
    if (value != nullptr && find_word(list_words, value) < 0)
        return wrong(options, "bad section listing", value);
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
    if (value != nullptr && *value == 0) return wrong(options, "no output file in", "--tree-graph");
    options->draw_trees = true;
    options->graph_output = value != nullptr ? value : "";
    return true;
}

bool set_diagnostics(TOLL_OPTIONS *options, const char *value)
{
    const int format = find_word(format_words, value);
    if (format < 0) return wrong(options, "bad format of diagnostics", value);
    options->format = static_cast<TOLL_FORMAT>(format);
    return true;
}

bool set_color(TOLL_OPTIONS *options, const char *value)
{
    const int color = find_word(color_words, value);
    if (color < 0) return wrong(options, "bad use of colour", value);
    options->color = static_cast<TOLL_COLOR>(color);
    return true;
}

bool set_dependencies(TOLL_OPTIONS *options, const char *value)
{
    if (value != nullptr && *value == 0)
        return wrong(options, "no output file in", "--dependencies");
    options->lists_dependencies = true;
    if (value != nullptr) options->dependency_output = value;
    return true;
}

bool set_jobs(TOLL_OPTIONS *options, const char *value)
{
    constexpr long most = 1024;
    char *end = nullptr;
    const long count = strtol(value, &end, 10);
    if (end == value || *end != 0 || count < 1 || count > most)
        return wrong(options, "bad number of jobs", value);
    options->jobs = static_cast<size_t>(count);
    return true;
}

constexpr TOLL_OPTION option_table[] = {
    { .letter = 'o',
      .name = "output",
      .argument = TOLL_ARGUMENT_NEEDED,
      .value = "FILE",
      .words = {},
      .repeats = false,
      .meaning = "output file or its directory; default: base name of the source + \".kob\"",
      .set = set_output },
    { .letter = 0,
      .name = "target",
      .argument = TOLL_ARGUMENT_NEEDED,
      .value = "kob|c|java",
      .words = target_words,
      .repeats = true,
      .meaning = "write a module file (default), C or Java source; may be repeated for several",
      .set = add_target },
    { .letter = 'I',
      .name = "include",
      .argument = TOLL_ARGUMENT_NEEDED,
      .value = "DIR",
      .words = {},
      .repeats = true,
      .meaning = "search DIR for used modules, before TollInclude",
      .set = add_include_path },
    { .letter = 'D',
      .name = "define",
      .argument = TOLL_ARGUMENT_NEEDED,
      .value = "NAME",
      .words = {},
      .repeats = true,
      .meaning = "define NAME for #IFDEF; ten names at most",
      .set = add_define },
    { .letter = 'g',
      .name = "debug",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "write debug frames",
      .set = set_debug },
    { .letter = 'l',
      .name = "line-codes",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "write LINE codes",
      .set = set_line_codes },
    { .letter = 'b',
      .name = "check-bounds",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "write CHECK codes for array bounds",
      .set = set_check_bounds },
    { .letter = 0,
      .name = "private-symbols",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "write symbols for private functions too",
      .set = set_private_symbols },
    { .letter = 0,
      .name = "strict",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "give every strict warning, every time",
      .set = set_strict },
    { .letter = 0,
      .name = "warn-assignment",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "report assignments that look like comparisons",
      .set = set_warn_assignment },
    { .letter = 0,
      .name = "no-error-limit",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "go on after 50 errors",
      .set = set_no_error_limit },
    { .letter = 0,
      .name = "progress",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "tell what is being read and generated",
      .set = set_progress },
    { .letter = 0,
      .name = "list-sections",
      .argument = TOLL_ARGUMENT_OPTIONAL,
      .value = "full",
      .words = list_words,
      .repeats = false,
      .meaning = "list the sections, with their statements if full",
      .set = set_list_sections },
    { .letter = 0,
      .name = "print-scopes",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "print the names declared in each scope",
      .set = set_print_scopes },
    { .letter = 0,
      .name = "print-blocks",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "print the statements of each function generated",
      .set = set_print_blocks },
    { .letter = 'n',
      .name = "no-output",
      .argument = TOLL_ARGUMENT_NONE,
      .value = nullptr,
      .words = {},
      .repeats = false,
      .meaning = "check only",
      .set = set_check_only },
    { .letter = 0,
      .name = "tree-graph",
      .argument = TOLL_ARGUMENT_OPTIONAL,
      .value = "FILE",
      .words = {},
      .repeats = false,
      .meaning = "write the trees of all sources as DOT graphs to FILE; default: standard output",
      .set = set_tree_graph },
    { .letter = 0,
      .name = "dependencies",
      .argument = TOLL_ARGUMENT_OPTIONAL,
      .value = "FILE",
      .words = {},
      .repeats = false,
      .meaning = "list every source read as a make dependency in FILE; default: output + \".d\"",
      .set = set_dependencies },
    { .letter = 'j',
      .name = "jobs",
      .argument = TOLL_ARGUMENT_NEEDED,
      .value = "N",
      .words = {},
      .repeats = false,
      .meaning = "compile N sources at a time",
      .set = set_jobs },
    { .letter = 0,
      .name = "diagnostics",
      .argument = TOLL_ARGUMENT_NEEDED,
      .value = "FORMAT",
      .words = format_words,
      .repeats = false,
      .meaning = "form of the messages: text (default), gcc, json or sarif",
      .set = set_diagnostics },
    { .letter = 0,
      .name = "color",
      .argument = TOLL_ARGUMENT_NEEDED,
      .value = "WHEN",
      .words = color_words,
      .repeats = false,
      .meaning = "mark severities with colours: auto (on a terminal; default), always or never",
      .set = set_color },
};

} // namespace

std::span<const TOLL_OPTION> option_rows()
{
    return option_table;
}

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
