// A session with the command interpreter: what is typed comes from a file in place of standard input, and
// what is printed is given back. The folder of the session is the current one.
#pragma once

#include "cli/cli.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

class CommandSession : public testing::Test
{
protected:
    void SetUp() override
    {
        char name[] = "/tmp/ostrum-commands-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        std::filesystem::current_path(name);
        type("");
    }

    void TearDown() override
    {
        CLI_SetLineReader(nullptr, nullptr);
        const std::filesystem::path folder = std::filesystem::current_path();
        std::filesystem::current_path("/");
        std::filesystem::remove_all(folder);
    }

    static void write(const std::string &name, const std::string &text)
    {
        std::ofstream(name, std::ios::binary) << text;
    }

    // Makes a text what standard input holds.
    static void type(const std::string &text)
    {
        write("typed", text);
        ASSERT_NE(std::freopen("typed", "r", stdin), nullptr);
    }

    // Reads commands, with the prompt "> ", until they end; gives what was printed.
    static std::string commands(CLI_NODE *root)
    {
        testing::internal::CaptureStdout();
        EXPECT_EQ(CLI_DoCommands("> ", root), 0);
        std::fflush(stdout);
        return testing::internal::GetCapturedStdout();
    }

    // Types lines; gives what was printed between the first prompt and the last.
    static std::string session(CLI_NODE *root, const std::string &lines)
    {
        type(lines);
        const std::string all = commands(root);
        const std::string ask = "\n> ";
        const bool is_framed =
            all.size() >= 2 * ask.size() && all.starts_with(ask) && all.ends_with(ask);
        return is_framed ? all.substr(ask.size(), all.size() - 2 * ask.size()) : "?" + all;
    }

    // Parses the arguments of a program; gives the result and what was printed.
    static std::string arguments(CLI_NODE *root, std::vector<const char *> list)
    {
        list.insert(list.begin(), "tool");
        testing::internal::CaptureStdout();
        const int32_t result =
            CLI_ParseCommandLine(static_cast<int32_t>(list.size()), list.data(), root);
        std::fflush(stdout);
        return std::to_string(result) + testing::internal::GetCapturedStdout();
    }
};

// The values of a parameter, of the current command or of one of its qualifiers, as text.
inline std::string shown(const CLI_PARAMETER *parameter, int32_t is_given, intptr_t value)
{
    if (!is_given) return "-";
    const bool is_number =
        parameter->kind == CLI_KIND_INTEGER || parameter->kind == CLI_KIND_CHOICE;
    return is_number ? std::to_string(value) : reinterpret_cast<const char *>(value);
}

// The current command with its values: "NAME|first parameter|second|/QUALIFIER|/QUALIFIER=value".
inline std::string current_command()
{
    CLI_NODE *node = CLI_ResetCommand();
    std::string text = node->name;
    for (CLI_PARAMETER *parameter = node->parameters.first; parameter != nullptr;
         parameter = parameter->next) {
        intptr_t value = 0;
        const int32_t is_given = CLI_GetParameter(&value);
        text += "|" + shown(parameter, is_given, value);
    }
    for (CLI_QUALIFIER *qualifier = node->qualifiers; qualifier != nullptr;
         qualifier = qualifier->next) {
        static constexpr intptr_t no_value = -12345;
        intptr_t value = no_value;
        if (CLI_GetQualifier(qualifier->name, &value) == 0) continue;
        text += std::string("|/") + qualifier->name;
        if (value != no_value) text += "=" + shown(qualifier->value.first, 1, value);
    }
    return text;
}

// An action that prints its command.
inline void print_command(intptr_t)
{
    std::printf("<%s>\n", current_command().c_str());
}
