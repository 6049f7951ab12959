// Runs the programs of tests/programs, each of which says in its comments what comes out:
//
//   ; with NAME                  another source, compiled and linked to this one
//   ; read whole         parsed as it is read, as functions in functions need it
//   ; run NAME(2, -3, "text") OUTCOME [; calls a(1) b("x")] [; answers 4 5]
//
// An argument of one byte, CHAR or ENUM, has the word byte before it. OUTCOME is "= 5", "= "text"", "raises 7, 2", "stops" or "fails REASON"; answers are what syscalls give,
// in order, 0 behind the last. Each run starts with fresh storage.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "program.h"

namespace
{

using evaluator::Outcome;

struct StatedRun {
    int line = 0;
    std::string function;
    std::vector<std::string> arguments;
    std::string outcome;
    std::string calls;
    std::vector<int32_t> answers;
};

struct Source {
    std::string module;
    std::vector<std::string> others;
    int32_t read_mode = 2;
    std::vector<StatedRun> runs;
};

std::filesystem::path programs_folder()
{
    return std::filesystem::path(OSTRUM_SOURCE_DIR) / "tests" / "programs";
}

std::string trim(const std::string &text)
{
    const size_t first = text.find_first_not_of(' ');
    const size_t last = text.find_last_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

// Parts between separators that stand outside of quotes.
std::vector<std::string> split(const std::string &text, char separator)
{
    std::vector<std::string> parts(1);
    bool is_quoted = false;
    for (const char c : text) {
        if (c == '"') is_quoted = !is_quoted;
        if (c == separator && !is_quoted) {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    for (std::string &part : parts)
        part = trim(part);
    return parts;
}

StatedRun read_run(const std::string &text, int line)
{
    StatedRun run;
    run.line = line;
    const std::vector<std::string> parts = split(text, ';');
    const size_t open = parts[0].find('(');
    const size_t close = parts[0].find(')');
    run.function = parts[0].substr(0, open);
    const std::string arguments = parts[0].substr(open + 1, close - open - 1);
    if (!trim(arguments).empty()) run.arguments = split(arguments, ',');
    run.outcome = trim(parts[0].substr(close + 1));
    for (size_t i = 1; i < parts.size(); ++i) {
        std::istringstream words(parts[i]);
        std::string kind;
        words >> kind;
        if (kind == "calls") run.calls = trim(parts[i].substr(kind.size()));
        for (int32_t answer = 0; kind == "answers" && words >> answer;)
            run.answers.push_back(answer);
    }
    return run;
}

Source read_source(const std::filesystem::path &path)
{
    Source source;
    std::ifstream file(path);
    std::string text;
    for (int line = 1; std::getline(file, text); ++line) {
        std::istringstream words(text);
        std::string first;
        std::string second;
        words >> first >> second;
        if (first == "MODULE") source.module = second;
        if (first == ";" && second == "with") source.others.push_back(trim(text.substr(6)));
        if (first == ";" && second == "read") source.read_mode = 0;
        if (first == ";" && second == "run") source.runs.push_back(read_run(text.substr(5), line));
    }
    std::transform(source.module.begin(), source.module.end(), source.module.begin(), toupper);
    return source;
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

void check_run(evaluator::Program linked, const Source &source, const StatedRun &run)
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
    const Source source = read_source(GetParam());
    setenv("TollInclude", programs_folder().c_str(), 1);
    for (const uint32_t flags : { 0U, program::WITH_LINES | program::WITH_CHECKS }) {
        std::vector<std::string> modules{ program::compile(GetParam().string(), flags,
                                                           source.read_mode) };
        for (const std::string &other : source.others)
            modules.push_back(
                program::compile((programs_folder() / (other + ".tl")).string(), flags));
        const evaluator::Program linked = program::link_sound(modules);
        if (flags == 0 || HasFailure()) continue;
        for (const StatedRun &run : source.runs)
            check_run(linked, source, run);
    }
}

INSTANTIATE_TEST_SUITE_P(, Programs, testing::ValuesIn(all_programs()),
                         [](const auto &info) { return info.param.stem().string(); });

} // namespace
