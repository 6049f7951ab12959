// SET: what commands are about unless they name something else.

#include "ostrum.h"

#include <cstring>
#include <unistd.h>

OSTRUM_SETTINGS ostrum_settings;

namespace
{

/** The next parameter as text; empty if it was left out. */
std::string parameter_text()
{
    intptr_t text = 0;
    return CLI_GetParameter(&text) != 0 ? reinterpret_cast<const char *>(text) : "";
}

void set_text(intptr_t setting)
{
    *reinterpret_cast<std::string *>(setting) = parameter_text();
}

void set_directory(intptr_t)
{
    const std::string directory = parameter_text();
    if (chdir(directory.c_str()) != 0) ostrum_complain(directory + ": " + strerror(errno));
}

struct SETTING {
    const char *name;
    std::string *text;
    int32_t requirement;
    int32_t size;        // bytes of its text
    const char *pattern; // of files; null: none
    const char *help;
};

const SETTING settings[] = {
    { "MODULE", &ostrum_settings.module, CLI_MANDATORY, ostrum_path_size, "*.kob",
      "The module file that SHOW and LIST look at" },
    { "SOURCE", &ostrum_settings.source, CLI_MANDATORY, ostrum_path_size, "*.tl",
      "The source whose trees SHOW TREE shows" },
    { "INCLUDE", &ostrum_settings.include, CLI_OPTIONAL, 512, "*",
      "Directories of used modules, separated by ';'; none, if left out" },
    { "DEFINE", &ostrum_settings.define, CLI_OPTIONAL, 512, nullptr,
      "Names for #IFDEF, separated by ','; none, if left out" },
};

void show_settings(intptr_t)
{
    char directory[4096];
    printf("%-10s %s\n", "DIRECTORY", getcwd(directory, sizeof directory) ? directory : "");
    for (const SETTING &setting : settings)
        printf("%-10s %s\n", setting.name, setting.text->c_str());
}

} // namespace

CLI_NODE *ostrum_add_set(CLI_NODE *root)
{
    CLI_NODE *set =
        CLI_Node(root, "SET", nullptr, 0, "Says what commands are about if they name nothing");
    for (const SETTING &setting : settings) {
        CLI_NODE *node = CLI_Node(set, setting.name, set_text,
                                  reinterpret_cast<intptr_t>(setting.text), setting.help);
        CLI_PARAMETER *value =
            CLI_CharParameter(node, "VALUE", setting.requirement, 0, setting.size, setting.help);
        CLI_SetFilePattern(value, setting.pattern);
    }
    CLI_NODE *node = CLI_Node(set, "DIRECTORY", set_directory, 0, "The directory to work in");
    CLI_SetFilePattern(
        CLI_CharParameter(node, "DIRECTORY", CLI_MANDATORY, 1, 256, "An existing directory"), "*");
    CLI_Node(set, "SHOW", show_settings, 0, "Shows what is set");
    return set;
}
