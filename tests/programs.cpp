// Runs the programs of tests/programs, each of which says in its comments what comes out.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>

#include <gtest/gtest.h>

#include "program.h"
#include "stated_program.h"

namespace
{

using evaluator::Outcome;

std::filesystem::path programs_folder()
{
    return std::filesystem::path(OSTRUM_SOURCE_DIR) / "tests" / "programs";
}

std::vector<std::filesystem::path> all_programs()
{
    std::vector<std::filesystem::path> paths;
    for (const auto &entry : std::filesystem::directory_iterator(programs_folder()))
        if (entry.path().extension() == ".tl") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

// Answers each syscall with the next number of the run.
evaluator::Hooks answering(const evaluator::Program &linked, const std::vector<int32_t> &answers)
{
    auto next = std::make_shared<size_t>(0);
    evaluator::Hooks hooks;
    for (const evaluator::Image &image : linked.images) {
        for (const auto &[number, name] : image.syscalls)
            hooks[name] = [next, answers](evaluator::Program *, const evaluator::Words &) {
                const size_t at = (*next)++;
                return at < answers.size() ? static_cast<uint32_t>(answers[at]) : 0U;
            };
    }
    return hooks;
}

// What happened, in the words of a run's outcome.
std::string describe(evaluator::Program *linked, const evaluator::Result &result,
                     const std::string &expected)
{
    switch (result.outcome) {
    case Outcome::RETURNED:
        break;
    case Outcome::STOPPED:
        return "stops";
    case Outcome::RAISED:
        return "raises " + std::to_string(result.word) + ", " + std::to_string(result.argument);
    default:
        return "fails " + result.reason;
    }
    const auto word = static_cast<uint32_t>(result.word);
    const auto text =
        expected.find('"') == std::string::npos ? std::nullopt : evaluator::text_at(linked, word);
    return "= " + (text ? '"' + *text + '"' : std::to_string(result.word));
}

uint32_t argument_word(evaluator::Program *linked, const std::string &text)
{
    const std::string byte = "byte ";
    if (text.compare(0, byte.size(), byte) == 0)
        return static_cast<uint32_t>(std::stoll(text.substr(byte.size()))) << 24;
    if (text[0] != '"') return static_cast<uint32_t>(std::stoll(text, nullptr, 0));
    return evaluator::place_text(linked, text.substr(1, text.size() - 2));
}

std::string join(const std::vector<std::string> &calls, const std::string &module)
{
    std::string text;
    for (const std::string &call : calls) {
        const bool is_own = call.compare(0, module.size() + 1, module + ".") == 0;
        text += (text.empty() ? "" : " ") + call.substr(is_own ? module.size() + 1 : 0);
    }
    return text;
}

void check_run(evaluator::Program linked, const stated::Source &source, const stated::Run &run)
{
    SCOPED_TRACE("line " + std::to_string(run.line) + ", " + run.function);
    evaluator::Words arguments;
    for (const std::string &argument : run.arguments)
        arguments.push_back(argument_word(&linked, argument));
    const evaluator::Result result = evaluator::run(&linked, source.module + "." + run.function,
                                                    arguments, answering(linked, run.answers));
    EXPECT_EQ(describe(&linked, result, run.outcome), run.outcome);
    EXPECT_EQ(join(result.calls, source.module), run.calls);
}

class Programs : public testing::TestWithParam<std::filesystem::path>
{
};

TEST_P(Programs, GiveWhatTheySay)
{
    const stated::Source source = stated::read_source(GetParam());
    setenv("TollInclude", programs_folder().c_str(), 1);
    for (const uint32_t flags : { 0U, program::WITH_LINES | program::WITH_CHECKS }) {
        std::vector<std::string> modules{ program::compile(GetParam().string(), flags,
                                                           source.read_mode) };
        for (const std::string &other : source.others)
            modules.push_back(
                program::compile((programs_folder() / (other + ".tl")).string(), flags));
        const evaluator::Program linked = program::link_sound(modules);
        if (flags == 0 || HasFailure()) continue;
        for (const stated::Run &run : source.runs)
            check_run(linked, source, run);
    }
}

INSTANTIATE_TEST_SUITE_P(, Programs, testing::ValuesIn(all_programs()),
                         [](const auto &info) { return info.param.stem().string(); });

} // namespace
