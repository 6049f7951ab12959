/*
 * Version records: what the running program was built with, kept in the settings.
 */
#include "core/qlv.h"

#include "core/f.h"
#include "core/sh.h"
#include "core/st.h"
#include "host/host.h"

#include <cstring>

struct VERSION_ROW {
    const char *block_name; // string of the version block
    const char *value_name; // in the version key
};

static constexpr VERSION_ROW rows[] = {
    { .block_name = "InternalName", .value_name = "Internal" },
    { .block_name = "FileVersion", .value_name = "File" },
    { .block_name = "ProductVersion", .value_name = "Product" },
    { .block_name = "LegalCopyright", .value_name = "Legal" },
};

static constexpr int32_t version_size = 20; // bytes of QLV_GetFileVersion's text

/** Forms the version key of the running program; false if the host does not tell its path. */
static bool form_key(char *key)
{
    char name[F_NAME_SIZE];
    char *path = HOST_ProgramPath();
    if (path == nullptr) return false;
    F_ParseFilename(path, nullptr, name, nullptr);
    SH_Free(path);
    ST_Concat(key, F_PATH_SIZE, "Software\\Halvorn\\Quill\\", name, "\\Version", nullptr);
    return true;
}

void QLV_GetVersionInfo()
{
    char key[F_PATH_SIZE];
    if (!form_key(key)) return;
    for (const VERSION_ROW &row : rows) {
        const char *text = HOST_ProgramVersion(row.block_name);
        if (text != nullptr) HOST_WriteSetting(key, row.value_name, text);
    }
}

/** Copies the stored file version of the program; empty if there is none. */
static void read_stored_version(char *version)
{
    char key[F_PATH_SIZE];
    version[0] = 0;
    if (!form_key(key)) return;
    char *stored = HOST_ReadSetting(HOST_CURRENT_USER, key, "File");
    if (stored != nullptr) ST_Copy(version, version_size, stored);
    SH_Free(stored);
}

const char *QLV_GetFileVersion()
{
    static char version[version_size];
    read_stored_version(version);
    if (std::strcmp(version, HOST_LibraryVersion()) == 0) return version;
    ST_Append(version, version_size, "/");
    return ST_Append(version, version_size, HOST_LibraryVersion());
}
