// ostrum: the interactive tool.

#include "ostrum.h"

#include <algorithm>
#include <cstdio>
#include <getopt.h>
#include <iterator>
#include <unistd.h>

OSTRUM_VERSION_BLOCK("ostrum", OSTRUM_VERSION, OSTRUM_VERSION, "MIT license");

namespace
{

enum { STATUS_DONE, STATUS_FAILED, STATUS_USAGE };

constexpr const char *prompt = "ostrum> ";
constexpr int code_help = 256;
constexpr int code_version = 257;

/** What the command line asks for. */
struct REQUEST {
    std::vector<std::string> commands; // of -c
    std::vector<std::string> files;
    bool shows_lines;
};

struct OPTION {
    int code;
    const char *name;
    int argument;
    const char *synopsis;
    const char *meaning;
};

constexpr OPTION option_table[] = {
    { 'c', "command", required_argument, "-c, --command=COMMAND",
      "carry COMMAND out; may be repeated" },
    { 'e', "echo", no_argument, "-e, --echo", "show each line of command files" },
    { code_help, "help", no_argument, "    --help", "print this and exit" },
    { code_version, "version", no_argument, "    --version", "print the version and exit" },
};

void print_help()
{
    printf(
        "Usage: ostrum [OPTION]... [FILE.com]...\n"
        "Carries out the commands of -c, then those of the files; without any it reads commands\n"
        "from standard input.\n\n");
    for (const OPTION &option : option_table)
        printf("  %-24s %s\n", option.synopsis, option.meaning);
    printf("\nThe command HELP, or '?' anywhere in a command, tells about commands. A path with "
           "'/' in\n"
           "it stands in quotes.\n\n"
           "Exit status: 0 all commands were carried out; 1 one was refused or failed; 2 wrong\n"
           "usage.\n");
}

int wrong_usage(const std::string &problem)
{
    fprintf(stderr, "ostrum: %s; try 'ostrum --help'\n", problem.c_str());
    return STATUS_USAGE;
}

/** Reads the command line; -1 to go on, else the status to end with. */
int read_request(int count, char **arguments, REQUEST *request)
{
    std::vector<option> names;
    for (const OPTION &row : option_table)
        names.push_back({ row.name, row.argument, nullptr, row.code });
    names.push_back({ nullptr, 0, nullptr, 0 });
    opterr = 0;
    for (int code; (code = getopt_long(count, arguments, ":c:e", names.data(), nullptr)) != -1;) {
        switch (code) {
        case 'c':
            request->commands.emplace_back(optarg);
            break;
        case 'e':
            request->shows_lines = true;
            break;
        case code_help:
            print_help();
            return STATUS_DONE;
        case code_version:
            printf("ostrum %s\n", OSTRUM_VERSION);
            return STATUS_DONE;
        default:
            return wrong_usage((code == ':' ? "argument missing for '" : "wrong option '") +
                               std::string{ arguments[optind - 1] } + "'");
        }
    }
    request->files.assign(arguments + optind, arguments + count);
    return -1;
}

/** Hands out the commands of -c as if they were typed; nobody is there to ask for more. */
int32_t read_request_line(void *context, const char *shown, char *line, int32_t size)
{
    if (*shown != '\n') {
        printf("** Mandatory parameters missing\n");
        return -1;
    }
    auto *commands = static_cast<std::vector<std::string> *>(context);
    if (commands->empty()) return -1;
    const std::string command = commands->front();
    commands->erase(commands->begin());
    ST_Copy(line, size, command.c_str());
    return static_cast<int32_t>(command.size());
}

void leave(intptr_t)
{
    CLI_Exit();
}

/** The commands, in the order of help. */
struct COMMAND {
    const char *name;
    const char *help;
    CLI_NODE *(*add)(CLI_NODE *root);
};

constexpr COMMAND command_table[] = {
    { "COMPILE", "sources into modules", ostrum_add_compile },
    { "LIST", "module files", ostrum_add_list },
    { "SHOW", "parts of the module or source in hand", ostrum_add_show },
    { "CONVERT", "a quantity into its units", ostrum_add_convert },
    { "SEARCH", "for names in module files", ostrum_add_search },
    { "SET", "what commands are about", ostrum_add_set },
};

CLI_NODE *root;
CLI_NODE *nodes[std::size(command_table)];

/** Tells about one command, or about all. */
void help(intptr_t)
{
    intptr_t command = 0;
    CLI_Help(CLI_GetParameter(&command) != 0 ? nodes[command] : root);
}

void make_commands()
{
    root = CLI_Node(nullptr, "ostrum", nullptr, 0, "Everything that the library does");
    for (size_t at = 0; at < std::size(command_table); at++)
        nodes[at] = command_table[at].add(root);
    CLI_NODE *node = CLI_Node(root, "HELP", help, 0, "Tells about a command, or about all");
    CLI_PARAMETER *command =
        CLI_ChoiceParameter(node, "COMMAND", CLI_OPTIONAL, "The command; all, if left out");
    for (size_t at = 0; at < std::size(command_table); at++)
        CLI_Choice(command, command_table[at].name, static_cast<int32_t>(at),
                   command_table[at].help);
    CLI_Node(root, "EXIT", leave, 0, "Ends the program");
}

/** Runs a command file; false if it cannot be opened. */
bool run_file(const std::string &file, bool shows_lines)
{
    if (CLI_DoCommandFile(file.c_str(), shows_lines ? 0 : 1) == 0) {
        fprintf(stderr, "ostrum: %s: cannot be opened\n", file.c_str());
        return false;
    }
    CLI_DoCommands(shows_lines ? prompt : "", root);
    return true;
}

int run(REQUEST *request)
{
    bool is_done = true;
    if (!request->commands.empty()) {
        CLI_SetLineReader(&request->commands, read_request_line);
        CLI_DoCommands("", root);
        CLI_SetLineReader(nullptr, nullptr);
    }
    for (const std::string &file : request->files)
        is_done = run_file(file, request->shows_lines) && is_done;
    if (request->commands.empty() && request->files.empty()) {
        ostrum_edit_lines(root);
        CLI_DoCommands(isatty(STDIN_FILENO) != 0 ? prompt : "", root);
    }
    return is_done && CLI_FailedCommands() == 0 ? STATUS_DONE : STATUS_FAILED;
}

} // namespace

void ostrum_complain(const std::string &problem)
{
    printf("** %s\n", problem.c_str());
    CLI_FailCommand();
}

std::vector<std::string> ostrum_words(const std::string &list, char separator)
{
    std::vector<std::string> words;
    for (size_t start = 0; start < list.size();) {
        const size_t end = std::min(list.find(separator, start), list.size());
        if (end > start) words.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    return words;
}

int main(int count, char **arguments)
{
    REQUEST request = {};
    const int status = read_request(count, arguments, &request);
    if (status >= 0) return status;
    KOB_Initialise();
    EEP_Initialise();
    EUC_Initialise();
    TLCG_Initialise();
    SM_EnableCtlcHandler(1);
    make_commands();
    const int result = run(&request);
    TLP_CleanUp();
    return fflush(stdout) == 0 ? result : STATUS_FAILED;
}
