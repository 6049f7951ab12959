/*
 * Values that a command left out and the user is asked for.
 */
#include "cli/cli_parse.h"

#include "core/sh.h"
#include "core/st.h"

#include <algorithm>
#include <cstdio>

static constexpr const char *help_label = "         "; // as wide as those of a page of help

static const CLI_PARAMETER *prompted_parameter;

const CLI_PARAMETER *CLI_PromptedParameter()
{
    return prompted_parameter;
}

/** Bytes that an answer may have with its terminator. */
static int32_t answer_capacity(const CLI_PARAMETER *parameter)
{
    const int32_t size = parameter->kind == CLI_KIND_LIST ? CLI_LIST_ANSWER_SIZE : parameter->size;
    return std::min<int32_t>(size, CLI_ANSWER_SIZE);
}

static void store_answer(CLI_PARAMETER *parameter, const char *answer)
{
    if (parameter->kind == CLI_KIND_LIST) {
        SH_Free(parameter->text);
        parameter->text = static_cast<char *>(SH_Allocate(CLI_LIST_ANSWER_SIZE));
        parameter->size = CLI_LIST_ANSWER_SIZE;
    }
    ST_Copy(parameter->text, parameter->size, answer);
}

/** Takes an answer as the value; what is wrong with it is reported, and the parameter stays empty. */
static bool take_answer(CLI_PARAMETER *parameter, const char *answer, int32_t length)
{
    static constexpr CLI_PARSE no_line = { .line = nullptr, .capacity = 0, .cursor = nullptr };
    const int32_t capacity = answer_capacity(parameter);
    if (length >= capacity) {
        std::printf("** Too long (max %d chars)\n", capacity - 1);
        return false;
    }
    store_answer(parameter, answer);
    if (CLI_CheckValue(parameter, &no_line)) return true;
    parameter->text[0] = 0;
    return false;
}

static bool ask(CLI_PARAMETER *parameter, const char *prompt)
{
    char answer[CLI_ANSWER_SIZE];
    for (;;) {
        const int32_t length = CLI_ReadTyped(prompt, answer, CLI_ANSWER_SIZE);
        if (length <= 0) return false;
        if (answer[0] == '?')
            CLI_ParameterHelp(parameter, help_label);
        else if (take_answer(parameter, answer, length))
            return true;
    }
}

bool CLI_Prompt(CLI_PARAMETER *parameter, const char *slash, const char *name, int32_t requirement)
{
    if (CLI_InCommandFile()) return false;
    char prompt[CLI_NAME_SIZE + 16];
    const char *optional = requirement == CLI_MANDATORY ? "" : "(Optional)";
    ST_Concat(prompt, sizeof prompt, slash, name, optional, " = ", nullptr);
    prompted_parameter = parameter;
    const bool has_value = ask(parameter, prompt);
    prompted_parameter = nullptr;
    return has_value;
}
