/*
 * The message box.
 */
#include "core/errmsg.h"

#include "host/host.h"

void ERRMSG_Initialise() {}

int32_t ERRMSG_DisplayError(const char *text)
{
    return HOST_MessageBox("Error", text);
}
