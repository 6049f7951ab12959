/*
 * Character classes and the character locale.
 */
#include "core/c.h"

#include "core/sh.h"
#include "host/host.h"

#include <clocale>
#include <cstring>

static constexpr size_t language_size = 10; // bytes of a language setting; a longer one is not read

static bool is_initialised;

void C_Initialise()
{
    if (is_initialised) return;
    is_initialised = true;
    char *language =
        HOST_ReadSetting(HOST_CURRENT_USER, "Control Panel\\International", "sLanguage");
    if (language == nullptr) return;
    if (std::strlen(language) < language_size) std::setlocale(LC_CTYPE, language);
    SH_Free(language);
}

int32_t C_NotWhite(uint8_t c)
{
    return !C_IsWhite(c);
}
