/*
 * Paths: from the library's form, which knows no case, to that of a file system that does.
 */
#include "host/host.h"

#include "core/sh.h"
#include "core/st.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

static bool exists(const char *host_path)
{
    struct stat status;
    return lstat(host_path, &status) == 0;
}

static char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

static bool equal_but_for_case(const char *name, const char *component, size_t length)
{
    for (size_t i = 0; i < length; i++) {
        if (lower(name[i]) != lower(component[i])) return false; // a shorter name ends here
    }
    return name[length] == 0;
}

/**
 * Replaces a component by the entry of its directory that is equal but for case and lowest in byte
 * order. The directory is what stands before the component; without such an entry nothing changes.
 */
static void find_component(char *path, size_t start, size_t length)
{
    char directory_path[HOST_PATH_SIZE];
    ST_CopySpan(directory_path, HOST_PATH_SIZE, path, start);
    DIR *directory = opendir(start == 0 ? "." : directory_path);
    if (directory == nullptr) return;
    bool found = false;
    char *component = path + start;
    while (const dirent *entry = readdir(directory)) {
        if (!equal_but_for_case(entry->d_name, component, length)) continue;
        if (found && std::memcmp(entry->d_name, component, length) > 0) continue;
        std::memcpy(component, entry->d_name, length);
        found = true;
    }
    closedir(directory);
}

/** Looks one component up, with the path ended behind it. */
static void resolve_component(char *path, size_t start, size_t length)
{
    const char behind = path[start + length];
    path[start + length] = 0;
    if (!exists(path)) find_component(path, start, length);
    path[start + length] = behind;
}

static void resolve_components(char *path, HOST_LAST_COMPONENT last)
{
    for (size_t start = std::strspn(path, "/"); path[start] != 0;) {
        const size_t length = std::strcspn(path + start, "/");
        const size_t next = start + length + std::strspn(path + start + length, "/");
        if (path[next] != 0 || last == HOST_LOOKED_UP) resolve_component(path, start, length);
        start = next;
    }
}

bool HOST_MakePath(char *host_path, const char *path, HOST_LAST_COMPONENT last)
{
    const size_t length = strnlen(path, HOST_PATH_SIZE);
    if (length == 0 || length >= HOST_PATH_SIZE) {
        errno = length == 0 ? ENOENT : ENAMETOOLONG;
        return false;
    }
    std::memcpy(host_path, path, length + 1);
    for (char *c = std::strchr(host_path, '\\'); c != nullptr; c = std::strchr(c, '\\'))
        *c = '/';
    if (!exists(host_path)) resolve_components(host_path, last);
    return true;
}

// --- directories ---

static bool is_directory(const char *directory, const dirent *entry)
{
    if (entry->d_type == DT_DIR) return true;
    if (entry->d_type != DT_LNK && entry->d_type != DT_UNKNOWN) return false;
    const size_t size = std::strlen(directory) + std::strlen(entry->d_name) + 2;
    char *path = static_cast<char *>(SH_AllocateBytes(size));
    ST_Concat(path, static_cast<int32_t>(size), directory, "/", entry->d_name, nullptr);
    struct stat status;
    const bool answer = stat(path, &status) == 0 && S_ISDIR(status.st_mode);
    SH_Free(path);
    return answer;
}

static int compare_entries(const void *a, const void *b)
{
    return std::strcmp(static_cast<const HOST_FILE_ENTRY *>(a)->name,
                       static_cast<const HOST_FILE_ENTRY *>(b)->name);
}

static void collect_entries(DIR *directory, const char *path, HOST_FILE_LIST *list)
{
    size_t capacity = 0;
    while (const dirent *entry = readdir(directory)) {
        const size_t used = list->count * sizeof(HOST_FILE_ENTRY);
        list->entries = static_cast<HOST_FILE_ENTRY *>(
            SH_Grow(list->entries, used, &capacity, used + sizeof(HOST_FILE_ENTRY)));
        list->entries[list->count++] = HOST_FILE_ENTRY{ .name = ST_Allocate(entry->d_name),
                                                        .is_directory = is_directory(path, entry) };
    }
}

bool HOST_ListDirectory(const char *path, HOST_FILE_LIST *list)
{
    char host_path[HOST_PATH_SIZE] = ".";
    if (path[0] != 0 && !HOST_MakePath(host_path, path, HOST_LOOKED_UP)) return false;
    DIR *directory = opendir(host_path);
    if (directory == nullptr) return false;
    *list = HOST_FILE_LIST{};
    collect_entries(directory, host_path, list);
    closedir(directory);
    if (list->count > 0)
        std::qsort(list->entries, list->count, sizeof(HOST_FILE_ENTRY), compare_entries);
    return true;
}

void HOST_FreeList(HOST_FILE_LIST *list)
{
    for (size_t i = 0; i < list->count; i++)
        ST_Free(list->entries[i].name);
    SH_Free(list->entries);
    *list = HOST_FILE_LIST{};
}
