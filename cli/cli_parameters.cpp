/*
 * The command being carried out, and the values that its action reads.
 */
#include "cli/cli_parse.h"

#include "core/sm.h"
#include "core/st.h"

#include <cstdlib>
#include <cstring>

static CLI_NODE *current_command;
static CLI_PARAMETER *next_parameter; // of current_command; null when all have been taken

void CLI_SetCommand(CLI_NODE *node)
{
    current_command = node;
    next_parameter = node == nullptr ? nullptr : node->parameters.first;
}

CLI_NODE *CLI_ResetCommand()
{
    CLI_SetCommand(current_command);
    return current_command;
}

/** The next parameter, which counts as taken; without one the process ends with the complaint. */
static const CLI_PARAMETER *take_parameter(const char *complaint)
{
    const CLI_PARAMETER *parameter = next_parameter;
    if (parameter == nullptr) {
        SM_FatalError(complaint);
        std::abort(); // which the fatal path never comes to
    }
    next_parameter = parameter->next;
    return parameter;
}

static bool is_empty(const CLI_PARAMETER *parameter)
{
    return parameter->text == nullptr || *parameter->text == '\0';
}

/** 1 and the parameter's value, 0 if it was left empty. */
static int32_t read_value(const CLI_PARAMETER *parameter, intptr_t *value)
{
    if (is_empty(parameter)) return 0;
    if (value == nullptr) return 1;
    const bool is_number =
        parameter->kind == CLI_KIND_INTEGER || parameter->kind == CLI_KIND_CHOICE;
    *value = is_number ? parameter->number : reinterpret_cast<intptr_t>(parameter->text);
    return 1;
}

int32_t CLI_GetParameter(intptr_t *value)
{
    return read_value(take_parameter("CLI_GetParameter : Too many requests"), value);
}

/** Passes over blanks and separators. */
static const char *skip_gap(const char *text, char separator)
{
    while (*text != '\0' && (CLI_IsBlank(*text) || *text == separator))
        text++;
    return text;
}

static void visit_values(const char *text, char separator, CLI_VALUE_VISITOR visitor, void *context)
{
    static char buffer[CLI_LIST_VALUE_SIZE];
    const char ends[] = { separator, '\0' };
    for (text = skip_gap(text, separator); *text != '\0'; text = skip_gap(text, separator)) {
        const size_t length = std::strcspn(text, ends);
        ST_CopySpan(buffer, sizeof buffer, text, length);
        visitor(context, buffer);
        text += length;
    }
}

int32_t CLI_AllListParameterValues(CLI_VALUE_VISITOR visitor, void *context)
{
    const CLI_PARAMETER *parameter =
        take_parameter("CLI_AllListParameterValues : Too many requests");
    if (is_empty(parameter)) return 0;
    char *text = ST_Allocate(parameter->text); // the visitor may run a command that changes it
    visit_values(text, parameter->separator, visitor, context);
    ST_Free(text);
    return 0;
}

int32_t CLI_GetQualifier(const char *name, intptr_t *value)
{
    if (current_command == nullptr) return 0;
    const CLI_QUALIFIER *qualifier = current_command->qualifiers;
    while (qualifier != nullptr && std::strcmp(qualifier->name, name) != 0)
        qualifier = qualifier->next;
    if (qualifier == nullptr || qualifier->seen == 0) return 0;
    if (qualifier->value.first != nullptr) read_value(qualifier->value.first, value);
    return 1;
}
