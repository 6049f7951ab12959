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

std::string output_path(const COMPILATION &compilation)
{
    if (!compilation.options->output.empty()) return compilation.options->output;
    std::string name = compilation.source.substr(compilation.source.find_last_of("/\\") + 1);
    const size_t dot = name.rfind('.');
    if (dot != std::string::npos && dot > 0) name.resize(dot);
    return name + ".kob";
}

/** Refuses an output that is one of the sources read: it would be lost. */
bool is_source(const COMPILATION &compilation, const std::string &target)
{
    for (const std::string &path : compilation.opened) {
        if (same_file(path, target)) return true;
    }
    return false;
}

/** Generates the module file into an open output; true if it is complete. */
bool generate(const COMPILATION &compilation, const TOLL_OUTPUT &output)
{
    const int32_t errors_before = error_count();
    const int32_t result =
        TLCG_GenerateKOBCode(compilation.module, compilation.options->compile_flags,
                             output.made.c_str(), tool_number, OSTRUM_VERSION);
    if (result != 0) report_problem(output.target, TLCG_Message(result));
    return result == 0 && error_count() == errors_before && !SM_Aborted();
}

bool write_module(const COMPILATION &compilation)
{
    const std::string target = output_path(compilation);
    TOLL_OUTPUT output = {};
    std::string problem = is_source(compilation, target) ? "Output is a source of this module"
                                                         : open_output(target, &output);
    if (!problem.empty()) {
        report_problem(target, problem);
        return false;
    }
    if (!generate(compilation, output)) {
        discard_output(&output);
        return false;
    }
    problem = publish_output(&output);
    if (!problem.empty()) report_problem(target, problem);
    return problem.empty();
}

/** Keeps the graphs of a module, and which files belong to it. */
void note_graphs(const COMPILATION &compilation, GRAPHS *graphs)
{
    graphs->text += tree_graphs(compilation.module, compilation.sections);
    graphs->used.insert(graphs->used.end(), compilation.opened.begin(), compilation.opened.end());
    if (!compilation.options->check_only) graphs->used.push_back(output_path(compilation));
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
    FILE *file = fopen(output.made.c_str(), "wb");
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
    std::string problem = open_output(target, &output);
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
