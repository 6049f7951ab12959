// Sources compiled to every target, and their functions run on each of them. What comes out is told in
// the same words everywhere, so that it can be compared as text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "evaluator.h"

namespace targets
{

// How a word is handed over and shown.
enum class Kind { NOTHING, WORD, BYTE, FLOAT, TEXT };

struct Value {
    Kind kind = Kind::WORD;
    std::string c_type;
    std::string java_type;
    int32_t values = 0; // of an enumeration or CHAR, from 0 on; else 0
};

struct Routine {
    std::string name; // with its module
    std::string c_name;
    std::string java_name;
    Value result;
    std::vector<Value> arguments;
    bool is_open = false; // takes arguments of any number behind its own
    int32_t number = 0;   // of a syscall
};

// What one source became.
struct Module {
    std::string name;
    std::string folder;
    std::string base;        // name of its files without extension
    std::string problems;    // messages of the compiler
    int32_t c_errors = 0;    // what C cannot express
    int32_t java_errors = 0; // what Java cannot express
    std::vector<Routine> functions;
    std::vector<Routine> syscalls;
};

enum : uint32_t { P_CODE = 1, C = 2, JAVA = 4 };

// What a source is compiled to, and how.
struct Options {
    uint32_t outputs = P_CODE | C | JAVA;
    int32_t read_mode = 2;
    uint32_t flags = 0x202; // lines are noted, bounds checked
};

// Compiles a source; its files go to the folder.
Module compile(const std::string &source, const std::string &folder, const Options &options);

// One run of a function of the first module of a program.
struct Run {
    std::string function;               // without its module
    std::vector<std::string> arguments; // 5, byte 5 or "text"
    std::vector<int32_t> answers;       // what syscalls give, in order, 0 behind the last
};

// The modules of one program, the one with the functions to run first, and the runs.
struct Job {
    std::vector<Module> modules;
    std::vector<Run> runs;
    std::vector<std::string> attributes; // of items in Java: "CLASS FIELD NAME VALUE..."
    bool has_proper_answers = false;     // one beyond the values of its type becomes one of them
};

// What came out of each run: "= 5 ; calls a(1) b("x")", "stops", "raises 7, 2", "fails REASON", or
// "fails by signal N". Empty, and a text in problem, if it came to no run.
using Outcomes = std::vector<std::string>;

// Where items have attributes, converters go by their records, forwards alone.
Outcomes run_evaluator(const Job &job, std::string *problem);

// How C text is built.
struct Builder {
    std::string command; // compiler and options
};

Outcomes run_c(const Job &job, const Builder &builder, std::string *problem);

// All jobs in one virtual machine.
std::vector<Outcomes> run_java(const std::vector<Job> &jobs, const std::string &folder,
                               std::string *problem);

// Whether two outcomes tell the same. What ends a run stands in each target's own words.
bool are_same(const std::string &one, const std::string &other);

const Routine *find_routine(const std::vector<Routine> &routines, const std::string &name);

// The name of a routine, without that of the first module.
std::string short_name(const Job &job, const Routine &routine);

// A word of a stated run, as an argument of the kind, in C and Java.
std::string literal(const std::string &stated);

// Runs a command with its output in a file of the folder; the output if it fails, else empty.
std::string run_command(const std::string &command, const std::string &folder);

// Extras of a call behind a format: 's' for a text, anything else for a word.
std::string extra_kinds(const std::string &format);

} // namespace targets
