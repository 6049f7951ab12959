/*
 * Symbols of the suite: the client's hook, then the settings.
 */
#include "core/quillreg.h"

#include "core/bf.h"
#include "core/f.h"
#include "core/sh.h"
#include "core/sld.h"
#include "host/host.h"

struct SOURCE {
    HOST_HIVE hive;
    const char *key;
};

static constexpr SOURCE sources[] = {
    { .hive = HOST_CURRENT_USER, .key = "Software\\Halvorn\\Quill" },
    { .hive = HOST_DEFAULT_USER, .key = "Software\\Halvorn\\Quill" },
    { .hive = HOST_CURRENT_USER, .key = "Environment" },
    { .hive = HOST_DEFAULT_USER, .key = "Environment" },
};

static QUILLREG_CALLBACK external_callback;
static void *external_user;
static char *last_value; // from the settings; owned

void QUILLREG_SetExternalValueCallback(void *user, QUILLREG_CALLBACK callback)
{
    external_user = user;
    external_callback = callback;
}

static const char *ask_hook(const char *symbol)
{
    return external_callback == nullptr ? nullptr : external_callback(external_user, symbol);
}

/** Reads the first setting that has a value, in place of the one that was read last. */
static const char *read_settings(const char *symbol)
{
    SH_Free(last_value);
    last_value = nullptr;
    for (const SOURCE &source : sources) {
        last_value = HOST_ReadSetting(source.hive, source.key, symbol);
        if (last_value != nullptr) break;
    }
    return last_value;
}

const char *QUILLREG_GetQuillKeyValue(const char *symbol)
{
    const char *value = ask_hook(symbol);
    return value != nullptr ? value : read_settings(symbol);
}

const char *QUILLREG_GetSymbol(const char *symbol)
{
    return QUILLREG_GetQuillKeyValue(symbol);
}

int32_t QUILLREG_AllSymbols(const char *symbol, QUILLREG_VISITOR visitor, void *user)
{
    const char *value = QUILLREG_GetSymbol(symbol);
    if (value == nullptr) return -1;
    SLD_VisitEntries(value, visitor, user);
    return 0;
}

/** Finds a file, without its own directory and version mark, in a symbol's directories. */
static void find_in_symbol(char *path, const char *directories, const char *file_name)
{
    char name[F_NAME_SIZE];
    char extension[F_NAME_SIZE];
    char short_name[F_PATH_SIZE];
    F_ParseFilename(file_name, nullptr, name, extension);
    F_MakeFilename(short_name, nullptr, name, extension);
    F_FindInDirectories(path, directories, short_name);
}

int32_t QUILLREG_OpenFContextFile(FILE **stream, const char *symbol, const char *name, int32_t mode)
{
    const char *directories = QUILLREG_GetSymbol(symbol);
    if (directories == nullptr) return F_OpenFile(stream, name, mode);
    char path[F_PATH_SIZE];
    find_in_symbol(path, directories, name);
    return F_OpenFile(stream, path, mode);
}

int32_t QUILLREG_OpenBFContextFile(intptr_t *handle, const char *symbol, const char *name,
                                   int32_t mode)
{
    const char *directories = QUILLREG_GetSymbol(symbol);
    if (directories == nullptr) return BF_OpenFile(handle, name, mode);
    char path[F_PATH_SIZE];
    find_in_symbol(path, directories, name);
    return BF_OpenFile(handle, path, mode);
}

void QUILLREG_CleanUp()
{
    SH_Free(last_value);
    last_value = nullptr;
    QUILLREG_SetExternalValueCallback(nullptr, nullptr);
}
