// evaluate: verifies all functions of module files, and runs one.
// usage: evaluate MODULE... [--run NAME [ARGUMENT...]]
#include <cstdio>
#include <cstdlib>

#include "evaluator.h"

namespace
{

int show_findings(const evaluator::Program &program)
{
    for (const std::string &problem : program.problems)
        std::printf("%s\n", problem.c_str());
    for (const evaluator::Finding &finding : program.findings)
        std::printf("%s: %08x: %s\n", finding.function.c_str(), finding.offset,
                    finding.reason.c_str());
    return program.findings.empty() && program.problems.empty() ? 0 : 1;
}

// A number stands for itself, anything else is a string.
uint32_t read_argument(evaluator::Program *program, const char *text)
{
    char *end = nullptr;
    const long long number = std::strtoll(text, &end, 0);
    if (end != text && *end == 0) return static_cast<uint32_t>(number);
    return evaluator::place_text(program, text);
}

int show_result(const evaluator::Result &result)
{
    for (const std::string &call : result.calls)
        std::printf("calls %s\n", call.c_str());
    switch (result.outcome) {
    case evaluator::Outcome::RETURNED:
        std::printf("returns %d\n", result.word);
        return 0;
    case evaluator::Outcome::STOPPED:
        std::printf("stops\n");
        return 0;
    case evaluator::Outcome::RAISED:
        std::printf("raises %d, %d\n", result.word, result.argument);
        return 1;
    default:
        std::printf("%s, line %u: %s\n", result.function.c_str(), result.line,
                    result.reason.c_str());
        return 1;
    }
}

} // namespace

int main(int count, char **words)
{
    std::vector<std::string> files;
    int at = 1;
    while (at < count && std::string{ words[at] } != "--run")
        files.emplace_back(words[at++]);
    evaluator::Program program = evaluator::link(files);
    evaluator::verify(&program);
    const int status = show_findings(program);
    if (files.empty() || program.images.empty()) return 1;
    if (status != 0 || at + 1 >= count) return status;
    evaluator::Words arguments;
    for (int i = at + 2; i < count; ++i)
        arguments.push_back(read_argument(&program, words[i]));
    return show_result(evaluator::run(&program, words[at + 1], arguments));
}
