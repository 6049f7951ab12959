/*
 * Text files. Names of files are taken apart and put together in f_names.cpp.
 */
#include "core/f.h"

#include "core/sh.h"
#include "core/st.h"
#include "host/host.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

enum F_STATUS {
    F_SUCCESSFUL,
    F_BAD_MODE,
    F_NOT_OPENED,
    F_NOT_RENAMED,
    F_NOT_DELETED,
    F_NO_ACCESS,
    F_NOT_FOUND,
    F_LOCKED,
    F_NOT_CLOSED,
    F_UNSPECIFIED,
    F_STATUS_COUNT
};

static constexpr const char *messages[] = {
    "Successful",
    "Invalid file access mode",
    "Unable to open file in requested mode",
    "Unable to rename",
    "Unable to delete",
    "No access to file",
    "File does not exist",
    "File is locked by another user",
    "Failed to close the file",
    "Unspecified Failure",
};
static_assert(std::size(messages) == F_STATUS_COUNT, "one text for each status");

int32_t F_OpenFile(FILE **stream, const char *path, int32_t mode)
{
    static constexpr const char *modes[] = { "r", "w", "a" };
    if (mode < 0 || mode >= static_cast<int32_t>(std::size(modes))) return F_BAD_MODE;
    *stream = HOST_OpenStream(path, modes[mode]);
    return *stream == nullptr ? F_NOT_OPENED : F_SUCCESSFUL;
}

/** Forms directory, separator, name; false if that is too long for a path. */
static bool form_path(char *path, const char *directory, size_t directory_length, const char *name)
{
    if (directory_length + 1 + std::strlen(name) >= F_PATH_SIZE) return false;
    ST_CopySpan(path, F_PATH_SIZE, directory, directory_length);
    ST_Append(path, F_PATH_SIZE, "\\");
    ST_Append(path, F_PATH_SIZE, name);
    return true;
}

void F_FindInDirectories(char *path, const char *directories, const char *name)
{
    for (;;) {
        const size_t length = std::strcspn(directories, ";");
        const bool formed = form_path(path, directories, length, name);
        if (!formed) path[0] = 0; // which opens nothing
        if (formed && HOST_HasAccess(path, HOST_EXISTS)) return;
        if (directories[length] == 0) return;
        directories += length + 1;
    }
}

int32_t F_OpenContextFile(FILE **stream, const char *variable, const char *name, int32_t mode)
{
    const char *directories = std::getenv(variable);
    if (directories == nullptr) return F_OpenFile(stream, name, mode);
    char path[F_PATH_SIZE];
    F_FindInDirectories(path, directories, name);
    return F_OpenFile(stream, path, mode);
}

int32_t F_CloseFile(FILE *stream)
{
    return stream != nullptr && std::fclose(stream) == 0 ? F_SUCCESSFUL : F_NOT_CLOSED;
}

int32_t F_GetString(FILE *stream, char *buffer, int32_t size)
{
    if (size < 1) return -1;
    const int32_t count = HOST_ReadLine(stream, buffer, size - 1);
    buffer[count] = 0;
    return count == 0 && size > 1 ? -1 : count;
}

int32_t F_FileSize(const char *path, int32_t *size)
{
    HOST_FILE_STATUS status;
    if (!HOST_GetStatus(path, &status)) return F_NOT_FOUND;
    if (status.size > INT32_MAX) return F_UNSPECIFIED;
    *size = static_cast<int32_t>(status.size);
    return F_SUCCESSFUL;
}

int32_t F_FileUpdateTime(const char *path, int64_t *time)
{
    HOST_FILE_STATUS status;
    if (!HOST_GetStatus(path, &status)) return F_NOT_FOUND;
    *time = status.change_time;
    return F_SUCCESSFUL;
}

int32_t F_RenameFile(const char *old_path, const char *new_path)
{
    return HOST_Rename(old_path, new_path) ? F_SUCCESSFUL : F_NOT_RENAMED;
}

int32_t F_CopyFile()
{
    return F_UNSPECIFIED;
}

int32_t F_DeleteFile(const char *path)
{
    return HOST_Delete(path) ? F_SUCCESSFUL : F_NOT_DELETED;
}

int32_t F_CheckAccess(const char *path, int32_t mode)
{
    HOST_ACCESS access;
    switch (mode) {
    case 0:
        access = HOST_MAY_READ;
        break;
    case 1:
        access = HOST_MAY_WRITE;
        break;
    case 4:
        access = HOST_EXISTS;
        break;
    default:
        return F_BAD_MODE;
    }
    return HOST_HasAccess(path, access) ? F_SUCCESSFUL : F_NO_ACCESS;
}

int32_t F_Chdir(const char *path)
{
    return HOST_ChangeDirectory(path) ? F_SUCCESSFUL : F_UNSPECIFIED;
}

// --- directories ---

static constexpr int32_t directory_attribute = 16; // what a visitor is told of a directory

static char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

/**
 * Matches '*' and '?' without regard to case; behind a star that fails, only the last one is
 * retried.
 */
static bool fits_wildcard(const char *pattern, const char *name)
{
    const char *behind_star = nullptr;
    const char *retry = nullptr;
    while (*name != 0) {
        if (*pattern == '*') {
            behind_star = ++pattern;
            retry = name;
        } else if (*pattern != 0 && (*pattern == '?' || lower(*pattern) == lower(*name))) {
            pattern++;
            name++;
        } else if (behind_star != nullptr) {
            pattern = behind_star;
            name = ++retry;
        } else {
            return false;
        }
    }
    return pattern[std::strspn(pattern, "*")] == 0;
}

/** Visits what fits of a list; -1 if nothing does. */
static int32_t visit_files(const HOST_FILE_LIST &list, const char *directory, const char *pattern,
                           F_VISITOR visitor, void *user)
{
    int32_t result = -1;
    for (size_t i = 0; i < list.count; i++) {
        const HOST_FILE_ENTRY &entry = list.entries[i];
        if (!fits_wildcard(pattern, entry.name)) continue;
        result = 0;
        if (visitor != nullptr && entry.name[0] != '.')
            visitor(user, directory, entry.name, entry.is_directory ? directory_attribute : 0);
    }
    return result;
}

/** Length of the directory part of a path, last separator included. */
static size_t directory_length(const char *path)
{
    size_t length = 0;
    for (size_t i = 0; path[i] != 0; i++) {
        if (path[i] == '\\' || path[i] == '/') length = i + 1;
    }
    return length;
}

int32_t F_AllDirFiles(const char *directory, const char *pattern, F_VISITOR visitor, void *user)
{
    char path[F_PATH_SIZE];
    char searched[F_PATH_SIZE];
    const char *shown = directory == nullptr ? "" : directory;
    if (std::strlen(shown) + std::strlen(pattern) + 2 > F_PATH_SIZE) return -1;
    F_MakeFilename(path, directory, pattern, nullptr);
    const size_t length = directory_length(path);
    ST_CopySpan(searched, F_PATH_SIZE, path, length);
    HOST_FILE_LIST list;
    if (!HOST_ListDirectory(searched, &list)) return -1;
    const bool all = std::strcmp(path + length, "*.*") == 0; // fits names without a dot too
    const int32_t result = visit_files(list, shown, all ? "*" : path + length, visitor, user);
    HOST_FreeList(&list);
    return result;
}

const char *F_Message(int32_t status)
{
    if (status < 0 || status >= F_STATUS_COUNT) return "Invalid reply code";
    return messages[status];
}
