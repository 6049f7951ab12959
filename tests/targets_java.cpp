// Runs on the Java target: one virtual machine compiles the classes of all jobs and calls their
// functions.
#include <filesystem>
#include <fstream>

#include "targets.h"

namespace targets
{

namespace
{

std::string source_folder()
{
    return OSTRUM_SOURCE_DIR;
}

// What the harness is to do with a job, a line for each step.
std::string plan_of(const Job &job)
{
    const Module &module = job.modules.front();
    std::string plan = "job\t" + module.folder + "\t" + module.base + "\t" + module.name + "\n";
    for (const Module &each : job.modules) {
        for (const Routine &syscall : each.syscalls) {
            if (syscall.result.kind == Kind::FLOAT) plan += "float\t" + syscall.name + "\n";
            if (syscall.result.kind == Kind::TEXT) plan += "text\t" + syscall.name + "\n";
            const int32_t values = syscall.result.values;
            if (values != 0 && job.has_proper_answers)
                plan += "values\t" + syscall.name + "\t" + std::to_string(values) + "\n";
        }
    }
    for (const std::string &attribute : job.attributes)
        plan += "set\t" + attribute + "\n";
    plan += "build\n";
    for (const Run &run : job.runs) {
        plan += "run\t" + run.function + "\t" + std::to_string(run.arguments.size());
        for (const std::string &argument : run.arguments)
            plan += "\t" + literal(argument);
        for (const int32_t answer : run.answers)
            plan += "\t" + std::to_string(answer);
        plan += "\n";
    }
    return plan;
}

// The run time and the harness, compiled once for each folder.
std::string build_support(const std::string &folder)
{
    const std::string classes = folder + "/harness";
    if (std::filesystem::exists(classes + "/Harness.class")) return "";
    return run_command("javac -Xlint:all -Werror -d " + classes + " " + source_folder() +
                           "/runtime/java/halvorn/types/*.java " + source_folder() +
                           "/tests/targets/Harness.java",
                       folder);
}

// The lines of one job; what it said of its build goes to the problem.
Outcomes take_outcomes(std::ifstream *said, const Job &job, std::string *problem)
{
    std::string line;
    std::getline(*said, line);
    if (line != "built") {
        for (char &c : line)
            if (c == '\t') c = '\n';
        *problem += line + "\n";
    }
    Outcomes outcomes;
    for (size_t i = 0; i < job.runs.size() && std::getline(*said, line); ++i)
        outcomes.push_back(line);
    return outcomes;
}

} // namespace

std::vector<Outcomes> run_java(const std::vector<Job> &jobs, const std::string &folder,
                               std::string *problem)
{
    *problem += build_support(folder);
    if (!problem->empty()) return {};
    const std::string plan = folder + "/plan";
    const std::string said = folder + "/said_java";
    std::ofstream file(plan, std::ios::binary);
    for (const Job &job : jobs)
        file << plan_of(job);
    file.close();
    *problem += run_command(
        "java -Xshare:auto -cp " + folder + "/harness Harness " + plan + " " + said, folder);
    if (!problem->empty()) return {};
    std::vector<Outcomes> outcomes;
    std::ifstream lines(said, std::ios::binary);
    for (const Job &job : jobs)
        outcomes.push_back(take_outcomes(&lines, job, problem));
    return outcomes;
}

} // namespace targets
