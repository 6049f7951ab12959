/*
 * Making the tree of commands. What is made here stays until the process ends.
 */
#include "cli/cli.h"

#include "core/sh.h"
#include "core/st.h"

#include <cstddef>
#include <cstring>

// An owner is either; its parameters are at the same place.
static_assert(offsetof(CLI_NODE, parameters) == 0 && offsetof(CLI_QUALIFIER, value) == 0);

static CLI_NODE *newest_root; // nobody walks the roots: a tree in use is no leak, whoever holds it

/** Fills in what every record has. */
template <typename RECORD> static void describe(RECORD *record, const char *name, const char *help)
{
    if (name != nullptr) ST_Copy(record->name, CLI_NAME_SIZE, name);
    record->help = help == nullptr || *help == '\0' ? "<No Help>" : help;
}

/** Puts a record behind the last one of its list. */
template <typename RECORD> static void append(RECORD **first, RECORD **last, RECORD *record)
{
    RECORD **link = *first == nullptr ? first : &(*last)->next;
    *link = *last = record;
}

void CLI_Initialise() {}

CLI_NODE *CLI_Node(CLI_NODE *parent, const char *name, CLI_ACTION action, intptr_t argument,
                   const char *help)
{
    auto *node = static_cast<CLI_NODE *>(SH_NameAllocate(sizeof(CLI_NODE), "CLI:NODE"));
    describe(node, name, help);
    node->parent = parent;
    node->action = action;
    node->argument = argument;
    if (parent != nullptr) {
        append(&parent->children, &parent->last_child, node);
    } else {
        node->older_root = newest_root;
        newest_root = node;
    }
    return node;
}

CLI_QUALIFIER *CLI_Qualifier(CLI_NODE *node, const char *name, int32_t requirement,
                             uint32_t exclusion_mask, const char *help)
{
    auto *qualifier =
        static_cast<CLI_QUALIFIER *>(SH_NameAllocate(sizeof(CLI_QUALIFIER), "CLI:QUALIFIER"));
    describe(qualifier, name, help);
    qualifier->owner = node;
    qualifier->requirement = requirement;
    qualifier->exclusion_mask = exclusion_mask;
    append(&node->qualifiers, &node->last_qualifier, qualifier);
    return qualifier;
}

static CLI_PARAMETER *new_parameter(void *owner, CLI_KIND kind, const char *name,
                                    int32_t requirement, const char *help)
{
    auto *parameter =
        static_cast<CLI_PARAMETER *>(SH_NameAllocate(sizeof(CLI_PARAMETER), "CLI:PARAMETER"));
    describe(parameter, name, help);
    parameter->kind = kind;
    parameter->requirement = requirement;
    auto *list = static_cast<CLI_PARAMETER_LIST *>(owner);
    append(&list->first, &list->last, parameter);
    return parameter;
}

CLI_PARAMETER *CLI_CharParameter(void *owner, const char *name, int32_t requirement,
                                 int32_t minimum_length, int32_t size, const char *help)
{
    CLI_PARAMETER *parameter = new_parameter(owner, CLI_KIND_CHARACTER, name, requirement, help);
    parameter->minimum_length = minimum_length;
    parameter->size = size;
    return parameter;
}

CLI_PARAMETER *CLI_IntParameter(void *owner, const char *name, int32_t requirement, int32_t lowest,
                                int32_t highest, const char *help)
{
    CLI_PARAMETER *parameter = new_parameter(owner, CLI_KIND_INTEGER, name, requirement, help);
    parameter->minimum_length = 1;
    parameter->size = 10; // nine digits never leave 32 bits
    parameter->lowest = lowest;
    parameter->highest = highest;
    return parameter;
}

CLI_PARAMETER *CLI_ChoiceParameter(void *owner, const char *name, int32_t requirement,
                                   const char *help)
{
    CLI_PARAMETER *parameter = new_parameter(owner, CLI_KIND_CHOICE, name, requirement, help);
    parameter->minimum_length = 1;
    return parameter;
}

/** Makes room for a text of so many bytes, terminator included; a text that is there stays. */
static void grow(CLI_PARAMETER *parameter, int32_t size)
{
    if (size <= parameter->size) return;
    parameter->size = size;
    if (parameter->text == nullptr) return;
    auto *text = static_cast<char *>(SH_NameAllocate(size, "CLI:TEXT"));
    ST_Copy(text, size, parameter->text);
    SH_Free(parameter->text);
    parameter->text = text;
}

CLI_CHOICE *CLI_Choice(CLI_PARAMETER *parameter, const char *name, int32_t value, const char *help)
{
    auto *choice = static_cast<CLI_CHOICE *>(SH_NameAllocate(sizeof(CLI_CHOICE), "CLI:CHOICE"));
    describe(choice, name, help);
    choice->value = value;
    append(&parameter->choices, &parameter->last_choice, choice);
    grow(parameter, static_cast<int32_t>(std::strlen(choice->name)) + 1);
    return choice;
}

CLI_PARAMETER *CLI_ListParameter(void *owner, const char *name, int32_t requirement,
                                 int32_t minimum_length, char separator, const char *help)
{
    CLI_PARAMETER *parameter = new_parameter(owner, CLI_KIND_LIST, name, requirement, help);
    parameter->minimum_length = minimum_length;
    parameter->separator = separator;
    return parameter;
}
