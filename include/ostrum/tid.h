/*
 * The names of the suite's tools.
 */
#ifndef OSTRUM_TID_H
#define OSTRUM_TID_H

#include <ostrum/types.h>

OSTRUM_BEGIN

/** Does nothing. */
OSTRUM_API void TID_Initialise(void);

/**
 * Names a tool.
 *
 * @param tool  tool number, 0 to 15
 * @return      its name, static; null outside that range
 */
OSTRUM_API const char *TID_ToolName(int32_t tool);

OSTRUM_END

#endif
