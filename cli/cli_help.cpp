/*
 * Help, written from the tree of commands to standard output.
 */
#include "cli/cli.h"

#include <cstdio>
#include <iterator>

enum { INDENT_STEP = 4 };

static const char *const blank_label = "         "; // nine, as wide as the labels

static const char *requirement_text(int32_t requirement)
{
    static constexpr const char *texts[] = { "Optional", "Mandatory", "Optional(Prompting)" };
    const bool is_known = requirement >= 0 && requirement < static_cast<int32_t>(std::size(texts));
    return is_known ? texts[requirement] : "Unknown requirement";
}

static void print_syntax(const CLI_NODE *node)
{
    for (const CLI_PARAMETER *p = node->parameters.first; p != nullptr; p = p->next)
        std::printf(p->requirement == CLI_MANDATORY ? " %s" : " [%s]", p->name);
    for (const CLI_QUALIFIER *q = node->qualifiers; q != nullptr; q = q->next) {
        if (q->requirement != CLI_MANDATORY) continue;
        std::printf(" /%s", q->name);
        if (q->value.first != nullptr) std::printf("=%s", q->value.first->name);
    }
}

static void print_summary(const CLI_NODE *node, int32_t indent)
{
    std::printf("%*s%s", indent, "", node->name);
    print_syntax(node);
    std::printf("\n%*s%s\n\n", indent, "", node->help);
}

/** The second half of a parameter's first line. */
static void print_kind(const CLI_PARAMETER *parameter)
{
    switch (parameter->kind) {
    case CLI_KIND_CHARACTER:
        std::printf("Character parameter (%d-%d chars))\n", parameter->minimum_length,
                    parameter->size - 1);
        break;
    case CLI_KIND_INTEGER:
        std::printf("Integer parameter (Range %d-%d))\n", parameter->lowest, parameter->highest);
        break;
    case CLI_KIND_CHOICE:
        std::printf("Choice parameter)\n");
        break;
    case CLI_KIND_LIST:
        std::printf("List parameter ('%c' separated))\n", parameter->separator);
        break;
    }
}

void CLI_ParameterHelp(const CLI_PARAMETER *parameter, const char *label)
{
    std::printf("%s : %s (%s ", label, parameter->name, requirement_text(parameter->requirement));
    print_kind(parameter);
    std::printf("          : %s\n", parameter->help);
    const char *choice_label = "Choices  ";
    for (const CLI_CHOICE *choice = parameter->choices; choice != nullptr; choice = choice->next) {
        std::printf("%s : %-8s %s\n", choice_label, choice->name, choice->help);
        choice_label = blank_label;
    }
}

static void print_qualifier(const CLI_QUALIFIER *qualifier)
{
    const CLI_PARAMETER *value = qualifier->value.first;
    std::printf("Qualifier : /%s", qualifier->name);
    if (value != nullptr) std::printf("=%s", value->name);
    std::printf(" (%s)\n", requirement_text(qualifier->requirement));
    std::printf("          : %s\n", qualifier->help);
    if (value != nullptr) CLI_ParameterHelp(value, "Value    ");
}

/** Names from the root to the node. */
static void print_path(const CLI_NODE *node)
{
    if (node->parent != nullptr) print_path(node->parent);
    std::printf("%s ", node->name);
}

static void print_page(const CLI_NODE *node)
{
    std::printf("Command   : ");
    print_path(node);
    print_syntax(node);
    std::printf("\n          : %s\n\n", node->help);
    for (const CLI_PARAMETER *p = node->parameters.first; p != nullptr; p = p->next) {
        CLI_ParameterHelp(p, "Parameter");
        std::printf("\n");
    }
    for (const CLI_QUALIFIER *q = node->qualifiers; q != nullptr; q = q->next) {
        print_qualifier(q);
        std::printf("\n");
    }
}

static void print_closing()
{
    std::printf("\nAdditional help may be obtained by typing all or part of a\n"
                "Command followed by a '?' (without the quotes)\n"
                "\nIn addition to the commands listed above the following\n"
                "facilities are available :\n\n"
                "  @filename  : Obey a file of commands\n"
                "  ! Comment  : Insert a comment (mainly for command files)\n");
}

/** A node and all below it; pages, where there is an action, only if help was asked on a command. */
static void print_node(const CLI_NODE *node, int32_t indent, bool in_detail)
{
    if (node->action != nullptr && in_detail)
        print_page(node);
    else
        print_summary(node, indent);
    for (const CLI_NODE *child = node->children; child != nullptr; child = child->next)
        print_node(child, indent + INDENT_STEP, in_detail);
    if (node->parent == nullptr && CLI_HasSource()) print_closing();
}

void CLI_Help(const CLI_NODE *node)
{
    print_node(node, 0, node->action != nullptr);
}
