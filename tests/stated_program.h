// Programs that say in their comments what comes out when their functions run:
//
//   ; with NAME                  another source, compiled and linked to this one
//   ; read whole         parsed as it is read, as functions in functions need it
//   ; run NAME(2, -3, "text") OUTCOME [; calls a(1) b("x")] [; answers 4 5] [; not c java]
//
// An argument of one byte, CHAR or ENUM, has the word byte before it. OUTCOME is "= 5", "= "text"",
// "raises 7, 2", "stops" or "fails REASON"; answers are what syscalls give, in order, 0 behind the
// last; behind "not" stand the targets of which the text cannot do it. Each run starts with fresh
// storage.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace stated
{

struct Run {
    int line = 0;
    std::string function;
    std::vector<std::string> arguments;
    std::string outcome;
    std::string calls;
    std::vector<int32_t> answers;
    std::vector<std::string> excluded; // targets
};

struct Source {
    std::string module;
    std::vector<std::string> others;
    int32_t read_mode = 2;
    std::vector<Run> runs;
};

inline std::string trim(const std::string &text)
{
    const size_t first = text.find_first_not_of(' ');
    const size_t last = text.find_last_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

// Parts between separators that stand outside of quotes.
inline std::vector<std::string> split(const std::string &text, char separator)
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

inline Run read_run(const std::string &text, int line)
{
    Run run;
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
        for (std::string target; kind == "not" && words >> target;)
            run.excluded.push_back(target);
    }
    return run;
}

inline Source read_source(const std::filesystem::path &path)
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

} // namespace stated
