/*
 * Files by stream, by descriptor and as private mappings.
 */
#include "host/host.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

static constexpr mode_t any_user = 0666; // less what the process's mask takes away
static constexpr mode_t owner_only = 0600;

/** Opens a descriptor on anything but a directory. */
static int open_file(const char *path, int flags, mode_t permission, HOST_LAST_COMPONENT last)
{
    char host_path[HOST_PATH_SIZE];
    if (!HOST_MakePath(host_path, path, last)) return -1;
    const int descriptor = open(host_path, flags | O_CLOEXEC, permission);
    struct stat status;
    if (descriptor < 0 || fstat(descriptor, &status) != 0 || !S_ISDIR(status.st_mode))
        return descriptor;
    close(descriptor);
    errno = EACCES;
    return -1;
}

FILE *HOST_OpenStream(const char *path, const char *mode)
{
    int flags = O_RDONLY;
    if (mode[0] == 'w') flags = O_WRONLY | O_CREAT | O_TRUNC;
    if (mode[0] == 'a') flags = O_WRONLY | O_CREAT | O_APPEND;
    const HOST_LAST_COMPONENT last = mode[0] == 'r' ? HOST_LOOKED_UP : HOST_AS_WRITTEN;
    const int descriptor = open_file(path, flags, any_user, last);
    if (descriptor < 0) return nullptr;
    FILE *stream = fdopen(descriptor, mode);
    if (stream == nullptr) close(descriptor);
    return stream;
}

bool HOST_IdentifyStream(FILE *stream, HOST_FILE_IDENTITY *identity)
{
    struct stat status;
    if (fstat(fileno(stream), &status) != 0) return false;
    *identity = HOST_FILE_IDENTITY{ .device = status.st_dev, .number = status.st_ino };
    return true;
}

/** Takes the line feed of a CR LF off the stream, if there is one. */
static char end_behind_return(FILE *stream)
{
    const int c = getc_unlocked(stream);
    if (c == '\n') return '\n';
    if (c != EOF) ungetc(c, stream);
    return '\r';
}

int32_t HOST_ReadLine(FILE *stream, char *buffer, int32_t room)
{
    int32_t count = 0;
    flockfile(stream);
    while (count < room) {
        const int c = getc_unlocked(stream);
        if (c == EOF) break;
        buffer[count++] = static_cast<char>(c);
        if (c == '\r') buffer[count - 1] = end_behind_return(stream);
        if (c == '\n' || c == '\r') break;
    }
    funlockfile(stream);
    return count;
}

int HOST_Open(const char *path, HOST_OPEN_MODE mode)
{
    static constexpr int flags[] = { O_RDONLY, O_RDWR | O_CREAT | O_TRUNC, O_RDWR,
                                     O_RDWR | O_APPEND };
    return open_file(path, flags[mode], owner_only,
                     mode == HOST_CREATE ? HOST_AS_WRITTEN : HOST_LOOKED_UP);
}

bool HOST_Close(int descriptor)
{
    return close(descriptor) == 0;
}

int64_t HOST_Read(int descriptor, void *buffer, size_t count)
{
    size_t done = 0;
    while (done < count) {
        const ssize_t got = read(descriptor, static_cast<char *>(buffer) + done, count - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return -1;
        if (got == 0) break;
        done += static_cast<size_t>(got);
    }
    return static_cast<int64_t>(done);
}

bool HOST_Write(int descriptor, const void *buffer, size_t count)
{
    size_t done = 0;
    while (done < count) {
        const ssize_t put =
            write(descriptor, static_cast<const char *>(buffer) + done, count - done);
        if (put < 0 && errno == EINTR) continue;
        if (put < 0) return false;
        done += static_cast<size_t>(put);
    }
    return true;
}

int64_t HOST_Position(int descriptor)
{
    return lseek(descriptor, 0, SEEK_CUR);
}

bool HOST_Seek(int descriptor, int64_t position)
{
    return lseek(descriptor, position, SEEK_SET) >= 0;
}

int64_t HOST_DescriptorSize(int descriptor)
{
    struct stat status;
    return fstat(descriptor, &status) == 0 ? status.st_size : -1;
}

bool HOST_GetStatus(const char *path, HOST_FILE_STATUS *status)
{
    char host_path[HOST_PATH_SIZE];
    struct stat found;
    if (!HOST_MakePath(host_path, path, HOST_LOOKED_UP) || stat(host_path, &found) != 0)
        return false;
    *status = HOST_FILE_STATUS{ .size = found.st_size, .change_time = found.st_mtime };
    return true;
}

bool HOST_HasAccess(const char *path, HOST_ACCESS wanted)
{
    static constexpr int modes[] = { R_OK, W_OK, F_OK };
    char host_path[HOST_PATH_SIZE];
    return HOST_MakePath(host_path, path, HOST_LOOKED_UP) && access(host_path, modes[wanted]) == 0;
}

bool HOST_Rename(const char *old_path, const char *new_path)
{
    char old_host_path[HOST_PATH_SIZE];
    char new_host_path[HOST_PATH_SIZE];
    return HOST_MakePath(old_host_path, old_path, HOST_AS_WRITTEN) &&
           HOST_MakePath(new_host_path, new_path, HOST_AS_WRITTEN) &&
           rename(old_host_path, new_host_path) == 0;
}

bool HOST_Delete(const char *path)
{
    char host_path[HOST_PATH_SIZE];
    return HOST_MakePath(host_path, path, HOST_AS_WRITTEN) && unlink(host_path) == 0;
}

bool HOST_ChangeDirectory(const char *path)
{
    char host_path[HOST_PATH_SIZE];
    return HOST_MakePath(host_path, path, HOST_LOOKED_UP) && chdir(host_path) == 0;
}

// --- mappings ---

static char empty_view[1]; // an empty file has an address too

/** Maps what a descriptor stands for, if it is a regular file. */
static bool map_descriptor(int descriptor, HOST_MAPPING *mapping)
{
    struct stat status;
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return false;
    const size_t size = static_cast<size_t>(status.st_size);
    void *address = empty_view;
    if (size > 0) address = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE, descriptor, 0);
    if (address == MAP_FAILED) return false;
    *mapping = HOST_MAPPING{ .address = address, .size = size };
    return true;
}

bool HOST_Map(const char *path, HOST_MAPPING *mapping)
{
    const int descriptor = open_file(path, O_RDONLY | O_NONBLOCK, 0, HOST_LOOKED_UP);
    if (descriptor < 0) return false;
    const bool mapped = map_descriptor(descriptor, mapping);
    close(descriptor); // the view outlives it
    return mapped;
}

void HOST_Unmap(HOST_MAPPING *mapping)
{
    if (mapping->size > 0) munmap(mapping->address, mapping->size);
    *mapping = HOST_MAPPING{};
}
