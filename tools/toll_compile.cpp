// A compilation from sources to outputs.

#include "toll_compile.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include <ostrum.h>

#include "output_files.h"
#include "toll_dependencies.h"
#include "toll_diagnostics.h"
#include "toll_jobs.h"
#include "toll_tree_graph.h"

namespace
{

constexpr int32_t read_mode_sections = 2;
constexpr uint32_t flag_print_scopes = 0x0001;
constexpr int32_t status_errors = 2;
constexpr int32_t status_fatal = 3;
constexpr int32_t tool_number = 0;

/** What comes of the sources besides their outputs. */
struct RESULT {
    bool is_done;
    std::string graphs;            // of the trees
    std::vector<std::string> used; // paths that graphs must not overwrite: sources, outputs
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
int32_t run_generator(const COMPILATION &compilation, const OUTPUT &output, TOLL_TARGET target)
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
bool generate(const COMPILATION &compilation, const OUTPUT &output, TOLL_TARGET target)
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
bool generate_all(const COMPILATION &compilation, const OUTPUT &output, bool *is_whole)
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
    OUTPUT output = {};
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

/** Writes what the outputs were made from. */
bool write_dependencies(const COMPILATION &compilation)
{
    const TOLL_OPTIONS &options = *compilation.options;
    const std::vector<std::string> outputs = output_paths(find_destination(compilation));
    const std::string target = options.dependency_output.empty() ? base_path(compilation) + ".d"
                                                                 : options.dependency_output;
    std::vector<std::string> used = compilation.opened;
    if (!options.check_only) used.insert(used.end(), outputs.begin(), outputs.end());
    const std::string problem =
        replace_file(target, dependency_rule(outputs, compilation.opened), used);
    if (!problem.empty()) report_problem(target, problem);
    return problem.empty();
}

/** Keeps the graphs of a module, and which files belong to it. */
void note_graphs(const COMPILATION &compilation, RESULT *result)
{
    const TOLL_OPTIONS &options = *compilation.options;
    const auto write_trees = options.outlines_trees ? tree_outlines : tree_graphs;
    result->graphs +=
        write_trees(compilation.module, options.tree.empty()
                                            ? compilation.sections
                                            : sections_named(compilation.sections, options.tree));
    result->used.insert(result->used.end(), compilation.opened.begin(), compilation.opened.end());
    if (options.check_only) return;
    for (const std::string &path : output_paths(find_destination(compilation)))
        result->used.push_back(path);
}

/** Compiles one source, and adds what comes of it. */
void compile_source(const TOLL_OPTIONS &options, const std::string &source, RESULT *result)
{
    COMPILATION compilation = {};
    compilation.options = &options;
    compilation.source = source;
    set_source_in_hand(source);
    TLP_SetSourceHook(&compilation, note_opened_source);
    if (read_source(&compilation)) parse_sections(&compilation);
    bool is_done = compilation.is_sound && !SM_Aborted();
    if (is_done && !options.check_only) is_done = write_module(compilation);
    if (is_done && options.lists_dependencies) is_done = write_dependencies(compilation);
    if (is_done && options.draw_trees) note_graphs(compilation, result);
    TLP_SetSourceHook(nullptr, nullptr);
    TLP_DelModule(compilation.module);
    if (SM_Aborted()) report_problem(source, "Interrupted");
    if (!is_done || SM_Aborted()) result->is_done = false;
}

bool write_graphs(const TOLL_OPTIONS &options, const RESULT &result)
{
    if (!options.draw_trees) return true;
    const std::string &text = result.graphs;
    if (text.empty() && !options.tree.empty()) {
        report_problem(options.sources.back(), "No tree " + options.tree);
        return false;
    }
    if (options.graph_output.empty())
        return fwrite(text.data(), 1, text.size(), stdout) == text.size();
    const std::string problem = replace_file(options.graph_output, text, result.used);
    if (!problem.empty()) report_problem(options.graph_output, problem);
    return problem.empty();
}

/** All sources on their way, for jobs. */
struct COMPILATIONS {
    const TOLL_OPTIONS *options;
    RESULT result;
};

/** A job's report: whether it is done, its graphs, how many paths, the paths, kept messages. */
JOB_REPORT compile_job(void *context, size_t job)
{
    const TOLL_OPTIONS &options = *static_cast<COMPILATIONS *>(context)->options;
    RESULT result = { .is_done = true, .graphs = {}, .used = {} };
    take_kept_messages(); // those of sources before, which the parent has
    compile_source(options, options.sources[job], &result);
    JOB_REPORT report = { result.is_done ? "done" : "failed", result.graphs,
                          std::to_string(result.used.size()) };
    report.insert(report.end(), result.used.begin(), result.used.end());
    const std::vector<std::string> messages = take_kept_messages();
    report.insert(report.end(), messages.begin(), messages.end());
    return report;
}

void take_report(void *context, size_t job, const JOB_REPORT &report)
{
    auto *compilations = static_cast<COMPILATIONS *>(context);
    RESULT *result = &compilations->result;
    if (report.size() < 3) {
        report_problem(compilations->options->sources[job], "Compilation broke off");
        result->is_done = false;
        return;
    }
    if (report[0] != "done") result->is_done = false;
    result->graphs += report[1];
    const auto used = report.begin() + 3;
    const auto messages = used + std::min(std::stol(report[2]), report.end() - used);
    result->used.insert(result->used.end(), used, messages);
    keep_messages({ messages, report.end() });
}

/** Compiles the sources, several at a time if that was asked for. */
RESULT compile_sources(const TOLL_OPTIONS &options)
{
    COMPILATIONS compilations = { &options, { .is_done = true, .graphs = {}, .used = {} } };
    const size_t count = options.sources.size();
    if (options.jobs > 1 && count > 1) {
        const JOBS jobs = { count, &compilations, compile_job, take_report };
        const size_t ended = run_jobs(jobs, std::min(options.jobs, count));
        if (ended == count) return compilations.result;
        report_problem(options.sources[ended], SM_Aborted() ? "Interrupted" : "Cannot be started");
        compilations.result.is_done = false;
        return compilations.result;
    }
    for (const std::string &source : options.sources) {
        compile_source(options, source, &compilations.result);
        if (SM_Aborted()) break;
    }
    return compilations.result;
}

} // namespace

std::string module_path(const TOLL_OPTIONS &options)
{
    COMPILATION compilation = {};
    compilation.options = &options;
    if (options.sources.empty() || options.check_only) return "";
    compilation.source = options.sources.back();
    if (!wants(compilation, TOLL_TARGET_KOB)) return "";
    return output_paths(find_destination(compilation)).front();
}

int compile_all(const TOLL_OPTIONS &options)
{
    TLCG_Initialise();
    SM_EnableCtlcHandler(1);
    std::string list = search_list(options);
    QUILLREG_SetExternalValueCallback(&list, look_up_symbol);
    start_diagnostics(options.format, options.color);
    const RESULT result = compile_sources(options);
    const bool is_done = result.is_done && write_graphs(options, result);
    finish_diagnostics(is_done);
    QUILLREG_SetExternalValueCallback(nullptr, nullptr);
    return is_done ? 0 : 1;
}
