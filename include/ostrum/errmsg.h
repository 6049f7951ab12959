/*
 * The message box.
 */
#ifndef OSTRUM_ERRMSG_H
#define OSTRUM_ERRMSG_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Does nothing. */
OSTRUM_API void ERRMSG_Initialise(void);

/**
 * Shows a message with the caption "Error", on standard error where there is no message box.
 *
 * @param text  the message
 * @return      the message box's result: 1, the OK button; 0 if it could not be shown
 */
OSTRUM_API int32_t ERRMSG_DisplayError(const char *text);

OSTRUM_END

#endif
