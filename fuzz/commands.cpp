// Fuzz target: command lines of any content, typed, from a command file, as arguments and as partial
// lines. The first byte of the input chooses which; the rest is the text.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <ostrum.h>

#include "cli/cli.h"
#include "scratch_file.h"

namespace
{

void demand(bool is_so)
{
    if (!is_so) abort();
}

/** Texts stay within their buffers, numbers within their range. */
void check_value(const CLI_PARAMETER *parameter)
{
    const auto length = static_cast<int64_t>(strlen(parameter->text));
    demand(length < parameter->size);
    if (length == 0) return;
    if (parameter->kind == CLI_KIND_INTEGER)
        demand(parameter->number >= parameter->lowest && parameter->number <= parameter->highest);
    else if (parameter->kind != CLI_KIND_CHOICE)
        demand(length >= parameter->minimum_length);
}

int32_t check_item(void *, const char *item)
{
    demand(item[0] != 0 && strlen(item) < CLI_LIST_VALUE_SIZE);
    return 0;
}

/** An action that reads its values. */
void check_command(intptr_t)
{
    const CLI_NODE *node = CLI_ResetCommand();
    for (const CLI_PARAMETER *p = node->parameters.first; p != nullptr; p = p->next) {
        intptr_t value = 0;
        check_value(p);
        if (p->kind == CLI_KIND_LIST)
            CLI_AllListParameterValues(check_item, nullptr);
        else
            demand(CLI_GetParameter(&value) == (p->text[0] != 0));
    }
    for (const CLI_QUALIFIER *q = node->qualifiers; q != nullptr; q = q->next) {
        demand(CLI_GetQualifier(q->name, nullptr) == q->seen);
        if (q->value.first != nullptr) check_value(q->value.first);
    }
}

void make_set(CLI_NODE *set)
{
    CLI_NODE *level = CLI_Node(set, "LEVEL", check_command, 0, "");
    CLI_IntParameter(level, "Level", CLI_MANDATORY, -5, 100, "");
    CLI_Qualifier(level, "FAST", CLI_OPTIONAL, 1, "");
    CLI_Qualifier(level, "SLOW", CLI_OPTIONAL, 1, "");
    CLI_PARAMETER *mode =
        CLI_ChoiceParameter(CLI_Node(set, "MODE", check_command, 0, ""), "Mode", CLI_PROMPTED, "");
    CLI_Choice(mode, "MANUAL", 1, "");
    CLI_Choice(mode, "VERY AUTOMATIC", 2, "");
}

CLI_NODE *make_tree()
{
    CLI_NODE *root = CLI_Node(nullptr, "tool", nullptr, 0, "");
    make_set(CLI_Node(root, "SET", nullptr, 0, ""));
    CLI_NODE *load = CLI_Node(root, "LOAD", check_command, 0, "");
    CLI_SetFilePattern(CLI_CharParameter(load, "File", CLI_OPTIONAL, 2, 40, ""), "*");
    CLI_SetFilePattern(CLI_ListParameter(load, "More", CLI_PROMPTED, 1, ',', ""), "*.com");
    CLI_ListParameter(CLI_Qualifier(load, "ITEMS", CLI_PROMPTED, 0, ""), "Items", CLI_MANDATORY, 0,
                      ';', "");
    CLI_Node(
        root, "QUIT", [](intptr_t) { CLI_Exit(); }, 0, "");
    return root;
}

/** The tree of the program's arguments. */
CLI_NODE *make_arguments()
{
    CLI_NODE *root = CLI_Node(nullptr, "tool", nullptr, 0, "");
    CLI_ListParameter(root, "Files", CLI_PROMPTED, 0, ',', "");
    CLI_CharParameter(CLI_Qualifier(root, "OUTPUT", CLI_OPTIONAL, 0, ""), "File", CLI_MANDATORY, 1,
                      20, "");
    return root;
}

// --- what is typed ---

std::string_view typed; // not read yet

std::string_view take_line()
{
    const size_t length = std::min(typed.find('\n'), typed.size());
    const std::string_view line = typed.substr(0, length);
    typed.remove_prefix(std::min(length + 1, typed.size()));
    return line;
}

int32_t read_typed(void *, const char *, char *line, int32_t size)
{
    if (typed.empty()) return -1;
    const std::string whole(take_line());
    ST_Copy(line, size, whole.c_str());
    return static_cast<int32_t>(whole.size());
}

void obey(CLI_NODE *root)
{
    do {
        CLI_DoCommands("> ", root);
    } while (CLI_HasSource()); // QUIT ends a session, not the input
}

void parse_arguments(CLI_NODE *root, CLI_NODE *commands)
{
    std::vector<std::string> lines = { "tool" };
    while (!typed.empty())
        lines.emplace_back(take_line());
    std::vector<const char *> arguments;
    for (const std::string &line : lines)
        arguments.push_back(line.c_str());
    if (CLI_ParseCommandLine(static_cast<int32_t>(arguments.size()), arguments.data(), root))
        obey(commands);
}

// --- completion ---

struct LINE {
    const CLI_NODE *root;
    std::string text;
};

/** What completes a line once completes the completed line again. */
int32_t check_completion(void *context, const CLI_COMPLETION *completion)
{
    const auto *line = static_cast<const LINE *>(context);
    demand(completion->start >= 0 && static_cast<size_t>(completion->start) <= line->text.size());
    if (completion->kind == CLI_COMPLETE_DIRECTORY) return 0;
    const std::string whole =
        line->text.substr(0, static_cast<size_t>(completion->start)) + completion->text;
    demand(CLI_Complete(line->root, whole.c_str(), nullptr, nullptr) > 0);
    return 0;
}

void complete(const CLI_NODE *root, std::string_view text)
{
    typed = text;
    while (!typed.empty()) {
        LINE line = { .root = root, .text = std::string(take_line()).c_str() };
        CLI_Complete(root, line.text.c_str(), check_completion, &line);
    }
}

/** Keeps to the scratch directory: devices elsewhere never end. */
std::string without_other_files(std::string text)
{
    for (size_t i = 0; i + 1 < text.size(); i++)
        if (text[i] == '@' && strchr("/\\.", text[i + 1]) != nullptr) text[i] = '!';
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static FILE *silence = freopen("/dev/null", "w", stdout);
    static CLI_NODE *commands = make_tree();
    static CLI_NODE *arguments = make_arguments();
    demand(silence != nullptr);
    const uint8_t choice = size > 0 ? data[0] : 0;
    const std::string text = without_other_files(std::string(data + (size > 0), data + size));
    CLI_SetLineReader(nullptr, read_typed);
    typed = text;
    switch (choice % 4) {
    case 0:
        obey(commands);
        break;
    case 1:
        write_scratch_file("input.com", reinterpret_cast<const uint8_t *>(text.data()),
                           text.size());
        CLI_DoCommandFile("input", choice & 4);
        obey(commands);
        break;
    case 2:
        parse_arguments(arguments, commands);
        break;
    default:
        write_scratch_file("input file", data, 0);
        write_scratch_file("input.com", data, 0);
        complete(commands, text);
        complete(arguments, text);
    }
    return 0;
}
