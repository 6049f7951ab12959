// Runs on the C target: a program around the generated text, which calls its functions.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

#include "targets.h"

namespace targets
{

namespace
{

std::string source_folder()
{
    return OSTRUM_SOURCE_DIR;
}

const char *suffix_of(Kind kind)
{
    switch (kind) {
    case Kind::FLOAT:
        return "float";
    case Kind::TEXT:
        return "text";
    default:
        return "word";
    }
}

// Syscalls.

std::string arguments_of(const Routine &syscall)
{
    std::string text;
    for (size_t i = 0; i < syscall.arguments.size(); ++i)
        text += (i == 0 ? "" : ", ") + syscall.arguments[i].c_type + " a" + std::to_string(i);
    if (!syscall.is_open) return text.empty() ? "void" : text;
    return text.empty() ? "INT count, ..." : text + ", ...";
}

std::string log_extras(const Routine &syscall)
{
    const size_t count = syscall.arguments.size();
    const std::string last = count == 0 ? "count" : "a" + std::to_string(count - 1);
    const bool is_format = count > 0 && syscall.arguments[count - 1].kind == Kind::TEXT;
    std::string text = "    va_list extras;\n    va_start(extras, " + last + ");\n";
    text += is_format    ? "    harness_extras(" + last + ", extras);\n"
            : count == 0 ? "    harness_extra_words(count, extras);\n"
                         : "";
    return text + "    va_end(extras);\n";
}

std::string answer_of(const Job &job, const Routine &syscall)
{
    switch (syscall.result.kind) {
    case Kind::NOTHING:
        return "    harness_answer();\n";
    case Kind::FLOAT:
        return "    return toll_float_of_word(harness_answer());\n";
    case Kind::TEXT:
        return "    return harness_answer() == 0 ? NULL : \"answer\";\n";
    default:
        break;
    }
    const std::string cut = syscall.result.values == 0 || !job.has_proper_answers
                                ? ""
                                : " % " + std::to_string(syscall.result.values) + "u";
    return "    return (" + syscall.result.c_type + ")((unsigned)harness_answer()" + cut + ");\n";
}

std::string syscall_text(const Job &job, const Routine &syscall, const std::string &number)
{
    std::string text = "static " + syscall.result.c_type + " harness_syscall_" + number + "(" +
                       arguments_of(syscall) + ")\n{\n";
    text += "    harness_call(\"" + short_name(job, syscall) + "\");\n";
    for (size_t i = 0; i < syscall.arguments.size(); ++i) {
        const Kind kind = syscall.arguments[i].kind;
        const std::string cast = kind == Kind::WORD || kind == Kind::BYTE ? "(INT)" : "";
        text += std::string("    harness_") + suffix_of(kind) + "(" + cast + "a" +
                std::to_string(i) + ");\n";
    }
    if (syscall.is_open) text += log_extras(syscall);
    return text + answer_of(job, syscall) + "}\n";
}

// Runs.

std::string argument_text(const Value &value, const std::string &stated)
{
    const std::string text = literal(stated);
    if (text[0] == '"') return text;
    if (value.kind == Kind::TEXT) return "NULL";
    return "(" + value.c_type + ")" + (text == "-2147483648" ? "INT32_MIN" : text);
}

std::string call_text(const Routine &routine, const Run &run)
{
    std::string text = routine.c_name + "(";
    for (size_t i = 0; i < run.arguments.size(); ++i)
        text += (i == 0 ? "" : ", ") + argument_text(routine.arguments[i], run.arguments[i]);
    return text + ")";
}

std::string run_text(const Job &job, const Run &run, const std::string &number)
{
    const Routine *routine =
        find_routine(job.modules.front().functions, job.modules.front().name + "." + run.function);
    if (routine == nullptr) return "#error no function " + run.function + "\n";
    const std::string call = call_text(*routine, run);
    const Kind kind = routine->result.kind;
    std::string text = "static void harness_run_" + number + "(void)\n{\n";
    if (kind == Kind::NOTHING) {
        text += "    " + call + ";\n    harness_result_word(0);\n";
    } else {
        const std::string cast = kind == Kind::WORD || kind == Kind::BYTE ? "(INT)" : "";
        text += std::string("    harness_result_") + suffix_of(kind) + "(" + cast + call + ");\n";
    }
    text += "}\nstatic const INT harness_answers_" + number + "[] = { 0";
    for (const int32_t answer : run.answers)
        text += ", " + (answer == INT32_MIN ? "INT32_MIN" : std::to_string(answer));
    return text + " };\n";
}

std::string table_text(const Job &job)
{
    std::string text = "static const struct harness_run harness_runs[] = {\n";
    for (size_t i = 0; i < job.runs.size(); ++i) {
        const std::string number = std::to_string(i);
        text += "    { harness_run_" + number + ", harness_answers_" + number + " + 1, " +
                std::to_string(job.runs[i].answers.size()) + " },\n";
    }
    return text + "};\n";
}

// The program owns the data items that the generated text declares; each is told by its address alone.
std::string items_text(const Job &job)
{
    const std::string head = "extern const struct toll_item ";
    std::set<std::string> names;
    for (const Module &module : job.modules) {
        for (const char *extension : { ".h", ".c" }) {
            std::ifstream file(module.folder + "/" + module.base + extension);
            for (std::string line; std::getline(file, line);)
                if (line.compare(0, head.size(), head) == 0)
                    names.insert(line.substr(head.size(), line.find('[') - head.size()));
        }
    }
    std::string text;
    for (const std::string &name : names)
        text += "const struct toll_item " + name + "[] = { { \"" + name + "\", NULL } };\n";
    return text;
}

// The text of the module stands in the program, so that its private functions can be called.
std::string program_text(const Job &job)
{
    std::string text = "#include \"" + job.modules.front().base +
                       ".c\"\n#include \"harness.h\"\n\n" + items_text(job);
    std::string main = "int main(void)\n{\n";
    int32_t count = 0;
    for (const Module &module : job.modules) {
        for (const Routine &syscall : module.syscalls) {
            const std::string number = std::to_string(count++);
            text += syscall_text(job, syscall, number);
            main += "    toll_set_syscall(" + std::to_string(syscall.number) +
                    ", (TOLL_FUNCTION)harness_syscall_" + number + ");\n";
        }
    }
    for (size_t i = 0; i < job.runs.size(); ++i)
        text += run_text(job, job.runs[i], std::to_string(i));
    main += "    return harness_main(harness_runs, " + std::to_string(job.runs.size()) + ");\n}\n";
    return text + table_text(job) + main;
}

// The options of everything that is compiled for a job.
std::string compiler_of(const Job &job, const Builder &builder)
{
    const std::string &folder = job.modules.front().folder;
    return builder.command + " -I" + folder + " -I" + source_folder() + "/runtime/c/include -I" +
           source_folder() + "/tests/targets";
}

// The run time and the harness are compiled once for each folder and compiler.
std::string support_objects(const Job &job, const Builder &builder, std::string *problem)
{
    const std::string &folder = job.modules.front().folder;
    const std::string key = std::to_string(std::hash<std::string>{}(builder.command));
    std::string objects;
    for (const char *source : { "/runtime/c/tollrt.c", "/tests/targets/harness.c" }) {
        const std::string stem = std::filesystem::path(source).stem().string();
        const std::string object = folder + "/" + stem + key + ".o";
        objects += " " + object;
        if (std::filesystem::exists(object)) continue;
        *problem += run_command(compiler_of(job, builder) + " -c -o " + object + " " +
                                    source_folder() + source,
                                folder);
    }
    return objects;
}

std::string build_command(const Job &job, const Builder &builder, const std::string &objects)
{
    const std::string &folder = job.modules.front().folder;
    std::string command =
        compiler_of(job, builder) + " -o " + folder + "/program " + folder + "/program.c";
    for (size_t i = 1; i < job.modules.size(); ++i)
        command += " " + folder + "/" + job.modules[i].base + ".c";
    return command + objects;
}

Outcomes read_lines(const std::string &path)
{
    Outcomes lines;
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

Outcomes run_c(const Job &job, const Builder &builder, std::string *problem)
{
    const std::string &folder = job.modules.front().folder;
    std::ofstream(folder + "/program.c", std::ios::binary) << program_text(job);
    const std::string objects = support_objects(job, builder, problem);
    if (problem->empty()) *problem += run_command(build_command(job, builder, objects), folder);
    if (!problem->empty()) return {};
    const std::string said = folder + "/said";
    if (std::system((folder + "/program >" + said + " 2>&1").c_str()) != 0)
        *problem += "the program ended early\n";
    Outcomes outcomes = read_lines(said);
    if (outcomes.size() != job.runs.size())
        *problem += std::to_string(outcomes.size()) + " lines from " +
                    std::to_string(job.runs.size()) + " runs\n";
    return outcomes;
}

} // namespace targets
