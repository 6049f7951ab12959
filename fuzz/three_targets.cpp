// three_targets: makes random programs, compiles each to P-code and to the text targets, runs all and
// compares results and logs of syscalls. A program that differs is cut down to the smallest one that
// still does. A number and a seed make the same program for the same targets everywhere.
// usage: three_targets [--seed N] [--count N] [--first N] [--targets c,java] [--jobs N] [--print]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

#include "random_program.h"
#include "targets.h"

namespace
{

using random_program::Program;

struct Options {
    uint64_t seed = 1;
    uint32_t count = 2000;
    uint32_t first = 0;
    uint32_t outputs = targets::P_CODE | targets::C;
    uint32_t jobs = 2;
    bool only_prints = false;
};

// Programs of a block of numbers are compiled together. Where both text targets are asked for, the
// last one of so many blocks goes without C, for the sake of what C cannot express.
constexpr uint32_t block_size = 100;
constexpr uint32_t block_cycle = 4;
constexpr int most_cut_down = 2; // differing programs in each process that are cut down
constexpr int most_trials = 300; // of one of them

// Compilers and options take turns. Undefined behaviour ends a run by a signal, and a warning the build.
constexpr const char *builders[] = {
    "gcc -std=c11 -Wall -Wextra -Werror -O2",
    "clang -std=c11 -Wall -Wextra -Werror -O1 -fsanitize=undefined -fsanitize-trap=undefined",
    ("gcc -std=c11 -Wall -Wextra -Werror -O0 -fsanitize=undefined "
     "-fsanitize-undefined-trap-on-error"),
    "clang -std=c11 -Wall -Wextra -Werror -O2",
};

// The work of one process.
struct Worker {
    const Options *options;
    uint32_t outputs = 0; // of the block in hand
    int32_t read_mode = 2;
    std::string folder;
    targets::Builder builder;
    uint32_t agreed = 0;   // programs
    uint32_t too_long = 0; // runs left out
    uint32_t differing = 0;
    int cut_down = 0;
};

// What a batch gave, run by run.
struct Trial {
    std::string problem; // it did not come to runs
    bool is_compiled = false;
    std::vector<std::string> expected;
    std::vector<std::string> in_c;
    std::vector<std::string> in_java;
};

targets::Job job_of(const std::vector<const Program *> &programs)
{
    targets::Job job;
    job.has_proper_answers = true;
    for (const Program *program : programs) {
        for (size_t run = 0; run < program->arguments.size(); ++run) {
            std::vector<std::string> arguments;
            for (const int32_t argument : program->arguments[run])
                arguments.push_back(std::to_string(argument));
            job.runs.push_back({ program->entry, arguments, program->answers[run] });
        }
    }
    return job;
}

// The modules of a job; what the compiler has against them.
std::string compile(const Worker &worker, const random_program::Sources &sources, targets::Job *job)
{
    const targets::Options options{ .outputs = worker.outputs, .read_mode = worker.read_mode };
    const std::string main = worker.folder + "/fuzz.tl";
    const std::string library = worker.folder + "/fuzzlib.tl";
    std::filesystem::remove_all(worker.folder + "/classes");
    for (const char *name : { "fuzzlib.tl", "fuzzlib.c", "fuzzlib.java" })
        std::filesystem::remove(worker.folder + "/" + name);
    std::ofstream(main, std::ios::binary) << sources.main;
    if (!sources.library.empty()) std::ofstream(library, std::ios::binary) << sources.library;
    job->modules.push_back(targets::compile(main, worker.folder, options));
    std::string problems = job->modules.back().problems;
    const char *owner = sources.library.empty() ? "fuzz" : "fuzzlib";
    for (const std::string &attribute : random_program::converter_attributes)
        job->attributes.push_back(std::string(owner) + "\t" + attribute);
    if (!sources.library.empty()) {
        job->modules.push_back(targets::compile(library, worker.folder, options));
        problems += job->modules.back().problems;
    }
    return problems;
}

Trial try_programs(const Worker &worker, const std::vector<const Program *> &programs)
{
    Trial trial;
    targets::Job job = job_of(programs);
    trial.problem = compile(worker, random_program::sources_of(programs), &job);
    if (!trial.problem.empty()) return trial;
    trial.is_compiled = true;
    trial.expected = targets::run_evaluator(job, &trial.problem);
    if (!trial.problem.empty()) return trial;
    if (worker.outputs & targets::C)
        trial.in_c = targets::run_c(job, worker.builder, &trial.problem);
    if (!trial.problem.empty() || !(worker.outputs & targets::JAVA)) return trial;
    for (targets::Outcomes &outcomes : targets::run_java({ job }, worker.folder, &trial.problem))
        trial.in_java = std::move(outcomes);
    return trial;
}

constexpr char too_long[] = "fails runs too long";

bool is_too_long(const std::string &outcome)
{
    return outcome.compare(0, sizeof too_long - 1, too_long) == 0;
}

std::string difference_of(const Trial &trial, size_t run, const char *target,
                          const std::vector<std::string> &got)
{
    if (run >= got.size() || targets::are_same(trial.expected[run], got[run])) return "";
    return "P-code: " + trial.expected[run] + "\n" + target + ": " + got[run] + "\n";
}

// What is wrong with the runs from first on; empty if they agree.
std::string difference(const Trial &trial, size_t first, size_t count)
{
    if (!trial.problem.empty()) return trial.problem;
    for (size_t i = first; i < first + count; ++i) {
        if (is_too_long(trial.expected[i])) continue;
        const std::string text = difference_of(trial, i, "C", trial.in_c) +
                                 difference_of(trial, i, "Java", trial.in_java);
        if (!text.empty()) return text;
    }
    return "";
}

std::string kind_of(const Trial &trial, const std::string &text)
{
    if (text.empty()) return "";
    if (!trial.is_compiled) return "refused";
    return trial.problem.empty() ? "differs" : "not built";
}

// Cuts while the fault stays of its kind.
Program cut_down(const Worker &worker, Program program, const std::string &kind)
{
    int trials = 0;
    for (size_t cut = 0; trials < most_trials; ++trials) {
        const std::optional<Program> candidate = random_program::smaller(program, cut);
        if (!candidate) break;
        const Trial trial = try_programs(worker, { &*candidate });
        const std::string text = difference(trial, 0, candidate->arguments.size());
        if (kind_of(trial, text) == kind) {
            program = *candidate;
        } else {
            ++cut;
        }
    }
    return program;
}

void report(Worker *worker, uint32_t number, const Program &program, const std::string &text,
            const std::string &kind)
{
    ++worker->differing;
    std::fprintf(stdout, "program %u of seed %llu, %s: %s\n", number,
                 static_cast<unsigned long long>(worker->options->seed), kind.c_str(),
                 worker->builder.command.c_str());
    std::fprintf(stdout, "%s", text.c_str());
    std::fflush(stdout);
    if (worker->cut_down++ < most_cut_down) {
        const Program small = cut_down(*worker, program, kind);
        const Trial trial = try_programs(*worker, { &small });
        const random_program::Sources sources = random_program::sources_of({ &small });
        std::fprintf(stdout, "The smallest:\n%s%s%s",
                     difference(trial, 0, small.arguments.size()).c_str(), sources.library.c_str(),
                     sources.main.c_str());
        for (size_t i = 0; i < small.arguments.size(); ++i) {
            std::fprintf(stdout, "; run %s(%d, %d) answers", small.entry.c_str(),
                         small.arguments[i][0], small.arguments[i][1]);
            for (const int32_t answer : small.answers[i])
                std::fprintf(stdout, " %d", answer);
            std::fprintf(stdout, "\n");
        }
    }
    std::fflush(stdout);
}

void check_alone(Worker *worker, uint32_t number, const Program &program)
{
    const Trial trial = try_programs(*worker, { &program });
    const std::string text = difference(trial, 0, program.arguments.size());
    if (text.empty()) {
        ++worker->agreed;
    } else {
        report(worker, number, program, text, kind_of(trial, text));
    }
}

void check_batch(Worker *worker, uint32_t first, const std::vector<Program> &programs)
{
    std::vector<const Program *> all;
    for (const Program &program : programs)
        all.push_back(&program);
    const Trial trial = try_programs(*worker, all);
    size_t at = 0;
    for (size_t i = 0; i < programs.size(); ++i) {
        const size_t count = programs[i].arguments.size();
        for (size_t run = at; trial.problem.empty() && run < at + count; ++run)
            worker->too_long += is_too_long(trial.expected[run]);
        if (difference(trial, at, count).empty()) {
            ++worker->agreed;
        } else {
            check_alone(worker, first + static_cast<uint32_t>(i), programs[i]);
        }
        at += count;
    }
}

uint32_t outputs_of(const Options &options, uint32_t block)
{
    const bool is_for_java = block % block_cycle == block_cycle - 1;
    const bool has_java = (options.outputs & targets::JAVA) != 0;
    return has_java && is_for_java ? options.outputs & ~targets::C : options.outputs;
}

// Blocks differ in what the way of compiling them allows.
random_program::Features features_of(const Options &options, uint32_t block)
{
    const bool has_c = (outputs_of(options, block) & targets::C) != 0;
    const bool has_inner = block % 2 == 1;
    return { .has_exceptions = !has_c,
             .has_run_time_lengths = !has_c,
             .has_library = block % 3 == 0,
             .has_inner = has_inner,
             .has_outer_variables = has_inner && !has_c,
             .has_conversions = !has_c };
}

Program program_of(const Options &options, uint32_t number)
{
    return random_program::make(options.seed, number, features_of(options, number / block_size));
}

void work(Worker *worker, uint32_t index)
{
    const Options &options = *worker->options;
    const uint32_t end = options.first + options.count;
    uint32_t block = options.first / block_size + index;
    for (; block * block_size < end; block += options.jobs) {
        worker->outputs = outputs_of(options, block);
        worker->read_mode = features_of(options, block).has_inner ? 0 : 2;
        worker->builder.command = builders[(block + block / block_cycle) % std::size(builders)];
        std::vector<Program> programs;
        const uint32_t first = std::max(options.first, block * block_size);
        for (uint32_t i = first; i < std::min(end, (block + 1) * block_size); ++i)
            programs.push_back(program_of(options, i));
        check_batch(worker, first, programs);
    }
}

// Processes, since the compiler keeps its state for the whole process.

std::string path_of(const std::string &scratch, uint32_t index)
{
    return scratch + "/" + std::to_string(index);
}

void start_worker(const Options &options, const std::string &scratch, uint32_t index)
{
    if (fork() != 0) return;
    static char buffer[1 << 20]; // reports of two processes do not mix
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
    const std::string folder = path_of(scratch, index);
    std::filesystem::create_directories(folder);
    setenv("TollInclude", folder.c_str(), 1);
    Worker worker{ .options = &options, .folder = folder, .builder = {} };
    work(&worker, index);
    std::ofstream(folder + ".counts")
        << worker.agreed << " " << worker.too_long << " " << worker.differing << "\n";
    _exit(0);
}

int finish(const Options &options, const std::string &scratch)
{
    uint32_t agreed = 0;
    uint32_t too_long_runs = 0;
    uint32_t differing = 0;
    for (uint32_t i = 0; i < options.jobs; ++i) {
        std::ifstream counts(path_of(scratch, i) + ".counts");
        uint32_t some[3] = {};
        if (counts >> some[0] >> some[1] >> some[2]) {
            agreed += some[0];
            too_long_runs += some[1];
            differing += some[2];
        }
    }
    std::printf("%u of %u programs of seed %llu agree, %u differ; %u runs left out as too long\n",
                agreed, options.count, static_cast<unsigned long long>(options.seed), differing,
                too_long_runs);
    return agreed == options.count ? 0 : 1;
}

int check_all(const Options &options)
{
    std::string scratch = (std::filesystem::temp_directory_path() / "programs_XXXXXX").string();
    if (mkdtemp(scratch.data()) == nullptr) return 2;
    for (uint32_t i = 0; i < options.jobs; ++i)
        start_worker(options, scratch, i);
    while (wait(nullptr) > 0)
        ;
    const int status = finish(options, scratch);
    std::error_code ignored;
    std::filesystem::remove_all(scratch, ignored);
    return status;
}

int print_programs(const Options &options)
{
    for (uint32_t i = 0; i < options.count; ++i) {
        const Program program = program_of(options, options.first + i);
        const random_program::Sources sources = random_program::sources_of({ &program });
        std::fputs((sources.library + sources.main).c_str(), stdout);
    }
    return 0;
}

bool read_number(const char *text, uint64_t *number)
{
    char *end = nullptr;
    *number = std::strtoull(text, &end, 0);
    return end != text && *end == 0;
}

// Text targets of a list; 0 if it is none.
uint32_t targets_of(const std::string &list)
{
    if (list == "c") return targets::P_CODE | targets::C;
    if (list == "java") return targets::P_CODE | targets::JAVA;
    if (list == "c,java") return targets::P_CODE | targets::C | targets::JAVA;
    return 0;
}

bool read_options(int count, char **words, Options *options)
{
    for (int i = 1; i < count; ++i) {
        const std::string word = words[i];
        uint64_t number = 0;
        if (word == "--print") {
            options->only_prints = true;
            continue;
        }
        if (++i >= count) return false;
        if (word == "--targets") {
            options->outputs = targets_of(words[i]);
            if (options->outputs == 0) return false;
            continue;
        }
        if (!read_number(words[i], &number)) return false;
        if (word == "--seed")
            options->seed = number;
        else if (word == "--count")
            options->count = static_cast<uint32_t>(number);
        else if (word == "--first")
            options->first = static_cast<uint32_t>(number);
        else if (word == "--jobs" && number > 0)
            options->jobs = static_cast<uint32_t>(number);
        else
            return false;
    }
    return true;
}

} // namespace

int main(int count, char **words)
{
    Options options;
    if (!read_options(count, words, &options)) {
        std::fprintf(stderr,
                     "usage: three_targets [--seed N] [--count N] [--first N] [--targets c,java] "
                     "[--jobs N] [--print]\n");
        return 2;
    }
    return options.only_prints ? print_programs(options) : check_all(options);
}
