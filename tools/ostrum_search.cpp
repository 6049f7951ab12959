// SEARCH: names in module files.

#include "ostrum.h"

#include <algorithm>
#include <filesystem>

namespace
{

struct SEARCH {
    const char *pattern;
    std::string file;
    int32_t found;
};

int32_t show_match(void *context, KOB_SYMBOL *symbol, const char *name)
{
    auto *search = static_cast<SEARCH *>(context);
    if (ST_MatchCI(search->pattern, name) == 0) return 1;
    printf("%s: %-16s %-16s %s\n", search->file.c_str(), KOB_ClassName(KOB_SymbolClass(symbol)),
           KOB_SymbolType(symbol), name);
    search->found++;
    return 1;
}

/** Shows the names in one module that match. */
void search_file(SEARCH *search, const std::string &file)
{
    KOB_MODULE *module = nullptr;
    const int32_t result = KOB_OpenModule(&module, file.c_str());
    if (result != KOB_SUCCESSFUL) {
        ostrum_complain(file + ": " + KOB_Message(result));
        return;
    }
    search->file = file;
    KOB_AllSymbols(module, show_match, search);
    KOB_CloseModule(module, 0, 1);
}

/** The module files of the working directory, by name. */
std::vector<std::string> files_here()
{
    std::vector<std::string> files;
    std::error_code error;
    for (const auto &entry : std::filesystem::directory_iterator(".", error)) {
        const std::string name = entry.path().filename().string();
        if (ST_MatchCI("*.kob", name.c_str()) != 0) files.push_back(name);
    }
    std::sort(files.begin(), files.end());
    return files;
}

int32_t add_file(void *files, const char *file)
{
    static_cast<std::vector<std::string> *>(files)->emplace_back(file);
    return 1;
}

void search(intptr_t)
{
    intptr_t pattern = 0;
    CLI_GetParameter(&pattern);
    std::vector<std::string> files;
    CLI_AllListParameterValues(add_file, &files);
    SEARCH search = { reinterpret_cast<const char *>(pattern), "", 0 };
    for (const std::string &file : files.empty() ? files_here() : files) {
        if (SM_Aborted() != 0) return;
        search_file(&search, file);
    }
    if (search.found == 0) ostrum_complain(std::string{ "No name matches " } + search.pattern);
}

} // namespace

CLI_NODE *ostrum_add_search(CLI_NODE *root)
{
    CLI_NODE *node = CLI_Node(root, "SEARCH", search, 0, "Finds names in module files");
    CLI_CharParameter(node, "PATTERN", CLI_MANDATORY, 1, 128,
                      "A name in either case, '*' for any characters and '?' for one");
    CLI_PARAMETER *files = CLI_ListParameter(node, "FILES", CLI_OPTIONAL, 0, ',',
                                             "Module files; all of the directory, if left out");
    CLI_SetFilePattern(files, "*.kob");
    return node;
}
