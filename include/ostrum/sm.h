/*
 * The process: ways to end it, what to run at its end, and the abort flag that Ctrl-C sets.
 */
#ifndef OSTRUM_SM_H
#define OSTRUM_SM_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/**
 * Runs at the end of the process.
 *
 * @param signalled  0 on an orderly exit, 1 when a signal ends the process
 * @param argument   the word given to SM_AtExit
 */
typedef void (*SM_EXIT_FUNCTION)(int32_t signalled, intptr_t argument);

/** A handler as the C library's signal takes and gives it. */
typedef void (*SM_HANDLER)(int signal_number);

/**
 * Installs the walkers of the exit list for exit and for signals, the first time. Ends the process
 * through SM_Exception if one of them cannot be installed.
 */
OSTRUM_API void SM_Initialise(void);

/**
 * Writes the text as a fatal error to standard error and exits with status 1. Does not return.
 *
 * @param text  what happened
 */
OSTRUM_API void SM_FatalError(const char *text);

/**
 * Writes the text as an exception to standard output and aborts. Does not return.
 *
 * @param text  what happened
 */
OSTRUM_API void SM_Exception(const char *text);

/**
 * Puts a function at the head of the exit list.
 *
 * @param function  what to run
 * @param argument  handed to it
 * @return          the new entry, which stays the library's
 */
OSTRUM_API void *SM_AtExit(SM_EXIT_FUNCTION function, intptr_t argument);

/**
 * Takes the newest entry with this function and this argument off the exit list.
 *
 * @param function  as given to SM_AtExit
 * @param argument  as given to SM_AtExit
 * @return          1 if an entry was removed, else 0
 */
OSTRUM_API int32_t SM_DelExit(SM_EXIT_FUNCTION function, intptr_t argument);

/**
 * Lets Ctrl-C set the abort flag, or gives it back its default action. Clears the flag.
 *
 * @param enable  0: the default action; anything else: the flag
 * @return        the handler that was in force
 */
OSTRUM_API SM_HANDLER SM_EnableCtlcHandler(int32_t enable);

/**
 * Tells whether Ctrl-C was pressed since the flag was last cleared.
 *
 * @return  the abort flag
 */
OSTRUM_API int32_t SM_Aborted(void);

/** Clears the abort flag. */
OSTRUM_API void SM_ClearAbort(void);

/**
 * Writes to standard output that it is not implemented; does nothing else.
 *
 * @return  0
 */
OSTRUM_API int32_t SM_EnableInterrupts(void);

OSTRUM_END

#endif
