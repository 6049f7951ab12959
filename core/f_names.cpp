/*
 * Names of files: a directory with an optional drive, a name, an extension and a version mark.
 */
#include "core/f.h"
#include "core/st.h"

#include <cstring>

static bool is_separator(char c)
{
    return c == '\\' || c == '/';
}

/** Length of the directory part: behind the last separator, or else behind the last colon. */
static size_t directory_length(const char *path)
{
    size_t behind_separator = 0;
    size_t behind_colon = 0;
    for (size_t i = 0; path[i] != 0; i++) {
        if (is_separator(path[i])) behind_separator = i + 1;
        if (path[i] == ':') behind_colon = i + 1;
    }
    return behind_separator > 0 ? behind_separator : behind_colon;
}

/** Length of a name or an extension without the version mark. */
static size_t unmarked_length(const char *text, size_t length)
{
    const void *mark = std::memchr(text, ';', length);
    return mark == nullptr ? length : static_cast<size_t>(static_cast<const char *>(mark) - text);
}

int32_t F_ParseFilename(const char *path, char *directory, char *name, char *extension)
{
    const size_t length = directory_length(path);
    const char *rest = path + length;
    const char *dot = std::strrchr(rest, '.');
    const char *behind_dot = dot == nullptr ? "" : dot + 1;
    const size_t name_length = dot == nullptr ? std::strlen(rest) : static_cast<size_t>(dot - rest);
    if (directory != nullptr) ST_CopySpan(directory, F_PATH_SIZE, path, length);
    if (name != nullptr) ST_CopySpan(name, F_NAME_SIZE, rest, unmarked_length(rest, name_length));
    if (extension != nullptr)
        ST_CopySpan(extension, F_NAME_SIZE, behind_dot,
                    unmarked_length(behind_dot, std::strlen(behind_dot)));
    return 0;
}

char *F_MakeFilename(char *path, const char *directory, const char *name, const char *extension)
{
    path[0] = 0;
    if (directory != nullptr && directory[0] != 0) {
        const char last = directory[std::strlen(directory) - 1];
        const bool closed = last == ':' || is_separator(last);
        ST_Concat(path, F_PATH_SIZE, directory, closed ? "" : "\\", nullptr);
    }
    if (name != nullptr) ST_Append(path, F_PATH_SIZE, name);
    if (extension != nullptr && extension[0] != 0) {
        ST_Append(path, F_PATH_SIZE, ".");
        ST_Append(path, F_PATH_SIZE, extension);
    }
    return path;
}

char *F_MakeBackupFilename(char *path, const char *directory, const char *name,
                           const char *extension)
{
    F_MakeFilename(path, directory, name, extension);
    return ST_Append(path, F_PATH_SIZE, "%");
}
