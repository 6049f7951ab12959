/*
 * Symbols from environment variables.
 */
#include "core/sld.h"

#include "core/st.h"

#include <cstdlib>

void SLD_VisitEntries(const char *value, SLD_VISITOR visitor, void *user)
{
    char *copy = ST_Allocate(value);
    char *entry = copy;
    for (char *c = copy;; c++) {
        const char end = *c;
        if (end != ';' && end != ',' && end != 0) continue;
        *c = 0;
        visitor(user, entry);
        if (end == 0) break;
        entry = c + 1;
    }
    ST_Free(copy);
}

void SLD_Initialise() {}

int32_t SLD_GetSymbol(const char *variable, char *buffer, int32_t size)
{
    const char *value = std::getenv(variable);
    if (value == nullptr) return -2;
    ST_Copy(buffer, size, value);
    return 0;
}

int32_t SLD_AllSymbols(const char *variable, SLD_VISITOR visitor, void *user)
{
    const char *value = std::getenv(variable);
    if (value == nullptr) return -1;
    SLD_VisitEntries(value, visitor, user);
    return 0;
}
