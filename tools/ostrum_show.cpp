// LIST and SHOW: what pkob tells of module files, and the trees of a source.

#include "ostrum.h"

#include "pkob_list.h"
#include "toll_compile.h"

namespace
{

int32_t add_file(void *files, const char *file)
{
    static_cast<std::vector<std::string> *>(files)->emplace_back(file);
    return 1;
}

void list(PKOB_OPTIONS options, const std::vector<std::string> &files)
{
    if (files.empty()) {
        ostrum_complain("No module in hand: name one, compile one, or SET MODULE");
        return;
    }
    std::vector<const char *> names;
    names.reserve(files.size());
    for (const std::string &file : files)
        names.push_back(file.c_str());
    options.program = "ostrum";
    if (pkob_list(options, names) != 0) CLI_FailCommand();
}

/** The module in hand, as the only file of a list. */
std::vector<std::string> module_in_hand()
{
    if (ostrum_settings.module.empty()) return {};
    return { ostrum_settings.module };
}

void list_files(intptr_t)
{
    std::vector<std::string> files;
    CLI_AllListParameterValues(add_file, &files);
    PKOB_OPTIONS options = {};
    for (const PKOB_OPTION &option : pkob_option_rows()) {
        intptr_t text = 0;
        if (CLI_GetQualifier(option.name, &text) == 0) continue;
        pkob_set_option(&options, option, reinterpret_cast<const char *>(text));
    }
    const char *conflict = pkob_complete_options(&options);
    if (conflict != nullptr) {
        ostrum_complain(conflict);
        return;
    }
    list(options, files.empty() ? module_in_hand() : files);
}

/** The name that a command gives; null if none. */
const char *parameter_name()
{
    intptr_t name = 0;
    return CLI_GetParameter(&name) != 0 ? reinterpret_cast<const char *>(name) : nullptr;
}

void show_part(intptr_t part)
{
    const char *name = parameter_name();
    PKOB_OPTIONS options = {};
    options.parts = static_cast<uint32_t>(part);
    if (name != nullptr && part == PKOB_DATA_SECTIONS) options.sections.push_back(name);
    if (name != nullptr && part != PKOB_DATA_SECTIONS) options.symbols.push_back(name);
    if (name != nullptr && part == PKOB_SYMBOLS) options.parts |= PKOB_CODE;
    list(options, module_in_hand());
}

void show_tree(intptr_t)
{
    const char *name = parameter_name();
    if (ostrum_settings.source.empty()) {
        ostrum_complain("No source in hand: compile one, or SET SOURCE");
        return;
    }
    TOLL_OPTIONS options;
    if (!ostrum_add_settings(&options)) {
        ostrum_complain(options.problem);
        return;
    }
    options.sources = { ostrum_settings.source };
    options.check_only = true;
    options.draw_trees = true;
    options.outlines_trees = true;
    options.tree = name != nullptr ? name : "";
    if (compile_all(options) != 0) CLI_FailCommand();
}

/** What SHOW shows. */
struct SUBJECT {
    const char *name;
    CLI_ACTION action;
    intptr_t part;
    const char *what; // the name is of
    const char *help;
};

constexpr SUBJECT subjects[] = {
    { "SYMBOL", show_part, PKOB_SYMBOLS, "The symbol; all, if left out",
      "The symbols of the module; one with its code" },
    { "FRAME", show_part, PKOB_FRAMES, "The frame; all, if left out",
      "The debug frames of the module" },
    { "DATA", show_part, PKOB_DATA_SECTIONS, "The data section; all, if left out",
      "What the data sections of the module hold" },
    { "TREE", show_tree, 0, "The tree; all, if left out", "The decision trees of the source" },
};

} // namespace

CLI_NODE *ostrum_add_list(CLI_NODE *root)
{
    CLI_NODE *node = CLI_Node(root, "LIST", list_files, 0, "Lists module files");
    CLI_PARAMETER *files = CLI_ListParameter(node, "FILES", CLI_OPTIONAL, 0, ',',
                                             "Module files; the one in hand, if left out");
    CLI_SetFilePattern(files, "*.kob");
    for (const PKOB_OPTION &option : pkob_option_rows()) {
        CLI_QUALIFIER *qualifier =
            CLI_Qualifier(node, option.name, CLI_OPTIONAL, 0, option.meaning);
        if (option.value == nullptr) continue;
        const int32_t requirement = option.is_value_optional ? CLI_OPTIONAL : CLI_MANDATORY;
        CLI_CharParameter(qualifier, option.value, requirement, 1, ostrum_path_size,
                          option.meaning);
    }
    return node;
}

CLI_NODE *ostrum_add_show(CLI_NODE *root)
{
    CLI_NODE *show = CLI_Node(root, "SHOW", nullptr, 0, "Shows the module or source in hand");
    for (const SUBJECT &subject : subjects) {
        CLI_NODE *node = CLI_Node(show, subject.name, subject.action, subject.part, subject.help);
        CLI_CharParameter(node, "NAME", CLI_OPTIONAL, 1, 64, subject.what);
    }
    return show;
}
