// compare_targets: compiles each program of a folder to all targets, makes the runs that it states on
// each, and compares results and logs. What a target cannot express is left out, counted and named.
// usage: compare_targets FOLDER C_COMPILER
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <unistd.h>

#include "stated_program.h"
#include "targets.h"

namespace
{

using Names = std::set<std::string>;

std::string read_file(const std::string &path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<std::string> lines_of(const std::string &text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

Names words_of(const std::string &text)
{
    Names words;
    std::string word;
    for (const char c : text + " ") {
        if (std::isalnum(static_cast<unsigned char>(c)) || c == '_') {
            word += c;
        } else if (!word.empty()) {
            words.insert(word);
            word.clear();
        }
    }
    return words;
}

// What C cannot express.

struct Body {
    std::string name;
    Names words;
    bool has_error = false;
};

// The functions of generated C: a head that ends at "(", up to the "}" in the first column.
std::vector<Body> bodies_of(const std::string &c_text)
{
    std::vector<Body> bodies;
    bool is_inside = false;
    for (const std::string &line : lines_of(c_text)) {
        const bool is_head = !line.empty() && line[0] != ' ' && line.back() == '(';
        if (is_head) {
            const size_t space = line.rfind(' ');
            bodies.push_back({ line.substr(space + 1, line.size() - space - 2), {}, false });
            is_inside = true;
        } else if (is_inside) {
            bodies.back().words.merge(words_of(line));
            if (line.find("/*ERROR - ") != std::string::npos) bodies.back().has_error = true;
        }
        if (line == "}") is_inside = false;
    }
    return bodies;
}

// Functions with what C cannot express, and those that use them.
Names inexpressible(const std::string &c_text)
{
    const std::vector<Body> bodies = bodies_of(c_text);
    Names names;
    for (size_t before = SIZE_MAX; before != names.size();) {
        before = names.size();
        for (const Body &body : bodies) {
            bool is_one = body.has_error;
            for (const std::string &name : names)
                is_one |= body.words.count(name) != 0;
            if (is_one) names.insert(body.name);
        }
    }
    return names;
}

Names toll_names(const targets::Module &module, const Names &c_names)
{
    Names names;
    for (const targets::Routine &routine : module.functions)
        if (c_names.count(routine.c_name) != 0)
            names.insert(routine.name.substr(routine.name.find('.') + 1));
    return names;
}

std::string head_name(const std::string &line)
{
    const std::string head = line.substr(0, line.find('('));
    return head.substr(head.find_last_of(' ') + 1);
}

bool begins_with(const std::string &line, const char *word)
{
    return line.compare(0, std::string(word).size(), word) == 0;
}

// The source without the bodies of some functions.
std::string without(const std::string &source, const Names &names)
{
    std::string text;
    bool is_private = false;
    int depth = 0;
    bool is_dropped = false;
    for (const std::string &line : lines_of(source)) {
        if (line == "PRIVATE") is_private = true;
        const bool is_head = begins_with(line, "FUNCTION ") || begins_with(line, "TREE ");
        if (is_private && is_head && depth++ == 0) is_dropped = names.count(head_name(line)) != 0;
        const bool is_end = line == "END";
        if (!is_dropped) text += line + "\n";
        if (is_end && --depth == 0) is_dropped = false;
    }
    return text;
}

// Programs.

struct Counts {
    int agreed = 0;
    int excluded = 0;      // by a "not" of the program
    int inexpressible = 0; // by the target
    int failed = 0;
};

struct Program {
    std::filesystem::path path;
    std::string folder;
    stated::Source source;
    std::vector<std::string> paths; // of its sources
};

Program read_program(const std::filesystem::path &path, const std::string &scratch)
{
    Program program;
    program.path = path;
    program.folder = scratch + "/" + path.stem().string();
    program.source = stated::read_source(path);
    program.paths.push_back(path.string());
    for (const std::string &other : program.source.others)
        program.paths.push_back((path.parent_path() / (other + ".tl")).string());
    return program;
}

void complain(const Program &program, const std::string &text)
{
    std::printf("%s: %s\n", program.path.filename().c_str(), text.c_str());
}

// All modules of a program; false after a complaint.
bool compile_all(const Program &program, const std::vector<std::string> &paths,
                 const std::string &folder, targets::Options options, targets::Job *job)
{
    std::filesystem::create_directories(folder);
    for (const std::string &path : paths) {
        options.read_mode = path == paths.front() ? program.source.read_mode : 2;
        job->modules.push_back(targets::compile(path, folder, options));
        const std::string &problems = job->modules.back().problems;
        if (problems.empty()) continue;
        complain(program, problems);
        return false;
    }
    return true;
}

targets::Run asked(const stated::Run &run)
{
    return { run.function, run.arguments, run.answers };
}

std::string stated_outcome(const stated::Run &run)
{
    return run.outcome + (run.calls.empty() ? "" : " ; calls " + run.calls);
}

// Holds outcomes against what the program states.
void compare(const Program &program, const char *target, const std::vector<stated::Run> &runs,
             const targets::Outcomes &outcomes, Counts *counts)
{
    for (size_t i = 0; i < runs.size(); ++i) {
        std::string expected = stated_outcome(runs[i]);
        const bool is_same = i < outcomes.size() && targets::are_same(expected, outcomes[i]);
        ++(is_same ? counts->agreed : counts->failed);
        if (is_same) continue;
        const std::string place = "line " + std::to_string(runs[i].line) + ", " + runs[i].function;
        complain(program, place + ", " + target + ": expected " + expected + ", got " +
                              (i < outcomes.size() ? outcomes[i] : "nothing"));
    }
}

bool is_excluded(const stated::Run &run, const std::string &target)
{
    for (const std::string &name : run.excluded)
        if (name == target) return true;
    return false;
}

// Writes the sources without what C cannot express; the names that are gone of the first one.
Names reduce(const Program &program, const targets::Job &whole, const std::string &folder,
             std::vector<std::string> *paths)
{
    std::filesystem::create_directories(folder);
    Names first;
    for (size_t i = 0; i < program.paths.size(); ++i) {
        const targets::Module &module = whole.modules[i];
        const std::string base = module.folder + "/" + module.base;
        const Names names = toll_names(module, inexpressible(read_file(base + ".c")));
        if (i == 0) first = names;
        paths->push_back(folder + "/" + module.base + ".tl");
        std::ofstream(paths->back(), std::ios::binary)
            << without(read_file(program.paths[i]), names);
    }
    return first;
}

// The runs that C can make.
std::vector<stated::Run> choose_runs(const Program &program, const std::string &target,
                                     const Names &left_out, Counts *counts)
{
    std::vector<stated::Run> runs;
    std::set<std::string> named;
    for (const stated::Run &run : program.source.runs) {
        const bool is_gone = left_out.count(run.function) != 0;
        const bool is_out = !is_gone && is_excluded(run, target);
        if (is_gone) ++counts->inexpressible;
        if (is_out) ++counts->excluded;
        if (!is_gone && !is_out) runs.push_back(run);
        if (is_gone) named.insert(run.function);
        if (is_out) named.insert(run.function + " (line " + std::to_string(run.line) + ")");
    }
    std::string text;
    for (const std::string &name : named)
        text += " " + name;
    if (!text.empty()) complain(program, "left out in " + target + ":" + text);
    return runs;
}

void check_c(const Program &program, const targets::Job &whole, const std::string &compiler,
             Counts *counts)
{
    const std::string folder = program.folder + "/c";
    std::vector<std::string> paths;
    const Names left_out = reduce(program, whole, folder, &paths);
    targets::Job job;
    if (!compile_all(program, paths, folder, { .outputs = targets::C }, &job)) {
        ++counts->failed;
        return;
    }
    const std::vector<stated::Run> runs = choose_runs(program, "c", left_out, counts);
    for (const stated::Run &run : runs)
        job.runs.push_back(asked(run));
    for (const targets::Module &module : job.modules) {
        if (module.c_errors == 0) continue;
        complain(program, "C of " + module.name + " still has what it cannot express");
        ++counts->failed;
    }
    std::string problem;
    const targets::Builder builder{ compiler + " -std=c11 -Wall -Wextra -Werror -O1" };
    const targets::Outcomes outcomes = targets::run_c(job, builder, &problem);
    if (!problem.empty()) complain(program, problem);
    compare(program, "C", runs, outcomes, counts);
}

// What Java cannot express is left out by the "not java" of the programs alone.
struct JavaJob {
    Program program;
    std::vector<stated::Run> runs;
};

void plan_java(const Program &program, const targets::Job &whole, std::vector<JavaJob> *plans,
               std::vector<targets::Job> *jobs, Counts *counts)
{
    targets::Job job;
    job.modules = whole.modules;
    for (const targets::Module &module : job.modules)
        if (module.java_errors != 0)
            complain(program, std::to_string(module.java_errors) + " places of " + module.name +
                                  " that Java cannot express");
    plans->push_back({ program, choose_runs(program, "java", {}, counts) });
    for (const stated::Run &run : plans->back().runs)
        job.runs.push_back(asked(run));
    jobs->push_back(std::move(job));
}

void check_java(const std::vector<JavaJob> &plans, const std::vector<targets::Job> &jobs,
                const std::string &scratch, Counts *counts)
{
    std::string problem;
    const std::vector<targets::Outcomes> outcomes = targets::run_java(jobs, scratch, &problem);
    if (!problem.empty()) {
        std::printf("Java: %s", problem.c_str());
        ++counts->failed;
    }
    for (size_t i = 0; i < plans.size(); ++i)
        compare(plans[i].program, "Java", plans[i].runs,
                i < outcomes.size() ? outcomes[i] : targets::Outcomes{}, counts);
}

void check_evaluator(const Program &program, targets::Job *job, Counts *counts)
{
    for (const stated::Run &run : program.source.runs)
        job->runs.push_back(asked(run));
    std::string problem;
    const targets::Outcomes outcomes = targets::run_evaluator(*job, &problem);
    if (!problem.empty()) complain(program, problem);
    compare(program, "P-code", program.source.runs, outcomes, counts);
}

// Without lines and checks too, P-code is sound.
void check_plain(const Program &program, Counts *counts)
{
    targets::Job job;
    std::string problem;
    const targets::Options options{ .outputs = targets::P_CODE, .flags = 0 };
    if (compile_all(program, program.paths, program.folder + "/plain", options, &job)) {
        targets::run_evaluator(job, &problem);
        if (problem.empty()) return;
        complain(program, problem);
    }
    ++counts->failed;
}

void print(const char *target, const Counts &counts)
{
    std::printf("%s: %d runs agree, %d differ; left out: %d that the target cannot express, %d "
                "that the programs name\n",
                target, counts.agreed, counts.failed, counts.inexpressible, counts.excluded);
}

std::vector<std::filesystem::path> all_programs(const char *folder)
{
    std::set<std::filesystem::path> paths;
    for (const auto &entry : std::filesystem::directory_iterator(folder))
        if (entry.path().extension() == ".tl") paths.insert(entry.path());
    return { paths.begin(), paths.end() };
}

int check_folder(const char *folder, const std::string &compiler, const std::string &scratch)
{
    Counts p_code;
    Counts c;
    Counts java;
    std::vector<JavaJob> plans;
    std::vector<targets::Job> jobs;
    for (const std::filesystem::path &path : all_programs(folder)) {
        const Program program = read_program(path, scratch);
        check_plain(program, &p_code);
        if (program.source.runs.empty()) continue;
        targets::Job whole;
        if (!compile_all(program, program.paths, program.folder, {}, &whole)) {
            ++p_code.failed;
            continue;
        }
        check_evaluator(program, &whole, &p_code);
        check_c(program, whole, compiler, &c);
        plan_java(program, whole, &plans, &jobs, &java);
    }
    check_java(plans, jobs, scratch, &java);
    print("P-code", p_code);
    print("C", c);
    print("Java", java);
    const bool has_failed = p_code.failed + c.failed + java.failed != 0;
    const bool is_good = !has_failed && p_code.agreed > 0 && c.agreed > 0 && java.agreed > 0;
    return is_good ? 0 : 1;
}

} // namespace

int main(int count, char **words)
{
    if (count != 3) {
        std::fprintf(stderr, "usage: compare_targets FOLDER C_COMPILER\n");
        return 2;
    }
    std::string scratch = (std::filesystem::temp_directory_path() / "targets_XXXXXX").string();
    if (mkdtemp(scratch.data()) == nullptr) return 2;
    setenv("TollInclude", words[1], 1);
    const int status = check_folder(words[1], words[2], scratch);
    std::error_code ignored;
    std::filesystem::remove_all(scratch, ignored);
    return status;
}
