/*
 * The end of the process and the abort flag.
 */
#include "core/sm.h"

#include "core/sh.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

struct EXIT_ENTRY {
    SM_EXIT_FUNCTION function;
    intptr_t argument;
    EXIT_ENTRY *next; // older
};

static bool is_initialised;
static EXIT_ENTRY *exit_list;               // newest first
static EXIT_ENTRY *next_to_run;             // a walk goes on here, whatever is deleted meanwhile
static volatile std::sig_atomic_t is_ended; // by a signal
static volatile std::sig_atomic_t abort_flag;

static void run_exit_list(int32_t signalled)
{
    for (EXIT_ENTRY *entry = exit_list; entry != nullptr; entry = next_to_run) {
        next_to_run = entry->next;
        entry->function(signalled, entry->argument);
    }
}

static void walk_at_exit()
{
    run_exit_list(0);
}

/**
 * Runs the list once, even if one of its functions raises a signal, and lets the signal end all.
 */
static void walk_at_signal(int signal_number)
{
    if (!is_ended) {
        is_ended = 1;
        run_exit_list(1);
    }
    std::signal(signal_number, SIG_DFL);
    std::raise(signal_number);
}

void SM_Initialise()
{
    static constexpr int signals[] = { SIGABRT, SIGFPE, SIGILL, SIGINT, SIGSEGV, SIGTERM };
    if (is_initialised) return;
    is_initialised = true;
    if (std::atexit(walk_at_exit) != 0) SM_Exception("SM: Failed to declare exit handler");
    for (const int signal_number : signals) {
        if (std::signal(signal_number, walk_at_signal) == SIG_ERR)
            SM_Exception("SM: Failed to declare signal handler");
    }
}

void SM_FatalError(const char *text)
{
    std::fprintf(stderr, "\n** FATAL ERROR **\n%s\n", text);
    std::exit(1);
}

void SM_Exception(const char *text)
{
    std::printf("\nProgram Exception : %s\n", text);
    std::fflush(stdout); // abort does not
    std::abort();
}

void *SM_AtExit(SM_EXIT_FUNCTION function, intptr_t argument)
{
    auto *entry = static_cast<EXIT_ENTRY *>(SH_NameAllocate(sizeof(EXIT_ENTRY), "SM:EXIT"));
    *entry = EXIT_ENTRY{ .function = function, .argument = argument, .next = exit_list };
    exit_list = entry;
    return entry;
}

int32_t SM_DelExit(SM_EXIT_FUNCTION function, intptr_t argument)
{
    EXIT_ENTRY **link = &exit_list;
    while (*link != nullptr && ((*link)->function != function || (*link)->argument != argument))
        link = &(*link)->next;
    EXIT_ENTRY *entry = *link;
    if (entry == nullptr) return 0;
    *link = entry->next;
    if (next_to_run == entry) next_to_run = entry->next;
    SH_Free(entry);
    return 1;
}

/** Sets the flag and stays in force for the next one. */
static void note_abort(int signal_number)
{
    std::signal(signal_number, note_abort);
    abort_flag = 1;
}

SM_HANDLER SM_EnableCtlcHandler(int32_t enable)
{
    const SM_HANDLER before = std::signal(SIGINT, enable != 0 ? note_abort : SIG_DFL);
    abort_flag = 0;
    return before;
}

int32_t SM_Aborted()
{
    return abort_flag;
}

void SM_ClearAbort()
{
    abort_flag = 0;
}

int32_t SM_EnableInterrupts()
{
    std::printf("SM_EnableInterrupts: !! Not implemented !!\n");
    return 0;
}
