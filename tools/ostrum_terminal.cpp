// Lines typed at a terminal, through GNU readline where the tool was built with it.

#include "ostrum.h"

#ifdef OSTRUM_READLINE

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <unistd.h>

#include <readline/history.h>
#include <readline/readline.h>

namespace
{

CLI_NODE *commands; // that Tab completes

/** Reads a key; Ctrl-C comes as the end of the line, which read_line then empties. */
int read_key(FILE *stream)
{
    pollfd typed = { .fd = fileno(stream), .events = POLLIN, .revents = 0 };
    while (poll(&typed, 1, -1) < 0 && errno == EINTR) {
        rl_check_signals(); // readline keeps signals back until it is asked
        if (SM_Aborted() != 0) return '\n';
    }
    return rl_getc(stream);
}

int32_t read_line(void *, const char *prompt, char *line, int32_t size)
{
    SM_ClearAbort();
    char *typed = readline(prompt);
    if (typed == nullptr) {
        printf("\n"); // the shell's prompt starts on a line of its own
        return -1;
    }
    if (SM_Aborted() != 0) *typed = 0;
    const size_t length = strlen(typed);
    const size_t kept = std::min(length, static_cast<size_t>(size) - 1);
    memcpy(line, typed, kept);
    line[kept] = 0;
    if (length > 0) add_history(typed);
    free(typed);
    return static_cast<int32_t>(std::min(length, static_cast<size_t>(INT32_MAX)));
}

/** One way to complete the line, its texts copied. */
struct CHOICE {
    std::string text;
    std::string ending;
    std::string name;
};

struct CHOICES {
    int32_t start; // of what is replaced
    std::vector<CHOICE> all;
};

int32_t add_choice(void *context, const CLI_COMPLETION *completion)
{
    auto *choices = static_cast<CHOICES *>(context);
    choices->start = completion->start;
    choices->all.push_back({ completion->text, completion->ending, completion->name });
    return 1;
}

/** What all choices begin with. */
std::string common_start(const std::vector<CHOICE> &choices)
{
    std::string start = choices.front().text;
    for (const CHOICE &choice : choices) {
        const auto end =
            std::mismatch(start.begin(), start.end(), choice.text.begin(), choice.text.end());
        start.erase(end.first, start.end());
    }
    return start;
}

void replace_word(int32_t start, const std::string &text)
{
    rl_begin_undo_group();
    rl_delete_text(start, rl_point);
    rl_point = start;
    rl_insert_text(text.c_str());
    rl_end_undo_group();
}

void list_choices(const std::vector<CHOICE> &choices)
{
    // The first entry stands for what they have in common; the others are shown.
    std::vector<char *> names{ const_cast<char *>("") };
    size_t widest = 0;
    for (const CHOICE &choice : choices) {
        names.push_back(const_cast<char *>(choice.name.c_str()));
        widest = std::max(widest, choice.name.size());
    }
    names.push_back(nullptr);
    rl_display_match_list(names.data(), static_cast<int>(choices.size()), static_cast<int>(widest));
    rl_forced_update_display();
}

/** Tab: completes as far as there is one way; where nothing more is certain it lists the ways. */
int complete(int, int)
{
    CHOICES choices = {};
    const std::string line(rl_line_buffer, static_cast<size_t>(rl_point));
    CLI_Complete(commands, line.c_str(), add_choice, &choices);
    if (choices.all.empty()) return rl_ding();
    if (choices.all.size() == 1) {
        replace_word(choices.start, choices.all[0].text + choices.all[0].ending);
        return 0;
    }
    const std::string before = line.substr(static_cast<size_t>(choices.start));
    const std::string start = common_start(choices.all);
    if (start.size() > before.size()) {
        replace_word(choices.start, start);
    } else {
        list_choices(choices.all);
    }
    return 0;
}

} // namespace

void ostrum_edit_lines(CLI_NODE *root)
{
    if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) return;
    commands = root;
    rl_readline_name = "ostrum";
    rl_getc_function = read_key;
    rl_bind_key('\t', complete);
    stifle_history(1000);
    CLI_SetLineReader(nullptr, read_line);
}

#else

void ostrum_edit_lines(CLI_NODE *) {}

#endif
