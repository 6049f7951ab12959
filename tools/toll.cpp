// toll: compiles TOLL sources into module files.

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <ostrum.h>

#include "toll_diagnostics.h"
#include "toll_options.h"
#include "toll_output.h"
#include "toll_tree_graph.h"

OSTRUM_VERSION_BLOCK("toll", OSTRUM_VERSION, OSTRUM_VERSION, "MIT license");

namespace
{

constexpr int32_t read_mode_sections = 2;
constexpr uint32_t flag_print_scopes = 0x0001;
constexpr int32_t status_errors = 2;
constexpr int32_t status_fatal = 3;
constexpr int32_t tool_number = 0;

/** What is written once all sources are done. */
struct GRAPHS {
    std::string text;
    std::vector<std::string> used; // paths that must not be overwritten: sources, modules made
};

/** One source on its way to a module. */
struct COMPILATION {
    const TOLL_OPTIONS *options;
    std::string source;
    TLP_MODULE *module;
    std::vector<TLP_SECTION *> sections;
    std::vector<std::string> opened; // host paths of all sources read for it
    bool is_sound;                   // no errors so far
};

/** The directories of -I, before what TollInclude named until now. */
std::string search_list(const TOLL_OPTIONS &options)
{
    std::string list;
    for (const std::string &path : options.include_paths) {
        list += list.empty() ? path : ';' + path;
    }
    const char *before = QUILLREG_GetSymbol("TollInclude");
    if (before != nullptr && *before != 0)
        list += list.empty() ? before : std::string{ ';' } + before;
    return list;
}

const char *look_up_symbol(void *user, const char *name)
{
    const std::string *list = static_cast<std::string *>(user);
    const bool is_search_list = std::string{ "TollInclude" } == name;
    return is_search_list && !list->empty() ? list->c_str() : nullptr;
}

void note_opened_source(void *context, const char *name, const char *host_path)
{
    static_cast<COMPILATION *>(context)->opened.emplace_back(host_path);
    note_source_path(name, host_path);
}

int32_t collect_section(void *context, const char *, TLP_SECTION *section, int32_t)
{
    static_cast<COMPILATION *>(context)->sections.push_back(section);
    return 1;
}

/** Reads the source and cuts it into sections; true if there is something to parse. */
bool read_source(COMPILATION *compilation)
{
    const TOLL_OPTIONS &options = *compilation->options;
    const int32_t errors_before = error_count();
    TLT_ResetCounters();
    const int32_t status =
        TLP_ReadModule2(nullptr, compilation->source.c_str(), &compilation->module, stdout,
                        options.module_flags, read_mode_sections, nullptr, options.defines.c_str());
    if (status >= status_fatal) {
        // A source that cannot be opened is the one failure that the reader raises nothing about.
        constexpr int32_t cannot_be_opened = 6;
        if (error_count() == errors_before)
            report_problem(compilation->source, TLP_Message(cannot_be_opened));
        return false;
    }
    compilation->is_sound = status < status_errors;
    TLP_AllSections(compilation->module, collect_section, compilation);
    return true;
}

void print_module_scopes(TLP_MODULE *module)
{
    TLI_PrintScope(stdout, TLP_ModuleGlobals(module), module);
    if (TLP_ModuleStatics(module) != nullptr)
        TLI_PrintScope(stdout, TLP_ModuleStatics(module), module);
}

/** Parses the sections in order, up to one that stops the compilation. */
void parse_sections(COMPILATION *compilation)
{
    TLP_MODULE *module = compilation->module;
    const bool print_scopes = compilation->options->print_scopes;
    // The scopes are empty until the sections are parsed, so reading was not to print them.
    if (print_scopes)
        TLP_SetModuleFlags(module, compilation->options->module_flags | flag_print_scopes);
    for (TLP_SECTION *section : compilation->sections) {
        if (SM_Aborted()) return;
        const int32_t status = TLP_ParseSection(module, section);
        if (status >= status_errors) compilation->is_sound = false;
        if (status >= status_fatal) break;
    }
    if (print_scopes) print_module_scopes(module);
}

std::string without_extension(std::string path)
{
    const size_t name = path.find_last_of("/\\") + 1;
    const size_t dot = path.rfind('.');
    if (dot != std::string::npos && dot > name) path.resize(dot);
    return path;
}

/** Path of the output without the extensions that the targets give it. */
std::string base_path(const COMPILATION &compilation)
{
    const std::string &source = compilation.source;
    std::string name = without_extension(source.substr(source.find_last_of("/\\") + 1));
    const std::string &output = compilation.options->output;
    if (output.empty()) return name;
    if (!is_directory(output)) return without_extension(output);
    return output.back() == '/' ? output + name : output + '/' + name;
}

bool wants(const COMPILATION &compilation, TOLL_TARGET target)
{
    const uint32_t targets = compilation.options->targets;
    return ((targets == 0 ? TOLL_TARGET_KOB : targets) & target) != 0;
}

/** Where the output goes: its one file, or what its files have before their extensions. */
struct DESTINATION {
    std::string target;
    std::vector<std::string> extensions; // none: target is the file
};

/** A module file that is the only output may have any name. */
DESTINATION find_destination(const COMPILATION &compilation)
{
    const std::string &output = compilation.options->output;
    const bool is_module = wants(compilation, TOLL_TARGET_KOB);
    const bool is_c = wants(compilation, TOLL_TARGET_C);
    const bool is_java = wants(compilation, TOLL_TARGET_JAVA);
    if (!is_c && !is_java && !output.empty() && !is_directory(output)) return { output, {} };
    DESTINATION destination = { base_path(compilation), {} };
    if (is_module) destination.extensions.emplace_back(".kob");
    if (is_c) {
        destination.extensions.emplace_back(".h");
        destination.extensions.emplace_back(".c");
    }
    if (is_java) destination.extensions.emplace_back(".java");
    return destination;
}

std::vector<std::string> output_paths(const DESTINATION &destination)
{
    if (destination.extensions.empty()) return { destination.target };
    std::vector<std::string> paths;
    for (const std::string &extension : destination.extensions)
        paths.push_back(destination.target + extension);
    return paths;
}

/** Refuses an output that is one of the sources read: it would be lost. */
bool is_source(const COMPILATION &compilation, const DESTINATION &destination)
{
    for (const std::string &target : output_paths(destination)) {
        for (const std::string &path : compilation.opened) {
            if (same_file(path, target)) return true;
        }
    }
    return false;
}

/** Runs the generator of one target. */
int32_t run_generator(const COMPILATION &compilation, const TOLL_OUTPUT &output, TOLL_TARGET target)
{
    const uint32_t flags = compilation.options->compile_flags;
    switch (target) {
    case TOLL_TARGET_C:
        return TLCG_GenerateCCode(compilation.module, flags, output.base.c_str(), tool_number,
                                  OSTRUM_VERSION);
    case TOLL_TARGET_JAVA: {
        // The directory decides about the package of the class.
        const std::string made = output.base + ".java";
        const std::string path = enter_package() + made;
        const int32_t result = TLCG_GenerateJavaCode(compilation.module, flags, path.c_str(),
                                                     tool_number, OSTRUM_VERSION);
        leave_package(path, made);
        return result;
    }
    default:
        return TLCG_GenerateKOBCode(compilation.module, flags, output.files[0].made.c_str(),
                                    tool_number, OSTRUM_VERSION);
    }
}

/** Runs one generator into an open output; true if what it wrote is complete. */
bool generate(const COMPILATION &compilation, const TOLL_OUTPUT &output, TOLL_TARGET target)
{
    const int32_t errors_before = error_count();
    const int32_t result = run_generator(compilation, output, target);
    if (result != 0) report_problem(output.target, TLCG_Message(result));
    return result == 0 && error_count() == errors_before && !SM_Aborted();
}

/** Tells what a text target could not express; true if that is nothing. The text tells where. */
bool is_expressed(const COMPILATION &compilation, TOLL_TARGET target)
{
    const std::string language = target == TOLL_TARGET_C ? "C" : "Java";
    const int32_t count = TLC_TextErrors(nullptr);
    if (count == 0) return true;
    const std::string number = std::to_string(count);
    report_problem(compilation.source, number + (count == 1 ? " place" : " places") +
                                           " cannot be expressed in " + language +
                                           "; see 'ERROR' in the output");
    return false;
}

/** Generates all targets; false if the files are not to be used. is_whole tells whether all came out. */
bool generate_all(const COMPILATION &compilation, const TOLL_OUTPUT &output, bool *is_whole)
{
    *is_whole = true;
    for (const TOLL_TARGET target : { TOLL_TARGET_KOB, TOLL_TARGET_C, TOLL_TARGET_JAVA }) {
        if (!wants(compilation, target)) continue;
        if (!generate(compilation, output, target)) return false;
        if (target != TOLL_TARGET_KOB && !is_expressed(compilation, target)) *is_whole = false;
    }
    return true;
}

bool write_module(const COMPILATION &compilation)
{
    const DESTINATION destination = find_destination(compilation);
    TOLL_OUTPUT output = {};
    std::string problem = is_source(compilation, destination)
                              ? "Output is a source of this module"
                              : open_output(destination.target, destination.extensions, &output);
    if (!problem.empty()) {
        report_problem(destination.target, problem);
        return false;
    }
    bool is_whole = false;
    if (!generate_all(compilation, output, &is_whole)) {
        discard_output(&output);
        return false;
    }
    problem = publish_output(&output);
    if (!problem.empty()) report_problem(destination.target, problem);
    return problem.empty() && is_whole;
}

/** Keeps the graphs of a module, and which files belong to it. */
void note_graphs(const COMPILATION &compilation, GRAPHS *graphs)
{
    graphs->text += tree_graphs(compilation.module, compilation.sections);
    graphs->used.insert(graphs->used.end(), compilation.opened.begin(), compilation.opened.end());
    if (compilation.options->check_only) return;
    for (const std::string &path : output_paths(find_destination(compilation)))
        graphs->used.push_back(path);
}

bool compile_source(const TOLL_OPTIONS &options, const std::string &source, GRAPHS *graphs)
{
    COMPILATION compilation = {};
    compilation.options = &options;
    compilation.source = source;
    set_source_in_hand(source);
    TLP_SetSourceHook(&compilation, note_opened_source);
    if (read_source(&compilation)) parse_sections(&compilation);
    bool is_done = compilation.is_sound && !SM_Aborted();
    if (is_done && !options.check_only) is_done = write_module(compilation);
    if (is_done && options.draw_trees) note_graphs(compilation, graphs);
    TLP_SetSourceHook(nullptr, nullptr);
    TLP_DelModule(compilation.module);
    return is_done;
}

/** Writes the graphs into an open output; empty, or what is wrong. */
std::string write_text(const std::string &text, const TOLL_OUTPUT &output)
{
    FILE *file = fopen(output.files[0].made.c_str(), "wb");
    if (file == nullptr) return "Cannot be written";
    const bool is_whole = fwrite(text.data(), 1, text.size(), file) == text.size();
    return fclose(file) == 0 && is_whole ? "" : "Cannot be written";
}

/** Replaces a file by the graphs; empty, or what is wrong: then it is as it was before. */
std::string make_graph_file(const std::string &target, const GRAPHS &graphs)
{
    for (const std::string &path : graphs.used) {
        if (same_file(path, target)) return "Output is a source or a module";
    }
    TOLL_OUTPUT output = {};
    std::string problem = open_output(target, {}, &output);
    if (!problem.empty()) return problem;
    problem = write_text(graphs.text, output);
    if (problem.empty()) return publish_output(&output);
    discard_output(&output);
    return problem;
}

bool write_graphs(const TOLL_OPTIONS &options, const GRAPHS &graphs)
{
    if (!options.draw_trees) return true;
    if (options.graph_output.empty())
        return fwrite(graphs.text.data(), 1, graphs.text.size(), stdout) == graphs.text.size();
    const std::string problem = make_graph_file(options.graph_output, graphs);
    if (!problem.empty()) report_problem(options.graph_output, problem);
    return problem.empty();
}

int compile_all(const TOLL_OPTIONS &options)
{
    TLCG_Initialise();
    SM_EnableCtlcHandler(1);
    std::string list = search_list(options);
    QUILLREG_SetExternalValueCallback(&list, look_up_symbol);
    start_diagnostics(options.format);
    GRAPHS graphs;
    int status = 0;
    for (const std::string &source : options.sources) {
        if (!compile_source(options, source, &graphs)) status = 1;
        if (!SM_Aborted()) continue;
        report_problem(source, "Interrupted");
        status = 1;
        break;
    }
    if (status == 0 && !write_graphs(options, graphs)) status = 1;
    TLP_CleanUp();
    return status;
}

} // namespace

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
    // Listings that could not be written are an output that could not be written.
    return fflush(stdout) == 0 ? status : 1;
}
